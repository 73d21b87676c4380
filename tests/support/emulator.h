// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Programs that do not run by themselves.
#pragma once

namespace kxtest {

/// True when an emulator, or a tool such as Valgrind, runs the programs that are built: each is
/// then a script that starts the program beside it, whose name has ".elf" appended.
bool underEmulator();

/// True when that is Valgrind, whose operator new ends the program instead of throwing, and which
/// knows a program by its own path only.
bool underValgrind();

}  // namespace kxtest
