// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64 with AVX-512 VBMI (Mula and Lemire: Base64 encoding and decoding at almost the speed of a
// memory copy, Software: Practice and Experience 50, 2020), and with VBMI2 for texts that have
// foreign bytes in between.
#include <immintrin.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "detail/base64/alphabet.h"
#include "detail/base64/decoder.h"
#include "detail/base64/kernel.h"

#define KXUTILS_TARGET \
    __attribute__((target("avx512bw,avx512vl,avx512vbmi,avx512vbmi2,bmi,bmi2,popcnt")))

namespace kx::detail {
namespace {

bool usable() {
    return __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
           __builtin_cpu_supports("avx512vbmi") && __builtin_cpu_supports("avx512vbmi2") &&
           __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") &&
           __builtin_cpu_supports("popcnt");
}

struct alignas(64) Bytes {
    unsigned char at[64];
};

template <class Rule>
constexpr Bytes makeBytes(Rule rule) {
    Bytes bytes{};
    for (std::size_t i = 0; i < 64; ++i) bytes.at[i] = static_cast<unsigned char>(rule(i));
    return bytes;
}

KXUTILS_TARGET inline __m512i load(const Bytes& bytes) { return _mm512_load_si512(&bytes); }

// With a full mask, because GCC 12 warns about its own intrinsics that have none (bug 105593).
constexpr __mmask64 all = ~0ULL;

/// The lowest `n` of 64 bits.
KXUTILS_TARGET inline __mmask64 lowest(unsigned long n) { return _bzhi_u64(all, n); }

// Masked accesses touch no more than they should. But when the processor looks for a store that a
// load has to wait for, it takes the full width as touched. Short accesses are therefore half as
// wide, to keep away from small neighbours on the heap.

/// The first `n` bytes at `p`, at most 64, followed by zeros.
KXUTILS_TARGET inline __m512i load(const char* p, unsigned long n) {
    __m512i bytes;
    if (n >= 64)
        bytes = _mm512_loadu_si512(p);  // a masked load would keep the processor from reading ahead
    else if (n > 32)
        bytes = _mm512_maskz_loadu_epi8(lowest(n), p);
    else
        bytes = _mm512_maskz_inserti64x4(
            0xFF, _mm512_setzero_si512(),
            _mm256_maskz_loadu_epi8(static_cast<__mmask32>(lowest(n)), p), 0);
    asm("" : "+v"(bytes));  // otherwise GCC loads twice rather than copy a register
    return bytes;
}

/// Stores the first `n` of the 64 bytes.
KXUTILS_TARGET inline void storeFirst(char* out, __m512i bytes, unsigned long n) {
    if (n > 32)
        _mm512_mask_storeu_epi8(out, lowest(n), bytes);
    else
        _mm256_mask_storeu_epi8(out, static_cast<__mmask32>(lowest(n)),
                                _mm512_maskz_extracti64x4_epi64(0xFF, bytes, 0));
}

// --- Encoding ------------------------------------------------------------------------------------

constexpr Bytes alphabet = makeBytes([](std::size_t i) { return base64Alphabet[i]; });
// Each group b0 b1 b2 becomes the doubleword b1 b0 b2 b1, which has the six bits of every character
// side by side.
constexpr Bytes spread = makeBytes([](std::size_t i) {
    constexpr std::size_t order[] = {1, 0, 2, 1};
    return i / 4 * 3 + order[i % 4];
});

/// The characters of the first 48 bytes.
KXUTILS_TARGET inline __m512i characters(__m512i bytes) {
    // How far the quadword is rotated for each byte: to bits 10 to 15 (the upper six of b0), 4 to
    // 9, 22 to 27 and 16 to 21, and by 32 more for the second group.
    const __m512i shifts = _mm512_set1_epi64(0x3036242A1016040A);
    const __m512i sixes = _mm512_maskz_multishift_epi64_epi8(
        all, shifts, _mm512_maskz_permutexvar_epi8(all, load(spread), bytes));
    // The look-up ignores the upper two bits of an index.
    return _mm512_maskz_permutexvar_epi8(all, sixes, load(alphabet));
}

/// Encodes fewer than 48 bytes and writes the padding and the terminator. Returns the length of the
/// text.
KXUTILS_TARGET inline unsigned long encodeEnd(const char* data, unsigned long n, char* out) {
    const auto bytes = static_cast<unsigned int>(n), length = (bytes + 2) / 3 * 4;
    const __m512i text = characters(load(data, n));
    const __m512i padded =
        _mm512_mask_mov_epi8(_mm512_set1_epi8('='), lowest((4 * bytes + 2) / 3), text);
    storeFirst(out, padded, length);
    out[length] = '\0';
    return length;
}

[[gnu::noinline]] KXUTILS_TARGET unsigned long encodeLong(const char* data, unsigned long n,
                                                          char* out) {
    char* const begin = out;
    for (; n >= 48 + 64; data += 96, n -= 96, out += 128) {
        const __m512i a = characters(load(data, 64)), b = characters(load(data + 48, 64));
        _mm512_storeu_si512(out, a);
        _mm512_storeu_si512(out + 64, b);
    }
    for (; n >= 48; data += 48, n -= 48, out += 64)
        _mm512_storeu_si512(out, characters(load(data, n)));
    return static_cast<unsigned long>(out - begin) + encodeEnd(data, n, out);
}

KXUTILS_TARGET unsigned long encode(const char* data, unsigned long n, char* out) {
    return n < 48 ? encodeEnd(data, n, out) : encodeLong(data, n, out);
}

// --- Decoding ------------------------------------------------------------------------------------

constexpr std::size_t foreign = 0x80;
template <std::size_t from>
constexpr Bytes makeValues() {
    return makeBytes([](std::size_t i) {
        const std::size_t value = base64Alphabet.find(static_cast<char>(from + i));
        return value == std::string_view::npos ? foreign : value;
    });
}
constexpr Bytes lowValues = makeValues<0>(), highValues = makeValues<64>();

/// The values of 64 characters; the highest bit of a byte is set if its character is outside the
/// alphabet.
KXUTILS_TARGET inline __m512i values(__m512i text) {
    // The look-up uses the low 7 bits as its index.
    return _mm512_permutex2var_epi8(load(lowValues), text, load(highValues));
}

/// Joins groups of four values to the 24 bits of a doubleword each, with their 3 bytes in reverse
/// order: first to pairs, a * 64 + b, then to pairs of pairs, ab * 4096 + cd.
KXUTILS_TARGET inline __m512i groups(__m512i values) {
    const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi32(0x01400140));
    return _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
}

/// Where byte `i` of the result stands among the doublewords.
constexpr std::size_t placeOf(std::size_t i) { return i / 3 * 4 + 2 - i % 3; }
constexpr Bytes places = makeBytes([](std::size_t i) { return i < 48 ? placeOf(i) : 0U; });
// Three times 64 of the 192 bytes, counted from the register in which they begin.
constexpr Bytes places0 = makeBytes([](std::size_t i) { return placeOf(i); }),
                places1 = makeBytes([](std::size_t i) { return placeOf(64 + i) - 64; }),
                places2 = makeBytes([](std::size_t i) { return placeOf(128 + i) - 128; });

/// Stores the bytes that the first `n` of 64 values make.
KXUTILS_TARGET inline void storeDecoded(char* out, __m512i values, unsigned long n) {
    storeFirst(out, _mm512_maskz_permutexvar_epi8(all, load(places), groups(values)), n / 4 * 3);
}

/// Stores the bytes that 256 values make.
KXUTILS_TARGET inline void storeDecoded(char* out, __m512i a, __m512i b, __m512i c, __m512i d) {
    a = groups(a);
    b = groups(b);
    c = groups(c);
    d = groups(d);
    _mm512_storeu_si512(out, _mm512_permutex2var_epi8(a, load(places0), b));
    _mm512_storeu_si512(out + 64, _mm512_permutex2var_epi8(b, load(places1), c));
    _mm512_storeu_si512(out + 128, _mm512_permutex2var_epi8(c, load(places2), d));
}

/// The values of a text, side by side, without the foreign bytes between them.
struct Gathered {
    static constexpr unsigned long enough = 2048;
    alignas(64) char values[enough + 128];  // a block is stored and loaded as a whole
    unsigned long count = 0;
};

/// Adds the values of the next block and moves `at` past it, or as far as a '=' or the end of the
/// text. Returns true if `at` has reached one of these two.
KXUTILS_TARGET inline bool gather(const char*& at, const char* end, Gathered& gathered) {
    const auto left = static_cast<unsigned long>(end - at);
    const __m512i block = load(at, left), v = values(block);
    std::uint64_t good = _mm512_movepi8_mask(_mm512_or_si512(block, v)) ^ all;
    const std::uint64_t equals = _mm512_cmpeq_epi8_mask(block, _mm512_set1_epi8('='));
    const bool isLast = left <= 64 || equals != 0;
    if (isLast) {
        good &= _blsmsk_u64(equals);
        at += std::min(left, static_cast<unsigned long>(_tzcnt_u64(equals)));
    } else {
        at += 64;
    }
    _mm512_storeu_si512(gathered.values + gathered.count, _mm512_maskz_compress_epi8(good, v));
    gathered.count += static_cast<unsigned long>(_mm_popcnt_u64(good));
    return isLast;
}

/// Decodes the whole groups and keeps the values that are left, fewer than four. Returns the end of
/// what was written.
KXUTILS_TARGET inline char* decodeGathered(Gathered& gathered, char* to) {
    const char* from = gathered.values;
    unsigned long left = gathered.count;
    for (; left >= 256; left -= 256, from += 256, to += 192)
        storeDecoded(to, load(from, 64), load(from + 64, 64), load(from + 128, 64),
                     load(from + 192, 64));
    for (unsigned long count; left >= 4; left -= count, from += count, to += count / 4 * 3) {
        count = std::min(left, 64UL) / 4 * 4;
        storeDecoded(to, load(from, 64), count);
    }
    std::memcpy(gathered.values, from, 4);
    gathered.count = left;
    return to;
}

/// Continues after `done` where foreign bytes may be anywhere. It takes them out first, so that the
/// values of many blocks stand side by side.
[[gnu::noinline]] KXUTILS_TARGET Base64Progress decodeSparse(const char* text, unsigned long n,
                                                             char* out, Base64Progress done) {
    const char *at = text + done.read, *const end = text + n;
    char* to = out + done.written;
    Gathered gathered;
    for (bool isLast = false; !isLast;) {
        while (gathered.count <= Gathered::enough && !isLast) isLast = gather(at, end, gathered);
        to = decodeGathered(gathered, to);
    }
    // Go back to where the incomplete group began.
    while (gathered.count != 0)
        if (base64Map[byteOf(*--at)] != base64Foreign) --gathered.count;  // none of them is a '='
    return {static_cast<unsigned long>(at - text), static_cast<unsigned long>(to - out)};
}

/// Decodes the first groups of a block, up to a group that holds a foreign byte or is incomplete.
/// Returns the number of characters decoded, 64 at most.
KXUTILS_TARGET inline unsigned long decodeBlock(const char* text, unsigned long n, char* out) {
    const __m512i block = load(text, n), v = values(block);
    const auto good = _tzcnt_u64(_mm512_movepi8_mask(_mm512_or_si512(block, v))) / 4 * 4;
    storeDecoded(out, v, good);
    return good;
}

/// Continues after `done`, block by block.
KXUTILS_TARGET inline Base64Progress decodeBlocks(const char* text, unsigned long n, char* out,
                                                  Base64Progress done) {
    for (unsigned long good = 64; good == 64 && done.read != n;) {
        good = decodeBlock(text + done.read, n - done.read, out + done.written);
        done.read += good;
        done.written += good / 4 * 3;
    }
    // The padding at the end of a text, perhaps with a line break, is not worth a vector.
    return n - done.read <= 8 ? done : decodeSparse(text, n, out, done);
}

[[gnu::noinline]] KXUTILS_TARGET Base64Progress decodeLong(const char* text, unsigned long n,
                                                           char* out) {
    unsigned long read = 0, written = 0;
    // Whole stores of 64 bytes are only made where all 256 characters are in the alphabet.
    for (; n - read >= 256; read += 256, written += 192) {
        const __m512i a = load(text + read, 64), b = load(text + read + 64, 64),
                      c = load(text + read + 128, 64), d = load(text + read + 192, 64);
        const __m512i va = values(a), vb = values(b), vc = values(c), vd = values(d);
        constexpr int orOfThree = 0xFE;
        const __m512i bits = _mm512_ternarylogic_epi64(
            _mm512_ternarylogic_epi64(a, va, b, orOfThree),
            _mm512_ternarylogic_epi64(vb, c, vc, orOfThree), _mm512_or_si512(d, vd), orOfThree);
        if (_mm512_movepi8_mask(bits) != 0) break;
        storeDecoded(out + written, va, vb, vc, vd);
    }
    return decodeBlocks(text, n, out, {read, written});
}

KXUTILS_TARGET Base64Progress decodeGroups(const char* text, unsigned long n, char* out) {
    return n < 256 ? decodeBlocks(text, n, out, {0, 0}) : decodeLong(text, n, out);
}

/// A text of one block is decoded directly.
KXUTILS_TARGET unsigned long decode(const char* text, unsigned long n, char* out) {
    if (n > 64) return base64Decode<decodeGroups>(text, n, out);
    const unsigned long good = decodeBlock(text, n, out), written = good / 4 * 3;
    if (good == n) return written;
    return base64DecodeRest(decodeGroups, text, n, out, {good, written});
}

}  // namespace

Base64Kernel base64Avx512() { return {"avx512", usable, encode, decode, decodeGroups}; }

}  // namespace kx::detail
