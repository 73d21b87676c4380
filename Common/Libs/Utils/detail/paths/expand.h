// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Expansion of environment variables and home directories in a path.
#pragma once

#include <string>

namespace kx::detail {

/// See kxFile::expandFilename. `limit` is the greatest length, in characters, of both the path and
/// the result.
std::string expandFilename(const std::string& path, std::size_t limit);

}  // namespace kx::detail
