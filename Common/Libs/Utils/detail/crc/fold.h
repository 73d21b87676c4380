// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Constants and last steps of CRC-32 by carry-less multiplication (Gopal, Ozturk, Guilford and
// others: Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction, Intel, 2009).
//
// The bytes of a message are a polynomial, reflected like the register: the lowest bit of the first
// byte is the highest coefficient. A start value of the register is XORed into the first four
// bytes. A part that stands n bits before the end of a block counts as its polynomial times x^n.
// Multiplying it by x^n mod P instead makes it short enough to be added to the block; this is
// called folding.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "detail/crc/arithmetic.h"

namespace kx::detail {

/// The factor by which a quadword is multiplied to fold it over `n` bits. It is x^(n-1) and not x^n
/// because the product of two reflected quadwords is one bit shorter than their reflected product.
constexpr std::uint64_t foldFactor(int n) {
    return std::uint64_t{crc32BitSteps(0x80000000, n - 1)} << 32;
}
// The paper's k5, for x^64; the paper shifts it by one bit instead.
static_assert(foldFactor(65) >> 31 == 0x163CD6124);

/// The factors of the two quadwords of 16 bytes; the first stands 64 bits before the second.
struct alignas(16) FoldFactors {
    std::uint64_t first, second;
};
constexpr FoldFactors foldFactors(int n) { return {foldFactor(n + 64), foldFactor(n)}; }

/// The quotient of x^95 by P: 64 coefficients, reflected. Long division: the quotient has a term
/// wherever a step takes x^32 out of the register.
constexpr std::uint64_t divideByP() {
    std::uint64_t quotient = 0;
    std::uint32_t remainder = 0x80000000;  // x^0
    for (int step = 0; step < 95; ++step) {
        quotient = quotient >> 1 | std::uint64_t{remainder & 1} << 63;
        remainder = crc32BitSteps(remainder, 1);
    }
    return quotient;
}
// The paper's u, the quotient of x^64, is the upper half.
static_assert((divideByP() & 0x1FFFFFFFF) == 0x1F7011641);

/// The remainder modulo P of the polynomial in the first 12 bytes of `s` (Barrett reduction). P is
/// contained in them as often as their first 8 bytes times the above quotient says, so that
/// multiple of P is subtracted.
__attribute__((target("pclmul,sse4.1"))) inline std::uint32_t remainderOf96(__m128i s) {
    alignas(16) static constexpr std::uint64_t factors[2] = {divideByP(),
                                                             std::uint64_t{crc32Polynomial} << 1};
    const __m128i k = _mm_load_si128(reinterpret_cast<const __m128i*>(factors));
    const __m128i times = _mm_clmulepi64_si128(s, k, 0x00);
    const __m128i multiple = _mm_clmulepi64_si128(times, k, 0x10);
    return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(s, multiple), 2));
}

/// The register after the 16 bytes of `block`: their remainder modulo P once multiplied by x^32.
__attribute__((target("pclmul,sse4.1"))) inline std::uint32_t registerAfter16(__m128i block) {
    // Fold the first half over the second and over the 32 bits of zeros that x^32 stands for.
    const __m128i factor = _mm_cvtsi64_si128(static_cast<std::int64_t>(foldFactor(64 + 32)));
    const __m128i first = _mm_clmulepi64_si128(block, factor, 0x00);
    return remainderOf96(_mm_xor_si128(_mm_srli_si128(first, 4), _mm_srli_si128(block, 8)));
}

}  // namespace kx::detail
