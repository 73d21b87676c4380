// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The time it takes to load a library, each time in a fresh process.
#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "kxbench.h"

namespace {

// The names of the libraries that the library at this path needs, each preceded by a blank.
std::string dependencies(const std::string& path) {
    std::string names;
    void* const library = dlopen(path.c_str(), RTLD_NOW);
    link_map* map = nullptr;
    if (!library || dlinfo(library, RTLD_DI_LINKMAP, &map) != 0) return names;
    const char* texts = nullptr;
    for (const ElfW(Dyn)* d = map->l_ld; d->d_tag != DT_NULL; ++d)
        if (d->d_tag == DT_STRTAB) texts = reinterpret_cast<const char*>(d->d_un.d_ptr);
    for (const ElfW(Dyn)* d = map->l_ld; d->d_tag != DT_NULL; ++d)
        if (d->d_tag == DT_NEEDED) names += std::string(" ") + (texts + d->d_un.d_val);
    return names;
}

// The time in seconds as measured by the helper; negative if it could not load the library.
double secondsToLoad(const std::string& arguments) {
    std::FILE* const helper = popen((KXBENCH_LOAD_HELPER " " + arguments).c_str(), "r");
    long long nanoseconds = -1;
    if (helper && std::fscanf(helper, "%lld", &nanoseconds) != 1) nanoseconds = -1;
    if (helper) pclose(helper);
    return static_cast<double>(nanoseconds) * 1e-9;
}

// The least time of several processes. Whatever exceeds it was added by other activity on the
// machine.
double leastSeconds(const std::string& arguments) {
    double least = secondsToLoad(arguments);
    for (int i = 1; i < 9; ++i) least = std::min(least, secondsToLoad(arguments));
    return least;
}

void add(const char* name, const std::string& path) {
    kxbench::timed("load the library alone", name,
                   [=] { return leastSeconds(path + dependencies(path)); });
    kxbench::timed("load the library and all it needs", name, [=] { return leastSeconds(path); });
}

const bool registered = [] {
    add("kxUtils", KXBENCH_LIBRARY);
#if KXBENCH_ABSEIL
    add("Abseil strings", KXBENCH_ABSEIL_LIBRARY);
#endif
#if KXBENCH_FMT
    add("fmt", KXBENCH_FMT_LIBRARY);
#endif
#if KXBENCH_ZLIB
    add("zlib", KXBENCH_ZLIB_LIBRARY);
#endif
    add("limit an empty library", KXBENCH_EMPTY_LIBRARY);
    return true;
}();

}  // namespace
