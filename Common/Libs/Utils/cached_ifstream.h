// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// File input through a read buffer of chosen size.
#pragma once

#include <cstdio>
#include <istream>
#include <memory>
#include <streambuf>

#include "kxExport.h"

/// A read-only stream buffer over a file; bytes pass unchanged. Its read buffer is filled with
/// whole blocks, each of which is read straight into it.
///
/// Deliberately, a position is where the next block will be read from the file, and not where the
/// next character stands:
///   - The position query (seekoff 0 from `cur`) answers the offset just after the last block read.
///   - A seek relative to `cur` starts from there.
///   - A seek that leads exactly there moves nothing and keeps the buffered bytes, so the next
///     character is still the next buffered one.
///   - Any other seek, even one that fails, discards the buffered bytes if `which` contains
///     std::ios_base::in, and keeps them otherwise. It answers the new offset, or -1 on failure.
///
/// After 10 bytes of a file of 100, for example, the position is 100. seekpos(100) keeps the
/// buffer, and the 11th byte follows; seekpos(0) discards it, and the first byte follows. So seek
/// absolutely and to another offset, or read from start to end. On a file that cannot seek (a pipe)
/// every position is -1 and seekoff keeps the buffered bytes.
///
/// A read that fails looks like the end of the file. Opening a pipe waits until somebody opens it
/// for writing.
///
/// Discarded bytes stay in the memory before the read position. Putting back a character that has
/// not been read since then (or at the very start) therefore delivers one of them.
///
/// Threads: an object has no lock; one thread uses it at a time. The constructor may throw
/// std::bad_alloc; nothing else is thrown.
class KXUTILS_API cached_istreambuf : public std::streambuf {
public:
    /// Allocates a buffer of `size` bytes (32768 if `size` is 0) and opens `name` unless it is
    /// null. If the file cannot be opened, is_valid() is false. Deliberately, a negative size is
    /// not checked: it asks for more memory than there is, and std::bad_alloc is thrown.
    cached_istreambuf(int size, const char* name);
    /// Closes the file.
    ~cached_istreambuf() override;
    cached_istreambuf(const cached_istreambuf&) = delete;             ///< It owns its file.
    cached_istreambuf& operator=(const cached_istreambuf&) = delete;  ///< It owns its file.

    /// Opens `name` for reading; a null name is ignored. Deliberately, this does not close a file
    /// that is already open, whose handle is then lost for the life of the process. Nor does it
    /// discard the buffered bytes, which are still delivered first. So call close() before, and
    /// seek to an offset after.
    void open(const char* name);

    /// Closes the file, if one is open. Bytes that are already buffered can still be read.
    void close();

    /// True while a file is open, even at its end.
    bool is_valid();

protected:
    /// The operations of std::streambuf, by the rules of the class. Without a file they answer -1.
    /// @{
    pos_type seekoff(off_type off, std::ios_base::seekdir dir,
                     std::ios_base::openmode which) override;
    pos_type seekpos(pos_type pos, std::ios_base::openmode which) override;
    int_type underflow() override;
    /// @}

private:
    void discard();

    std::unique_ptr<char[]> _buffer;
    int _size;
    std::FILE* _file = nullptr;
    bool _valid = true;
};

/// An input stream that reads one file through a cached_istreambuf of its own. tellg() and seekg()
/// follow the unusual rules of that class; read them first.
///
///     cached_ifstream in("mesh.bin");
///     if (!in) return false;  // cannot be opened
///     in.read(data, size);
///
/// Threads and exceptions are as for std::istream. The constructor may throw std::bad_alloc.
class KXUTILS_API cached_ifstream : public std::istream {
public:
    /// Opens `name` for reading through a buffer of `size` bytes; 0 stands for 32768 bytes, and the
    /// size is narrowed to int. If the file cannot be opened, or `name` is null, the state is
    /// badbit (not failbit).
    explicit cached_ifstream(const char* name, unsigned long size = 0);
    /// Closes the file.
    ~cached_ifstream() override;

    /// Closes the file. Sets badbit if no file is open, as after an earlier close().
    void close();

private:
    std::unique_ptr<cached_istreambuf> _buffer;
};
