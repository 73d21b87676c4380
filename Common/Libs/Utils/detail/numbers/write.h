// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Writes floats as decimal text. One multiplication finds the answer for all but a few numbers in a
// billion, which are left to the caller.
//
// Source: Ulf Adams, "Ryu Revisited: Printf Floating Point Conversion", OOPSLA 2019, the part on
// writing a fixed number of digits.
#pragma once

#include <cstdint>
#include <cstring>

#include "detail/bytes/little_endian.h"
#include "detail/bytes/word.h"
#include "detail/numbers/decimal.h"

namespace kx::detail {

/// The decimal digits of `number`, which has at most six, as characters: the first of the six is in
/// the lowest byte, and the upper two bytes are 0.
inline std::uint64_t sixDigits(std::uint32_t number) {
    const std::uint32_t low = number % 10000;
    const std::uint64_t pairs =
        number / 10000 | std::uint64_t{low / 100} << 16 | std::uint64_t{low % 100} << 32;
    const std::uint64_t tens = (pairs * 103 >> 10) & 0x000F000F000F;
    return tens | (pairs - 10 * tens) << 8;
}

/// The six digits of a rounded number, and the power of ten of the first digit.
struct SixDigits {
    std::uint32_t number = 0;  ///< 100000 to 999999
    int tens = 0;
};

/// Finds the digits of the normal float with this mantissa (whose first bit is the highest of the
/// word) and this power of two. Returns false if finding them takes more work.
inline bool scaleToSixDigits(std::uint64_t mantissa, int exponent, SixDigits& digits) {
    // The value times 10^(5 - tens), when rounded, has six digits before the point, or seven if the
    // estimate of `tens` was one too low.
    for (digits.tens = log10OfPowerOf2(exponent);; ++digits.tens) {
        const int power = 5 - digits.tens;
        const Uint128 product = Uint128{mantissa} * powerOfTen(power);
        const int fractionBits = 62 - exponent - log2OfPowerOf10(power);
        const std::uint64_t one = std::uint64_t{1} << fractionBits;
        const std::uint64_t rounded = static_cast<std::uint64_t>(product >> 64) + one / 2;
        digits.number = static_cast<std::uint32_t>(rounded >> fractionBits);
        if (digits.number >= 1000000) continue;

        // The power of ten and the product are rounded down. Fewer than two units are missing,
        // which matters only next to a half. Two kinds of floats come that close (each float was
        // tried): those with a negative power, and those exactly at a half, whose power is exact.
        const bool isAtHalf = ((rounded + 1) & (one - 1)) <= 1;
        if (isAtHalf && power < 0) return false;
        if (isAtHalf) digits.number &= ~1U;
        return true;
    }
}

/// Writes the digits as the format "%g" does and returns the text's end.
inline char* layOut(const SixDigits& number, char* to) {
    std::uint64_t digits = sixDigits(number.number);
    const int tens = number.tens;
    const int count = 8 - __builtin_clzll(digits) / 8;  // up to the last digit that is not 0
    digits |= everyByte('0');
    if (tens < 0 && tens >= -4) {
        storeLittleEndian64(to, everyByte('0'));
        to[1] = '.';
        storeLittleEndian64(to + 1 - tens, digits);
        return to + 1 - tens + count;
    }
    const bool hasExponent = tens < 0 || tens >= 6;
    const int whole = hasExponent ? 1 : tens + 1;
    const std::uint64_t wholeMask = (std::uint64_t{1} << (8 * whole)) - 1;
    storeLittleEndian64(
        to, (digits & wholeMask) | (digits & ~wholeMask) << 8 | std::uint64_t{'.'} << (8 * whole));
    to += count > whole ? count + 1 : whole;
    if (hasExponent) {
        const int size = tens < 0 ? -tens : tens;
        *to++ = 'e';
        *to++ = tens < 0 ? '-' : '+';
        *to++ = static_cast<char>('0' + size / 10);
        *to++ = static_cast<char>('0' + size % 10);
    }
    return to;
}

/// Writes `value` as the format "%g" does, with up to six digits, and returns the end of the text.
/// All of to[0, 15) may be overwritten. Returns null if finding the digits takes more work; this
/// includes values that are no number and values closer to 0 than the smallest normal float.
inline char* writeSixDigits(float value, char* to) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    *to = '-';
    to += bits >> 31;
    bits &= 0x7FFFFFFF;
    if (bits == 0) {
        *to = '0';
        return to + 1;
    }
    const int biased = static_cast<int>(bits >> 23);
    if (biased == 0 || biased == 255) return nullptr;
    const std::uint64_t mantissa = std::uint64_t{bits << 8 | 0x80000000} << 32;
    SixDigits digits;
    if (!scaleToSixDigits(mantissa, biased - 127, digits)) return nullptr;
    return layOut(digits, to);
}

}  // namespace kx::detail
