// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that the log writes to: stamps, heads, lines, and the age of an existing file.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kx::detail {

/// The fields of a moment as they are written, which is what files are compared and named by.
struct Stamp {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

/// Now, in local time.
Stamp stampNow();

/// Room for the text of any moment.
constexpr std::size_t maxStampSize = 32;

/// Writes a moment as text lines start, "2017-03-01 14:05:09 ", to `out`, which has room for
/// maxStampSize characters; no terminator. Returns the end of what was written.
char* putTextStamp(const Stamp& stamp, char* out);

/// The same as CSV lines start: "01.03.2017;14:05:09;".
char* putCsvStamp(const Stamp& stamp, char* out);

/// What an HTML log starts with, with the current local time.
std::string htmlHead();

/// If `path` is a regular file that can be read, and its first message is not of the day of `now`,
/// the stamp of that message as rotated files carry it ("20170301-140509", with 0 for what cannot
/// be read); otherwise "".
std::string staleStamp(const char* path, bool isCsv, const Stamp& now);

/// Appends `bytes` in one write that no other process's write can part, creating the file if
/// needed. False if the file cannot be opened; bytes that cannot be written are lost. A pipe that
/// nobody reads cannot be opened; a reader that is slow is waited for, and one that leaves raises
/// no SIGPIPE. A path where a pipe takes the place of a file is noticed within a second. Not by
/// several threads at once.
bool appendToFile(const char* path, std::string_view bytes);

}  // namespace kx::detail
