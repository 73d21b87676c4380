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

/// A write-only stream buffer over a file, or, when constructed without a name, a counter of bytes
/// that stores none. Bytes pass unchanged; a full buffer goes to the system as one block.
///
/// A write that fails (a full disk) is, deliberately, no failure of the stream operation: overflow
/// and sync always answer 0 (so sputc answers 0 whenever it overflows). It shows in is_valid(), and
/// in one line on standard error (not the log); everything after it is dropped silently. What has
/// been flushed while is_valid() holds has been accepted by the system.
///
/// There are no positions: every seek and position query answers -1. Opening a pipe waits until
/// somebody opens it for reading.
///
/// Threads: none of its own; one thread uses an object at a time. Throws std::bad_alloc from the
/// constructor, nothing else.
class KXUTILS_API cached_streambuf : public std::streambuf {
public:
    /// Allocates a buffer of `size` bytes; below 1 there is none, and every character is written
    /// (one system call each) or counted by itself. Creates or truncates the file `name`; one that
    /// cannot be created shows in is_valid(). A null name turns counting on, for good.
    cached_streambuf(int size, const char* name);
    /// Writes what is buffered if a file is open, and closes it. An exception out of sync()
    /// terminates the program.
    ~cached_streambuf() override;
    cached_streambuf(const cached_streambuf&) = delete;             ///< it owns its file
    cached_streambuf& operator=(const cached_streambuf&) = delete;  ///< the same

    /// Creates or truncates the file `name`; a null name is ignored. Deliberately neither closes a
    /// file already open, whose handle is then lost for the life of the process, nor discards the
    /// buffered bytes, which go to the new file: call close() before. A counting object truncates
    /// the file and still only counts.
    void open(const char* name);

    /// Writes what is buffered and closes the file. Without an open file it does nothing: buffered
    /// bytes of a counting object stay uncounted until pubsync().
    void close();

    /// True while a file is open and no write has failed; always true when counting.
    bool is_valid();

    /// The bytes counted so far: those flushed or, unbuffered, all. 0 for a file.
    std::int64_t size() const;

    /// Writes or counts `data[0, n)` at once, ahead of bytes that still are in the buffer.
    void write_buffer(const char* data, unsigned long n);

protected:
    /// Write or count what is buffered, overflow() `c` as well unless it is eof; always 0.
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
/// tellp answers -1.
///
/// A write that fails leaves the stream's state good (see cached_streambuf). close() sets badbit
/// for it, but looks before its own last flush: flush first to learn of every failure.
///
///     cached_ofstream out("mesh.bin");
///     out.write(data, size);
///     out.flush();
///     out.close();
///     return !out.bad();  // false: not created, or not completely written
///
/// Threads and exceptions as for std::ostream; the constructor may throw std::bad_alloc.
class KXUTILS_API cached_ofstream : public std::ostream {
public:
    /// Counts the bytes written to it and stores none; size() is exact at any time.
    cached_ofstream();
    /// Creates or truncates the file `name` and writes it through a buffer of `size` bytes,
    /// narrowed to int; below 1 every character is a write of its own. If the file cannot be
    /// created the state is badbit. A null name gives a valid stream that counts what is flushed.
    explicit cached_ofstream(const char* name, unsigned long size = 32768);
    /// Flushes and closes the file.
    ~cached_ofstream() override;

    /// The bytes counted so far: those flushed or, unbuffered, all. 0 for a file.
    std::int64_t size() const;

    /// Flushes and closes the file; sets badbit if none was open or an earlier write has failed
    /// (never when counting). The file is closed too where badbit throws (exceptions()).
    void close();

private:
    std::unique_ptr<cached_streambuf> _buffer;
};
