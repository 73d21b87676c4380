// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A search for a character from the end of a text.
#pragma once

#include <cstddef>
#include <string_view>

namespace kx::detail {

/// Returns what text.rfind(c) returns. It uses the system's own search where there is one, since
/// rfind goes byte by byte.
std::size_t findLast(std::string_view text, char c);

}  // namespace kx::detail
