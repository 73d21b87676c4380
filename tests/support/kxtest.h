// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Helpers shared by all tests. Whatever a test changes in the process (environment, working
// directory, redirected streams, files) is restored by the destructor of the object that changed
// it.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace kxtest {

/// A new directory below the system's temporary directory, as a canonical path (no symbolic links).
/// The destructor removes it with everything in it.
class TempDir {
public:
    TempDir();
    ~TempDir();
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return _path; }
    /// Returns path() + "/" + name; nothing is created.
    std::string file(const std::string& name) const { return _path + "/" + name; }
    /// Creates the file (and the directories above it) with `bytes`; returns its path.
    std::string write(const std::string& name, const std::string& bytes) const;
    /// Creates the directory; returns its path.
    std::string makeDir(const std::string& name) const;

private:
    std::string _path;
};

/// The bytes of a file; fails the running test and returns "" if it cannot be read.
std::string slurp(const std::string& path);
bool exists(const std::string& path);
/// The names in the directory, sorted, without "." and "..".
std::vector<std::string> list(const std::string& directory);

/// Sets (or, for a null value, unsets) an environment variable; the destructor restores it.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const char* value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    std::string _name, _old;
    bool _wasSet;
};

/// Sets every locale category of the process to `territory` ("tr_TR") with `charset`
/// ("ISO-8859-9"); the destructor restores the earlier locale. A locale that is not installed is
/// compiled into a temporary directory, if localedef is available (this takes a few seconds).
class ScopedLocale {
public:
    ScopedLocale(const std::string& territory, const std::string& charset);
    ~ScopedLocale();
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

    /// False if there is no such locale: skip the test.
    bool isSet() const { return _isSet; }

private:
    std::string _old;
    bool _isSet;
};

/// Changes the working directory; the destructor returns to the earlier one.
class ScopedCwd {
public:
    explicit ScopedCwd(const std::string& directory);
    ~ScopedCwd();
    ScopedCwd(const ScopedCwd&) = delete;
    ScopedCwd& operator=(const ScopedCwd&) = delete;

private:
    int _old;
};

/// Redirects the descriptor of stdout or stderr to a temporary file, so that output by printf,
/// streams and write(2) is captured. text() flushes first and may be called repeatedly.
class Captured {
public:
    explicit Captured(std::FILE* stream);
    ~Captured();
    Captured(const Captured&) = delete;
    Captured& operator=(const Captured&) = delete;

    std::string text();

private:
    std::FILE* _stream;
    int _saved, _file;
};

/// What a child process leaves behind. exitCode is -1 if a signal ended it.
struct Outcome {
    int exitCode = -1;
    int signal = 0;
    std::string out, err;
};

struct RunOptions {
    std::string input;      ///< standard input; if empty, there is nothing to read
    std::string directory;  ///< working directory; if empty, that of the caller
    /// Descriptors that become 0, 1 and 2, in place of `input` and of the output that the outcome
    /// shows. They still belong to the caller. -1 stands for none.
    int in = -1, out = -1, err = -1;
};

/// Runs argv[0] (a path; PATH is not searched) and waits for it. The environment is exactly
/// `environment` plus the sanitizers' own option variables.
Outcome run(const std::vector<std::string>& argv,
            const std::map<std::string, std::string>& environment = {},
            const RunOptions& options = {});

/// True for the super-user, to whom the system refuses no access.
bool isRoot();
/// True if the program is compiled with AddressSanitizer or ThreadSanitizer, which bring their own
/// allocator and interceptors.
bool underSanitizer();
/// True if the program counts coverage, and writes the counts when it ends with exit().
bool countsCoverage();

}  // namespace kxtest
