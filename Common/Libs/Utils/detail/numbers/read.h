// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Reads floats from decimal text. One multiplication finds the answer for all but a few numbers in
// a billion, which are left to the caller.
//
// Source: Daniel Lemire, "Number Parsing at a Gigabyte per Second", Software: Practice and
// Experience 51 (2021).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "detail/bytes/little_endian.h"
#include "detail/bytes/word.h"
#include "detail/numbers/decimal.h"
#include "detail/text/ascii.h"

namespace kx::detail {

constexpr int largestFloatPowerOfTen = 38;

/// The doubles nearest to the powers of ten.
constexpr auto makeDoublePowersOfTen() {
    std::array<double, largestFloatPowerOfTen - smallestPowerOfTen + 1> powers{};
    for (int power = smallestPowerOfTen; power <= largestFloatPowerOfTen; ++power) {
        double& value = powers[static_cast<std::size_t>(power - smallestPowerOfTen)];
        value = static_cast<double>(powerOfTen(power));
        for (int bit = log2OfPowerOf10(power); bit < 63; ++bit) value /= 2;
        for (int bit = log2OfPowerOf10(power); bit > 63; --bit) value *= 2;
    }
    return powers;
}
inline constexpr auto doublePowersOfTen = makeDoublePowersOfTen();
static_assert(doublePowersOfTen[0] == 1e-64 && doublePowersOfTen[63] == 0.1 &&
              doublePowersOfTen[64] == 1 && doublePowersOfTen[102] == 1e38);

/// digits * 10^exponent
struct Decimal {
    std::uint64_t digits = 0;
    int exponent = 0;
    bool isNegative = false;
};

/// Appends the digits from `at` on to `number` and returns where they end.
inline const char* readDigits(const char* at, const char* end, std::uint64_t& number) {
    while (at != end && isDigit(*at))
        number = 10 * number + static_cast<std::uint64_t>(*at++ - '0');
    return at;
}

constexpr std::uint32_t smallPowersOfTen[] = {1,      10,      100,      1000,     10000,
                                              100000, 1000000, 10000000, 100000000};

/// Sets the highest bit of each byte that is none of 0 to 9, up to and including the first such
/// byte. Bits above it may be set, too.
constexpr std::uint64_t noDigits(std::uint64_t word) {
    return ((word + everyByte(0x76)) | word) & everyByte(0x80);
}

/// The number that eight decimal digits stand for; the first digit is in the lowest byte.
constexpr std::uint64_t fromEightDigits(std::uint64_t word) {
    word = word * 10 + (word >> 8);  // pairs of digits, to be joined twice
    word = (word & 0x00FF00FF00FF00FF) * (1 + (100ULL << 16)) >> 16;
    return (word & 0x0000FFFF0000FFFF) * (1 + (10000ULL << 32)) >> 32;
}
static_assert(fromEightDigits(0x0807060504030201) == 12345678);

/// Does what readDigits() does with up to eight digits at a time, which is faster for six digits
/// and more.
inline const char* readManyDigits(const char* at, const char* end, std::uint64_t& number) {
    while (end - at >= 8) {
        const std::uint64_t word = loadLittleEndian64(at) ^ everyByte('0');
        const int count = noDigits(word) == 0 ? 8 : bytesBelow(noDigits(word));
        if (count == 0) return at;
        number = number * smallPowersOfTen[count] + fromEightDigits(word << (64 - 8 * count));
        at += count;
        if (count < 8) return at;
    }
    return readDigits(at, end, number);
}

/// Reads "d.d...e+dd" with `decimals` digits, 1 to 8, after the point. A minus sign may come first,
/// the exponent may have either sign, and the character after it must not be a digit. Returns where
/// the 'e' is; null if the text looks different or fewer than 16 characters are left.
///
/// The values of a list mostly look alike. Their length is guessed and compared with the text here,
/// so that the processor can begin with the next value before it has found the end of this one.
inline const char* readScientific(const char* at, const char* end, int decimals, Decimal& decimal) {
    if (end - at < 16) return nullptr;
    decimal.isNegative = *at == '-';
    at += static_cast<int>(decimal.isNegative);  // without a branch: signs are hard to predict
    const char* const e = at + 2 + decimals;

    // Characters that are as expected become 0, and digits become 0 to 9.
    const std::uint32_t head = loadLittleEndian16(at) ^ ('0' | '.' << 8);
    const std::uint64_t word = (loadLittleEndian64(at + 2) ^ everyByte('0')) << (64 - 8 * decimals);
    std::uint32_t tail = loadLittleEndian32(e) ^ ('e' | '+' << 8 | '0' << 16 | '0' << 24);
    const std::uint32_t isBelowOne = tail >> 9 & 1;  // for a minus, the XOR leaves 6
    tail -= isBelowOne * ('+' ^ '-') << 8;
    // The last two bytes may be up to 9; adding six to that stays within the lower four bits.
    const std::uint32_t unlike = ((tail + 0x06060000) | tail) & 0xF0F0FFFF;
    if (head > 9 || noDigits(word) != 0 || unlike != 0 || isDigit(e[4])) return nullptr;

    decimal.digits = std::uint64_t{head} * smallPowersOfTen[decimals] + fromEightDigits(word);
    const int exponent = static_cast<int>((tail >> 16 & 15) * 10 + (tail >> 24));
    decimal.exponent = (isBelowOne != 0 ? -exponent : exponent) - decimals;
    return e;
}

/// Reads a sign, digits, a point and digits. Returns where they end; null if they are no number or
/// have more than 18 digits. Always inline, because a call would put the number into memory, which
/// costs a quarter of the time.
[[gnu::always_inline]] inline const char* readMantissa(const char* at, const char* end,
                                                       Decimal& decimal) {
    if (at != end) {
        decimal.isNegative = *at == '-';
        at += static_cast<int>(decimal.isNegative) |
              static_cast<int>(*at == '+');  // without a branch: signs are hard to predict
    }
    const char* const first = at;
    at = readDigits(at, end, decimal.digits);
    std::ptrdiff_t digits = at - first;
    if (at != end && *at == '.') {
        const char* const fraction = ++at;
        at = readManyDigits(fraction, end, decimal.digits);
        decimal.exponent = static_cast<int>(fraction - at);
        digits += at - fraction;
    }
    return digits >= 1 && digits <= 18 ? at : nullptr;
}

/// Reads what stands after the letter of an exponent. Returns where it ends; null if it is no
/// exponent or has more than four digits.
inline const char* readExponent(const char* at, const char* end, Decimal& decimal) {
    const bool isNegative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) ++at;
    std::uint64_t exponent = 0;
    const char* const first = at;
    at = readDigits(at, end, exponent);
    if (at == first || at - first > 4) return nullptr;
    decimal.exponent += isNegative ? -static_cast<int>(exponent) : static_cast<int>(exponent);
    return at;
}

