// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cstdint>
#include <iostream>
#include <sstream>
#include <string>

#include "kxLog.h"
#include "kxPlatform.h"
#include "kxtest.h"

namespace {

/// The five supported layouts: step in dpi, its scale, and the icon sizes in pixels.
struct Layout {
    std::uint64_t step;
    double scale;
    std::uint64_t small, medium, large, treeView;
};
constexpr Layout layouts[] = {
    {96, 1.0, 16, 22, 28, 20},  {120, 1.25, 20, 27, 35, 24}, {144, 1.5, 24, 33, 42, 28},
    {192, 2.0, 32, 44, 56, 36}, {240, 2.5, 40, 55, 70, 44},
};

void expectLayout(const Layout& layout) {
    EXPECT_EQ(kxPlatform::getDpiX(), layout.step);
    EXPECT_EQ(kxPlatform::getDpiY(), layout.step);
    EXPECT_EQ(kxPlatform::getDpiScaleX(), layout.scale);
    EXPECT_EQ(kxPlatform::getDpiScaleY(), layout.scale);
    EXPECT_EQ(kxPlatform::getSmallIconSizeX(), layout.small);
    EXPECT_EQ(kxPlatform::getSmallIconSizeY(), layout.small);
    EXPECT_EQ(kxPlatform::getMediumIconSizeX(), layout.medium);
    EXPECT_EQ(kxPlatform::getMediumIconSizeY(), layout.medium);
    EXPECT_EQ(kxPlatform::getLargeIconSizeX(), layout.large);
    EXPECT_EQ(kxPlatform::getLargeIconSizeY(), layout.large);
    EXPECT_EQ(kxPlatform::getTreeViewIconSizeX(), layout.treeView);
    EXPECT_EQ(kxPlatform::getTreeViewIconSizeY(), layout.treeView);
}

void setDpiQuietly(std::uint64_t dpi) {
    kxtest::Captured out(stdout);
    kxPlatform::setDpi(dpi, dpi);
}

struct DpiCase {
    std::uint64_t dpiX, dpiY;
    int layout;  // index of layouts
};
void PrintTo(const DpiCase& c, std::ostream* os) { *os << c.dpiX << " x " << c.dpiY; }

class DisplayDpi : public testing::TestWithParam<DpiCase> {};

constexpr std::uint64_t two31 = 0x80000000U, two32 = 0x100000000U;

const DpiCase dpiCases[] = {
    {0, 0, 0},
    {72, 72, 0},
    {95, 95, 0},
    {96, 96, 0},
    {97, 97, 0},
    {110, 300, 0},  // the second value has no effect
    {119, 240, 0},
    {120, 0, 1},
    {121, 96, 1},
    {143, 0, 1},
    {144, 0, 2},
    {145, 0, 2},
    {191, 0, 2},
    {192, 0, 3},
    {193, 0, 3},
    {239, 0, 3},
    {240, 0, 4},
    {241, 0, 4},
    {10095, 0, 4},  // around 9999 above 96
    {10096, 0, 4},
    {10238, 0, 4},
    {10239, 0, 4},
    {10240, 0, 0},  // deliberate: this far above every step, the first one is taken
    {10241, 0, 0},
    {two31 - 1, 0, 0},
    {two31, 0, 0},        // negative, since the low 32 bits are a signed number
    {two31 + 240, 0, 0},  // negative too
    {two32 - 1, 0, 0},
    {two32, 0, 0},  // from here on the upper bits are dropped
    {two32 + 120, 0, 1},
    {two32 + 10239, 0, 4},
    {two32 + two31 + 192, 0, 0},
    {5 * two32 + 192, 0, 3},
    {0xFFFFFFFF000000F0U, 0, 4},
    {0xFFFFFFFFFFFFFFFFU, 0, 0},
};

}  // namespace

TEST_P(DisplayDpi, SnapsToTheStepBelow) {
    const DpiCase& c = GetParam();
    const Layout& expected = layouts[c.layout];
    setDpiQuietly(expected.step == 144 ? 192 : 144);
    std::string logged;
    kxLog::enableOutputBuffer(logged);
    kxtest::Captured out(stdout), err(stderr);
    kxPlatform::setDpi(c.dpiX, c.dpiY);
    kxLog::disableOutputBuffer();
    EXPECT_EQ(out.text(), "Best Matching DPI: " + std::to_string(expected.step) + "\n");
    EXPECT_EQ(err.text(), "");
    EXPECT_EQ(logged, "");
    expectLayout(expected);
}

INSTANTIATE_TEST_SUITE_P(Table, DisplayDpi, testing::ValuesIn(dpiCases), [](const auto& test) {
    return std::to_string(test.param.dpiX) + "by" + std::to_string(test.param.dpiY);
});

TEST(DisplayProcess, StartsWithTheLayoutOf96) {
    const auto outcome = kxtest::run(
        {KX_PLATFORM_PROBE, "getDpiX", "getDpiY", "getDpiScaleX", "getDpiScaleY",
         "getSmallIconSizeX", "getSmallIconSizeY", "getMediumIconSizeX", "getMediumIconSizeY",
         "getLargeIconSizeX", "getLargeIconSizeY", "getTreeViewIconSizeX", "getTreeViewIconSizeY"});
    EXPECT_EQ(outcome.out,
              "getDpiX=96\ngetDpiY=96\ngetDpiScaleX=1.000000\ngetDpiScaleY=1.000000\n"
              "getSmallIconSizeX=16\ngetSmallIconSizeY=16\ngetMediumIconSizeX=22\n"
              "getMediumIconSizeY=22\ngetLargeIconSizeX=28\ngetLargeIconSizeY=28\n"
              "getTreeViewIconSizeX=20\ngetTreeViewIconSizeY=20\n");
    EXPECT_EQ(outcome.err, "");
}

TEST(Display, TheLineIsFlushed) {
    class CountingBuffer : public std::stringbuf {
    public:
        std::string flushed;

    protected:
        int sync() override {
            flushed = str();
            return 0;
        }
    } buffer;
    std::streambuf* const old = std::cout.rdbuf(&buffer);
    kxPlatform::setDpi(100, 100);
    std::cout.rdbuf(old);
    EXPECT_EQ(buffer.flushed, "Best Matching DPI: 96\n");
    EXPECT_EQ(buffer.str(), buffer.flushed);
}

TEST(Display, IconSizesAreStoredAsPassed) {
    setDpiQuietly(96);
    constexpr std::uint64_t huge = 0xFFFFFFFFFFFFFFF0U;
    kxPlatform::setSmallIconSize(18, 17);
    kxPlatform::setMediumIconSize(0, huge);
    kxPlatform::setLargeIconSize(huge, 1);
    EXPECT_EQ(kxPlatform::getSmallIconSizeX(), 18U);
    EXPECT_EQ(kxPlatform::getSmallIconSizeY(), 17U);
    EXPECT_EQ(kxPlatform::getTreeViewIconSizeX(), 22U);
    EXPECT_EQ(kxPlatform::getTreeViewIconSizeY(), 21U);
    EXPECT_EQ(kxPlatform::getMediumIconSizeX(), 0U);
    EXPECT_EQ(kxPlatform::getMediumIconSizeY(), huge);
    EXPECT_EQ(kxPlatform::getLargeIconSizeX(), huge);
    EXPECT_EQ(kxPlatform::getLargeIconSizeY(), 1U);
    EXPECT_EQ(kxPlatform::getDpiX(), 96U);
    setDpiQuietly(96);  // setting the current step again overwrites them all
    expectLayout(layouts[0]);
}
