// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The built-in bitmap font.
//
// Design: a character cell is 6 pixels wide and 7 high. Capitals, digits and ascenders take rows 0
// to 5 (from the top), lower-case letters rows 2 to 5; all stand on row 5. Row 6 holds descenders
// (g j p q y) and the parts of signs below the line. Column 5 stays blank to space the letters,
// except in "_", which joins its neighbours into one line. Look-alikes are told apart by a mark: a
// stroke in the zero, a foot below the one, a tail on the l.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace kx::detail {

constexpr std::size_t glyphWidth = 6;
constexpr std::size_t glyphHeight = 7;
constexpr unsigned char firstGlyph = 32;  // space
constexpr unsigned char lastGlyph = 122;  // z
constexpr std::size_t glyphCount = lastGlyph - firstGlyph + 1;

// The glyphs are drawn side by side, with a blank between neighbours.
constexpr std::size_t glyphsPerBand = 7;
constexpr std::size_t bandWidth = glyphsPerBand * (glyphWidth + 1) - 1;

// clang-format off
inline constexpr std::string_view dinaDrawing[] = {
    //        !      "      #      $      %      &
    "...... ..#... .#.#.. .#.#.. ..#... ##.... .##..."
    "...... ..#... .#.#.. #####. .####. ##..#. #..#.."
    "...... ..#... ...... .#.#.. #.#... ...#.. .##..."
    "...... ..#... ...... .#.#.. .###.. ..#... #.#.#."
    "...... ...... ...... #####. ..#.#. .#.... #..#.."
    "...... ..#... ...... .#.#.. ####.. #..##. .##.#."
    "...... ...... ...... ...... ..#... ...##. ......",
    // '      (      )      *      +      ,      -
    "..#... ...#.. .#.... ...... ...... ...... ......"
    "..#... ..#... ..#... ..#... ..#... ...... ......"
    "...... .#.... ...#.. #.#.#. ..#... ...... ......"
    "...... .#.... ...#.. .###.. #####. ...... .###.."
    "...... .#.... ...#.. #.#.#. ..#... .##... ......"
    "...... ..#... ..#... ..#... ..#... ..#... ......"
    "...... ...#.. .#.... ...... ...... .#.... ......",
    // .      /      0      1      2      3      4
    "...... ....#. .###.. ..#... .###.. #####. ...#.."
    "...... ...#.. #..##. .##... #...#. ...#.. ..##.."
    "...... ...#.. #.#.#. #.#... ....#. ..##.. .#.#.."
    "...... ..#... #.#.#. ..#... ..##.. ....#. #..#.."
    ".##... .#.... ##..#. ..#... .#.... #...#. #####."
    ".##... .#.... .###.. #####. #####. .###.. ...#.."
    "...... #..... ...... ...... ...... ...... ......",
    // 5      6      7      8      9      :      ;
    "#####. ..##.. #####. .###.. .###.. ...... ......"
    "#..... .#.... ....#. #...#. #...#. .##... .##..."
    "####.. ####.. ...#.. .###.. #...#. .##... .##..."
    "....#. #...#. ..#... #...#. .####. ...... ......"
    "#...#. #...#. ..#... #...#. ...#.. .##... .##..."
    ".###.. .###.. ..#... .###.. .##... .##... ..#..."
    "...... ...... ...... ...... ...... ...... .#....",
    // <      =      >      ?      @      A      B
    "...... ...... ...... .###.. .###.. .###.. ####.."
    "...#.. ...... .#.... #...#. #...#. #...#. #...#."
    "..#... .###.. ..#... ...#.. #.###. #...#. ####.."
    ".#.... ...... ...#.. ..#... #.#.#. #####. #...#."
    "..#... .###.. ..#... ...... #.###. #...#. #...#."
    "...#.. ...... .#.... ..#... #..... #...#. ####.."
    "...... ...... ...... ...... .###.. ...... ......",
    // C      D      E      F      G      H      I
    ".####. ###... #####. #####. .####. #...#. .###.."
    "#..... #..#.. #..... #..... #..... #...#. ..#..."
    "#..... #...#. ####.. ####.. #..... #####. ..#..."
    "#..... #...#. #..... #..... #..##. #...#. ..#..."
    "#..... #..#.. #..... #..... #...#. #...#. ..#..."
    ".####. ###... #####. #..... .####. #...#. .###.."
    "...... ...... ...... ...... ...... ...... ......",
    // J      K      L      M      N      O      P
    "..###. #...#. #..... #...#. #...#. .###.. ####.."
    "...#.. #..#.. #..... ##.##. ##..#. #...#. #...#."
    "...#.. ###... #..... #.#.#. #.#.#. #...#. #...#."
    "...#.. #.#... #..... #.#.#. #..##. #...#. ####.."
    "#..#.. #..#.. #..... #...#. #...#. #...#. #....."
    ".##... #...#. #####. #...#. #...#. .###.. #....."
    "...... ...... ...... ...... ...... ...... ......",
    // Q      R      S      T      U      V      W
    ".###.. ####.. .####. #####. #...#. #...#. #...#."
    "#...#. #...#. #..... ..#... #...#. #...#. #...#."
    "#...#. ####.. .###.. ..#... #...#. #...#. #.#.#."
    "#.#.#. #.#... ....#. ..#... #...#. .#.#.. #.#.#."
    "#..#.. #..#.. ....#. ..#... #...#. .#.#.. ##.##."
    ".##.#. #...#. ####.. ..#... .###.. ..#... #...#."
    "...... ...... ...... ...... ...... ...... ......",
    // X      Y      Z      [      \      ]      ^
    "#...#. #...#. #####. .###.. #..... .###.. ..#..."
    ".#.#.. #...#. ...#.. .#.... .#.... ...#.. .#.#.."
    "..#... .#.#.. ..#... .#.... .#.... ...#.. #...#."
    "..#... ..#... .#.... .#.... ..#... ...#.. ......"
    ".#.#.. ..#... #..... .#.... ...#.. ...#.. ......"
    "#...#. ..#... #####. .#.... ...#.. ...#.. ......"
    "...... ...... ...... .###.. ....#. .###.. ......",
    // _      `      a      b      c      d      e
    "...... .#.... ...... #..... ...... ....#. ......"
    "...... ..#... ...... #..... ...... ....#. ......"
    "...... ...... .####. ####.. .####. .####. .###.."
    "...... ...... #...#. #...#. #..... #...#. #####."
    "...... ...... #..##. #...#. #..... #...#. #....."
    "...... ...... .##.#. ####.. .####. .####. .###.."
    "###### ...... ...... ...... ...... ...... ......",
    // f      g      h      i      j      k      l
    "..##.. ...... #..... ..#... ...#.. #..... .##..."
    ".#.... ...... #..... ...... ...... #..... ..#..."
    "####.. .####. ####.. .##... ..##.. #..#.. ..#..."
    ".#.... #...#. #...#. ..#... ...#.. ###... ..#..."
    ".#.... .####. #...#. ..#... ...#.. #.#... ..#..."
    ".#.... ....#. #...#. .###.. ...#.. #..#.. ...##."
    "...... .###.. ...... ...... .##... ...... ......",
    // m      n      o      p      q      r      s
    "...... ...... ...... ...... ...... ...... ......"
    "...... ...... ...... ...... ...... ...... ......"
    "##.#.. ####.. .###.. ####.. .####. #.##.. .###.."
    "#.#.#. #...#. #...#. #...#. #...#. ##.... ##...."
    "#.#.#. #...#. #...#. #...#. #...#. #..... ..##.."
    "#.#.#. #...#. .###.. ####.. .####. #..... ###..."
    "...... ...... ...... #..... ....#. ...... ......",
    // t      u      v      w      x      y      z
    "...... ...... ...... ...... ...... ...... ......"
    ".#.... ...... ...... ...... ...... ...... ......"
    "####.. #...#. #...#. #...#. #..#.. #...#. ####.."
    ".#.... #...#. #...#. #.#.#. .##... #...#. ..#..."
    ".#.... #...#. .#.#.. #.#.#. .##... .####. .#...."
    "..##.. .####. ..#... .#.#.. #..#.. ....#. ####.."
    "...... ...... ...... ...... ...... ###... ......",
};
// clang-format on

