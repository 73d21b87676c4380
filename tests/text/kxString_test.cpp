// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxString.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <locale>
#include <random>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "kxtest.h"
#include "reference/classic_stream.h"
#include "reference/digit_grouping.h"
#include "rows.h"

using reference::fromBits, reference::fromStream, reference::sameBits;
using std::string_literals::operator""s;

namespace {

constexpr float largest = std::numeric_limits<float>::max();

/// A decimal comma, and points between groups of three.
class CommaNumbers : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

class ScopedGlobalLocale {
public:
    explicit ScopedGlobalLocale(const std::locale& locale) : _old(std::locale::global(locale)) {}
    ~ScopedGlobalLocale() { std::locale::global(_old); }
    ScopedGlobalLocale(const ScopedGlobalLocale&) = delete;
    ScopedGlobalLocale& operator=(const ScopedGlobalLocale&) = delete;

private:
    std::locale _old;
};

}  // namespace

// --- beautifyDigits ------------------------------------------------------------------------------

struct DigitsCase {
    const char* name;
    std::string text, separator;
    std::uint32_t group;
    std::string result;
};
static void PrintTo(const DigitsCase& c, std::ostream* os) { *os << c.name; }

class BeautifyDigits : public testing::TestWithParam<DigitsCase> {};
TEST_P(BeautifyDigits, MatchesTable) {
    const DigitsCase& c = GetParam();
    EXPECT_EQ(kxString::beautifyDigits(c.text, c.separator, c.group), c.result);
}

static const DigitsCase digitsCases[] = {
    {"Empty", "", ",", 3, ""},
    {"NoDigits", "abc", ",", 3, "abc"},
    {"OneGroup", "123", ",", 3, "123"},
    {"OneMoreThanAGroup", "1000", ",", 3, "1,000"},
    {"JustAGroupOfFour", "1000", ",", 4, "1000"},
    {"GroupOfTwo", "1000", "'", 2, "10'00"},
    {"GroupOfOne", "1234", ",", 1, "1,2,3,4"},
    {"Groups", "1234567", ",", 3, "1,234,567"},
    {"FractionIsARunOfItsOwn", "12345.6789", ",", 3, "12,345.6,789"},
    {"RunsInText", "item 12345 of 678901", ",", 3, "item 12,345 of 678,901"},
    {"TextAfterTheLastRun", "12345 pieces", ",", 3, "12,345 pieces"},
    {"ZerosCount", "0001000", ",", 3, "0,001,000"},
    {"SignsStay", "-1234 +1234", ",", 3, "-1,234 +1,234"},
    {"HighBytesAreNoDigits", "\xb2\xb3\xb9 1234\xff", ",", 3, "\xb2\xb3\xb9 1,234\xff"},
    {"NeighboursOfDigitsInAscii", "////1234::::", ",", 3, "////1,234::::"},
    {"ZeroByteInside", "1234\0005678"s, ",", 3, "1,234\0005,678"s},
    {"ZeroByteAsSeparator", "1234", "\0"s, 3, "1\000234"s},
    {"LargestGroup", "12345", ",", 0xFFFFFFFFU, "12345"},
    {"GroupOfZeroIsRefused", "12345", ",", 0, "12345"},
    {"EmptySeparator", "1234567 1234567", "", 3, "1234567 1234567"},
    {"LongSeparator", "1234567", "--", 3, "1--234--567"},
    {"VeryLongSeparator", "12345 67890", "&nbsp;", 1,
     "1&nbsp;2&nbsp;3&nbsp;4&nbsp;5 6&nbsp;7&nbsp;8&nbsp;9&nbsp;0"},
    // Worked out by hand: the run ended at 7 and two separators were inserted, so scanning resumes
    // at 9, the end of the grouped run.
    {"DigitAsSeparator", "1234567", "0", 3, "102340567"},
    // Scanning resumes at 5 + 2, before "45", which is no longer than a group.
    {"DigitsAsSeparator", "12345", "00", 2, "100230045"},
    // Scanning resumes at 3 + 2, before "03", which becomes "0003"; then 7 + 1 is before the last
    // digit.
    {"DigitsAreGroupedAgain", "123", "00", 1, "100200003"},
    // "1xy92xy93": scanning resumes at 3 + 2, inside the second separator, before "y93", where "93"
    // becomes "9xy93"; then at 8 + 1, before "xy93", and so on without end. So the run is grouped
    // once, and so is the next one.
    {"EndlessRunIsGroupedOnce", "123 4 56", "xy9", 1, "1xy92xy93 4 5xy96"},
    {"EndlessGrowthIsGroupedOnce", "123a", "0000", 1,
     "1000020000"
     "3a"},
    // With "00" and 1, two digits come to an end ("1002": scanning resumes before the 2), even
    // beside text.
    {"EndsBesideText", "12 x 3", "00", 1, "1002 x 3"},
};
INSTANTIATE_TEST_SUITE_P(Table, BeautifyDigits, testing::ValuesIn(digitsCases), kxtest::nameOfRow);

