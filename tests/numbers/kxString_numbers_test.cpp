// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Many numbers, written and read in comparison with the streams. With KX_NUMBERS_FULL=1 in the
// environment, each test takes about a hundred million of them, which takes minutes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <stdexcept>
#include <vector>

#include "bytes.h"
#include "kxString.h"
#include "reference/classic_stream.h"

using reference::bitsOf, reference::fromBits, reference::fromStream, reference::sameBits,
    reference::toStream;
using std::string_literals::operator""s;

namespace {

class Model : public testing::Environment {
    void SetUp() override {
        if (!reference::isGnuStream) GTEST_SKIP() << "the model is the stream of the GNU library";
    }
};
[[maybe_unused]] const auto* const model = testing::AddGlobalTestEnvironment(new Model);

/// `count` or, with KX_NUMBERS_FULL=1, a number that takes minutes.
std::size_t many(std::size_t count, std::size_t full = 100'000'000) {
    const char* const wanted = std::getenv("KX_NUMBERS_FULL");
    return wanted != nullptr && wanted == "1"s ? full : count;
}

std::string printed(int digits, double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", digits - 1, value);
    return text;
}

// Both throw if the answers differ: the first difference among a hundred million ends the test.
void expectWritten(float value) {
    const std::string written = kxString::setNum(value);
    if (written != toStream(value)) throw std::runtime_error(written + " is no " + toStream(value));
}

void expectRead(const std::string& text) {
    const float value = kxString::toFloat(text);
    if (!sameBits(value, fromStream<float>(text)))
        throw std::runtime_error(text + " is no " + printed(9, double{value}));
}

/// The float that is `steps` floats further from 0, or nearer to it.
float neighbour(float value, int steps) {
    return fromBits(bitsOf(value) + static_cast<std::uint32_t>(steps));
}

/// Every power of two with its neighbours, the first and last thousand floats before each, the ends
/// of every range, infinities and NaNs, and the neighbours of every power of ten.
template <typename Check>
void forBoundaries(Check check) {
    const auto checkBoth = [&](std::uint32_t bits) {
        check(fromBits(bits & 0x7FFFFFFF));
        check(fromBits(bits | 0x80000000));
    };
    for (std::uint32_t exponent = 0; exponent < 256; ++exponent)
        for (std::uint32_t i = 0; i < 2000; ++i) checkBoth((exponent << 23U) + i - 1000);
    for (std::uint32_t bit = 0; bit < 23; ++bit)
        for (const std::uint32_t start : {0U, 0x7F800000U})
            for (std::uint32_t i = 0; i < 9; ++i) checkBoth((start | 1U << bit) + i - 4);
    for (int power = -45; power <= 38; ++power)
        for (const char* digits : {"1", "9.999995", "1.2345650", "1.0000050", "5"}) {
            const std::uint32_t bits =
                bitsOf(fromStream<float>(digits + "e"s + std::to_string(power)));
            for (std::uint32_t i = 0; i < 201; ++i) checkBoth(bits + i - 100);
        }
}

}  // namespace

// --- Writing -------------------------------------------------------------------------------------

TEST(NumberWriting, EqualsTheStreamAtBoundaries) {
    forBoundaries([](float value) { expectWritten(value); });
}

