// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxCRC32: every implementation, whole and in pieces, agrees with a division bit by bit; the hash
// agrees with its model.
#include "kxCRC32.h"

#include <vector>

#include "detail/crc/kernel.h"
#include "guarded.h"
#include "input.h"
#include "kxFile.h"
#include "reference/crc32_bitwise.h"
#include "reference/jesteress_reference.h"
#include "support.h"

using kxfuzz::requireEqual;

namespace {

struct Function {
    const char* name;
    std::uint32_t (*calc)(const void*, unsigned long, std::uint32_t);
};

std::vector<Function> functions() {
    std::vector<Function> all = {{"calc", kxCRC32::calc},
                                 {"calc_bitwise", kxCRC32::calc_bitwise},
                                 {"calc_halfbyte", kxCRC32::calc_halfbyte},
                                 {"calc_1byte", kxCRC32::calc_1byte},
                                 {"calc_4bytes", kxCRC32::calc_4bytes},
                                 {"calc_8bytes", kxCRC32::calc_8bytes}};
    for (const kx::detail::Crc32Kernel& kernel : kx::detail::crc32Kernels())
        if (kernel.usable()) all.push_back({kernel.name, kernel.calc});
    return all;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const std::vector<Function> all = functions();
    static const kxtest::Guarded memory(1 << 15);
    kxfuzz::Input input(data, size);
    const std::uint32_t previous = input.upTo(0xFFFFFFFF);
    const std::size_t offset = input.upTo(64);
    const std::size_t repetitions = 1 + input.upTo(3);
    std::string cuts = input.text();
    if (cuts.size() > 16) cuts.resize(16);
    const std::string piece = input.rest().substr(0, 4096);
    std::string bytes;
    for (std::size_t i = 0; i < repetitions; ++i) bytes += piece;

    const std::uint32_t expected = reference::crc32Bitwise(bytes, previous);
    for (const Function& function : all) {
        const char* const last = memory.atEnd(bytes);
        requireEqual(function.name, function.calc(last, bytes.size(), previous), expected);
        const char* const first = memory.atBegin(bytes, offset);
        std::uint32_t crc = previous;
        std::size_t at = 0;
        for (const char c : cuts) {
            const std::size_t n = static_cast<unsigned char>(c) * (bytes.size() - at) / 255;
            crc = function.calc(first + at, n, crc);
            at += n;
        }
        crc = function.calc(first + at, bytes.size() - at, crc);
        requireEqual(function.name, crc, expected);
    }
    const char* const last = memory.atEnd(bytes);
    requireEqual("getID", kxFile::getID(last, static_cast<std::uint32_t>(bytes.size())),
                 reference::crc32Bitwise(bytes));
    requireEqual("Jesteress", kxCRC32::calc_FNV1A_Jesteress(last, bytes.size(), previous),
                 reference::jesteress(bytes, previous));
    const char* const first = memory.atBegin(bytes, offset);
    requireEqual("Jesteress elsewhere",
                 kxCRC32::calc_FNV1A_Jesteress(first, bytes.size(), previous),
                 reference::jesteress(bytes, previous));
    return 0;
}
