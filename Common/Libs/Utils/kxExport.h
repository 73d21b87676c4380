// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

/// \file
/// \brief Export marker of libkxUtils, and the checking of printf-style calls.
///
/// The library is built with hidden symbols; the names that applications and plug-ins use carry
/// KXUTILS_API. The type information of such classes is visible too, so that a value or an
/// exception made in one shared object is recognised in another.
#pragma once

/// Makes a name visible outside the library.
#define KXUTILS_API __attribute__((visibility("default")))

/// Lets the compiler check a printf-style call. `text` and `first` are the positions, counted from
/// 1, of the format string and of the first argument that it formats.
#define KXUTILS_PRINTF(text, first) __attribute__((__format__(__printf__, text, first)))