TEST(NumberWriting, EqualsTheStreamForRandomFloats) {
    std::mt19937 random(11);
    for (std::size_t n = many(200'000); n > 0; --n)
        expectWritten(fromBits(static_cast<std::uint32_t>(random())));
}

// (2 n + 1) / 2 * 10^power with six digits in n, if that is a float: the seventh digit is a 5 and
// nothing follows it, so the sixth becomes even.
TEST(NumberWriting, RoundsTiesToEven) {
    std::size_t ties = 0;
    const std::uint32_t step = many(0) == 0 ? 34 : 2;
    for (int power = -12; power <= 12; ++power)
        for (std::uint32_t odd = 200'001; odd < 2'000'000; odd += step) {
            // The number is exact up to 53 bits; one that is not exact is far from being a float.
            const double tie =
                power < 0 ? odd / std::pow(10, -power) / 2 : odd * std::pow(10, power) / 2;
            const auto value = static_cast<float>(tie);
            if (double{value} != tie || (power < 0 && tie * 2 * std::pow(10, -power) != odd))
                continue;
            ++ties;
            const std::uint32_t even = odd / 2 + (odd / 2) % 2;
            const double rounded =
                fromStream<double>(std::to_string(even) + "e" + std::to_string(power));
            ASSERT_EQ(fromStream<double>(kxString::setNum(value)), rounded)
                << std::hexfloat << value;
            expectWritten(value);
        }
    EXPECT_GT(ties, 10'000U);
}

// Numbers next to the middle between two texts of six digits.
TEST(NumberWriting, EqualsTheStreamNearHalves) {
    std::mt19937 random(17);
    for (std::size_t n = many(50'000, 20'000'000); n > 0; --n) {
        const auto digits = std::to_string(100'000 + random() % 900'000) + "5e";
        const int power = static_cast<int>(random() % 84) - 51;
        const auto half = fromStream<float>(digits + std::to_string(power));
        for (int steps = -1; steps <= 1; ++steps) expectWritten(neighbour(half, steps));
    }
}

// --- Reading -------------------------------------------------------------------------------------

// Texts of the characters that matter to the grammar, read as a float and, as an option, a double.
TEST(NumberReading, EqualsTheStreamForRandomTexts) {
    std::mt19937 random(7);
    const std::string alphabet = "0123456789019..eeEE+-+- \t\n\r\v\f\0xXinfINFapP_'"s;
    const std::string starts[] = {"", "1e", "-", "1e3", "1e-4", "9.9e30", "0.", "00", " +"};
    for (int i = 0; i < 60'000; ++i) {
        std::string text = starts[random() % std::size(starts)];
        for (auto n = random() % 8; n > 0; --n) text += alphabet[random() % alphabet.size()];
        ASSERT_PRED2(sameBits<float>, kxString::toFloat(text), fromStream<float>(text)) << text;
        ASSERT_PRED2(sameBits<double>, kxString::getDoubleOption(text), fromStream<double>(text))
            << text;
    }
}

TEST(NumberReading, EqualsTheStreamAtBoundaries) {
    int digits = 0;
    forBoundaries([&](float value) { expectRead(printed(1 + ++digits % 20, double{value})); });
}

TEST(NumberReading, EqualsTheStreamForWrittenFloats) {
    std::mt19937 random(11);
    for (std::size_t n = many(50'000, 50'000'000); n > 0; --n) {
        const float value = fromBits(static_cast<std::uint32_t>(random()));
        char text[512];
        std::snprintf(text, sizeof text, "%.9g", double{value});
        expectRead(text);
        std::snprintf(text, sizeof text, "%f", double{value});
        expectRead(text);
    }
}

// The middle between two floats, cut after some digits or written in full.
TEST(NumberReading, EqualsTheStreamNearTheMiddleBetweenFloats) {
    std::mt19937 random(13);
    for (std::size_t n = many(50'000, 20'000'000); n > 0; --n) {
        const float value = fromBits(static_cast<std::uint32_t>(random()) & 0x7F7FFFFF);
        const double middle = (double{value} + double{neighbour(value, 1)}) / 2;
        char text[256];
        std::snprintf(text, sizeof text, "%.*e", static_cast<int>(random() % 130), middle);
        expectRead(text);
        expectRead(printed(14 + static_cast<int>(random() % 5), middle));
    }
}

// As many digits as fit into 64 bits and some more, with any exponent that may matter.
TEST(NumberReading, EqualsTheStreamForRandomDigits) {
    std::mt19937_64 random(13);
    for (std::size_t n = many(100'000); n > 0; --n) {
        std::string text = std::to_string(random() >> random() % 64);
        if (random() % 8 == 0) text += std::to_string(random() % 100);
        text.insert(random() % (text.size() + 1), ".");
        if (random() % 4 != 0) text += "e" + std::to_string(static_cast<int>(random() % 120) - 70);
        expectRead(text);
    }
}

TEST(NumberReading, EqualsTheStreamForRandomDoubles) {
    std::mt19937_64 random(13);
    char text[64];
    for (int i = 0; i < 30000; ++i) {
        const std::uint64_t bits = random();
        double value;
        std::memcpy(&value, &bits, sizeof value);
        std::snprintf(text, sizeof text, "%.*g,", static_cast<int>(random() % 20), value);
        ASSERT_PRED2(sameBits<double>, kxString::getDoubleOption(text), fromStream<double>(text))
            << text;
    }
}

// --- Lists ---------------------------------------------------------------------------------------

TEST(NumberLists, WrittenEachAsForItself) {
    std::mt19937 random(7);
    std::vector<float> values;
    std::string expected;
    while (values.size() < 10'000) {
        values.push_back(fromBits(static_cast<std::uint32_t>(random())));
        expected += toStream(values.back()) + ' ';
    }
    EXPECT_EQ(kxString::createStringFromValues(values), expected);
}

// Value by value: pieces that end with the fourth character after their 'e'.
static std::vector<float> readPieces(const std::string& text) {
    if (text.find('e') == std::string::npos) return {fromStream<float>(text)};
    std::vector<float> values;
    std::string rest = text;
    for (std::size_t e = rest.find('e'); e != std::string::npos; e = rest.find('e')) {
        values.push_back(fromStream<float>(rest.substr(0, e + 5)));
        rest.erase(0, e + 5);
    }
    return values;
}

// Lists of a single form or of several, damaged in a few places by arbitrary bytes.
TEST(NumberLists, ReadAsPieces) {
    std::mt19937 random(7);
    for (std::size_t n = many(20'000, 5'000'000); n > 0; --n) {
        const auto decimals = random() % 12;
        std::string text;
        for (auto size = 1 + random() % 8; size > 0; --size) {
            const bool isOther = random() % 8 == 0;
            const float value = random() % 4 == 0 ? static_cast<float>(random() % 100) / 8
                                                  : fromBits(static_cast<std::uint32_t>(random()));
            text +=
                printed(static_cast<int>(isOther ? random() % 12 : decimals) + 1, double{value});
            text += ' ';
        }
        // The list may end anywhere in the last exponent.
        text.resize(std::max<std::size_t>(text.size() - random() % 5, 1));
        for (auto damages = random() % 4; damages > 0; --damages) {
            const char any = random() % 2 == 0 ? static_cast<char>(random() % 256)
                                               : "0123456789.+-eE \t"[random() % 17];
            text[random() % text.size()] = any;
        }
        const auto values = kxString::getValuesFromString(text), expected = readPieces(text);
        ASSERT_TRUE(std::equal(values.begin(), values.end(), expected.begin(), expected.end(),
                               sameBits<float>))
            << text;
    }
}

// Every byte in every place of a value that looks like the one before it.
TEST(NumberLists, ReadAsPiecesWithAnyByteInAnyPlace) {
    for (const std::string& second :
         {"7.654321e+10"s, "-7.654321e-10"s, "2.5e+01"s, "1.23456789e-02"s})
        for (std::size_t at = 0; at <= second.size(); ++at)
            for (const char byte : kxtest::everyByte()) {
                std::string damaged = second + ' ';
                damaged[at] = byte;
                const std::string text = second + ' ' + damaged + second + "  " + second + " 1 ";
                ASSERT_EQ(kxString::getValuesFromString(text), readPieces(text)) << text;
            }
}
