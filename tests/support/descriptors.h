// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// File descriptors of the test's own process.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <system_error>

namespace kxtest {

/// The number that the next file opened will get: the same before and after code that closes all it
/// has opened.
inline int nextDescriptor() {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(fd);
    return fd;
}

/// What is open: the descriptors, and for each one what tells its file from others (with the name
/// that the system gives it, if any).
inline std::map<int, std::string> openDescriptors() {
    std::map<int, std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/dev/fd")) {
        std::error_code isNoLink;
        names[std::stoi(entry.path().filename().string())] =
            std::filesystem::read_symlink(entry.path(), isNoLink).string();
    }
    std::map<int, std::string> all;
    for (const auto& [fd, name] : names) {
        struct stat info {};
        if (fstat(fd, &info) != 0) continue;  // the one that the list was read through
        all[fd] = std::to_string(info.st_dev) + ':' + std::to_string(info.st_ino) + ' ' + name;
    }
    return all;
}

/// True if the descriptor is open on that file.
inline bool isOpenOn(int fd, const std::string& path) {
    struct stat held {
    }, named{};
    return fstat(fd, &held) == 0 && stat(path.c_str(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

}  // namespace kxtest
