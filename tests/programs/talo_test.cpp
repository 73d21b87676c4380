// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The host application, run as a process from the installation layout that the build has staged.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <regex>

#include "emulator.h"
#include "file_limit.h"
#include "kxCPUInfo.h"
#include "kxtest.h"
#include "reference/checksum_footer.h"

namespace {

const std::string root = std::filesystem::canonical(KXTEST_TALO_ROOT).string();
const std::string talo = root + "/bin/MAC/talo";

// Runs talo with its own home directory.
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

    // Runs a shell command in which "$T" is the program.
    kxtest::Outcome shell(const std::string& command) {
        auto variables = environment;
        variables["T"] = talo;
        variables["PATH"] = "/usr/bin:/bin";
        return kxtest::run({"/bin/sh", "-c", command}, variables, options);
    }
};

std::string processor() {
    const kxCPUInfo& cpu = kxCPUInfo::getCPUInfo();
    return std::string("Processor:") + (cpu.hasSSE2Support() ? " SSE2" : "") +
           (cpu.hasSSE42Support() ? " SSE4.2" : "") + (cpu.hasAVXSupport() ? " AVX" : "") +
           (cpu.hasAVX2Support() ? " AVX2" : "") + (cpu.hasAVX512Support() ? " AVX-512" : "") +
           "\n";
}

std::string started(const std::string& tmp, const std::string& where = root) {
    return "Talo, installed in " + where + "\n" + processor() + "TALO_TMP_DIR = '" + tmp + "'\n";
}

// The checksum of a copy, and the checksum after one byte of the copy has been damaged.
std::string findings(std::string content) {
    std::string text = "  checksum   " + reference::crc32Digits(content) + "\n";
    if (content.empty()) return text;
    char& middle = content[content.size() / 2];
    middle = static_cast<char>(~middle);
    return text + "  damaged    " + reference::crc32Digits(content) + "\n";
}

struct Report {
    std::string name, extension, baseName, format, size, path, content;
    std::string text() const {
        return name + "\n  extension  " + extension + "\n  base name  " + baseName +
               "\n  format     " + format + "\n  size       " + size + "\n  path       " + path +
               "\n  readable   yes\n";
    }
};

std::string reports(const std::vector<Report>& rows) {
    std::string all;
    for (const Report& row : rows) all += row.text() + findings(row.content);
    return all;
}

const std::string allWell = "All files are well.\n";

std::string red(const std::string& text) { return "\033[31m" + text + "\n\033[0m"; }

std::string dataFile(const std::string& name) { return kxtest::slurp(root + "/data/" + name); }

std::string installedReport() {
    const auto row = [](const char* name, const char* extension, const char* baseName,
                        const char* format, const char* size) {
        const std::string path = std::string("data/") + name;
        return Report{name, extension, baseName, format, size, path, dataFile(name)};
    };
    return reports({row("README", "", "README", "unknown", "87"),
                    row("checker.ppm", "ppm", "checker", "Picture", "781"),
                    row("cube.obj", "obj", "cube", "Mesh", "176"),
                    row("materials.csv", "csv", "materials", "Table", "110"),
                    row("turntable.scene.json", "json", "turntable.scene", "Scene", "180")});
}

}  // namespace

