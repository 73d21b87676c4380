// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Start-up and the installation layout. What happens once per process, or depends on how the
// process was started, is tested in processes of kxPlatform_probe.
#include "kxPlatform.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "child.h"
#include "emulator.h"
#include "kxLog.h"
#include "kxtest.h"
#include "rows.h"

namespace fs = std::filesystem;

namespace {

const std::string notInitialized = "\033[31mkxPlatform not initialized!\n\033[0m";

std::string times(int n, const std::string& text) {
    std::string result;
    while (n-- > 0) result += text;
    return result;
}

/// An installation: its base directory with `bin/MAC` and, in that, the executable `name`.
std::string install(const kxtest::TempDir& dir, const std::string& base, const std::string& name) {
    dir.write(base + "/bin/MAC/" + name, "");
    return dir.file(base);
}

/// The identity of the working directory, even of one that has been deleted.
std::pair<dev_t, ino_t> workingDirectory() {
    struct stat info {};
    if (stat(".", &info) != 0) ADD_FAILURE() << "cannot look at the working directory";
    return {info.st_dev, info.st_ino};
}

/// A temporary home and working directory. The working directory is "work/a/b", so two levels above
/// it is "work".
class Platform : public testing::Test {
protected:
    /// Calls init(path); only `expectedErr` may be written on standard error, and nothing on
    /// standard output.
    static void init(const std::string& path, const std::string& expectedErr = "") {
        kxtest::Captured out(stdout), err(stderr);
        const auto before = workingDirectory();
        kxPlatform::init(path.c_str());
        EXPECT_EQ(workingDirectory(), before);
        EXPECT_EQ(out.text(), "");
        EXPECT_EQ(err.text(), expectedErr);
    }

    static void init(const std::string& root, const char* name, const std::string& expectedErr) {
        kxtest::Captured out(stdout), err(stderr);
        const auto before = workingDirectory();
        kxPlatform::init(root.c_str(), name);
        EXPECT_EQ(workingDirectory(), before);
        EXPECT_EQ(out.text(), "");
        EXPECT_EQ(err.text(), expectedErr);
    }

    const kxtest::TempDir dir;
    const std::string home = dir.makeDir("home");
    const std::string work = dir.makeDir("work");
    const std::string supportDir = "/Library/Application Support/Pelloran/";

private:
    const kxtest::ScopedEnv _home{"HOME", home.c_str()};
    const kxtest::ScopedCwd _cwd{dir.makeDir("work/a/b")};
};

/// The base directory that the installation's own executable would get: two levels above the
/// program that runs this test.
std::string baseOfThisProgram() {
    // The link is read, not followed, since it would lead to an emulator.
    const fs::path program = fs::canonical(fs::read_symlink("/proc/self/exe"));
    return program.parent_path().parent_path().parent_path().string();
}

}  // namespace

// --- init from the executable path ---------------------------------------------------------------

TEST_F(Platform, InitTakesNameAndDirectoriesFromThePath) {
    const std::string base = install(dir, "Talo", "talo");
    init(base + "/bin/MAC/talo.app");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
    EXPECT_EQ(kxPlatform::getPreferencesDir(), home + supportDir + "talo/");
}

TEST_F(Platform, TheNameEndsAtTheFirstDot) {
    const std::string exeDir = install(dir, "with.dots/in.it", "x") + "/bin/MAC/";
    const std::pair<const char*, const char*> names[] = {
        {"talo", "talo"}, {"talo.bin", "talo"}, {"a.b.c", "a"}, {".hidden", ""}, {"end.", "end"},
    };
    for (const auto& [file, name] : names) {
        init(exeDir + file);
        EXPECT_STREQ(kxPlatform::getAppName(), name) << file;
        EXPECT_EQ(kxPlatform::getExeDir() + std::string("/"), exeDir) << file;
    }
}

TEST_F(Platform, ARelativePathCountsFromTheWorkingDirectory) {
    const std::string base = install(dir, "Talo", "talo");
    init("../../../Talo/bin/./MAC/talo");
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
    const kxtest::ScopedCwd cwd(base);
    init("bin/MAC/talo");
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
}

TEST_F(Platform, ABareNameIsLookedForInTheWorkingDirectory) {
    const std::string base = install(dir, "Talo", "talo");
    const kxtest::ScopedCwd cwd(base + "/bin/MAC");
    init("talo");
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
}

