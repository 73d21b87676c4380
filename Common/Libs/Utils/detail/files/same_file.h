// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Whether two paths or descriptors refer to one file.
#pragma once

#include <sys/stat.h>

namespace kx::detail {

inline bool isSameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace kx::detail
