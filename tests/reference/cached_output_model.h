// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The rules of cached_streambuf, written out for a string in place of a file, one character at a
// time.
#pragma once

#include <cstddef>
#include <string>

namespace reference {

class CachedOutput {
public:
    /// Open from the start, unless it counts. If `isFull`, every write to the first file fails.
    CachedOutput(std::size_t bufferSize, bool isCounting, bool isFull)
        : _bufferSize(bufferSize), _isCounting(isCounting), _isOpen(!isCounting), _isFull(isFull) {}

    void put(char c) {
        if (hasRoom()) {
            _buffered += c;
            return;
        }
        flush();
        if (_bufferSize == 0)
            write(std::string(1, c));
        else
            _buffered += c;
    }
    bool hasRoom() const { return _buffered.size() < _bufferSize; }

    void flush() {
        if (!_buffered.empty()) write(_buffered);
        _buffered.clear();
    }

    void write(const std::string& bytes) {
        if (_isCounting) {
            _count += static_cast<long>(bytes.size());
        } else if (!_hasFailed && _isOpen && !bytes.empty()) {
            if (_isFull)
                _hasFailed = true;
            else
                _file += bytes;
        }
    }

    void close() {
        if (!_isOpen) return;
        flush();
        _isOpen = false;
    }

    /// Opens an ordinary file.
    void open() {
        _isOpen = true;
        _isFull = false;
        _file.clear();
    }

    bool isOpen() const { return _isOpen; }
    bool isValid() const { return _isCounting || (!_hasFailed && _isOpen); }
    bool hasFailed() const { return _hasFailed; }
    long count() const { return _count; }
    const std::string& file() const { return _file; }

private:
    std::size_t _bufferSize;
    bool _isCounting, _isOpen, _isFull, _hasFailed = false;
    long _count = 0;
    std::string _buffered, _file;
};

}  // namespace reference
