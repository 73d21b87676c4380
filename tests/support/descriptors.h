// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// File descriptors of the test's own process.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

namespace kxtest {

/// The number that the next file opened will get: the same before and after code that closes all it
/// has opened.
inline int nextDescriptor() {
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(fd);
    return fd;
}

/// True if the descriptor is open on that file.
inline bool isOpenOn(int fd, const std::string& path) {
    struct stat held {
    }, named{};
    return fstat(fd, &held) == 0 && stat(path.c_str(), &named) == 0 &&
           held.st_dev == named.st_dev && held.st_ino == named.st_ino;
}

}  // namespace kxtest
