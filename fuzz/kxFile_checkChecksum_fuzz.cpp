// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// File checksums: whatever is at the end of a file, the answers and messages follow the rules,
// which are written out here for the bytes of a file; and a file that has been stamped is found
// correct.
#include <optional>
#include <stdexcept>

#include "input.h"
#include "kxCRC32.h"
#include "kxFile.h"
#include "support.h"

using kxfuzz::require;
using kxfuzz::requireEqual;

namespace {

const std::string checksumMark("\0TALOCRC", 8), metaMark = "TALOMETA";

// Another implementation checks the files.
std::uint32_t crc(const std::string& bytes) {
    return kxCRC32::calc_8bytes(bytes.data(), bytes.size());
}

std::string hex(std::size_t number) {
    char digits[24];
    std::snprintf(digits, sizeof digits, "%08zX", number);
    return digits;
}

// Different ones at every place.
std::string mixedBytes(std::size_t count) {
    std::string bytes;
    for (std::uint32_t state = 1; bytes.size() < count; state = state * 1664525U + 1013904223U)
        bytes += static_cast<char>(state >> 24);
    return bytes;
}

// A file made of bytes, footers and meta footers, some of them right.
std::string randomFile(kxfuzz::Input& input, std::size_t offset) {
    std::string file;
    std::size_t lastFooter = 0;
    while (!input.empty()) {
        switch (input.upTo(7)) {
            case 0:
                file += input.text();
                break;
            case 1:
                file += std::string(input.byte(), static_cast<char>(input.byte()));
                break;
            case 2:  // sometimes more than the 81920 bytes that are read at a time
                if (file.size() < 1000)
                    file += mixedBytes(input.byte() > 0xF0 ? 0xFFFF + input.upTo(0xFFFF)
                                                           : input.upTo(2000));
                break;
            case 3:
                lastFooter = file.size();
                file += checksumMark;
                file +=
                    hex(lastFooter < offset ? 0 : crc(file.substr(offset, lastFooter - offset)));
                break;
            case 4:
                lastFooter = file.size();
                file += checksumMark + input.text();
                break;
            case 5:
                file += metaMark + hex(file.size() - lastFooter);
                break;
            case 6:
                file += metaMark + input.text();
                break;
            default:
                if (file.size() < 1000) file += file.substr(file.size() / 2);
                break;
        }
    }
    return file;
}

struct Answer {
    bool isAccepted = true, isThrown = false;
    std::uint32_t checksum = 0;
    std::string out;
    // For findChecksum; `stored` has no value if there is no footer.
    bool hasMeta = false;
    std::optional<std::string> stored;
    std::size_t footerAt = 0;
    std::uint32_t computed = 0;
};

Answer check(const std::string& file, std::size_t offset) {
    const std::string notFound = "Couldn't find file checksum!\n";
    Answer answer;
    if (file.size() < offset + 16) {
        answer.out = notFound;
        return answer;
    }
    std::size_t rest = file.size() - offset;
    std::string footer = file.substr(file.size() - 16);
    if (footer[0] == 'T') {
        if (footer.substr(0, 8) != metaMark) {
            answer.out = notFound;
            return answer;
        }
        answer.hasMeta = true;
        answer.out = "Found meta footer.\n";
        std::size_t distance = 0;
        try {
            distance = std::stoul(footer.substr(8).c_str(), nullptr, 16);
        } catch (const std::invalid_argument&) {
            answer.isThrown = true;
            return answer;
        }
        if (distance > rest - 16) {
            answer.out += notFound;
            return answer;
        }
        footer = file.substr(file.size() - 16 - distance, 16);
        rest -= distance;
    }
    if (footer.substr(0, 8) != checksumMark) {
        answer.out += notFound;
        return answer;
    }
    answer.stored = footer.substr(8);
    answer.footerAt = offset + rest - 16;
    answer.computed = crc(file.substr(offset, rest - 16));
    const std::string computed = hex(answer.computed);
    if (computed == *answer.stored) {
        answer.checksum = answer.computed;
        answer.out += "Found correct file checksum " + computed + ".\n";
    } else {
        answer.isAccepted = false;
        const std::string printed = answer.stored->c_str();
        answer.out += "Found incorrect file checksum " + computed + " != " + printed + "!\n";
    }
    return answer;
}

void checkAnswer(const std::string& path, const std::string& file, std::uint32_t offset) {
    const Answer expected = check(file, offset);
    std::uint32_t checksum = 1;
    bool isAccepted = true, isThrown = false;
    try {
        isAccepted = kxFile::checkChecksum(path, checksum, offset);
    } catch (const std::invalid_argument&) {
        isThrown = true;
    }
    requireEqual("exception", isThrown, expected.isThrown);
    requireEqual("answer", isAccepted, expected.isAccepted);
    requireEqual("checksum", checksum, expected.checksum);
    requireEqual("message", kxfuzz::takeOut(), expected.out);

    using State = kxFile::ChecksumInfo::State;
    std::uint64_t done = 0;
    const kxFile::ChecksumInfo info =
        kxFile::findChecksum(path, offset, [&done](std::uint64_t bytes) { done += bytes; });
    const State state = expected.isThrown     ? State::badMetaDistance
                        : !expected.stored    ? State::noFooter
                        : expected.isAccepted ? State::correct
                                              : State::incorrect;
    require(info.state == state, "findChecksum says something else");
    requireEqual("error", info.error, 0);
    requireEqual("meta footer", info.hasMetaFooter, expected.hasMeta);
    if (info.hasMetaFooter)
        requireEqual("place of the meta footer", info.metaFooterAt, file.size() - 16);
    if (expected.stored) {
        requireEqual("place of the footer", info.footerAt, expected.footerAt);
        requireEqual("stored text", info.stored, *expected.stored);
        requireEqual("computed checksum", info.computed, expected.computed);
        requireEqual("covered bytes", info.covered, expected.footerAt - offset);
        requireEqual("reported bytes", done, info.covered);
    }
    requireEqual("output of findChecksum", kxfuzz::takeOut(), std::string());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::holdConsole();
    kxfuzz::Input input(data, size);
    const std::uint32_t offset = input.flag() ? input.upTo(64) : input.upTo(0xFFFFFFFF);
    std::string file = randomFile(input, offset);
    const std::string path = kxfuzz::privateFolder() + "/file";
    kxfuzz::writeFile(path, file);
    checkAnswer(path, file, offset);

    const std::uint32_t start = crc(file.substr(0, 8192));
    requireEqual("getFileID", kxFile::getFileID(path),
                 std::to_string(file.size()) + std::to_string(start));
    if (offset > 0x7FFFFFFF) return 0;
    const std::uint32_t checksum = kxFile::getChecksum(path, static_cast<int>(offset));
    requireEqual("getChecksum", checksum, offset > file.size() ? 0 : crc(file.substr(offset)));
    if (offset > file.size()) return 0;
    require(kxFile::appendChecksum(path, checksum), "a footer cannot be appended");
    file += checksumMark + hex(checksum);
    requireEqual("stamped file", kxfuzz::readFile(path), file);
    checkAnswer(path, file, offset);
    std::uint32_t found = 0;
    require(kxFile::checkChecksum(path, found, offset), "a stamped file is not accepted");
    requireEqual("checksum of the stamped file", found, checksum);
    kxfuzz::takeOut();
    return 0;
}
