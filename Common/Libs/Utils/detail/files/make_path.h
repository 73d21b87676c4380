// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Directories under exactly the given names.
#pragma once

#include <string>

namespace kx::detail {

/// For a path that is not empty: returns true if something is there already, or if a directory
/// could be made (mode 0777 less the umask); otherwise false, with errno set.
bool makeIfMissing(const std::string& path);

/// Makes every missing directory along a path that is not empty. It follows the rules of
/// kxFile::createPath, except that a backslash is part of a name. Returns false if any directory
/// but the first could not be made, with the errno of the first such failure.
bool makePath(const std::string& path);

}  // namespace kx::detail
