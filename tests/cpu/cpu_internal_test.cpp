// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/cpu/cpuid.h"
#include "detail/cpu/kernel_table.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "rows.h"

using kx::detail::CpuidRegisters;
using Fields = kxCPUInfo::Fields;
using Query = std::pair<std::uint32_t, std::uint32_t>;  // leaf, sub-leaf

namespace {

// A made-up processor: leaves that have not been set answer zeros. It notes what it is asked.
class FakeCpu {
public:
    FakeCpu(std::uint32_t highestLeaf, std::uint32_t highestExtendedLeaf) {
        answers[{0, 0}] = {highestLeaf, 0x756E6547, 0x6C65746E, 0x49656E69};
        answers[{0x80000000, 0}] = {highestExtendedLeaf, 0, 0, 0};
    }

    Fields read() {
        static FakeCpu* asked;
        asked = this;
        return kx::detail::readCpu(
            [](std::uint32_t leaf, std::uint32_t subLeaf) { return asked->answer(leaf, subLeaf); });
    }

    CpuidRegisters answer(std::uint32_t leaf, std::uint32_t subLeaf) {
        queries.emplace_back(leaf, subLeaf);
        if (leaf == 4 && endlessCaches) return {0x143, subLeaf, 0, 0};
        const auto answer = answers.find({leaf, subLeaf});
        return answer == answers.end() ? CpuidRegisters{0, 0, 0, 0} : answer->second;
    }

    std::map<Query, CpuidRegisters> answers;
    std::vector<Query> queries;
    bool endlessCaches = false;
};

std::vector<std::uint32_t> lastRegisters(const Fields& f) {
    return {f.lastRegisters[0], f.lastRegisters[1], f.lastRegisters[2], f.lastRegisters[3]};
}

constexpr std::uint32_t bit(unsigned index) { return std::uint32_t{1} << index; }

// Bits of leaf 1 ECX.
constexpr std::uint32_t fusedMultiplyAdd = bit(12), movbe = bit(22), osxsave = bit(27),
                        avx = bit(28);

}  // namespace

// --- Which queries are made, and in which order -------------------------------------------------

namespace {

struct WalkCase {
    const char* name;
    std::uint32_t highestLeaf, highestExtendedLeaf;
    std::vector<std::uint32_t> leaves;  // all asked with sub-leaf 0
};
void PrintTo(const WalkCase& c, std::ostream* os) { *os << c.name; }

const WalkCase walkCases[] = {
    {"NothingButLeaf0", 0, 0, {0, 0, 0x80000000, 4}},
    {"HighestLeaf1", 1, 0, {0, 0, 1, 0x80000000, 4}},
    {"HighestLeaf6", 6, 0, {0, 0, 1, 2, 3, 4, 5, 6, 0x80000000, 4}},
    {"HighestLeaf7", 7, 0, {0, 0, 1, 2, 3, 4, 5, 6, 7, 0x80000000, 4}},
    {"HighestLeaf20", 20, 0, {0,  0,  1,  2,  3,  4,  5,  6,  7,  8,  9,          10,
                              11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 0x80000000, 4}},
    {"OnlyTheFirstExtendedLeaf", 0, 0x80000000, {0, 0, 0x80000000, 0x80000000, 4}},
    {"TwoExtendedLeaves", 1, 0x80000001, {0, 0, 1, 0x80000000, 0x80000000, 0x80000001, 4}},
    {"ExtendedWithoutTopBit", 1, 0x7FFFFFFF, {0, 0, 1, 0x80000000, 4}},
    {"ExtendedLikeAStandardLeaf", 1, 0x0000001A, {0, 0, 1, 0x80000000, 4}},
};

}  // namespace

class CpuidWalk : public testing::TestWithParam<WalkCase> {};

TEST_P(CpuidWalk, AsksInOrderWithSubLeaf0) {
    FakeCpu cpu(GetParam().highestLeaf, GetParam().highestExtendedLeaf);
    cpu.read();
    std::vector<Query> expected;
    for (const std::uint32_t leaf : GetParam().leaves) expected.emplace_back(leaf, 0);
    EXPECT_EQ(cpu.queries, expected);
}
INSTANTIATE_TEST_SUITE_P(Table, CpuidWalk, testing::ValuesIn(walkCases), kxtest::nameOfRow);

