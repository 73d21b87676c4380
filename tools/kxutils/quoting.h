// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Names and texts of any bytes, made safe for a terminal: a newline or an escape sequence in a name
// must not pass for a line or a colour of ours.
#pragma once

#include <string>

/// A name as ls(1) shows it on a terminal: unchanged, or quoted so that a shell reads the same
/// bytes back. Whatever the user's locale (LC_CTYPE) cannot print becomes an escape sequence.
///
///     a.osb  ->  a.osb          ""       ->  ''
///     a b    ->  'a b'          a'b      ->  "a'b"
///     a\b    ->  'a\b'          a⏎b      ->  'a'$'\n''b'
std::string shellQuoted(const std::string& name);

/// A text in which whatever cannot be printed is replaced, in a way that suits a name between
/// single quotes:
///
///     no file 'a⏎b'  ->  no file 'a'$'\n''b'
///
/// Newlines stay if `keepsNewlines`.
std::string printable(const std::string& text, bool keepsNewlines);
