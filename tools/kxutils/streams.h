// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files and standard streams, read and written in blocks, with every failure heard.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

/// Bytes that are read or written at once: whole groups of three, which Base64 encodes.
constexpr std::size_t blockSize = 3 << 15;

/// Makes the standard descriptors safe, first of all in main(): one that is closed is taken, so
/// that no file of ours gets its number, and still fails when it is used; a closed pipe and a file
/// at its size limit become errors of write(2) instead of ending the process.
///
/// Returns a new descriptor of standard output. Descriptor 1 itself then leads to standard error:
/// what the library prints there by contract cannot get between the results.
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

/// A file, or standard input for the name "-". Failures are of Status::unreadable.
class Input {
public:
    explicit Input(const std::string& name);

    /// Reads what is there, at least one byte; 0 at the end. A regular file that ends before the
    /// size it had when it was opened is a failure.
    std::size_t readSome(char* buffer, std::size_t size);

    /// Reads until `buffer` is full or the end is reached.
    std::size_t fill(char* buffer, std::size_t size);

    /// Passes over bytes; a failure if there are not as many.
    void skip(std::uint64_t bytes);

    /// Bytes still to come; nothing if the size is not known (a pipe, a device).
    std::optional<std::uint64_t> remaining() const { return _remaining; }

private:
    Descriptor _descriptor;
    std::optional<std::uint64_t> _remaining;
};

/// The lines of an input, without the bytes that end them.
class LineReader {
public:
    /// A line of more bytes comes in pieces of that many.
    static constexpr std::size_t maxLine = 1 << 20;

    explicit LineReader(Input& input, char lineEnd = '\n') : _input(input), _lineEnd(lineEnd) {}

    /// False at the end. A last line that is not ended counts.
    bool next(std::string& line);

    /// True if the next line is not known without reading, which may take its time.
    bool mustRead() const { return _data.find(_lineEnd, _begin) == std::string::npos; }

private:
    Input& _input;
    const char _lineEnd;
    std::string _data;  // what is read; the next line starts at _begin
    std::size_t _begin = 0;
};

/// Buffered output. What remains in the buffer when the object dies is lost: call close().
class Writer {
public:
    /// Writes to a file that is open. Failures are of Status::unwritable and have its name.
    Writer(Descriptor file, std::string name)
        : _descriptor(std::move(file)), _name(std::move(name)) {}
    /// Writes to standard output, whose descriptor it owns. Failures are OutputLost.
    explicit Writer(int standardOutput);

    void write(std::string_view bytes);
    void flush();
    void close();

    bool isTerminal() const;

private:
    [[noreturn]] void fail();

    Descriptor _descriptor;
    std::string _name;  // empty: standard output
    std::string _buffer;
};

/// A text without what sets the colours of a terminal ("\033[31m").
std::string withoutColours(std::string text);

/// Catches what the library prints on descriptors 1 and 2, as long as the object lives.
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

    /// What was printed so far, without colours and without the newline at the end.
    std::string text();

private:
    std::FILE* _file;  // null if dropped, or if no temporary file can be made
    Descriptor _savedOut, _savedError;
};

/// Writes to a descriptor whatever happens: false, with errno set, if not all could be written.
bool writeAll(int descriptor, std::string_view bytes);