TEST(BeautifyDigits, NumberForm) {
    EXPECT_EQ(kxString::beautifyDigits(1234567U, ".", 3), "1.234.567");
    EXPECT_EQ(kxString::beautifyDigits(0U, ",", 3), "0");
    EXPECT_EQ(kxString::beautifyDigits(4294967295U, ",", 3), "4,294,967,295");
    EXPECT_EQ(kxString::beautifyDigits(12345U, ",", 0), "12345");
}

TEST(BeautifyDigits, NumberFormGroupsLikeTheTextForm) {
    std::vector<std::uint32_t> values = {4294967295U};
    for (std::uint64_t power = 1; power < 10000000000; power *= 10)
        for (const std::uint64_t value : {power - 1, power, power + 1, 2 * power - 1})
            values.push_back(static_cast<std::uint32_t>(value));
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i)
        values.push_back(static_cast<std::uint32_t>(random()) >> random() % 32);
    for (const char* separator : {",", "\xff", "0", "--", ""})
        for (std::uint32_t group = 1; group <= 4; ++group)
            for (const std::uint32_t value : values) {
                const std::string digits = std::to_string(value);
                ASSERT_EQ(kxString::beautifyDigits(value, separator, group),
                          reference::groupDigits(digits, separator, group).value_or(""));
            }
}

// Every separator of up to five characters that are digits or not; for many of them the rule never
// ends.
TEST(BeautifyDigits, FollowsTheRuleWhereItEndsAndGroupsOnceWhereNot) {
    const std::string digits = "123456789012345678";
    int ended = 0, endless = 0;
    for (std::size_t size = 0; size <= 5; ++size)
        for (unsigned kinds = 0; kinds < 1U << size; ++kinds) {
            std::string separator;
            for (std::size_t i = 0; i < size; ++i) separator += (kinds >> i & 1U) != 0 ? '7' : ',';
            for (std::uint32_t group = 1; group <= 5; ++group)
                for (std::size_t length = 1; length <= digits.size(); ++length) {
                    const std::string run = digits.substr(0, length);
                    const auto expected = reference::groupDigits(run, separator, group);
                    std::string once = run;
                    std::size_t at = 0;
                    reference::groupNextRun(once, at, separator, group);
                    ++(expected ? ended : endless);
                    ASSERT_EQ(kxString::beautifyDigits(run, separator, group),
                              expected.value_or(once))
                        << separator << ' ' << group << ' ' << run;
                    const std::string text = "-" + run + ".5";
                    ASSERT_EQ(kxString::beautifyDigits(text, separator, group),
                              "-" + expected.value_or(once) + ".5");
                }
        }
    EXPECT_GT(ended, 1000);
    EXPECT_GT(endless, 1000);
}

// If the work grew with the square of these sizes, it would take minutes.
TEST(BeautifyDigits, TakesTimeInProportionToTheText) {
    std::string runs;
    for (int i = 0; i < 400000; ++i) runs += "1234 ";
    EXPECT_EQ(kxString::beautifyDigits(runs, ",", 3).size(), 2400000U);
    EXPECT_EQ(kxString::beautifyDigits(runs, ", ", 3).size(), 2800000U);
    EXPECT_EQ(kxString::beautifyDigits(std::string(1000001, '5'), ",", 1).size(), 2000001U);
}

// --- toFloat -------------------------------------------------------------------------------------

struct FloatCase {
    const char* name;
    std::string text;
    float value;
};
static void PrintTo(const FloatCase& c, std::ostream* os) { *os << c.name; }

