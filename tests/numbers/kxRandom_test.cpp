// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxRandom.h"

#include <gtest/gtest.h>

#include <cmath>
#include <type_traits>

static_assert(std::is_same_v<decltype(kxRandom::s_rcpFloatMax1), const float> &&
              std::is_same_v<decltype(kxRandom::s_rcpFloatMax2), const float>);

TEST(Random, BeginsEmpty) {
    EXPECT_EQ(kxRandom::s_randomTable.size(), 624U);
    for (const std::uint32_t word : kxRandom::s_randomTable) EXPECT_EQ(word, 0U);
    EXPECT_EQ(kxRandom::s_index, 0U);
}

TEST(Random, FactorsAreTwoToTheMinus32) {
    EXPECT_EQ(kxRandom::s_rcpFloatMax1, std::ldexp(1.0F, -32));
    EXPECT_EQ(kxRandom::s_rcpFloatMax2, std::ldexp(1.0F, -32));
}

TEST(Random, FactorReachesOneForThe128LargestWords) {
    EXPECT_EQ(static_cast<float>(0xFFFFFF80U) * kxRandom::s_rcpFloatMax1, 1.0F);
    EXPECT_LT(static_cast<float>(0xFFFFFF7FU) * kxRandom::s_rcpFloatMax1, 1.0F);
}
