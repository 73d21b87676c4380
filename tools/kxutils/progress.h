// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// How far the work is, shown to those who wait in front of a terminal.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <string>

/// One line on standard error, from half a second on, if that is a terminal:
///
///     1.2 GiB of 4.0 GiB, 512.0 MiB/s, 6 s left
///
/// expect() and add() only count: any thread may call them. The rest is for the main thread.
class Progress {
public:
    Progress();
    ~Progress() { hide(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// More bytes are to come; what was not announced has no time left.
    void expect(std::uint64_t bytes) { _expected += bytes; }
    void add(std::uint64_t bytes) { _done += bytes; }

    /// Shows the line, or a new one, if it is time to.
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