TEST_F(Platform, DirectoriesAreCanonical) {
    const std::string base = install(dir, "Talo", "talo");
    fs::create_directory_symlink(base + "/bin/MAC", dir.file("link"));
    init(dir.file("link/talo"));
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);  // above the link's target, not above the link
    init(dir.path() + "//Talo/./bin/MAC/../MAC/talo");
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
}

TEST_F(Platform, ADirectoryThatCannotBeEnteredLeavesTheWorkingDirectory) {
    install(dir, "work", "talo");
    fs::permissions(dir.write("regular", ""), fs::perms::all);  // executable, but not a directory
    dir.makeDir("present");
    for (const char* path : {"/missing/talo", "/missing/bin/MAC/talo", "/present/missing/talo",
                             "/regular/talo", "/regular/bin/MAC/talo"}) {
        init(dir.path() + path);
        EXPECT_STREQ(kxPlatform::getAppName(), "talo") << path;
        EXPECT_EQ(kxPlatform::getExeDir(), work + "/a/b") << path;
    }
    init(dir.file("missing/talo"));
    // The base directory is not found above the missing one either, but above the working
    // directory. That holds no installation, so the base directory of the running program is taken.
    EXPECT_EQ(kxPlatform::getBaseDir(), baseOfThisProgram());
    install(dir, "work/a/b", "talo");
    init(dir.file("missing/talo"));
    EXPECT_EQ(kxPlatform::getBaseDir(), work + "/a/b");
}

// A start path is relative to the working directory, whoever may search the directories above.
TEST_F(Platform, ADirectoryBelowOneThatMayNotBeSearchedIsFound) {
    const std::string base = install(dir, "closed/Talo", "talo");
    for (const char* open : {"", "/bin", "/bin/MAC"})
        ASSERT_EQ(chmod((base + open).c_str(), 0755), 0);
    const kxtest::ScopedCwd cwd(base);
    ASSERT_EQ(chmod(dir.file("closed").c_str(), 0), 0);
    const std::string exeDir = kxtest::asOrdinaryUser([] {
        kxPlatform::init("bin/MAC/talo");
        return std::string(kxPlatform::getExeDir());
    });
    chmod(dir.file("closed").c_str(), 0755);
    EXPECT_EQ(exeDir, base + "/bin/MAC");
}

// Not even in order to leave it again.
TEST_F(Platform, ADirectoryThatMayNotBeSearchedIsNotEntered) {
    install(dir, "Talo", "talo");
    const std::string closed = dir.makeDir("closed");
    const kxtest::ScopedCwd cwd(dir.path());
    constexpr mode_t modes[] = {0000, 0100, 0111, 0444, 0666};
    for (const mode_t mode : modes) {
        const bool isOpen =
            mode == 0111 || (mode == 0100 && !kxtest::isRoot());  // or somebody else owns it
        ASSERT_EQ(chmod(closed.c_str(), mode), 0);
        ASSERT_EQ(chmod(dir.path().c_str(), 0755), 0);
        EXPECT_EQ(kxtest::asOrdinaryUser([] {
                      kxPlatform::init("closed/talo");
                      const std::string exeDir = kxPlatform::getExeDir();
                      kxPlatform::init("closed/../Talo/bin/MAC/talo");
                      return exeDir + ' ' + kxPlatform::getExeDir();
                  }),
                  isOpen ? closed + ' ' + dir.file("Talo/bin/MAC") : dir.path() + ' ' + dir.path())
            << mode;
    }
    chmod(closed.c_str(), 0755);
}

// getCurrentDir() could not read it back either.
TEST_F(Platform, ADirectoryOfMoreThan2047CharactersReadsAsNone) {
    std::string below = dir.path();
    const auto descend = [&](std::size_t length) {
        while (below.size() < length) {
            std::size_t size = std::min<std::size_t>(length - below.size() - 1, 200);
            if (length - below.size() - 1 - size == 1) --size;  // leaves room for a last name
            below += '/' + std::string(size, 'd');
        }
        fs::create_directories(below);
    };
    descend(2047);
    ASSERT_EQ(below.size(), 2047U);
    kxtest::Captured err(stderr);
    kxPlatform::init((below + "/talo").c_str());
    EXPECT_EQ(kxPlatform::getExeDir(), below);
    descend(2049);
    kxPlatform::init((below + "/talo").c_str());
    EXPECT_STREQ(kxPlatform::getExeDir(), "");
}

