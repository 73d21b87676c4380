// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// How the platform shows a web page.
#pragma once

#include <string>

namespace kx::detail {

/// The shell command that opens the URL appended to it. It ends with a blank.
std::string browserCommand();

}  // namespace kx::detail
