// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxPlatform_probe ACTION...: calls kxPlatform in a fresh process and prints "action=result" for
// every getter. Other actions, with their arguments in the words that follow them:
//
//     start            init with the path by which this program was started
//     init PATH        init(PATH)
//     root ROOT NAME   init(ROOT, NAME)
//     name NAME        setAppName(NAME)
//     unlink PATH      deletes the file
//
// The path in the environment variable PROBE_EXISTS seems to exist, whatever is on the machine.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <string>

#include "kxPlatform.h"

// Replaces the C library's function, even for the shared libraries of this process.
extern "C" __attribute__((visibility("default"))) int stat(const char* path, struct stat* info) {
    const char* const present = std::getenv("PROBE_EXISTS");
    if (present && std::strcmp(path, present) == 0) path = "/";
    return fstatat(AT_FDCWD, path, info, 0);
}

namespace {

std::string text(const char* value) { return value; }
std::string text(std::uint64_t value) { return std::to_string(value); }
std::string text(bool value) { return value ? "true" : "false"; }
std::string text(double value) { return std::to_string(value); }

#define GETTER(NAME)                                   \
    {                                                  \
#NAME, [] { return text(kxPlatform::NAME()); } \
    }
const std::map<std::string, std::function<std::string()>> getters = {
    GETTER(getExeDir),
    GETTER(getBaseDir),
    GETTER(getDataDir),
    GETTER(getExamplesDir),
    GETTER(getBinDir),
    GETTER(getLibDir),
    GETTER(getPluginsDir),
    GETTER(getQtPluginsDir),
    GETTER(getPreferencesDir),
    GETTER(getAppName),
    GETTER(getAppVersionName),
    GETTER(isTaloCompact),
    GETTER(isTaloStudio),
    GETTER(isTaloPlayer),
    GETTER(getAnalysisMode),
    GETTER(getDpiX),
    GETTER(getDpiY),
    GETTER(getDpiScaleX),
    GETTER(getDpiScaleY),
    GETTER(getSmallIconSizeX),
    GETTER(getSmallIconSizeY),
    GETTER(getMediumIconSizeX),
    GETTER(getMediumIconSizeY),
    GETTER(getLargeIconSizeX),
    GETTER(getLargeIconSizeY),
    GETTER(getTreeViewIconSizeX),
    GETTER(getTreeViewIconSizeY),
    {"common", [] { return kxPlatform::getCommonDir("x/y"); }},
    {"commonOfNull", [] { return kxPlatform::getCommonDir(nullptr); }},
    // The full name and the year as they become part of the version name of an application without
    // a name.
    {"rebuilt",
     [] {
         kxPlatform::updateAppVersionName();
         return text(kxPlatform::getAppVersionName());
     }},
};

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string action = argv[i];
        const auto word = [&] {
            if (++i == argc) std::exit(100);
            return argv[i];
        };
        if (action == "start") {
            kxPlatform::init(argv[0]);
        } else if (action == "init") {
            kxPlatform::init(word());
        } else if (action == "root") {
            const char* const root = word();
            kxPlatform::init(root, word());
        } else if (action == "name") {
            kxPlatform::setAppName(word());
        } else if (action == "unlink") {
            if (unlink(word()) != 0) return 102;
        } else {
            const auto getter = getters.find(action);
            if (getter == getters.end()) return 101;
            std::printf("%s=%s\n", action.c_str(), getter->second().c_str());
        }
    }
    return 0;
}
