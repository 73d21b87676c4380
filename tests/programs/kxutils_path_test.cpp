// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Paths, directories, the processor and numbers on the command line.
#include <filesystem>

#include "kxCPUInfo.h"
#include "kxPlatform.h"
#include "kxutils_tool.h"

// --- path ----------------------------------------------------------------------------------------

namespace {

struct PathCase {
    const char* name;
    std::vector<std::string> arguments;
    std::string result;
};
void PrintTo(const PathCase& c, std::ostream* os) { *os << c.name; }

class Path : public Tool, public testing::WithParamInterface<PathCase> {};

const PathCase pathCases[] = {
    {"Name", {"name", "/a/b.txt"}, "b.txt\n"},
    {"NameOfDirectory", {"name", "dir/"}, "\n"},
    {"Dir", {"dir", "/a/b.txt"}, "/a\n"},
    {"DirOfPlainName", {"dir", "file"}, ".\n"},
    {"Base", {"base", "/x/a.b.c"}, "a.b\n"},
    {"Ext", {"ext", "Archive.TAR.GZ"}, "gz\n"},
    {"SetExt", {"setext", "png", "a.txt", "b"}, "a.png\nb.png\n"},
    {"SetEmptyExt", {"setext", "", "a.txt"}, "a.\n"},
    {"Rel", {"rel", "--base", "/usr/local/lib", "/usr/src/sys"}, "../../src/sys\n"},
    {"RelOfItself", {"rel", "--base", "/a/b", "/a/b"}, ".\n"},
    {"Abs", {"abs", "--base", "/a/b", "../c", "/x"}, "/a/b/../c\n/x\n"},
    {"Valid", {"valid", "a:b", ".?x*."}, "ab\nx\n"},
    {"Expand",
     {"expand", "$SCENES/a", "${SCENES}b", "plain"},
     "/s\xFF/a\n/s\xFF"
     "b\nplain\n"},
};

}  // namespace

TEST_P(Path, GivesTheLibrarysAnswer) {
    environment["SCENES"] = "/s\xFF";
    std::vector<std::string> arguments = GetParam().arguments;
    arguments.insert(arguments.begin(), "path");
    expectRun(run(arguments), 0, GetParam().result, "");
}

INSTANTIATE_TEST_SUITE_P(Operations, Path, testing::ValuesIn(pathCases),
                         [](const auto& testCase) { return std::string(testCase.param.name); });

TEST_F(Tool, RelAndAbsStartFromTheWorkingDirectory) {
    expectRun(run({"path", "abs", "x"}), 0, dir.path() + "/x\n", "");
    expectRun(run({"path", "rel", dir.path() + "/sub/x"}), 0, "sub/x\n", "");
}

TEST_F(Tool, APathThatCannotBeExpandedFails) {
    expectRun(run({"path", "expand", "$KXTEST_NONE/x", "a"}), 1, "a\n",
              "kxutils: $KXTEST_NONE/x: expandFilename: couldn't expand env.var KXTEST_NONE!\n");
    const auto json = document({"path", "expand", "a", "$KXTEST_NONE/x"}, 1);
    EXPECT_EQ(json["items"][0]["result"], "a");
    EXPECT_EQ(json["items"][1]["status"], "BAD");
    EXPECT_EQ(json["items"][1]["error"], "expandFilename: couldn't expand env.var KXTEST_NONE!");
}

TEST_F(Tool, APathThatTheBaseDoesNotAllowFails) {
    expectRun(run({"path", "abs", "--base", "relative", "x"}), 1, "",
              "kxutils: x: the base or the path does not allow it\n");
    EXPECT_EQ(run({"path", "rel", "--base", "relative", "/x"}).exitCode, 1);
    EXPECT_EQ(run({"path", "setext", "png"}).exitCode, 2);
}

// --- dirs ----------------------------------------------------------------------------------------

TEST_F(Tool, DirsShowsWhatExistsAndWhatDoesNot) {
    dir.write("talo/bin/MAC/talo", "");
    dir.makeDir("talo/lib/MAC");
    dir.makeDir("talo/data");
    const std::string root = dir.file("talo");
    const std::string home = dir.file("home");
    expectRun(run({"dirs", "--app", root + "/bin/MAC/talo"}), 0,
              "base         exists   " + root +
                  "\n"
                  "executable   exists   " +
                  root +
                  "/bin/MAC\n"
                  "bin          exists   " +
                  root +
                  "/bin/MAC\n"
                  "lib          exists   " +
                  root +
                  "/lib/MAC\n"
                  "plugins      missing  " +
                  root +
                  "/lib/plugins/MAC\n"
                  "Qt plugins   missing  " +
                  root +
                  "/bin/MAC/Qt/plugins\n"
                  "data         exists   " +
                  root +
                  "/data\n"
                  "examples     missing  " +
                  root +
                  "/examples\n"
                  "preferences  missing  " +
                  home + "/Library/Application Support/Pelloran/talo/\n",
              "");
    EXPECT_TRUE(kxtest::list(home).empty());  // the library itself would have created it there
}

