// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 by carry-less multiplication of 64 bytes at a time.
#include "detail/crc32.h"
#include "detail/crc32_fold.h"

#define KXUTILS_TARGET \
    __attribute__((target("avx512bw,avx512vl,avx512vbmi2,vpclmulqdq,pclmul,sse4.1,bmi2")))

namespace kx::detail {
namespace {

bool usable() {
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("vpclmulqdq") &&
           __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("bmi2");
}

struct alignas(64) Factors {
    FoldFactors quarters[4];
};
constexpr Factors allQuarters(int n) {
    const FoldFactors f = foldFactors(n);
    return {{f, f, f, f}};
}
constexpr Factors over64 = allQuarters(512), over128 = allQuarters(1024),
                  over192 = allQuarters(1536), over256 = allQuarters(2048);
// Each quarter over what is behind it in the block, and over the 32 bits of zeros at the end.
constexpr Factors toTheEnd = {
    {foldFactors(384 + 32), foldFactors(256 + 32), foldFactors(128 + 32), foldFactors(32)}};

KXUTILS_TARGET inline __m512i load(const void* p) { return _mm512_loadu_si512(p); }

KXUTILS_TARGET inline __m512i fold(__m512i block, const Factors& factors, __m512i next) {
    const __m512i k = load(&factors);
    return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(block, k, 0x00),
                                     _mm512_clmulepi64_epi128(block, k, 0x11), next,
                                     /*the XOR of all three*/ 0x96);
}

KXUTILS_TARGET inline std::uint32_t registerAfter64(__m512i block) {
    const __m512i quarters = fold(block, toTheEnd, _mm512_setzero_si512());
    // With a mask, even if it keeps all: GCC 12 warns about its own forms without (bug 105593).
    const __m256i halves = _mm256_xor_si256(_mm512_maskz_extracti64x4_epi64(0xFF, quarters, 0),
                                            _mm512_maskz_extracti64x4_epi64(0xFF, quarters, 1));
    const __m128i sum =
        _mm_xor_si128(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
    return remainderOf96(_mm_srli_si128(sum, 4));
}

KXUTILS_TARGET std::uint32_t calc(const void* data, unsigned long length, std::uint32_t previous) {
    const auto* p = static_cast<const char*>(data);
    const std::uint32_t crc = ~previous;
    const __m128i start = _mm_cvtsi32_si128(static_cast<int>(crc));

    // A message may begin with zeros as long as the register is zero: bytes that do not fill a
    // block move to its end, after the start value has been added. Of a start value that does not
    // fit into them the rest comes behind them.
    if (length <= 16) {
        const auto count = static_cast<unsigned int>(length);
        const auto lower = static_cast<__mmask16>(_bzhi_u32(0xFFFF, count));
        const auto upper = static_cast<__mmask16>(0xFFFF0000 >> count);
        const __m128i bytes = _mm_xor_si128(_mm_maskz_loadu_epi8(lower, p), start);
        const std::uint32_t sum = registerAfter16(_mm_maskz_expand_epi8(upper, bytes));
        return ~(count < 4 ? sum ^ (crc >> 8 * count) : sum);
    }
    const unsigned long count = (length - 1) % 64 + 1;
    const __m512i bytes = _mm512_xor_si512(
        _mm512_maskz_loadu_epi8(_bzhi_u64(~0ULL, static_cast<unsigned int>(count)), p),
        _mm512_zextsi128_si512(start));
    __m512i a = _mm512_maskz_expand_epi8(~0ULL << (64 - count), bytes);
    __m512i rest = _mm512_zextsi128_si512(
        _mm_cvtsi32_si128(count < 4 ? static_cast<int>(crc >> 8 * count) : 0));

    const char* const end = p + length;
    for (p += count; (end - p) % 256 != 0; p += 64) {
        a = fold(a, over64, _mm512_xor_si512(load(p), rest));
        rest = _mm512_setzero_si512();
    }
    if (p != end) {
        // Four chains side by side hide the latency of the multiplications.
        a = fold(a, over64, _mm512_xor_si512(load(p), rest));
        __m512i b = load(p + 64), c = load(p + 128), d = load(p + 192);
        for (p += 256; p != end; p += 256) {
            a = fold(a, over256, load(p));
            b = fold(b, over256, load(p + 64));
            c = fold(c, over256, load(p + 128));
            d = fold(d, over256, load(p + 192));
        }
        a = fold(a, over192, fold(b, over128, fold(c, over64, d)));
    }
    return ~registerAfter64(a);
}

}  // namespace

Crc32Kernel crc32Vpclmulqdq() { return {"vpclmulqdq", usable, calc}; }

}  // namespace kx::detail
