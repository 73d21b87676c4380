// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// library_load_probe LIBRARY: loads the library and prints how many times its constructors have
// allocated memory with operator new.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <new>

static int allocations = 0;

void* operator new(std::size_t size) {
    ++allocations;
    if (void* const memory = std::malloc(size)) return memory;
    throw std::bad_alloc();
}
// Not inlined, because GCC would then take free() for the wrong partner of operator new.
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

int main(int /*count*/, char** names) {
    // The run-time library may set something up here, which is not counted.
    delete new int;
    allocations = 0;
    if (!dlopen(names[1], RTLD_NOW)) {
        std::fprintf(stderr, "%s\n", dlerror());
        return 1;
    }
    std::printf("%d\n", allocations);
    return 0;
}
