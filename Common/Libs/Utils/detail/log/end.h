// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Logging goes on while the process ends, when static strings are gone already.
#pragma once

namespace kx::detail {

/// Copies the static strings that logging needs (name and last error of the log, name of the
/// application) to storage that nothing destroys, and makes the log use the copies from then on.
/// Waits for a message on its way, a second at most. Calls after the first do nothing.
void moveLogOffStatics() noexcept;

/// One stands after the strings in each source that has some of them: the order in which sources
/// are destroyed is open, and the first of these objects must go before the first of the strings.
struct LogEnd {
    LogEnd() = default;
    ~LogEnd() { moveLogOffStatics(); }
    LogEnd(const LogEnd&) = delete;
    LogEnd& operator=(const LogEnd&) = delete;
};

}  // namespace kx::detail
