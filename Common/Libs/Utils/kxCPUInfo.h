// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The processor's features, as the CPUID instruction of x86 reports them.
#pragma once

#include <cstdint>

#include "kxExport.h"

/// The answers of the CPUID instruction, which are read once, and questions by which a program
/// chooses its code path.
///
///     if (kxCPUInfo::getCPUInfo().hasAVX2Support()) ...
///
/// On a processor without CPUID (anything but x86) every answer is false and every field is 0.
///
/// The answers follow the processor's bits alone. Deliberately, they do not consider whether the
/// operating system saves the AVX or AVX-512 registers (XGETBV), so hasAVXSupport() in particular
/// may be true where the first AVX instruction would fault.
///
/// Threads: an object does not change after its construction, so any thread may read it. Nothing
/// here throws.
///
/// Constructing an object takes some dozens of CPUID queries, and a virtual machine traps each of
/// them (microseconds), so keep the object or use the shared one. Whatever the processor claims to
/// have, standard leaves above 0xFFFF, extended leaves above 0x8000FFFF and more than 256 caches
/// are not asked for.
///
/// Sources: Intel 64 and IA-32 Architectures Software Developer's Manual, volume 2, CPUID; AMD64
/// Architecture Programmer's Manual, volume 3, appendix E.
class KXUTILS_API kxCPUInfo {
public:
    /// All values that are read. A field is 0 or false if its leaf is above the highest leaf that
    /// the processor names. Leaf 4 is the exception: deliberately, it is queried whatever the
    /// highest standard leaf is, so on a processor without it its fields hold whatever that
    /// processor answers (zeros or, on some, the registers of another leaf).
    struct Fields {
        /// EAX, EBX, ECX and EDX of the most recent query. That is the last query of leaf 4 if the
        /// processor was queried; the bits are all ones if it was not.
        std::uint32_t lastRegisters[4] = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};

        /// Leaf 1 EAX, each field as encoded: the extended fields are not added to the others.
        /// @{
        std::int32_t stepping = 0;
        std::int32_t model = 0;
        std::int32_t family = 0;
        std::int32_t processorType = 0;
        std::int32_t extendedModel = 0;
        std::int32_t extendedFamily = 0;
        /// @}

        /// Leaf 1 EBX.
        /// @{
        std::int32_t brandIndex = 0;
        std::int32_t flushLineSize = 0;  ///< bytes that CLFLUSH writes back
        std::int32_t logicalProcessors = 0;
        std::int32_t initialApicId = 0;
        /// @}

        /// Leaf 1 EDX; bit k is named by _szFeatures[k].
        std::uint32_t featureWord = 0;

        /// Leaf 0x80000006 ECX.
        /// @{
        std::int32_t extendedCacheLineSize = 0;  ///< bytes
        std::int32_t l2Associativity = 0;        ///< as encoded (6 means 8 ways, for instance)
        std::int32_t l2SizeKiB = 0;
        /// @}

        /// Leaf 0x80000008 EAX.
        /// @{
        std::int32_t physicalAddressBits = 0;
        std::int32_t virtualAddressBits = 0;
        /// @}

        /// Leaf 4: cores per package minus one; 0 if the leaf describes no cache.
        std::int32_t cores = 0;

        /// Leaf 4, the last cache described, usually that of the highest level. Values are as the
        /// processor encodes them: from `maxThreadsSharing` to `sets` they are one less than the
        /// true value, so 0 stands for one.
        /// @{
        std::int32_t cacheType = 0;  ///< 1 data, 2 instruction, 3 unified
        std::int32_t cacheLevel = 0;
        std::int32_t maxThreadsSharing = 0;
        std::int32_t lineSize = 0;
        std::int32_t partitions = 0;
        std::int32_t ways = 0;
        std::int32_t sets = 0;
        /// @}