TEST_F(Platform, TheArgumentsMayBeTheStoredStrings) {
    const std::string base = install(dir, "Talo", "talo");
    init(base + "/bin/MAC/talo");
    kxPlatform::setAppName((base + "/bin/MAC/talo").c_str());
    kxPlatform::init(kxPlatform::getAppName());
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    kxPlatform::setAppName(base.c_str());
    kxPlatform::init(kxPlatform::getAppName(), kxPlatform::getBaseDir());
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
    EXPECT_EQ(kxPlatform::getAppName(), base);
}

TEST_F(Platform, APathWithoutADirectoryPartStaysWhereItIs) {
    init("/kxtest-no-such-file");
    EXPECT_EQ(kxPlatform::getExeDir(), work + "/a/b");
    init("");  // there is no name either
    EXPECT_STREQ(kxPlatform::getAppName(), "");
    EXPECT_EQ(kxPlatform::getExeDir(), work + "/a/b");
}

TEST_F(Platform, ADeletedWorkingDirectoryIsNotLeft) {
    const std::string base = install(dir, "Talo", "talo"), deleted = dir.makeDir("deleted");
    const kxtest::ScopedCwd cwd(deleted);
    fs::remove(deleted);
    init(base + "/bin/MAC/talo");
    EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), base);
    init(dir.file("missing/talo"));  // now nothing could be found out
    EXPECT_EQ(kxPlatform::getBaseDir(), baseOfThisProgram());
    EXPECT_FALSE(kxtest::exists(deleted));
}

TEST_F(Platform, TheInstallationIsCheckedForTheNameWithoutItsExtension) {
    const std::string other = install(dir, "Other", "talo.app");
    init(other + "/bin/MAC/talo.app");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    EXPECT_EQ(kxPlatform::getExeDir(), other + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), baseOfThisProgram());
    install(dir, "Other", "talo");
    init(other + "/bin/MAC/talo.app");
    EXPECT_EQ(kxPlatform::getBaseDir(), other);
}

TEST_F(Platform, TheInstallationIsCheckedBelowTheBaseDirectory) {
    install(dir, "Talo/x", "talo");  // the executable itself is not below <base>/bin/MAC
    init(dir.file("Talo/x/bin/MAC/../talo"));
    EXPECT_EQ(kxPlatform::getExeDir(), dir.file("Talo/x/bin"));
    EXPECT_EQ(kxPlatform::getBaseDir(), baseOfThisProgram());
    install(dir, "Talo", "talo");
    init(dir.file("Talo/x/bin/talo"));
    EXPECT_EQ(kxPlatform::getBaseDir(), dir.file("Talo"));
}

TEST_F(Platform, InitAgainRecomputesEverything) {
    const std::string first = install(dir, "First", "one"), second = install(dir, "Second", "two");
    init(first + "/bin/MAC/one");
    init(second + "/bin/MAC/two");
    EXPECT_STREQ(kxPlatform::getAppName(), "two");
    EXPECT_EQ(kxPlatform::getExeDir(), second + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getBaseDir(), second);
    EXPECT_EQ(kxPlatform::getPreferencesDir(), home + supportDir + "two/");
}

// --- Preferences ---------------------------------------------------------------------------------

TEST_F(Platform, PreferencesAreCreatedBelowTheHomeDirectory) {
    const std::string path = install(dir, "Talo", "talo") + "/bin/MAC/talo";
    for (const char* end : {"", "/"}) {
        fs::remove_all(home);
        const kxtest::ScopedEnv variable("HOME", (home + end).c_str());
        init(path);
        EXPECT_EQ(kxPlatform::getPreferencesDir(), home + supportDir + "talo/") << end;
        EXPECT_TRUE(fs::is_directory(home + supportDir + "talo")) << end;
    }
    dir.write("home" + supportDir + "talo/kept", "kept");
    init(path);
    EXPECT_EQ(kxtest::slurp(home + supportDir + "talo/kept"), "kept");
    EXPECT_FALSE(kxtest::exists(dir.file("Talo/preferences")));
}