// 65,536 standard leaves, as many extended ones, 257 sub-leaves of leaf 4, and the two leaves that
// tell where the leaves end. Without the bound, loops to 0xFFFFFFFF would never end.
TEST(CpuidWalkBound, NonsenseAnswersEndAndAreDecodedAllTheSame) {
    FakeCpu cpu(0xFFFFFFFF, 0xFFFFFFFF);
    cpu.answers[{1, 0}] = {0x000506E3, 0, avx | fusedMultiplyAdd | movbe | osxsave, 0};
    cpu.answers[{7, 0}] = {0, bit(16), 0, 0};
    cpu.answers[{0x8000001A, 0}] = {3, 0, 0, 0};
    cpu.endlessCaches = true;
    const Fields f = cpu.read();
    EXPECT_EQ(cpu.queries.size(), 1U + 0x10000 + 1 + 0x10000 + 257);
    EXPECT_EQ(f.extendedModel, 5);
    EXPECT_TRUE(f.avx512);
    EXPECT_TRUE(f.movu);
    EXPECT_EQ(f.lineSize, 255);  // EBX of the 256th cache
    EXPECT_EQ(cpu.queries.back(), Query(4, 256));
}

// --- Every bit of every register ----------------------------------------------------------------

namespace {

enum Register { EAX, EBX, ECX, EDX };

// Where a field comes from. The rows are in the order of the fields.
struct Source {
    std::variant<std::int32_t Fields::*, std::uint32_t Fields::*, bool Fields::*> field;
    std::uint32_t leaf;
    Register reg;
    unsigned first, last;
    std::int64_t factor = 1;
};

const Source sources[] = {
    {&Fields::stepping, 1, EAX, 0, 3},
    {&Fields::model, 1, EAX, 4, 7},
    {&Fields::family, 1, EAX, 8, 11},
    {&Fields::processorType, 1, EAX, 12, 13},
    {&Fields::extendedModel, 1, EAX, 16, 19},
    {&Fields::extendedFamily, 1, EAX, 20, 27},
    {&Fields::brandIndex, 1, EBX, 0, 7},
    {&Fields::flushLineSize, 1, EBX, 8, 15, 8},
    {&Fields::logicalProcessors, 1, EBX, 16, 23},
    {&Fields::initialApicId, 1, EBX, 24, 31},
    {&Fields::featureWord, 1, EDX, 0, 31},
    {&Fields::extendedCacheLineSize, 0x80000006, ECX, 0, 7},
    {&Fields::l2Associativity, 0x80000006, ECX, 12, 15},
    {&Fields::l2SizeKiB, 0x80000006, ECX, 16, 31},
    {&Fields::physicalAddressBits, 0x80000008, EAX, 0, 7},
    {&Fields::virtualAddressBits, 0x80000008, EAX, 8, 15},
    {&Fields::cores, 4, EAX, 26, 31},
    {&Fields::cacheType, 4, EAX, 0, 4},
    {&Fields::cacheLevel, 4, EAX, 5, 7},
    {&Fields::maxThreadsSharing, 4, EAX, 14, 25},
    {&Fields::lineSize, 4, EBX, 0, 11},
    {&Fields::partitions, 4, EBX, 12, 21},
    {&Fields::ways, 4, EBX, 22, 31},
    {&Fields::sets, 4, ECX, 0, 31},
    {&Fields::sse3, 1, ECX, 0, 0},
    {&Fields::pclmulqdq, 1, ECX, 1, 1},
    {&Fields::dtes64, 1, ECX, 2, 2},
    {&Fields::monitor, 1, ECX, 3, 3},
    {&Fields::dsCpl, 1, ECX, 4, 4},
    {&Fields::vmx, 1, ECX, 5, 5},
    {&Fields::smx, 1, ECX, 6, 6},
    {&Fields::eist, 1, ECX, 7, 7},
    {&Fields::tm2, 1, ECX, 8, 8},
    {&Fields::ssse3, 1, ECX, 9, 9},
    {&Fields::cnxtId, 1, ECX, 10, 10},
    {&Fields::sdbg, 1, ECX, 11, 11},
    {&Fields::fma, 1, ECX, 12, 12},
    {&Fields::cmpxchg16b, 1, ECX, 13, 13},
    {&Fields::xtpr, 1, ECX, 14, 14},
    {&Fields::pdcm, 1, ECX, 15, 15},
    {&Fields::ecxBit16, 1, ECX, 16, 16},
    {&Fields::pcid, 1, ECX, 17, 17},
    {&Fields::dca, 1, ECX, 18, 18},
    {&Fields::sse41, 1, ECX, 19, 19},
    {&Fields::sse42, 1, ECX, 20, 20},
    {&Fields::x2apic, 1, ECX, 21, 21},
    {&Fields::movbe, 1, ECX, 22, 22},
    {&Fields::popcnt, 1, ECX, 23, 23},
    {&Fields::tscDeadline, 1, ECX, 24, 24},
    {&Fields::aes, 1, ECX, 25, 25},
    {&Fields::xsave, 1, ECX, 26, 26},
    {&Fields::osxsave, 1, ECX, 27, 27},
    {&Fields::avx, 1, ECX, 28, 28},
    // avx2 and avx512 need several bits, so they have their own tests.
    {&Fields::multithreading, 1, EDX, 28, 28},
    {&Fields::lahfSahf, 0x80000001, ECX, 0, 0},
    {&Fields::cmpLegacy, 0x80000001, ECX, 1, 1},
    {&Fields::svm, 0x80000001, ECX, 2, 2},
    {&Fields::extApicSpace, 0x80000001, ECX, 3, 3},
    {&Fields::altMovCr8, 0x80000001, ECX, 4, 4},
    {&Fields::lzcnt, 0x80000001, ECX, 5, 5},
    {&Fields::sse4a, 0x80000001, ECX, 6, 6},
    {&Fields::misalignedSse, 0x80000001, ECX, 7, 7},
    {&Fields::prefetch3DNow, 0x80000001, ECX, 8, 8},
    {&Fields::skinit, 0x80000001, ECX, 12, 12},
    {&Fields::syscallSysret, 0x80000001, EDX, 11, 11},
    {&Fields::pageAttributeTable, 0x80000001, EDX, 16, 16},
    {&Fields::extendedEdxBit18, 0x80000001, EDX, 18, 18},
    {&Fields::extendedEdxBit21, 0x80000001, EDX, 21, 21},
    {&Fields::mmxExtensions, 0x80000001, EDX, 22, 22},
    {&Fields::rdtscp, 0x80000001, EDX, 27, 27},
    {&Fields::longMode, 0x80000001, EDX, 29, 29},
    {&Fields::extended3DNow, 0x80000001, EDX, 30, 30},
    {&Fields::amd3DNow, 0x80000001, EDX, 31, 31},
    {&Fields::nestedPaging, 0x8000000A, EDX, 0, 0},
    {&Fields::lbrVirtualization, 0x8000000A, EDX, 1, 1},
    {&Fields::fp128, 0x8000001A, EAX, 0, 0},
    {&Fields::movu, 0x8000001A, EAX, 1, 1},
    {&Fields::selfInitialising, 4, EAX, 8, 8},
    {&Fields::fullyAssociative, 4, EAX, 9, 9},
};

std::int64_t valueOf(const Fields& fields, const Source& source) {
    return std::visit([&](auto member) { return static_cast<std::int64_t>(fields.*member); },
                      source.field);
}

std::int64_t expectedValue(const Source& source, const std::uint32_t (&registers)[4]) {
    std::int64_t value = 0;
    for (unsigned i = source.first; i <= source.last; ++i)
        if (registers[source.reg] & bit(i)) value += std::int64_t{1} << (i - source.first);
    // Only the number of sets and the feature word use a whole register; the number of sets is
    // signed.
    const bool wholeSigned = std::holds_alternative<std::int32_t Fields::*>(source.field);
    return wholeSigned ? static_cast<std::int32_t>(value * source.factor) : value;
}

}  // namespace

