// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Reads a file, and shows which position tellg() gives.
#include <iostream>

#include <cached_ifstream.h>
#include <kxFile.h>

int main() {
    if (!kxFile::write("mesh.txt", "vertices 1200 faces 400")) return 1;
    cached_ifstream in("mesh.txt", 65536);
    if (!in) return 1;

    std::string word;
    int count = 0;
    in >> word >> count;
    std::cout << word << ' ' << count << '\n';
    std::cout << in.tellg() << '\n';  // the end of the file: all of it is in the buffer

    in.seekg(14);  // to another offset: the buffered bytes are discarded
    in >> word >> count;
    std::cout << word << ' ' << count << '\n';

    const cached_ifstream missing("missing.txt");
    std::cout << missing.bad() << '\n';
}
// Prints:
// vertices 1200
// 23
// faces 400
// 1
