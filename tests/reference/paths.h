// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxFile's functions for path names, character by character.
#pragma once

#include <string>

#include "reference/abs2rel.h"

namespace reference {

inline constexpr std::size_t nowhere = static_cast<std::size_t>(-1);

/// The position of the last `c`, or `nowhere`.
inline std::size_t lastOf(char c, const std::string& text) {
    for (std::size_t i = text.size(); i > 0; --i)
        if (text[i - 1] == c) return i - 1;
    return nowhere;
}

inline std::string lower(std::string text) {
    const std::string capital = "ABCDEFGHIJKLMNOPQRSTUVWXYZ", small = "abcdefghijklmnopqrstuvwxyz";
    for (char& c : text)
        if (capital.find(c) != std::string::npos) c = small[capital.find(c)];
    return text;
}

inline std::string getFileName(const std::string& path) {
    if (path.empty()) return "";
    const std::size_t slash = lastOf('/', path);
    if (slash == nowhere) return path;
    return path.substr(slash + 1);
}

inline std::string getFilePath(const std::string& path) {
    if (path.empty()) return "";
    const std::size_t slash = lastOf('/', path);
    if (slash == nowhere) return ".";
    if (slash == 0) return "";
    return path.substr(0, slash);
}

inline std::string getExtension(const std::string& path) {
    const std::size_t dot = lastOf('.', path);
    if (path.empty() || dot == nowhere) return "";
    return lower(path.substr(dot + 1));
}

inline std::string getBaseName(const std::string& path) {
    if (path.empty()) return "";
    const std::string name = getFileName(path);
    const std::size_t dot = lastOf('.', name);
    if (dot == nowhere) return name;
    if (dot == 0) return "";
    return name.substr(0, dot);
}

inline std::string setExtension(const std::string& path, const std::string& extension) {
    if (path.empty()) return "." + extension;
    const std::size_t dot = lastOf('.', path);
    if (dot != nowhere) return path.substr(0, dot + 1) + extension;
    return path + "." + extension;
}

inline bool hasExtension(const std::string& path, const std::string& extension) {
    if (path.empty() || extension.empty()) return false;
    const std::string wanted = lower(extension);
    const std::size_t n = wanted.size();
    const std::string tail = path.size() <= n ? path : path.substr(path.size() - n);
    return lower(tail) == wanted;
}

inline std::string getExtensionFromFilter(const std::string& filter) {
    const std::size_t dot = lastOf('.', filter);
    if (filter.empty() || dot == nowhere) return "";
    std::string text = filter.substr(dot + 1);
    if (text.find(' ') != std::string::npos) text = text.substr(0, text.find(' '));
    return lower("." + text);
}

inline bool isRelative(const std::string& path) {
    if (path.empty()) return false;
    return !(path[0] == '/' || path[0] == '$');
}

inline std::string rel2Abs(const std::string& base, const std::string& path) {
    constexpr std::size_t longest = 2047;
    if (base.empty() || path.empty()) return "";
    const std::string B = slashed(base), P = slashed(path);
    if (P[0] == '/' || P[0] == '$') return P.substr(0, longest);
    const bool hasDrive = B.size() > 1 && B[1] == ':';
    if (B[0] != '/' && !hasDrive) return "";
    const std::string result = B + "/" + P;
    return result.size() > longest ? "" : result;
}

inline std::string validFileName(std::string name) {
    if (name.empty()) return name;
    const char last = name[name.size() - 1];
    if (last == '.' || last == ' ') name = name.substr(0, name.size() - 1);
    if (!name.empty() && name[0] == '.') name = name.substr(1);
    for (const char reserved : {'<', '>', ':', '"', '/', '\\', '|', '?', '*'}) {
        std::string kept;
        for (const char c : name)
            if (c != reserved) kept += c;
        name = kept;
    }
    return name;
}

inline bool isumlaut(const std::string& text) {
    for (const char c : text)
        if (static_cast<unsigned char>(c) >= 161) return true;
    return false;
}

}  // namespace reference
