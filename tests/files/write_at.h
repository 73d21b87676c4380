// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that are larger than the disk space they take.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <string>

namespace kxtest {

/// Writes `bytes` at a position of a file, leaving a hole before it. False where the disk cannot.
inline bool writeAt(const std::string& path, off_t position, const std::string& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return false;
    const ssize_t written = pwrite(file, bytes.data(), bytes.size(), position);
    return close(file) == 0 && written == static_cast<ssize_t>(bytes.size());
}

}  // namespace kxtest
