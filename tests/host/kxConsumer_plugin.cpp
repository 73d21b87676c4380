// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A library with a function that only another library defines. Lazily, it can be loaded in any
// case; with immediate binding, only if that definition is visible.
extern "C" {

int kxProvidedValue();

__attribute__((visibility("default"))) int kxOwnValue() { return 7; }

__attribute__((visibility("default"))) int kxConsumedValue() { return kxProvidedValue() + 1; }
}
