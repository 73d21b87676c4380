// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The footer that ends a stamped file: a mark of eight bytes, then the CRC-32 of what stands
// before.
#pragma once

#include <cstdio>
#include <string>

#include "reference/crc32_bitwise.h"

namespace reference {

inline const std::string checksumMark("\0TALOCRC", 8);

/// The CRC-32 as eight upper-case hexadecimal digits.
inline std::string crc32Digits(const std::string& bytes) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08X", crc32Bitwise(bytes));
    return digits;
}

/// The footer of a file that holds these bytes so far.
inline std::string checksumFooter(const std::string& bytes) {
    return checksumMark + crc32Digits(bytes);
}

}  // namespace reference
