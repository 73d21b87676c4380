// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The CRC-32 of IEEE 802.3, one bit at a time: the remainder of a polynomial division that takes
// the lowest bit of a byte first.
#pragma once

#include <cstdint>
#include <string>

namespace reference {

/// `previous` is the CRC-32 of the bytes before `bytes`.
inline std::uint32_t crc32Bitwise(const std::string& bytes, std::uint32_t previous = 0) {
    constexpr std::uint32_t reversedPolynomial = 0xEDB88320;  // 0x04C11DB7 with its bits reversed
    std::uint32_t remainder = previous ^ 0xFFFFFFFF;
    for (const char c : bytes)
        for (unsigned bit = 0; bit < 8; ++bit) {
            const bool next = (static_cast<unsigned char>(c) >> bit & 1) != 0;
            const bool low = (remainder & 1) != 0;
            remainder >>= 1;
            if (next != low) remainder ^= reversedPolynomial;
        }
    return remainder ^ 0xFFFFFFFF;
}

}  // namespace reference
