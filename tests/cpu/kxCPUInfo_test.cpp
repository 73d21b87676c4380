// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCPUInfo.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <thread>
#include <type_traits>
#include <vector>

static_assert(std::is_default_constructible_v<kxCPUInfo>);
static_assert(std::has_virtual_destructor_v<kxCPUInfo>);
static_assert(sizeof(kxCPUInfo) - sizeof(void*) - sizeof(kxCPUInfo::Fields) < sizeof(void*),
              "the fields and the pointer to the virtual destructor, nothing else");
static_assert(std::is_same_v<decltype(kxCPUInfo::getCPUInfo()), kxCPUInfo&>);

TEST(SharedCpuInfo, IsOneObject) { EXPECT_EQ(&kxCPUInfo::getCPUInfo(), &kxCPUInfo::getCPUInfo()); }

TEST(SharedCpuInfo, IsOneObjectForThreadsThatMakeItTogether) {
    constexpr std::size_t count = 8;
    std::vector<const kxCPUInfo*> seen(count);
    std::atomic<std::size_t> waiting{count};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < count; ++i)
        threads.emplace_back([&, i] {
            for (--waiting; waiting != 0;) std::this_thread::yield();
            seen[i] = &kxCPUInfo::getCPUInfo();
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(seen, std::vector<const kxCPUInfo*>(count, &kxCPUInfo::getCPUInfo()));
}

TEST(CpuInfo, OwnInstanceAnswersLikeTheSharedOne) {
    const kxCPUInfo own;
    const kxCPUInfo& shared = kxCPUInfo::getCPUInfo();
    EXPECT_NE(&own, &shared);
    EXPECT_EQ(own.fields().featureWord, shared.fields().featureWord);
    EXPECT_EQ(own.hasSSE2Support(), shared.hasSSE2Support());
    EXPECT_EQ(own.hasSSE42Support(), shared.hasSSE42Support());
    EXPECT_EQ(own.hasAVXSupport(), shared.hasAVXSupport());
    EXPECT_EQ(own.hasAVX2Support(), shared.hasAVX2Support());
    EXPECT_EQ(own.hasAVX512Support(), shared.hasAVX512Support());
}

// The answers of a processor on which exactly one thing is set.
static std::vector<bool> answers(void (*set)(kxCPUInfo::Fields&)) {
    kxCPUInfo::Fields fields;
    set(fields);
    const kxCPUInfo info(fields);
    return {info.hasSSE2Support(), info.hasSSE42Support(), info.hasAVXSupport(),
            info.hasAVX2Support(), info.hasAVX512Support()};
}

TEST(CpuInfo, EachAnswerFollowsItsOwnField) {
    using Fields = kxCPUInfo::Fields;
    using Answers = std::vector<bool>;
    EXPECT_EQ(answers([](Fields&) {}), (Answers{false, false, false, false, false}));
    EXPECT_EQ(answers([](Fields& f) { f.featureWord = 1U << 26; }),
              (Answers{true, false, false, false, false}));
    EXPECT_EQ(answers([](Fields& f) { f.featureWord = ~(1U << 26); }),
              (Answers{false, false, false, false, false}));
    EXPECT_EQ(answers([](Fields& f) { f.sse42 = true; }),
              (Answers{false, true, false, false, false}));
    EXPECT_EQ(answers([](Fields& f) { f.avx = true; }),
              (Answers{false, false, true, false, false}));
    EXPECT_EQ(answers([](Fields& f) { f.avx2 = true; }),
              (Answers{false, false, false, true, false}));
    EXPECT_EQ(answers([](Fields& f) { f.avx512 = true; }),
              (Answers{false, false, false, false, false}));
    EXPECT_EQ(answers([](Fields& f) { f.avx2 = f.avx512 = true; }),
              (Answers{false, false, false, true, true}));
}

TEST(CpuInfo, NamesOfTheFeatureBits) {
    static const char* const names[32] = {"x87 FPU On Chip",
                                          "Virtual-8086 Mode Enhancement",
                                          "Debugging Extensions",
                                          "Page Size Extensions",
                                          "Time Stamp Counter",
                                          "RDMSR and WRMSR Support",
                                          "Physical Address Extensions",
                                          "Machine Check Exception",
                                          "CMPXCHG8B Instruction",
                                          "APIC On Chip",
                                          "Unknown1",
                                          "SYSENTER and SYSEXIT",
                                          "Memory Type Range Registers",
                                          "PTE Global Bit",
                                          "Machine Check Architecture",
                                          "Conditional Move/Compare Instruction",
                                          "Page Attribute Table",
                                          "36-bit Page Size Extension",
                                          "Processor Serial Number",
                                          "CFLUSH Extension",
                                          "Unknown2",
                                          "Debug Store",
                                          "Thermal Monitor and Clock Ctrl",
                                          "MMX Technology",
                                          "FXSAVE/FXRSTOR",
                                          "SSE Extensions",
                                          "SSE2 Extensions",
                                          "Self Snoop",
                                          "Multithreading Technology",
                                          "Thermal Monitor",
                                          "Unknown4",
                                          "Pending Break Enable"};
    static_assert(std::extent_v<decltype(kxCPUInfo::_szFeatures)> == 32);
    for (std::size_t i = 0; i < 32; ++i) EXPECT_STREQ(kxCPUInfo::_szFeatures[i], names[i]);
}

#if defined(__x86_64__) || defined(__i386__)

#include <cpuid.h>

TEST(LiveCpu, AgreesWithTheCompilersOwnQuery) {
    std::uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
    ASSERT_EQ(__get_cpuid(1, &eax, &ebx, &ecx, &edx), 1);
    const kxCPUInfo& info = kxCPUInfo::getCPUInfo();
    EXPECT_EQ(info.hasSSE2Support(), (edx & bit_SSE2) != 0);
    EXPECT_EQ(info.hasSSE42Support(), (ecx & bit_SSE4_2) != 0);
    EXPECT_EQ(info.hasAVXSupport(), (ecx & bit_AVX) != 0);
    const std::uint32_t avx2Bits = bit_AVX | bit_MOVBE | bit_FMA | bit_OSXSAVE;
    const bool avx2 = (ecx & avx2Bits) == avx2Bits;
    EXPECT_EQ(info.hasAVX2Support(), avx2);
    EXPECT_EQ(info.fields().featureWord, edx);
    EXPECT_EQ(info.fields().stepping, static_cast<std::int32_t>(eax & 15));
    EXPECT_EQ(info.fields().family, static_cast<std::int32_t>(eax >> 8 & 15));

    const bool hasLeaf7 = __get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) == 1;
    EXPECT_EQ(info.hasAVX512Support(), avx2 && hasLeaf7 && (ebx & bit_AVX512F) != 0);
    if (__get_cpuid(0x80000008, &eax, &ebx, &ecx, &edx) == 1) {
        EXPECT_EQ(info.fields().physicalAddressBits, static_cast<std::int32_t>(eax & 255));
        EXPECT_EQ(info.fields().virtualAddressBits, static_cast<std::int32_t>(eax >> 8 & 255));
    }
}

#else

TEST(LiveCpu, WithoutCpuidEveryAnswerIsFalse) {
    const kxCPUInfo& info = kxCPUInfo::getCPUInfo();
    EXPECT_FALSE(info.hasSSE2Support());
    EXPECT_FALSE(info.hasSSE42Support());
    EXPECT_FALSE(info.hasAVXSupport());
    EXPECT_FALSE(info.hasAVX2Support());
    EXPECT_FALSE(info.hasAVX512Support());
}

#endif
