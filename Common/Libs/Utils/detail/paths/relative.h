// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Composition of a relative path from two absolute ones.
#pragma once

#include <string>

namespace kx::detail {

/// Both kinds of slash separate.
constexpr bool isSlash(char c) { return c == '/' || c == '\\'; }

/// Replaces `result` by `path` as seen from the directory `base`; backslashes of `path` stay in it.
/// Both begin with a slash; "." and ".." in them are not interpreted. False, with a useless
/// `result`, if more than `limit` characters would be needed at any time.
bool composeRelative(const std::string& base, const std::string& path, std::size_t limit,
                     std::string& result);

}  // namespace kx::detail
