// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The static values of the platform: each is either the old or the new one, never a part of it, and
// a later call sets what an earlier one could not.
#include <filesystem>
#include <vector>

#include "kxFile.h"
#include "kxPlatform.h"
#include "operations.h"

namespace {

using kxtest::Attempt;
using kxtest::TempDir;

// --- Start ---------------------------------------------------------------------------------------

struct Installation {
    TempDir dir;
    std::string executable = dir.write("bin/MAC/" + part, "");
    kxtest::ScopedEnv home{"HOME", dir.makeDir("home").c_str()};

    void expectBase() const {
        EXPECT_EQ(kxPlatform::getAppName(), part);
        EXPECT_EQ(kxPlatform::getBaseDir(), dir.path());
    }
    void expectAll() const {
        expectBase();
        EXPECT_EQ(kxPlatform::getExeDir(), dir.file("bin/MAC"));
        const std::string preferences =
            dir.file("home/Library/Application Support/Pelloran/" + part + '/');
        EXPECT_EQ(kxPlatform::getPreferencesDir(), preferences);
        EXPECT_TRUE(kxtest::exists(preferences));
    }
};

// A directory that cannot be found for lack of memory is not mistaken for another one.
void initByPath(Attempt& attempt) {
    const Installation installation;
    const std::string directory = kxFile::getCurrentDir();
    attempt.run([&] { kxPlatform::init(installation.executable.c_str()); });
    EXPECT_EQ(kxFile::getCurrentDir(), directory);
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    // There is another way to look at a directory that cannot be opened or has no path.
    const bool isSpared = attempt.failedAt("open") || attempt.failedAt("close") ||
                          (attempt.failedAt("readlink") && !attempt.failsOnward());
    if (!attempt.failed() || isSpared || (attempt.failedAt("allocation") && !attempt.outOfMemory()))
        installation.expectAll();
    kxPlatform::init(installation.executable.c_str());
    installation.expectAll();
}

// Outside any installation, the base directory is found from the running executable.
void initElsewhere(Attempt& attempt) {
    const TempDir dir;
    const kxtest::ScopedEnv home("HOME", dir.makeDir("home").c_str());
    const kxtest::ScopedCwd cwd(dir.makeDir("a/b/c"));
    const auto init = [] { kxPlatform::init("elsewhere"); };
    attempt.run(init);
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    std::string base;
    {
        const kxtest::Captured err(stderr);  // catches the report of an empty one
        base = kxPlatform::getBaseDir();
    }
    init();
    if (attempt.failedAt("readlink")) {
        EXPECT_TRUE(base == kxPlatform::getBaseDir() || base == dir.file("a") ||
                    (base.empty() && attempt.failsOnward()))
            << base;
    } else if (!attempt.failed()) {
        EXPECT_EQ(base, kxPlatform::getBaseDir());
    }
    EXPECT_EQ(kxFile::getCurrentDir(), dir.file("a/b/c"));
    std::error_code error;
    const auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        EXPECT_EQ(kxPlatform::getBaseDir(),
                  executable.parent_path().parent_path().parent_path().string());
    }
}

