// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Searches for a byte, eight or sixteen bytes at a time. They are inline, because a call would take
// longer than finding a byte that is near.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "detail/bytes/little_endian.h"
#include "detail/bytes/word.h"

namespace kx::detail {

/// The first byte `value` of [at, end); `end` if there is none. Fast if the byte is near.
inline const char* findByte(const char* at, const char* end, char value) {
    const std::uint64_t pattern = everyByte(static_cast<unsigned char>(value));
    for (int words = 4; words > 0 && end - at >= 8; --words, at += 8) {
        const std::uint64_t found = zeroBytes(loadLittleEndian64(at) ^ pattern);
        if (found != 0) return at + bytesBelow(found);
    }
    const void* const found = std::memchr(at, value, static_cast<std::size_t>(end - at));
    return found == nullptr ? end : static_cast<const char*>(found);
}

/// The number of bytes in `text` that equal `value`.
inline std::size_t countByte(std::string_view text, char value) {
    const Block pattern = blockOf(value);
    std::size_t count = 0;
    while (text.size() >= sizeof(Block)) {
        Block counts{};  // one for each place, so no more than 127 blocks
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
