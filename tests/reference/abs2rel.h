// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A slow, literal model of kxFile::abs2Rel: one statement per rule, no cleverness.
#pragma once

#include <string>

namespace reference {

inline std::string slashed(std::string text) {
    for (char& c : text)
        if (c == '\\') c = '/';
    return text;
}

inline std::string abs2Rel(const std::string& base, const std::string& path) {
    constexpr std::size_t longest = 2046;
    if (!path.empty() && path[0] != '/' && path[0] != '$') return path;
    if (base.empty() || path.empty()) return "";
    const std::string B = slashed(base), P = slashed(path);
    std::string result;
    if (P[0] != '/') {
        if (P.size() >= 2047) return path;
        result = P;
    } else if (B[0] != '/') {
        return "";
    } else {
        // How far the two paths agree, and the last slash in that part.
        std::size_t p = 0, branch = 0;
        while (p < P.size() && p < B.size() && P[p] == B[p]) {
            if (P[p] == '/') branch = p;
            ++p;
        }
        const std::size_t b = p;
        const bool pathEnds = p == P.size(), baseEnds = b == B.size();
        const bool pathAtSlash = !pathEnds && P[p] == '/', baseAtSlash = !baseEnds && B[b] == '/';
        const bool pathIsDone = pathEnds || (pathAtSlash && p + 1 == P.size());
        const bool baseIsDone = baseEnds || (baseAtSlash && b + 1 == B.size());
        if (pathIsDone && baseIsDone) {
            result = pathAtSlash || P[p - 1] == '/' ? "./" : ".";
        } else {
            if ((pathEnds && baseAtSlash) || (pathAtSlash && baseEnds)) branch = p;
            for (std::size_t i = branch; i < B.size(); ++i)
                if (B[i] == '/' && i + 1 < B.size()) {
                    result += "../";
                    if (result.size() > longest) return path;
                }
            if (branch < P.size()) {
                result += P.substr(branch + 1);
                if (result.size() > longest) return path;
            } else {
                result.erase(result.size() - 1);
            }
        }
    }
    if (result.find(P) != std::string::npos) result = P;
    return result;
}

}  // namespace reference
