// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A path without links, "." and "..".
#pragma once

#include <climits>
#include <cstdlib>
#include <string>

namespace kx::detail {

/// "" where `path` does not exist or cannot be reached.
inline std::string canonicalPath(const std::string& path) {
    char resolved[PATH_MAX];  // from the heap, a shortage of memory would look like a missing path
    return realpath(path.c_str(), resolved) ? resolved : "";
}

}  // namespace kx::detail
