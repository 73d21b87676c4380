// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Expands its argument in a process with its own user database: the home directory of the effective
// user is the variable PROBE_HOME (there is no entry if it is not set), and "ann" lives in "/ann".
// A symbol of the executable takes precedence over the C library's.
#include <pwd.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "kxFile.h"

static constexpr uid_t effectiveUser = 4711;

static passwd* entryWithHome(const char* home) {
    static passwd entry{};
    entry.pw_dir = const_cast<char*>(home);
    return home ? &entry : nullptr;
}

extern "C" {
uid_t getuid() noexcept { return effectiveUser + 1; }
uid_t geteuid() noexcept { return effectiveUser; }
passwd* getpwuid(uid_t id) {
    return entryWithHome(id == effectiveUser ? std::getenv("PROBE_HOME") : nullptr);
}
passwd* getpwnam(const char* name) {
    return entryWithHome(std::string(name) == "ann" ? "/ann" : nullptr);
}
}

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    std::fputs(kxFile::expandFilename(argv[1]).c_str(), stdout);
    return 0;
}
