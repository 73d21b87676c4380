// Helpers for tests of file functions: descriptors, sparse files, and work done as an ordinary
// user.
#pragma once

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <functional>
#include <string>

#include "kxtest.h"

namespace kxtest {

/// The number of files this process has open.
inline std::size_t openFiles() { return list("/dev/fd").size(); }

/// Pseudo-random bytes, the same at every call.
inline std::string someBytes(std::size_t count) {
    std::string bytes(count, '\0');
    unsigned state = 1;
    for (char& c : bytes) {
        state = state * 1664525U + 1013904223U;
        c = static_cast<char>(state >> 24);
    }
    return bytes;
}

/// Writes `bytes` at a position of a file, leaving a hole before it. False where the disk cannot.
inline bool writeAt(const std::string& path, off_t position, const std::string& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (file < 0) return false;
    const ssize_t written = pwrite(file, bytes.data(), bytes.size(), position);
    return close(file) == 0 && written == static_cast<ssize_t>(bytes.size());
}

/// Runs `work` in a child process that is not the super-user, to whom the system would refuse
/// nothing, and returns the child's answer. The child may change what it likes of itself.
inline std::string asOrdinaryUser(const std::function<std::string()>& work) {
    int ends[2];
    if (pipe(ends) != 0) return "cannot make a pipe";
    const pid_t child = fork();
    if (child == 0) {
        constexpr unsigned nobody = 65534;
        const bool dropped =
            !isRoot() || (setgroups(0, nullptr) == 0 && setgid(nobody) == 0 && setuid(nobody) == 0);
        const std::string answer = dropped ? work() : "cannot drop the privileges";
        const ssize_t written = write(ends[1], answer.data(), answer.size());
        _exit(written == static_cast<ssize_t>(answer.size()) ? 0 : 1);
    }
    close(ends[1]);
    std::string answer;
    char block[4096];
    ssize_t n = 0;
    while ((n = read(ends[0], block, sizeof block)) > 0)
        answer.append(block, static_cast<std::size_t>(n));
    close(ends[0]);
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (status != 0) answer += " (child failed)";
    return answer;
}

}  // namespace kxtest
