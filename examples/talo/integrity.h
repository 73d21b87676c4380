// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shows the use of the checksum footer.
#pragma once

#include <string>

#include "open_file.h"

/// Copies the file into `directory`, a private one, stamps the copy with a checksum footer,
/// verifies it, damages one byte, checks that the damage is noticed, and prints the findings.
/// Returns true if everything went as it should; otherwise the log says what did not. The copy is
/// removed.
bool tryChecksum(const SourceFile& source, const std::string& directory);
