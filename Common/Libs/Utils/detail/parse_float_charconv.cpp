// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/parse_float.h"

namespace kx::detail {

std::from_chars_result parseFloat(const char* first, const char* last, float& value) {
    return std::from_chars(first, last, value);
}

std::from_chars_result parseFloat(const char* first, const char* last, double& value) {
    return std::from_chars(first, last, value);
}

}  // namespace kx::detail
