// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The progress of the work, shown to users who wait at a terminal.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

/// One line on standard error, if that is a terminal, shown after half a second:
///
///     1.2 GiB of 4.0 GiB, 512.0 MiB/s, 6 s left
///
/// expect() and add() only count, and any thread may call them. The other functions are for the
/// main thread.
class Progress {
public:
    Progress();
    ~Progress() { hide(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Announces more bytes. Without an announcement, no time left is shown.
    void expect(std::uint64_t bytes) { _expected += bytes; }
    void add(std::uint64_t bytes) { _done += bytes; }

    /// Shows the line, or updates it, if it is time to.
    void update();
    /// Erases the line, before anything else is written and at the end.
    void hide();

private:
    using Clock = std::chrono::steady_clock;

    std::string line(double seconds) const;

    std::atomic<std::uint64_t> _expected{0}, _done{0};
    const bool _isTerminal;
    bool _isShown = false;
    const Clock::time_point _start = Clock::now();
    Clock::time_point _next;
};
