// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A library with nothing in it: what loading costs at least.
extern "C" int kxbenchEmpty() { return 0; }
