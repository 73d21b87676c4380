// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The arithmetic of CRC-32.
#pragma once

#include <cstdint>

namespace kx::detail {

// A register holds a polynomial over GF(2) of a degree below 32, reflected: bit 31 is the
// coefficient of x^0, bit 0 that of x^31. The constant is the polynomial P of CRC-32, 0x04C11DB7,
// reflected and without its x^32.
constexpr std::uint32_t crc32Polynomial = 0xEDB88320;

/// One bit step multiplies the register by x, modulo P.
constexpr std::uint32_t crc32BitSteps(std::uint32_t crc, int count) {
    for (; count != 0; --count) crc = (crc >> 1) ^ ((crc & 1) != 0 ? crc32Polynomial : 0);
    return crc;
}

}  // namespace kx::detail
