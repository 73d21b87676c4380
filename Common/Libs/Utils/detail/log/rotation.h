// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The age of a log file, which decides whether the file is moved aside.
#pragma once

#include <string>

#include "detail/log/stamp.h"

namespace kx::detail {

/// Returns a stamp if `path` is a regular, readable file whose first message is not from the day of
/// `now`: the stamp of that message as rotated files carry it ("20170301-140509", with 0 for what
/// cannot be read). Otherwise returns "".
std::string staleStamp(const char* path, bool isCsv, const Stamp& now);

}  // namespace kx::detail
