// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/files/temporary_name.h"

#include <gtest/gtest.h>

#include "kxtest.h"

using kx::detail::nextFreeName;

TEST(NextFreeName, GoesOnWithNegativeNumbers) {
    const kxtest::TempDir dir;
    std::uint32_t count = 2147483646;
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n2147483646");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n2147483647");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-2147483648");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-2147483647");
    count = 0xFFFFFFFF;
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-1");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n0");
    EXPECT_EQ(count, 1U);
}

TEST(NextFreeName, PassesOverWhatExists) {
    const kxtest::TempDir dir;
    dir.write("n2147483647", "");
    dir.makeDir("n-2147483648");
    std::uint32_t count = 2147483647;
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-2147483647");
    EXPECT_EQ(count, 2147483650U);
}

TEST(NextFreeName, TakesNoNumberForAnEmptyArgument) {
    std::uint32_t count = 5;
    EXPECT_EQ(nextFreeName("", "n", count), "");
    EXPECT_EQ(nextFreeName("/", "", count), "");
    EXPECT_EQ(count, 5U);
}
