// Texts that several threads and processes log: whoever reads them back can tell which are whole.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace kxtest {

/// "process.thread.i " and a tail of 0 to 2000 letters that these three numbers decide; every
/// 16th text has a tail that grows fivefold in HTML.
inline std::string numberedText(int process, int thread, int i) {
    const int mix = 31 * process + 17 * thread + i;
    const char letter = mix % 16 == 0 ? '<' : static_cast<char>('a' + mix % 26);
    // Most texts are short, as messages are.
    const int length = mix % 16 == 0 ? 2000 : mix % 5 == 0 ? mix * 7 % 1900 : mix % 60;
    return std::to_string(process) + "." + std::to_string(thread) + "." + std::to_string(i) + " " +
           std::string(static_cast<std::size_t>(length), letter);
}

/// The numbers at the start of such a text. False if there are none.
inline bool readNumbers(const std::string& text, int& process, int& thread, int& i) {
    return std::sscanf(text.c_str(), "%d.%d.%d ", &process, &thread, &i) == 3;
}

}  // namespace kxtest
