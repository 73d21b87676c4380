// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Encodes into a string and into a buffer, and decodes.
#include <iostream>
#include <string>
#include <vector>

#include <kxBase64.h>

int main() {
    std::string text, bytes;
    kxBase64::encode("foobar!", text);
    kxBase64::decode(text, bytes);
    std::cout << text << ' ' << bytes << '\n';

    std::vector<char> buffer(kxBase64::getEncodeSize(7) + 1);  // + 1 for the terminator
    std::cout << kxBase64::encode("foobar!", 7, buffer.data()) << ' ' << buffer.data() << '\n';

    std::cout << kxBase64::decode("Zm9v\nYmFy", bytes) << ' ' << bytes << '\n';  // forgiving
    std::cout << kxBase64::isBase64String("Zm9v\nYmFy") << '\n';                 // strict
}
// Prints:
// Zm9vYmFyIQ== foobar!
// 12 Zm9vYmFyIQ==
// 6 foobar
// 0
