// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <cstring>

#include "detail/platform/find_last.h"

std::size_t kx::detail::findLast(std::string_view text, char c) {
    const void* const found = memrchr(text.data(), c, text.size());
    return found ? static_cast<std::size_t>(static_cast<const char*>(found) - text.data())
                 : std::string_view::npos;
}
