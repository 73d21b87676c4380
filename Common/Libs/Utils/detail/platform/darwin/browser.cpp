// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/platform/browser.h"

namespace kx::detail {

std::string browserCommand() { return "open -a Safari "; }

}  // namespace kx::detail
