// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Slow, literal models of kxFile's functions for path names: one statement per rule, no cleverness.
// abs2Rel has its own file.
#pragma once

#include <string>

namespace reference {

// The position of the last `c`; -1 if there is none.
inline int lastOf(char c, const std::string& text) {
    int at = static_cast<int>(text.size()) - 1;
    while (at >= 0 && text[static_cast<std::size_t>(at)] != c) --at;
    return at;
}

// The characters from `begin` on, without those from `end` on.
inline std::string between(int begin, int end, const std::string& text) {
    std::string result;
    for (int i = begin; i < end; ++i) result += text[static_cast<std::size_t>(i)];
    return result;
}
inline std::string from(int begin, const std::string& text) {
    return between(begin, static_cast<int>(text.size()), text);
}

inline std::string replaced(char c, char by, const std::string& text) {
    std::string result;
    for (const char each : text) result += each == c ? by : each;
    return result;
}

inline std::string lowerCased(const std::string& text) {
    std::string result = text;
    for (char c = 'A'; c <= 'Z'; ++c) result = replaced(c, static_cast<char>(c + 32), result);
    return result;
}

inline std::string getFileName(const std::string& path) {
    return from(lastOf('/', path) + 1, path);
}

inline std::string getFilePath(const std::string& path) {
    if (path.empty()) return "";
    const int slash = lastOf('/', path);
    if (slash < 0) return ".";
    return between(0, slash, path);
}

inline std::string getExtension(const std::string& path) {
    const int dot = lastOf('.', path);
    if (dot < 0) return "";
    return lowerCased(from(dot + 1, path));
}

inline std::string getBaseName(const std::string& path) {
    const std::string name = getFileName(path);
    const int dot = lastOf('.', name);
    if (dot < 0) return name;
    return between(0, dot, name);
}

inline std::string setExtension(const std::string& path, const std::string& extension) {
    const int dot = lastOf('.', path);
    if (dot < 0) return path + "." + extension;
    return between(0, dot, path) + "." + extension;
}

inline bool hasExtension(const std::string& path, const std::string& extension) {
    if (path.empty() || extension.empty()) return false;
    std::string end = path;
    while (end.size() > extension.size()) end = from(1, end);
    return lowerCased(end) == lowerCased(extension);
}

inline std::string getExtensionFromFilter(const std::string& filter) {
    const int dot = lastOf('.', filter);
    if (dot < 0) return "";
    std::string result = ".";
    for (const char c : from(dot + 1, filter)) {
        if (c == ' ') break;
        result += c;
    }
    return lowerCased(result);
}

inline std::string convertToUnixSeparators(const std::string& path) {
    return replaced('\\', '/', path);
}

inline std::string rel2Abs(const std::string& base, const std::string& path) {
    constexpr std::size_t longest = 2047;
    if (base.empty() || path.empty()) return "";
    const std::string B = replaced('\\', '/', base), P = replaced('\\', '/', path);
    if (P[0] == '/' || P[0] == '$') return P.size() > longest ? between(0, longest, P) : P;
    const bool hasDrive = B.size() > 1 && B[1] == ':';
    if (B[0] != '/' && !hasDrive) return "";
    const std::string joined = B + "/" + P;
    return joined.size() > longest ? "" : joined;
}

}  // namespace reference
