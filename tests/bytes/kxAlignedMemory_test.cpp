// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxAlignedMemory.h"

#include <gtest/gtest.h>
#include <oneapi/tbb/scalable_allocator.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>

namespace {

bool isAligned(const void* p, unsigned long alignment) {
    return reinterpret_cast<std::uintptr_t>(p) % alignment == 0;
}

/// Fills the block with a pattern that differs from one byte to the next.
void fill(void* p, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i)
        static_cast<unsigned char*>(p)[i] = static_cast<unsigned char>(i * 7 + 1);
}

/// The number of leading bytes that still hold fill()'s pattern.
std::size_t kept(const void* p, std::size_t n) {
    std::size_t i = 0;
    while (i < n &&
           static_cast<const unsigned char*>(p)[i] == static_cast<unsigned char>(i * 7 + 1))
        ++i;
    return i;
}

}  // namespace

class AlignedMemory : public testing::TestWithParam<unsigned long> {};

TEST_P(AlignedMemory, GivesWritableBlocksAtTheAlignment) {
    for (const unsigned long size : {1UL, GetParam() - 1, GetParam() + 1, 100000UL, 5UL << 20}) {
        void* blocks[4];
        for (void*& block : blocks) {
            block = aligned_malloc(size, GetParam());
            ASSERT_NE(block, nullptr);
            EXPECT_TRUE(isAligned(block, GetParam())) << size;
            fill(block, size);
        }
        for (void* block : blocks) {
            EXPECT_EQ(kept(block, size), size);
            aligned_free(block);
        }
    }
}

TEST_P(AlignedMemory, ReallocKeepsContentAndAlignment) {
    void* p = aligned_realloc(nullptr, 100, GetParam());
    ASSERT_NE(p, nullptr);
    fill(p, 100);
    unsigned long before = 100;
    for (const unsigned long size : {101UL, 5000UL, 200000UL, 5UL << 20, 3000UL, 50UL}) {
        p = aligned_realloc(p, size, GetParam());
        ASSERT_NE(p, nullptr);
        EXPECT_TRUE(isAligned(p, GetParam())) << size;
        const unsigned long common = size < before ? size : before;
        EXPECT_EQ(kept(p, common), common) << size;
        fill(p, size);
        before = size;
    }
    aligned_free(p);
}

INSTANTIATE_TEST_SUITE_P(Alignments, AlignedMemory,
                         testing::Values(8, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096),
                         testing::PrintToStringParamName());

TEST(AlignedMemoryFailure, IsNull) {
    for (const unsigned long alignment : {0UL, 3UL, 24UL, 4095UL})
        EXPECT_EQ(aligned_malloc(100, alignment), nullptr) << alignment;
    EXPECT_EQ(aligned_malloc(0, 64), nullptr);
    EXPECT_EQ(aligned_malloc(1UL << 62, 64), nullptr);
}

TEST(AlignedMemoryFailure, ReallocKeepsTheBlock) {
    void* p = aligned_malloc(100, 64);
    ASSERT_NE(p, nullptr);
    fill(p, 100);
    EXPECT_EQ(aligned_realloc(p, 200, 24), nullptr);
    EXPECT_EQ(aligned_realloc(p, 1UL << 62, 64), nullptr);
    EXPECT_EQ(kept(p, 100), 100U);
    EXPECT_EQ(aligned_realloc(p, 0, 64), nullptr);  // frees it
}

TEST(AlignedMemoryFailure, SaysWhyInErrno) {
    const auto errorOf = [](unsigned long size, unsigned long alignment) {
        errno = 0;
        EXPECT_EQ(aligned_malloc(size, alignment), nullptr);
        return errno;
    };
    EXPECT_EQ(errorOf(0, 64), EINVAL);
    EXPECT_EQ(errorOf(100, 24), EINVAL);
    EXPECT_EQ(errorOf(0, 24), EINVAL);
    EXPECT_EQ(errorOf(1UL << 62, 64), ENOMEM);
}

TEST(AlignedMemorySizeZero, ReallocOfNullIsABlock) {
    for (const unsigned long alignment : {1UL, 8UL, 64UL, 4096UL}) {
        errno = 0;
        void* const p = aligned_realloc(nullptr, 0, alignment);
        ASSERT_NE(p, nullptr);
        EXPECT_EQ(errno, 0);
        EXPECT_TRUE(isAligned(p, alignment));
        aligned_free(p);
    }
}

TEST(AlignedMemorySizeZero, ReallocFreesABlockAndLeavesErrnoAlone) {
    for (int i = 0; i < 3; ++i) {
        void* const p = aligned_malloc(1000, 64);
        ASSERT_NE(p, nullptr);
        errno = 0;
        EXPECT_EQ(aligned_realloc(p, 0, 64), nullptr);
        EXPECT_EQ(errno, 0);
    }
}

TEST(AlignedMemorySizeZero, ReallocWithAWrongAlignmentFreesNothing) {
    for (const unsigned long alignment : {0UL, 3UL, 24UL}) {
        void* const p = aligned_malloc(100, 64);
        ASSERT_NE(p, nullptr);
        fill(p, 100);
        errno = 0;
        EXPECT_EQ(aligned_realloc(p, 0, alignment), nullptr);
        EXPECT_EQ(errno, EINVAL);
        void* const other = aligned_malloc(100, 64);
        EXPECT_NE(other, p);
        EXPECT_EQ(kept(p, 100), 100U);
        aligned_free(other);
        aligned_free(p);
        errno = 0;
        EXPECT_EQ(aligned_realloc(nullptr, 0, alignment), nullptr);
        EXPECT_EQ(errno, EINVAL);
    }
}

TEST(AlignedMemoryFree, IgnoresNull) { aligned_free(nullptr); }

TEST(AlignedMemoryFree, LetsTheMemoryBeUsedAgain) {
    constexpr std::size_t blocks = 1000;
    std::set<void*> places;  // as many as there are blocks if none of them moves
    for (std::size_t i = 0; i < blocks; ++i) {
        void* const p = aligned_malloc(1UL << 20, 64);
        ASSERT_NE(p, nullptr);
        places.insert(p);
        aligned_free(p);
    }
    EXPECT_LT(places.size(), blocks);
}

TEST(AlignedMemoryOrigin, IsTheScalableAllocator) {
    void* ours = aligned_malloc(1000, 64);
    EXPECT_GE(scalable_msize(ours), 1000U);
    scalable_aligned_free(ours);
    void* theirs = scalable_aligned_malloc(1000, 64);
    theirs = aligned_realloc(theirs, 2000, 64);
    EXPECT_GE(scalable_msize(theirs), 2000U);
    aligned_free(theirs);
}
