// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCRC32.h"

#include <array>

#include "detail/bytes/little_endian.h"
#include "detail/crc/arithmetic.h"
#include "detail/crc/kernel.h"
#include "detail/crc/table.h"

using kx::detail::crc32BitSteps;
using kx::detail::Crc32Kernel;
using kx::detail::crc32Polynomial;
using kx::detail::FastestKernel;
using kx::detail::loadLittleEndian16;
using kx::detail::loadLittleEndian32;
using kx::detail::lookUpByte;
using kx::detail::lookUpWord;
using kx::detail::oneByOne;

namespace {

// Entry i is the register after the 4 bits of i.
constexpr std::array<std::uint32_t, 16> makeLookup16() {
    std::array<std::uint32_t, 16> table{};
    for (std::uint32_t i = 0; i < 16; ++i) table[i] = crc32BitSteps(i, 4);
    return table;
}
constexpr auto crc32Lookup16 = makeLookup16();
static_assert(crc32Lookup16[0] == 0 && crc32Lookup16[1] == 0x1DB71064 &&
              crc32Lookup16[15] == 0xBDBDF21C);

const unsigned char* bytesOf(const void* data) { return static_cast<const unsigned char*>(data); }

// Takes bytes through the register; `step` takes it one byte further. Four bytes enter the register
// at a time, so three steps in four need not wait for their byte.
template <class Step>
std::uint32_t bytewise(std::uint32_t crc, const unsigned char* p, unsigned long length, Step step) {
    for (; length >= 4; length -= 4, p += 4)
        crc = step(step(step(step(crc ^ loadLittleEndian32(p)))));
    return oneByOne(crc, p, length, step);
}

// What bit step `step` of four contributes to the register after all four.
constexpr std::uint32_t bitTerm(std::uint32_t crc, int step) {
    return (0 - ((crc >> step) & 1)) & (crc32Polynomial >> (3 - step));
}

// Four bit steps side by side. The bits that decide them are all known at the start, since a step
// does not change the three bits that decide the next three steps.
constexpr std::uint32_t fourBits(std::uint32_t crc) {
    static_assert((crc32Polynomial & 7) == 0);
    return (crc >> 4) ^ bitTerm(crc, 0) ^ bitTerm(crc, 1) ^ bitTerm(crc, 2) ^ bitTerm(crc, 3);
}

std::uint32_t lookUpHalfByte(std::uint32_t crc) { return (crc >> 4) ^ crc32Lookup16[crc & 15]; }

}  // namespace

std::uint32_t kxCRC32::calc(const void* data, unsigned long length, std::uint32_t previous) {
    using Fastest = FastestKernel<Crc32Kernel, kx::detail::crc32Kernels>;
    return Fastest::call(&Crc32Kernel::calc, data, length, previous);
}

std::uint32_t kxCRC32::calc_bitwise(const void* data, unsigned long length,
                                    std::uint32_t previous) {
    const auto step = [](std::uint32_t crc) { return fourBits(fourBits(crc)); };
    return ~bytewise(~previous, bytesOf(data), length, step);
}

std::uint32_t kxCRC32::calc_halfbyte(const void* data, unsigned long length,
                                     std::uint32_t previous) {
    const auto step = [](std::uint32_t crc) { return lookUpHalfByte(lookUpHalfByte(crc)); };
    return ~bytewise(~previous, bytesOf(data), length, step);
}

std::uint32_t kxCRC32::calc_1byte(const void* data, unsigned long length, std::uint32_t previous) {
    return ~bytewise(~previous, bytesOf(data), length, lookUpByte);
}

std::uint32_t kxCRC32::calc_4bytes(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const auto* p = bytesOf(data);
    for (; length >= 4; length -= 4, p += 4) crc = lookUpWord<0>(loadLittleEndian32(p) ^ crc);
    return ~oneByOne(crc, p, length, lookUpByte);
}

std::uint32_t kxCRC32::calc_8bytes(const void* data, unsigned long length, std::uint32_t previous) {
    return kx::detail::crc32EightBytes(data, length, previous);
}

std::uint32_t kxCRC32::calc_FNV1A_Jesteress(const void* data, unsigned long length,
                                            std::uint32_t seed) {
    constexpr std::uint32_t prime = 709607, offsetBasis = 2166136261;
    std::uint32_t hash = seed != 0 ? seed : offsetBasis;
    const auto* p = bytesOf(data);
    for (; length >= 8; length -= 8, p += 8) {
        const std::uint32_t first = loadLittleEndian32(p), second = loadLittleEndian32(p + 4);
        hash = (hash ^ ((first << 5 | first >> 27) ^ second)) * prime;
    }
    if ((length & 4) != 0) {
        hash = (hash ^ loadLittleEndian32(p)) * prime;
        p += 4;
    }
    if ((length & 2) != 0) {
        hash = (hash ^ loadLittleEndian16(p)) * prime;
        p += 2;
    }
    if ((length & 1) != 0) hash = (hash ^ *p) * prime;
    return hash ^ (hash >> 16);
}
