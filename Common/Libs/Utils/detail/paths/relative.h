// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Composition of a relative path from two absolute ones.
#pragma once

#include <string>

namespace kx::detail {

/// Both kinds of slash separate names.
constexpr bool isSlash(char c) { return c == '/' || c == '\\'; }

/// Replaces `result` by `path` as seen from the directory `base`; backslashes of `path` stay in it.
/// Both paths begin with a slash; "." and ".." in them are not interpreted. Returns false, with a
/// useless `result`, if more than `limit` characters are needed at any point.
bool composeRelative(const std::string& base, const std::string& path, std::size_t limit,
                     std::string& result);

}  // namespace kx::detail
