// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 checksums and a fast 32-bit hash.
#pragma once

#include <cstdint>

#include "kxExport.h"

/// The CRC-32 of IEEE 802.3, zlib, PNG and gzip: polynomial 0x04C11DB7, reflected, register
/// inverted at both ends. calc() is the fastest way; the five other implementations differ only in
/// speed and in the size of their tables. The class also has a hash.
///
/// A long input can be passed in pieces: `previous` is the CRC-32 of everything before `data`, and
/// 0 at the start.
///
///     crc(a + b) == calc(b, size of b, calc(a, size of a, 0))
///
/// `length` is in bytes. A `length` of 0 returns `previous`; `data` may then be null. `data` may
/// have any alignment. Results do not depend on the processor's byte order. There is no state: any
/// thread may call any function. Nothing is thrown.
class KXUTILS_API kxCRC32 {
public:
    // --- CRC-32 ----------------------------------------------------------------------------------

    /// The fastest way on this processor: carry-less multiplication if the processor has it
    /// (VPCLMULQDQ with AVX-512, or PCLMULQDQ; Gopal et al., Intel, 2009), otherwise calc_8bytes().
    static std::uint32_t calc(const void* data, unsigned long length, std::uint32_t previous = 0);

    /// Bit by bit, without a table; the slowest way.
    static std::uint32_t calc_bitwise(const void* data, unsigned long length,
                                      std::uint32_t previous = 0);
    /// Two look-ups per byte in a table of 64 bytes; the compact choice.
    static std::uint32_t calc_halfbyte(const void* data, unsigned long length,
                                       std::uint32_t previous = 0);
    /// One look-up per byte in a table of 1 KiB (Sarwate, 1988).
    static std::uint32_t calc_1byte(const void* data, unsigned long length,
                                    std::uint32_t previous = 0);
    /// 4 bytes per step with tables of 4 KiB (slicing-by-4; Kounavis and Berry, Intel, 2005).
    static std::uint32_t calc_4bytes(const void* data, unsigned long length,
                                     std::uint32_t previous = 0);
    /// 8 bytes per step with tables of 8 KiB (slicing-by-8); the fast general choice.
    static std::uint32_t calc_8bytes(const void* data, unsigned long length,
                                     std::uint32_t previous = 0);

    // --- Hash ------------------------------------------------------------------------------------

    /// FNV-1a in the variant "Jesteress" (G. Mihaylov), 8 bytes per step. It is meant for hash
    /// tables and does not protect against intent. A `seed` of 0 stands for the FNV offset basis
    /// 0x811C9DC5. Unlike the CRCs, results do not chain: the hash of the whole cannot be computed
    /// from the hashes of its pieces.
    static std::uint32_t calc_FNV1A_Jesteress(const void* data, unsigned long length,
                                              std::uint32_t seed = 0);
};