class CpuidLeaf : public testing::TestWithParam<std::uint32_t> {};

// One bit at a time: the fields to which it belongs change as the table says, and no others do.
TEST_P(CpuidLeaf, EachBitLandsInItsFields) {
    const std::uint32_t leaf = GetParam();
    for (unsigned i = 0; i < 4 * 32; ++i) {
        // A cache of level 1, so that leaf 4 is read; the other leaves hold nothing.
        std::uint32_t registers[4] = {leaf == 4 ? bit(5) : 0, 0, 0, 0};
        registers[i / 32] |= bit(i % 32);
        FakeCpu cpu(20, 0x8000001F);
        cpu.answers[{leaf, 0}] = {registers[0], registers[1], registers[2], registers[3]};
        const Fields fields = cpu.read();
        for (const Source& source : sources) {
            const std::int64_t expected =
                source.leaf == leaf ? expectedValue(source, registers) : 0;
            EXPECT_EQ(valueOf(fields, source), expected)
                << "bit " << i % 32 << " of register " << i / 32 << ", field of leaf " << std::hex
                << source.leaf << " register " << source.reg << " bit " << std::dec << source.first;
        }
        EXPECT_FALSE(fields.avx2);
        EXPECT_FALSE(fields.avx512);
    }
}
INSTANTIATE_TEST_SUITE_P(Decoded, CpuidLeaf,
                         testing::Values(1, 4, 7, 0x80000001, 0x80000006, 0x80000008, 0x8000000A,
                                         0x8000001A));