TEST_F(Talo, ReportsOnTheInstalledDataByDefault) {
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started(tmp) + installedReport() + allWell);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, FindsItsDataFromAnotherWorkingDirectory) {
    options.directory = dir.path();
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started(tmp) + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, StartsThroughARelativePath) {
    options.directory = root + "/data";
    const auto outcome = run({}, "../bin/MAC/talo");
    EXPECT_EQ(outcome.out, started(tmp) + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, StartsThroughASymbolicLink) {
    const std::string link = dir.file("link");
    ASSERT_EQ(symlink(talo.c_str(), link.c_str()), 0);
    const auto outcome = run({}, link);
    EXPECT_EQ(outcome.out, started(tmp) + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
    if (!kxtest::underValgrind()) {  // Valgrind hides the link
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
    EXPECT_EQ(outcome.out, started(tmp) + installedReport() + allWell);
    EXPECT_EQ(outcome.err, red("expandFilename: couldn't expand env.var HOME!"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::list(dir.file("cwd")), std::vector<std::string>{"$HOME"});
}

TEST_F(Talo, ResolvesPathsAgainstTheWorkingDirectory) {
    options.directory = root + "/data";
    const auto outcome = run({"../examples"});
    const std::string path = "data/../examples/quickstart.txt";
    EXPECT_EQ(outcome.out, started(tmp) +
                               reports({{"quickstart.txt", "txt", "quickstart", "unknown", "173",
                                         path, kxtest::slurp(root + "/" + path)}}) +
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
    // The path is relative where the installation is below the same directory.
    EXPECT_NE(outcome.out.find("  base name  missing\n  format     unknown\n  path       "),
              std::string::npos);
    EXPECT_NE(outcome.out.find("/missing\n  readable   no\n"), std::string::npos);
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
    // The version name ends in a blank if it has a year.
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
    dir.makeDir("out/scene.osb");  // a directory in place of the file
    EXPECT_EQ(copy({"--answer", "yes"}).exitCode, 1);
    const auto below = run({source, "--copy-to", source + "/sub"});
    EXPECT_EQ(below.err, red("Couldn't create '" + source + "/sub': Not a directory"));
    EXPECT_EQ(below.exitCode, 1);
}

TEST_F(TaloCopy, ReplacesALinkAndDoesNotFollowIt) {
    const std::string elsewhere = dir.write("elsewhere", "old"), nowhere = dir.file("nowhere");
    for (const std::string& place : {elsewhere, nowhere}) {
        dir.makeDir("out");
        ASSERT_EQ(symlink(place.c_str(), target.c_str()), 0);
        EXPECT_EQ(copy({"--answer", "yes"}).exitCode, 0);
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(target)));
        EXPECT_EQ(kxtest::slurp(target), "new");
        std::filesystem::remove(target);
    }
    EXPECT_EQ(kxtest::slurp(elsewhere), "old");
    EXPECT_FALSE(kxtest::exists(nowhere));
}

TEST_F(TaloCopy, GivesTheCopyTheSamePermissions) {
    ASSERT_EQ(chmod(source.c_str(), 0640), 0);
    const mode_t mask = umask(022);
    EXPECT_EQ(copy().exitCode, 0);
    umask(mask);
    EXPECT_EQ(std::filesystem::status(target).permissions(), std::filesystem::perms{0640});
}

// A question that was not shown has not been answered.
TEST_F(TaloCopy, KeepsTheFileWhereTheQuestionCannotBeShown) {
    makeOldCopy();
    options.input = "\n";
    options.err = open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (options.err < 0) GTEST_SKIP() << "no /dev/full here";
    copy();
    close(options.err);
    EXPECT_EQ(kxtest::slurp(target), "old");
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

TEST_F(Talo, GoesOnWhereTheLogCannotBeWrittenAndFails) {
    const auto outcome = run({dir.write("file.txt", "x"), "--log", dir.path()});
    EXPECT_EQ(outcome.err, red("Couldn't create log file '" + dir.path() + "'!"));
    EXPECT_NE(outcome.out.find("  checksum   "), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
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

// Large enough to go through the streams, in several whole blocks and a part.
TEST_F(TaloCopy, CopiesLargeFilesAndKeepsProgressOffAFile) {
    std::string content(9000001, '\0');
    for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * i >> 7);
    dir.write("in/scene.osb", content);
    const auto outcome = copy();
    EXPECT_NE(outcome.out.find("  size       9,000,001\n"), std::string::npos);
    EXPECT_EQ(outcome.err, "");  // without a terminal there is no progress
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(kxtest::slurp(target) == content);
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

// Columns 0 and 6 of the picture: "T" has ink in its top left corner, "." does not.
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
    for (const std::string& place : {dir.path(), dir.makeDir("in") + "/missing/banner.ppm"}) {
        const auto outcome = run({"--banner", place});
        EXPECT_EQ(outcome.err,
                  red("Couldn't write '" + place + "': " +
                      (place == dir.path() ? "Is a directory" : "No such file or directory")));
        EXPECT_EQ(outcome.exitCode, 1);
    }
}

// A device, or the target of a link, is written to; a file is replaced and keeps its permissions.
TEST_F(Talo, WritesItsBannerToWhatIsThere) {
    const std::string file = dir.write("banner.ppm", "old"), link = dir.file("link");
    ASSERT_EQ(chmod(file.c_str(), 0640), 0);
    ASSERT_EQ(symlink(file.c_str(), link.c_str()), 0);
    for (const std::string& place : {file, link, std::string("/dev/null")}) {
        EXPECT_EQ(run({"--banner", place}).exitCode, 0) << place;
        EXPECT_EQ(kxtest::slurp(file).substr(0, 3), "P6\n");
    }
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
    EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms{0640});
}

// --- Other users of the machine ------------------------------------------------------------------

namespace {

std::string modeOf(const std::string& path) {
    struct stat info {};
    if (lstat(path.c_str(), &info) != 0) return "missing";
    char text[8];
    std::snprintf(text, sizeof text, "%o", static_cast<unsigned>(info.st_mode & 07777));
    return text;
}

bool setMode(const std::string& path, mode_t mode) { return chmod(path.c_str(), mode) == 0; }

}  // namespace

// Anybody who can write to the shared directory can put links there under names that may be used.
TEST_F(Talo, FollowsNoLinkInTheTemporaryDirectory) {
    environment["FILE"] = dir.write("file.txt", "secret");
    environment["VICTIM"] = dir.makeDir("victim");
    dir.makeDir("tmp");
    ASSERT_TRUE(setMode(tmp, 01777));
    const auto outcome = shell(
        "i=0; while [ $i -lt 9 ]; do ln -s $VICTIM/$i $TALO_TMP_DIR/talo$$-$i; i=$((i+1)); done;"
        "exec $T $FILE");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(kxtest::list(dir.file("victim")), std::vector<std::string>());
    EXPECT_EQ(kxtest::list(tmp).size(), 9U);  // the links
}

// As above, for the directory of the copies.
TEST_F(Talo, FollowsNoLinkBesideACopy) {
    environment["FILE"] = dir.write("file.txt", "secret");
    environment["VICTIM"] = dir.makeDir("victim");
    environment["OUT"] = dir.makeDir("out");
    const auto outcome = shell(
        "i=0; while [ $i -lt 9 ]; do ln -s $VICTIM/$i $OUT/.talo$$-$i; i=$((i+1)); done;"
        "exec $T --copy-to $OUT $FILE");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(kxtest::list(dir.file("victim")), std::vector<std::string>());
    EXPECT_EQ(kxtest::list(dir.file("out")).size(), 10U);  // the links and the copy
    EXPECT_EQ(kxtest::slurp(dir.file("out/file.txt")), "secret");
}

// In a directory that is not sticky, others could replace our directory by one of theirs.
TEST_F(Talo, WorksInTheSystemsTemporaryDirectoryWhereTheSharedOneIsOpenToAll) {
    dir.makeDir("tmp");
    ASSERT_TRUE(setMode(tmp, 0777));
    environment["TMPDIR"] = dir.makeDir("system");
    const std::string warning =
        "\033[33mOthers can change files in temporary directory '" + tmp + "'\n\033[0m";
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started(tmp) + warning + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::list(dir.file("system")), std::vector<std::string>());

    environment["TMPDIR"] = tmp;
    const auto refused = run({});
    EXPECT_EQ(refused.err, red("Set TALO_TMP_DIR to a directory that only you can write to"));
    EXPECT_EQ(refused.out, started(tmp) + warning + warning);
    EXPECT_EQ(refused.exitCode, 1);
}

TEST_F(Talo, WorksInTheSystemsTemporaryDirectoryWhereTheSharedOneIsSomebodyElses) {
    if (!kxtest::isRoot()) GTEST_SKIP() << "only the super-user can give a directory away";
    dir.makeDir("tmp");
    ASSERT_EQ(chown(tmp.c_str(), 65534, 65534), 0);
    environment["TMPDIR"] = dir.makeDir("system");
    const auto outcome = run({});
    EXPECT_NE(outcome.out.find("Others can change files in temporary directory '" + tmp + "'"),
              std::string::npos);
    EXPECT_EQ(outcome.exitCode, 0);
}

// Started by its bare name, which the shell finds in PATH.
class TaloByName : public Talo {
protected:
    void SetUp() override {
        if (kxtest::underEmulator()) GTEST_SKIP() << "started by a script, in its own way";
        dir.write("place/bin/MAC/talo", "");
        dir.makeDir("place/data");
        environment["PATH"] = root + "/bin/MAC:/usr/bin:/bin";
        options.directory = dir.makeDir("place/some/where");
    }
    kxtest::Outcome start() { return kxtest::run({"/usr/bin/env", "talo"}, environment, options); }
    const std::string place = dir.file("place");
};

TEST_F(TaloByName, TakesTheInstallationAroundTheWorkingDirectory) {
    EXPECT_EQ(start().out, started(tmp, place) + allWell);
}

TEST_F(TaloByName, RefusesTheInstallationWhereOthersCanWrite) {
    for (const std::string path : {"place", "place/some", "place/some/where"}) {
        for (const mode_t mode : {0777U, 01777U, 0775U, 0757U}) {
            ASSERT_TRUE(setMode(dir.file(path), mode));
            const auto outcome = start();
            EXPECT_EQ(outcome.err,
                      red("Others can write to the working directory, or above it, and the "
                          "installation '" +
                          place + "' was found from there. Start talo by its full path"));
            EXPECT_EQ(outcome.out, "");
            EXPECT_EQ(outcome.exitCode, 1);
            EXPECT_EQ(run({}).exitCode, 0);  // started by its full path
        }
        ASSERT_TRUE(setMode(dir.file(path), 0755));
    }
}

TEST_F(TaloByName, RefusesTheInstallationOfAnotherUser) {
    if (!kxtest::isRoot()) GTEST_SKIP() << "only the super-user can give a directory away";
    ASSERT_EQ(chown(place.c_str(), 65534, 65534), 0);
    EXPECT_EQ(start().exitCode, 1);
}

TEST_F(TaloByName, AsksNobodyWhereItKnowsItsOwnPlace) {
    std::filesystem::remove_all(place + "/bin");
    ASSERT_TRUE(setMode(place, 0777));
    EXPECT_EQ(start().out, started(tmp) + installedReport() + allWell);
}

TEST_F(Talo, FailsOutsideAnInstallation) {
    if (kxtest::underEmulator()) GTEST_SKIP() << "started by a script, beside the program";
    const std::string program = dir.makeDir("a/b") + "/talo";
    for (const char* file : {"/talo", "/libkxUtils.so.1"}) {
        if (kxtest::exists(root + "/bin/MAC" + file))
            std::filesystem::copy(root + "/bin/MAC" + file, dir.file("a/b") + file);
    }
    const auto outcome = run({}, program);
    EXPECT_EQ(outcome.err, red("There is no installation in '" + dir.path() + "'"));
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.exitCode, 1);
}

// --- Things that are not files -------------------------------------------------------------------

TEST_F(Talo, ReportsPipesAndDevicesWithoutReadingThem) {
    const std::string folder = dir.makeDir("in"), pipe = folder + "/pipe", zero = folder + "/zero";
    const std::string file = dir.write("in/file.txt", "x");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0666), 0);
    ASSERT_EQ(symlink("/dev/zero", zero.c_str()), 0);
    const auto outcome = run({folder, "--copy-to", dir.file("out")});
    EXPECT_EQ(outcome.err, red("'" + pipe + "' is not a regular file") +
                               red("'" + zero + "' is not a regular file"));
    EXPECT_NE(outcome.out.find("pipe\n  extension  \n"), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(kxtest::list(dir.file("out")), std::vector<std::string>{"file.txt"});
}

// The system says that this file is empty.
TEST_F(Talo, TakesNoPartForTheWhole) {
    const std::string file = "/proc/version";
    if (!kxtest::exists(file)) GTEST_SKIP() << "no " << file;
    const auto outcome = run({file, "--copy-to", dir.file("out")});
    EXPECT_EQ(outcome.err,
              red("'" + file + "' has not the size that the system tells, or is changing"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(kxtest::list(dir.file("out")), std::vector<std::string>());
}

// Nothing is mapped at address 0, so this is a regular file that can be opened but not read.
TEST_F(Talo, FailsWhereAFileCannotBeRead) {
    const std::string file = "/proc/self/mem";
    if (!kxtest::exists(file)) GTEST_SKIP() << "no " << file;
    const auto outcome = run({file});
    EXPECT_EQ(outcome.err, red("Couldn't read '" + file + "': Input/output error"));
    EXPECT_EQ(outcome.out.find(allWell), std::string::npos);
    EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(Talo, RefusesAnEmptyPath) {
    const auto outcome = run({"", "--copy-to", dir.file("out")});
    EXPECT_EQ(outcome.err, red("An empty path leads nowhere"));
    EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(TaloCopy, ReplacesNothingButFiles) {
    dir.makeDir("out");
    ASSERT_EQ(mkfifo(target.c_str(), 0666), 0);
    const auto outcome = copy({"--answer", "yes"});
    EXPECT_EQ(outcome.err, red("Couldn't copy to '" + target + "': File exists"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(std::filesystem::is_fifo(target));
}

// --- Output, and the working directory -----------------------------------------------------------

TEST_F(Talo, FailsWhereItsOutputCannotBeWritten) {
    options.out = open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (options.out < 0) GTEST_SKIP() << "no /dev/full here";
    for (const char* argument : {"--help", "--version-is-no-option", "--answer=yes"}) {
        const auto outcome = run({argument});
        const bool isUsage = argument[2] == 'v';
        EXPECT_EQ(outcome.exitCode, isUsage ? 2 : 1);
        EXPECT_EQ(outcome.err == "talo: standard output could not be written\n", !isUsage);
    }
    close(options.out);
    EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>());
}

TEST_F(Talo, FailsWhereItsOutputIsClosed) {
    environment["FILE"] = dir.write("file.txt", "content");
    environment["OUT"] = dir.file("out");
    const auto outcome = shell("exec $T --copy-to $OUT $FILE <&- >&-");
    EXPECT_EQ(outcome.err, "talo: standard output could not be written\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(kxtest::slurp(dir.file("out/file.txt")), "content");  // and nothing of the new output
    EXPECT_EQ(shell("exec $T $FILE 2>&-").exitCode, 0);
}

TEST_F(Talo, RemovesItsFilesWhereNobodyReadsOn) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    close(ends[0]);
    options.out = ends[1];
    const auto outcome = run({});
    close(ends[1]);
    EXPECT_EQ(outcome.err, "talo: standard output could not be written\n");
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>());
}

// The library knows such a directory as "".
TEST_F(Talo, WorksBelowAVeryLongPath) {
    std::string directory = "deep";
    while (directory.size() < 2100) directory += '/' + std::string(200, 'x');
    options.directory = dir.makeDir(directory);
    dir.write(directory + "/relative.txt", "r");
    const std::string absolute = dir.write("absolute.txt", "a");
    for (const std::string& out : {dir.file("out"), std::string("out")}) {
        const auto outcome = run({absolute, "relative.txt", "--copy-to", out});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        const std::string place = out == "out" ? options.directory + "/out" : out;
        EXPECT_EQ(kxtest::slurp(place + "/absolute.txt"), "a");
        EXPECT_EQ(kxtest::slurp(place + "/relative.txt"), "r");
    }
}

TEST_F(Talo, SaysSoWhereThereIsNoPlaceForPreferences) {
    environment["HOME"] = dir.write("regular", "");
    const auto outcome = run({});
    EXPECT_EQ(outcome.err, red("There is no directory for preferences: Not a directory"));
    EXPECT_EQ(outcome.exitCode, 0);
}

// --- Faults --------------------------------------------------------------------------------------

TEST_F(Talo, NoticesAFullDisk) {
    const std::string source = dir.write("in/data", std::string(20000, 'x'));
    const kxtest::ScopedFileLimit limit(8192);
    const auto outcome = run({source, "--copy-to", dir.file("out")});
    EXPECT_EQ(outcome.err, red("Couldn't write a copy of '" + source + "': File too large"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>());
}

// The calls of one function fail, one after another, and each failure is noticed.
class TaloFaults : public TaloCopy {
protected:
    void SetUp() override {
        if (kxtest::underSanitizer() || kxtest::underEmulator())
            GTEST_SKIP() << "nothing can be preloaded";
        environment["LD_PRELOAD"] = KXTEST_TALO_FAULTS;
        environment["KXTEST_REACHED"] = reached;
        makeOldCopy();
    }

    // Returns false if the program does not make that many calls.
    bool fails(const std::string& function, int number, const std::vector<std::string>& more = {}) {
        std::filesystem::remove(reached);
        environment["KXTEST_FAULT"] = function + ' ' + std::to_string(number);
        outcome = copy(more);
        EXPECT_EQ(outcome.signal, 0) << function << ' ' << number << outcome.err;
        return kxtest::exists(reached);
    }

    // Makes each call fail in turn. If `isWritten`, a failure may leave the new content.
    int failEach(const std::string& function, int step = 0) {
        int number = 1;
        for (; fails(function, number, {"--answer", "yes"}); number += 1 + number * step / 16) {
            EXPECT_EQ(outcome.exitCode, 1) << function << ' ' << number << outcome.out;
            EXPECT_NE(outcome.err, "") << function << ' ' << number;
            EXPECT_EQ(kxtest::list(dir.file("out")), std::vector<std::string>{"scene.osb"});
            makeOldCopy();
        }
        EXPECT_EQ(outcome.exitCode, 0) << function << ' ' << number << outcome.err;
        return number - 1;
    }

    const std::string reached = dir.file("reached");
    kxtest::Outcome outcome;
};

TEST_F(TaloFaults, AreNoticedWhileCopying) {
    // The content is written twice, and so is the damaged byte; pread() also looks for what should
    // not be there.
    EXPECT_EQ(failEach("write"), 2);
    EXPECT_EQ(failEach("pread"), 5);
    EXPECT_EQ(failEach("pwrite"), 1);
    EXPECT_EQ(failEach("rename"), 1);
    EXPECT_GE(failEach("fread"), 4);
    EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>());
}

// If only the source, which has been read, cannot be closed, nothing is lost.
TEST_F(TaloFaults, AreNoticedWhileClosing) {
    for (int number = 1; number < 4; ++number) {
        makeOldCopy();
        EXPECT_TRUE(fails("close", number, {"--answer", "yes"}));
        EXPECT_EQ(outcome.exitCode, 1) << number;
        EXPECT_EQ(kxtest::slurp(target), "old") << number;
    }
    EXPECT_TRUE(fails("close", 4, {"--answer", "yes"}));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_FALSE(fails("close", 5, {"--answer", "yes"}));
}

TEST_F(TaloFaults, AreNoticedWhileRemoving) {
    for (int number = 1; fails("remove", number, {"--answer", "yes"}); ++number) {
        EXPECT_EQ(outcome.exitCode, 1) << number;
        EXPECT_NE(outcome.err.find("Couldn't remove '"), std::string::npos) << outcome.err;
        EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>()) << "tried once more";
    }
    EXPECT_EQ(outcome.exitCode, 0);
}

// At no time can anybody but its owner read the copy.
TEST_F(TaloFaults, LeaveNothingThatOthersCanRead) {
    dir.makeDir("tmp");
    ASSERT_TRUE(setMode(tmp, 0755));
    environment["KXTEST_FAULT"] = "keep 1";
    EXPECT_EQ(copy({"--answer", "yes"}).exitCode, 1);
    const auto left = kxtest::list(tmp);
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(modeOf(tmp + '/' + left[0]), "700");
    const auto files = kxtest::list(tmp + '/' + left[0]);
    ASSERT_EQ(files.size(), 1U);
    EXPECT_EQ(modeOf(tmp + '/' + left[0] + '/' + files[0]), "600");
}

// If it cannot find out whether a file is there, it must not take that for an answer.
TEST_F(TaloFaults, NeverOverwriteWithoutAnAnswer) {
    int number = 1;
    for (; fails("stat", number, {"--answer", "no"}); ++number)
        EXPECT_EQ(kxtest::slurp(target), "old") << number;
    EXPECT_GE(number, 5);
}

TEST_F(TaloFaults, LeaveTheBannerAsItWas) {
    const std::string file = dir.write("banner.ppm", "old");
    for (const char* function : {"write", "close", "rename"}) {
        EXPECT_TRUE(fails(function, 1, {"--banner", file})) << function;
        EXPECT_NE(outcome.err.find("Couldn't write '" + file + "': No space left on device"),
                  std::string::npos)
            << outcome.err;
        EXPECT_EQ(outcome.exitCode, 1) << function;
        EXPECT_EQ(kxtest::slurp(file), "old") << function;
    }
}

// The library does not report that it has lost a line.
TEST_F(TaloFaults, OfTheLogAreNoticed) {
    for (const char* format : {"text", "html", "csv"}) {
        const std::string log = dir.file(format);
        const std::vector<std::string> arguments = {"--answer", "yes",          "--log",
                                                    log,        "--log-format", format};
        int number = 1, said = 0;
        for (; fails("append", number, arguments); ++number) {
            std::filesystem::remove(log);
            EXPECT_EQ(outcome.exitCode, 1) << format << number;
            if (outcome.err.find("talo: the log file lacks lines\n") != std::string::npos) ++said;
        }
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        EXPECT_GE(said, 4) << "start, processor, temporary directory and end";
    }
}

// A few allocations have another way out, after which all of the work is done.
TEST_F(TaloFaults, OfMemoryEndItWithAMessage) {
    makeOldCopy();
    const std::string clean = copy({"--answer", "yes"}).out, copied = kxtest::slurp(target);
    int number = 1, said = 0;
    for (; fails("new", number, {"--answer", "yes"}); number += 1 + number / 16) {
        if (outcome.exitCode == 0) {
            EXPECT_EQ(outcome.out, clean) << number;
            EXPECT_EQ(kxtest::slurp(target), copied) << number;
            makeOldCopy();
            continue;
        }
        EXPECT_EQ(outcome.exitCode, 1) << number << outcome.err;
        EXPECT_NE(outcome.err, "") << number;
        if (outcome.err.find("talo: out of memory\n") != std::string::npos) ++said;
        EXPECT_EQ(kxtest::list(dir.file("out")), std::vector<std::string>{"scene.osb"});
        if (!kxtest::exists(tmp)) continue;
        EXPECT_EQ(kxtest::list(tmp), std::vector<std::string>()) << number;
    }
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_GE(said, 20);
}
