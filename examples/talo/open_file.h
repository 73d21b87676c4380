// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that are opened in the ways that the C++ library does not offer: nothing but regular files
// for reading, nothing but new ones for writing.
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
    ~OpenFile();  ///< errno stays that of an earlier failure
    OpenFile(OpenFile&& other) noexcept : _descriptor(std::exchange(other._descriptor, -1)) {}
    OpenFile& operator=(OpenFile&& other) noexcept {
        std::swap(_descriptor, other._descriptor);
        return *this;
    }
    OpenFile(const OpenFile&) = delete;

    explicit operator bool() const { return _descriptor >= 0; }
    int descriptor() const { return _descriptor; }

    /// True if the file was open and the system has accepted all that was written; otherwise errno
    /// says why.
    bool close();

private:
    int _descriptor;
};

/// A regular file, open for reading.
struct SourceFile {
    explicit SourceFile(const std::string& path);

    std::string path;
    OpenFile file;           ///< not open if `path` leads to no regular file that can be read
    int error = 0;           ///< errno of what went wrong; 0 if nothing did
    bool isRegular = true;   ///< false for a directory, a pipe, a device
    std::uint64_t size = 0;  ///< when it was opened
    mode_t mode = 0;         ///< its permissions
};

/// Creates a file that was not there and opens it for writing. Whatever is there already, a
/// symbolic link that leads nowhere included, makes it fail with EEXIST.
OpenFile createNew(const std::string& path, mode_t mode);

/// Writes all of `block[0, size)`; false, with errno set, if the system does not accept it.
bool writeAll(const OpenFile& file, const char* block, std::size_t size);

/// Logs "text: description of errno" as an error; false, to be returned.
bool fail(const std::string& text);
