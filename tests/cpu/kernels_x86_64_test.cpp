// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tests which instructions the kernels ask the processor for.
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "detail/base64/kernel.h"
#include "detail/crc/kernel.h"
#include "processor_features.h"
#include "rows.h"

using kxtest::ScopedFeatures;

namespace {

struct Feature {
    const char* name;
    bool (*isThere)();
};
#define FEATURE(NAME)                                          \
    Feature {                                                  \
        NAME, [] { return __builtin_cpu_supports(NAME) != 0; } \
    }

/// The bit of a feature; 0 if the feature has none.
std::uint64_t bitOf(const Feature& feature) {
    const ScopedFeatures restored;
    for (int bit = 0; bit < 64; ++bit) {
        ScopedFeatures::set(std::uint64_t{1} << bit);
        if (feature.isThere()) return std::uint64_t{1} << bit;
    }
    return 0;
}

struct Kernel {
    const char* name;
    bool (*usable)();
    std::vector<Feature> features;
};
void PrintTo(const Kernel& kernel, std::ostream* os) { *os << kernel.name; }

class KernelsX86 : public testing::TestWithParam<Kernel> {};

}  // namespace

TEST_P(KernelsX86, IsUsableIfAllItsInstructionsAreThere) {
    std::uint64_t all = 0;
    for (const Feature& feature : GetParam().features) {
        ASSERT_NE(bitOf(feature), 0U) << feature.name;
        all |= bitOf(feature);
    }
    const ScopedFeatures restored;
    ScopedFeatures::set(all);
    EXPECT_TRUE(GetParam().usable());
    for (const Feature& feature : GetParam().features) {
        const std::uint64_t bit = bitOf(feature);
        ScopedFeatures::set(all & ~bit);
        EXPECT_FALSE(GetParam().usable()) << "without " << feature.name;
        ScopedFeatures::set(~bit);
        EXPECT_FALSE(GetParam().usable()) << "with anything but " << feature.name;
    }
}

static const Kernel kernels[] = {
    {"base64Avx2", kx::detail::base64Avx2().usable, {FEATURE("avx2")}},
    {"base64Avx512",
     kx::detail::base64Avx512().usable,
     {FEATURE("avx512bw"), FEATURE("avx512vl"), FEATURE("avx512vbmi"), FEATURE("avx512vbmi2"),
      FEATURE("bmi"), FEATURE("bmi2"), FEATURE("popcnt")}},
    {"crc32Pclmulqdq",
     kx::detail::crc32Pclmulqdq().usable,
     {FEATURE("pclmul"), FEATURE("sse4.1"), FEATURE("ssse3")}},
    {"crc32Vpclmulqdq",
     kx::detail::crc32Vpclmulqdq().usable,
     {FEATURE("avx512bw"), FEATURE("avx512vl"), FEATURE("avx512vbmi2"), FEATURE("vpclmulqdq"),
      FEATURE("pclmul"), FEATURE("bmi2")}},
};
INSTANTIATE_TEST_SUITE_P(Table, KernelsX86, testing::ValuesIn(kernels), kxtest::nameOfRow);

TEST(KernelsX86Tables, ChooseTheFastestThatTheProcessorHas) {
    const ScopedFeatures restored;
    const std::uint64_t avx2 = bitOf(FEATURE("avx2")), carryless = bitOf(FEATURE("pclmul")) |
                                                                   bitOf(FEATURE("sse4.1")) |
                                                                   bitOf(FEATURE("ssse3"));
    ScopedFeatures::set(~std::uint64_t{0});
    EXPECT_STREQ(kx::detail::base64Kernels().fastest().name, "avx512");
    EXPECT_STREQ(kx::detail::crc32Kernels().fastest().name, "vpclmulqdq");
    ScopedFeatures::set(avx2 | carryless);
    EXPECT_STREQ(kx::detail::base64Kernels().fastest().name, "avx2");
    EXPECT_STREQ(kx::detail::crc32Kernels().fastest().name, "pclmulqdq");
    ScopedFeatures::set(0);
    EXPECT_STREQ(kx::detail::base64Kernels().fastest().name, "portable");
    EXPECT_STREQ(kx::detail::crc32Kernels().fastest().name, "portable");
}
