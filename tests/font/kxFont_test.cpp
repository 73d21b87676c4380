// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxFont.h"

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <climits>
#include <cstddef>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "detail/font/dina.h"

static_assert(std::is_default_constructible_v<kxFont>);
static_assert(std::has_virtual_destructor_v<kxFont>);
static_assert(sizeof(kxFont) == sizeof(void*), "no state");

namespace {

using Bytes = std::vector<unsigned char>;

// An image with a picture in it, two more rows than the text takes, and a margin of bytes before
// and after it, so that every stray write is noticed.
struct Canvas {
    static constexpr std::size_t margin = 64, height = 9;

    explicit Canvas(int imageWidth)
        : width(imageWidth < 0 ? 0 : static_cast<std::size_t>(imageWidth)),
          bytes(2 * margin + 3 * width * height) {
        for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 7);
    }
    unsigned char* image() { return &bytes[margin]; }
    unsigned char* pixel(std::size_t x, std::size_t y) { return image() + 3 * (y * width + x); }

    std::size_t width;
    Bytes bytes;
};

// The slow, obvious version, which asks for each pixel whether it gets ink.
Bytes reference(const std::string& text, int width, unsigned int color) {
    Canvas canvas(width);
    for (std::size_t y = 0; y < 7; ++y) {
        for (std::size_t x = 0; x < canvas.width; ++x) {
            const std::size_t k = x / 6;
            if (k >= text.size() || 6 * k + 6 >= canvas.width) continue;
            const int c = static_cast<unsigned char>(text[k]);
            if (c < 32 || c > 122) continue;
            const int row = kx::detail::dina_font.at(static_cast<std::size_t>(c - 32) * 7 + 6 - y);
            if ((row >> (7 - x % 6) & 1) == 0) continue;
            canvas.pixel(x, y)[0] = color & 0xFF;
            canvas.pixel(x, y)[1] = color >> 8 & 0xFF;
            canvas.pixel(x, y)[2] = color >> 16 & 0xFF;
        }
    }
    return canvas.bytes;
}

Bytes drawn(const std::string& text, int width, unsigned int color) {
    Canvas canvas(width);
    kxFont::drawText(canvas.image(), text, width, color);
    return canvas.bytes;
}

// The appearance of the seven rows, with the top row of the picture first.
std::vector<std::string> picture(const std::string& text, int width) {
    const auto pixels = static_cast<std::size_t>(width);
    Bytes image(3 * pixels * 7, 0);
    kxFont::drawText(image.data(), text, width, 0xFFFFFF);
    std::vector<std::string> rows(7, std::string(pixels, '.'));
    for (std::size_t i = 0; i < image.size(); i += 3)
        if (image[i] != 0) rows[6 - i / 3 / pixels][i / 3 % pixels] = '#';
    return rows;
}

}  // namespace

TEST(DrawText, TopRowOfTheGlyphIsImageRow6) {
    EXPECT_EQ(picture("Lp7", 19), (std::vector<std::string>{
                                      "#...........#####..",
                                      "#...............#..",
                                      "#.....####.....#...",
                                      "#.....#...#...#....",
                                      "#.....#...#...#....",
                                      "#####.####....#....",
                                      "......#............",
                                  }));
}

TEST(DrawText, CornersOfTheFirstCell) {
    Canvas canvas(7);
    kxFont::drawText(canvas.image(), "E", 7, 0x030201);
    EXPECT_EQ(Bytes(canvas.pixel(0, 6), canvas.pixel(1, 6)), (Bytes{1, 2, 3}));
    kxFont::drawText(canvas.image(), "_", 7, 0x060504);
    EXPECT_EQ(Bytes(canvas.pixel(5, 0), canvas.pixel(6, 0)), (Bytes{4, 5, 6}));
}

TEST(DrawText, ColorBytesInOrderAndTopByteIgnored) {
    for (const unsigned int color : {0x00FF8040U, 0xFFFF8040U}) {
        Bytes image(3 * 7 * 7, 0);
        kxFont::drawText(image.data(), "_", 7, color);
        for (std::size_t x = 0; x < 6; ++x)
            EXPECT_EQ(Bytes(&image[3 * x], &image[3 * x + 3]), (Bytes{0x40, 0x80, 0xFF}));
    }
}

