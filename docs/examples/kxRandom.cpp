// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The application's generator keeps its words in the library, so that all plug-ins draw from it.
#include <iostream>
#include <random>

#include <kxRandom.h>

// A word of the application's generator, here that of the C++ library.
static std::uint32_t drawWord() {
    static std::mt19937 words;
    if (kxRandom::s_index == 0)
        for (std::uint32_t& word : kxRandom::s_randomTable)
            word = static_cast<std::uint32_t>(words());
    const std::uint32_t word = kxRandom::s_randomTable[kxRandom::s_index];
    ++kxRandom::s_index;
    if (kxRandom::s_index == kxRandom::s_randomTable.size()) kxRandom::s_index = 0;
    return word;
}

int main() {
    const std::uint32_t word = drawWord();
    const float number = static_cast<float>(word) * kxRandom::s_rcpFloatMax1;
    std::cout << word << ' ' << number << '\n';
}
// Prints:
// 3499211612 0.814724
