// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Paths, a file, and a checksum that protects it.
#include <iostream>
#include <string>

#include <kxFile.h>

int main() {
    std::cout << kxFile::getBaseName("/data/engine.v2.osb") << '\n'
              << kxFile::abs2Rel("/usr/local/lib", "/usr/src/sys") << '\n'
              << kxFile::setExtension("engine.osb", "png") << '\n';

    if (!kxFile::write("engine.osb", "123456789")) {
        kxFile::perror("engine.osb");  // errno is still that of the failure
        return 1;
    }
    if (!kxFile::appendChecksum("engine.osb", kxFile::getChecksum("engine.osb"))) return 1;
    std::uint32_t checksum = 0;
    const bool intact = kxFile::checkChecksum("engine.osb", checksum);  // prints its finding
    std::cout << intact << ' ' << kxFile::getFileSize("engine.osb") << " bytes\n";

    char head[4];
    std::size_t size = 0;
    bool more = false;
    if (!kxFile::read("engine.osb", head, sizeof head, size, &more)) return 1;
    std::cout << std::string(head, size) << (more ? "..." : "") << '\n';
}
// Prints:
// engine.v2
// ../../src/sys
// engine.png
// Found correct file checksum CBF43926.
// 1 25 bytes
// 1234...
