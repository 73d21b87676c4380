// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCRC32.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "crc32_checks.h"
#include "reference/jesteress_reference.h"
#include "rows.h"

using namespace std::string_literals;
using kxtest::boostCrc;
using kxtest::expectEverywhere;
using kxtest::someBytes;

static_assert(std::is_trivially_default_constructible_v<kxCRC32> &&
              std::is_trivially_destructible_v<kxCRC32> && !std::is_polymorphic_v<kxCRC32>);

namespace {

std::string littleEndianBytes(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i, value >>= 8) bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

}  // namespace

// --- Six functions, one checksum ----------------------------------------------------------------

struct Method {
    const char* name;
    kxtest::Crc32Function calc;
};
static void PrintTo(const Method& method, std::ostream* os) { *os << method.name; }

class Crc32 : public testing::TestWithParam<Method> {
protected:
    static std::uint32_t calc(const std::string& bytes, std::uint32_t previous = 0) {
        return GetParam().calc(bytes.data(), bytes.size(), previous);
    }
};

TEST_P(Crc32, PublishedValues) {
    EXPECT_EQ(calc("123456789"), 0xCBF43926);
    EXPECT_EQ(calc("a"), 0xE8B7BE43);
    EXPECT_EQ(calc("abc"), 0x352441C2U);
    EXPECT_EQ(calc("The quick brown fox jumps over the lazy dog"), 0x414FA339U);
    EXPECT_EQ(calc(std::string(32, '\0')), 0x190A55ADU);
    EXPECT_EQ(calc(std::string(32, '\xff')), 0xFF6CAB0B);
}

TEST_P(Crc32, NothingReturnsPrevious) {
    for (const std::uint32_t previous : {0U, 0x12345678U, 0xFFFFFFFFU}) {
        EXPECT_EQ(calc("", previous), previous);
        EXPECT_EQ(GetParam().calc(nullptr, 0, previous), previous);
    }
}

TEST_P(Crc32, EveryLengthAtEveryOffsetReadsNothingElse) {
    const std::string all = someBytes(300);
    for (std::size_t n = 0; n <= all.size(); ++n)
        ASSERT_NO_FATAL_FAILURE(
            expectEverywhere(GetParam().calc, all.substr(0, n), 0, boostCrc(all.substr(0, n))));
}

TEST_P(Crc32, ChainsAtEverySplit) {
    const std::string all = someBytes(300);
    for (std::size_t n = 0; n <= all.size(); ++n) {
        const std::uint32_t expected = boostCrc(all.substr(0, n));
        for (std::size_t first = 0; first <= n; ++first) {
            const std::uint32_t previous = GetParam().calc(all.data(), first, 0);
            ASSERT_EQ(GetParam().calc(all.data() + first, n - first, previous), expected)
                << first << " + " << n - first;
        }
    }
}

// A message followed by its own checksum leaves the same remainder, whatever the message.
TEST_P(Crc32, LeavesTheResidue) {
    for (const std::size_t n : {0UL, 1UL, 7UL, 8UL, 100UL}) {
        const std::string bytes = someBytes(n);
        EXPECT_EQ(calc(bytes + littleEndianBytes(calc(bytes))), 0x2144DF1CU) << n;
    }
}

static const Method methods[] = {
    {"Fastest", kxCRC32::calc},           {"Bitwise", kxCRC32::calc_bitwise},
    {"HalfByte", kxCRC32::calc_halfbyte}, {"OneByte", kxCRC32::calc_1byte},
    {"FourBytes", kxCRC32::calc_4bytes},  {"EightBytes", kxCRC32::calc_8bytes},
};
INSTANTIATE_TEST_SUITE_P(Method, Crc32, testing::ValuesIn(methods), kxtest::nameOfRow);

// --- Hash ---------------------------------------------------------------------------------------

static std::uint32_t hash(const std::string& bytes, std::uint32_t seed = 0) {
    return kxCRC32::calc_FNV1A_Jesteress(bytes.data(), bytes.size(), seed);
}

TEST(Jesteress, KnownValues) {
    EXPECT_EQ(hash(""), 0x811C1CD9);
    EXPECT_EQ(hash("a"), 0x3F2855D4U);
    EXPECT_EQ(hash("abcdefgh"), 0xF027F373);
    EXPECT_EQ(hash("123456789"), 0xBA2690B3);
}

TEST(Jesteress, ZeroSeedStandsForTheOffsetBasis) {
    EXPECT_EQ(hash("abc", 0), hash("abc", 0x811C9DC5));
    EXPECT_NE(hash("abc", 1), hash("abc", 0));
    EXPECT_EQ(hash("", 0x00010001), 0x00010000U);
}

TEST(Jesteress, NullWithoutLengthIsEmpty) {
    EXPECT_EQ(kxCRC32::calc_FNV1A_Jesteress(nullptr, 0, 0), 0x811C1CD9);
}

TEST(Jesteress, BytesAreUnsigned) {
    // (0x811C9DC5 ^ 0xFF) * 709607 modulo 2^32 is 0x3AACAD56.
    EXPECT_EQ(hash("\xff"), 0x3AACAD56U ^ 0x3AACU);
}

TEST(Jesteress, EveryLengthAtEveryOffsetReadsNothingElse) {
    const std::string all = someBytes(300);
    for (std::size_t n = 0; n <= all.size(); ++n) {
        const std::string bytes = all.substr(0, n);
        for (const std::uint32_t seed : {0U, 1U, 0xDEADBEEFU})
            ASSERT_NO_FATAL_FAILURE(expectEverywhere(kxCRC32::calc_FNV1A_Jesteress, bytes, seed,
                                                     reference::jesteress(bytes, seed)));
    }
}

TEST(Previous, IsZeroByDefault) {
    EXPECT_EQ(kxCRC32::calc("a", 1), 0xE8B7BE43);
    EXPECT_EQ(kxCRC32::calc_bitwise("a", 1), 0xE8B7BE43);
    EXPECT_EQ(kxCRC32::calc_halfbyte("a", 1), 0xE8B7BE43);
    EXPECT_EQ(kxCRC32::calc_1byte("a", 1), 0xE8B7BE43);
    EXPECT_EQ(kxCRC32::calc_4bytes("a", 1), 0xE8B7BE43);
    EXPECT_EQ(kxCRC32::calc_8bytes("a", 1), 0xE8B7BE43);
    EXPECT_EQ(kxCRC32::calc_FNV1A_Jesteress("a", 1), 0x3F2855D4U);
}