/// Sets `value` to the float nearest to `decimal`; returns false if finding it takes more work.
inline bool toNearest(const Decimal& decimal, float& value) {
    if (decimal.exponent < smallestPowerOfTen || decimal.exponent > largestFloatPowerOfTen)
        return false;
    double product =
        static_cast<double>(static_cast<std::int64_t>(decimal.digits)) *
        doublePowersOfTen[static_cast<std::size_t>(decimal.exponent - smallestPowerOfTen)];
    std::uint64_t bits;
    std::memcpy(&bits, &product, sizeof bits);
    // The digits, the power and the product are rounded, which changes the product by three units
    // at most. That matters only this close to the middle between two floats.
    constexpr std::uint64_t middle = 1U << 28, units = 4;
    const bool isNearMiddle = ((bits - middle + units) & (2 * middle - 1)) <= 2 * units;
    const bool isNormal = product >= 0x1p-126 && product < 0x1p127;
    if ((isNearMiddle || !isNormal) && decimal.digits != 0) return false;
    bits |= std::uint64_t{decimal.isNegative} << 63;
    std::memcpy(&product, &bits, sizeof product);
    value = static_cast<float>(product);
    return true;
}

/// \copydoc toNearest(const Decimal&, float&)
/// Works if the digits and the power of ten are exact as doubles, so that only the result is
/// rounded (William D. Clinger, "How to Read Floating Point Numbers Accurately", PLDI 1990).
inline bool toNearest(const Decimal& decimal, double& value) {
    constexpr int largestExact = 22;
    const int size = decimal.exponent < 0 ? -decimal.exponent : decimal.exponent;
    if (decimal.digits >> 53 != 0 || size > largestExact) return false;
    const double power = doublePowersOfTen[static_cast<std::size_t>(size - smallestPowerOfTen)];
    const auto digits = static_cast<double>(static_cast<std::int64_t>(decimal.digits));
    value = decimal.exponent < 0 ? digits / power : digits * power;
    if (decimal.isNegative) value = -value;
    return true;
}

}  // namespace kx::detail
