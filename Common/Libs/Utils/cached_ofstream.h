// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// File output through a write buffer of chosen size, and a stream that only counts bytes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <ostream>
#include <streambuf>

#include "kxExport.h"

/// A write-only stream buffer over a file. Constructed without a name, it counts bytes instead and
/// stores none. Bytes pass unchanged; a full buffer goes to the system as one block.
///
/// Deliberately, a write that fails (on a full disk, for example) is no failure of the stream
/// operation: overflow() and sync() always answer 0, and so does sputc() whenever it overflows. The
/// failure makes is_valid() false and prints one line on standard error (not in the log); all later
/// bytes are dropped silently. Bytes that were flushed while is_valid() is still true have been
/// accepted by the system.
///
/// There are no positions: every seek and every position query answers -1. Opening a pipe waits
/// until somebody opens it for reading.
///
/// Threads: an object has no lock; one thread uses it at a time. The constructor may throw
/// std::bad_alloc; nothing else is thrown.
class KXUTILS_API cached_streambuf : public std::streambuf {
public:
    /// Allocates a buffer of `size` bytes. If `size` is below 1 there is no buffer, and every
    /// character is written by itself, with one system call, or counted by itself. Creates or
    /// truncates the file `name`; if that fails, is_valid() is false. A null name makes the object
    /// a counter for its whole life.
    cached_streambuf(int size, const char* name);
    /// If a file is open, writes the buffered bytes and closes the file. An exception that leaves
    /// sync() terminates the program.
    ~cached_streambuf() override;
    cached_streambuf(const cached_streambuf&) = delete;             ///< It owns its file.
    cached_streambuf& operator=(const cached_streambuf&) = delete;  ///< It owns its file.

    /// Creates or truncates the file `name`; a null name is ignored. Deliberately, this does not
    /// close a file that is already open, whose handle is then lost for the life of the process.
    /// Nor does it discard the buffered bytes, which go to the new file. So call close() before. A
    /// counting object truncates the file and still only counts.
    void open(const char* name);

    /// Writes the buffered bytes and closes the file. Without an open file it does nothing, so the
    /// buffered bytes of a counting object stay uncounted until pubsync().
    void close();

    /// True while a file is open and no write has failed; always true when counting.
    bool is_valid();

    /// The number of bytes counted so far: those flushed, or all without a buffer. 0 for a file.
    std::int64_t size() const;

    /// Writes or counts `data[0, n)` at once, before the bytes that are still in the buffer.
    void write_buffer(const char* data, unsigned long n);

protected:
    /// Write or count the buffered bytes; overflow() adds `c` unless that is eof. The result is
    /// always 0.
    /// @{
    int sync() override;
    int_type overflow(int_type c) override;
    /// @}

private:
    // The put area's start owns the buffer.
    std::FILE* _file = nullptr;
    bool _ok = true;
    std::int64_t _count = 0;
    bool _counting;
};

/// An output stream that writes one file, or counts bytes, through a cached_streambuf of its own.
/// tellp() answers -1.
///
/// A write that fails leaves the state of the stream good (see cached_streambuf). close() sets
/// badbit for an earlier failure, but checks before its own last flush, so flush first to learn of
/// every failure.
///
///     cached_ofstream out("mesh.bin");
///     out.write(data, size);
///     out.flush();
///     out.close();
///     return !out.bad();  // false: not created, or not completely written
///
/// Threads and exceptions are as for std::ostream. The constructor may throw std::bad_alloc.
class KXUTILS_API cached_ofstream : public std::ostream {
public:
    /// Counts the bytes written to it and stores none; size() is exact at any time.
    cached_ofstream();
    /// Creates or truncates the file `name` and writes it through a buffer of `size` bytes,
    /// narrowed to int; if that is below 1, every character is a write of its own. If the file
    /// cannot be created, the state is badbit. With a null name the stream is valid and counts the
    /// bytes that are flushed.
    explicit cached_ofstream(const char* name, unsigned long size = 32768);
    /// Flushes and closes the file.
    ~cached_ofstream() override;

    /// The number of bytes counted so far: those flushed, or all without a buffer. 0 for a file.
    std::int64_t size() const;

    /// Flushes and closes the file. Sets badbit if no file was open or an earlier write has failed,
    /// but never when counting. The file is closed even if badbit throws (exceptions()).
    void close();

private:
    std::unique_ptr<cached_streambuf> _buffer;
};
