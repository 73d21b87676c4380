// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/files/make_path.h"

#include <algorithm>
#include <cerrno>

#include "detail/files/handle.h"
#include "kxFile.h"

namespace kx::detail {

bool makeIfMissing(const std::string& path) {
    if (kxFile::exists(path) || kxFile::createDir(path)) return true;
    const ErrnoKeeper keeper;
    return kxFile::exists(path);  // somebody else may have made it meanwhile
}

bool makePath(const std::string& path) {
    // One or two slashes at the front belong to the first component ("//server").
    std::size_t end = path.find_first_not_of('/');
    if (end == std::string::npos) return true;
    std::string prefix(std::min<std::size_t>(end, 2), '/');

    int firstError = 0;
    for (std::size_t begin = end; begin != std::string::npos;
         begin = path.find_first_not_of('/', end)) {
        const bool isFirst = begin == path.find_first_not_of('/');
        end = std::min(path.find('/', begin), path.size());
        if (!isFirst) prefix += '/';
        prefix.append(path, begin, end - begin);
        if (!makeIfMissing(prefix) && !isFirst && firstError == 0) firstError = errno;
    }
    if (firstError != 0) errno = firstError;
    return firstError == 0;
}

}  // namespace kx::detail
