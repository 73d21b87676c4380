// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// RC4 as it is described, for whole texts.
#pragma once

#include <numeric>
#include <string>
#include <utility>
#include <vector>

namespace reference {

/// `key` is not empty.
inline std::string rc4(const std::vector<unsigned char>& key, const std::string& text) {
    std::vector<unsigned> state(256);
    std::iota(state.begin(), state.end(), 0U);
    unsigned j = 0;
    for (unsigned n = 0; n < 256; ++n) {
        j = (j + state[n] + key[n % key.size()]) % 256;
        std::swap(state[n], state[j]);
    }
    std::string result;
    unsigned i = 0;
    j = 0;
    for (const char c : text) {
        i = (i + 1) % 256;
        j = (j + state[i]) % 256;
        std::swap(state[i], state[j]);
        const unsigned stream = state[(state[i] + state[j]) % 256];
        result += static_cast<char>(static_cast<unsigned char>(c) ^ stream);
    }
    return result;
}

}  // namespace reference
