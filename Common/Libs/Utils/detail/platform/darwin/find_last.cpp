// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/platform/find_last.h"

std::size_t kx::detail::findLast(std::string_view text, char c) { return text.rfind(c); }
