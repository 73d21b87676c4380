// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The malloc family of the program, which the C and C++ libraries call as well: the GNU library's
// own functions, with a gate before them.
#include <cerrno>
#include <cstddef>

#include "faults.h"

// NOLINTBEGIN(bugprone-reserved-identifier): the names that the GNU library gives them.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier)

using kxtest::faults::count;
using kxtest::faults::mayAllocate;

namespace kxtest {
bool reachesMalloc() { return true; }
}  // namespace kxtest

static void* counted(void* block) {
    if (block) count(1);
    return block;
}

static void* refused() {
    errno = ENOMEM;
    return nullptr;
}

extern "C" {

void* malloc(std::size_t size) { return mayAllocate() ? counted(__libc_malloc(size)) : refused(); }

void* calloc(std::size_t n, std::size_t size) {
    return mayAllocate() ? counted(__libc_calloc(n, size)) : refused();
}

void* realloc(void* block, std::size_t size) {
    if (!mayAllocate()) return refused();
    void* const result = __libc_realloc(block, size);
    if (!block && result) count(1);
    if (block && size == 0) count(-1);  // this has freed it
    return result;
}

void* memalign(std::size_t alignment, std::size_t size) {
    return mayAllocate() ? counted(__libc_memalign(alignment, size)) : refused();
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
    void* const result = memalign(alignment, size);
    if (!result) return ENOMEM;
    *block = result;
    return 0;
}

void free(void* block) {
    if (block) count(-1);
    __libc_free(block);
}

}  // extern "C"
