// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Protects a file against damage: appends a checksum, verifies it, changes one byte and verifies
// again.
//
//     stamp_and_verify FILE
#include <cerrno>
#include <fstream>
#include <iostream>
#include <string>

#include <kxFile.h>

namespace {

// Returns false if the file could not be read. kxFile::checkChecksum() would print its findings by
// itself, but it says that a file is fine even if it has no checksum or cannot be read.
bool verify(const std::string& path) {
    using State = kxFile::ChecksumInfo::State;
    const kxFile::ChecksumInfo found = kxFile::findChecksum(path);
    if (found.error != 0) {
        errno = found.error;
        kxFile::perror(path);
        return false;
    }
    std::cout << found.stored << (found.state == State::correct ? " intact" : " DAMAGED") << '\n';
    return true;
}

bool changeOneByte(const std::string& path) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.put('X');
    file.close();  // only now is it known whether everything was written
    return file.good();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    const std::string path = argv[1];

    // Without this check appendChecksum() would create a missing file.
    if (!kxFile::checkRead(path, /*ask=*/false, /*log=*/true)) return 1;
    if (!kxFile::appendChecksum(path, kxFile::getChecksum(path))) {
        kxFile::perror(path);
        return 1;
    }
    if (!verify(path)) return 1;

    if (!changeOneByte(path)) {
        kxFile::perror(path);
        return 1;
    }
    if (!verify(path)) return 1;
    return std::cout.flush() ? 0 : 1;  // the terminal may be a full disk
}
