// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "banner.h"

#include <vector>

#include "kxFile.h"
#include "kxFont.h"

bool writeBanner(const std::string& path, const std::string& text) {
    constexpr std::size_t cellWidth = 6, height = 7, scale = 3, bytesPerPixel = 3;
    // One column more than the text: a cell that ends at the very edge is not drawn.
    const std::size_t width = cellWidth * text.size() + 1;
    std::vector<unsigned char> image(bytesPerPixel * width * height, 0x20);
    const unsigned int amber = 0x40C0FF;  // red is the lowest byte
    kxFont::drawText(image.data(), text, static_cast<int>(width), amber);

    std::string ppm =
        "P6\n" + std::to_string(scale * width) + ' ' + std::to_string(scale * height) + "\n255\n";
    for (std::size_t y = 0; y < scale * height; ++y)
        for (std::size_t x = 0; x < scale * width; ++x) {
            // The font draws bottom row first, as textures are stored; PPM begins at the top.
            const std::size_t row = height - 1 - y / scale;
            const unsigned char* const pixel = &image[bytesPerPixel * (row * width + x / scale)];
            ppm.append(pixel, pixel + bytesPerPixel);
        }
    return kxFile::write(path, ppm);
}
