// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Reading of floating-point numbers, which not every standard library has: libc++ has none before
// version 20.
#pragma once

#include <charconv>

namespace kx::detail {

/// As std::from_chars(first, last, value), for a text that begins with a digit or a point: the same
/// result and the same value in any locale.
std::from_chars_result parseFloat(const char* first, const char* last, float& value);
/// \copydoc parseFloat
std::from_chars_result parseFloat(const char* first, const char* last, double& value);

}  // namespace kx::detail
