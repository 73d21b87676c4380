#include "banner.h"

#include <vector>

#include "kxFile.h"
#include "kxFont.h"

bool writeBanner(const std::string& path, const std::string& text) {
    constexpr int cellWidth = 6, height = 7, scale = 3;
    // One column more than the text: a cell that ends at the very edge is not drawn.
    const int width = cellWidth * static_cast<int>(text.size()) + 1;
    std::vector<unsigned char> image(static_cast<std::size_t>(3 * width * height), 0x20);
    kxFont::drawText(image.data(), text, width, 0x40C0FF);  // red is the lowest byte

    std::string ppm =
        "P6\n" + std::to_string(scale * width) + ' ' + std::to_string(scale * height) + "\n255\n";
    for (int y = 0; y < scale * height; ++y)
        for (int x = 0; x < scale * width; ++x) {
            // The font draws bottom row first, as textures are stored; PPM begins at the top.
            const int row = height - 1 - y / scale;
            const std::size_t pixel = static_cast<std::size_t>(3 * (row * width + x / scale));
            for (std::size_t channel = 0; channel < 3; ++channel)
                ppm += static_cast<char>(image[pixel + channel]);
        }
    return kxFile::write(path, ppm);
}
