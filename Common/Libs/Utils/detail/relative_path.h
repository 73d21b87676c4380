// Composition of a relative path from two absolute ones.
#pragma once

#include <string>

namespace kx::detail {

/// Replaces `result` by `path` as seen from the directory `base`. Both begin with a slash and hold
/// no backslashes; "." and ".." in them are not interpreted. False, with a useless `result`, if
/// more than `limit` characters would be needed at any time.
bool composeRelative(const std::string& base, const std::string& path, std::size_t limit,
                     std::string& result);

}  // namespace kx::detail
