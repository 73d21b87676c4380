// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The host application, run as a process from the installation layout that the build has staged.
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <regex>

#include "emulator.h"
#include "kxCPUInfo.h"
#include "kxtest.h"
#include "reference/crc32_bitwise.h"

namespace {

const std::string root = std::filesystem::canonical(KXTEST_TALO_ROOT).string();
const std::string talo = root + "/bin/MAC/talo";

// Runs talo with a home directory of its own.
class Talo : public testing::Test {
protected:
    kxtest::TempDir dir;
    const std::string tmp = dir.file("tmp");
    std::map<std::string, std::string> environment = {{"HOME", dir.makeDir("home")},
                                                      {"TALO_TMP_DIR", tmp}};
    kxtest::RunOptions options;

    kxtest::Outcome run(std::vector<std::string> arguments, const std::string& program = talo) {
        arguments.insert(arguments.begin(), program);
        return kxtest::run(arguments, environment, options);
    }
};

std::string processor() {
    const kxCPUInfo& cpu = kxCPUInfo::getCPUInfo();
    return std::string("Processor:") + (cpu.hasSSE2Support() ? " SSE2" : "") +
           (cpu.hasSSE42Support() ? " SSE4.2" : "") + (cpu.hasAVXSupport() ? " AVX" : "") +
           (cpu.hasAVX2Support() ? " AVX2" : "") + (cpu.hasAVX512Support() ? " AVX-512" : "") +
           "\n";
}

std::string started(const std::string& name = "Talo") {
    return name + ", installed in " + root + "\n" + processor();
}

std::string hex(std::uint32_t value) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08X", value);
    return digits;
}

// What the library finds in a stamped copy, and again after one byte of it was damaged.
std::string findings(std::string content) {
    const std::string stored = hex(reference::crc32Bitwise(content));
    std::string text = "Found correct file checksum " + stored + ".\n";
    if (content.empty()) return text;
    char& middle = content[content.size() / 2];
    middle = static_cast<char>(~middle);
    return text + "Damaging one byte of the copy:\nFound incorrect file checksum " +
           hex(reference::crc32Bitwise(content)) + " != " + stored + "!\n";
}

struct Report {
    std::string name, extension, baseName, format, size, path, content;
    std::string text() const {
        return name + "\n  extension  " + extension + "\n  base name  " + baseName +
               "\n  format     " + format + "\n  size       " + size + "\n  path       " + path +
               "\n  readable   yes\n";
    }
};

// The first report of a process also tells the temporary directory, once.
std::string reports(const std::string& tmp, const std::vector<Report>& rows) {
    std::string all;
    for (const Report& row : rows) {
        all += row.text();
        if (&row == &rows.front()) all += "TALO_TMP_DIR = '" + tmp + "'\n";
        all += findings(row.content);
    }
    return all;
}

const std::string allWell = "All files are well.\n";

std::string red(const std::string& text) { return "\033[31m" + text + "\n\033[0m"; }

std::string dataFile(const std::string& name) { return kxtest::slurp(root + "/data/" + name); }

std::string installedReport(const std::string& tmp) {
    const auto row = [](const char* name, const char* extension, const char* baseName,
                        const char* format, const char* size) {
        const std::string path = std::string("data/") + name;
        return Report{name, extension, baseName, format, size, path, dataFile(name)};
    };
    return reports(tmp, {row("README", "", "README", "unknown", "87"),
                         row("checker.ppm", "ppm", "checker", "Picture", "781"),
                         row("cube.obj", "obj", "cube", "Mesh", "176"),
                         row("materials.csv", "csv", "materials", "Table", "110"),
                         row("turntable.scene.json", "json", "turntable.scene", "Scene", "180")});
}

}  // namespace

