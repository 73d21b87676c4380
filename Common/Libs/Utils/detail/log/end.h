// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Logging while the process ends, after static strings have been destroyed.
#pragma once

namespace kx::detail {

/// Copies the static strings that logging needs (the name and the last error of the log, the name
/// of the application) to storage that is never destroyed, and makes the log use the copies from
/// then on. Waits up to a second for a message that is being written. Calls after the first do
/// nothing.
void moveLogOffStatics() noexcept;

/// Each source file with such strings has one of these objects after them. The order in which the
/// statics of different files are destroyed is unspecified, and the first of these objects must be
/// destroyed before the first of the strings.
struct LogEnd {
    LogEnd() = default;
    ~LogEnd() { moveLogOffStatics(); }
    LogEnd(const LogEnd&) = delete;
    LogEnd& operator=(const LogEnd&) = delete;
};

}  // namespace kx::detail
