// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Separators between groups of digits, counted from the right.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kx::detail {

/// Does what kxString::beautifyDigits does with a text; `separator` is not empty and `group` not 0.
std::string groupDigits(std::string_view text, std::string_view separator, std::size_t group);

/// Does what kxString::beautifyDigits does with a number; `group` is not 0.
std::string groupDigits(std::uint32_t value, char separator, std::size_t group);

}  // namespace kx::detail