INSTANTIATE_TEST_SUITE_P(Ignored, CpuidLeaf,
                         testing::Values(2, 3, 5, 6, 8, 20, 0x80000002, 0x80000005, 0x80000007,
                                         0x8000001F));

TEST(CpuidFields, StandInTheOrderOfTheTable) {
    static const Fields fields;
    const auto* const start = reinterpret_cast<const char*>(&fields);
    EXPECT_EQ(reinterpret_cast<const char*>(&fields.lastRegisters), start);
    std::vector<std::ptrdiff_t> offsets;
    for (const Source& source : sources)
        offsets.push_back(std::visit(
            [&](auto member) { return reinterpret_cast<const char*>(&(fields.*member)) - start; },
            source.field));
    std::ptrdiff_t expected = 16;  // after the four registers
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        if (offsets[i] == offsetof(Fields, multithreading)) expected += 2;  // avx2, avx512
        EXPECT_EQ(offsets[i], expected) << i;
        expected += std::holds_alternative<bool Fields::*>(sources[i].field) ? 1 : 4;
    }
    EXPECT_EQ(offsetof(Fields, avx2), offsetof(Fields, avx) + 1);
    EXPECT_EQ(offsetof(Fields, avx512), offsetof(Fields, avx) + 2);
    EXPECT_EQ(static_cast<std::ptrdiff_t>(sizeof(Fields)), (expected + 3) / 4 * 4);
}

TEST(CpuidFields, BeforeAnyQueryRegistersAreAllOnesAndTheRestIsZero) {
    const Fields fields;
    EXPECT_EQ(lastRegisters(fields), std::vector<std::uint32_t>(4, 0xFFFFFFFF));
    for (const Source& source : sources) EXPECT_EQ(valueOf(fields, source), 0);
    EXPECT_FALSE(fields.avx2);
    EXPECT_FALSE(fields.avx512);
}

// --- How the highest leaves limit the walk -------------------------------------------------------

TEST(CpuidHighestLeaf, FillsItsOwnFieldsOnly) {
    const CpuidRegisters ones{~0U, ~0U, ~0U, ~0U};
    FakeCpu withFlags(0, 0x80000001);
    withFlags.answers[{0x80000001, 0}] = ones;
    EXPECT_EQ(withFlags.read().extendedCacheLineSize, 0);
    FakeCpu withCaches(0, 0x80000006);
    withCaches.answers[{0x80000006, 0}] = ones;
    EXPECT_EQ(withCaches.read().physicalAddressBits, 0);
    EXPECT_EQ(withCaches.read().virtualAddressBits, 0);
    FakeCpu withAddresses(0, 0x80000008);
    withAddresses.answers[{0x80000008, 0}] = ones;
    EXPECT_FALSE(withAddresses.read().nestedPaging);
    FakeCpu withVirtualisation(0, 0x8000000A);
    withVirtualisation.answers[{0x8000000A, 0}] = ones;
    EXPECT_FALSE(withVirtualisation.read().fp128);
}

