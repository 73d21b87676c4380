// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Words of eight bytes and vectors of sixteen, seen as the bytes they consist of.
#pragma once

#include <cstdint>
#include <cstring>

namespace kx::detail {

/// A word whose eight bytes are all `value`.
constexpr std::uint64_t everyByte(unsigned char value) {
    return std::uint64_t{0x0101010101010101} * value;
}

/// Has the highest bit of each byte set where `word` has a zero byte, and no other bit.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
    constexpr std::uint64_t lowBits = everyByte(0x7F);
    return ~(((word & lowBits) + lowBits) | word | lowBits);
}
static_assert(zeroBytes(0x0001'8000'FF7F'0001) == 0x8000'0080'0000'8000);

/// The number of bytes below the lowest set bit of `word`, which is not 0.
inline int bytesBelow(std::uint64_t word) { return __builtin_ctzll(word) / 8; }

/// Sixteen bytes as a vector; GCC and Clang support it on every processor.
using Block = signed char __attribute__((vector_size(16)));

inline Block loadBlock(const char* p) {
    Block block;
    std::memcpy(&block, p, sizeof block);
    return block;
}

inline Block blockOf(char value) { return Block{} + static_cast<signed char>(value); }

}  // namespace kx::detail
