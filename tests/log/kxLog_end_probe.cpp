// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxLog_end_probe PLUGIN MODE FILE OTHER: loads a plug-in, which brings the library, and lets it
// log; again late, which is when the library's static objects are destroyed. In the mode "unload"
// it loads and unloads it three times in place of that, checks that the library OTHER is gone with
// it, and then starts a process. Does not link the library itself: what is registered for the end
// of the process before the library is loaded comes after it there.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <iostream>

namespace {

using LogEarly = void (*)(const char* mode, const char* file, const char* other);

void (*logLate)() = nullptr;
void end() {
    if (logLate) logLate();
}

int unload(char** argv) {
    for (int i = 0; i < 3; ++i) {
        void* const plugin = dlopen(argv[1], RTLD_NOW);
        if (!plugin) return 2;
        reinterpret_cast<LogEarly>(dlsym(plugin, "logEarly"))(argv[2], argv[3], argv[4]);
        if (dlclose(plugin) != 0) return 3;
    }
    if (dlopen(argv[4], RTLD_NOW | RTLD_NOLOAD)) return 4;
    const pid_t child = fork();
    if (child == 0) _exit(0);
    int status = -1;
    return waitpid(child, &status, 0) == child && status == 0 ? 0 : 5;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) return 64;
    if (std::strcmp(argv[2], "unload") == 0) return unload(argv);
    if (std::atexit(end) != 0) return 1;
    void* const plugin = dlopen(argv[1], RTLD_NOW);
    if (!plugin) {
        // Through the C++ library, which must be loaded before the plug-in: it might else be bound
        // to the plug-in's copies of its templates, which could then not be unloaded.
        std::cerr << dlerror() << '\n';
        return 2;
    }
    logLate = reinterpret_cast<void (*)()>(dlsym(plugin, "logLate"));
    reinterpret_cast<LogEarly>(dlsym(plugin, "logEarly"))(argv[2], argv[3], argv[4]);
    return 0;
}
