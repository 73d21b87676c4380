// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Moments as log files show them.
#pragma once

#include <cstddef>
#include <ctime>

namespace kx::detail {

/// The fields of a moment as they are written, which is what files are compared and named by.
struct Stamp {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

/// Now, in local time. Unlike localtime(3) it shares no result with other threads, and does not
/// look at the zone file at every call.
std::tm localNow();
Stamp stampNow();

/// Room for the text of any moment.
constexpr std::size_t maxStampSize = 32;

/// Writes a moment as text lines start, "2017-03-01 14:05:09 ", to `out`, which has room for
/// maxStampSize characters; no terminator. Returns the end of what was written.
char* putTextStamp(const Stamp& stamp, char* out);

/// The same as CSV lines start: "01.03.2017;14:05:09;".
char* putCsvStamp(const Stamp& stamp, char* out);

}  // namespace kx::detail
