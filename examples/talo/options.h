// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the user asked talo to do.
#pragma once

#include <string>
#include <vector>

struct Options {
    std::vector<std::string> paths;  // files and directories; empty: the installed data
    std::string copyTo;
    std::string banner;  // picture to write; empty: none
    std::string answer;  // button to press in every question; empty: ask
    std::string logFile;
    std::string logFormat = "text";
    std::string fullName = "Talo";
    std::string year;
    unsigned int dpi = 0;  // 0: not set
};

/// Reads the command line. True to go on; otherwise `exitCode` is what the program ends with (help
/// and errors have been printed).
bool parseOptions(int argc, char** argv, Options& options, int& exitCode);