TEST_F(Platform, PreferencesAreCreatedUnderTheNameThatIsAnnounced) {
    const std::string name = "ta\\lo", base = install(dir, "Ta\\lo", name);
    for (const std::string& variable :
         {dir.file("ho\\me"), dir.file("\\"), std::string("relative\\home"), std::string()}) {
        const kxtest::ScopedEnv homeVariable("HOME", variable.c_str());
        const std::string preferences =
            variable.empty() ? base + "/preferences" : variable + supportDir + name + '/';
        init(base + "/bin/MAC/" + name, variable.empty() ? "Couldn't get home directory, using '" +
                                                               preferences + "', for preferences!\n"
                                                         : "");
        EXPECT_EQ(kxPlatform::getPreferencesDir(), preferences);
        EXPECT_TRUE(fs::is_directory(preferences)) << preferences;
    }
    EXPECT_EQ(kxtest::list(work + "/a/b"), std::vector<std::string>{"relative\\home"});
    EXPECT_EQ(kxtest::list(dir.path()),
              (std::vector<std::string>{"Ta\\lo", "\\", "ho\\me", "home", "work"}));
}

TEST_F(Platform, AnEmptyHomeLeavesTheDefaultAndSaysSo) {
    const std::string base = install(dir, "Talo", "talo");
    const kxtest::ScopedEnv variable("HOME", "");
    kxLog::clearLastError();
    init(base + "/bin/MAC/talo",
         "Couldn't get home directory, using '" + base + "/preferences', for preferences!\n");
    EXPECT_EQ(kxPlatform::getPreferencesDir(), base + "/preferences");
    EXPECT_TRUE(fs::is_directory(base + "/preferences"));
    EXPECT_STREQ(kxLog::getLastError(), "");  // it goes directly to standard error
}

// The text "$HOME" is not expanded, but it is not empty either: the path begins with it.
TEST_F(Platform, AnUnsetHomeLeavesTheTextInThePath) {
    const std::string base = install(dir, "Talo", "talo");
    const kxtest::ScopedEnv variable("HOME", nullptr);
    init(base + "/bin/MAC/talo", "\033[31mexpandFilename: couldn't expand env.var HOME!\n\033[0m");
    EXPECT_EQ(kxPlatform::getPreferencesDir(), "$HOME" + supportDir + "talo/");
    EXPECT_TRUE(fs::is_directory(work + "/a/b/$HOME" + supportDir + "talo"));
}

TEST_F(Platform, PreferencesThatCannotBeCreatedAreNotReported) {
    const std::string path = install(dir, "Talo", "talo") + "/bin/MAC/talo";
    const std::string below = dir.write("regular", "") + "/below";
    const kxtest::ScopedEnv variable("HOME", below.c_str());
    init(path);
    EXPECT_EQ(kxPlatform::getPreferencesDir(), below + supportDir + "talo/");
    EXPECT_FALSE(kxtest::exists(below));
}

// --- init from root and name ---------------------------------------------------------------------

TEST_F(Platform, InitFromRootTakesRootAndNameAsPassed) {
    dir.makeDir("x/bin/MAC");  // without an executable in it
    dir.makeDir("work/a/b/relative/bin/MAC");
    for (const std::string& root : {dir.file("x"), dir.file("./x/"), std::string("relative")}) {
        init(root, "tool.bin", "");
        EXPECT_STREQ(kxPlatform::getAppName(), "tool.bin");
        EXPECT_EQ(kxPlatform::getBaseDir(), root);
    }
    dir.write("y/bin/MAC", "");  // it exists, and its kind does not matter
    init(dir.file("y"), "tool", "");
    EXPECT_EQ(kxPlatform::getBaseDir(), dir.file("y"));
}

TEST_F(Platform, InitFromRootFallsBackToTheWorkingDirectory) {
    dir.makeDir("x/bin");
    kxLog::clearLastError();
    init(dir.file("x"), "tool",
         "Couldn't get valid talo root dir trying '" + work + "/a/b/../..'!\n");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    EXPECT_EQ(kxPlatform::getBaseDir(), work + "/a/b/../..");
    EXPECT_STREQ(kxLog::getLastError(), "");
}

