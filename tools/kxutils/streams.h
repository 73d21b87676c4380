// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files and standard streams, read and written in blocks, with every failure noticed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// The number of bytes read or written at once; Base64 encodes them as whole groups of three.
constexpr std::size_t blockSize = 3 << 15;

/// Makes the standard descriptors safe; to be called first in main(). A closed descriptor is taken,
/// so that none of our files gets its number, and using it still fails. A closed pipe and a file at
/// its size limit become errors of write(2) instead of ending the process.
///
/// Returns a new descriptor of standard output. Descriptor 1 itself then leads to standard error,
/// so what the library prints there by contract cannot get between the results.
int claimStandardStreams();

/// A descriptor that is closed with the object.
class Descriptor {
public:
    explicit Descriptor(int number) : _number(number) {}
    Descriptor(Descriptor&& other) noexcept : _number(other.release()) {}
    Descriptor& operator=(Descriptor&&) = delete;
    ~Descriptor();

    int get() const { return _number; }
    int release();

private:
    int _number;
};

/// A file, or standard input for the name "-". Failures have Status::unreadable.
class Input {
public:
    explicit Input(const std::string& name);

    /// Reads what is available, at least one byte; returns 0 at the end. If a regular file ends
    /// before the size it had when it was opened, that is a failure.
    std::size_t readSome(char* buffer, std::size_t size);

    /// Reads until `buffer` is full or the end is reached.
    std::size_t fill(char* buffer, std::size_t size);

    /// Skips bytes; if there are not that many, that is a failure.
    void skip(std::uint64_t bytes);

    /// The number of bytes still to come; no value if the size is not known (a pipe, a device).
    std::optional<std::uint64_t> remaining() const { return _remaining; }

private:
    Descriptor _descriptor;
    std::optional<std::uint64_t> _remaining;
};

/// The lines of an input, without the bytes that end them.
class LineReader {
public:
    /// A longer line comes in pieces of this many bytes.
    static constexpr std::size_t maxLine = 1 << 20;

    explicit LineReader(Input& input, char lineEnd = '\n') : _input(input), _lineEnd(lineEnd) {}

    /// Returns false at the end. A last line that is not ended counts.
    bool next(std::string& line);

    /// True if finding the next line takes a read, which may have to wait.
    bool mustRead() const { return _data.find(_lineEnd, _begin) == std::string::npos; }

private:
    Input& _input;
    const char _lineEnd;
    std::string _data;  // what is read; the next line starts at _begin
    std::size_t _begin = 0;
};

/// Buffered output. Whatever remains in the buffer at destruction is lost, so call close().
class Writer {
public:
    /// Writes to an open file. Failures have Status::unwritable and the file's name.
    Writer(Descriptor file, std::string name)
        : _descriptor(std::move(file)), _name(std::move(name)) {}
    /// Writes to standard output and owns its descriptor. Failures are OutputLost.
    explicit Writer(int standardOutput);

    void write(std::string_view bytes);
    void flush();
    void close();

    bool isTerminal() const;

private:
    [[noreturn]] void fail();

    Descriptor _descriptor;
    std::string _name;  // empty for standard output
    std::string _buffer;
};

/// A text without the sequences that set the colours of a terminal ("\033[31m").
std::string withoutColours(std::string text);

/// Catches what the library prints on descriptors 1 and 2 during the object's lifetime.
class LibraryMessages {
public:
    enum Use { kept, dropped };
    /// A Failure if there are no descriptors for it.
    explicit LibraryMessages(Use use = kept);
    ~LibraryMessages();
    LibraryMessages(const LibraryMessages&) = delete;
    LibraryMessages& operator=(const LibraryMessages&) = delete;

    /// False if nothing is kept, because there is no temporary file for it.
    bool areKept() const { return _file != nullptr; }

    /// What has been printed so far, without colours and without the newline at the end.
    std::string text();

private:
    std::FILE* _file;  // null if dropped, or if no temporary file can be made
    Descriptor _savedOut, _savedError;
};

/// Writes everything to a descriptor. Returns false, with errno set, if not all of it could be
/// written.
bool writeAll(int descriptor, std::string_view bytes);
