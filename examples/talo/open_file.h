// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files opened in ways that the C++ library does not offer: only regular files for reading, and
// only new files for writing.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

/// Owns a descriptor.
class OpenFile {
public:
    explicit OpenFile(int descriptor = -1) : _descriptor(descriptor) {}
    ~OpenFile();  ///< keeps the errno of an earlier failure
    OpenFile(OpenFile&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    OpenFile& operator=(OpenFile&& other) noexcept {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }
    OpenFile(const OpenFile&) = delete;

    explicit operator bool() const { return _descriptor >= 0; }
    int descriptor() const { return _descriptor; }

    /// True if the file was open and the system has accepted everything that was written; otherwise
    /// errno says why not.
    bool close();

private:
    int _descriptor;
};

/// A regular file, open for reading.
struct SourceFile {
    explicit SourceFile(const std::string& path);

    std::string path;
    OpenFile file;           ///< not open if `path` leads to no regular file that can be read
    int error = 0;           ///< errno of the failure; 0 if there was none
    bool isRegular = true;   ///< false for a directory, a pipe, a device
    std::uint64_t size = 0;  ///< in bytes, when it was opened
    mode_t mode = 0;         ///< its permissions
};

/// Creates a file that did not exist and opens it for writing. If anything is there already, even a
/// dangling symbolic link, it fails with EEXIST.
OpenFile createNew(const std::string& path, mode_t mode);

/// Writes all of `block[0, size)`. Returns false, with errno set, if the system does not accept it.
bool writeAll(const OpenFile& file, const char* block, std::size_t size);

/// Logs "text: description of errno" as an error and returns false, so that callers can return it.
bool fail(const std::string& text);
