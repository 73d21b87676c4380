// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// After reset() one object turns coded bytes back. The key and the bytes are published test values.
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

#include <kxCrypt.h>

int main() {
    kxCrypt cipher(std::vector<unsigned char>{'K', 'e', 'y'});
    std::string text = "Plaintext";

    std::cout << std::hex << std::uppercase << std::setfill('0');
    for (char& c : text) {
        const unsigned char coded = cipher.code(static_cast<unsigned char>(c));
        std::cout << std::setw(2) << static_cast<int>(coded);
        c = static_cast<char>(coded);
    }

    cipher.reset();
    for (char& c : text) c = static_cast<char>(cipher.code(static_cast<unsigned char>(c)));
    std::cout << ' ' << text << '\n';
}
// Prints:
// BBF316E8D940AF0AD3 Plaintext
