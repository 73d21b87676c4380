// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Short labels in raw images.
#pragma once

#include <string>

#include "kxExport.h"

/// Draws one line of text with a built-in bitmap font, without a graphics library. A cell has 6 x 7
/// pixels; the font has the characters from 32 (blank) to 122 ("z").
///
/// Threads: there is no state, so threads may draw into different images at the same time. Nothing
/// is thrown.
class KXUTILS_API kxFont {
public:
    /// An object holds nothing; all functions are static.
    /// @{
    kxFont() = default;
    virtual ~kxFont();
    /// @}

    /// Draws `text` into the lower left corner of `image`. The cell of character k, counted from 0,
    /// takes the 6 columns from 6 * k on in the 7 bottom rows. Only the pixels of the glyph are
    /// written; the picture shows through elsewhere.
    ///
    /// `image` belongs to the caller. It has at least 7 rows of `width` pixels, 3 bytes per pixel
    /// and no padding; the bottom row of the picture comes first, as in a texture. Bits 0 to 7 of
    /// `color` go to byte 0 of a pixel, bits 8 to 15 to byte 1, and bits 16 to 23 to byte 2; the
    /// rest is ignored. So an RGB image takes its red from the lowest byte.
    ///
    /// A character is drawn only if 6 * k + 6 < width. Deliberately, a cell that would end exactly
    /// at the right edge is left out. The text does not wrap to another line.
    ///
    ///     width 6 or less, also 0 or negative -> nothing drawn
    ///     width 12, "ab"                      -> "a" drawn
    ///     width 13, "ab"                      -> both drawn
    ///     a character outside 32..122         -> a blank cell
    ///
    /// `image` may be null if nothing is drawn.
    static void drawText(unsigned char* image, const std::string& text, int width,
                         unsigned int color);
};
