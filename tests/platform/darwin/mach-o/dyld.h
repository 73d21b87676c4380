// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Stands in for the header of macOS on other systems: what the library uses of it.
#pragma once

#include <cstdint>

/// Copies the path of the running program, with its terminator, into the buffer and returns 0.
/// Where `*size` bytes are not enough, returns -1 and sets `*size` to the number that are.
extern "C" int _NSGetExecutablePath(char* buffer, std::uint32_t* size);
