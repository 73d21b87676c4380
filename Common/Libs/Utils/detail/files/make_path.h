// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Directories under exactly the names given.
#pragma once

#include <string>

namespace kx::detail {

/// For a path that is not empty: true if something is there, or a directory could be made (mode
/// 0777 less the umask); else false, with errno set.
bool makeIfMissing(const std::string& path);

/// Makes every directory missing along a path that is not empty, by the rules of
/// kxFile::createPath, but for one: a backslash is part of a name. False if any but the first could
/// not be made, with errno of the first failure among those.
bool makePath(const std::string& path);

}  // namespace kx::detail
