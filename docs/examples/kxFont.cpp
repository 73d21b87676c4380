// A label in the lower left corner of a picture, shown here as text.
#include <iostream>
#include <string>
#include <vector>

#include <kxFont.h>

int main() {
    const int width = 19,
              height = 7;  // three cells, and one pixel: a cell must end before the edge
    std::vector<unsigned char> image(width * height * 3);
    kxFont::drawText(image.data(), "204", width, 0x0000FF);  // red, in an RGB picture

    for (int y = height - 1; y >= 0; --y) {  // the bottom row comes first in memory
        std::string row;
        for (int x = 0; x < width; ++x)
            row += image[static_cast<std::size_t>(3 * (y * width + x))] != 0 ? '#' : '.';
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
