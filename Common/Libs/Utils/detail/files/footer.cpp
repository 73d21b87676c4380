// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/files/footer.h"

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "detail/crc/boost_lanes.h"
#include "detail/files/handle.h"

namespace kx::detail {
namespace {

constexpr std::size_t footerSize = 16, markSize = 8, verifyingBlockSize = 81920;

constexpr std::string_view checksumMark("\0TALOCRC", markSize), metaMark = "TALOMETA";

bool hasMark(const std::string& footer, std::string_view mark) {
    return footer.compare(0, markSize, mark) == 0;
}

bool goTo(std::FILE* file, std::uint64_t position, kxFile::ChecksumInfo& info) {
    if (fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0) return true;
    info.error = errno;
    return false;
}

// The 16 bytes at `position`, or "" if they cannot be read, so that bytes read earlier are not
// taken for them.
std::string readFooter(std::FILE* file, std::uint64_t position, kxFile::ChecksumInfo& info) {
    std::string footer(footerSize, '\0');
    if (!goTo(file, position, info)) return {};
    return std::fread(footer.data(), 1, footerSize, file) == footerSize ? footer : std::string();
}

// The crc32Of() of a file; `done` is given the size of each block.
template <class Done>
std::uint32_t crc32OfBlocks(std::FILE* file, std::uint64_t length, std::size_t maxBlock,
                            Done done) {
    BoostCrc32 crc;
    const auto capacity = static_cast<std::size_t>(std::min<std::uint64_t>(length, maxBlock));
    const std::unique_ptr<char[]> block(new char[capacity]);  // not cleared, since it is read into
    while (length > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(length, capacity));
        const std::size_t size = std::fread(block.get(), 1, wanted, file);
        processBytesInLanes(crc, block.get(), size);
        const ErrnoKeeper keeper;
        done(size);
        if (size < wanted) break;
        length -= size;
    }
    return crc.checksum();
}

}  // namespace

std::uint32_t crc32Of(const void* data, std::size_t size) {
    BoostCrc32 crc;
    processBytesInLanes(crc, data, size);
    return crc.checksum();
}

std::uint32_t crc32Of(std::FILE* file, std::uint64_t length, std::size_t maxBlock) {
    return crc32OfBlocks(file, length, maxBlock, [](std::size_t) {});
}

std::string checksumDigits(std::uint32_t checksum) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08" PRIX32, checksum);
    return digits;
}

std::string checksumFooter(std::uint32_t checksum) {
    return std::string(checksumMark) + checksumDigits(checksum);
}

void findChecksum(std::FILE* file, std::uint32_t offset, const kxFile::Progress& progress,
                  kxFile::ChecksumInfo& info) {
    using State = kxFile::ChecksumInfo::State;
    info.state = State::noFooter;
    const off_t size = sizeOf(file);
    if (size < 0) info.error = errno;
    if (size < static_cast<off_t>(offset) + static_cast<off_t>(footerSize)) return;
    std::uint64_t position = static_cast<std::uint64_t>(size) - footerSize;
    std::string footer = readFooter(file, position, info);

    if (hasMark(footer, metaMark)) {
        info.hasMetaFooter = true;
        info.metaFooterAt = position;
        const std::string text = footer.substr(markSize);
        char* end = nullptr;
        const std::uint64_t distance = std::strtoul(text.c_str(), &end, 16);
        if (end == text.c_str()) {
            info.state = State::badMetaDistance;
            return;
        }
        if (distance > position - offset) return;  // it would begin before the protected data
        position -= distance;
        footer = readFooter(file, position, info);
    }
    if (!hasMark(footer, checksumMark)) return;

    info.footerAt = position;
    info.stored = footer.substr(markSize);
    if (!goTo(file, offset, info)) return;
    info.computed =
        crc32OfBlocks(file, position - offset, verifyingBlockSize, [&](std::size_t bytes) {
            info.covered += bytes;
            if (progress) progress(bytes);
        });
    info.state = info.stored == checksumDigits(info.computed) ? State::correct : State::incorrect;
}

}  // namespace kx::detail