TEST_F(Platform, InitFromRootLetsHesperPass) {
    const std::string root = dir.file("missing");
    init(root, "hesper", "");
    EXPECT_STREQ(kxPlatform::getAppName(), "hesper");
    EXPECT_EQ(kxPlatform::getBaseDir(), root);
    EXPECT_EQ(kxPlatform::getBinDir(), root + "/bin");
    dir.makeDir("missing/bin/MAC");
    init(root, "hesper", "");
    EXPECT_STREQ(kxPlatform::getAppName(), "hesper");
    EXPECT_EQ(kxPlatform::getBaseDir(), root);
    EXPECT_EQ(kxPlatform::getBinDir(), root + "/bin/MAC");
}

TEST_F(Platform, InitFromRootLeavesExeAndPreferencesDirectoriesAlone) {
    const std::string base = install(dir, "Talo", "talo");
    init(base + "/bin/MAC/talo");
    dir.makeDir("x/bin/MAC");
    for (const char* root : {"x", "missing"}) {
        kxtest::Captured err(stderr);
        kxPlatform::init(dir.file(root).c_str(), "tool");
        EXPECT_EQ(kxPlatform::getExeDir(), base + "/bin/MAC");
        EXPECT_EQ(kxPlatform::getPreferencesDir(), home + supportDir + "talo/");
    }
    EXPECT_EQ(kxtest::list(home + supportDir), std::vector<std::string>{"talo"});
}

// --- Locale --------------------------------------------------------------------------------------

TEST_F(Platform, EveryInitSetsTheLocaleToC) {
    const std::string base = install(dir, "Talo", "talo"), path = base + "/bin/MAC/talo";
    const auto change = [] { return std::setlocale(LC_ALL, "C.UTF-8") != nullptr; };
    if (!change()) GTEST_SKIP() << "the machine has no other locale";
    kxPlatform::init(path.c_str());
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    change();
    kxPlatform::init(base.c_str(), "talo");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
    change();
    EXPECT_STREQ(kxPlatform::initLocale(), "C");
    EXPECT_STREQ(std::setlocale(LC_ALL, nullptr), "C");
}

// --- Directory getters ---------------------------------------------------------------------------

TEST_F(Platform, DirectoriesOfAnInstallation) {
    const std::string base = install(dir, "Talo", "talo");
    init(base + "/bin/MAC/talo");
    EXPECT_EQ(kxPlatform::getBinDir(), base + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getLibDir(), base + "/lib/MAC");
    EXPECT_EQ(kxPlatform::getPluginsDir(), base + "/lib/plugins/MAC");
    EXPECT_EQ(kxPlatform::getQtPluginsDir(), base + "/bin/MAC/Qt/plugins");
    EXPECT_EQ(kxPlatform::getCommonDir("any/thing"), base + "/any/thing");
    EXPECT_EQ(kxPlatform::getCommonDir(""), base + "/");
}

TEST_F(Platform, DirectoriesAreRebuiltAtEveryCall) {
    const std::string first = install(dir, "First", "talo"),
                      second = install(dir, "Second", "talo");
    init(first + "/bin/MAC/talo");
    const char* const lib = kxPlatform::getLibDir();
    kxPlatform::getBinDir();
    kxPlatform::getPluginsDir();
    kxPlatform::getQtPluginsDir();
    EXPECT_EQ(lib, first + "/lib/MAC");  // each getter has its own string
    init(second + "/bin/MAC/talo");
    EXPECT_EQ(kxPlatform::getBinDir(), second + "/bin/MAC");
    EXPECT_EQ(kxPlatform::getLibDir(), second + "/lib/MAC");
    EXPECT_EQ(kxPlatform::getPluginsDir(), second + "/lib/plugins/MAC");
    EXPECT_EQ(kxPlatform::getQtPluginsDir(), second + "/bin/MAC/Qt/plugins");
    EXPECT_EQ(kxPlatform::getCommonDir("x"), second + "/x");
}

