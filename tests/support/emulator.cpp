// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "emulator.h"

bool kxtest::underEmulator() { return KXTEST_EMULATED; }