TEST_F(Tool, DirsAgreesWithTheLibrary) {
    const std::string application = dir.write("talo/bin/MAC/talo", "") + ".old";
    const auto json = document({"dirs", "--app", application}, 0);
    EXPECT_TRUE(kxtest::list(dir.file("home")).empty());

    const kxtest::ScopedEnv home("HOME", dir.file("home").c_str());
    kxPlatform::init(application.c_str());
    EXPECT_EQ(json["application"], "talo");
    std::map<std::string, std::string> paths;
    for (const auto& item : json["items"]) paths[item["name"]] = item["path"];
    const std::map<std::string, std::string> expected = {
        {"base", kxPlatform::getBaseDir()},
        {"executable", kxPlatform::getExeDir()},
        {"bin", kxPlatform::getBinDir()},
        {"lib", kxPlatform::getLibDir()},
        {"plugins", kxPlatform::getPluginsDir()},
        {"Qt plugins", kxPlatform::getQtPluginsDir()},
        {"data", kxPlatform::getDataDir()},
        {"examples", kxPlatform::getExamplesDir()},
        {"preferences", kxPlatform::getPreferencesDir()}};
    EXPECT_EQ(paths, expected);
}

TEST_F(Tool, DirsKnowsAHomeThatIsEmptyNotSetOrEndsWithASlash) {
    const std::string application = dir.write("talo/bin/MAC/talo", "");
    const auto preferences = [&] {
        const auto outcome = run({"dirs", "--app", application});
        EXPECT_EQ(outcome.exitCode, 0);
        return outcome.out.substr(outcome.out.find("preferences")) + outcome.err;
    };
    const std::string home = dir.makeDir("home-with-slash") + "/";
    environment["HOME"] = home;
    EXPECT_EQ(preferences(),
              "preferences  missing  " + home + "Library/Application Support/Pelloran/talo/\n");
    environment["HOME"] = "";
    EXPECT_EQ(preferences(), "preferences  missing  " + dir.file("talo/preferences") + "\n");
    environment.erase("HOME");
    EXPECT_EQ(preferences(),
              "preferences  missing  $HOME/Library/Application Support/Pelloran/talo/\n"
              "kxutils: HOME is not set: the preferences are below a directory \"$HOME\"\n");
    EXPECT_EQ(kxtest::list(dir.file("talo")), std::vector<std::string>{"bin"});
}

TEST_F(Tool, DirsTakesItselfForTheApplication) {
    const auto json = document({"dirs"}, 0);
    EXPECT_EQ(json["application"], "kxutils");
    EXPECT_EQ(json["items"][1]["path"],
              std::filesystem::canonical(KXTEST_KXUTILS).parent_path().string());
    EXPECT_EQ(json["items"][1]["exists"], true);
}

// --- tmp -----------------------------------------------------------------------------------------

// No test leaves anything in the directory that all users share.
TEST_F(Tool, TmpIsTheTestsOwnHere) {
    EXPECT_EQ(run({"tmp"}).out, "temporary    exists   " + dir.file("tmp") + "\n");
}

TEST_F(Tool, TmpCreatesAndShowsTheDirectory) {
    const std::string path = dir.file("scratch");
    environment["TALO_TMP_DIR"] = path;
    expectRun(run({"tmp"}), 0, "temporary    exists   " + path + "\n",
              "kxutils: TALO_TMP_DIR = '" + path + "'\n");
    EXPECT_TRUE(std::filesystem::is_directory(path));
}

