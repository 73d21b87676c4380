// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "crc32_checks.h"
#include "detail/crc/kernel.h"
#include "rows.h"

using kx::detail::Crc32Kernel;
using kxtest::boostCrc;

namespace kx::detail {
static void PrintTo(const Crc32Kernel& kernel, std::ostream* os) { *os << kernel.name; }
}  // namespace kx::detail

static const auto kernels = kx::detail::crc32Kernels();

class Crc32Kernels : public testing::TestWithParam<Crc32Kernel> {
protected:
    void SetUp() override {
        if (!GetParam().usable()) GTEST_SKIP() << "this processor has no such instructions";
    }
};

TEST_P(Crc32Kernels, EveryLengthAtEveryOffsetReadsNothingElse) {
    const std::string all = kxtest::someBytes(300);
    for (std::size_t n = 0; n <= all.size(); ++n)
        ASSERT_NO_FATAL_FAILURE(kxtest::expectEverywhere(GetParam().calc, all.substr(0, n), 0,
                                                         boostCrc(all.substr(0, n))));
}

TEST_P(Crc32Kernels, ContinuesFromAnyValueAtEveryLength) {
    const std::string head = "previous", all = kxtest::someBytes(700);
    for (std::size_t n = 0; n <= all.size(); ++n)
        ASSERT_EQ(GetParam().calc(all.data(), n, boostCrc(head)), boostCrc(head + all.substr(0, n)))
            << n;
}

TEST_P(Crc32Kernels, LongInputs) {
    const std::string all = kxtest::someBytes(100003);
    for (const std::size_t n : {1000UL, 1024UL, 4095UL, 4096UL, 65536UL, 100003UL})
        EXPECT_EQ(GetParam().calc(all.data(), n, 0), boostCrc(all.substr(0, n))) << n;
}

INSTANTIATE_TEST_SUITE_P(Kernel, Crc32Kernels, testing::ValuesIn(kernels.begin(), kernels.end()),
                         kxtest::nameOfRow);

TEST(Crc32KernelTable, EndsWithThePortableOneAndChoosesTheFirstUsable) {
    ASSERT_STREQ((kernels.end() - 1)->name, "portable");
    EXPECT_TRUE((kernels.end() - 1)->usable());
    for (const Crc32Kernel& kernel : kernels) {
        if (!kernel.usable()) continue;
        EXPECT_STREQ(kernels.fastest().name, kernel.name);
        break;
    }
}
