// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shared by the sub-commands that deal with checksum footers.
#pragma once

#include <cstdint>
#include <string>

#include "kxFile.h"
#include "report.h"

/// Eight upper-case hexadecimal digits.
std::string checksumDigits(std::uint32_t checksum);

/// A file under a path that can be opened more than once. Standard input ("-") is first copied to a
/// temporary file, which is removed with the object. Failures have Status::unreadable.
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

/// Calls kxFile::findChecksum. Throws a Failure with Status::unreadable if the file cannot be read
/// to its end or is not a regular file.
kxFile::ChecksumInfo findChecksum(const NamedFile& file, std::uint32_t offset,
                                  const kxFile::Progress& progress);

bool hasFooter(const kxFile::ChecksumInfo& info);

/// Returns ok, bad or noChecksum.
Status statusOf(const kxFile::ChecksumInfo& info);

/// Adds the checksums in the footer and of the data, if there is a footer.
void setValues(Json& fields, const kxFile::ChecksumInfo& info);
