// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Words of a byte sequence, independent of alignment and of the processor's byte order.
#pragma once

#include <cstdint>
#include <cstring>

namespace kx::detail {

constexpr bool hostIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

/// The little-endian word at `p`, which may have any alignment.
inline std::uint16_t loadLittleEndian16(const void* p) {
    std::uint16_t word;
    std::memcpy(&word, p, sizeof word);
    return hostIsBigEndian ? __builtin_bswap16(word) : word;
}

/// \copydoc loadLittleEndian16
inline std::uint32_t loadLittleEndian32(const void* p) {
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return hostIsBigEndian ? __builtin_bswap32(word) : word;
}

/// \copydoc loadLittleEndian16
inline std::uint64_t loadLittleEndian64(const void* p) {
    std::uint64_t word;
    std::memcpy(&word, p, sizeof word);
    return hostIsBigEndian ? __builtin_bswap64(word) : word;
}

/// Writes the word's bytes to `p`, the lowest first.
inline void storeLittleEndian64(void* p, std::uint64_t word) {
    if (hostIsBigEndian) word = __builtin_bswap64(word);
    std::memcpy(p, &word, sizeof word);
}

}  // namespace kx::detail
