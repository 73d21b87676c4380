// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

#include "detail/font/dina.h"
#include "kxtest.h"

// Whether a pixel of the sheet before its enlargement has ink; (0, 0) is the upper left one. Fails
// the running test if the 64 pixels that show it are not all black or all white.
static bool isInk(const std::string& ppm, std::size_t header, std::size_t width, std::size_t x,
                  std::size_t y) {
    const std::size_t corner = header + 3 * (8 * y * 8 * width + 8 * x);
    const char value = ppm.at(corner);
    EXPECT_TRUE(value == '\0' || value == '\xFF');
    for (std::size_t row = 0; row < 8; ++row)
        EXPECT_EQ(ppm.substr(corner + 3 * row * 8 * width, 24), std::string(24, value));
    return value == '\0';
}

TEST(FontSheet, ShowsEveryCharacterSixteenToALine) {
    const auto sheet = kxtest::run({KX_FONT_SHEET});
    EXPECT_EQ(sheet.exitCode, 0);
    EXPECT_EQ(sheet.err, "");
    const std::string header = "P6\n800 448\n255\n";
    ASSERT_EQ(sheet.out.substr(0, header.size()), header);
    ASSERT_EQ(sheet.out.size(), header.size() + 3 * 800 * 448);
    // Six lines of 7 rows, with 2 rows between and around them, and a margin of 2 on the left and
    // right.
    std::size_t inked = 0;
    for (std::size_t y = 0; y < 56; ++y)
        for (std::size_t x = 0; x < 100; ++x)
            inked += isInk(sheet.out, header.size(), 100, x, y) ? 1 : 0;
    std::size_t expected = 0;
    for (std::size_t i = 0; i < 91; ++i) {
        for (std::size_t row = 0; row < 7; ++row) {
            for (std::size_t column = 0; column < 6; ++column) {
                const bool ink = (kx::detail::dina_font[i * 7 + row] >> (7 - column) & 1) != 0;
                expected += ink ? 1 : 0;
                EXPECT_EQ(isInk(sheet.out, header.size(), 100, 2 + i % 16 * 6 + column,
                                2 + i / 16 * 9 + row),
                          ink)
                    << i;
            }
        }
    }
    EXPECT_EQ(inked, expected);
}

TEST(FontSheet, ShowsTheLinesGiven) {
    const auto sheet = kxtest::run({KX_FONT_SHEET, "L", "Lo"});
    EXPECT_EQ(sheet.exitCode, 0);
    const std::string header = "P6\n128 160\n255\n";  // 16 x 20 pixels, enlarged
    ASSERT_EQ(sheet.out.substr(0, header.size()), header);
    EXPECT_TRUE(isInk(sheet.out, header.size(), 16, 2, 2));
    EXPECT_TRUE(isInk(sheet.out, header.size(), 16, 2, 11));
    EXPECT_FALSE(isInk(sheet.out, header.size(), 16, 9, 4));
    EXPECT_TRUE(isInk(sheet.out, header.size(), 16, 9, 13));
}

TEST(FontSheet, AFullDeviceIsAFailure) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(kxtest::run({"/bin/sh", "-c", "\"$0\" >/dev/full", KX_FONT_SHEET}).exitCode, 1);
}
