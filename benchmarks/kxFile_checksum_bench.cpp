// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxFile.h"

#include <algorithm>
#include <boost/crc.hpp>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <vector>

#include "kxbench.h"
#include "scratch.h"

namespace {

constexpr std::size_t footerSize = 16;

// Calls `use` for each block of up to `length` bytes of the file.
template <class Use>
void readBlocks(std::FILE* file, std::size_t length, std::size_t blockSize, Use use) {
    std::vector<char> block(std::min(length, blockSize));
    while (length > 0) {
        const std::size_t size = std::fread(block.data(), 1, std::min(length, block.size()), file);
        if (size == 0) break;
        use(block.data(), size);
        length -= size;
    }
}

// Both functions with a single CRC, written in the plainest way.
std::uint32_t plainSum(std::FILE* file, std::size_t length, std::size_t blockSize) {
    boost::crc_32_type crc;
    readBlocks(file, length, blockSize,
               [&](const char* block, std::size_t size) { crc.process_bytes(block, size); });
    return crc.checksum();
}

std::uint32_t plainGet(const char* path) {
    std::FILE* const file = std::fopen(path, "rb");
    const std::uint32_t sum = plainSum(file, SIZE_MAX, 8192);
    std::fclose(file);
    return sum;
}

std::uint32_t plainCheck(const char* path) {
    std::FILE* const file = std::fopen(path, "rb");
    char footer[footerSize], digits[9];
    std::fseek(file, -long{footerSize}, SEEK_END);
    const long end = std::ftell(file);
    const bool found = std::fread(footer, 1, footerSize, file) == footerSize &&
                       std::memcmp(footer, "\0TALOCRC", 8) == 0;
    std::rewind(file);
    const std::uint32_t sum = found ? plainSum(file, static_cast<std::size_t>(end), 81920) : 0;
    std::fclose(file);
    std::snprintf(digits, sizeof digits, "%08X", sum);
    if (!found || std::memcmp(digits, footer + 8, 8) != 0) return 0;
    std::printf("Found correct file checksum %s.\n", digits);
    return sum;
}

std::uint32_t kxCheck(const char* path) {
    std::uint32_t sum = 0;
    kxFile::checkChecksum(path, sum);
    return sum;
}

std::uint32_t boostSum(const std::string& bytes) {
    boost::crc_32_type crc;
    crc.process_bytes(bytes.data(), bytes.size());
    return crc.checksum();
}

void addRows(const std::string& operation, std::size_t size, std::size_t blockSize,
             const std::string& path, std::uint32_t expected, std::uint32_t (*ours)(const char*),
             std::uint32_t (*plain)(const char*)) {
    const auto add = [&](const char* name, std::uint32_t (*sum)(const char*)) {
        kxbench::contender(
            operation, name, size, [=] { benchmark::DoNotOptimize(sum(path.c_str())); },
            [=] { return sum(path.c_str()) == expected; });
    };
    add("kxUtils", ours);
    add("plain loop", plain);
    const auto readOnly = [=] {
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        readBlocks(file, size, blockSize,
                   [](const char* block, std::size_t) { benchmark::DoNotOptimize(block[0]); });
        std::fclose(file);
    };
    kxbench::contender(operation, "limit reading", size, readOnly, [] { return true; });
}

const bool registered = [] {
    // The lines printed for correct files are of no use to the program that reads the results.
    // Those results go to the earlier standard output, which std::cout keeps.
    stdout = std::fopen("/dev/null", "w");
    for (const std::size_t size : {1024UL, 4096UL, 65536UL, 16UL << 20}) {
        const std::string path = kxbench::scratch("stamped" + std::to_string(size));
        const std::string data = kxbench::randomBytes(size).substr(footerSize);
        std::ofstream(path, std::ios::binary) << data;
        kxFile::appendChecksum(path, boostSum(data));
        addRows(
            "kxFile::getChecksum", size, 8192, path, boostSum(kxbench::slurp(path)),
            [](const char* file) { return kxFile::getChecksum(file); }, plainGet);
        addRows("kxFile::checkChecksum", size, 81920, path, boostSum(data), kxCheck, plainCheck);
    }
    return true;
}();

}  // namespace
