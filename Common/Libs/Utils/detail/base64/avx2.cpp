// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64 with AVX2 (Mula and Lemire: Faster Base64 Encoding and Decoding Using AVX2 Instructions,
// ACM Transactions on the Web 12, 2018).
#include <immintrin.h>

#include "detail/base64/alphabet.h"
#include "detail/base64/decoder.h"
#include "detail/base64/kernel.h"

#define KXUTILS_TARGET __attribute__((target("avx2")))

namespace kx::detail {
namespace {

bool usable() { return __builtin_cpu_supports("avx2"); }

// Shuffles work within each half of a register, so both halves use the same table.
struct alignas(16) Bytes {
    signed char at[16];
};

KXUTILS_TARGET inline __m128i load(const void* p) {
    return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

KXUTILS_TARGET inline __m256i both(const Bytes& bytes) {
    return _mm256_broadcastsi128_si256(load(&bytes));
}

// --- Encoding ------------------------------------------------------------------------------------

// Each group b0 b1 b2 becomes the doubleword b1 b0 b2 b1, which has the six bits of every character
// side by side.
constexpr Bytes spread = {{1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10}};

// What to add to a value to get its character. Index: 0 for the values 26 to 51, 1 to 12 for 52 to
// 63, 13 for 0 to 25.
constexpr Bytes makeOffsets() {
    Bytes offsets{};
    for (unsigned int i = 0; i < 14; ++i) {
        const unsigned int value = i == 0 ? 26 : i == 13 ? 0 : 51 + i;
        offsets.at[i] = static_cast<signed char>(base64Alphabet[value] - static_cast<int>(value));
    }
    return offsets;
}
constexpr Bytes offsets = makeOffsets();

KXUTILS_TARGET unsigned long encode(const char* data, unsigned long n, char* out) {
    char* const begin = out;
    for (; n >= 28; data += 24, n -= 24, out += 32) {
        const __m256i bytes =
            _mm256_shuffle_epi8(_mm256_set_m128i(load(data + 12), load(data)), both(spread));
        // A multiplication by a power of two is a shift: the upper half of the product is shifted
        // to the right, the lower half to the left. The first multiplication moves the first and
        // third characters of each group to the low bits of their bytes, the second moves the other
        // two.
        const __m256i odd = _mm256_mulhi_epu16(
            _mm256_and_si256(bytes, _mm256_set1_epi32(0x0FC0FC00)), _mm256_set1_epi32(0x04000040));
        const __m256i even = _mm256_mullo_epi16(
            _mm256_and_si256(bytes, _mm256_set1_epi32(0x003F03F0)), _mm256_set1_epi32(0x01000010));
        const __m256i values = _mm256_or_si256(odd, even);
        const __m256i upperCase = _mm256_cmpgt_epi8(_mm256_set1_epi8(26), values);
        const __m256i index = _mm256_or_si256(_mm256_subs_epu8(values, _mm256_set1_epi8(51)),
                                              _mm256_and_si256(upperCase, _mm256_set1_epi8(13)));
        const __m256i text = _mm256_add_epi8(values, _mm256_shuffle_epi8(both(offsets), index));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), text);
    }
    return static_cast<unsigned long>(out - begin) + base64EncodePortable(data, n, out);
}

// --- Decoding ------------------------------------------------------------------------------------

/// Bit `low` is set if the character 16 * high + low is in the alphabet.
constexpr int lowHalves(int high) {
    int set = 0;
    for (const char character : base64Alphabet)
        if (character / 16 == high) set |= 1 << character % 16;
    return set;
}

// A byte is foreign if the entries of its two halves have a bit in common. Each distinct set of low
// halves has a bit of its own. It is in the entries of the high halves that go with the set, and in
// the entries of the low halves that are not in the set.
struct Halves {
    Bytes high, low;
};
constexpr Halves makeHalves() {
    Halves halves{};
    int bit = 1;
    for (int high = 0; high < 16; ++high) {
        int same = 0;
        while (lowHalves(same) != lowHalves(high)) ++same;
        halves.high.at[high] = same < high ? halves.high.at[same] : static_cast<signed char>(bit);
        if (same < high) continue;
        for (int low = 0; low < 16; ++low)
            if ((lowHalves(high) >> low & 1) == 0)
                halves.low.at[low] = static_cast<signed char>(halves.low.at[low] | bit);
        bit *= 2;
    }
    return halves;
}
constexpr Halves foreign = makeHalves();

// What to add to a character to get its value. Index: the character's high half, but 1 for "/",
// because "+" has the same high half.
constexpr Bytes makeValueOffsets() {
    Bytes table{};
    int value = 0;
    for (const char character : base64Alphabet)
        table.at[character == '/' ? 1 : character / 16] =
            static_cast<signed char>(value++ - character);
    return table;
}
constexpr Bytes valueOffsets = makeValueOffsets();

// The 3 bytes in each of 4 doublewords, in reverse order.
constexpr Bytes places = {{2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1}};

KXUTILS_TARGET Base64Progress decodeGroups(const char* text, unsigned long n, char* out) {
    unsigned long read = 0, written = 0;
    for (; n - read >= 32; read += 32, written += 24) {
        const __m256i block = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + read));
        const __m256i half = _mm256_set1_epi8(15);
        const __m256i low = _mm256_and_si256(block, half),
                      high = _mm256_and_si256(_mm256_srli_epi32(block, 4), half);
        if (!_mm256_testz_si256(_mm256_shuffle_epi8(both(foreign.low), low),
                                _mm256_shuffle_epi8(both(foreign.high), high)))
            break;
        const __m256i slash = _mm256_cmpeq_epi8(block, _mm256_set1_epi8('/'));  // -1 where it is
        const __m256i values = _mm256_add_epi8(
            block, _mm256_shuffle_epi8(both(valueOffsets), _mm256_add_epi8(high, slash)));
        const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi32(0x01400140));
        const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        const __m256i bytes = _mm256_permutevar8x32_epi32(
            _mm256_shuffle_epi8(groups, both(places)), _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 7, 7));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(out + written), _mm256_castsi256_si128(bytes));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(out + written + 16),
                         _mm256_extracti128_si256(bytes, 1));
    }
    const Base64Progress rest = base64DecodeGroupsPortable(text + read, n - read, out + written);
    return {read + rest.read, written + rest.written};
}

}  // namespace

Base64Kernel base64Avx2() {
    return {"avx2", usable, encode, base64Decode<decodeGroups>, decodeGroups};
}

}  // namespace kx::detail
