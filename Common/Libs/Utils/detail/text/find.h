// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Searches for a text in a text. std::string::find is no choice if both come from a caller: it
// starts again after every place that nearly fits, and takes seconds to search a megabyte of
// "aaa..." for half a megabyte of "aaa...b".
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "detail/bytes/little_endian.h"
#include "detail/bytes/word.h"
#include "detail/text/byte_search.h"

namespace kx::detail {

/// Where `search`, which is not empty, begins in `text` from `at` on, or npos. Returns what
/// text.find(search, at) returns; `at` is not beyond the end. Uses the two-way algorithm (Maxime
/// Crochemore and Dominique Perrin, "Two-way string-matching", Journal of the ACM 38, 1991). It
/// reads each byte of both texts a few times at most and allocates nothing, but in texts that
/// people write it is slower than findText().
std::size_t findTwoWay(std::string_view text, std::string_view search, std::size_t at);

/// Returns what findTwoWay() returns, also in a time proportional to the two lengths. Compares
/// where the first and the last character match, sixteen places at a time (Wojciech Mula,
/// "SIMD-friendly algorithms for substring searching", 2016). Once it has compared in vain more
/// than a few bytes for each byte that it has passed, it leaves the rest to findTwoWay(). A single
/// character needs none of this.
inline std::size_t findText(std::string_view text, std::string_view search, std::size_t at) {
    // The bytes compared in vain for each byte passed; ordinary texts stay far below this.
    constexpr std::size_t patience = 8;
    if (search.size() == 1) {
        const char* const end = text.data() + text.size();
        const char* const found = findByte(text.data() + at, end, search.front());
        return found == end ? text.npos : static_cast<std::size_t>(found - text.data());
    }
    const Block first = blockOf(search.front()), last = blockOf(search.back());
    const std::size_t begin = at, toLast = search.size() - 1;
    std::size_t compared = 0;
    for (; text.size() >= at + toLast + sizeof(Block); at += sizeof(Block)) {
        const char* const start = text.data() + at;
        const Block found = (loadBlock(start) == first) & (loadBlock(start + toLast) == last);
        const std::uint64_t halves[] = {
            loadLittleEndian64(&found),
            loadLittleEndian64(reinterpret_cast<const char*>(&found) + 8)};
        if ((halves[0] | halves[1]) == 0) continue;
        for (std::size_t half = 0; half < 2; ++half)
            for (std::uint64_t left = halves[half] & everyByte(0x80); left != 0; left &= left - 1) {
                const std::size_t place =
                    at + 8 * half + static_cast<std::size_t>(bytesBelow(left));
                const char* const candidate = text.data() + place;
                if (std::memcmp(candidate, search.data(), search.size()) == 0) return place;
                if (search.size() <= patience) continue;
                const auto differs = std::mismatch(search.begin(), search.end(), candidate).first;
                compared += static_cast<std::size_t>(differs - search.begin());
                if (compared > patience * (place - begin) + search.size())
                    return findTwoWay(text, search, place + 1);
            }
    }
    return text.find(search, at);  // fifteen places at most
}

}  // namespace kx::detail