void initByRoot(Attempt& attempt) {
    const Installation installation;
    const std::string root = installation.dir.path();
    attempt.run([&] { kxPlatform::init(root.c_str(), part.c_str()); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (!attempt.failed()) installation.expectBase();
    if (attempt.failedAt("stat")) {
        EXPECT_EQ(kxPlatform::getAppName(), std::string("talo"));
    }
    kxPlatform::init(root.c_str(), part.c_str());
    installation.expectBase();
}

// --- Directories ---------------------------------------------------------------------------------

using Getter = const char* (*)();

const std::string root = '/' + part;

// A getter with static storage.
template <Getter getter>
Operation directory(const char* name, const std::string& expected, Steps steps = allocations) {
    const auto execute = [=](Attempt& attempt) {
        kxPlatform::init(root.c_str(), "hesper");
        const char* answer = nullptr;
        attempt.run([&] { answer = getter(); });
        EXPECT_EQ(answer == nullptr, attempt.outOfMemory());
        if (answer) {
            EXPECT_EQ(answer, expected);
        }
        EXPECT_EQ(getter(), expected);
    };
    return inOwnProcess({name, execute, steps});
}

void commonDir(Attempt& attempt) {
    kxPlatform::init(root.c_str(), "hesper");
    std::string answer;
    attempt.run([&] { answer = kxPlatform::getCommonDir(part.c_str()); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failedAt("allocation"));
    EXPECT_EQ(answer, attempt.outOfMemory() ? "" : root + '/' + part);
}

// --- Identity ------------------------------------------------------------------------------------

void setAppName(Attempt& attempt) {
    kxPlatform::setAppName("old");
    attempt.run([] { kxPlatform::setAppName(part.c_str()); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(kxPlatform::getAppName(), attempt.failed() ? "old" : part);
}

// The version name is composed of what is known; half of it is never seen.
void setVersionName(Attempt& attempt) {
    kxPlatform::setAppName("old");
    kxPlatform::setFullAppName("");
    kxPlatform::setDisplayVersionYearString("2024");
    EXPECT_EQ(kxPlatform::getAppVersionName(), std::string("old 2024 "));
    attempt.run([] { kxPlatform::setFullAppName(part.c_str()); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    const std::string done = part + " 2024 ";
    EXPECT_EQ(kxPlatform::getAppVersionName(), attempt.failed() ? "old 2024 " : done);
    kxPlatform::updateAppVersionName();
    kxPlatform::setFullAppName(part.c_str());
    EXPECT_EQ(kxPlatform::getAppVersionName(), done);
}

void setYear(Attempt& attempt) {
    kxPlatform::setAppName("old");
    kxPlatform::setFullAppName("");
    kxPlatform::setDisplayVersionYearString("2024");
    attempt.run([] { kxPlatform::setDisplayVersionYearString(part.c_str()); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    const std::string done = "old " + part + ' ';
    EXPECT_EQ(kxPlatform::getAppVersionName(), attempt.failed() ? "old 2024 " : done);
    kxPlatform::setDisplayVersionYearString(part.c_str());
    EXPECT_EQ(kxPlatform::getAppVersionName(), done);
}

// --- Display -------------------------------------------------------------------------------------

void setDpi(Attempt& attempt) {
    const kxtest::Captured out(stdout);
    kxPlatform::setDpi(96);
    attempt.run([] { kxPlatform::setDpi(144); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    const bool done = !attempt.outOfMemory();
    EXPECT_EQ(kxPlatform::getDpiX(), done ? 144u : 96u);
    EXPECT_EQ(kxPlatform::getSmallIconSizeX(), done ? 24u : 16u);
    kxPlatform::setDpi(96);
}

}  // namespace

const std::vector<Operation> platformOperations = {
    inOwnProcess({"InitByPath", initByPath, allSteps}),
    inOwnProcess({"InitElsewhere", initElsewhere, allSteps}),
    inOwnProcess({"InitByRoot", initByRoot, allSteps}),

    inOwnProcess({"CommonDir", commonDir, allSteps}),
    directory<kxPlatform::getDataDir>("DataDir", root + "/data", allSteps),
    directory<kxPlatform::getExamplesDir>("ExamplesDir", root + "/examples", allSteps),
    directory<kxPlatform::getBinDir>("BinDir", root + "/bin", allSteps),
    directory<kxPlatform::getLibDir>("LibDir", root + "/lib/MAC"),
    directory<kxPlatform::getPluginsDir>("PluginsDir", root + "/lib/plugins/MAC"),
    directory<kxPlatform::getQtPluginsDir>("QtPluginsDir", root + "/bin/Qt/plugins", allSteps),

    inOwnProcess({"SetAppName", setAppName}),
    inOwnProcess({"SetVersionName", setVersionName}),
    inOwnProcess({"SetYear", setYear}),
    {"SetDpi", setDpi, allSteps},
};
