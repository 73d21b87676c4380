// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Everything that can go wrong, and the corresponding exit codes.
#pragma once

#include <stdexcept>
#include <string>

enum class ExitCode {
    ok = 0,
    failedCheck = 1,  ///< an item was read, but is not as it should be
    usage = 2,
    inputOutput = 3,  ///< an input could not be read or an output not written
    noFooter = 4,     ///< a file lacks a required checksum footer
    internal = 5
};

/// The one that counts if both apply. The order is internal, failedCheck, inputOutput, noFooter,
/// ok.
ExitCode worse(ExitCode a, ExitCode b);

/// The outcome of the work on an item.
enum class Status { ok, bad, noChecksum, unreadable, unwritable };

/// Its name in results and documents: "ok", "BAD", "no checksum", "unreadable", "unwritable".
const char* word(Status status);

/// Ends the work on one item, not the program.
struct Failure : std::runtime_error {
    Failure(Status s, const std::string& text) : std::runtime_error(text), status(s) {}
    Status status;
    std::string name;  ///< the name of a file with which the text starts, if any
};

/// A failure of a system call, described by errno.
Failure systemFailure(Status status);

/// Like systemFailure(), for an output: "cannot write 'NAME': ...".
Failure cannotWrite(const std::string& name);

/// Does work that concerns one file and no item; a Failure in it gets the file's name.
template <typename Work>
void forFile(const std::string& name, const Work& work) {
    try {
        work();
    } catch (const Failure& failure) {
        Failure named(failure.status, name + ": " + failure.what());
        named.name = name;
        throw named;
    }
}

/// Standard output accepts nothing more, so the program ends.
struct OutputLost : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Arguments found to be wrong after parsing.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};
