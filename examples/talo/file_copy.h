// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Copying files of any size.
#pragma once

#include <string>

/// Copies a file, replacing the target; true only if all of it has been written. Large files pass
/// through the cached streams in blocks, so memory does not grow with them, and show their progress
/// if standard error is a terminal.
bool copyFile(const std::string& source, const std::string& target);
