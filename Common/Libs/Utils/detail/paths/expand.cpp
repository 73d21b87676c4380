// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/paths/expand.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "detail/text/ascii.h"
#include "kxLog.h"

namespace kx::detail {
namespace {

constexpr bool isNameCharacter(char c) {
    return isDigit(c) || isUpper(c) || isLower(c) || c == '_';
}

// The position of the first `a` or `b` from `begin` on, or the end of the text. Two searches for
// one character are far faster than find_first_of.
std::size_t findEither(std::string_view text, std::size_t begin, char a, char b) {
    const std::string_view upToA = text.substr(0, text.find(a, begin));
    return std::min(upToA.find(b, begin), upToA.size());
}

// A part of the path that is replaced: the name in it, and where the text continues after it.
struct Reference {
    std::string name;
    std::size_t next = 0;
};

// Reads "$(NAME)" or "${NAME}" at `position`. The text continues after the closing bracket, or
// after the character that stands in its place.
Reference bracketed(const std::string& path, std::size_t position, char closing) {
    const std::size_t begin = position + 2, end = findEither(path, begin, closing, ' ');
    Reference reference{path.substr(begin, end - begin), std::min(end + 1, path.size())};
    if (end == path.size() || path[end] != closing)
        kxLog::error("expandFilename: syntax error in env.var %s!", reference.name.c_str());
    return reference;
}

// Reads "$..." at `position`.
Reference variable(const std::string& path, std::size_t position) {
    const std::size_t begin = position + 1;
    if (begin < path.size() && path[begin] == '(') return bracketed(path, position, ')');
    if (begin < path.size() && path[begin] == '{') return bracketed(path, position, '}');
    std::size_t end = begin;
    while (end < path.size() && isNameCharacter(path[end])) ++end;
    return {path.substr(begin, end - begin), end};
}

// Reads "~" or "~user" at `position`; an empty name stands for the effective user.
Reference user(const std::string& path, std::size_t position) {
    const std::size_t begin = position + 1, end = findEither(path, begin, '/', ' ');
    return {path.substr(begin, end - begin), end};
}

// For the system's calls a name ends at a zero byte, so a name that contains one names nothing.
bool canBeNamed(const std::string& name) { return name.find('\0') == std::string::npos; }

const char* valueOf(const std::string& name) {
    return canBeNamed(name) ? std::getenv(name.c_str()) : nullptr;
}

const char* homeOf(const std::string& name) {
    if (!canBeNamed(name)) return nullptr;
    const passwd* const entry = name.empty() ? getpwuid(geteuid()) : getpwnam(name.c_str());
    return entry ? entry->pw_dir : nullptr;
}

// A tilde stands for a home directory only where a word would begin for a command shell.
bool beginsWord(const std::string& path, std::size_t position) {
    return position == 0 ||
           std::string_view("\t ;<>|").find(path[position - 1]) != std::string_view::npos;
}

const std::string& refuseAsTooLong(const std::string& path) {
    std::fputs("kxFile::expandFilename: skipped expanding environment variable, path too long!\n",
               stderr);
    return path;
}

}  // namespace

std::string expandFilename(const std::string& path, std::size_t limit) {
    if (path.size() > limit) return refuseAsTooLong(path);

    if (findEither(path, 0, '$', '~') == path.size()) return path;  // most paths

    std::string result;
    std::size_t position = 0;
    while (position < path.size()) {
        const char c = path[position];
        if (c == '$' || (c == '~' && beginsWord(path, position))) {
            const Reference reference = c == '$' ? variable(path, position) : user(path, position);
            const char* const value = c == '$' ? valueOf(reference.name) : homeOf(reference.name);
            if (!value) {
                kxLog::error("expandFilename: couldn't expand env.var %s!", reference.name.c_str());
                return path;
            }
            position = reference.next;
            // This is enough if no other value follows.
            result.reserve(result.size() + std::strlen(value) + path.size() - position);
            result += value;
        } else {
            const std::size_t end = findEither(path, position + 1, '$', '~');
            result.append(path, position, end - position);
            position = end;
        }
        if (result.size() > limit) return refuseAsTooLong(path);
    }
    return result;
}

}  // namespace kx::detail
