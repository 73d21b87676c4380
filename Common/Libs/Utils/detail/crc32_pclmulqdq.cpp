// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 by carry-less multiplication of 16 bytes at a time.
#include "detail/crc32.h"
#include "detail/crc32_fold.h"
#include "kxCRC32.h"

#define KXUTILS_TARGET __attribute__((target("pclmul,sse4.1,ssse3")))

namespace kx::detail {
namespace {

bool usable() {
    return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("sse4.1") &&
           __builtin_cpu_supports("ssse3");
}

constexpr FoldFactors over16 = foldFactors(128), over32 = foldFactors(256),
                      over48 = foldFactors(384), over64 = foldFactors(512);

// The 16 bytes from `n` on move n bytes to the end of a register and fill it up with zeros.
constexpr unsigned char toTheEnd[32] = {
    0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80,
    0,    1,    2,    3,    4,    5,    6,    7,    8,    9,    10,   11,   12,   13,   14,   15};

KXUTILS_TARGET inline __m128i load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

KXUTILS_TARGET inline __m128i fold(__m128i block, const FoldFactors& factors, __m128i next) {
    const __m128i k = load(&factors);
    return _mm_xor_si128(next, _mm_xor_si128(_mm_clmulepi64_si128(block, k, 0x00),
                                             _mm_clmulepi64_si128(block, k, 0x11)));
}

KXUTILS_TARGET std::uint32_t calc(const void* data, unsigned long length, std::uint32_t previous) {
    if (length < 16) return kxCRC32::calc_8bytes(data, length, previous);
    const auto* p = static_cast<const char*>(data);
    const std::uint32_t crc = ~previous;

    // A message may begin with zeros as long as the register is zero: the first 1 to 16 bytes move
    // to the end of a block, after the start value has been added. Of a start value that does not
    // fit into them the rest comes behind them.
    const unsigned long count = (length - 1) % 16 + 1;
    const __m128i start = _mm_cvtsi32_si128(static_cast<int>(crc));
    __m128i a = _mm_shuffle_epi8(_mm_xor_si128(load(p), start), load(toTheEnd + count));
    __m128i rest = _mm_cvtsi32_si128(count < 4 ? static_cast<int>(crc >> 8 * count) : 0);

    const char* const end = p + length;
    for (p += count; (end - p) % 64 != 0; p += 16) {
        a = fold(a, over16, _mm_xor_si128(load(p), rest));
        rest = _mm_setzero_si128();
    }
    if (p != end) {
        // Four chains side by side hide the latency of the multiplications.
        a = fold(a, over16, _mm_xor_si128(load(p), rest));
        __m128i b = load(p + 16), c = load(p + 32), d = load(p + 48);
        for (p += 64; p != end; p += 64) {
            a = fold(a, over64, load(p));
            b = fold(b, over64, load(p + 16));
            c = fold(c, over64, load(p + 32));
            d = fold(d, over64, load(p + 48));
        }
        a = fold(a, over48, fold(b, over32, fold(c, over16, d)));
    }
    return ~registerAfter16(a);
}

}  // namespace

Crc32Kernel crc32Pclmulqdq() { return {"pclmulqdq", usable, calc}; }

}  // namespace kx::detail
