// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The checks that every implementation of Base64 must pass.
#pragma once

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "bytes.h"
#include "guarded.h"
#include "reference/base64_reference.h"

namespace kxtest {

inline constexpr char canary = '\x5a';

/// A text in which one in `oneIn` characters is "=", and just as many are arbitrary bytes.
inline std::string randomText(std::mt19937& random, std::size_t n, unsigned int oneIn) {
    std::string text;
    while (text.size() < n) {
        const unsigned long kind = random() % oneIn;
        if (kind == 0)
            text += '=';
        else if (kind == 1)
            text += static_cast<char>(random() & 0xFF);
        else
            text += reference::base64Alphabet[random() % 64];
    }
    return text;
}

using Convert = unsigned long (*)(const char*, unsigned long, char*);

/// Converts with input and output next to the guard pages, in every alignment, and expects that the
/// call returns `result`, writes exactly `written` and touches nothing else.
inline void expectExactly(Convert convert, const std::string& input, unsigned long result,
                          const std::string& written) {
    static const Guarded source(4096), target(4096);
    const auto check = [&](const char* in, char* out) {
        target.fill(canary);
        const unsigned long got = convert(in, input.size(), out);
        return got == result && std::string(out, written.size()) == written &&
               target.filledOutside(out, written.size(), canary);
    };
    ASSERT_TRUE(check(source.atEnd(input), target.end() - written.size())) << input;
    for (std::size_t offset = 0; offset < 64; ++offset)
        ASSERT_TRUE(check(source.atBegin(input, offset), target.begin() + (offset * 5) % 64))
            << input << " at offset " << offset;
}

}  // namespace kxtest
