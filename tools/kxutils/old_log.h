// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that stand where a log is to go. The library takes each for an old log, which it moves or
// appends to.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// The formats by the numbers that kxLog::setLogFormat() takes.
enum class LogFormat { text = 1, html = 2, csv = 3 };

/// Bytes of the line that starts a CSV log.
std::size_t headSize(LogFormat format);

/// Where kxLog::setLogFile() puts the log of a name: in KXUTILS_LOG_DIR, if that is set.
std::string logPath(const std::string& name);

/// True for a file that starts as a log of the format does, and for an empty one:
///
///     text  a time stamp
///     HTML  the head block
///     CSV   the header line, and behind it nothing or a time stamp
///
/// Failures are of Status::unreadable.
bool isLog(const std::string& path, LogFormat format);

/// The regular files that would be lost, or be written to, though they are no logs, if a log of the
/// format went to `path`: the file itself, or one of the name that a log without a date gets.
std::vector<std::string> foreignFiles(const std::string& path, LogFormat format);

/// Renames a file, or a link, to a free name beside it ("NAME.~1~"), which it returns. Replaces no
/// file, not even one that appears meanwhile. Failures are of Status::unwritable.
std::string moveAside(const std::string& path);
