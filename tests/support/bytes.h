// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Bytes for tests that need many of them.
#pragma once

#include <cstddef>
#include <random>
#include <string>

namespace kxtest {

/// Pseudo-random bytes. Every call gives the same ones, of which a shorter text is the beginning.
inline std::string someBytes(std::size_t count) {
    std::string bytes(count, '\0');
    unsigned state = 1;
    for (char& c : bytes) {
        state = state * 1664525U + 1013904223U;
        c = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// Bytes that `random` chooses; each call gives others.
inline std::string randomBytes(std::mt19937& random, std::size_t count) {
    std::string bytes(count, '\0');
    for (char& c : bytes) c = static_cast<char>(random() & 0xFF);
    return bytes;
}

/// The 256 bytes in ascending order, beginning with 0.
inline std::string everyByte() {
    std::string bytes;
    for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
    return bytes;
}

}  // namespace kxtest
