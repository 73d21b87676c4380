// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Numbers as streams of the classic locale write and read them.
#pragma once

#include <cstdint>
#include <cstring>
#include <locale>
#include <sstream>
#include <string>

namespace reference {

/// Whether the streams are those of the GNU library, whose results our library promises. The
/// streams of libc++ differ: an overflow gives infinity, and NaNs are written differently.
#ifdef __GLIBCXX__
inline constexpr bool isGnuStream = true;
#else
inline constexpr bool isGnuStream = false;
#endif

template <typename Stream>
Stream classic() {
    Stream stream;
    stream.imbue(std::locale::classic());
    return stream;
}

template <typename Float>
Float fromStream(const std::string& text) {
    static auto in = classic<std::istringstream>();
    in.clear();
    in.str(text);
    Float value = 0;
    in >> value;
    return value;
}

inline std::string toStream(float value) {
    static auto out = classic<std::ostringstream>();
    out.str("");
    out << value;
    return out.str();
}

/// Distinguishes 0 from -0, and is true for equal NaNs.
template <typename Float>
bool sameBits(Float a, Float b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline float fromBits(std::uint32_t bits) {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

inline std::uint32_t bitsOf(float value) {
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

}  // namespace reference
