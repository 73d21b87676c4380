// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>

#include <climits>

#include "detail/platform/entered_directory.h"

namespace kx::detail {

int openDirectory(const std::string& directory) {
    return open(directory.c_str(), O_SEARCH | O_DIRECTORY | O_CLOEXEC);
}

std::string pathOfDescriptor(int descriptor) {
    char buffer[PATH_MAX];
    return fcntl(descriptor, F_GETPATH, buffer) == 0 ? buffer : "";
}

}  // namespace kx::detail