/// One glyph after another, with one byte per row from the top; bit 7 is the leftmost pixel, bit 2
/// the rightmost, and bits 1 and 0 are clear.
using FontTable = std::array<std::uint8_t, glyphCount * glyphHeight>;

constexpr FontTable makeFont() {
    FontTable font{};
    for (std::size_t glyph = 0; glyph < glyphCount; ++glyph) {
        const std::string_view band = dinaDrawing[glyph / glyphsPerBand];
        for (std::size_t row = 0; row < glyphHeight; ++row) {
            const std::size_t start = row * bandWidth + glyph % glyphsPerBand * (glyphWidth + 1);
            for (std::size_t column = 0; column < glyphWidth; ++column)
                if (band[start + column] == '#')
                    font[glyph * glyphHeight + row] |= static_cast<std::uint8_t>(0x80 >> column);
        }
    }
    return font;
}

// True if every band has all its rows, and holds nothing but ink, paper and the blanks between
// glyphs.
constexpr bool drawingIsComplete() {
    for (const std::string_view band : dinaDrawing) {
        if (band.size() != glyphHeight * bandWidth) return false;
        for (std::size_t i = 0; i < band.size(); ++i) {
            const bool between = i % bandWidth % (glyphWidth + 1) == glyphWidth;
            if (between ? band[i] != ' ' : band[i] != '#' && band[i] != '.') return false;
        }
    }
    return true;
}
static_assert(drawingIsComplete(), "a glyph's drawing is malformed");
static_assert(std::size(dinaDrawing) * glyphsPerBand == glyphCount, "glyphs are missing");

inline constexpr FontTable dina_font = makeFont();
static_assert(sizeof dina_font == 637);
static_assert(dina_font[0] == 0x00, "top of the space");
static_assert(dina_font[('E' - firstGlyph) * glyphHeight] == 0xF8, "top of E");
static_assert(dina_font[('_' - firstGlyph) * glyphHeight + 6] == 0xFC, "bottom of _");
static_assert(dina_font[('z' - firstGlyph) * glyphHeight + 5] == 0xF0, "foot of z");

}  // namespace kx::detail
