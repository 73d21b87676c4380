// Files that the log writes to: stamps, heads, lines, and the age of an existing file.
#pragma once

#include <string>

namespace kx::detail {

/// Now, in local time, as text lines start: "2017-03-01 14:05:09 ".
std::string textStamp();

/// Now, in local time, as CSV lines start: "01.03.2017;14:05:09;".
std::string csvStamp();

/// What an HTML log starts with, with the current local time.
std::string htmlHead();

/// If `path` is a regular file that can be read, and its first message is not of today, the stamp
/// of that message as rotated files carry it ("20170301-140509", with 0 for what cannot be read);
/// otherwise "".
std::string staleStamp(const std::string& path, bool isCsv);

/// Appends `bytes` in one write that no other process's write can part, creating the file if
/// needed. False if the file cannot be opened; bytes that cannot be written are lost.
bool appendToFile(const std::string& path, const std::string& bytes);

}  // namespace kx::detail
