// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/cpu/cpuid.h"

#include <algorithm>
#include <cstddef>

namespace kx::detail {
namespace {

using Fields = kxCPUInfo::Fields;
using Flag = bool Fields::*;

// The standard and the extended leaves span 64 Ki numbers each (AMD64 Architecture Programmer's
// Manual, volume 3, appendix E). A processor that claims more leaves does not make the walk longer.
constexpr std::uint32_t lastStandardLeaf = 0x0000FFFF;
constexpr std::uint32_t firstExtendedLeaf = 0x80000000;
constexpr std::uint32_t lastExtendedLeaf = 0x8000FFFF;

// Five bits of type and three of level can tell this many caches apart. A processor that goes on
// describing caches is not asked for more.
constexpr std::uint32_t maxCaches = 256;

// The index is the bit number in ECX of leaf 1.
constexpr Flag leaf1EcxFlags[29] = {
    &Fields::sse3,        &Fields::pclmulqdq,  &Fields::dtes64, &Fields::monitor,
    &Fields::dsCpl,       &Fields::vmx,        &Fields::smx,    &Fields::eist,
    &Fields::tm2,         &Fields::ssse3,      &Fields::cnxtId, &Fields::sdbg,
    &Fields::fma,         &Fields::cmpxchg16b, &Fields::xtpr,   &Fields::pdcm,
    &Fields::ecxBit16,    &Fields::pcid,       &Fields::dca,    &Fields::sse41,
    &Fields::sse42,       &Fields::x2apic,     &Fields::movbe,  &Fields::popcnt,
    &Fields::tscDeadline, &Fields::aes,        &Fields::xsave,  &Fields::osxsave,
    &Fields::avx,
};

struct FlagBit {
    Flag flag;
    unsigned bit;
};

constexpr FlagBit extendedEcxFlags[] = {
    {&Fields::lahfSahf, 0},     {&Fields::cmpLegacy, 1},     {&Fields::svm, 2},
    {&Fields::extApicSpace, 3}, {&Fields::altMovCr8, 4},     {&Fields::lzcnt, 5},
    {&Fields::sse4a, 6},        {&Fields::misalignedSse, 7}, {&Fields::prefetch3DNow, 8},
    {&Fields::skinit, 12},
};

constexpr FlagBit extendedEdxFlags[] = {
    {&Fields::syscallSysret, 11},    {&Fields::pageAttributeTable, 16},
    {&Fields::extendedEdxBit18, 18}, {&Fields::extendedEdxBit21, 21},
    {&Fields::mmxExtensions, 22},    {&Fields::rdtscp, 27},
    {&Fields::longMode, 29},         {&Fields::extended3DNow, 30},
    {&Fields::amd3DNow, 31},
};

std::int32_t bits(std::uint32_t value, unsigned first, unsigned last) {
    return static_cast<std::int32_t>(value >> first & ((1U << (last - first + 1)) - 1));
}

bool bit(std::uint32_t value, unsigned index) { return bits(value, index, index) != 0; }

template <std::size_t N>
void readFlags(Fields& fields, const FlagBit (&flags)[N], std::uint32_t value) {
    for (const FlagBit& f : flags) fields.*f.flag = bit(value, f.bit);
}

void readLeaf1(Fields& fields, const CpuidRegisters& r) {
    fields.stepping = bits(r.eax, 0, 3);
    fields.model = bits(r.eax, 4, 7);
    fields.family = bits(r.eax, 8, 11);
    fields.processorType = bits(r.eax, 12, 13);
    fields.extendedModel = bits(r.eax, 16, 19);
    fields.extendedFamily = bits(r.eax, 20, 27);
    fields.brandIndex = bits(r.ebx, 0, 7);
    fields.flushLineSize = bits(r.ebx, 8, 15) * 8;
    fields.logicalProcessors = bits(r.ebx, 16, 23);
    fields.initialApicId = bits(r.ebx, 24, 31);
    fields.featureWord = r.edx;
    for (unsigned i = 0; i < 29; ++i) fields.*leaf1EcxFlags[i] = bit(r.ecx, i);
    fields.avx2 = fields.avx && fields.movbe && fields.fma && fields.osxsave;
    fields.multithreading = bit(r.edx, 28);
}

void readStandardLeaf(Fields& fields, std::uint32_t leaf, const CpuidRegisters& r) {
    if (leaf == 1) readLeaf1(fields, r);
    if (leaf == 7) fields.avx512 = bit(r.ebx, 16) && fields.avx2;
}

void readExtendedLeaf(Fields& fields, std::uint32_t leaf, const CpuidRegisters& r) {
    switch (leaf) {
        case 0x80000001:
            readFlags(fields, extendedEcxFlags, r.ecx);
            readFlags(fields, extendedEdxFlags, r.edx);
            break;
        case 0x80000006:
            fields.extendedCacheLineSize = bits(r.ecx, 0, 7);
            fields.l2Associativity = bits(r.ecx, 12, 15);
            fields.l2SizeKiB = bits(r.ecx, 16, 31);
            break;
        case 0x80000008:
            fields.physicalAddressBits = bits(r.eax, 0, 7);
            fields.virtualAddressBits = bits(r.eax, 8, 15);
            break;
        case 0x8000000A:
            fields.nestedPaging = bit(r.edx, 0);
            fields.lbrVirtualization = bit(r.edx, 1);
            break;
        case 0x8000001A:
            fields.fp128 = bit(r.eax, 0);
            fields.movu = bit(r.eax, 1);
            break;
        default:
            break;
    }
}

bool describesCache(const CpuidRegisters& r) { return bits(r.eax, 4, 7) != 0; }

void readCache(Fields& fields, const CpuidRegisters& r) {
    fields.cacheType = bits(r.eax, 0, 4);
    fields.cacheLevel = bits(r.eax, 5, 7);
    fields.selfInitialising = bit(r.eax, 8);
    fields.fullyAssociative = bit(r.eax, 9);
    fields.maxThreadsSharing = bits(r.eax, 14, 25);
    fields.lineSize = bits(r.ebx, 0, 11);
    fields.partitions = bits(r.ebx, 12, 21);
    fields.ways = bits(r.ebx, 22, 31);
    fields.sets = static_cast<std::int32_t>(r.ecx);
}

}  // namespace

Fields readCpu(CpuidQuery query) {
    Fields fields;
    const auto ask = [&](std::uint32_t leaf, std::uint32_t subLeaf) {
        const CpuidRegisters r = query(leaf, subLeaf);
        fields.lastRegisters[0] = r.eax;
        fields.lastRegisters[1] = r.ebx;
        fields.lastRegisters[2] = r.ecx;
        fields.lastRegisters[3] = r.edx;
        return r;
    };

    const std::uint32_t n = std::min(ask(0, 0).eax, lastStandardLeaf);
    for (std::uint32_t leaf = 0; leaf <= n; ++leaf) readStandardLeaf(fields, leaf, ask(leaf, 0));

    // Without extended leaves the answer is below the first of them, and the loop does not start.
    const std::uint32_t m = std::min(ask(firstExtendedLeaf, 0).eax, lastExtendedLeaf);
    for (std::uint32_t leaf = firstExtendedLeaf; leaf <= m; ++leaf)
        readExtendedLeaf(fields, leaf, ask(leaf, 0));

    CpuidRegisters cache = ask(4, 0);
    if (!describesCache(cache)) return fields;
    fields.cores = bits(cache.eax, 26, 31);
    for (std::uint32_t subLeaf = 1; subLeaf <= maxCaches && describesCache(cache); ++subLeaf) {
        readCache(fields, cache);
        cache = ask(4, subLeaf);
    }
    return fields;
}

}  // namespace kx::detail
