// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Short labels in raw images.
#pragma once

#include <string>

#include "kxExport.h"

/// Draws one line of text with a built-in bitmap font: cells of 6 x 7 pixels, characters 32 (space)
/// to 122 ("z"), no graphics library.
///
/// Threads: no state; drawing into different images may run at the same time. Throws nothing.
class KXUTILS_API kxFont {
public:
    /// An object holds nothing; all functions are static.
    /// @{
    kxFont() = default;
    virtual ~kxFont();
    /// @}

    /// Draws `text` into the lower left corner of `image`: character k takes the pixels from 6 * k
    /// on in the 7 bottom rows. Only ink is written, the picture shows through elsewhere.
    ///
    /// `image` is the caller's buffer: at least 7 rows of `width` pixels, 3 bytes per pixel, no
    /// padding, the bottom row of the picture first (as in a texture). Bits 0 to 7 of `color` go to
    /// a pixel's byte 0, bits 8 to 15 to byte 1, bits 16 to 23 to byte 2; the rest is ignored. An
    /// RGB image thus takes red from the lowest byte.
    ///
    /// A character is drawn only if 6 * k + 6 < width; deliberately, a cell that would end exactly
    /// at the right edge is left out. Nothing wraps to another line.
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
