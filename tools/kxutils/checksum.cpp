// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "checksum.h"

#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstring>

std::string checksumDigits(std::uint32_t checksum) {
    std::array<char, 9> digits{};
    std::snprintf(digits.data(), digits.size(), "%08" PRIX32, checksum);
    return digits.data();
}

NamedFile::NamedFile(const std::string& name) : _path(name) {
    if (name != "-") {
        struct stat info {};
        if (stat(name.c_str(), &info) != 0) throw systemFailure(Status::unreadable);
        // Opening a pipe would wait for its other end.
        if (!S_ISREG(info.st_mode))
            throw Failure(Status::unreadable,
                          S_ISDIR(info.st_mode) ? "Is a directory" : "not a regular file");
        return;
    }
    _copy = std::tmpfile();
    if (!_copy) throw systemFailure(Status::unreadable);
    Input input(name);
    std::string block(blockSize, '\0');
    while (const std::size_t n = input.readSome(block.data(), block.size()))
        if (!writeAll(fileno(_copy), {block.data(), n})) throw systemFailure(Status::unreadable);
    _path = "/dev/fd/" + std::to_string(fileno(_copy));
}

NamedFile::~NamedFile() {
    if (_copy) std::fclose(_copy);
}

kxFile::ChecksumInfo findChecksum(const NamedFile& file, std::uint32_t offset,
                                  const kxFile::Progress& progress) {
    kxFile::ChecksumInfo info = kxFile::findChecksum(file.path(), offset, progress);
    if (info.error != 0) throw Failure(Status::unreadable, std::strerror(info.error));
    if (hasFooter(info) && info.covered < info.footerAt - offset)
        throw Failure(Status::unreadable, "the file has shrunk while it was read");
    return info;
}

bool hasFooter(const kxFile::ChecksumInfo& info) {
    using State = kxFile::ChecksumInfo::State;
    return info.state == State::correct || info.state == State::incorrect;
}

Status statusOf(const kxFile::ChecksumInfo& info) {
    if (!hasFooter(info)) return Status::noChecksum;
    return info.state == kxFile::ChecksumInfo::State::correct ? Status::ok : Status::bad;
}

void setValues(Json& fields, const kxFile::ChecksumInfo& info) {
    if (!hasFooter(info)) return;
    setBytes(fields, "stored", info.stored);
    fields["computed"] = checksumDigits(info.computed);
}
