// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What loading the library costs a program that starts with it. The benchmark measures the time;
// these tests cover what does not depend on the machine.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <link.h>

#include <cstddef>
#include <map>
#include <string>

#include "kxtest.h"

namespace {

// The library's dynamic section as it was linked. Missing tags count as 0.
std::map<long long, std::size_t> dynamicSection() {
    std::map<long long, std::size_t> values;
    void* const library = dlopen(KX_LIBRARY, RTLD_NOW);
    link_map* map = nullptr;
    if (!library || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) return values;
    for (const ElfW(Dyn)* d = map->l_ld; d->d_tag != DT_NULL; ++d) values[d->d_tag] = d->d_un.d_val;
    return values;
}

}  // namespace

TEST(LibraryLoad, RelocatesLittle) {
#ifdef __clang__
    GTEST_SKIP() << "the count is that of GCC, which packages are built with";
#endif
#ifndef __OPTIMIZE__
    GTEST_SKIP() << "without optimisation, what should be inlined is looked up";
#endif
    if (kxtest::underSanitizer()) GTEST_SKIP() << "the sanitizer has relocations of its own";
    auto section = dynamicSection();
    ASSERT_EQ(section.count(36 /* DT_RELR */), 0U) << "packed relocations are not counted here";
    const std::size_t bytes = section[DT_RELASZ] + section[DT_PLTRELSZ];
    EXPECT_GT(bytes, 0U);
    EXPECT_LE(bytes / sizeof(ElfW(Rela)), 316U);
}

// One constructor is the C run-time library's, one the compiler's for __builtin_cpu_supports. The
// others belong to the sources that have strings or containers among their static members
// (kxAnyConverter, kxFile, kxLog, kxPlatform) and to the source that uses std::cout (kxUtils).
TEST(LibraryLoad, RunsFewConstructors) {
    if (kxtest::underSanitizer()) GTEST_SKIP() << "the sanitizer has constructors of its own";
    if (kxtest::countsCoverage()) GTEST_SKIP() << "one more makes the counts be written";
    auto section = dynamicSection();
    EXPECT_GT(section[DT_INIT_ARRAYSZ], 0U);
    EXPECT_LE(section[DT_INIT_ARRAYSZ] / sizeof(void*), 7U);
}

TEST(LibraryLoad, AllocatesNothing) {
    const kxtest::Outcome outcome = kxtest::run({KX_LOAD_PROBE, KX_LIBRARY});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "0\n");
}
