// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The operator new of the program, which the library calls as well. For other systems, and for
// programs whose malloc belongs to something else, such as a sanitizer.
#include <algorithm>
#include <cstdlib>
#include <new>

#include "faults.h"

namespace kxtest {
bool reachesMalloc() { return false; }
}  // namespace kxtest

void* operator new(std::size_t size) {
    void* const block =
        kxtest::faults::mayAllocate() ? std::malloc(std::max<std::size_t>(size, 1)) : nullptr;
    if (!block) throw std::bad_alloc();
    kxtest::faults::count(1);
    return block;
}
void* operator new[](std::size_t size) { return operator new(size); }

void operator delete(void* block) noexcept {
    if (block) kxtest::faults::count(-1);
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
void operator delete[](void* block) noexcept { operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { operator delete(block); }
