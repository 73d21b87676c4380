// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A label in the lower left corner of a picture, shown here as text.
#include <iostream>
#include <string>
#include <vector>

#include <kxFont.h>

int main() {
    // Three cells and one more pixel, since a cell must end before the edge.
    const std::size_t width = 19, height = 7;
    std::vector<unsigned char> image(width * height * 3);
    kxFont::drawText(image.data(), "204", width, 0x0000FF);  // red, in an RGB picture

    for (std::size_t y = height; y-- != 0;) {  // the bottom row comes first in memory
        std::string row;
        for (std::size_t x = 0; x < width; ++x) row += image[3 * (y * width + x)] != 0 ? '#' : '.';
        std::cout << row << '\n';
    }
}
// Prints:
// .###...###.....#...
// #...#.#..##...##...
// ....#.#.#.#..#.#...
// ..##..#.#.#.#..#...
// .#....##..#.#####..
// #####..###.....#...
// ...................
