// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// load_helper LIBRARY [DEPENDENCY...]
// Loads the dependencies, then the library, and prints how many nanoseconds the library took. It
// links nothing but the C library, so that everything else is loaded here.
#include <dlfcn.h>

#include <cstdio>
#include <ctime>

static long long now() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

int main(int count, char** names) {
    for (int i = 2; i < count; ++i)
        if (!dlopen(names[i], RTLD_NOW)) return 1;
    const long long start = now();
    const void* const library = dlopen(names[1], RTLD_NOW);
    const long long end = now();
    if (!library) return 1;
    std::printf("%lld\n", end - start);
    return 0;
}
