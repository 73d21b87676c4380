// Words of a byte sequence, independent of alignment and of the processor's byte order.
#pragma once

#include <cstdint>
#include <cstring>

namespace kx::detail {

constexpr bool hostIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;

/// The little-endian word at `p`, which may have any alignment.
inline std::uint16_t loadLittleEndian16(const unsigned char* p) {
    std::uint16_t word;
    std::memcpy(&word, p, sizeof word);
    return hostIsBigEndian ? __builtin_bswap16(word) : word;
}

/// \copydoc loadLittleEndian16
inline std::uint32_t loadLittleEndian32(const unsigned char* p) {
    std::uint32_t word;
    std::memcpy(&word, p, sizeof word);
    return hostIsBigEndian ? __builtin_bswap32(word) : word;
}

}  // namespace kx::detail
