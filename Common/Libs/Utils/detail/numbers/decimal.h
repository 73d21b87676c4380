// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Powers of ten in 64 bits. One multiplication by such a word turns most floats into decimal text,
// and most decimal texts into floats.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kx::detail {

__extension__ using Uint128 = unsigned __int128;

constexpr int smallestPowerOfTen = -64, largestPowerOfTen = 50;

/// The first 64 bits of a number, beginning with its highest set bit.
constexpr std::uint64_t leadingBits(Uint128 number) {
    while (number >> 127 == 0) number <<= 1;
    return static_cast<std::uint64_t>(number >> 64);
}

/// The leading bits of each power of ten. The part that is cut off is less than one unit, and
/// nothing is cut off from 10^0 to 10^27.
constexpr auto makePowersOfTen() {
    std::array<std::uint64_t, largestPowerOfTen - smallestPowerOfTen + 1> powers{};
    // These are the bits of the powers of 5; the powers of 2 in those of 10 do not change them.
    Uint128 five = 1;  // 5^50 has 117 bits
    for (int power = 0; power <= largestPowerOfTen; ++power, five *= 5)
        powers[static_cast<std::size_t>(power - smallestPowerOfTen)] = leadingBits(five);
    // 2^255 / 5^n, which has 107 bits left even for 5^64. Dividing a quotient that was rounded down
    // gives the same digits as dividing the exact one.
    std::uint64_t fraction[4] = {std::uint64_t{1} << 63, 0, 0, 0};
    for (int power = -1; power >= smallestPowerOfTen; --power) {
        Uint128 rest = 0;
        for (std::uint64_t& word : fraction) {
            rest = rest << 64 | word;
            word = static_cast<std::uint64_t>(rest / 5);
            rest %= 5;
        }
        std::size_t first = 0;
        while (fraction[first] == 0) ++first;
        powers[static_cast<std::size_t>(power - smallestPowerOfTen)] =
            leadingBits(Uint128{fraction[first]} << 64 | fraction[first + 1]);
    }
    return powers;
}
inline constexpr auto powersOfTen = makePowersOfTen();

constexpr std::uint64_t powerOfTen(int power) {
    return powersOfTen[static_cast<std::size_t>(power - smallestPowerOfTen)];
}
static_assert(powerOfTen(0) == 0x8000000000000000 && powerOfTen(1) == 0xA000000000000000 &&
              powerOfTen(-1) == 0xCCCCCCCCCCCCCCCC && powerOfTen(19) == 10000000000000000000U);

/// log2(10^n) rounded down; right for all n in the table.
constexpr int log2OfPowerOf10(int n) { return (n * 217706) >> 16; }
/// log10(2^n) rounded down; right for all exponents of a float.
constexpr int log10OfPowerOf2(int n) { return (n * 78913) >> 18; }

}  // namespace kx::detail
