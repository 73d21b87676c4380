// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Performs the actions that its arguments name, in order, and prints the answers. It is a separate
// program because the temporary directory is chosen once per process.
//
//   init NAME | get | teamcenter | clear       the functions of these names
//   name DIRECTORY PREFIX                      getTmpName
//   add PATH | remove NAME | removeall         addTmpFile, removeTmpFile, removeTmpFiles
//   child                                      the variable as a child process sees it
//   set VALUE | unset                          changes the variable
//   make PATH | rmdir PATH                     creates a file, removes a directory
//   atexit                                     prints the variable once static objects are gone
//
// "/tmp/talo" is redirected to the directory named by KXTEST_TALO. If KXTEST_RACE is set, it seems
// that another process makes each directory just before this one does.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kxFile.h"

static std::string redirected(const char* path) {
    const std::string shared = "/tmp/talo", text = path;
    const char* const target = std::getenv("KXTEST_TALO");
    const bool isShared = text.compare(0, shared.size() + 1, shared) == 0 ||
                          text.compare(0, shared.size() + 1, shared + "/") == 0;
    return isShared && target ? target + text.substr(shared.size()) : text;
}

// These replace the C library's functions for calls from the library.
extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    const std::string place = redirected(path);
    if (std::getenv("KXTEST_RACE")) mkdirat(AT_FDCWD, place.c_str(), mode);
    return mkdirat(AT_FDCWD, place.c_str(), mode);
}
extern "C" int stat(const char* path, struct stat* info) noexcept {
    return fstatat(AT_FDCWD, redirected(path).c_str(), info, 0);
}

static void print(const std::string& what, const std::string& answer) {
    std::printf("%s [%s]\n", what.c_str(), answer.c_str());
}

static void printVariable() {
    const char* const value = std::getenv("TALO_TMP_DIR");
    print("at exit", value ? value : "unset");
}

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string what = argv[i];
        const auto argument = [&] { return std::string(++i < argc ? argv[i] : ""); };
        if (what == "init") {
            kxFile::initTmpDir(argument());
        } else if (what == "get") {
            print(what, kxFile::getTmpDir());
        } else if (what == "teamcenter") {
            print(what, kxFile::getTeamcenterTmpDir());
        } else if (what == "clear") {
            kxFile::clearTmpDir();
        } else if (what == "name") {
            const std::string directory = argument();
            print(what, kxFile::getTmpName(directory, argument()));
        } else if (what == "add") {
            kxFile::addTmpFile(argument());
        } else if (what == "remove") {
            print(what, kxFile::removeTmpFile(argument()) ? "true" : "false");
        } else if (what == "removeall") {
            kxFile::removeTmpFiles();
        } else if (what == "child") {
            std::fflush(stdout);
            if (std::system("echo \"child [${TALO_TMP_DIR-unset}]\"") != 0) return 1;
        } else if (what == "set") {
            setenv("TALO_TMP_DIR", argument().c_str(), 1);
        } else if (what == "unset") {
            unsetenv("TALO_TMP_DIR");
        } else if (what == "make") {
            if (!kxFile::write(argument(), "made")) return 1;
        } else if (what == "rmdir") {
            if (rmdir(argument().c_str()) != 0) return 1;
        } else if (what == "atexit") {
            std::atexit(printVariable);
        } else {
            return 2;
        }
    }
    return 0;
}
