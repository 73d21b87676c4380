// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The character rules of the "C" locale. They do not depend on the locale of the process, and they
// hold for bytes above 127, too.
#pragma once

#include <string>

namespace kx::detail {

constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
constexpr bool isLower(char c) { return c >= 'a' && c <= 'z'; }

constexpr char toLower(char c) { return isUpper(c) ? static_cast<char>(c + ('a' - 'A')) : c; }
constexpr char toUpper(char c) { return isLower(c) ? static_cast<char>(c - ('a' - 'A')) : c; }

inline std::string toLower(std::string text) {
    for (char& c : text) c = toLower(c);
    return text;
}

inline std::string toUpper(std::string text) {
    for (char& c : text) c = toUpper(c);
    return text;
}

}  // namespace kx::detail
