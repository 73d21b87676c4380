// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Counts the bytes of a text, then writes the text to a file.
#include <iostream>

#include <cached_ofstream.h>
#include <kxFile.h>

static void save(std::ostream& out) { out << "vertices " << 1200 << '\n'; }

int main() {
    cached_ofstream counter;  // stores nothing
    save(counter);
    std::cout << counter.size() << " bytes\n";

    cached_ofstream out("mesh.txt", 65536);
    save(out);
    out.flush();  // before close(), which checks before its own last flush
    out.close();
    std::cout << (out.bad() ? "not written" : "written") << '\n';

    std::string text;
    if (!kxFile::read("mesh.txt", text)) return 1;
    std::cout << text;
}
// Prints:
// 14 bytes
// written
// vertices 1200
