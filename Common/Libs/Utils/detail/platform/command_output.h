// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// How a command is run whose output is read.
#pragma once

#include <cstdio>

namespace kx::detail {

/// popen for reading, whose end of the pipe no other program inherits; null on failure. The
/// caller's, for pclose.
std::FILE* openCommandOutput(const char* command);

}  // namespace kx::detail
