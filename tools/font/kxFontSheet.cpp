// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Writes a picture of the built-in font to standard output: binary PPM, eight times enlarged.
//
//     kxFontSheet                       every character of the font
//     kxFontSheet "Front view" "Rear"   the lines given

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <string>
#include <vector>

#include "kxFont.h"

namespace {

constexpr std::size_t cellWidth = 6, cellHeight = 7;
constexpr std::size_t margin = 2;  // pixels between lines and around them
constexpr std::size_t scale = 8;
constexpr unsigned char paper = 0xFF;
constexpr unsigned int ink = 0x000000;

struct Image {
    std::size_t width, height;
    std::vector<unsigned char> pixels;  // RGB, bottom row first
};

std::vector<std::string> allCharacters() {
    constexpr std::size_t charactersPerLine = 16;
    std::vector<std::string> lines;
    for (char c = ' '; c <= 'z'; ++c) {
        if (lines.empty() || lines.back().size() == charactersPerLine) lines.emplace_back();
        lines.back() += c;
    }
    return lines;
}

Image drawLines(const std::vector<std::string>& lines) {
    std::size_t longest = 0;
    for (const std::string& line : lines) longest = std::max(longest, line.size());
    Image image{
        longest * cellWidth + 2 * margin, lines.size() * (cellHeight + margin) + margin, {}};
    image.pixels.assign(3 * image.width * image.height, paper);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        // Text is drawn in the lower left corner of the image passed, so a pointer further in is
        // passed here.
        const std::size_t y = image.height - (i + 1) * (cellHeight + margin);
        unsigned char* const corner = &image.pixels[3 * (y * image.width + margin)];
        kxFont::drawText(corner, lines[i], static_cast<int>(image.width), ink);
    }
    return image;
}

std::string enlargedPpm(const Image& image) {
    std::string ppm = "P6\n" + std::to_string(image.width * scale) + " " +
                      std::to_string(image.height * scale) + "\n255\n";
    for (std::size_t row = 0; row < image.height * scale; ++row) {
        const std::size_t y = image.height - 1 - row / scale;
        for (std::size_t column = 0; column < image.width * scale; ++column) {
            const unsigned char* const pixel =
                &image.pixels[3 * (y * image.width + column / scale)];
            ppm.append(pixel, pixel + 3);
        }
    }
    return ppm;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> lines =
        argc > 1 ? std::vector<std::string>(argv + 1, argv + argc) : allCharacters();
    const std::string ppm = enlargedPpm(drawLines(lines));
    const bool written = std::fwrite(ppm.data(), 1, ppm.size(), stdout) == ppm.size();
    return written && std::fflush(stdout) == 0 ? 0 : 1;
}