        /// Leaf 1 ECX, bits 0 to 28 in order.
        /// @{
        bool sse3 = false;
        bool pclmulqdq = false;
        bool dtes64 = false;
        bool monitor = false;
        bool dsCpl = false;
        bool vmx = false;
        bool smx = false;
        bool eist = false;
        bool tm2 = false;
        bool ssse3 = false;
        bool cnxtId = false;
        bool sdbg = false;
        bool fma = false;
        bool cmpxchg16b = false;
        bool xtpr = false;
        bool pdcm = false;
        bool ecxBit16 = false;  ///< reserved
        bool pcid = false;
        bool dca = false;
        bool sse41 = false;
        bool sse42 = false;
        bool x2apic = false;
        bool movbe = false;
        bool popcnt = false;
        bool tscDeadline = false;
        bool aes = false;
        bool xsave = false;
        bool osxsave = false;
        bool avx = false;
        /// @}

        /// True if AVX, MOVBE, FMA and OSXSAVE are all set in leaf 1. Deliberately, this does not
        /// look at leaf 7, whose EBX bit 5 is the processor's own AVX2 bit.
        bool avx2 = false;
        /// True if AVX512F (leaf 7 EBX bit 16) and `avx2` are both set.
        bool avx512 = false;
        /// Leaf 1 EDX bit 28.
        bool multithreading = false;

        /// Leaf 0x80000001 ECX, bits 0 to 8 and 12.
        /// @{
        bool lahfSahf = false;
        bool cmpLegacy = false;
        bool svm = false;
        bool extApicSpace = false;
        bool altMovCr8 = false;
        bool lzcnt = false;
        bool sse4a = false;
        bool misalignedSse = false;
        bool prefetch3DNow = false;
        bool skinit = false;
        /// @}

        /// Leaf 0x80000001 EDX, bits 11, 16, 18, 21, 22, 27, 29, 30 and 31.
        /// @{
        bool syscallSysret = false;
        bool pageAttributeTable = false;
        bool extendedEdxBit18 = false;  ///< reserved
        bool extendedEdxBit21 = false;  ///< reserved
        bool mmxExtensions = false;
        bool rdtscp = false;
        bool longMode = false;
        bool extended3DNow = false;
        bool amd3DNow = false;
        /// @}

        /// Leaf 0x8000000A EDX, bits 0 and 1.
        /// @{
        bool nestedPaging = false;
        bool lbrVirtualization = false;
        /// @}

        /// Leaf 0x8000001A EAX, bits 0 and 1.
        /// @{
        bool fp128 = false;
        bool movu = false;
        /// @}

        /// Leaf 4, the last cache described.
        /// @{
        bool selfInitialising = false;
        bool fullyAssociative = false;
        /// @}
    };

    /// Queries the processor on which the calling thread runs.
    kxCPUInfo();

    /// Describes the processor that `fields` stand for and queries nothing. This is for testing
    /// code that chooses by processor.
    explicit kxCPUInfo(const Fields& fields);

    virtual ~kxCPUInfo();  ///< Releases nothing.

    /// The shared object. The first call constructs it, while callers on other threads wait; it is
    /// valid until the library is unloaded. It is for reading only: do not assign to it.
    static kxCPUInfo& getCPUInfo();

    bool hasSSE2Support() const;   ///< bit 26 of Fields::featureWord
    bool hasSSE42Support() const;  ///< Fields::sse42
    /// Fields::avx: the processor's bit alone, deliberately without a test of the operating system.
    bool hasAVXSupport() const;
    /// Fields::avx2: AVX, MOVBE, FMA and OSXSAVE, and deliberately not the processor's own AVX2
    /// bit.
    bool hasAVX2Support() const;
    /// Fields::avx512: AVX512F, and what hasAVX2Support() requires.
    bool hasAVX512Support() const;

    /// All values that were read; valid as long as this object.
    const Fields& fields() const { return _fields; }

    /// Names of the bits of Fields::featureWord, indexed by bit. The wording is deliberate, even
    /// "CFLUSH" and the gap between "Unknown2" and "Unknown4".
    static const char* const _szFeatures[32];

private:
    Fields _fields;
};