TEST_F(Tool, TmpFailsWithoutADirectory) {
    dir.write("file", "");
    environment["TALO_TMP_DIR"] = dir.file("file/scratch");
    const auto outcome = run({"tmp"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.out, "temporary    missing  " + dir.file("file/scratch") + "\n");
    EXPECT_NE(outcome.err.find("kxutils: there is no temporary directory\n"), std::string::npos);
    EXPECT_EQ(outcome.err.find('\033'), std::string::npos);
}

// --- cpu -----------------------------------------------------------------------------------------

TEST_F(Tool, CpuAgreesWithTheLibrary) {
    const kxCPUInfo& cpu = kxCPUInfo::getCPUInfo();
    const auto json = document({"cpu"}, 0);
    std::map<std::string, nlohmann::json> values;
    for (const auto& item : json["items"]) values[item["name"]] = item["value"];
    EXPECT_EQ(json["items"].size(), 5U + 23U + 57U + 32U);
    EXPECT_EQ(values["SSE2"], cpu.hasSSE2Support());
    EXPECT_EQ(values["AVX2"], cpu.hasAVX2Support());
    EXPECT_EQ(values["family"], cpu.fields().family);
    EXPECT_EQ(values["model"], cpu.fields().model);
    EXPECT_EQ(values["popcnt"], cpu.fields().popcnt);
    EXPECT_EQ(values["fullyAssociative"], cpu.fields().fullyAssociative);
    for (int bit = 0; bit < 32; ++bit)
        EXPECT_EQ(values[kxCPUInfo::_szFeatures[bit]], (cpu.fields().featureWord >> bit & 1) != 0);
}

TEST_F(Tool, CpuWritesALinePerValue) {
    const auto outcome = run({"cpu"});
    const std::string yes = kxCPUInfo::getCPUInfo().hasSSE2Support() ? "yes" : "no";
    EXPECT_EQ(outcome.out.substr(0, outcome.out.find('\n')), "SSE2" + std::string(28, ' ') + yes);
}

// Expects what the library says about each feature, one of which is a reserved bit.
TEST_F(Tool, CpuHasAnswersByTheExitCode) {
    const kxCPUInfo& cpu = kxCPUInfo::getCPUInfo();
    expectRun(run({"cpu", "--has", "sse2"}), cpu.hasSSE2Support() ? 0 : 1, "", "");
    expectRun(run({"cpu", "--has", "AVX2"}), cpu.hasAVX2Support() ? 0 : 1, "", "");
    expectRun(run({"cpu", "--has", "avx512"}), cpu.hasAVX512Support() ? 0 : 1, "", "");
    const bool hasReserved = (cpu.fields().featureWord >> 10 & 1) != 0;
    expectRun(run({"cpu", "--has", "SSE2", "unknown1"}), hasReserved ? 0 : 1, "", "");
    EXPECT_EQ(document({"cpu", "--has", "Unknown1"}, hasReserved ? 0 : 1)["items"][0]["status"],
              hasReserved ? "ok" : "BAD");
    expectRun(run({"cpu", "--has", "family"}), 2, "", "kxutils: --has: unknown feature 'family'\n");
}

// --- number --------------------------------------------------------------------------------------

TEST_F(Tool, NumberGroupsDigits) {
    expectRun(run({"number", "group", "1234567", "item 12345 of 678901", "abc"}), 0,
              "1,234,567\nitem 12,345 of 678,901\nabc\n", "");
    expectRun(run({"number", "group", "--separator", "'", "--size", "2", "1000"}), 0, "10'00\n",
              "");
    expectRun(run({"number", "group", "--", "-12345"}), 0, "-12,345\n", "");
    expectRun(runWith("1000\n\n22222", {"number", "group", "-", "1"}), 0, "1,000\n\n22,222\n1\n",
              "");
    EXPECT_EQ(document({"number", "group",
                        "1\xFF"
                        "0000"},
                       0)["items"][0]["resultBase64"],
              "Mf8wLDAwMA==");
}

TEST_F(Tool, NumberWritesListsOfValues) {
    expectRun(run({"number", "list", "1", "2.5", "-0.0000001", "1234567"}), 0,
              "1 2.5 -1e-07 1.23457e+06 \n", "");
    expectRun(runWith("1 2\n3\n", {"number", "list", "-"}), 0, "1 2 3 \n", "");
    expectRun(run({"number", "list", "1", "x"}), 1, "", "kxutils: list: 'x' is not a number\n");
    for (const char* const text : {"0x10", "1e39", "-1e39", "1e-60", "1,5", "1e", "--1"})
        expectRun(run({"number", "list", "--", text}), 1, "",
                  "kxutils: list: '" + std::string(text) + "' is not a number\n");
    expectRun(run({"number", "list", "+2", "3.4e38", "1e-40"}), 0, "2 3.4e+38 9.99995e-41 \n", "");
    expectRun(run({"number", "list", "1", ""}), 0, "1 \n", "");
}

TEST_F(Tool, NumberNamesAnInputThatCannotBeRead) {
    const std::string fault = "kxutils: -: Is a directory\n";
    expectRun(shell("\"$K\" number group - <."), 3, "", fault);
    expectRun(shell("\"$K\" number list - <."), 3, "", fault);
}

TEST_F(Tool, NumberReadsListsOfValues) {
    expectRun(run({"number", "list", "--read", "1.000000e+00 2.500000e+00 ", "TRUE", "1 2"}), 0,
              "1\n2.5\n1\n1\n", "");
    const auto json = document({"number", "list", "--read", "1.5e+00 -2.5e+00"}, 0);
    EXPECT_EQ(json["items"][0]["values"], nlohmann::json({1.5, -2.5}));
}
