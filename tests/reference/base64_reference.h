// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64 in the slow, obvious way.
#pragma once

#include <bitset>
#include <string>
#include <vector>

namespace reference {

inline const std::string base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Writes out all bits, cuts them into groups of six and pads with "=" to a multiple of four
/// characters.
inline std::string encodeBase64(const std::string& bytes) {
    std::string bits, text;
    for (const char c : bytes) bits += std::bitset<8>(static_cast<unsigned char>(c)).to_string();
    while (bits.size() % 6 != 0) bits += '0';
    for (std::size_t at = 0; at < bits.size(); at += 6)
        text += base64Alphabet[std::bitset<6>(bits, at, 6).to_ulong()];
    while (text.size() % 4 != 0) text += '=';
    return text;
}

struct Decoded {
    std::string written;   ///< the bytes of all complete groups
    bool complete = true;  ///< the text does not end inside a group
};

/// Foreign bytes are dropped. A "=" stands for six zero bits and takes one byte from its group and
/// from all later groups, down to one byte per group.
inline Decoded decodeBase64(const std::string& text) {
    Decoded result;
    std::vector<unsigned long> group;
    long allowance = 3;
    for (const char c : text) {
        const std::size_t index = base64Alphabet.find(c);
        if (c == '=') {
            allowance -= 1;
            group.push_back(0);
        } else if (index != std::string::npos) {
            group.push_back(index);
        } else {
            continue;
        }
        if (group.size() < 4) continue;
        std::string bits;
        for (const unsigned long value : group) bits += std::bitset<6>(value).to_string();
        for (long byte = 0; byte < 3; ++byte)
            if (byte == 0 || allowance >= byte + 1)
                result.written += static_cast<char>(
                    std::bitset<8>(bits, static_cast<std::size_t>(8 * byte), 8).to_ulong());
        group.clear();
    }
    result.complete = group.empty();
    return result;
}

}  // namespace reference
