// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/numbers/read.h"
#include "detail/numbers/truncate.h"
#include "detail/numbers/write.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <ostream>
#include <random>
#include <regex>
#include <string>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "bytes.h"
#include "reference/classic_stream.h"
#include "rows.h"

using kx::detail::Decimal;
using kx::detail::truncateToInt32;
using reference::fromBits, reference::fromStream, reference::sameBits, reference::toStream;
using std::string_literals::operator""s;

// --- Decimal text -------------------------------------------------------------------------------
// Checks that the fast way is taken. When it gives up, the classes still find the right answer, but
// slowly.

namespace {

Decimal decimal(std::uint64_t digits, int exponent, bool isNegative = false) {
    return {digits, exponent, isNegative};
}

std::string textOf(const Decimal& number) {
    return (number.isNegative ? "-" : "") + std::to_string(number.digits) + 'e' +
           std::to_string(number.exponent);
}

template <typename Float>
bool isFast(const Decimal& number) {
    Float value = 0;
    if (!kx::detail::toNearest(number, value)) return false;
    EXPECT_TRUE(sameBits(value, fromStream<Float>(textOf(number)))) << textOf(number);
    return true;
}

/// The number of characters of `text` that `read` takes; -1 for null.
template <typename Read>
std::ptrdiff_t taken(const std::string& text, Read read) {
    const char* const end = read(text.data(), text.data() + text.size());
    return end == nullptr ? -1 : end - text.data();
}

std::ptrdiff_t mantissa(const std::string& text, Decimal& number) {
    return taken(text, [&](const char* at, const char* end) {
        return kx::detail::readMantissa(at, end, number);
    });
}

std::ptrdiff_t exponent(const std::string& text, Decimal& number) {
    return taken(text, [&](const char* at, const char* end) {
        return kx::detail::readExponent(at, end, number);
    });
}

std::ptrdiff_t scientific(const std::string& text, int decimals, Decimal& number) {
    return taken(text, [&](const char* at, const char* end) {
        return kx::detail::readScientific(at, end, decimals, number);
    });
}

std::ptrdiff_t manyDigits(const std::string& text, std::uint64_t& number) {
    return taken(text, [&](const char* at, const char* end) {
        return kx::detail::readManyDigits(at, end, number);
    });
}

/// The text of `value`, or "slow" if it takes more work. Nothing after the space for it is changed.
std::string written(float value) {
    char text[17];
    text[15] = text[16] = '#';
    char* const end = kx::detail::writeSixDigits(value, text);
    EXPECT_EQ(text[15], '#');
    EXPECT_EQ(text[16], '#');
    return end == nullptr ? "slow" : std::string(text, end);
}

/// True if the seventh digit is a 5 and the last one.
bool isHalf(float value) {
    char text[16];
    std::snprintf(text, sizeof text, "%.6e", double{value});
    return std::string(text).find("5e") != std::string::npos && std::stod(text) == double{value};
}

}  // namespace

// --- To the nearest float -----------------------------------------------------------------------

TEST(DecimalToFloat, IsFastForRandomNumbers) {
    std::mt19937_64 random(5);
    for (int i = 0; i < 20'000; ++i) {
        const int digits = 1 + static_cast<int>(random() % 18);
        const auto lowest = static_cast<std::uint64_t>(std::pow(10, digits - 1));
        // Neither 0 nor a multiple of 5, either of which might lie in the middle between two
        // floats.
        const std::uint64_t number = lowest + random() % (9 * lowest) / 5 * 5 + 1;
        const int power = -1 - static_cast<int>(random() % (36 + static_cast<unsigned>(digits)));
        EXPECT_TRUE(isFast<float>(decimal(number, power, i % 2 != 0))) << number << 'e' << power;
    }
}

