// Eight bytes at a time in one word.
#pragma once

#include <cstdint>

namespace kx::detail {

/// A word of eight bytes `value`.
constexpr std::uint64_t everyByte(unsigned char value) { return 0x0101010101010101 * value; }

/// The highest bit of each byte of `word` that is 0, and no other bit.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
    constexpr std::uint64_t lowBits = everyByte(0x7F);
    return ~(((word & lowBits) + lowBits) | word | lowBits);
}
static_assert(zeroBytes(0x0001'8000'FF7F'0001) == 0x8000'0080'0000'8000);

/// The number of bytes below the lowest bit that is set in `word`, which is not 0.
inline int bytesBelow(std::uint64_t word) { return __builtin_ctzll(word) / 8; }

}  // namespace kx::detail
