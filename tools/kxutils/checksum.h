// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the sub-commands about checksum footers share.
#pragma once

#include <cstdint>
#include <string>

#include "kxFile.h"
#include "report.h"

/// Eight upper-case hexadecimal digits.
std::string checksumDigits(std::uint32_t checksum);

/// A file under a path that can be opened more than once. Standard input ("-") is copied to a
/// temporary file first, which goes with the object. Failures are of Status::unreadable.
class NamedFile {
public:
    explicit NamedFile(const std::string& name);
    ~NamedFile();
    NamedFile(const NamedFile&) = delete;
    NamedFile& operator=(const NamedFile&) = delete;

    const std::string& path() const { return _path; }

private:
    std::FILE* _copy = nullptr;
    std::string _path;
};

/// kxFile::findChecksum; a Failure of Status::unreadable if the file cannot be read to its end or
/// is no regular file.
kxFile::ChecksumInfo findFooter(const NamedFile& file, std::uint32_t offset,
                                const kxFile::Progress& progress);

bool hasFooter(const kxFile::ChecksumInfo& info);

/// ok, bad or noChecksum.
Status statusOf(const kxFile::ChecksumInfo& info);

/// Adds the values that the footer and the data have, if there is a footer.
void setValues(Json& fields, const kxFile::ChecksumInfo& info);
