// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Stands in, on other systems, for the parts of the macOS header that the library uses.
#pragma once

#include <cstdint>

/// Copies the path of the running program, with its terminator, into the buffer and returns 0. If
/// `*size` bytes are not enough, returns -1 and sets `*size` to the number that is.
extern "C" int _NSGetExecutablePath(char* buffer, std::uint32_t* size);
