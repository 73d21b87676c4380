// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "integrity.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <iomanip>
#include <iostream>

#include "file_copy.h"
#include "kxFile.h"
#include "kxLog.h"

namespace {

using State = kxFile::ChecksumInfo::State;

bool damageByte(const std::string& path, std::uint64_t position) {
    OpenFile file(open(path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    const auto at = static_cast<off_t>(position);
    char byte = 0;
    if (!file || pread(file.descriptor(), &byte, 1, at) != 1) return false;
    byte = static_cast<char>(~byte);
    return pwrite(file.descriptor(), &byte, 1, at) == 1 && file.close();
}

// Prints the checksum of the copy's content as a row of the report. checkChecksum() would say that
// a file is fine even if it cannot be read; findChecksum() tells the difference.
bool verify(const std::string& copy, State expected, const char* title) {
    const kxFile::ChecksumInfo found = kxFile::findChecksum(copy);
    if (found.error != 0) {
        errno = found.error;
        return fail("Couldn't read '" + copy + "'");
    }
    const bool isExpected = found.state == expected;
    if (!isExpected) kxLog::error("'%s' has an unexpected checksum", copy.c_str());
    std::cout << "  " << title << std::hex << std::uppercase << std::setfill('0') << std::setw(8)
              << found.computed << std::dec << (isExpected ? "" : " (unexpected)") << '\n';
    return isExpected;
}

bool copyAndVerify(const SourceFile& source, const std::string& copy) {
    std::uint32_t checksum = 0;
    OpenFile file = createNew(copy, 0600);
    if (!file) return fail("Couldn't create '" + copy + "'");
    if (!copyContent(source, file, checksum)) return false;
    if (!file.close()) return fail("Couldn't write '" + copy + "'");
    // The checksum of what was read. If the copy matches it, everything has arrived.
    if (!kxFile::appendChecksum(copy, checksum)) return fail("Couldn't stamp '" + copy + "'");
    if (!verify(copy, State::correct, "checksum   ")) return false;
    if (source.size == 0) return true;  // there is nothing to damage
    if (!damageByte(copy, source.size / 2)) return fail("Couldn't change '" + copy + "'");
    return verify(copy, State::incorrect, "damaged    ");
}

}  // namespace

bool tryChecksum(const SourceFile& source, const std::string& directory) {
    const std::string copy = directory + '/' + kxFile::getTmpName(directory, "copy");
    kxFile::addTmpFile(copy);  // removed at the end, whatever happens
    const bool isAsItShould = copyAndVerify(source, copy);
    return (kxFile::remove(copy) || fail("Couldn't remove '" + copy + "'")) && isAsItShould;
}
