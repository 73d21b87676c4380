// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// How to run a command and read its output.
#pragma once

#include <cstdio>

namespace kx::detail {

/// Calls popen for reading; no other program inherits this end of the pipe. Returns null on
/// failure. The caller closes the file with pclose.
std::FILE* openCommandOutput(const char* command);

}  // namespace kx::detail
