// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The unit for processors without CPUID, compiled and run on every machine.
#include <gtest/gtest.h>

#include "detail/cpu/cpuid.h"

TEST(CpuidNone, EveryAnswerIsFalse) {
    const kxCPUInfo info(kx::detail::readCpu(kx::detail::cpuid));
    EXPECT_FALSE(info.hasSSE2Support());
    EXPECT_FALSE(info.hasSSE42Support());
    EXPECT_FALSE(info.hasAVXSupport());
    EXPECT_FALSE(info.hasAVX2Support());
    EXPECT_FALSE(info.hasAVX512Support());
    EXPECT_EQ(info.fields().featureWord, 0U);
    EXPECT_EQ(info.fields().physicalAddressBits, 0);
    for (const std::uint32_t value : info.fields().lastRegisters) EXPECT_EQ(value, 0U);
}
