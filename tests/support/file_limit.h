// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#pragma once

#include <sys/resource.h>

#include <csignal>

namespace kxtest {

/// During its lifetime a write that would make a file longer than `bytes` is cut short or fails.
class ScopedFileLimit {
public:
    explicit ScopedFileLimit(rlim_t bytes) : _handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &_old);
        rlimit limit = _old;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~ScopedFileLimit() {
        setrlimit(RLIMIT_FSIZE, &_old);
        std::signal(SIGXFSZ, _handler);
    }
    ScopedFileLimit(const ScopedFileLimit&) = delete;
    ScopedFileLimit& operator=(const ScopedFileLimit&) = delete;

private:
    void (*_handler)(int);
    rlimit _old{};
};

}  // namespace kxtest
