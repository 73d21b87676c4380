// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "private_directory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "kxFile.h"
#include "kxLog.h"
#include "open_file.h"

namespace {

constexpr mode_t writableByOthers = S_IWGRP | S_IWOTH;

bool isOurs(const struct stat& info) { return info.st_uid == 0 || info.st_uid == geteuid(); }

// Whether others could rename or remove what we make in a directory, and put something else there.
// The sticky bit, which "/tmp" has, keeps them from it.
bool canOthersReplace(const struct stat& info) {
    const bool isSticky = (info.st_mode & S_ISVTX) != 0;
    return !isOurs(info) || ((info.st_mode & writableByOthers) != 0 && !isSticky);
}

// The library's directory, or the system's if others control the library's, since that belongs to
// the user who made it first. "" if there is none.
std::string findPlace() {
    const std::string shared = kxFile::getTmpDir();
    if (shared.empty()) return {};  // the log says why
    std::error_code error;
    const std::string system = std::filesystem::temp_directory_path(error).string();
    for (const std::string& place : {shared, system}) {
        struct stat info {};
        if (stat(place.c_str(), &info) != 0) {
            fail("Couldn't use temporary directory '" + place + "'");
            return {};
        }
        if (!canOthersReplace(info)) return place;
        kxLog::warning("Others can change files in temporary directory '%s'", place.c_str());
    }
    kxLog::error("Set TALO_TMP_DIR to a directory that only you can write to");
    return {};
}

}  // namespace

bool canOthersWrite(const std::string& directory) {
    struct stat info {};
    return stat(directory.c_str(), &info) != 0 || !isOurs(info) ||
           (info.st_mode & writableByOthers) != 0;
}

PrivateDirectory::PrivateDirectory() {
    const std::string place = findPlace();
    if (place.empty()) return;
    std::string pattern = place + "/talo-XXXXXX";
    if (mkdtemp(pattern.data()))  // makes a new one, for its owner only
        _path = std::move(pattern);
    else
        fail("Couldn't create a directory in '" + place + "'");
}

PrivateDirectory::~PrivateDirectory() {
    if (_path.empty()) return;
    kxFile::removeTmpFiles();
    rmdir(_path.c_str());
}

bool PrivateDirectory::remove() {
    if (_path.empty()) return true;
    kxFile::removeTmpFiles();
    if (!kxFile::remove(_path)) return fail("Couldn't remove '" + _path + "'");
    _path.clear();
    return true;
}
