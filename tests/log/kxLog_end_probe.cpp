// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxLog_end_probe PLUGIN MODE FILE OTHER: loads a plug-in, which loads the library, and lets it
// log, and log again late, that is, while the library's static objects are being destroyed. In the
// mode "unload" it instead loads and unloads the plug-in three times, checks that the library OTHER
// is unloaded with it, and then starts a process. It does not link the library itself: there, what
// is registered for the end of the process before the library is loaded happens after the library's
// end.
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
        // Printed with the C++ library, which must be loaded before the plug-in. Otherwise it might
        // be bound to the plug-in's copies of its templates, and these could then not be unloaded.
        std::cerr << dlerror() << '\n';
        return 2;
    }
    logLate = reinterpret_cast<void (*)()>(dlsym(plugin, "logLate"));
    reinterpret_cast<LogEarly>(dlsym(plugin, "logEarly"))(argv[2], argv[3], argv[4]);
    return 0;
}