TEST_F(Talo, ReportsOnTheInstalledDataByDefault) {
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started() + installedReport(tmp) + allWell);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, FindsItsDataFromAnotherWorkingDirectory) {
    options.directory = dir.path();
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started() + installedReport(tmp) + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, StartsThroughARelativePath) {
    options.directory = root + "/data";
    const auto outcome = run({}, "../bin/MAC/talo");
    EXPECT_EQ(outcome.out, started() + installedReport(tmp) + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, StartsThroughASymbolicLink) {
    const std::string link = dir.file("link");
    ASSERT_EQ(symlink(talo.c_str(), link.c_str()), 0);
    const auto outcome = run({}, link);
    EXPECT_EQ(outcome.out, started() + installedReport(tmp) + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
    if (!kxtest::underValgrind()) {  // which hides the link
        EXPECT_TRUE(kxtest::exists(dir.file("home/Library/Application Support/Pelloran/link")));
    }
}

TEST_F(Talo, CreatesThePreferencesBelowHome) {
    run({});
    EXPECT_TRUE(kxtest::exists(dir.file("home/Library/Application Support/Pelloran/talo")));
}

// "$HOME" stays unexpanded, so the preferences are made below the working directory.
TEST_F(Talo, SaysSoWhenHomeIsNotSet) {
    environment.erase("HOME");
    options.directory = dir.makeDir("cwd");
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started() + installedReport(tmp) + allWell);
    EXPECT_EQ(outcome.err, red("expandFilename: couldn't expand env.var HOME!"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::list(dir.file("cwd")), std::vector<std::string>{"$HOME"});
}

TEST_F(Talo, ResolvesPathsAgainstTheWorkingDirectory) {
    options.directory = root + "/data";
    const auto outcome = run({"../examples"});
    const std::string path = "data/../examples/quickstart.txt";
    EXPECT_EQ(outcome.out, started() +
                               reports(tmp, {{"quickstart.txt", "txt", "quickstart", "unknown",
                                              "173", path, kxtest::slurp(root + "/" + path)}}) +
                               allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, LooksForTheExtensionInTheNameOnly) {
    const std::string file = dir.write("in.d/noextension", "12345");
    EXPECT_NE(run({file}).out.find("noextension\n  extension  \n  base name  noextension\n"),
              std::string::npos);
}

TEST_F(Talo, FailsForAMissingFileAndGoesOn) {
    const std::string missing = dir.file("missing"), there = dir.write("there.txt", "x");
    const auto outcome = run({missing, there});
    EXPECT_EQ(outcome.err, red("checkRead:: File '" + missing + "' doesn't exist!"));
    EXPECT_NE(outcome.out.find("readable   no\n"), std::string::npos);
    EXPECT_NE(outcome.out.find("there.txt\n  extension  txt\n"), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(Talo, RejectsWrongUsage) {
    EXPECT_EQ(run({"--nonsense"}).exitCode, 2);
    EXPECT_EQ(run({"--answer", "maybe"}).exitCode, 2);
    EXPECT_EQ(run({"--log-format", "pdf"}).exitCode, 2);
    const auto help = run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_NE(help.out.find("--copy-to"), std::string::npos);
}

TEST_F(Talo, PresentsItsIdentity) {
    const auto outcome = run({"--full-name", "Talo Pro", "--year", "2018", "--dpi", "150"});
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')), "Best Matching DPI: 144");
    // The version name ends in a blank when it has a year.
    EXPECT_NE(outcome.out.find("\nTalo Pro 2018 , installed in"), std::string::npos);
}

class TaloCopy : public Talo {
protected:
    const std::string source = dir.write("in/scene.osb", "new");
    const std::string target = dir.file("out/scene.osb");
    const std::string question =
        "File '" + target + "' already exists!\nOverwrite file? [yes/no/cancel] ";

    kxtest::Outcome copy(std::vector<std::string> more = {}) {
        more.insert(more.begin(), {source, "--copy-to", dir.file("out")});
        return run(more);
    }
    void makeOldCopy() { dir.write("out/scene.osb", "old"); }
};

TEST_F(TaloCopy, CreatesTheDirectoryAndAsksNothing) {
    const auto outcome = copy();
    EXPECT_NE(outcome.out.find("  copied     " + target + "\n"), std::string::npos);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::slurp(target), "new");
}

TEST_F(TaloCopy, OverwritesWhenToldYes) {
    makeOldCopy();
    const auto outcome = copy({"--answer", "yes"});
    EXPECT_EQ(outcome.err, question + "yes\n");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::slurp(target), "new");
}

TEST_F(TaloCopy, KeepsTheFileWhenToldNoOrCancel) {
    makeOldCopy();
    for (const std::string answer : {"no", "cancel"}) {
        const auto outcome = copy({"--answer", answer});
        EXPECT_EQ(outcome.err, question + answer + "\n");
        EXPECT_NE(outcome.out.find("  copied     no\n"), std::string::npos);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(kxtest::slurp(target), "old");
    }
}

TEST_F(TaloCopy, AsksOnTheTerminal) {
    struct {
        const char* input;
        const char* content;
    } const rows[] = {{"n\n", "old"}, {"c\n", "old"}, {"what\n", "old"},
                      {"", "old"},    {"\n", "new"},  {"Y\n", "new"}};
    for (const auto& row : rows) {
        makeOldCopy();
        options.input = row.input;
        EXPECT_EQ(copy().err, question) << row.input;
        EXPECT_EQ(kxtest::slurp(target), row.content) << row.input;
    }
}

TEST_F(TaloCopy, RefusesToCopyAFileOntoItself) {
    const auto outcome = run({source, "--copy-to", dir.file("in"), "--answer", "yes"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(kxtest::slurp(source), "new");
}

TEST_F(TaloCopy, FailsWhereNothingCanBeWritten) {
    dir.makeDir("out/scene.osb");  // a directory stands in the file's place
    EXPECT_EQ(copy({"--answer", "yes"}).exitCode, 1);
    const auto below = run({source, "--copy-to", source + "/sub"});
    EXPECT_EQ(below.err, red("Couldn't create '" + source + "/sub': Not a directory"));
    EXPECT_EQ(below.exitCode, 1);
}

TEST_F(Talo, NoticesAFullDisk) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    const std::string source = dir.write("in/data", "12345");
    dir.makeDir("out");
    ASSERT_EQ(symlink("/dev/full", dir.file("out/data").c_str()), 0);
    const auto outcome = run({source, "--copy-to", dir.file("out"), "--answer", "yes"});
    EXPECT_NE(outcome.err.find("Couldn't copy '" + source + "'"), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
}

struct LogCase {
    const char* format;
    const char* pattern;  // of the whole file
};
static void PrintTo(const LogCase& c, std::ostream* os) { *os << c.format; }

class TaloLog : public Talo, public testing::WithParamInterface<LogCase> {};

TEST_P(TaloLog, WritesTheFormat) {
    const std::string file = dir.write("file.txt", "x"), log = dir.file("talo.log");
    const auto outcome = run({file, "--log", log, "--log-format", GetParam().format});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')), "Setting log file to '" + log + "'.");
    std::string pattern = GetParam().pattern;
    pattern.replace(pattern.find("ROOT"), 4, root);
    const std::string text = kxtest::slurp(log);
    EXPECT_TRUE(std::regex_match(text, std::regex(pattern))) << text;
}

const char* const textLog =
    "(\\d+-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d INFO 100 )Talo, installed in ROOT\n"
    "(.*\n)*"
    "\\d+-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d INFO 100 All files are well\\.\n";
const char* const htmlLog =
    "<head>.*</p>\n<span style=\"color:#008c00;\">Talo, installed in ROOT</span><br>\n"
    "(.*\n)*"
    "<span style=\"color:#008c00;\">All files are well\\.</span><br>\n";
const char* const csvLog =
    "Date;Time;Type of Message;Message Number;Description\n"
    "\\d\\d\\.\\d\\d\\.\\d+;\\d\\d:\\d\\d:\\d\\d;INFO;100;Talo, installed in ROOT\n"
    "(.*\n)*"
    "\\d\\d\\.\\d\\d\\.\\d+;\\d\\d:\\d\\d:\\d\\d;INFO;100;All files are well\\.\n";
INSTANTIATE_TEST_SUITE_P(Formats, TaloLog,
                         testing::Values(LogCase{"text", textLog}, LogCase{"html", htmlLog},
                                         LogCase{"csv", csvLog}),
                         [](const auto& row) { return std::string(row.param.format); });

TEST_F(Talo, LogsIntoTheDirectoryOfTheEnvironment) {
    environment["TALO_LOG_DIR"] = dir.file("logs/here");
    const std::string file = dir.write("file.txt", "x");
    const auto outcome = run({file, "--log", "/nowhere/talo.log"});
    EXPECT_EQ(outcome.exitCode, 0);
    const std::string log = dir.file("logs/here/talo.log");
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')), "Setting log file to '" + log + "'.");
    EXPECT_NE(kxtest::slurp(log).find("INFO 100 All files are well.\n"), std::string::npos);
}

TEST_F(Talo, GoesOnWhereTheLogCannotBeWritten) {
    const auto outcome = run({dir.write("file.txt", "x"), "--log", dir.path()});
    EXPECT_EQ(outcome.err, red("Couldn't create log file '" + dir.path() + "'!"));
    EXPECT_EQ(outcome.exitCode, 0);
}

// --- Checksums, large files and the banner -------------------------------------------------------

TEST_F(Talo, LeavesNothingInTheTemporaryDirectory) {
    const auto outcome = run({dir.write("file.bin", std::string(100000, 'x')), dir.write("e", "")});
    EXPECT_NE(outcome.out.find(findings(std::string(100000, 'x'))), std::string::npos);
    EXPECT_NE(outcome.out.find(findings("")), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>());
}

TEST_F(Talo, FailsWhereTheTemporaryDirectoryCannotBeWritten) {
    environment["TALO_TMP_DIR"] = dir.write("regular", "") + "/sub";
    const auto outcome = run({dir.write("file.txt", "x")});
    EXPECT_NE(outcome.out.find("Couldn't create tmp directory"), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
}

// Large enough to go through the streams, in several blocks and a rest.
TEST_F(TaloCopy, CopiesLargeFilesAndKeepsProgressOffAFile) {
    std::string content(9000001, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * i >> 7);
    dir.write("in/scene.osb", content);
    const auto outcome = copy();
    EXPECT_NE(outcome.out.find("  size       9,000,001\n"), std::string::npos);
    EXPECT_EQ(outcome.err, "");  // no terminal, no progress
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(kxtest::slurp(target) == content);
}

TEST_F(Talo, NoticesAFullDiskBehindALargeFile) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
    const std::string source = dir.write("in/data", std::string(9000000, 'x'));
    dir.makeDir("out");
    ASSERT_EQ(symlink("/dev/full", dir.file("out/data").c_str()), 0);
    const auto outcome = run({source, "--copy-to", dir.file("out"), "--answer", "yes"});
    EXPECT_NE(outcome.err.find("Couldn't copy '" + source + "'"), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(TaloCopy, ShowsProgressOnATerminalAndWipesIt) {
    dir.write("in/scene.osb", std::string(9000000, 'x'));
    int terminal = -1;
    const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
    ASSERT_GE(child, 0);
    if (child == 0) {
        setenv("TALO_TMP_DIR", tmp.c_str(), 1);
        execl(talo.c_str(), talo.c_str(), source.c_str(), nullptr);
        _exit(127);
    }
    std::string screen;
    char block[4096];
    for (ssize_t n = 0; (n = read(terminal, block, sizeof block)) > 0;)
        screen.append(block, static_cast<std::size_t>(n));
    close(terminal);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_NE(screen.find("\r 11%"), std::string::npos) << screen;
    EXPECT_NE(screen.find("\r100%\r    \r"), std::string::npos) << screen;
}

// Columns 0 and 6 of the picture: "T" has ink in its top left corner, "." has none there.
TEST_F(Talo, DrawsItsBanner) {
    const std::string file = dir.file("banner.ppm");
    EXPECT_EQ(run({"--full-name", "T.", "--banner", file}).exitCode, 0);
    const std::string ppm = kxtest::slurp(file), head = "P6\n39 21\n255\n";
    ASSERT_EQ(ppm.size(), head.size() + 39 * 21 * 3);
    EXPECT_EQ(ppm.substr(0, head.size()), head);
    const auto pixel = [&](std::size_t x, std::size_t y) {
        return ppm.substr(head.size() + 3 * (39 * y + x), 3);
    };
    EXPECT_EQ(pixel(0, 0), "\xFF\xC0\x40");
    EXPECT_EQ(pixel(2, 2), "\xFF\xC0\x40");
    EXPECT_EQ(pixel(18, 0), "   ");
    EXPECT_EQ(pixel(38, 20), "   ");
}

TEST_F(Talo, FailsWhereTheBannerCannotBeWritten) {
    const auto outcome = run({"--banner", dir.path()});
    EXPECT_EQ(outcome.err, red("Couldn't write '" + dir.path() + "': Is a directory"));
    EXPECT_EQ(outcome.exitCode, 1);
}
