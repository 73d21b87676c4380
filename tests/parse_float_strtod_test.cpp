// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Reading of floating-point numbers where the standard library does not: compiled on any system.
#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <string>
#include <system_error>

#include "detail/parse_float.h"
#include "kxtest.h"

namespace {

constexpr auto invalid = std::errc::invalid_argument;
constexpr auto outside = std::errc::result_out_of_range;

struct Row {
    const char* name;
    std::string text;
    std::size_t taken;  // characters
    std::errc error;
    double asDouble;
    float asFloat;
};
void PrintTo(const Row& row, std::ostream* os) { *os << row.name; }

class ParseFloat : public testing::TestWithParam<Row> {};

template <typename Float>
void expectRow(const Row& row, std::errc error, Float expected) {
    const std::string before = row.text + "5";  // a digit right behind the end is not read
    const char* const first = before.data();
    Float value = 7;
    errno = 12345;
    const auto read = kx::detail::parseFloat(first, first + row.text.size(), value);
    EXPECT_EQ(errno, 12345);
    EXPECT_EQ(read.ptr - first, static_cast<std::ptrdiff_t>(row.taken));
    EXPECT_EQ(read.ec, error);
    EXPECT_EQ(value, error == std::errc() ? expected : Float{7});  // kept
}

}  // namespace

TEST_P(ParseFloat, MatchesTable) {
    const Row& row = GetParam();
    expectRow<double>(row, row.error, row.asDouble);
}

static const Row rows[] = {
    {"Integer", "12", 2, {}, 12, 12},
    {"Fraction", "1.5", 3, {}, 1.5, 1.5F},
    {"LeadingPoint", ".25", 3, {}, .25, .25F},
    {"TrailingPoint", "3.", 2, {}, 3, 3},
    {"PointAlone", ".", 0, invalid, 0, 0},
    {"PointAndExponent", ".e1", 0, invalid, 0, 0},
    {"Exponent", "2e3", 3, {}, 2e3, 2e3F},
    {"SignedExponent", "2E-3", 4, {}, 2e-3, 2e-3F},
    {"ExponentWithoutDigits", "2e", 1, {}, 2, 2},
    {"ExponentSignWithoutDigits", "2e+", 1, {}, 2, 2},
    {"Hexadecimal", "0x1F", 1, {}, 0, 0},
    {"OtherBehind", "4,5", 1, {}, 4, 4},
    {"Empty", "", 0, invalid, 0, 0},
    {"RoundsToNearest", "0.1", 3, {}, 0.1, 0.1F},
    {"ManyDigits",
     "123456789012345678901234567890",
     30,
     {},
     123456789012345678901234567890.0,
     123456789012345678901234567890.0F},
    {"Subnormal", "1e-40", 5, {}, 1e-40, 1e-40F},
};
INSTANTIATE_TEST_SUITE_P(Table, ParseFloat, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_P(ParseFloat, MatchesTableAsFloat) {
    const Row& row = GetParam();
    expectRow<float>(row, row.error, row.asFloat);
}

TEST(ParseFloatRange, DependsOnTheType) {
    const Row large{"", "1e39", 4, {}, 1e39, 0}, tiny{"", "1e-46", 5, {}, 1e-46, 0};
    expectRow<double>(large, {}, large.asDouble);
    expectRow<float>(large, outside, 0);
    expectRow<double>(tiny, {}, tiny.asDouble);
    expectRow<float>(tiny, outside, 0);
    expectRow<double>({"", "1e309", 5, {}, 0, 0}, outside, 0);
    expectRow<double>({"", "1e-400", 6, {}, 0, 0}, outside, 0);
    expectRow<double>({"", "4.9e-324", 8, {}, 0, 0}, {}, 4.9e-324);
}

TEST(ParseFloatLocale, KnowsThePointAlone) {
    const kxtest::ScopedLocale german("de_DE", "UTF-8");
    if (!german.isSet()) GTEST_SKIP() << "no German locale, and none can be compiled";
    expectRow<double>({"", "1.5", 3, {}, 0, 0}, {}, 1.5);
    expectRow<float>({"", "1,5", 1, {}, 0, 0}, {}, 1);
}