TEST(CpuidHighestLeaf, LeavesAboveItAreNotRead) {
    const auto readWith = [](std::uint32_t highestLeaf, std::uint32_t highestExtendedLeaf) {
        FakeCpu cpu(highestLeaf, highestExtendedLeaf);
        cpu.answers[{1, 0}] = {0, 0, avx | fusedMultiplyAdd | movbe | osxsave, bit(26)};
        cpu.answers[{7, 0}] = {0, bit(16), 0, 0};
        cpu.answers[{0x80000006, 0}] = {0, 0, 0x01006040, 0};
        return cpu.read();
    };
    EXPECT_EQ(readWith(0, 0).featureWord, 0U);
    EXPECT_FALSE(readWith(0, 0).avx2);
    EXPECT_EQ(readWith(1, 0).featureWord, bit(26));
    EXPECT_FALSE(readWith(6, 0).avx512);
    EXPECT_TRUE(readWith(7, 0).avx512);
    EXPECT_TRUE(readWith(20, 0).avx512);
    EXPECT_EQ(readWith(7, 0x80000005).l2SizeKiB, 0);
    EXPECT_EQ(readWith(7, 0x80000006).l2SizeKiB, 256);
    EXPECT_EQ(readWith(7, 0x7FFFFFFF).l2SizeKiB, 0);
}

TEST(CpuidHighestLeaf, DoesNotKeepLeaf4FromBeingRead) {
    for (const std::uint32_t highestLeaf : {0U, 1U, 3U, 4U}) {
        FakeCpu cpu(highestLeaf, 0);
        cpu.answers[{4, 0}] = {std::uint32_t{3} << 26 | 0x21, 63, 511, 0};
        const Fields f = cpu.read();
        EXPECT_EQ(f.cores, 3) << "deliberate: leaf 4 is asked for in any case";
        EXPECT_EQ(f.lineSize, 63);
        EXPECT_EQ(f.sets, 511);
        EXPECT_EQ(lastRegisters(f), (std::vector<std::uint32_t>{0, 0, 0, 0})) << "sub-leaf 1";
    }
}

// --- AVX2 and AVX-512 ---------------------------------------------------------------------------

namespace {

struct AvxCase {
    const char* name;
    std::uint32_t leaf1Ecx, leaf7Ebx;
    bool isAvx, isAvx2, isAvx512;
};
void PrintTo(const AvxCase& c, std::ostream* os) { *os << c.name; }

constexpr std::uint32_t leaf7Avx2 = bit(5), leaf7Avx512 = bit(16);
const AvxCase avxCases[] = {
    {"Nothing", 0, 0, false, false, false},
    {"AvxWithoutOsxsave", avx | fusedMultiplyAdd | movbe, leaf7Avx2, true, false, false},
    {"WithoutAvx", fusedMultiplyAdd | movbe | osxsave, leaf7Avx2, false, false, false},
    {"WithoutMovbe", avx | fusedMultiplyAdd | osxsave, leaf7Avx2, true, false, false},
    {"WithoutFma", avx | movbe | osxsave, leaf7Avx2, true, false, false},
    {"Avx2OfLeaf1Alone", avx | fusedMultiplyAdd | movbe | osxsave, 0, true, true, false},
    {"Avx2OfBothLeaves", avx | fusedMultiplyAdd | movbe | osxsave, leaf7Avx2, true, true, false},
    {"Avx512", avx | fusedMultiplyAdd | movbe | osxsave, leaf7Avx512, true, true, true},
    {"Avx512WithoutAvx2", avx | fusedMultiplyAdd | movbe, leaf7Avx512 | leaf7Avx2, true, false,
     false},
    {"EverythingButAvx512", 0xFFFFFFFF, ~leaf7Avx512, true, true, false},
};

}  // namespace

