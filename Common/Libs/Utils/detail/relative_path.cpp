// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/relative_path.h"

#include <string_view>

namespace kx::detail {
namespace {

constexpr std::string_view up = "../";

// Paths are compared with this instead of being converted first.
constexpr bool isSameInPath(char a, char b) { return a == b || (isSlash(a) && isSlash(b)); }

bool appendWithin(std::size_t limit, std::string& text, std::string_view piece) {
    if (text.size() + piece.size() > limit) return false;
    text += piece;
    return true;
}

// True if nothing, or only a final slash, follows from `position` on.
bool isExhausted(const std::string& text, std::size_t position) {
    return position == text.size() || (position + 1 == text.size() && isSlash(text[position]));
}

}  // namespace

bool composeRelative(const std::string& base, const std::string& path, std::size_t limit,
                     std::string& result) {
    // Where the two part, and the last slash that they share: there the ways up and down meet.
    std::size_t end = 1;  // both begin with a slash
    while (end < path.size() && end < base.size() && isSameInPath(path[end], base[end])) ++end;
    std::size_t branch = end - 1;
    while (!isSlash(path[branch])) --branch;
    const bool pathEnded = end == path.size(), baseEnded = end == base.size();

    if (isExhausted(path, end) && isExhausted(base, end)) {
        const bool endsInSlash = !pathEnded || isSlash(path[end - 1]);
        result = endsInSlash ? "./" : ".";
        return true;
    }
    if ((pathEnded && isSlash(base[end])) || (baseEnded && isSlash(path[end]))) branch = end;

    result.clear();
    for (std::size_t i = branch; i + 1 < base.size(); ++i)
        if (isSlash(base[i]) && !appendWithin(limit, result, up)) return false;
    if (branch < path.size())
        return appendWithin(limit, result, std::string_view(path).substr(branch + 1));
    result.pop_back();  // there was at least one way up, which ends in a slash
    return true;
}

}  // namespace kx::detail