TEST_F(Platform, OnlyHesperDoesWithoutThePlatformDirectoryOfBin) {
    const std::string root = dir.makeDir("root");
    init(root, "hesper", "");
    EXPECT_EQ(kxPlatform::getBinDir(), root + "/bin");
    EXPECT_EQ(kxPlatform::getQtPluginsDir(), root + "/bin/Qt/plugins");
    for (const char* name : {"talo", "Hesper", "hesper2", ""}) {
        kxPlatform::setAppName(name);
        EXPECT_EQ(kxPlatform::getBinDir(), root + "/bin/MAC") << name;
        EXPECT_EQ(kxPlatform::getQtPluginsDir(), root + "/bin/MAC/Qt/plugins") << name;
    }
}

TEST_F(Platform, NothingIsNotADirectoryName) {
    init("", "hesper", "");  // without a base directory, since that would be reported
    kxtest::Captured out(stdout), err(stderr);
    EXPECT_EQ(kxPlatform::getCommonDir(nullptr), "");
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST(PlatformLiterals, AreFixed) {
    EXPECT_STREQ(kxPlatform::getPlatform(), "MAC");
    EXPECT_STREQ(kxPlatform::getSOPrefix(), "lib");
    EXPECT_STREQ(kxPlatform::getSOSuffix(), ".dylib");
    EXPECT_TRUE(kxPlatform::isX64());
    EXPECT_EQ(kxPlatform::getNumCPUs(), 1U);  // deliberate: not the machine's
}

// --- In a fresh process --------------------------------------------------------------------------

namespace {

using Environment = std::map<std::string, std::string>;

/// Runs the probe with the actions `words` and returns what it prints on standard output. Expects
/// `err` on standard error.
std::string probe(const std::vector<std::string>& words, const std::string& err = "",
                  const Environment& environment = {}) {
    std::vector<std::string> argv{KX_PLATFORM_PROBE};
    argv.insert(argv.end(), words.begin(), words.end());
    const auto outcome = kxtest::run(argv, environment);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, err);
    return outcome.out;
}

struct ReadCase {
    const char* name;
    std::vector<std::string> words;
    std::string out;
    int reports;
};
void PrintTo(const ReadCase& c, std::ostream* os) { *os << c.name; }

class UninitializedPlatform : public testing::TestWithParam<ReadCase> {};

const ReadCase reads[] = {
    {"ExeDir", {"getExeDir"}, "getExeDir=\n", 1},
    {"BaseDir", {"getBaseDir"}, "getBaseDir=\n", 1},
    {"EveryRead", {"getBaseDir", "getBaseDir"}, "getBaseDir=\ngetBaseDir=\n", 2},
    {"BinDir", {"getBinDir"}, "getBinDir=/bin/MAC\n", 1},
    {"BinDirOfHesper", {"name", "hesper", "getBinDir"}, "getBinDir=/bin\n", 2},
    {"LibDir", {"getLibDir"}, "getLibDir=/lib/MAC\n", 1},
    {"PluginsDir", {"getPluginsDir"}, "getPluginsDir=/lib/plugins/MAC\n", 1},
    {"QtPluginsDir", {"getQtPluginsDir"}, "getQtPluginsDir=/bin/MAC/Qt/plugins\n", 1},
    {"QtPluginsDirOfHesper",
     {"name", "hesper", "getQtPluginsDir"},
     "getQtPluginsDir=/bin/Qt/plugins\n",
     2},
    {"CommonDir", {"common"}, "common=/x/y\n", 1},
    {"CommonDirOfNull", {"commonOfNull"}, "commonOfNull=\n", 0},
    {"DataDirOnce", {"getDataDir", "getDataDir"}, "getDataDir=/data\ngetDataDir=/data\n", 1},
    {"ExamplesDirOnce",
     {"getExamplesDir", "getExamplesDir"},
     "getExamplesDir=/examples\ngetExamplesDir=/examples\n",
     1},
    {"PreferencesDir", {"getPreferencesDir"}, "getPreferencesDir=\n", 0},
    {"AppName", {"getAppName"}, "getAppName=\n", 0},
    {"VersionName", {"getAppVersionName", "rebuilt"}, "getAppVersionName=\nrebuilt=\n", 0},
};

}  // namespace

TEST_P(UninitializedPlatform, AnswersWithoutABaseDirectoryAndSaysSo) {
    const ReadCase& c = GetParam();
    EXPECT_EQ(probe(c.words, times(c.reports, notInitialized)), c.out);
}

INSTANTIATE_TEST_SUITE_P(Table, UninitializedPlatform, testing::ValuesIn(reads), kxtest::nameOfRow);