class ToFloat : public testing::TestWithParam<FloatCase> {};
TEST_P(ToFloat, MatchesTable) {
    const FloatCase& c = GetParam();
    EXPECT_PRED2(sameBits<float>, kxString::toFloat(c.text), c.value);
    if (reference::isGnuStream) {
        EXPECT_PRED2(sameBits<float>, fromStream<float>(c.text), c.value) << "the table is wrong";
    }
}

static const std::string zeros(1000, '0');

static const FloatCase floatCases[] = {
    {"Empty", "", 0},
    {"Blanks", " \t\n", 0},
    {"Word", "abc", 0},
    {"Integer", "7", 7},
    {"Fraction", "2.5", 2.5F},
    {"Exponent", "25e-1", 2.5F},
    {"UpperCaseExponent", "25E1", 250},
    {"ExponentWithPlus", "1e+2", 100},
    {"Negative", "-2.5", -2.5F},
    {"Plus", "+2.5", 2.5F},
    {"MinusZero", "-0", -0.0F},
    {"LeadingWhiteSpace", " \t\n\v\f\r7", 7},
    {"OtherBlankIsNoWhiteSpace",
     "\xa0"
     "7",
     0},
    {"RestIsIgnored", "7abc", 7},
    {"NextNumberIsIgnored", "7 8", 7},
    {"NoLeadingDigit", ".5", 0.5F},
    {"NoDigitBehindThePoint", "5.", 5},
    {"NoDigitBehindThePointButExponent", "5.e1", 50},
    {"PointAlone", ".", 0},
    {"MinusPoint", "-.", 0},
    {"PointAndExponent", ".e1", 0},
    {"SecondPointEnds", "1.5.5", 1.5F},
    {"CommaEnds", "1,5", 1},
    {"GroupsEnd", "1,234,567", 1},
    {"ApostropheEnds", "1'000", 1},
    {"Minus", "-", 0},
    {"PlusAlone", "+", 0},
    {"PlusMinus", "+-1", 0},
    {"MinusMinus", "--1", 0},
    {"BlankBehindSign", "- 1", 0},
    {"ExponentAlone", "e5", 0},
    {"ExponentWithoutDigits", "1e", 0},
    {"ExponentWithoutDigitsInText", "7em", 0},
    {"ExponentWithSignOnly", "1e+", 0},
    {"NegativeExponentWithSignOnly", "-1.5E-", 0},
    {"TwoSignsInExponent", "1e--5", 0},
    {"TwoExponents", "1e5e6", 1e5F},
    {"SpoiltSecondExponent", "1e5e", 1e5F},
    {"PointInExponentEnds", "1e2.5", 100},
    {"LetterBehindExponentEnds", "1e5x", 1e5F},
    {"Hexadecimal", "0x10", 0},
    {"HexadecimalFloat", "0x1.8p3", 0},
    {"NegativeHexadecimal", "-0x10", -0.0F},
    {"Infinity", "inf", 0},
    {"NegativeInfinity", "-infinity", 0},
    {"NotANumber", "nan", 0},
    {"NotANumberWithPayload", "NAN(1)", 0},
    {"Suffix", "1.5f", 1.5F},
    {"ZeroByteEnds", "1\0002"s, 1},
    {"ZeroByteFirst", "\0001"s, 0},
    {"LeadingZeros", "0000012", 12},
    {"LargestFloat", "3.4028235e38", largest},
    {"Overflow", "1e39", largest},
    {"NegativeOverflow", "-1e39", -largest},
    // Half a unit above the largest float; rounding up would leave the range.
    {"OverflowByRounding", "340282356779733661637539395458142568448", largest},
    {"OverflowWithoutExponent", "1" + zeros, largest},
    {"OverflowBehindLeadingZeros", zeros + "1" + zeros, largest},
    {"OverflowByHugeExponent", "1e99999999999999999999", largest},
    {"OverflowOfAFraction", "." + zeros + "1e1100", largest},
    {"OverflowOfAFractionByExponentWithPlus", "0.001e+99", largest},
    {"OverflowBeyondDouble", "1e309", largest},
    {"OverflowThenE", "1e309e", largest},
    {"OverflowSpoiltByE", "1" + zeros + "e", 0},
    {"Underflow", "1e-99", 0},
    {"NegativeUnderflow", "-1e-99", -0.0F},
    {"UnderflowWithoutExponent", "0." + zeros + "1", 0},
    {"UnderflowOfALongInteger", "1" + zeros + "e-1100", 0},
    {"UnderflowByHugeExponent", "-1e-99999999999999999999", -0.0F},
    {"ZeroWithHugeExponent", "0e99999999999999999999", 0},
    {"ZeroWithHugeExponentAndFraction", "-0.00E+99999", -0.0F},
    {"SmallestNormal", "1.17549435e-38", std::numeric_limits<float>::min()},
    {"Denormal", "1e-45", std::numeric_limits<float>::denorm_min()},
    // Half of the smallest float: a tie goes to the even neighbour, 0, but a little more does not.
    {"HalfOfTheSmallest",
     "7."
     "00649232162408535461864791644958065640130970938257885878534141944895541342930300743319094181"
     "060791015625e-46",
     0},
    {"MoreThanHalfOfTheSmallest",
     "7."
     "00649232162408535461864791644958065640130970938257885878534141944895541342930300743319094181"
     "0607910156250001e-46",
     std::numeric_limits<float>::denorm_min()},
    {"LongIntegerScaledDown", "1" + zeros + "e-1000", 1},
    {"LongFractionScaledUp", "0." + zeros + "1e1001", 1},
    // 2^24 + 1 lies between two floats: a tie that is decided by the last of many digits.
    {"TieToEven", "16777217", 16777216},
    {"TieBrokenByALateDigit", "16777217." + zeros + "1", 16777218},
};
INSTANTIATE_TEST_SUITE_P(Table, ToFloat, testing::ValuesIn(floatCases), kxtest::nameOfRow);

