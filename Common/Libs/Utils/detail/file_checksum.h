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

namespace kx::detail {

/// The standard CRC-32 (IEEE 802.3, zlib; polynomial 0x04C11DB7 reflected) of `size` bytes.
std::uint32_t crc32Of(const void* data, std::size_t size);

/// The CRC-32 of at most `length` bytes from the file's position on, read in blocks of `maxBlock`
/// bytes. A block that comes back short, also by a read error, ends the data.
std::uint32_t crc32Of(std::FILE* file, std::uint64_t length, std::size_t maxBlock);

/// A checksum as a footer shows it: "0000ABCD".
std::string checksumDigits(std::uint32_t checksum);

/// The 16 bytes of a checksum footer.
std::string checksumFooter(std::uint32_t checksum);

/// What inspectChecksum() has found in a file.
struct ChecksumFinding {
    enum class Kind {
        notOpened,        ///< the path is empty or the file cannot be opened for reading
        noFooter,         ///< no checksum footer
        badMetaDistance,  ///< a meta footer whose L has no hexadecimal digit
        correct,          ///< a footer that matches the data
        incorrect         ///< a footer that does not
    };
    Kind kind = Kind::notOpened;
    bool hasMetaFooter = false;      ///< whatever `kind` says
    std::uint64_t metaFooterAt = 0;  ///< byte position in the file; set if hasMetaFooter
    std::uint64_t footerAt = 0;      ///< byte position in the file; set for the last two kinds,
    std::string stored;              ///< as are the eight characters of the checksum footer
    std::uint32_t computed = 0;      ///< and the CRC-32 of the bytes [offset, footerAt)
};

/// Looks for the file's checksum footer and compares it, character by character, with the checksum
/// of the data from `offset` to the footer. An `offset` beyond the end of the file, an L that leads
/// before `offset` or the file's start, and an end that cannot be read all count as no footer.
///
/// L is read by the rules of std::strtoul: blanks, a sign and "0x" may come first, and what follows
/// the digits is ignored.
ChecksumFinding inspectChecksum(const std::string& path, std::uint32_t offset);

}  // namespace kx::detail