TEST(PlatformProcess, InitFromRootLeavesTheRestEmpty) {
    const kxtest::TempDir dir;
    const std::string root = dir.makeDir("root");
    EXPECT_EQ(probe({"root", root, "hesper", "getPreferencesDir", "getExeDir", "getBaseDir"},
                    notInitialized),
              "getPreferencesDir=\ngetExeDir=\ngetBaseDir=" + root + "\n");
}

TEST(PlatformProcess, DataAndExamplesDirectoriesAreComputedOnce) {
    const kxtest::TempDir dir;
    const std::string first = install(dir, "First", "talo"),
                      second = install(dir, "Second", "talo");
    const Environment home{{"HOME", dir.path()}};
    EXPECT_EQ(probe({"init", first + "/bin/MAC/talo", "getDataDir", "getExamplesDir", "init",
                     second + "/bin/MAC/talo", "getDataDir", "getExamplesDir", "common"},
                    "", home),
              "getDataDir=" + first + "/data\ngetExamplesDir=" + first +
                  "/examples\ngetDataDir=" + first + "/data\ngetExamplesDir=" + first +
                  "/examples\ncommon=" + second + "/x/y\n");
    // If they are asked before init, they keep the answer of that time.
    EXPECT_EQ(probe({"getDataDir", "getExamplesDir", "init", first + "/bin/MAC/talo", "getDataDir",
                     "getExamplesDir"},
                    times(2, notInitialized), home),
              "getDataDir=/data\ngetExamplesDir=/examples\ngetDataDir=/data\n"
              "getExamplesDir=/examples\n");
}

TEST(PlatformProcess, SharedDirectoriesComeFirst) {
    const std::string shared = "/Users/Shared/Pelloran/TALO-10.0/";
    const auto with = [&](const std::string& name) {
        return Environment{{"PROBE_EXISTS", shared + name}};
    };
    EXPECT_EQ(probe({"common"}, "", with("x/y")), "common=" + shared + "x/y\n");
    EXPECT_EQ(probe({"getDataDir", "getExamplesDir"}, notInitialized, with("data")),
              "getDataDir=" + shared + "data\ngetExamplesDir=/examples\n");
    EXPECT_EQ(probe({"getDataDir", "getExamplesDir"}, notInitialized, with("examples")),
              "getDataDir=/data\ngetExamplesDir=" + shared + "examples\n");
    // Each name is looked up separately.
    EXPECT_EQ(probe({"common"}, notInitialized, with("x")), "common=/x/y\n");
    const kxtest::TempDir dir;
    EXPECT_EQ(probe({"root", dir.path(), "hesper", "getDataDir"}, "", with("data")),
              "getDataDir=" + shared + "data\n");
}

// An empty directory part is not entered, but two levels above it is the root directory.
TEST(PlatformProcess, AProgramInTheRootDirectoryIsBasedThere) {
    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd(dir.path());
    EXPECT_EQ(probe({"init", "/talo", "getExeDir", "getBaseDir"}, "",
                    {{"HOME", dir.path()}, {"PROBE_EXISTS", "//bin/MAC/talo"}}),
              "getExeDir=" + dir.path() + "\ngetBaseDir=/\n");
}

// --- Started as a program ------------------------------------------------------------------------

namespace {

/// Installations with the probe as their executable.
class PlatformStart : public testing::Test {
protected:
    std::string installProbe(const std::string& path) const {
        fs::create_directories(fs::path(dir.file(path)).parent_path());
        fs::copy_file(KX_PLATFORM_PROBE, dir.file(path));
        if (kxtest::underEmulator())
            fs::copy_file(KX_PLATFORM_PROBE ".elf", dir.file(path + ".elf"));
        return dir.file(path);
    }

    /// What a program that is started as `path` in `directory` reports about itself.
    std::string start(const std::string& path, const std::string& directory,
                      std::vector<std::string> actions = {"start"}) const {
        actions.insert(actions.begin(), path);
        actions.insert(actions.end(), {"getAppName", "getExeDir", "getBaseDir"});
        const auto outcome = kxtest::run(actions, {{"HOME", dir.makeDir("home")}}, {"", directory});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err, "");
        return outcome.out;
    }