// --- setNum and lists ----------------------------------------------------------------------------

TEST(SetNum, SixDigitsAndTheShorterNotation) {
    EXPECT_EQ(kxString::setNum(1.5F), "1.5");
    EXPECT_EQ(kxString::setNum(1234567), "1.23457e+06");
    EXPECT_EQ(kxString::setNum(0.0000001F), "1e-07");
    EXPECT_EQ(kxString::setNum(100000), "100000");
    EXPECT_EQ(kxString::setNum(999999.4375F), "999999");
    EXPECT_EQ(kxString::setNum(999999.5F), "1e+06");
    EXPECT_EQ(kxString::setNum(0.0001F), "0.0001");
    EXPECT_EQ(kxString::setNum(0.00001F), "1e-05");
    EXPECT_EQ(kxString::setNum(0), "0");
    EXPECT_EQ(kxString::setNum(-0.0F), "-0");
    EXPECT_EQ(kxString::setNum(-largest), "-3.40282e+38");
    EXPECT_EQ(kxString::setNum(std::numeric_limits<float>::denorm_min()), "1.4013e-45");
    EXPECT_EQ(kxString::setNum(-std::numeric_limits<float>::infinity()), "-inf");
    EXPECT_EQ(kxString::setNum(fromBits(0x7FC00000U)), "nan");
    EXPECT_EQ(kxString::setNum(fromBits(0xFFC00000U)), "-nan");
}

TEST(CreateStringFromValues, EndsEachValueWithABlank) {
    EXPECT_EQ(kxString::createStringFromValues({}), "");
    EXPECT_EQ(kxString::createStringFromValues({1, 2.5F}), "1 2.5 ");
    EXPECT_EQ(kxString::createStringFromValues({1e7F, -1e-7F, 0}), "1e+07 -1e-07 0 ");
}

struct ListCase {
    const char* name;
    std::string text;
    std::vector<float> values;
};
static void PrintTo(const ListCase& c, std::ostream* os) { *os << c.name; }

class GetValuesFromString : public testing::TestWithParam<ListCase> {};
TEST_P(GetValuesFromString, MatchesTable) {
    EXPECT_EQ(kxString::getValuesFromString(GetParam().text), GetParam().values);
}

