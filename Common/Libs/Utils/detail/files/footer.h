// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 of files and memory, and the checksum footer of a stamped file. Nothing here prints or
// logs.
//
// A stamped file is [prefix, not covered][protected data][checksum footer], optionally followed by
// [meta data][meta footer]. Both footers have 16 bytes:
//
//   checksum footer  00 "TALOCRC" and the CRC-32 of the protected data as eight upper-case digits
//   meta footer      "TALOMETA" and L as eight hexadecimal digits, where L is the distance from the
//                    first byte of the checksum footer to the first byte of the meta footer
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

#include "kxFile.h"

namespace kx::detail {

/// The standard CRC-32 (IEEE 802.3, zlib; polynomial 0x04C11DB7 reflected) of `size` bytes.
std::uint32_t crc32Of(const void* data, std::size_t size);

/// The CRC-32 of at most `length` bytes from the file's current position, read in blocks of
/// `maxBlock` bytes. A block that comes back short ends the data, even if the reason is a read
/// error.
std::uint32_t crc32Of(std::FILE* file, std::uint64_t length, std::size_t maxBlock);

/// A checksum in the form a footer shows, such as "0000ABCD".
std::string checksumDigits(std::uint32_t checksum);

/// The 16 bytes of a checksum footer.
std::string checksumFooter(std::uint32_t checksum);

/// Does the work of kxFile::findChecksum for an open file: takes a newly made `info` and fills in
/// what follows from the file's content. If a read fails, errno is the error of that read.
void findChecksum(std::FILE* file, std::uint32_t offset, const kxFile::Progress& progress,
                  kxFile::ChecksumInfo& info);

}  // namespace kx::detail
