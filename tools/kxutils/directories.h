// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Lines about directories, whether they exist or not.
#pragma once

#include <string>

#include "report.h"

/// Adds an item that shows where a directory is and whether it exists.
void addDirectory(Report& report, const std::string& name, const std::string& path);
