// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the tests of every table of kernels share.
#pragma once

#include <gtest/gtest.h>

#include <iterator>

namespace kxtest {

/// A test for each kernel of a table; one that this processor cannot run is skipped.
template <typename Kernel>
class KernelTest : public testing::TestWithParam<Kernel> {
protected:
    void SetUp() override {
        if (!this->GetParam().usable()) GTEST_SKIP() << "this processor has no such instructions";
    }
};

/// The last kernel runs everywhere, and the fastest is the first that this processor can run.
template <typename Table>
void expectPortableOneLastAndFirstUsableChosen(const Table& kernels) {
    const auto last = std::prev(kernels.end());
    EXPECT_STREQ(last->name, "portable");
    EXPECT_TRUE(last->usable());
    for (const auto& kernel : kernels) {
        if (!kernel.usable()) continue;
        EXPECT_STREQ(kernels.fastest().name, kernel.name);
        break;
    }
}

}  // namespace kxtest
