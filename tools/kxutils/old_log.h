// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files in the place where a log is to go. The library takes each of them for an old log, which it
// moves or appends to.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The formats, with the numbers that kxLog::setLogFormat() takes.
enum class LogFormat { text = 1, html = 2, csv = 3 };

/// The number of bytes in the line that starts a CSV log.
std::size_t headSize(LogFormat format);

/// Where kxLog::setLogFile() puts a log of that name: in KXUTILS_LOG_DIR, if that is set.
std::string logPath(const std::string& name);

/// True for a file that starts as a log of the format does, and for an empty one:
///
///     text  a time stamp
///     HTML  the head block
///     CSV   the header line, followed by nothing or by a time stamp
///
/// Failures have Status::unreadable.
bool isLog(const std::string& path, LogFormat format);

/// The regular files that are not logs, but would be lost or written to if a log of the format went
/// to `path`: the file itself, or the file with the name that a log without a date gets.
std::vector<std::string> foreignFiles(const std::string& path, LogFormat format);

/// Renames a file or a link to a free name beside it ("NAME.~1~"), which it returns. It replaces no
/// file, not even one that appears meanwhile. Failures have Status::unwritable.
std::string moveAside(const std::string& path);
