// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The path of the running executable.
#pragma once

#include <string>

namespace kx::detail {

/// The path as the system gives it (it may contain symbolic links), up to 1023 characters; "" if
/// the system does not give it or it is longer.
std::string executablePath();

}  // namespace kx::detail
