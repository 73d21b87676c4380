// The host application, run as a process from the installation layout that the build has staged.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <regex>

#include "kxtest.h"

namespace {

const std::string root = std::filesystem::canonical(KXTEST_TALO_ROOT).string();
const std::string talo = root + "/bin/MAC/talo";

// Runs talo with a home directory of its own.
class Talo : public testing::Test {
protected:
    kxtest::TempDir dir;
    std::map<std::string, std::string> environment = {{"HOME", dir.makeDir("home")}};
    kxtest::RunOptions options;

    kxtest::Outcome run(std::vector<std::string> arguments, const std::string& program = talo) {
        arguments.insert(arguments.begin(), program);
        return kxtest::run(arguments, environment, options);
    }
};

std::string started(const std::string& name = "Talo") {
    return name + ", installed in " + root + "\n";
}

std::string reportOf(const std::string& name, const std::string& extension,
                     const std::string& baseName, std::size_t size, const std::string& path) {
    return name + "\n  extension  " + extension + "\n  base name  " + baseName + "\n  size       " +
           std::to_string(size) + "\n  path       " + path + "\n  readable   yes\n";
}

const std::string allWell = "All files are well.\n";

std::string red(const std::string& text) { return "\033[31m" + text + "\n\033[0m"; }

std::string installedReport() {
    std::string text;
    for (const std::string& name : kxtest::list(root + "/data")) {
        const auto path = std::filesystem::path(root) / "data" / name;
        const std::string extension = path.extension().string();
        text += reportOf(name, extension.empty() ? "" : extension.substr(1), path.stem().string(),
                         std::filesystem::file_size(path), "data/" + name);
    }
    return text;
}

}  // namespace

TEST_F(Talo, ReportsOnTheInstalledDataByDefault) {
    EXPECT_GE(kxtest::list(root + "/data").size(), 4U);
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started() + installedReport() + allWell);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, FindsItsDataFromAnotherWorkingDirectory) {
    options.directory = dir.path();
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started() + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, StartsThroughARelativePath) {
    options.directory = root + "/data";
    const auto outcome = run({}, "../bin/MAC/talo");
    EXPECT_EQ(outcome.out, started() + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
}

TEST_F(Talo, StartsThroughASymbolicLink) {
    const std::string link = dir.file("link");
    ASSERT_EQ(symlink(talo.c_str(), link.c_str()), 0);
    const auto outcome = run({}, link);
    EXPECT_EQ(outcome.out, started() + installedReport() + allWell);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(kxtest::exists(dir.file("home/Library/Application Support/Pelloran/link")));
}

TEST_F(Talo, CreatesThePreferencesBelowHome) {
    run({});
    EXPECT_TRUE(kxtest::exists(dir.file("home/Library/Application Support/Pelloran/talo")));
}

// "$HOME" stays unexpanded, so the preferences are made below the working directory.
TEST_F(Talo, SaysSoWhenHomeIsNotSet) {
    environment.clear();
    options.directory = dir.makeDir("cwd");
    const auto outcome = run({});
    EXPECT_EQ(outcome.out, started() + installedReport() + allWell);
    EXPECT_EQ(outcome.err, red("expandFilename: couldn't expand env.var HOME!"));
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::list(dir.file("cwd")), std::vector<std::string>{"$HOME"});
}

TEST_F(Talo, ResolvesPathsAgainstTheWorkingDirectory) {
    options.directory = root + "/data";
    const auto outcome = run({"../examples"});
    const auto size = std::filesystem::file_size(root + "/examples/quickstart.txt");
    EXPECT_EQ(outcome.out, started() +
                               reportOf("quickstart.txt", "txt", "quickstart", size,
                                        "data/../examples/quickstart.txt") +
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
    "\\d+-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d INFO 100 All files are well\\.\n";
const char* const htmlLog =
    "<head>.*</p>\n<span style=\"color:#008c00;\">Talo, installed in ROOT</span><br>\n"
    "<span style=\"color:#008c00;\">All files are well\\.</span><br>\n";
const char* const csvLog =
    "Date;Time;Type of Message;Message Number;Description\n"
    "\\d\\d\\.\\d\\d\\.\\d+;\\d\\d:\\d\\d:\\d\\d;INFO;100;Talo, installed in ROOT\n"
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