static const ListCase listCases[] = {
    {"Empty", "", {0}},
    {"True", "TRUE", {1}},
    {"TrueInsideAWord", "isTRUEish", {1}},
    {"TrueBehindNumbers", "1.0e+00 TRUE", {1}},
    {"TrueBehindAZeroByte", "\0TRUE"s, {1}},
    {"CutTrue", "TRU", {0}},
    {"LowerCaseTrueHasAnE", "true", {0}},
    {"False", "FALSE", {0}},
    {"FalseInsideAWord", "7FALSEx", {0}},
    {"FalseBehindNumbers", "5.0e+00 FALSE", {0}},
    {"CutFalse", "7FALS", {7}},
    {"TrueWinsOverFalse", "FALSE TRUE", {1}},
    {"NoE", "1 2.5 3", {1}},
    {"UpperCaseEIsNoE", "1E+01 2E+00 ", {10}},
    {"List", "1.000000e+00 2.500000e+00 ", {1, 2.5F}},
    {"NoSeparatorAtTheEnd", "1.000000e+00 2.500000e+00", {1, 2.5F}},
    {"AnySeparator", "1e+00,2e+00;3e+00", {1, 2, 3}},
    {"RestWithoutEIsDropped", "1.5e+00 7", {1.5F}},
    {"ShortLastPiece", "1.5e+00 2e3", {1.5F, 2000}},
    {"ShortOnlyPiece", "2e3", {2000}},
    {"SpoiltLastPiece", "1.5e+00 2e", {1.5F, 0}},
    {"EAtTheVeryEnd", "e", {0}},
    // The third digit of the exponent is taken for the separator, but it is read.
    {"ThreeDigitExponent", "1e+001 2e+00 ", {10, 2}},
    {"FourDigitExponentIsCut", "1e+0012e+00 ", {10, 2}},
    {"ShortExponentTakesTheNextDigits", "1e1 2 3e+00 ", {10, 3}},
    {"TwoEsInOnePiece", "1e2e3 4e+00 ", {100, 4}},
    {"PieceCutsALongExponent", "1e+99999", {largest}},
};
INSTANTIATE_TEST_SUITE_P(Table, GetValuesFromString, testing::ValuesIn(listCases),
                         kxtest::nameOfRow);

// Deliberate: only a list in exponent notation is read back whole.
TEST(GetValuesFromString, ReadsBackWhatWasWrittenWithExponents) {
    const auto roundTrip = [](const std::vector<float>& values) {
        return kxString::getValuesFromString(kxString::createStringFromValues(values));
    };
    using Values = std::vector<float>;
    EXPECT_EQ(roundTrip({1e6F, -2.5e-6F, 3e38F}), (Values{1e6F, -2.5e-6F, 3e38F}));
    EXPECT_EQ(roundTrip({1, 2, 3}), Values{1});
    EXPECT_EQ(roundTrip({}), Values{0});
}

// --- Locales -------------------------------------------------------------------------------------

static void expectClassicNumbers() {
    EXPECT_EQ(kxString::toFloat("1234.5"), 1234.5F);
    EXPECT_EQ(kxString::toFloat("1.234,5"), 1.234F);
    EXPECT_EQ(kxString::toFloat("-1.5e3"), -1500.0F);
    EXPECT_EQ(kxString::toFloat("1e99"), largest);
    EXPECT_EQ(kxString::setNum(1234.5F), "1234.5");
    EXPECT_EQ(kxString::setNum(-1.5e-7F), "-1.5e-07");
    EXPECT_EQ(kxString::createStringFromValues({0.5F, 123456}), "0.5 123456 ");
    EXPECT_EQ(kxString::getValuesFromString("1.5e+00 2.5e+00 "), (std::vector<float>{1.5F, 2.5F}));
    EXPECT_EQ(kxString::getDoubleOption("1234.5,x=true"), 1234.5);
    EXPECT_EQ(kxString::beautifyDigits(1234567U, "'", 3), "1'234'567");
    EXPECT_EQ(kxString::hash("x"), std::to_string(std::hash<std::string>()("x")));
}

TEST(Locales, GlobalCxxLocaleWithDecimalCommaChangesNothing) {
    const ScopedGlobalLocale comma(std::locale(std::locale::classic(), new CommaNumbers));
    std::ostringstream out;
    out << 1234.5;
    ASSERT_EQ(out.str(), "1.234,5") << "the locale is not in effect";
    expectClassicNumbers();
}

