// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A library with a symbol that another library needs.
extern "C" __attribute__((visibility("default"))) int kxProvidedValue() { return 41; }
