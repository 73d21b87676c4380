// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "streams.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <vector>

#include "failure.h"

int claimStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        // The null device, opened for the wrong direction, refuses both reading and writing.
        if (fcntl(descriptor, F_GETFD) == -1)
            static_cast<void>(open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY));
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    const int results = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    // Nothing that the library prints may stay in a buffer that is flushed later to a different
    // place.
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    return results;
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t n = write(descriptor, bytes.data(), bytes.size());
        if (n > 0)
            bytes.remove_prefix(static_cast<std::size_t>(n));
        else if (n == 0 || errno != EINTR)
            return false;
    }
    return true;
}

// --- Descriptor ----------------------------------------------------------------------------------

Descriptor::~Descriptor() {
    if (_number >= 0) ::close(_number);
}

int Descriptor::release() {
    const int number = _number;
    _number = -1;
    return number;
}

// --- Input ---------------------------------------------------------------------------------------

Input::Input(const std::string& name)
    : _descriptor(name == "-" ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC)) {
    struct stat info {};
    if (_descriptor.get() < 0 || fstat(_descriptor.get(), &info) != 0)
        throw systemFailure(Status::unreadable);
    if (!S_ISREG(info.st_mode)) return;
    const off_t position = lseek(_descriptor.get(), 0, SEEK_CUR);
    if (position < 0) throw systemFailure(Status::unreadable);
    _remaining = static_cast<std::uint64_t>(std::max<off_t>(info.st_size - position, 0));
}

std::size_t Input::readSome(char* buffer, std::size_t size) {
    ssize_t n = 0;
    do {
        n = read(_descriptor.get(), buffer, size);
    } while (n < 0 && errno == EINTR);
    if (n < 0) throw systemFailure(Status::unreadable);
    const auto count = static_cast<std::size_t>(n);
    if (_remaining) {
        if (count == 0 && *_remaining > 0)
            throw Failure(Status::unreadable, "the file has shrunk while it was read");
        _remaining = *_remaining - std::min<std::uint64_t>(*_remaining, count);  // it may grow
    }
    return count;
}

std::size_t Input::fill(char* buffer, std::size_t size) {
    std::size_t done = 0;
    while (done < size) {
        const std::size_t n = readSome(buffer + done, size - done);
        if (n == 0) break;
        done += n;
    }
    return done;
}

void Input::skip(std::uint64_t bytes) {
    const Failure tooShort(Status::unreadable,
                           "there are fewer than " + std::to_string(bytes) + " bytes");
    if (_remaining) {
        if (*_remaining < bytes) throw tooShort;
        if (lseek(_descriptor.get(), static_cast<off_t>(bytes), SEEK_CUR) < 0)
            throw systemFailure(Status::unreadable);
        *_remaining -= bytes;
        return;
    }
    std::vector<char> block(blockSize);
    while (bytes > 0) {
        const std::size_t n = fill(block.data(), std::min<std::uint64_t>(bytes, blockSize));
        if (n == 0) throw tooShort;
        bytes -= n;
    }
}

// --- LineReader ----------------------------------------------------------------------------------

bool LineReader::next(std::string& line) {
    std::size_t end = 0;
    for (std::size_t searched = _begin;
         (end = _data.find(_lineEnd, searched)) == std::string::npos;) {
        _data.erase(0, _begin);
        _begin = 0;
        searched = _data.size();
        if (searched >= maxLine) break;
        _data.resize(searched + blockSize);
        _data.resize(searched + _input.readSome(&_data[searched], blockSize));
        if (_data.size() == searched) break;
    }
    const bool isEnded = end != std::string::npos && end - _begin <= maxLine;
    line.assign(_data, _begin, isEnded ? end - _begin : maxLine);
    _begin += line.size() + (isEnded ? 1 : 0);
    return isEnded || !line.empty();
}

// --- Writer --------------------------------------------------------------------------------------

Writer::Writer(int standardOutput) : _descriptor(standardOutput) {}

void Writer::write(std::string_view bytes) {
    _buffer += bytes;
    if (_buffer.size() >= blockSize) flush();
}

void Writer::flush() {
    if (!writeAll(_descriptor.get(), _buffer)) fail();
    _buffer.clear();
}

void Writer::close() {
    flush();
    if (::close(_descriptor.release()) != 0) fail();  // a network file system reports errors here
}

bool Writer::isTerminal() const { return isatty(_descriptor.get()) == 1; }

void Writer::fail() {
    _buffer.clear();  // not tried again
    if (_name.empty()) throw OutputLost(std::string("standard output: ") + std::strerror(errno));
    throw cannotWrite(_name);
}

// --- LibraryMessages -----------------------------------------------------------------------------

LibraryMessages::LibraryMessages(Use use)
    : _file(use == kept ? std::tmpfile() : nullptr),
      _savedOut(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)),
      _savedError(fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
    // Otherwise there would be no way back.
    if (_savedOut.get() < 0 || _savedError.get() < 0) {
        const Failure failure = systemFailure(Status::unwritable);
        if (_file) std::fclose(_file);
        throw failure;
    }
    const Descriptor nowhere(_file ? -1 : open("/dev/null", O_WRONLY | O_CLOEXEC));
    const int target = _file ? fileno(_file) : nowhere.get();
    dup2(target, STDOUT_FILENO);
    dup2(target, STDERR_FILENO);
}

LibraryMessages::~LibraryMessages() {
    dup2(_savedOut.get(), STDOUT_FILENO);
    dup2(_savedError.get(), STDERR_FILENO);
    if (_file) std::fclose(_file);
}

std::string withoutColours(std::string text) {
    for (std::size_t at = 0; (at = text.find("\033[", at)) != std::string::npos;) {
        const std::size_t end = text.find_first_not_of("0123456789", at + 2);
        if (end == std::string::npos || text[end] != 'm')
            at += 2;
        else
            text.erase(at, end - at + 1);
    }
    return text;
}

std::string LibraryMessages::text() {
    std::string text;
    char block[4096];
    for (off_t at = 0; _file;) {
        const ssize_t n = pread(fileno(_file), block, sizeof block, at);
        if (n < 0) throw systemFailure(Status::unreadable);
        if (n == 0) break;
        text.append(block, static_cast<std::size_t>(n));
        at += n;
    }
    text = withoutColours(std::move(text));
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
}