TEST(Locales, ProcessLocaleWithDecimalCommaChangesNothing) {
    const kxtest::ScopedLocale german("de_DE", "UTF-8");
    if (!german.isSet()) GTEST_SKIP() << "no German locale, and none can be compiled";
    EXPECT_STREQ(std::localeconv()->decimal_point, ",");
    expectClassicNumbers();
}

// --- Option texts --------------------------------------------------------------------------------

TEST(GetDoubleOption, ReadsTheFirstField) {
    EXPECT_EQ(kxString::getDoubleOption("2.5,flag=true"), 2.5);
    EXPECT_EQ(kxString::getDoubleOption("7abc"), 7);
    EXPECT_EQ(kxString::getDoubleOption(" \t-1e3"), -1000);
    EXPECT_EQ(kxString::getDoubleOption("0.1"), 0.1) << "a float would be less exact";
    EXPECT_EQ(kxString::getDoubleOption("1e300"), 1e300);
    EXPECT_EQ(kxString::getDoubleOption("-1e999"), -std::numeric_limits<double>::max());
    EXPECT_EQ(kxString::getDoubleOption("flag=true"), 0);
    EXPECT_EQ(kxString::getDoubleOption(",7"), 0);
    EXPECT_EQ(kxString::getDoubleOption("1e,5"), 0);
    EXPECT_EQ(kxString::getDoubleOption(""), 0);
}

TEST(GetStringOption, IsTheFirstField) {
    EXPECT_EQ(kxString::getStringOption(",x=true"), "");
    EXPECT_EQ(kxString::getStringOption("abc"), "abc");
    EXPECT_EQ(kxString::getStringOption(" a b ,c,d"), " a b ");
    EXPECT_EQ(kxString::getStringOption(""), "");
}

TEST(GetBoolOption, FindsNameAndTrueAnywhere) {
    EXPECT_TRUE(kxString::getBoolOption("0.5,smooth=true", "smooth"));
    EXPECT_TRUE(kxString::getBoolOption("smooth=trueish,7", "smooth"));
    EXPECT_TRUE(kxString::getBoolOption("nosmooth=true", "smooth")) << "deliberate";
    EXPECT_TRUE(kxString::getBoolOption("a=true,b=true", "b"));
    EXPECT_TRUE(kxString::getBoolOption("a=true=true", "a=true"));
    EXPECT_FALSE(kxString::getBoolOption("smooth=TRUE", "smooth"));
    EXPECT_FALSE(kxString::getBoolOption("smooth = true", "smooth"));
    EXPECT_FALSE(kxString::getBoolOption("Smooth=true", "smooth"));
    EXPECT_FALSE(kxString::getBoolOption("th=true", "smooth"));
    EXPECT_FALSE(kxString::getBoolOption("smooth,=true", "smooth"));
    EXPECT_FALSE(kxString::getBoolOption("smooth=tru", "smooth"));
    EXPECT_FALSE(kxString::getBoolOption("", "smooth"));
    EXPECT_TRUE(kxString::getBoolOption("x,=true", "")) << "an empty name: \"=true\" alone";
    EXPECT_FALSE(kxString::getBoolOption("x", ""));
}

// If the work grew with the square of the size, it would take minutes.
TEST(GetBoolOption, TakesTimeInProportionToTheText) {
    const std::string half(4 << 20, 'e');
    EXPECT_FALSE(kxString::getBoolOption(half + half, half));
    EXPECT_TRUE(kxString::getBoolOption(half + half + "=true", half));
}

// --- Text ----------------------------------------------------------------------------------------

TEST(Replace, ReplacesFromLeftToRightAndNeverTwice) {
    const auto replaced = [](std::string text, const std::string& search,
                             const std::string& replacement) {
        kxString::replace(text, search, replacement);
        return text;
    };
    EXPECT_EQ(replaced("aba", "a", "aa"), "aabaa");
    EXPECT_EQ(replaced("aaaa", "aa", "b"), "bb");
    EXPECT_EQ(replaced("aaa", "aa", "b"), "ba");
    EXPECT_EQ(replaced("aab", "ab", "b"), "ab") << "what arose from a replacement is not searched";
    EXPECT_EQ(replaced("xaxbx", "x", ""), "ab");
    EXPECT_EQ(replaced("abc", "x", "y"), "abc");
    EXPECT_EQ(replaced("abc", "A", "y"), "abc");
    EXPECT_EQ(replaced("abc", "abcd", "y"), "abc");
    EXPECT_EQ(replaced("abc", "abc", "y"), "y");
    EXPECT_EQ(replaced("", "a", "b"), "");
    EXPECT_EQ(replaced("abc", "", "y"), "abc") << "an empty search text";
    EXPECT_EQ(replaced("a\0b\0"s, "\0"s, "-"), "a-b-");
}

