// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "emulator.h"

#include <cstdlib>
#include <cstring>

bool kxtest::underEmulator() { return KXTEST_EMULATED; }

bool kxtest::underValgrind() {
    const char* const preloaded = std::getenv("LD_PRELOAD");
    return preloaded && std::strstr(preloaded, "vgpreload");
}
