// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The pieces below the host bridge and the platform that no public function shows directly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

#include "detail/cpu/kernel_table.h"
#include "detail/files/same_file.h"
#include "detail/numbers/truncate.h"
#include "detail/platform/browser.h"
#include "detail/platform/executable_path.h"
#include "detail/text/byte_search.h"
#include "kxtest.h"
#include "rows.h"

using kx::detail::truncateToInt32;

namespace {

constexpr std::int32_t smallest = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();

struct TruncateCase {
    const char* name;
    double value;
    std::int32_t result;
};
void PrintTo(const TruncateCase& c, std::ostream* os) { *os << c.name; }

const TruncateCase truncateCases[] = {
    {"Zero", 0.0, 0},
    {"MinusZero", -0.0, 0},
    {"BelowOne", 0.999999, 0},
    {"AboveMinusOne", -0.999999, 0},
    {"TowardsZero", 27.5, 27},
    {"NegativeTowardsZero", -27.5, -27},
    {"Largest", 2147483647.0, largest},
    {"LargestAndAHalf", 2147483647.5, largest},
    {"JustBelowTheUpperLimit", std::nextafter(2147483648.0, 0.0), largest},
    {"UpperLimit", 2147483648.0, smallest},
    {"Smallest", -2147483648.0, smallest},
    {"SmallestPlusAHalf", -2147483647.5, smallest + 1},
    {"SmallestMinusAHalf", -2147483648.5, smallest},
    {"LowerLimit", -2147483649.0, smallest},
    {"FarAbove", 3.3e23, smallest},
    {"FarBelow", -3.3e23, smallest},
    {"Infinity", std::numeric_limits<double>::infinity(), smallest},
    {"MinusInfinity", -std::numeric_limits<double>::infinity(), smallest},
    {"NotANumber", std::numeric_limits<double>::quiet_NaN(), smallest},
};

class TruncateToInt32 : public testing::TestWithParam<TruncateCase> {};

}  // namespace

TEST_P(TruncateToInt32, MatchesTable) {
    const TruncateCase& c = GetParam();
    EXPECT_EQ(truncateToInt32(c.value), c.result);
#if defined(__x86_64__)
    EXPECT_EQ(_mm_cvttsd_si32(_mm_set_sd(c.value)), c.result) << "the processor's own conversion";
#endif
}

INSTANTIATE_TEST_SUITE_P(Table, TruncateToInt32, testing::ValuesIn(truncateCases),
                         kxtest::nameOfRow);

static_assert(truncateToInt32(-1.5) == -1 && truncateToInt32(1e10) == smallest, "constant too");

TEST(KernelTable, FastestIsTheFirstUsable) {
    struct Kernel {
        bool (*usable)();
        int number;
    };
    const auto yes = [] { return true; };
    const auto no = [] { return false; };
    using Table = kx::detail::KernelTable<Kernel>;
    EXPECT_EQ((Table{{{{no, 1}, {yes, 2}, {yes, 3}}}, 3}.fastest().number), 2);
    EXPECT_EQ((Table{{{{no, 1}, {no, 2}, {yes, 3}}}, 3}.fastest().number), 3);
    EXPECT_EQ((Table{{{{yes, 1}, {}, {}}}, 1}.fastest().number), 1);
}

// In blocks of sixteen, and each place of a block in a counter of its own that holds up to 127.
TEST(CountByte, EqualsTheStandardLibrary) {
    std::string text;
    for (const std::size_t size :
         {0UL, 1UL, 15UL, 16UL, 17UL, 33UL, 2031UL, 2032UL, 2033UL, 2048UL, 5000UL}) {
        for (const char value : {'a', '\0', '\xFF'}) {
            text.assign(size, value);
            EXPECT_EQ(kx::detail::countByte(text, value), size);
            for (std::size_t i = 0; i < size; i += 3) text[i] = 'b';
            EXPECT_EQ(kx::detail::countByte(text, value),
                      static_cast<std::size_t>(std::count(text.begin(), text.end(), value)))
                << size;
        }
    }
}

TEST(ExecutablePath, IsThatOfTheRunningProgram) {
    const std::filesystem::path path = kx::detail::executablePath();
    EXPECT_EQ(path.stem(), "detail_core_test");  // an emulator's program has an extension
    // Read, not followed: that would lead to the emulator.
    EXPECT_TRUE(std::filesystem::equivalent(path, std::filesystem::read_symlink("/proc/self/exe")));
}

// A shell that is started without PATH has one of its own: so the commands of the machine count.
TEST(Browser, IsWhatTheShellFindsWithoutPath) {
    const auto shell = kxtest::run({"/bin/sh", "-c",
                                    "o=$(command -v open) && "
                                    "! [ \"$o\" -ef \"$(command -v xdg-open)\" ] && "
                                    "! [ \"$o\" -ef \"$(command -v run-mailcap)\" ]"});
    const kxtest::ScopedEnv path("PATH", nullptr);
    EXPECT_EQ(kx::detail::browserCommand(), shell.exitCode == 0 ? "open -a Safari " : "xdg-open ");
}

TEST(SameFile, HasTheSameNumberOnTheSameDevice) {
    struct stat file {
    }, other{};
    file.st_dev = other.st_dev = 1;
    file.st_ino = other.st_ino = 2;
    EXPECT_TRUE(kx::detail::isSameFile(file, other));
    other.st_dev = 2;
    EXPECT_FALSE(kx::detail::isSameFile(file, other));
    other.st_dev = 1;
    other.st_ino = 1;
    EXPECT_FALSE(kx::detail::isSameFile(file, other));
}
