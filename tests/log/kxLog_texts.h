// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Texts that several threads and processes log. When they are read back, one can tell which are
// whole.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace kxtest {

/// "process.thread.i " and a tail of letters, all determined by these three numbers. Most texts are
/// as short as messages are. Every 64th has a total of 2046, 2047, 2048 or 3000 characters (printf
/// style messages are cut at 2047) and a tail that becomes five times as long in HTML.
inline std::string numberedText(int process, int thread, int i) {
    const int mix = 31 * process + 17 * thread + i;
    std::string text =
        std::to_string(process) + "." + std::to_string(thread) + "." + std::to_string(i) + " ";
    constexpr std::size_t lengths[] = {2046, 2047, 2048, 3000};
    if (mix % 64 == 0)
        text.resize(lengths[mix / 64 % 4], '<');
    else
        text.append(static_cast<std::size_t>(mix % 20 == 0 ? mix * 7 % 1900 : mix % 60),
                    static_cast<char>('a' + mix % 26));
    return text;
}

/// The numbers at the start of such a text. Returns false if there are none.
inline bool readNumbers(const std::string& text, int& process, int& thread, int& i) {
    return std::sscanf(text.c_str(), "%d.%d.%d ", &process, &thread, &i) == 3;
}

}  // namespace kxtest
