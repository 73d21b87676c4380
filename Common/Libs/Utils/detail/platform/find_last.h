// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Search for a character from the end of a text.
#pragma once

#include <cstddef>
#include <string_view>

namespace kx::detail {

/// As text.rfind(c), which goes byte by byte, with the system's own search where it has one.
std::size_t findLast(std::string_view text, char c);

}  // namespace kx::detail
