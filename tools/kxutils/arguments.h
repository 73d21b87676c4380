// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The words of the command line, before and after CLI11.
#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

/// The arguments behind the program's name. "@FILE" stands for those in a file ("@-": standard
/// input), one a line, or each ended by a zero byte if the file holds one; "@@x" stands for "@x".
/// Throws Failure for a file that cannot be read.
std::vector<std::string> expandArguments(int argc, const char* const* argv);

/// CLI11 reads a meaning into some plain arguments: "[a,b]" (a list), "{}" (an empty list), "++"
/// (the end of a sub-command). Guarded, they reach the options declared below as they are.
std::string guarded(const std::string& argument);

/// A positional argument that takes one or more texts of any bytes, or with `isOptional` none.
CLI::Option* addTexts(CLI::App& app, const std::string& name, std::vector<std::string>& texts,
                      const std::string& description);

/// An option, or a positional argument, that takes one text of any bytes.
CLI::Option* addText(CLI::App& app, const std::string& name, std::string& text,
                     const std::string& description);
