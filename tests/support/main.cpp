// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The entry point of every test program. The home directory is a temporary one, and none of the
// caller's variables influences the library.
#include <gtest/gtest.h>

#include <cstdlib>

#include "kxtest.h"

int main(int argc, char** argv) {
    testing::InitGoogleTest(&argc, argv);
    const kxtest::TempDir home;
    setenv("HOME", home.path().c_str(), 1);
    for (const char* name : {"TALO_TMP_DIR", "TALO_ROOT", "TALO_LOG_DIR", "_LOG_DIR"})
        unsetenv(name);
    return RUN_ALL_TESTS();
}
