// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// File input through a read buffer of chosen size.
#pragma once

#include <cstdio>
#include <istream>
#include <memory>
#include <streambuf>

#include "kxExport.h"

/// A read-only stream buffer over a file; bytes pass unchanged. Its read buffer is refilled by
/// whole blocks, each read straight into it.
///
/// Positions are, deliberately, those of the file behind the buffer and not of the next character:
///   - the position query (seekoff 0 from `cur`) answers the offset just past the last block read;
///   - a seek relative to `cur` starts from there;
///   - a seek that arrives exactly there moves nothing and keeps the buffered bytes, so the next
///     character is still the next buffered one;
///   - any other seek, also one that fails, discards the buffered bytes if `which` contains
///     std::ios_base::in (and keeps them otherwise); it answers the new offset, or -1 on failure.
/// So 10 bytes into a file of 100, the position is 100; seekpos(100) keeps the buffer and the 11th
/// byte follows; seekpos(0) discards it and the first byte follows. Seek absolutely and to another
/// offset, or read from start to end. On a file that cannot seek (a pipe) every position is -1 and
/// seekoff keeps the buffered bytes.
///
/// A read that fails looks like the end of the file. Opening a pipe waits until somebody opens it
/// for writing.
///
/// Discarding leaves the bytes of the buffer in place, in front of the read position: putting back
/// a character that has not been read since (or at the very start) delivers one of them.
///
/// Threads: none of its own; one thread uses an object at a time. Throws std::bad_alloc from the
/// constructor, nothing else.
class KXUTILS_API cached_istreambuf : public std::streambuf {
public:
    /// Allocates a buffer of `size` bytes, 32768 for 0, and opens `name` unless it is null. A file
    /// that cannot be opened shows in is_valid(). A negative size goes to the allocation as it is,
    /// deliberately unchecked: that is a request for more than there is, and throws std::bad_alloc.
    cached_istreambuf(int size, const char* name);
    /// Closes the file.
    ~cached_istreambuf() override;
    cached_istreambuf(const cached_istreambuf&) = delete;             ///< it owns its file
    cached_istreambuf& operator=(const cached_istreambuf&) = delete;  ///< the same

    /// Opens `name` for reading; a null name is ignored. Deliberately neither closes a file already
    /// open, whose handle is then lost for the life of the process, nor discards the buffered
    /// bytes, which are still delivered first: call close() before, and seek to an offset after.
    void open(const char* name);

    /// Closes the file, if one is open. Bytes already buffered can still be read.
    void close();

    /// True while a file is open, at its end too.
    bool is_valid();

protected:
    /// The operations of std::streambuf, by the rules of the class; they answer -1 without a file.
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

/// An input stream that reads one file through a cached_istreambuf of its own. tellg and seekg
/// follow that class's unusual rules: read them first.
///
///     cached_ifstream in("mesh.bin");
///     if (!in) return false;  // cannot be opened
///     in.read(data, size);
///
/// Threads and exceptions as for std::istream; the constructor may throw std::bad_alloc.
class KXUTILS_API cached_ifstream : public std::istream {
public:
    /// Opens `name` for reading through a buffer of `size` bytes, narrowed to int; 0 gives 32768
    /// bytes. If the file cannot be opened, or `name` is null, the state is badbit (not failbit).
    explicit cached_ifstream(const char* name, unsigned long size = 0);
    /// Closes the file.
    ~cached_ifstream() override;

    /// Closes the file; sets badbit if none is open (so a second close does).
    void close();

private:
    std::unique_ptr<cached_istreambuf> _buffer;
};
