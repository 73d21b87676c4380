// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Messages for when nothing else works.
#pragma once

/// Writes "talo: `text`" as a line on standard error, without memory and without the streams.
void complain(const char* text);

/// For std::set_terminate(): complains about the exception that nobody has caught, and ends the
/// program with exit code 1, where abort() would end it by a signal.
[[noreturn]] void endWithComplaint();
