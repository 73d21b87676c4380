// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Internal: not installed, may change any day.
#pragma once

#include <cstdio>

namespace kx::detail {

/// fopen without a buffer of the C library's own; null on failure. For callers that move whole
/// blocks: these go straight between the caller's memory and the system, one call per block, a
/// seek reads nothing ahead, and a write that the disk refuses fails at once, not at fclose. The
/// mode has an "e", as for FileHandle.
inline std::FILE* openUnbuffered(const char* name, const char* mode) {
    std::FILE* file = std::fopen(name, mode);
    if (file) std::setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

}  // namespace kx::detail
