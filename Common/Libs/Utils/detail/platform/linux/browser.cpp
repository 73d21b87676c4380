// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "detail/files/same_file.h"
#include "detail/platform/browser.h"

namespace kx::detail {

namespace {

// Finds what the shell takes for the command: the first regular file of that name on PATH that may
// be executed. The shell itself is not asked, because a process that ignores SIGCHLD never gets its
// answer. (A shell that has just started has no alias or function with one of these names, and none
// of them is built in.)
std::optional<struct stat> findCommand(std::string_view name) {
    const char* const variable = std::getenv("PATH");
    const std::string_view path =  // without the variable, the one that shells start with
        variable ? variable : "/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin";
    for (std::size_t begin = 0, end = 0; begin <= path.size(); begin = end + 1) {
        end = std::min(path.find(':', begin), path.size());
        std::string file(path.substr(begin, end - begin));
        if (!file.empty()) file += '/';  // an empty entry is the working directory
        file += name;
        struct stat info {};
        if (stat(file.c_str(), &info) == 0 && S_ISREG(info.st_mode) &&
            access(file.c_str(), X_OK) == 0)
            return info;
    }
    return std::nullopt;
}

bool isAlso(const struct stat& file, std::string_view name) {
    const auto other = findCommand(name);
    return other && isSameFile(file, *other);
}

}  // namespace

// A command "open" may be just another name for the desktop's opener or for the viewer of mail
// attachments, which do not know "-a". It is looked for at every call, because commands may be
// installed during a session.
std::string browserCommand() {
    const auto open = findCommand("open");
    const bool canOpen = open && !isAlso(*open, "xdg-open") && !isAlso(*open, "run-mailcap");
    return canOpen ? "open -a Safari " : "xdg-open ";
}

}  // namespace kx::detail
