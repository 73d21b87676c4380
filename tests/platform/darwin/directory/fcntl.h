// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Adds to the system's header the declarations that macOS also has and the library uses.
#pragma once
#pragma GCC system_header  // otherwise the next line would be reported

#include_next <fcntl.h>

#define O_SEARCH 0x40000000
#define F_GETPATH 50

/// These stand in for open(2) and, for F_GETPATH, fcntl(2).
int darwinOpen(const char* path, int flags);
int darwinFcntl(int descriptor, int command, char* path);
#define open darwinOpen
#define fcntl darwinFcntl
