// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Protects a file against damage: appends a checksum, verifies it, changes one byte and verifies
// again.
//
//     stamp_and_verify FILE
#include <fstream>
#include <iostream>
#include <string>

#include <kxFile.h>

namespace {

void verify(const std::string& path) {
    std::uint32_t checksum = 0;
    // Files without a checksum are fine for this function; it says on standard output what it
    // finds.
    const bool intact = kxFile::checkChecksum(path, checksum);
    std::cout << (intact ? "intact" : "DAMAGED") << '\n';
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string path = argv[1];

    if (!kxFile::appendChecksum(path, kxFile::getChecksum(path))) {
        kxFile::perror(path);
        return 1;
    }
    verify(path);

    std::fstream(path, std::ios::in | std::ios::out | std::ios::binary).put('X');
    verify(path);
}
