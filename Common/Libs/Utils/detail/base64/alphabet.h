// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The Base64 alphabet (RFC 4648), and what each byte of a text means.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kx::detail {

constexpr std::string_view base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static_assert(base64Alphabet.size() == 64);

/// The map's entries for "=" and for a byte outside the alphabet.
constexpr unsigned char base64Padding = 254, base64Foreign = 255;
/// These bits are set in both of the above and in no value of the alphabet.
constexpr unsigned char base64NoValue = 0xC0;

constexpr unsigned char byteOf(char c) { return static_cast<unsigned char>(c); }

// Built by rule, not typed in: a mistyped entry among 256 would pass review.
constexpr std::array<unsigned char, 256> makeBase64Map() {
    std::array<unsigned char, 256> table{};
    for (auto& value : table) value = base64Foreign;
    for (std::size_t i = 0; i < base64Alphabet.size(); ++i)
        table[byteOf(base64Alphabet[i])] = static_cast<unsigned char>(i);
    table['='] = base64Padding;
    return table;
}
inline constexpr auto base64Map = makeBase64Map();
static_assert(base64Map['A'] == 0 && base64Map['Z'] == 25 && base64Map['a'] == 26 &&
              base64Map['z'] == 51 && base64Map['0'] == 52 && base64Map['9'] == 61 &&
              base64Map['+'] == 62 && base64Map['/'] == 63);
static_assert(base64Map['='] == base64Padding && base64Map['\0'] == base64Foreign &&
              base64Map['-'] == base64Foreign && base64Map[0xFF] == base64Foreign);

}  // namespace kx::detail
