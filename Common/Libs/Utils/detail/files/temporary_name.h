// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Names for temporary files.
#pragma once

#include <cstdint>
#include <string>

namespace kx::detail {

/// Returns `prefix` followed by a number: the first from `count` on for which `directory` has no
/// entry of that name. `count` becomes the number after it. Numbers above 2147483647 are written as
/// the negative numbers with the same 32 bits. Returns "" and leaves `count` alone if an argument
/// is empty.
std::string nextFreeName(const std::string& directory, const std::string& prefix,
                         std::uint32_t& count);

}  // namespace kx::detail
