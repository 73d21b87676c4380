// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/font/dina.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

using kx::detail::dina_font;

static std::uint8_t rowOf(int c, unsigned row) {
    return dina_font.at(static_cast<unsigned>(c - 32) * 7 + row);
}

static int differentPixels(int a, int b) {
    int count = 0;
    for (unsigned row = 0; row < 7; ++row)
        for (unsigned bits = rowOf(a, row) ^ rowOf(b, row); bits != 0; bits &= bits - 1) ++count;
    return count;
}

TEST(DinaFont, HasNinetyOneGlyphsOfSevenBytes) { EXPECT_EQ(sizeof dina_font, 637U); }

// These bytes were worked out by hand: bit 7 is the leftmost column, and the top row comes first.
TEST(DinaFont, BytesOfSomeGlyphs) {
    const struct {
        char c;
        std::uint8_t rows[7];
    } glyphs[] = {
        {'T', {0xF8, 0x20, 0x20, 0x20, 0x20, 0x20, 0x00}},
        {'L', {0x80, 0x80, 0x80, 0x80, 0x80, 0xF8, 0x00}},
        {'p', {0x00, 0x00, 0xF0, 0x88, 0x88, 0xF0, 0x80}},
        {'/', {0x08, 0x10, 0x10, 0x20, 0x40, 0x40, 0x80}},
    };
    for (const auto& glyph : glyphs)
        for (unsigned row = 0; row < 7; ++row)
            EXPECT_EQ(rowOf(glyph.c, row), glyph.rows[row]) << glyph.c << row;
}

TEST(DinaFont, OnlySpaceIsEmpty) {
    for (int c = 32; c <= 122; ++c) {
        bool ink = false;
        for (unsigned row = 0; row < 7; ++row) ink = ink || rowOf(c, row) != 0;
        EXPECT_EQ(ink, c != ' ') << c;
    }
}

TEST(DinaFont, BitsOutsideTheCellAreClear) {
    for (const std::uint8_t row : dina_font) EXPECT_EQ(row & 0x03, 0);
}

TEST(DinaFont, SixthColumnIsBlankButForTheUnderscore) {
    for (int c = 32; c <= 122; ++c)
        for (unsigned row = 0; row < 7; ++row)
            EXPECT_EQ((rowOf(c, row) & 0x04) != 0, c == '_' && row == 6) << c << " " << row;
}

TEST(DinaFont, LettersAndDigitsStandOnRow5AndDescendersReachRow6) {
    const std::string descenders = "gjpqy";
    for (int c = 32; c <= 122; ++c) {
        const bool lower = c >= 'a' && c <= 'z';
        const bool upper = c >= 'A' && c <= 'Z';
        const bool digit = c >= '0' && c <= '9';
        if (!lower && !upper && !digit) continue;
        const bool descends = lower && descenders.find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(rowOf(c, 6) != 0, descends) << static_cast<char>(c);
        EXPECT_NE(rowOf(c, 5), 0) << static_cast<char>(c);
        EXPECT_TRUE(lower || rowOf(c, 0) != 0) << static_cast<char>(c);
    }
    for (const char c : std::string("acegmnopqrsuvwxyz")) {
        EXPECT_EQ(rowOf(c, 0) | rowOf(c, 1), 0) << c;
        EXPECT_NE(rowOf(c, 2), 0) << c;
    }
}

TEST(DinaFont, AllGlyphsDifferByMoreThanASpeck) {
    for (int a = 32; a <= 122; ++a)
        for (int b = a + 1; b <= 122; ++b) EXPECT_GE(differentPixels(a, b), 2) << a << " " << b;
}

TEST(DinaFont, LookAlikesAreKeptApart) {
    for (const std::string pair :
         {"O0", "OQ", "OD", "OC", "CG", "0D", "08", "l1", "lI", "1I", "S5", "Z2", "B8", "36",
          "38", "35", "UV", "VY", "MN", "PR", "EF", "17", "G6", "5s", "2z", "vy", "gy", "gq",
          "ae", "ao", "ce", "ij", "il", "ft", "nm", "rn", "uv", "vw", "(<", "([", "/1"})
        EXPECT_GE(differentPixels(pair[0], pair[1]), 3) << pair;
}
