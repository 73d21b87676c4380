// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tells whether the log file has received all lines.
#pragma once

#include <sys/types.h>

#include <string>

/// Watches the log from its construction on. kxLog silently loses a line that it cannot write. That
/// is not enough for a program that was asked for a log.
class LogWatch {
public:
    LogWatch();
    ~LogWatch();
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    /// Must be called after the first line, with which a CSV log moves to a new file.
    void begin();

    /// True if the log file has all lines since the construction; also true if there is no file, or
    /// a new one because the day has changed.
    bool isComplete() const;

private:
    std::string _lines;
    ino_t _file = 0;
};
