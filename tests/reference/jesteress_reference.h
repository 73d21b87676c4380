// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// FNV-1a "Jesteress" by positional arithmetic on 64-bit integers.
#pragma once

#include <cstdint>
#include <string>

namespace reference {

/// The number that the bytes [at, at + count) stand for, lowest byte first.
inline std::uint64_t littleEndianNumber(const std::string& bytes, std::size_t at,
                                        std::size_t count) {
    std::uint64_t number = 0, weight = 1;
    for (std::size_t i = 0; i < count; ++i, weight *= 256)
        number += weight * static_cast<unsigned char>(bytes[at + i]);
    return number;
}

inline std::uint32_t jesteress(const std::string& bytes, std::uint32_t seed) {
    constexpr std::uint64_t modulus = std::uint64_t{1} << 32;
    std::uint64_t hash = seed == 0 ? 0x811C9DC5 : seed;
    std::size_t at = 0;
    const auto mix = [&](std::uint64_t number) { hash = ((hash ^ number) * 0xAD3E7) % modulus; };
    while (bytes.size() - at >= 8) {
        const std::uint64_t first = littleEndianNumber(bytes, at, 4) * 32;
        mix((first % modulus + first / modulus) ^ littleEndianNumber(bytes, at + 4, 4));
        at += 8;
    }
    for (const std::size_t count : {4UL, 2UL, 1UL})
        if (bytes.size() - at >= count) {
            mix(littleEndianNumber(bytes, at, count));
            at += count;
        }
    return static_cast<std::uint32_t>(hash ^ (hash / 65536));
}

}  // namespace reference
