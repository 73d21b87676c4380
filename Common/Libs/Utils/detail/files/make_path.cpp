// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/files/make_path.h"

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <vector>

#include "detail/files/handle.h"
#include "kxFile.h"

namespace kx::detail {

namespace {

// What stands between the slashes.
std::vector<std::string_view> componentsOf(std::string_view path) {
    std::vector<std::string_view> components;
    for (std::size_t begin = path.find_first_not_of('/'); begin != std::string_view::npos;) {
        const std::size_t end = std::min(path.find('/', begin), path.size());
        components.push_back(path.substr(begin, end - begin));
        begin = path.find_first_not_of('/', end);
    }
    return components;
}

}  // namespace

bool makeIfMissing(const std::string& path) {
    if (kxFile::exists(path) || kxFile::createDir(path)) return true;
    const ErrnoKeeper keeper;
    return kxFile::exists(path);  // somebody else may have made it meanwhile
}

bool makePath(const std::string& path) {
    // One or two slashes at the front belong to the first component ("//server").
    std::string prefix(std::min<std::size_t>(path.find_first_not_of('/'), 2), '/');
    int firstError = 0;
    bool isFirst = true;
    for (const std::string_view component : componentsOf(path)) {
        if (!isFirst) prefix += '/';
        prefix += component;
        if (!makeIfMissing(prefix) && !isFirst && firstError == 0) firstError = errno;
        isFirst = false;
    }
    if (firstError != 0) errno = firstError;
    return firstError == 0;
}

}  // namespace kx::detail
