// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The command lines whose steps are made to fail by program_faults_test.cpp. tests/faults/README.md
// says how to add one.
#pragma once

#include <initializer_list>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

/// The files below a directory, by their path from there; a directory ends with a slash.
using Files = std::map<std::string, std::string>;

/// One command line.
struct Row {
    std::string name, program;
    std::vector<std::string> arguments;

    Files files = {};                                ///< before each run
    std::string input = {};                          ///< standard input
    int exitCode = 0;                                ///< without a fault
    std::set<int> failures = {3, 5};                 ///< exit codes that own up to a fault
    std::map<std::string, std::string> variables{};  ///< of the environment

    /// Files that have their old content or their new content, whatever fails, and even when the
    /// program is killed.
    std::vector<std::string> whole = {};
    /// Log files: after a fault, whole lines are missing at the end, and no earlier ones.
    std::vector<std::string> logs = {};
    /// The time is in its output and in its files: digits are not compared.
    bool showsTime = false;
    /// The log loses a line without a word when it cannot be written, as the library's does.
    bool losesLines = false;

    // They make a row read like a sentence.
    Row with(const std::string& file, const std::string& content) const;
    Row reading(const std::string& text) const;
    Row endingWith(int code) const;
    Row failingWith(std::set<int> codes) const;
    Row setting(const std::string& variable, const std::string& value) const;
    Row keepingWhole(const std::string& file) const;
    Row logging(const std::string& file) const;
    Row showingTime() const;
    Row losingLines() const;

    bool isJson() const;
};
void PrintTo(const Row& row, std::ostream* os);

extern const std::vector<Row> rows;
