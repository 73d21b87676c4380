// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "integrity.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <fstream>

#include "file_copy.h"
#include "kxFile.h"

namespace {

void damageByte(const std::string& path, std::uint64_t position) {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekg(static_cast<std::streamoff>(position));
    const char damaged = static_cast<char>(~file.get());
    file.seekp(static_cast<std::streamoff>(position));
    file.put(damaged);
}

bool stampAndVerify(const std::string& copy) {
    std::uint32_t checksum = 0;
    return kxFile::appendChecksum(copy, kxFile::getChecksum(copy)) &&
           kxFile::checkChecksum(copy, checksum);
}

}  // namespace

bool tryChecksum(const std::string& path) {
    const std::string directory = kxFile::getTmpDir();
    if (directory.empty()) return false;  // the log says why

    // getTmpName() creates no file, so another process could be given the same name: ours carries
    // the process's number. Registered at once, the copy goes whatever happens to it.
    const std::string prefix = "talo" + std::to_string(getpid()) + '-';
    const std::string copy = directory + '/' + kxFile::getTmpName(directory, prefix);
    kxFile::addTmpFile(copy);

    bool isAsItShould = copyFile(path, copy) && stampAndVerify(copy);
    const std::uint64_t size = kxFile::getFileSize(path);
    if (isAsItShould && size > 0) {
        std::puts("Damaging one byte of the copy:");
        damageByte(copy, size / 2);
        std::uint32_t checksum = 0;
        isAsItShould = !kxFile::checkChecksum(copy, checksum);
    }
    kxFile::removeTmpFiles();
    return isAsItShould;
}
