// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Copying files of any size.
#pragma once

#include <cstdint>
#include <string>

#include "open_file.h"

/// Writes all bytes of `source` to `copy`, in blocks, so that memory does not grow with the file; a
/// large one shows its progress if standard error is a terminal. `checksum` becomes the CRC-32 of
/// what was read. True only if all of it was read and written; otherwise the log says what was not.
bool copyContent(const SourceFile& source, OpenFile& copy, std::uint32_t& checksum);

/// Copies a file, replacing `target`, which keeps its content until all of the copy is written. A
/// link at `target` is replaced itself, not followed. True on success; otherwise the log says why
/// not.
bool copyFile(const SourceFile& source, const std::string& target);
