// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Work that a test does in a child process, so that nothing of it stays in the test's own.
#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <string>

#include "kxtest.h"

namespace kxtest {

/// Runs `work` in a child process, where it may change anything about the process, and returns the
/// child's answer.
inline std::string inChild(const std::function<std::string()>& work) {
    int ends[2];
    if (pipe(ends) != 0) return "cannot make a pipe";
    std::fflush(nullptr);  // otherwise the child might print it as well
    const pid_t child = fork();
    if (child == 0) {
        std::string answer;
        try {
            answer = work();
        } catch (const std::exception& e) {  // the child must not go on to the parent's tests
            answer = std::string("threw ") + e.what();
        }
        const ssize_t written = write(ends[1], answer.data(), answer.size());
        const int status = written == static_cast<ssize_t>(answer.size()) ? 0 : 1;
        if (countsCoverage()) std::exit(status);
        _exit(status);
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

/// Like inChild(), but the child is not the super-user, to whom the system would refuse nothing.
inline std::string asOrdinaryUser(const std::function<std::string()>& work) {
    return inChild([&]() -> std::string {
        constexpr unsigned nobody = 65534;
        if (isRoot() && (setgroups(0, nullptr) != 0 || setgid(nobody) != 0 || setuid(nobody) != 0))
            return "cannot drop the privileges";
        return work();
    });
}

}  // namespace kxtest
