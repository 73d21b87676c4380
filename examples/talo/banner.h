// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A picture with a line of text in the library's bitmap font.
#pragma once

#include <string>

/// Writes `text` as a binary PPM picture, three times as large as the font. Returns false if the
/// file cannot be written completely.
bool writeBanner(const std::string& path, const std::string& text);
