// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Copying files of any size.
#pragma once

#include <cstdint>
#include <string>

#include "open_file.h"

/// Writes all bytes of `source` to `copy`, in blocks, so that memory does not grow with the file. A
/// large file shows its progress if standard error is a terminal. `checksum` becomes the CRC-32 of
/// what was read. Returns true only if everything was read and written; otherwise the log says what
/// was not.
bool copyContent(const SourceFile& source, OpenFile& copy, std::uint32_t& checksum);

/// Copies a file, replacing `target`, which keeps its content until the whole copy has been
/// written. A link at `target` is itself replaced, not followed. Returns true on success; otherwise
/// the log says what went wrong.
bool copyFile(const SourceFile& source, const std::string& target);
