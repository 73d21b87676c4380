// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The file descriptors of the test's own process.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <map>
#include <string>
#include <system_error>

namespace kxtest {

/// The number that the next opened file will get. It is equal before and after code that closes all
/// the files it has opened.
inline int nextDescriptor() {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(fd);
    return fd;
}

/// The open descriptors, each with what distinguishes its file from others (and with the name that
/// the system gives it, if any).
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
        if (fstat(fd, &info) != 0) continue;  // the descriptor through which the list was read
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
