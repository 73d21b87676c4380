// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 by look-up (Dilip V. Sarwate, "Computation of Cyclic Redundancy Checks via Table Look-Up",
// Communications of the ACM 31, 1988; several tables side by side: Kounavis and Berry, "A
// Systematic Approach to Building High Performance Software-Based CRC Generators", ISCC 2005).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "detail/crc/arithmetic.h"

namespace kx::detail {

// Table k, entry i is the register after byte i and k zero bytes.
constexpr std::array<std::array<std::uint32_t, 256>, 8> makeCrc32Lookup() {
    std::array<std::array<std::uint32_t, 256>, 8> tables{};
    for (std::uint32_t i = 0; i < 256; ++i) {
        tables[0][i] = crc32BitSteps(i, 8);
        for (std::size_t k = 1; k < 8; ++k) tables[k][i] = crc32BitSteps(tables[k - 1][i], 8);
    }
    return tables;
}
inline constexpr auto crc32Lookup = makeCrc32Lookup();
static_assert(crc32Lookup[0][0] == 0 && crc32Lookup[0][1] == 0x77073096 &&
              crc32Lookup[0][128] == crc32Polynomial && crc32Lookup[0][255] == 0x2D02EF8D);
static_assert(crc32Lookup[1][1] == 0x191B3141 && crc32Lookup[7][1] == 0xCCAA009E);

/// Takes the bytes through the register one by one; `step` takes it one byte further.
template <class Step>
std::uint32_t oneByOne(std::uint32_t crc, const unsigned char* p, unsigned long length, Step step) {
    for (; length != 0; --length) crc = step(crc ^ *p++);
    return crc;
}

inline std::uint32_t lookUpByte(std::uint32_t crc) {
    return (crc >> 8) ^ crc32Lookup[0][crc & 0xFF];
}

/// Takes a word through the tables `base` to `base + 3`; the word's last byte uses the lowest one.
template <std::size_t base>
std::uint32_t lookUpWord(std::uint32_t word) {
    return crc32Lookup[base][word >> 24] ^ crc32Lookup[base + 1][(word >> 16) & 0xFF] ^
           crc32Lookup[base + 2][(word >> 8) & 0xFF] ^ crc32Lookup[base + 3][word & 0xFF];
}

}  // namespace kx::detail
