// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 by carry-less multiplication of 16 bytes at a time.
#define KXUTILS_TARGET __attribute__((target("pclmul,sse4.1,ssse3")))

#include "detail/crc/fold.h"
#include "detail/crc/fold_message.h"
#include "detail/crc/kernel.h"

namespace kx::detail {
namespace {

bool usable() {
    return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1") &&
           __builtin_cpu_supports("ssse3");
}

// As a shuffle mask, the 16 bytes from `n` on move n bytes to the end of a register and put zeros
// in front.
constexpr unsigned char toTheEnd[32] = {
    0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
    0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15};

struct Vector16 {
    using Block = __m128i;

    static constexpr FoldFactors overBlocks[] = {foldFactors(128), foldFactors(256),
                                                 foldFactors(384), foldFactors(512)};

    KXUTILS_TARGET static Block load(const void* p) {
        return _mm_loadu_si128(static_cast<const Block*>(p));
    }
    KXUTILS_TARGET static Block add(Block a, Block b) { return _mm_xor_si128(a, b); }
    KXUTILS_TARGET static Block word(std::uint32_t crc) {
        return _mm_cvtsi32_si128(static_cast<int>(crc));
    }
    /// The 16 bytes at `p` must be readable.
    KXUTILS_TARGET static Block loadAtEnd(const char* p, unsigned long count, std::uint32_t start) {
        return _mm_shuffle_epi8(add(load(p), word(start)), load(toTheEnd + count));
    }
    KXUTILS_TARGET static Block fold(Block block, const FoldFactors& factors, Block next) {
        const Block k = load(&factors);
        return add(next,
                   add(_mm_clmulepi64_si128(block, k, 0x00), _mm_clmulepi64_si128(block, k, 0x11)));
    }
};

KXUTILS_TARGET std::uint32_t calc(const void* data, unsigned long length, std::uint32_t previous) {
    if (length < 16) return crc32EightBytes(data, length, previous);
    return ~registerAfter16(
        foldMessage<Vector16>(static_cast<const char*>(data), length, ~previous));
}

}  // namespace

Crc32Kernel crc32Pclmulqdq() { return {"pclmulqdq", usable, calc}; }

}  // namespace kx::detail
