// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A path without links, "." and "..".
#pragma once

#include <climits>
#include <cstdlib>
#include <string>

namespace kx::detail {

/// Returns "" if `path` does not exist or cannot be reached.
inline std::string canonicalPath(const std::string& path) {
    // Not on the heap, where a lack of memory would look like a missing path.
    char resolved[PATH_MAX];
    return realpath(path.c_str(), resolved) ? resolved : "";
}

}  // namespace kx::detail
