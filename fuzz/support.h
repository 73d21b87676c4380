// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the fuzz targets share: checks, a folder of their own, and a console that stays empty.
#pragma once

#include <sstream>
#include <string>

namespace kxfuzz {

/// Says what is wrong, on the console, and ends the program as a finding.
[[noreturn]] void fail(const std::string& what);

/// The text in quotes, with anything but printable ASCII as \xHH.
std::string shown(const std::string& text);
template <class Value>
std::string shown(const Value& value) {
    std::ostringstream text;
    text.precision(20);
    text << value;
    return text.str();
}

/// The property `what` holds.
inline void require(bool holds, const char* what) {
    if (!holds) fail(what);
}

template <class Value>
[[noreturn]] void failDifferent(const char* what, const Value& got, const Value& expected) {
    fail(std::string(what) + " is " + shown(got) + " and should be " + shown(expected));
}

/// `what` is as it must be.
template <class Value>
void requireEqual(const char* what, const Value& got, const Value& expected) {
    if (!(got == expected)) failDifferent(what, got, expected);
}

/// A new folder of this process below the system's temporary one; removed when the process ends.
const std::string& privateFolder();

/// Takes standard output and standard error away from the console, once and for good. What is
/// written there is kept for takeOut() and takeErr(), which return it and forget it.
void holdConsole();
std::string takeOut();
std::string takeErr();

/// Replaces the content of a file, creating it; the whole content of one, "" if it cannot be read.
void writeFile(const std::string& path, const std::string& bytes);
std::string readFile(const std::string& path);

}  // namespace kxfuzz
