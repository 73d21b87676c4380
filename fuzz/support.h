// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shared by the fuzz targets: checks, a separate folder, and a console that stays empty.
#pragma once

#include <sstream>
#include <string>

namespace kxfuzz {

/// Reports on the console what is wrong, and ends the program as a finding.
[[noreturn]] void fail(const std::string& what);

/// The text in quotes, with everything but printable ASCII written as \xHH.
std::string shown(const std::string& text);
template <class Value>
std::string shown(const Value& value) {
    std::ostringstream text;
    text.precision(20);
    text << value;
    return text.str();
}

/// Fails unless the property `what` holds.
inline void require(bool holds, const char* what) {
    if (!holds) fail(what);
}

template <class Value>
[[noreturn]] void failDifferent(const char* what, const Value& got, const Value& expected) {
    fail(std::string(what) + " is " + shown(got) + " and should be " + shown(expected));
}

/// Fails unless `what` has the expected value.
template <class Value>
void requireEqual(const char* what, const Value& got, const Value& expected) {
    if (!(got == expected)) failDifferent(what, got, expected);
}

/// A new folder of this process below the system's temporary one; removed when the process ends.
const std::string& privateFolder();

/// Redirects standard output and standard error away from the console, permanently. Output is kept
/// for takeOut() and takeErr(), which return it and forget it.
void holdConsole();
std::string takeOut();
std::string takeErr();

/// writeFile() replaces the content of a file, creating it if needed. The other function returns
/// the whole content, or "" if the file cannot be read.
void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

}  // namespace kxfuzz
