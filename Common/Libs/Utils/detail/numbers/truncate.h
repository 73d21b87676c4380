// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Conversion of a double to a 32-bit integer that is defined for every value.
#pragma once

#include <cstdint>
#include <limits>

namespace kx::detail {

/// Truncates towards zero. For NaN and for a value outside the range of the result it returns the
/// smallest integer, as the x86 conversion instruction does; a plain cast would be undefined.
constexpr std::int32_t truncateToInt32(double value) {
    constexpr double below = -2147483649.0, above = 2147483648.0;
    return value > below && value < above ? static_cast<std::int32_t>(value)
                                          : std::numeric_limits<std::int32_t>::min();
}
static_assert(truncateToInt32(-2147483649.0) == std::numeric_limits<std::int32_t>::min() &&
              truncateToInt32(2147483648.0) == std::numeric_limits<std::int32_t>::min());

}  // namespace kx::detail
