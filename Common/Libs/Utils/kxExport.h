// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Export marker of libkxUtils.
//
// The library is built with hidden symbols; what applications and plug-ins use carries KXUTILS_API.
// The type information of such classes is visible too, so that a value or an exception made in one
// shared object is recognised in another.
#pragma once

/// Makes a name visible outside the library.
#define KXUTILS_API __attribute__((visibility("default")))

/// Lets the compiler check a printf-style call: `text` and `first` are the positions (from 1) of
/// the format string and of the first argument that it formats.
#define KXUTILS_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))
