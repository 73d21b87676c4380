// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// An open file that closes itself and keeps the error number of the call that failed.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace kx::detail {

/// Keeps errno across calls that may overwrite it.
class ErrnoKeeper {
public:
    ErrnoKeeper() : _saved(errno) {}
    ~ErrnoKeeper() { errno = _saved; }
    ErrnoKeeper(const ErrnoKeeper&) = delete;
    ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

private:
    int _saved;
};

/// Calls fopen, without a buffer of the C library's own; null on failure. It is meant for callers
/// that move whole blocks: each block goes straight between the caller's memory and the system in
/// one call, a seek reads nothing ahead, and a write that the disk refuses fails at once, not in
/// fclose. The mode has an "e", as for FileHandle.
inline std::FILE* openUnbuffered(const char* name, const char* mode) {
    std::FILE* file = std::fopen(name, mode);
    if (file) std::setvbuf(file, nullptr, _IONBF, 0);
    return file;
}

/// Owns a FILE*. The destructor closes it and keeps errno; close() reports whether closing
/// succeeded. Every mode has an "e", so that a program started by another thread meanwhile does not
/// inherit the file.
class FileHandle {
public:
    FileHandle(const std::string& path, const char* mode) : _file(std::fopen(path.c_str(), mode)) {}
    explicit FileHandle(std::FILE* file) : _file(file) {}
    ~FileHandle() {
        if (!_file) return;
        const ErrnoKeeper keeper;
        std::fclose(_file);
    }
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    explicit operator bool() const { return _file != nullptr; }
    std::FILE* get() const { return _file; }

    bool close() {
        std::FILE* const file = _file;
        _file = nullptr;
        return std::fclose(file) == 0;
    }

private:
    std::FILE* _file;
};

/// True, with errno set, for a directory (which opens for reading), and if the kind of file cannot
/// be found out.
inline bool isDirectory(std::FILE* file) {
    struct stat info {};
    if (fstat(fileno(file), &info) != 0) return true;
    if (S_ISDIR(info.st_mode)) errno = EISDIR;
    return S_ISDIR(info.st_mode);
}

/// The size of an open file, whose position is then back at the start; -1, with errno set, if it
/// has no size (a directory, a pipe).
inline off_t sizeOf(std::FILE* file) {
    if (isDirectory(file)) return -1;  // some systems report an end of 2^63 - 1
    if (fseeko(file, 0, SEEK_END) != 0) return -1;
    const off_t size = ftello(file);
    return fseeko(file, 0, SEEK_SET) == 0 ? size : -1;
}

}  // namespace kx::detail
