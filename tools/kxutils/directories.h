// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Lines of directories that do or do not exist.
#pragma once

#include <string>

#include "report.h"

/// Adds an item that says where a directory is, and whether it exists.
void addDirectory(Report& report, const std::string& name, const std::string& path);
