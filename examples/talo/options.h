// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The user's instructions to talo.
#pragma once

#include <string>
#include <vector>

struct Options {
    std::vector<std::string> paths;  // files and directories; if empty, the installed data
    std::string copyTo;
    std::string banner;  // the picture to write, if not empty
    std::string answer;  // the button to press in every question; if empty, ask
    std::string logFile;
    std::string logFormat = "text";
    std::string fullName = "Talo";
    std::string year;
    unsigned int dpi = 0;  // 0 if not set
};

/// Reads the command line. Returns true if the program should go on. Otherwise help or errors have
/// been printed, and `exitCode` is the program's exit code.
bool parseOptions(int argc, char** argv, Options& options, int& exitCode);
