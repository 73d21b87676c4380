// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <unistd.h>

#include <climits>

#include "detail/platform/entered_directory.h"

namespace kx::detail {

int openDirectory(const std::string& directory) {
    return open(directory.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
}

// The path of a deleted directory ends in " (deleted)". A directory outside the root directory gets
// a path that leads elsewhere.
std::string pathOfDescriptor(int descriptor) {
    char buffer[PATH_MAX];  // longer paths are refused
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = readlink(link.c_str(), buffer, sizeof buffer);
    return length < 0 ? "" : std::string(buffer, static_cast<std::size_t>(length));
}

}  // namespace kx::detail
