// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Log files: what they start with, and lines at their end.
#pragma once

#include <string>
#include <string_view>

namespace kx::detail {

/// What a CSV log starts with.
constexpr const char* csvHead = "Date;Time;Type of Message;Message Number;Description\n";

/// What an HTML log starts with, with the current local time.
std::string htmlHead();

/// Appends `bytes` in one write that no other process's write can part, creating the file if
/// needed. False if the file cannot be opened; bytes that cannot be written are lost. A pipe that
/// nobody reads cannot be opened; a reader that is slow is waited for, and one that leaves raises
/// no SIGPIPE. A path where a pipe takes the place of a file is noticed within a second. Not by
/// several threads at once.
bool appendToFile(const char* path, std::string_view bytes);

}  // namespace kx::detail