// There are few different characters, so that much is found and more begins to look like it.
TEST(Replace, EqualsOneByOneInRandomTexts) {
    std::mt19937 random(7);
    const auto randomText = [&random](std::size_t longest) {
        std::string text(random() % (longest + 1), 'a');
        for (char& c : text)
            if (random() % 4 == 0) c = "b\xff\0 "[random() % 4];
        return text;
    };
    for (int i = 0; i < 50000; ++i) {
        const std::string search = "a" + randomText(i % 8 == 0 ? 30 : 3);
        const std::string replacement = randomText(4), old = randomText(i % 8 == 0 ? 200 : 40);
        std::string text = old, expected = old;
        for (std::size_t at = 0; at + search.size() <= expected.size();) {
            const bool isFound = expected.compare(at, search.size(), search) == 0;
            if (isFound) expected.replace(at, search.size(), replacement);
            at += isFound ? replacement.size() : 1;
        }
        kxString::replace(text, search, replacement);
        ASSERT_EQ(text, expected) << old << '|' << search << '|' << replacement;
    }
}

TEST(Replace, ArgumentsMayBeTheTextItself) {
    std::string text = "a text too long for the string's own buffer";
    const std::string old = text;
    kxString::replace(text, text, "x");
    EXPECT_EQ(text, "x");
    text = old;
    kxString::replace(text, "too", text);
    EXPECT_EQ(text, "a text " + old + " long for the string's own buffer");
    text = old;
    kxString::replace(text, text, text);
    EXPECT_EQ(text, old);
}

TEST(Replace, TakesTimeInProportionToTheText) {
    std::string text(1000000, 'a');
    kxString::replace(text, "a", "bc");
    EXPECT_EQ(text.size(), 2000000U);
}

// There is nothing but places that nearly fit. Compared one by one, they would take minutes.
TEST(Replace, TakesTimeInProportionToTheTextWhateverIsSearchedFor) {
    const std::string half(4 << 20, 'a'), quarter(2 << 20, 'a'), old = half + half;
    for (const std::string& search : {half + 'b', 'b' + half, quarter + 'b' + quarter}) {
        std::string text = old;
        kxString::replace(text, search, "x");
        EXPECT_EQ(text, old);
        text += search + old + search;
        kxString::replace(text, search, "x");
        EXPECT_TRUE(text == old + 'x' + old + 'x');
    }
    std::string text;
    const std::string search = std::string(200, 'a') + 'b' + std::string(200, 'a');
    while (text.size() < old.size()) text += std::string(4000, 'a') + search;
    const std::size_t count = text.size() / (4000 + search.size());
    kxString::replace(text, search, "");
    EXPECT_EQ(text.size(), count * 4000);
}

TEST(Capitalize, RaisesTheFirstCharacterAndThoseAfterBlanks) {
    EXPECT_EQ(kxString::capitalize("hello big world"), "Hello Big World");
    EXPECT_EQ(kxString::capitalize("hello  x"), "Hello  X");
    EXPECT_EQ(kxString::capitalize(" x"), " X");
    EXPECT_EQ(kxString::capitalize("a\tb\nc-d"), "A\tb\nc-d");
    EXPECT_EQ(kxString::capitalize("hELLO WORLD"), "HELLO WORLD");
    EXPECT_EQ(kxString::capitalize(""), "");
    for (int c = 0; c < 256; ++c) {
        const std::string one(1, static_cast<char>(c));
        const std::string raised(1, static_cast<char>(c >= 'a' && c <= 'z' ? c - 32 : c));
        EXPECT_EQ(kxString::capitalize(one + one), raised + (c == ' ' ? raised : one));
    }
}

