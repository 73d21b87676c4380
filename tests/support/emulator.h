// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Programs that cannot run directly.
#pragma once

namespace kxtest {

/// True if an emulator, or a tool such as Valgrind, runs the programs that are built. Each of them
/// is then a script that starts the program beside it, whose name ends in ".elf".
bool underEmulator();

/// True if that is Valgrind, where a failing operator new ends the program instead of throwing, and
/// where a program is known only by its own path.
bool underValgrind();

}  // namespace kxtest
