// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Moments as log files show them.
#pragma once

#include <cstddef>
#include <ctime>

namespace kx::detail {

/// The fields of a moment as they are written; files are compared and named by them.
struct Stamp {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

/// The current local time. Unlike localtime(3), it shares no result with other threads and does not
/// check the zone file at every call.
std::tm localNow();
Stamp stampNow();

/// Room for the text of any moment.
constexpr std::size_t maxStampSize = 32;

/// Writes a moment as it begins a text line, "2017-03-01 14:05:09 ", to `out`, which must have room
/// for maxStampSize characters. Writes no terminator. Returns the end of what was written.
char* putTextStamp(const Stamp& stamp, char* out);

/// Like putTextStamp(), but as a moment begins a CSV line: "01.03.2017;14:05:09;".
char* putCsvStamp(const Stamp& stamp, char* out);

}  // namespace kx::detail
