// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "cached_ofstream.h"

#include "detail/files/handle.h"

cached_streambuf::cached_streambuf(int size, const char* name) : _counting(!name) {
    if (size >= 1) {
        char* const start = new char[static_cast<std::size_t>(size)];
        setp(start, start + size);
    }
    open(name);
}

cached_streambuf::~cached_streambuf() {
    if (_file) {
        cached_streambuf::sync();
        std::fclose(_file);
    }
    delete[] pbase();
}

void cached_streambuf::open(const char* name) {
    if (name) _file = kx::detail::openUnbuffered(name, "wbe");
}

void cached_streambuf::close() {
    if (!_file) return;
    sync();
    std::fclose(_file);
    _file = nullptr;
}

bool cached_streambuf::is_valid() { return (_ok && _file) || _counting; }

std::int64_t cached_streambuf::size() const { return _count; }

void cached_streambuf::write_buffer(const char* data, unsigned long n) {
    if (_counting) {
        _count += static_cast<std::int64_t>(n);
    } else if (_ok && _file && std::fwrite(data, 1, n, _file) < n) {
        std::fputs("cached_streambuf::write_buffer: failed!\n", stderr);
        _ok = false;
    }
}

int cached_streambuf::sync() {
    if (pptr() > pbase()) write_buffer(pbase(), static_cast<unsigned long>(pptr() - pbase()));
    setp(pbase(), epptr());
    return 0;
}

cached_streambuf::int_type cached_streambuf::overflow(int_type c) {
    sync();
    if (traits_type::eq_int_type(c, traits_type::eof())) return 0;
    const char byte = traits_type::to_char_type(c);
    if (pbase() == epptr())
        write_buffer(&byte, 1);
    else
        sputc(byte);
    return 0;
}

cached_ofstream::cached_ofstream() : cached_ofstream(nullptr, 0) {}

// The stream must exist before its buffer, so the buffer is attached here.
cached_ofstream::cached_ofstream(const char* name, unsigned long size)
    : std::ostream(nullptr),
      _buffer(std::make_unique<cached_streambuf>(static_cast<int>(size), name)) {
    rdbuf(_buffer.get());
    if (!_buffer->is_valid()) setstate(std::ios_base::badbit);
}

cached_ofstream::~cached_ofstream() = default;

std::int64_t cached_ofstream::size() const { return _buffer->size(); }

void cached_ofstream::close() {
    const bool hasFailed = !_buffer->is_valid();
    _buffer->close();  // first, since setstate throws if the caller has switched exceptions on
    if (hasFailed) setstate(std::ios_base::badbit);
}