TEST(DecimalToFloat, IsFastFromTheSmallestNormalFloatToHalfOfTheRange) {
    EXPECT_TRUE(isFast<float>(decimal(11754944, -45)));   // 0x1p-126 is 1.17549435e-38
    EXPECT_FALSE(isFast<float>(decimal(11754943, -45)));  // just below it
    EXPECT_TRUE(isFast<float>(decimal(17014118, 31)));    // 0x1p127 is 1.70141183e+38
    EXPECT_FALSE(isFast<float>(decimal(17014119, 31)));   // just above it
    EXPECT_FALSE(isFast<float>(decimal(1, 39)));
}

TEST(DecimalToFloat, IsFastForEveryPowerInTheTable) {
    for (int power = -64; power <= 38; ++power) {
        EXPECT_TRUE(isFast<float>(decimal(0, power))) << power;
        EXPECT_TRUE(isFast<float>(decimal(0, power, true))) << power;
    }
    EXPECT_TRUE(isFast<float>(decimal(1, 38)));
    EXPECT_TRUE(isFast<float>(decimal(123456789012345678, -50)));
    for (const int power : {-65, 39, std::numeric_limits<int>::max()})
        EXPECT_FALSE(isFast<float>(decimal(0, power))) << power;
}

// If the double lies between two floats, the part that was rounded away decides.
TEST(DecimalToFloat, GivesUpNearTheMiddleBetweenFloats) {
    constexpr std::uint64_t middle = (1U << 24U) + 1;
    EXPECT_FALSE(isFast<float>(decimal(middle, 0)));
    EXPECT_FALSE(isFast<float>(decimal(middle * 1'000'000'000 + 10, -9)));
    EXPECT_FALSE(isFast<float>(decimal(middle * 1'000'000'000 - 10, -9)));
    EXPECT_TRUE(isFast<float>(decimal(middle * 1'000'000'000 + 40, -9)));
    EXPECT_TRUE(isFast<float>(decimal(middle * 1'000'000'000 - 40, -9)));
    EXPECT_TRUE(isFast<float>(decimal(middle + 1, 0)));
    EXPECT_TRUE(isFast<float>(decimal(middle - 1, 0)));
}

TEST(DecimalToDouble, IsFastWhereDigitsAndPowerAreExact) {
    constexpr std::uint64_t limit = std::uint64_t{1} << 53U;
    for (int power = -22; power <= 22; ++power)
        for (const std::uint64_t digits : {std::uint64_t{0}, std::uint64_t{1}, limit - 1}) {
            EXPECT_TRUE(isFast<double>(decimal(digits, power))) << digits << 'e' << power;
            EXPECT_TRUE(isFast<double>(decimal(digits, power, true))) << digits << 'e' << power;
        }
    EXPECT_FALSE(isFast<double>(decimal(limit, 0)));
    EXPECT_FALSE(isFast<double>(decimal(1, 23)));
    EXPECT_FALSE(isFast<double>(decimal(1, -23)));
}

// --- Reading ------------------------------------------------------------------------------------

TEST(DecimalReading, TakesOneToEighteenDigits) {
    for (std::size_t before = 0; before <= 20; ++before)
        for (std::size_t behind = 0; behind <= 20; ++behind) {
            const std::string whole(before, '1'), fraction(behind, '2');
            const std::string text = whole + '.' + fraction;
            const std::size_t digits = before + behind;
            Decimal number;
            ASSERT_EQ(mantissa(text, number),
                      digits >= 1 && digits <= 18 ? static_cast<std::ptrdiff_t>(text.size()) : -1)
                << text;
            if (digits < 1 || digits > 18) continue;
            EXPECT_EQ(number.digits, std::stoull(whole + fraction));
            EXPECT_EQ(number.exponent, -static_cast<int>(behind));
        }
}

TEST(DecimalReading, TakesASignAndStopsAtWhatIsNoDigit) {
    const struct {
        const char* text;
        std::ptrdiff_t taken;
        std::uint64_t digits;
        int exponent;
        bool isNegative;
    } rows[] = {
        {"7", 1, 7, 0, false},
        {"+7", 2, 7, 0, false},
        {"-7", 2, 7, 0, true},
        {"-0.5x", 4, 5, -1, true},
        {"12.e3", 3, 12, 0, false},
        {".25,", 3, 25, -2, false},
        {"1.2.3", 3, 12, -1, false},
        {"--1", -1, 0, 0, true},
        {"", -1, 0, 0, false},
        {"-", -1, 0, 0, true},
        {".", -1, 0, 0, false},
        {"e1", -1, 0, 0, false},
        {"1.23456789012345678901", -1, 0, 0, false},
    };
    for (const auto& row : rows) {
        Decimal number;
        EXPECT_EQ(mantissa(row.text, number), row.taken) << row.text;
        if (row.taken < 0) continue;
        EXPECT_EQ(number.digits, row.digits) << row.text;
        EXPECT_EQ(number.exponent, row.exponent) << row.text;
        EXPECT_EQ(number.isNegative, row.isNegative) << row.text;
    }
}

TEST(DecimalReading, AddsAnExponentOfUpToFourDigits) {
    const struct {
        const char* text;
        std::ptrdiff_t taken;
        int sum;
    } rows[] = {
        {"7", 1, 5},       {"+10", 3, 8},        {"-10", 3, -12},  {"0012", 4, 10},
        {"9999", 4, 9997}, {"-9999", 5, -10001}, {"00001", -1, 0}, {"", -1, 0},
        {"-", -1, 0},      {"+-1", -1, 0},       {"x", -1, 0},     {"5x", 1, 3},
    };
    for (const auto& row : rows) {
        Decimal number = decimal(1, -2);
        EXPECT_EQ(exponent(row.text, number), row.taken) << row.text;
        if (row.taken < 0) continue;
        EXPECT_EQ(number.exponent, row.sum) << row.text;
    }
}

TEST(DecimalReading, ManyDigitsAreThoseThatStandThere) {
    for (std::size_t count = 0; count <= 18; ++count)
        for (std::size_t behind = 0; behind <= 9; ++behind)
            for (const char stop : {'.', '/', ':', '\0', '\x7F', '\xB5'}) {
                const std::string digits = "123456789012345678"s.substr(0, count);
                std::uint64_t number = 0;
                EXPECT_EQ(manyDigits(digits + std::string(behind, stop), number),
                          static_cast<std::ptrdiff_t>(count));
                EXPECT_EQ(number, count == 0 ? 0 : std::stoull(digits));
            }
}

// For each byte in each place and each length: exactly what fits the pattern is accepted.
TEST(DecimalReading, ScientificTextIsWhatThePatternTakes) {
    for (int decimals = 1; decimals <= 8; ++decimals) {
        const std::regex pattern("-?([0-9])\\.([0-9]{" + std::to_string(decimals) +
                                 "})e([+-][0-9]{2})(?![0-9])");
        for (const char* const sign : {"", "-"})
            for (const char* const power : {"e+07", "e-38"}) {
                const std::string text =
                    sign + "9.01234567"s.substr(0, 2 + static_cast<std::size_t>(decimals)) + power;
                for (std::size_t place = 0; place <= text.size(); ++place)
                    for (const char byte : kxtest::everyByte()) {
                        std::string changed = text + ' ' + std::string(16, '3');
                        changed[place] = byte;
                        Decimal number;
                        const std::ptrdiff_t e = scientific(changed, decimals, number);
                        std::smatch parts;
                        const bool matches = std::regex_search(
                            changed, parts, pattern, std::regex_constants::match_continuous);
                        ASSERT_EQ(e, matches ? static_cast<std::ptrdiff_t>(changed.find('e')) : -1)
                            << changed;
                        if (!matches) continue;
                        EXPECT_EQ(number.digits, std::stoull(parts.str(1) + parts.str(2)));
                        EXPECT_EQ(number.exponent, std::stoi(parts.str(3)) - decimals);
                        EXPECT_EQ(number.isNegative, changed[0] == '-');
                    }
            }
    }
}

TEST(DecimalReading, ScientificTextHasSixteenCharactersBehindIt) {
    Decimal number;
    const std::string text = "1.234e+05 1.234e+05";
    EXPECT_EQ(scientific(text.substr(0, 16), 3, number), 5);
    EXPECT_EQ(scientific(text.substr(0, 15), 3, number), -1);
}

// --- Writing ------------------------------------------------------------------------------------

TEST(DecimalWriting, IsFastForRandomFloatsAndStaysInItsPlace) {
    std::mt19937 random(23);
    for (int i = 0; i < 20'000; ++i) {
        const float value = fromBits(static_cast<std::uint32_t>(random()));
        if (!std::isnormal(value) || isHalf(value)) continue;
        ASSERT_EQ(written(value), toStream(value));
    }
}

TEST(DecimalWriting, GivesUpBelowTheNormalFloatsAndForWhatIsNoNumber) {
    using Limits = std::numeric_limits<float>;
    for (const float value : {Limits::min() / 2, -Limits::denorm_min(), Limits::infinity(),
                              -Limits::infinity(), Limits::quiet_NaN()})
        EXPECT_EQ(written(value), "slow") << value;
    for (const float value : {0.0F, -0.0F, Limits::min(), Limits::max(), Limits::lowest()})
        EXPECT_EQ(written(value), toStream(value));
}

// A half is rounded here if the power of ten is exact.
TEST(DecimalWriting, IsFastForHalvesWithAnExactPowerOfTen) {
    for (const float half : {100000.5F, 100001.5F, 2.5F, 12345.25F, 1234.0625F})
        EXPECT_EQ(written(half), toStream(half));
    EXPECT_EQ(written(1234565.0F), "slow");  // 10^-1 is not exact
}

// --- Truncation ---------------------------------------------------------------------------------

namespace {

constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();

struct TruncateCase {
    const char* name;
    double value;
    std::int32_t result;
};
void PrintTo(const TruncateCase& c, std::ostream* os) { *os << c.name; }

const TruncateCase truncateCases[] = {
    {"Zero", 0.0, 0},
    {"MinusZero", -0.0, 0},
    {"BelowOne", 0.999999, 0},
    {"AboveMinusOne", -0.999999, 0},
    {"TowardsZero", 27.5, 27},
    {"NegativeTowardsZero", -27.5, -27},
    {"Largest", 2147483647.0, largest},
    {"LargestAndAHalf", 2147483647.5, largest},
    {"JustBelowTheUpperLimit", std::nextafter(2147483648.0, 0.0), largest},
    {"UpperLimit", 2147483648.0, smallest},
    {"Smallest", -2147483648.0, smallest},
    {"SmallestPlusAHalf", -2147483647.5, smallest + 1},
    {"SmallestMinusAHalf", -2147483648.5, smallest},
    {"LowerLimit", -2147483649.0, smallest},
    {"FarAbove", 3.3e23, smallest},
    {"FarBelow", -3.3e23, smallest},
    {"Infinity", std::numeric_limits<double>::infinity(), smallest},
    {"MinusInfinity", -std::numeric_limits<double>::infinity(), smallest},
    {"NotANumber", std::numeric_limits<double>::quiet_NaN(), smallest},
};

class TruncateToInt32 : public testing::TestWithParam<TruncateCase> {};

}  // namespace

TEST_P(TruncateToInt32, MatchesTable) {
    const TruncateCase& c = GetParam();
    EXPECT_EQ(truncateToInt32(c.value), c.result);
#if defined(__x86_64__)
    EXPECT_EQ(_mm_cvttsd_si32(_mm_set_sd(c.value)), c.result) << "the processor's own conversion";
#endif
}

INSTANTIATE_TEST_SUITE_P(Table, TruncateToInt32, testing::ValuesIn(truncateCases),
                         kxtest::nameOfRow);

static_assert(truncateToInt32(-1.5) == -1 && truncateToInt32(1e10) == smallest, "constant too");
