// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/crc/boost_lanes.h"
#include "detail/crc/kernel.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <string>

#include "crc32_checks.h"
#include "guarded.h"
#include "kernels.h"
#include "rows.h"

using kx::detail::BoostCrc32;
using kx::detail::Crc32Kernel;
using kx::detail::processBytesInLanes;
using kxtest::boostCrc;

// --- Lanes of Boost's CRC-32 --------------------------------------------------------------------

namespace {

// Starting from the register `start`, both ways end with equal registers, whatever is then asked of
// them.
void expectAsByBoost(const char* data, std::size_t size, std::uint32_t start) {
    BoostCrc32 boosts(start), ours(start);
    boosts.process_bytes(data, size);
    processBytesInLanes(ours, data, size);
    ASSERT_EQ(ours.checksum(), boosts.checksum()) << size << " bytes from " << start;
    ASSERT_EQ(ours.get_interim_remainder(), boosts.get_interim_remainder());
}

std::uint32_t inLanes(const void* data, unsigned long size, std::uint32_t /*none*/) {
    BoostCrc32 crc;
    processBytesInLanes(crc, data, size);
    return crc.checksum();
}

}  // namespace

TEST(BoostCrcLanes, EveryLengthFromAnyStart) {
    const std::string all = kxtest::someBytes(2001);
    std::mt19937 random(1);
    for (std::size_t n = 0; n <= 2000; ++n)
        for (const std::uint32_t start :
             {0xFFFFFFFF, 0U, 1U, 0x80000000, static_cast<std::uint32_t>(random())})
            ASSERT_NO_FATAL_FAILURE(expectAsByBoost(all.data() + n % 2, n, start));
}

TEST(BoostCrcLanes, LongLengthsFromAnyStart) {
    constexpr std::size_t most = 81920;  // the most that the lanes take at once
    const std::string all = kxtest::someBytes(3 * most);
    std::mt19937 random(2);
    const auto expectSame = [&](std::size_t n) {
        ASSERT_NO_FATAL_FAILURE(
            expectAsByBoost(all.data(), n, static_cast<std::uint32_t>(random())));
    };
    for (const std::size_t n : {most, 2 * most})
        for (const std::size_t more : {0UL, 1UL, 15UL, 16UL, 127UL, 128UL, 129UL}) {
            expectSame(n - more);
            expectSame(n + more);
        }
    for (int i = 0; i < 100; ++i) expectSame(random() % (all.size() + 1));
}

TEST(BoostCrcLanes, GoesOnWhereTheLastCallEnded) {
    const std::string all = kxtest::someBytes(30000);
    std::mt19937 random(3);
    for (int i = 0; i < 100; ++i) {
        BoostCrc32 crc;
        std::size_t at = 0;
        while (at < all.size()) {
            const std::size_t size = random() % (i < 50 ? 400 : 10000);
            const std::string part = all.substr(at, size);
            processBytesInLanes(crc, part.data(), part.size());
            at += part.size();
        }
        ASSERT_EQ(crc.checksum(), kxtest::boostCrc(all));
    }
}

TEST(BoostCrcLanes, ReadsNothingElse) {
    const std::string all = kxtest::someBytes(3000);
    for (const std::size_t n :
         {0UL, 1UL, 127UL, 128UL, 129UL, 255UL, 256UL, 1023UL, 1024UL, 1025UL, 3000UL}) {
        const std::string bytes = all.substr(0, n);
        kxtest::expectEverywhere(inLanes, bytes, 0, kxtest::boostCrc(bytes));
    }
}

// --- Kernels of CRC-32 --------------------------------------------------------------------------

namespace kx::detail {
static void PrintTo(const Crc32Kernel& kernel, std::ostream* os) { *os << kernel.name; }
}  // namespace kx::detail

static const auto kernels = kx::detail::crc32Kernels();

class Crc32Kernels : public kxtest::KernelTest<Crc32Kernel> {};

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
    kxtest::expectPortableOneLastAndFirstUsableChosen(kernels);
}
