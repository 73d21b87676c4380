// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Log files: their headers, and lines appended to them.
#pragma once

#include <string>
#include <string_view>

namespace kx::detail {

/// The header of a CSV log.
constexpr const char* csvHead = "Date;Time;Type of Message;Message Number;Description\n";

/// The header of an HTML log, with the current local time.
std::string htmlHead();

/// Appends `bytes` in a single write, which no other process's write can split, and creates the
/// file if needed. Returns false if the file cannot be opened; bytes that cannot be written are
/// lost. A pipe that nobody reads cannot be opened. A slow reader is waited for, and a reader that
/// goes away raises no SIGPIPE. If a pipe takes the place of a file at this path, that is noticed
/// within a second. Must not be called by several threads at once.
bool appendToFile(const char* path, std::string_view bytes);

}  // namespace kx::detail
