// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/platform/entered_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <climits>

#include "detail/files/same_file.h"
#include "detail/paths/canonical.h"

namespace kx::detail {

namespace {

/// A directory held open while it is looked at.
class HeldDirectory {
public:
    explicit HeldDirectory(const std::string& directory) : _descriptor(openDirectory(directory)) {}
    ~HeldDirectory() {
        if (isOpen()) close(_descriptor);
    }
    HeldDirectory(const HeldDirectory&) = delete;
    HeldDirectory& operator=(const HeldDirectory&) = delete;

    bool isOpen() const { return _descriptor >= 0; }
    int descriptor() const { return _descriptor; }

private:
    int _descriptor;
};

bool leadsTo(const std::string& path, const struct stat& directory) {
    struct stat found {};
    return stat(path.c_str(), &found) == 0 && isSameFile(found, directory);
}

// Whether the system gives one for the working directory, of whatever length.
bool hasPath() {
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) != nullptr;
}

}  // namespace

std::optional<std::string> directoryAfterEntering(const std::string& directory,
                                                  std::size_t maxLength) {
    if (directory.empty()) return std::nullopt;

    // To find "." in a directory takes the same permission as to enter it. access(2) and its like
    // answer for another user, or, in sandboxes that do not know faccessat2(2), not at all.
    struct stat entered {};
    const HeldDirectory held(directory);
    const bool canEnter = held.isOpen()
                              ? fstatat(held.descriptor(), ".", &entered, 0) == 0
                              : stat((directory + "/.").c_str(), &entered) == 0;  // no descriptors
    if (!canEnter) return std::nullopt;

    std::string path = held.isOpen() ? pathOfDescriptor(held.descriptor()) : "";
    if (path.empty()) path = canonicalPath(directory);
    if (path.size() > maxLength) return "";
    if (leadsTo(path, entered)) return path;

    // Where a directory above may not be searched, or something was mounted there since, the path
    // leads nowhere, and the system gives it all the same: but only below a working directory that
    // has one. A deleted directory has no links.
    const bool isBelow = directory.front() != '/' && entered.st_nlink != 0 && hasPath();
    return isBelow ? path : "";
}

}  // namespace kx::detail