TEST(DrawText, EveryCharacterAtEveryPlaceMatchesTheTable) {
    for (int c = -128; c < 256; ++c) {
        const std::string character(1, static_cast<char>(c));
        for (std::size_t k = 0; k < 3; ++k) {
            const std::string text = std::string(k, ' ') + character;
            EXPECT_EQ(drawn(text, 20, 0x123456), reference(text, 20, 0x123456)) << c << " " << k;
        }
    }
}

TEST(DrawText, OnlyWholeCellsStrictlyInsideTheRowAreDrawn) {
    for (int width = -1; width <= 40; ++width) {
        const std::string text = "_E_gW_Q";
        const Bytes image = drawn(text, width, 0xA1B2C3);
        EXPECT_EQ(image, reference(text, width, 0xA1B2C3)) << width;
        EXPECT_EQ(image != Canvas(width).bytes, width > 6) << width;
    }
}

TEST(DrawText, ACellThatEndsAtTheEdgeIsLeftOut) {
    EXPECT_EQ(drawn("ab", 12, 1), drawn("a", 12, 1));
    EXPECT_NE(drawn("ab", 13, 1), drawn("a", 13, 1));
    EXPECT_EQ(drawn("a", 6, 1), Canvas(6).bytes);
    EXPECT_NE(drawn("a", 7, 1), Canvas(7).bytes);
    EXPECT_EQ(drawn(std::string(100000, '_'), 13, 1), drawn("__", 13, 1));
}

TEST(DrawText, WidthsWithoutRoomTouchNothing) {
    for (const int width : {6, 1, 0, -1, -7, INT_MIN}) {
        Bytes bytes(300, 0x5A);
        kxFont::drawText(&bytes[150], "_E", width, 0);
        EXPECT_EQ(bytes, Bytes(300, 0x5A)) << width;
    }
}

TEST(DrawText, BlankCellsChangeNoPixel) {
    std::string blanks = " ";
    for (int c = 0; c < 256; ++c)
        if (c < 32 || c > 122) blanks += static_cast<char>(c);
    const int width = static_cast<int>(blanks.size()) * 6 + 1;
    EXPECT_EQ(drawn(blanks, width, 0), Canvas(width).bytes);
    EXPECT_EQ(picture("\x80|A", 19), picture("  A", 19));
}

TEST(DrawText, EmptyTextNeedsNoImage) {
    kxFont::drawText(nullptr, "", 100, 0xFFFFFF);
    EXPECT_EQ(drawn("", 100, 0xFFFFFF), Canvas(100).bytes);
}

TEST(DrawText, TextAfterAZeroByteIsDrawn) {
    EXPECT_EQ(picture(std::string("\0A", 2), 13), picture(" A", 13));
}

// 45 GB of address space; the text touches seven pages of it. An offset computed in 32 bits
// would miss them.
TEST(DrawText, WidestImage) {
    const std::size_t size = std::size_t{3} * 7 * INT_MAX;
    void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE,
                              MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (memory == MAP_FAILED) GTEST_SKIP() << "no address space for the image";
    auto* const image = static_cast<unsigned char*>(memory);
    kxFont::drawText(image, "L", INT_MAX, 0x030201);
    for (std::size_t y = 0; y < 7; ++y) {
        const unsigned char* const pixel = image + y * 3 * INT_MAX;
        EXPECT_EQ(Bytes(pixel, pixel + 3), y == 0 ? Bytes(3, 0) : (Bytes{1, 2, 3})) << y;
    }
    munmap(memory, size);
}

TEST(FontObject, IsDestroyedThroughItsBase) {
    struct Derived : kxFont {
        explicit Derived(bool& flag) : gone(flag) {}
        ~Derived() override { gone = true; }
        bool& gone;
    };
    bool gone = false;
    std::unique_ptr<kxFont> object = std::make_unique<Derived>(gone);
    object.reset();
    EXPECT_TRUE(gone);
}
