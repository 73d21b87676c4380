// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shows what the checksum footer is good for.
#pragma once

#include <string>

#include "open_file.h"

/// Copies the file into `directory`, a private one, stamps the copy with a checksum footer,
/// verifies it, damages one byte and looks whether that is noticed; prints what was found. True if
/// all went as it should; otherwise the log says what did not. The copy is removed.
bool tryChecksum(const SourceFile& source, const std::string& directory);
