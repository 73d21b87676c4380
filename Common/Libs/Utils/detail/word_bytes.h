// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Searches in a text, eight or sixteen bytes at a time and without a call, which would take longer
// than finding what is near.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "detail/little_endian.h"

namespace kx::detail {

/// A word of eight bytes `value`.
constexpr std::uint64_t everyByte(unsigned char value) {
    return std::uint64_t{0x0101010101010101} * value;
}

/// The highest bit of each byte of `word` that is 0, and no other bit.
constexpr std::uint64_t zeroBytes(std::uint64_t word) {
    constexpr std::uint64_t lowBits = everyByte(0x7F);
    return ~(((word & lowBits) + lowBits) | word | lowBits);
}
static_assert(zeroBytes(0x0001'8000'FF7F'0001) == 0x8000'0080'0000'8000);

/// The number of bytes below the lowest bit that is set in `word`, which is not 0.
inline int bytesBelow(std::uint64_t word) { return __builtin_ctzll(word) / 8; }

/// The first byte `value` of [at, end); `end` if there is none. Fast where it is near.
inline const char* findByte(const char* at, const char* end, char value) {
    const std::uint64_t pattern = everyByte(static_cast<unsigned char>(value));
    for (int words = 4; words > 0 && end - at >= 8; --words, at += 8) {
        const std::uint64_t found = zeroBytes(loadLittleEndian64(at) ^ pattern);
        if (found != 0) return at + bytesBelow(found);
    }
    const void* const found = std::memchr(at, value, static_cast<std::size_t>(end - at));
    return found == nullptr ? end : static_cast<const char*>(found);
}

/// Sixteen bytes as a vector, which GCC and Clang know on every processor.
using Block = signed char __attribute__((vector_size(16)));

inline Block loadBlock(const char* p) {
    Block block;
    std::memcpy(&block, p, sizeof block);
    return block;
}

inline Block blockOf(char value) { return Block{} + static_cast<signed char>(value); }

/// The number of bytes `value` in `text`.
inline std::size_t countByte(std::string_view text, char value) {
    const Block pattern = blockOf(value);
    std::size_t count = 0;
    while (text.size() >= sizeof(Block)) {
        Block counts{};  // of each place, so no more than 127 blocks
        const std::size_t end =
            std::min<std::size_t>(text.size() / sizeof(Block), 127) * sizeof(Block);
        for (std::size_t at = 0; at < end; at += sizeof(Block))
            counts -= loadBlock(text.data() + at) == pattern;  // -1 where equal
        for (std::size_t place = 0; place < sizeof(Block); ++place)
            count += static_cast<std::size_t>(counts[place]);
        text.remove_prefix(end);
    }
    return count + static_cast<std::size_t>(std::count(text.begin(), text.end(), value));
}

}  // namespace kx::detail
