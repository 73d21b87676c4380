// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Names for temporary files.
#pragma once

#include <cstdint>
#include <string>

namespace kx::detail {

/// `prefix` followed by the first number from `count` on for which nothing of that name exists in
/// `directory`; `count` becomes the number after it. Numbers above 2147483647 are written as the
/// negative ones of the same 32 bits. "", with `count` untouched, if an argument is empty.
std::string nextFreeName(const std::string& directory, const std::string& prefix,
                         std::uint32_t& count);

}  // namespace kx::detail
