// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxFont.h"

#include <cstddef>
#include <cstdint>

#include "detail/font/dina.h"

namespace {

using kx::detail::dina_font;
using kx::detail::firstGlyph;
using kx::detail::glyphHeight;
using kx::detail::glyphWidth;
using kx::detail::lastGlyph;

// `corner` is the lower left pixel of the cell, `stride` the number of bytes from a row to the row
// above it.
void drawGlyph(unsigned char* corner, std::size_t stride, unsigned char c, unsigned int color) {
    const std::uint8_t* const glyph = &dina_font[(c - firstGlyph) * glyphHeight];
    for (std::size_t row = 0; row < glyphHeight; ++row) {
        unsigned char* const line = corner + (glyphHeight - 1 - row) * stride;
        for (std::size_t x = 0; x < glyphWidth; ++x) {
            if ((glyph[row] & 0x80 >> x) == 0) continue;
            line[3 * x] = static_cast<unsigned char>(color);
            line[3 * x + 1] = static_cast<unsigned char>(color >> 8);
            line[3 * x + 2] = static_cast<unsigned char>(color >> 16);
        }
    }
}

}  // namespace

kxFont::~kxFont() = default;

void kxFont::drawText(unsigned char* image, const std::string& text, int width,
                      unsigned int color) {
    if (width <= 0) return;
    const auto pixels = static_cast<std::size_t>(width);
    for (std::size_t k = 0; k < text.size() && glyphWidth * k + glyphWidth < pixels; ++k) {
        const auto c = static_cast<unsigned char>(text[k]);
        if (c < firstGlyph || c > lastGlyph) continue;
        drawGlyph(image + 3 * glyphWidth * k, 3 * pixels, c, color);
    }
}