class CpuidAvx : public testing::TestWithParam<AvxCase> {};

TEST_P(CpuidAvx, FollowsTheBits) {
    FakeCpu cpu(7, 0);
    cpu.answers[{1, 0}] = {0, 0, GetParam().leaf1Ecx, 0};
    cpu.answers[{7, 0}] = {0, GetParam().leaf7Ebx, 0, 0};
    const kxCPUInfo info(cpu.read());
    EXPECT_EQ(info.hasAVXSupport(), GetParam().isAvx);
    EXPECT_EQ(info.hasAVX2Support(), GetParam().isAvx2);
    EXPECT_EQ(info.hasAVX512Support(), GetParam().isAvx512);
}
INSTANTIATE_TEST_SUITE_P(Table, CpuidAvx, testing::ValuesIn(avxCases), kxtest::nameOfRow);

// --- Caches of leaf 4 ---------------------------------------------------------------------------

TEST(CpuidCaches, NoneDescribedLeavesAllFieldsAlone) {
    FakeCpu cpu(4, 0);
    cpu.answers[{4, 0}] = {0xFC00C30F, 0xFFFFFFFF, 7, 9};  // bits 4 to 7 of EAX are clear
    const Fields f = cpu.read();
    EXPECT_EQ(cpu.queries.back(), Query(4, 0));
    EXPECT_EQ(lastRegisters(f), (std::vector<std::uint32_t>{0xFC00C30F, 0xFFFFFFFF, 7, 9}));
    for (const Source& source : sources) EXPECT_EQ(valueOf(f, source), 0) << source.first;
}

// The sub-leaves of a desktop processor: level 1 data and instructions, level 2, level 3.
TEST(CpuidCaches, LastOneDescribedIsKeptAndCoresComeFromTheFirst) {
    const CpuidRegisters caches[] = {{0x1C004121, 0x01C0003F, 0x3F, 0},
                                     {0x18004122, 0x01C0003F, 0x3F, 0},
                                     {0x14004143, 0x00C0003F, 0x3FF, 0},
                                     {0x1003C363, 0x03C0103F, 0x1FFF, 6}};
    for (const std::uint32_t count : {1U, 4U}) {
        FakeCpu cpu(4, 0);
        for (std::uint32_t i = 0; i < count; ++i) cpu.answers[{4, i}] = caches[i];
        cpu.answers[{4, count}] = {0x0400000F, 1, 2, 3};  // no cache
        cpu.answers[{4, count + 1}] = caches[0];          // never asked
        const Fields f = cpu.read();
        EXPECT_EQ(cpu.queries.back(), Query(4, count));
        EXPECT_EQ(lastRegisters(f), (std::vector<std::uint32_t>{0x0400000F, 1, 2, 3}));
        EXPECT_EQ(f.cores, 7);
        const bool four = count == 4;
        EXPECT_EQ(f.cacheType, four ? 3 : 1);
        EXPECT_EQ(f.cacheLevel, four ? 3 : 1);
        EXPECT_EQ(f.maxThreadsSharing, four ? 15 : 1);
        EXPECT_EQ(f.lineSize, 63);
        EXPECT_EQ(f.partitions, four ? 1 : 0);
        EXPECT_EQ(f.ways, four ? 15 : 7);
        EXPECT_EQ(f.sets, four ? 8191 : 63);
        EXPECT_TRUE(f.selfInitialising);
        EXPECT_EQ(f.fullyAssociative, four);
    }
}

// Bit 4 belongs to the type, bits 5 to 7 to the level; each of them alone describes a cache.
TEST(CpuidCaches, AnyOfBits4To7DescribesOne) {
    for (unsigned i = 0; i < 32; ++i) {
        FakeCpu cpu(0, 0);
        cpu.answers[{4, 0}] = {bit(i), 0, 0, 0};
        cpu.read();
        EXPECT_EQ(cpu.queries.back(), Query(4, i >= 4 && i <= 7 ? 1 : 0)) << i;
    }
}

// --- Two real processors, as their makers document the encoding ---------------------------------

