// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that a sub-command makes, which appear as a whole or not at all.
#pragma once

#include <optional>
#include <string>

#include "streams.h"

/// True for "-" and the system's own names for standard output, such as "/dev/stdout".
bool isStandardOutput(const std::string& name);

/// Throws UsageError if both names lead to the same file.
void requireDifferentFiles(const std::string& input, const std::string& output);

/// The file that a name will have, or standard output. Failures have Status::unwritable.
///
/// The bytes go to a new file in the same directory, which takes the name at close(). A link keeps
/// leading to its file, and the mode of an earlier file stays. Until then nothing is visible: if
/// the work fails, or SIGHUP, SIGINT or SIGTERM ends it, an earlier file is as it was, and the new
/// one is removed. A device, a pipe or an open descriptor ("/dev/fd/3") is written in place.
///
/// Only one object may exist at a time.
class Output {
public:
    Output(const std::string& name, Writer& standardOutput);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    Writer& writer() { return _file ? *_file : _standardOutput; }

    /// Called when the work is done. Standard output stays open.
    void close();

private:
    void openInPlace();
    void openBeside();

    const std::string _name;
    std::string _target;     // after all links
    std::string _temporary;  // "" if there is none
    std::optional<Writer> _file;
    Writer& _standardOutput;
};
