// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tells whether the log file has got all lines.
#pragma once

#include <sys/types.h>

#include <string>

/// Watches the log from its construction on. kxLog loses a line that it cannot write, and says
/// nothing: for a program that is asked for a log that is not enough.
class LogWatch {
public:
    LogWatch();
    ~LogWatch();
    LogWatch(const LogWatch&) = delete;
    LogWatch& operator=(const LogWatch&) = delete;

    /// To be called after the first line, with which a log in CSV moves to a new file.
    void begin();

    /// True if the log file has all lines since the construction; also if there is none, or a new
    /// one because the day has changed.
    bool isComplete() const;

private:
    std::string _lines;
    ino_t _file = 0;
};
