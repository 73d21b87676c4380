// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The rules of cached_istreambuf, written out for a string in place of a file: slowly, with indices
// instead of pointers and one step per rule.
#pragma once

#include <cstddef>
#include <ios>
#include <string>

namespace reference {

class CachedInput {
public:
    static constexpr int endOfFile = -1;

    CachedInput(const std::string& file, std::size_t bufferSize)
        : _file(file), _buffer(bufferSize, '\0') {
        emptyGetArea();
    }

    /// Keeps the buffered bytes.
    void close() { _isOpen = false; }
    /// Keeps the buffered bytes; the file is read from its start.
    void open() {
        _isOpen = true;
        _position = 0;
    }
    bool isOpen() const { return _isOpen; }

    /// The position of the file under the buffer.
    long filePosition() const { return _position; }
    long available() const { return static_cast<long>(_end - _current); }

    int peek() {
        if (_current == _end) return refill();
        return static_cast<unsigned char>(_buffer[_current]);
    }

    int get() {
        const int c = peek();
        if (c != endOfFile) ++_current;
        return c;
    }

    int putBack() {
        if (_current == _start) return endOfFile;
        --_current;
        return static_cast<unsigned char>(_buffer[_current]);
    }

    /// Puts back that very character, or none.
    int putBack(char c) {
        if (_current == _start || _buffer[_current - 1] != c) return endOfFile;
        return putBack();
    }

    long seekOffset(long offset, std::ios_base::seekdir direction, std::ios_base::openmode which) {
        if (!_isOpen) return -1;
        const long current = _position;
        long result = -1;
        bool moved = false;
        if (direction == std::ios_base::beg) {
            moved = moveFile(offset);
        } else if (direction == std::ios_base::end) {
            moved = moveFile(static_cast<long>(_file.size()) + offset);
        } else if (direction == std::ios_base::cur) {
            if (offset == 0) return current;
            moved = moveFile(_position + offset);
        }
        if (moved) result = _position;
        if (result == current) return current;
        if ((which & std::ios_base::in) != 0) emptyGetArea();
        return result;
    }

    long seekPosition(long position, std::ios_base::openmode which) {
        if (!_isOpen) return -1;
        const long current = _position;
        if (current == position) return position;
        const bool moved = moveFile(position);
        if ((which & std::ios_base::in) != 0) emptyGetArea();
        return moved ? position : -1;
    }

private:
    int refill() {
        if (!_isOpen) return endOfFile;
        std::size_t n = 0;
        while (n < _buffer.size() && _position < static_cast<long>(_file.size()))
            _buffer[n++] = _file[static_cast<std::size_t>(_position++)];
        if (n == 0) return endOfFile;
        _start = _current = 0;
        _end = n;
        return static_cast<unsigned char>(_buffer[0]);
    }

    // A file can be positioned beyond its end, but not before its start.
    bool moveFile(long position) {
        if (position < 0) return false;
        _position = position;
        return true;
    }

    void emptyGetArea() {
        _start = 0;
        _current = _end = _buffer.size();
    }

    const std::string& _file;
    bool _isOpen = true;
    long _position = 0;
    std::string _buffer;
    std::size_t _start = 0, _current = 0, _end = 0;
};

}  // namespace reference
