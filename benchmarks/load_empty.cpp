// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// An empty library, which shows what loading costs at least.
extern "C" int kxbenchEmpty() { return 0; }
