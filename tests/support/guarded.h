// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Memory for tests of functions that must not read or write outside what they are given.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <string>

namespace kxtest {

/// Whole pages, at least `size` bytes, between two pages that must not be touched: an access just
/// before begin() or at end() ends the program with a signal.
class Guarded {
public:
    explicit Guarded(std::size_t size) {
        const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
        _size = (size + page - 1) / page * page;
        _mapped = _size + 2 * page;
        void* base =
            mmap(nullptr, _mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (base == MAP_FAILED) throw std::bad_alloc();
        _base = static_cast<char*>(base);
        _begin = _base + page;
        if (mprotect(_base, page, PROT_NONE) != 0 || mprotect(end(), page, PROT_NONE) != 0)
            throw std::bad_alloc();
    }
    ~Guarded() { munmap(_base, _mapped); }
    Guarded(const Guarded&) = delete;
    Guarded& operator=(const Guarded&) = delete;

    char* begin() const { return _begin; }
    char* end() const { return _begin + _size; }

    /// Copies `bytes` to begin() + offset; returns where they are.
    char* atBegin(const std::string& bytes, std::size_t offset = 0) const {
        return put(_begin + offset, bytes);
    }
    /// Copies `bytes` to just before end(); returns where they are.
    char* atEnd(const std::string& bytes) const { return put(end() - bytes.size(), bytes); }

    /// Sets every byte to `value`.
    void fill(char value) const { std::memset(_begin, value, _size); }
    /// True if every byte outside [from, from + n) equals `value`.
    bool filledOutside(const char* from, std::size_t n, char value) const {
        for (const char* p = _begin; p != end(); ++p)
            if ((p < from || p >= from + n) && *p != value) return false;
        return true;
    }

private:
    static char* put(char* to, const std::string& bytes) {
        std::memcpy(to, bytes.data(), bytes.size());
        return to;
    }

    char *_base, *_begin;
    std::size_t _size, _mapped;
};

}  // namespace kxtest
