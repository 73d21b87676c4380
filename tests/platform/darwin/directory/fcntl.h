// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Adds to the system's header what that of macOS has beside it and the library uses.
#pragma once
#pragma GCC system_header  // or the next line would be reported

#include_next <fcntl.h>

#define O_SEARCH 0x40000000
#define F_GETPATH 50

/// Stand in for open(2) and, as far as F_GETPATH goes, fcntl(2).
int darwinOpen(const char* path, int flags);
int darwinFcntl(int descriptor, int command, char* path);
#define open darwinOpen
#define fcntl darwinFcntl
