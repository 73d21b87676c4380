// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Calls one function on one file, so that a test can count its system calls.
#include <cstdint>
#include <string>

#include "kxFile.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    std::uint32_t checksum = 0;
    if (argv[1] == std::string("getChecksum")) return kxFile::getChecksum(argv[2]) != 0 ? 0 : 1;
    return kxFile::checkChecksum(argv[2], checksum) ? 0 : 1;
}