TEST(Hash, IsTheStandardHashInDecimal) {
    for (const std::string& text : {""s, "abc"s, "a\0c"s, std::string(1000, '\xff')})
        EXPECT_EQ(kxString::hash(text), std::to_string(std::hash<std::string>()(text)));
    EXPECT_EQ(kxString::hash("abc"), kxString::hash("abc"));
    EXPECT_NE(kxString::hash("abc"), kxString::hash("abd"));
}

// Whatever begins a text ends the reversed text, reversed.
TEST(StartsWithAndEndsWith, CompareBytes) {
    const auto reversed = [](const std::string& text) {
        return std::string(text.rbegin(), text.rend());
    };
    const struct {
        std::string text, part;
        bool found;
    } rows[] = {
        {"abc", "ab", true},    {"abc", "abc", true}, {"abc", "", true},
        {"", "", true},         {"aab", "a", true},   {"\xff\x80", "\xff", true},
        {"abc", "abcd", false}, {"", "a", false},     {"abc", "bc", false},
        {"abc", "b", false},    {"abc", "AB", false}, {"a\0b"s, "a\0c"s, false},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(kxString::startsWith(row.text, row.part), row.found) << row.text << row.part;
        EXPECT_EQ(kxString::endsWith(reversed(row.text), reversed(row.part)), row.found)
            << row.text << row.part;
    }
}

TEST(GetCommonLeadingString, IsTheLongestCommonPrefix) {
    const auto common = kxString::getCommonLeadingString;
    static_assert(std::is_same_v<decltype(common), std::string (*const)(std::string, std::string)>);
    EXPECT_EQ(common("abcdef", "abcxyz"), "abc");
    EXPECT_EQ(common("abc", "abcdef"), "abc");
    EXPECT_EQ(common("abcdef", "abc"), "abc");
    EXPECT_EQ(common("abc", "abc"), "abc");
    EXPECT_EQ(common("x", "y"), "");
    EXPECT_EQ(common("", "abc"), "");
    EXPECT_EQ(common("abc", ""), "");
    EXPECT_EQ(common("aBc", "abc"), "a");
    EXPECT_EQ(common("a\0b"s, "a\0c"s), "a\0"s);
}

TEST(Split, FollowsGetline) {
    using Fields = std::vector<std::string>;
    EXPECT_EQ(kxString::split("a,,b", ','), (Fields{"a", "", "b"}));
    EXPECT_EQ(kxString::split("a,b,", ','), (Fields{"a", "b"}));
    EXPECT_EQ(kxString::split("", ','), Fields{});
    EXPECT_EQ(kxString::split("whole text", ','), Fields{"whole text"});
    EXPECT_EQ(kxString::split(";a", ';'), (Fields{"", "a"}));
    EXPECT_EQ(kxString::split(",", ','), Fields{""});
    EXPECT_EQ(kxString::split(",,", ','), (Fields{"", ""}));
    EXPECT_EQ(kxString::split("a\nb,c", ','), (Fields{"a\nb", "c"}));
    EXPECT_EQ(kxString::split("a\0b"s, '\0'), (Fields{"a", "b"}));
    const auto fromGetline = [](const std::string& text) {
        std::istringstream in(text);
        Fields fields;
        for (std::string field; std::getline(in, field, ',');) fields.push_back(field);
        return fields;
    };
    // All texts of up to six characters, each of which is a delimiter or not.
    for (unsigned kinds = 1; kinds < 128; ++kinds) {
        std::string text;
        for (unsigned bits = kinds; bits > 1; bits >>= 1U) text += (bits & 1U) != 0 ? ',' : 'a';
        EXPECT_EQ(kxString::split(text, ','), fromGetline(text)) << text;
    }
    // Long and short fields, and the characters next to the delimiter, including the high bytes.
    std::mt19937 random(7);
    for (unsigned i = 0; i < 20000; ++i) {
        std::string text(random() % 150, 'a');
        for (char& c : text)
            if (random() % (1 + i % 100) == 0) c = ",,,-+\xac\xad\0"[random() % 8];
        ASSERT_EQ(kxString::split(text, ','), fromGetline(text)) << text;
    }
    for (const std::size_t count : {2031U, 2032U, 2033U, 4096U, 100000U})
        EXPECT_EQ(kxString::split(std::string(count, ','), ','), Fields(count));
}