    static std::string answer(const std::string& name, const std::string& exe,
                              const std::string& base) {
        return "getAppName=" + name + "\ngetExeDir=" + exe + "\ngetBaseDir=" + base + "\n";
    }

    const kxtest::TempDir dir;
    const std::string base = dir.file("Talo");
    const std::string talo = installProbe("Talo/bin/MAC/talo");
};

}  // namespace

TEST_F(PlatformStart, ByAbsoluteRelativeAndBareName) {
    const std::string expected = answer("talo", base + "/bin/MAC", base);
    EXPECT_EQ(start(talo, dir.path()), expected);
    EXPECT_EQ(start("Talo/bin/MAC/talo", dir.path()), expected);
    EXPECT_EQ(start("./talo", base + "/bin/MAC"), expected);
    EXPECT_EQ(start("../MAC/talo", base + "/bin/MAC"), expected);
    EXPECT_EQ(start("talo", base + "/bin/MAC"), expected);
}

TEST_F(PlatformStart, ByASymbolicLinkTheBaseDirectoryIsThatOfTheExecutable) {
    if (kxtest::underValgrind()) GTEST_SKIP() << "it hides the link";
    const std::string links = dir.makeDir("usr/local/links");
    fs::create_symlink(talo, links + "/link.sh");
    EXPECT_EQ(start(links + "/link.sh", dir.path()), answer("link", links, base));
}

// An update does this to a running program.
TEST_F(PlatformStart, ADeletedExecutableKeepsItsBaseDirectory) {
    if (kxtest::underValgrind()) GTEST_SKIP() << "it hides the link";
    const std::string links = dir.makeDir("usr/local/links");
    fs::create_symlink(talo, links + "/talo");
    EXPECT_EQ(start(links + "/talo", dir.path(), {"unlink", talo, "start"}),
              answer("talo", links, base));
}

TEST_F(PlatformStart, WithANameOnPathTheBaseDirectoryIsThatOfTheExecutable) {
    // A shell passes on the bare name of a program that it has found on PATH.
    const std::string elsewhere = dir.makeDir("else/where");
    EXPECT_EQ(start(talo, elsewhere, {"init", "talo"}), answer("talo", elsewhere, base));
}

TEST_F(PlatformStart, TheFallbackIsNotChecked) {
    const std::string odd = installProbe("one/two/three");
    EXPECT_EQ(start(odd, dir.path()), answer("three", dir.file("one/two"), dir.path()));
    EXPECT_EQ(start(odd, dir.path(), {"init", dir.file("missing/talo")}),
              answer("talo", dir.path(), dir.path()));
}

TEST_F(PlatformStart, TheDefaultOfThePreferencesIsBelowTheFinalBaseDirectory) {
    const std::string missing = dir.file("missing/talo");
    const auto outcome =
        kxtest::run({talo, "init", missing, "getPreferencesDir"}, {{"HOME", ""}}, {"", dir.path()});
    EXPECT_EQ(outcome.out, "getPreferencesDir=" + base + "/preferences\n");
    EXPECT_EQ(outcome.err,
              "Couldn't get home directory, using '" + base + "/preferences', for preferences!\n");
    EXPECT_EQ(kxtest::list(base), (std::vector<std::string>{"bin", "preferences"}));
}

// The system's answer is read into a buffer of 1024 bytes. Without an answer the base directory is
// two levels above the working directory.
TEST_F(PlatformStart, AnExecutablePathThatDoesNotFitIsNotUsed) {
    if (kxtest::underEmulator()) GTEST_SKIP() << "an emulator's program has a longer path";
    for (const std::size_t length : {std::size_t{1023}, std::size_t{1024}}) {
        std::string path = std::to_string(length);
        while (dir.file(path).size() + 202 < length) path += '/' + std::string(200, 'd');
        path += '/' + std::string(length - dir.file(path).size() - 1, 'e');
        const std::string exe = installProbe(path), work = dir.makeDir("else/where/a/b");
        ASSERT_EQ(exe.size(), length);
        const fs::path directory = fs::path(exe).parent_path();
        EXPECT_EQ(start(exe, work, {"init", "talo"}),
                  answer("talo", work,
                         length < 1024 ? directory.parent_path().parent_path().string()
                                       : dir.file("else/where")));
    }
}
