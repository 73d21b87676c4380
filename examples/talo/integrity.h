// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shows what the checksum footer is good for.
#pragma once

#include <string>

/// Copies the file into the temporary directory, stamps the copy with a checksum footer, verifies
/// it, damages one byte and looks whether that is noticed; the library reports each finding on
/// standard output. True if all went as it should. The copy is removed.
bool tryChecksum(const std::string& path);
