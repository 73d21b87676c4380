// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/paths/relative.h"

#include <string_view>

namespace kx::detail {
namespace {

// Comparing paths in this way saves converting them first.
constexpr bool isSameInPath(char a, char b) { return a == b || (isSlash(a) && isSlash(b)); }

// True if nothing, or only a final slash, follows from `position` on.
bool isExhausted(const std::string& text, std::size_t position) {
    return position == text.size() || (position + 1 == text.size() && isSlash(text[position]));
}

// The length of the common beginning: at least one character, a slash.
std::size_t commonLength(const std::string& base, const std::string& path) {
    std::size_t length = 1;
    while (length < path.size() && length < base.size() && isSameInPath(path[length], base[length]))
        ++length;
    return length;
}

// Where the way up from `base` and the way down to `path` meet: at the last slash that both share,
// or at the end of the path that is a parent of the other.
std::size_t meet(const std::string& base, const std::string& path, std::size_t common) {
    const bool pathIsParent = common == path.size() && isSlash(base[common]);
    const bool baseIsParent = common == base.size() && isSlash(path[common]);
    if (pathIsParent || baseIsParent) return common;
    std::size_t slash = common - 1;
    while (!isSlash(path[slash])) --slash;
    return slash;
}

bool appendWithin(std::size_t limit, std::string& text, std::string_view piece) {
    if (text.size() + piece.size() > limit) return false;
    text += piece;
    return true;
}

// Adds one step up for each directory of `base` after the meeting point; a final slash begins none.
bool ascend(const std::string& base, std::size_t meeting, std::size_t limit, std::string& result) {
    for (std::size_t i = meeting; i + 1 < base.size(); ++i)
        if (isSlash(base[i]) && !appendWithin(limit, result, "../")) return false;
    return true;
}

// Adds what `path` has after the meeting point. If it has nothing there, the way up loses its final
// slash.
bool descend(const std::string& path, std::size_t meeting, std::size_t limit, std::string& result) {
    if (meeting < path.size())
        return appendWithin(limit, result, std::string_view(path).substr(meeting + 1));
    result.pop_back();
    return true;
}

}  // namespace

bool composeRelative(const std::string& base, const std::string& path, std::size_t limit,
                     std::string& result) {
    const std::size_t common = commonLength(base, path);
    if (isExhausted(path, common) && isExhausted(base, common)) {
        const bool endsInSlash = common < path.size() || isSlash(path.back());
        result = endsInSlash ? "./" : ".";
        return true;
    }
    const std::size_t meeting = meet(base, path, common);
    result.clear();
    return ascend(base, meeting, limit, result) && descend(path, meeting, limit, result);
}

}  // namespace kx::detail
