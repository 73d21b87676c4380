// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 by carry-less multiplication of 64 bytes at a time.
#define KXUTILS_TARGET \
    __attribute__((target("avx512bw,avx512vl,avx512vbmi2,vpclmulqdq,pclmul,sse4.1,bmi2")))

#include "detail/crc/fold.h"
#include "detail/crc/fold_message.h"
#include "detail/crc/kernel.h"

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
// Fold each quarter over what comes after it in the block and over the 32 bits of zeros at the end.
constexpr Factors toTheEnd = {
    {foldFactors(384 + 32), foldFactors(256 + 32), foldFactors(128 + 32), foldFactors(32)}};

struct Vector64 {
    using Block = __m512i;

    static constexpr Factors overBlocks[] = {allQuarters(512), allQuarters(1024), allQuarters(1536),
                                             allQuarters(2048)};

    KXUTILS_TARGET static Block load(const void* p) { return _mm512_loadu_si512(p); }
    KXUTILS_TARGET static Block add(Block a, Block b) { return _mm512_xor_si512(a, b); }
    KXUTILS_TARGET static Block word(std::uint32_t crc) {
        return _mm512_zextsi128_si512(_mm_cvtsi32_si128(static_cast<int>(crc)));
    }
    KXUTILS_TARGET static Block loadAtEnd(const char* p, unsigned long count, std::uint32_t start) {
        const __mmask64 first = _bzhi_u64(~0ULL, static_cast<unsigned int>(count));
        const Block bytes = add(_mm512_maskz_loadu_epi8(first, p), word(start));
        return _mm512_maskz_expand_epi8(~0ULL << (64 - count), bytes);
    }
    KXUTILS_TARGET static Block fold(Block block, const Factors& factors, Block next) {
        const Block k = load(&factors);
        return _mm512_ternarylogic_epi64(_mm512_clmulepi64_epi128(block, k, 0x00),
                                         _mm512_clmulepi64_epi128(block, k, 0x11), next,
                                         /*the XOR of all three*/ 0x96);
    }
};

KXUTILS_TARGET inline std::uint32_t registerAfter64(__m512i block) {
    const __m512i quarters = Vector64::fold(block, toTheEnd, _mm512_setzero_si512());
    // With a mask, although it keeps everything: GCC 12 warns about its own forms without one (bug
    // 105593).
    const __m256i halves = _mm256_xor_si256(_mm512_maskz_extracti64x4_epi64(0xFF, quarters, 0),
                                            _mm512_maskz_extracti64x4_epi64(0xFF, quarters, 1));
    const __m128i sum =
        _mm_xor_si128(_mm256_castsi256_si128(halves), _mm256_extracti128_si256(halves, 1));
    return remainderOf96(_mm_srli_si128(sum, 4));
}

/// The register after up to 16 bytes. It does what foldMessage() does with half the work.
KXUTILS_TARGET inline std::uint32_t registerAfterShort(const char* p, unsigned long length,
                                                       std::uint32_t crc) {
    const auto count = static_cast<unsigned int>(length);
    const auto lower = static_cast<__mmask16>(_bzhi_u32(0xFFFF, count));
    const auto upper = static_cast<__mmask16>(0xFFFF0000 >> count);
    const __m128i start = _mm_cvtsi32_si128(static_cast<int>(crc));
    const __m128i bytes = _mm_xor_si128(_mm_maskz_loadu_epi8(lower, p), start);
    const std::uint32_t sum = registerAfter16(_mm_maskz_expand_epi8(upper, bytes));
    return count < 4 ? sum ^ (crc >> 8 * count) : sum;
}

KXUTILS_TARGET std::uint32_t calc(const void* data, unsigned long length, std::uint32_t previous) {
    const auto* p = static_cast<const char*>(data);
    if (length <= 16) return ~registerAfterShort(p, length, ~previous);
    return ~registerAfter64(foldMessage<Vector64>(p, length, ~previous));
}

}  // namespace

Crc32Kernel crc32Vpclmulqdq() { return {"vpclmulqdq", usable, calc}; }

}  // namespace kx::detail
