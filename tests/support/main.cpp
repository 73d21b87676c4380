// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Entry point of every test program: the home directory is a temporary one, and no variable of the
// caller's steers the library.
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
