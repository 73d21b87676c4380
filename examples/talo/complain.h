// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Messages for the case that nothing else works.
#pragma once

/// Writes "talo: `text`" as a line on standard error, without allocating memory or using the
/// streams.
void complain(const char* text);

/// For std::set_terminate(): complains about the exception that was not caught, and ends the
/// program with exit code 1, where abort() would end it with a signal.
[[noreturn]] void endWithComplaint();