TEST(CpuidExample, IntelDesktop) {
    FakeCpu cpu(0x16, 0x80000008);
    cpu.answers[{1, 0}] = {0x000506E3, 0x02100800, 0x7FFAFBBF, 0xBFEBFBFF};
    cpu.answers[{7, 0}] = {0, 0x029C6FBF, 0, 0};
    cpu.answers[{0x80000001, 0}] = {0, 0, 0x00000121, 0x2C100800};
    cpu.answers[{0x80000006, 0}] = {0, 0, 0x01006040, 0};
    cpu.answers[{0x80000008, 0}] = {0x00003027, 0, 0, 0};
    const Fields f = cpu.read();
    EXPECT_EQ(f.family, 6);
    EXPECT_EQ(f.extendedModel * 16 + f.model, 0x5E);
    EXPECT_EQ(f.stepping, 3);
    EXPECT_EQ(f.flushLineSize, 64);
    EXPECT_EQ(f.logicalProcessors, 16);
    EXPECT_EQ(f.initialApicId, 2);
    EXPECT_EQ(f.l2SizeKiB, 256);
    EXPECT_EQ(f.extendedCacheLineSize, 64);
    EXPECT_EQ(f.physicalAddressBits, 39);
    EXPECT_EQ(f.virtualAddressBits, 48);
    EXPECT_TRUE(f.lahfSahf && f.lzcnt && f.prefetch3DNow && f.syscallSysret && f.longMode);
    EXPECT_FALSE(f.svm || f.amd3DNow);
    EXPECT_TRUE(f.vmx && f.multithreading && f.avx2);
    EXPECT_FALSE(f.avx512);
}

TEST(CpuidExample, AmdServer) {
    FakeCpu cpu(0x10, 0x80000028);
    cpu.answers[{1, 0}] = {0x00A10F11, 0x05080800, 0xFEF83203, 0x178BFBFF};
    cpu.answers[{7, 0}] = {0, 0xF1BF97A9, 0, 0};
    cpu.answers[{0x80000001, 0}] = {0x00A10F11, 0, 0x75C237FF, 0x2FD3FBFF};
    cpu.answers[{0x80000006, 0}] = {0, 0, 0x04006140, 0};
    cpu.answers[{0x80000008, 0}] = {0x00003030, 0, 0, 0};
    cpu.answers[{0x8000000A, 0}] = {1, 0x8000, 0, 0x1EBFBCFF};
    cpu.answers[{0x8000001A, 0}] = {6, 0, 0, 0};
    const Fields f = cpu.read();
    EXPECT_EQ(f.family + f.extendedFamily, 0x19);
    EXPECT_EQ(f.extendedModel * 16 + f.model, 0x11);
    EXPECT_EQ(f.stepping, 1);
    EXPECT_EQ(f.l2SizeKiB, 1024);
    EXPECT_EQ(f.l2Associativity, 6);
    EXPECT_EQ(f.physicalAddressBits, 48);
    EXPECT_TRUE(f.svm && f.sse4a && f.skinit && f.rdtscp && f.nestedPaging && f.lbrVirtualization);
    EXPECT_TRUE(f.movu);
    EXPECT_FALSE(f.fp128);
    EXPECT_EQ(f.cores, 0);  // leaf 4 is reserved here
    EXPECT_TRUE(f.avx2);
    EXPECT_TRUE(f.avx512);
}

// --- The table of kernels -----------------------------------------------------------------------

TEST(KernelTable, FastestIsTheFirstUsable) {
    struct Kernel {
        bool (*usable)();
        int number;
    };
    const auto yes = [] { return true; };
    const auto no = [] { return false; };
    using Table = kx::detail::KernelTable<Kernel>;
    EXPECT_EQ((Table{{{{no, 1}, {yes, 2}, {yes, 3}}}, 3}.fastest().number), 2);
    EXPECT_EQ((Table{{{{no, 1}, {no, 2}, {yes, 3}}}, 3}.fastest().number), 3);
    EXPECT_EQ((Table{{{{yes, 1}, {}, {}}}, 1}.fastest().number), 1);
}
