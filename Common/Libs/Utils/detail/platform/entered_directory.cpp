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

// Whether the system gives a path for the working directory, whatever its length.
bool hasPath() {
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) != nullptr;
}

}  // namespace

std::optional<std::string> directoryAfterEntering(const std::string& directory,
                                                  std::size_t maxLength) {
    if (directory.empty()) return std::nullopt;

    // Finding "." in a directory takes the same permission as entering it. access(2) and its
    // relatives answer for another user, or not at all in sandboxes that do not know faccessat2(2).
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

    // If a directory above may not be searched, or if something has been mounted there since, the
    // path leads nowhere. The system gives it nevertheless, but only below a working directory that
    // has a path itself. A deleted directory has no links.
    const bool isBelow = directory.front() != '/' && entered.st_nlink != 0 && hasPath();
    return isBelow ? path : "";
}

}  // namespace kx::detail
