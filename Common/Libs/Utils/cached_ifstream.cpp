// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "cached_ifstream.h"

#include "detail/files/handle.h"

namespace {

constexpr int defaultSize = 32768;

}  // namespace

cached_istreambuf::cached_istreambuf(int size, const char* name)
    : _size(size == 0 ? defaultSize : size) {
    // Zeroed, because putting back before the first read delivers these bytes.
    _buffer.reset(new char[static_cast<std::size_t>(_size)]());
    discard();
    open(name);
}

cached_istreambuf::~cached_istreambuf() { close(); }

void cached_istreambuf::open(const char* name) {
    if (name) _file = kx::detail::openUnbuffered(name, "rbe");
}

void cached_istreambuf::close() {
    if (!_file) return;
    std::fclose(_file);
    _file = nullptr;
}

bool cached_istreambuf::is_valid() { return _valid && _file; }

void cached_istreambuf::discard() {
    char* const start = _buffer.get();
    setg(start, start + _size, start + _size);
}

cached_istreambuf::pos_type cached_istreambuf::seekoff(off_type off, std::ios_base::seekdir dir,
                                                       std::ios_base::openmode which) {
    if (!_file) return off_type(-1);
    const off_type current = ftello(_file);
    bool moved = false;
    if (dir == std::ios_base::beg) {
        moved = fseeko(_file, off, SEEK_SET) == 0;
    } else if (dir == std::ios_base::end) {
        moved = fseeko(_file, off, SEEK_END) == 0;
    } else if (dir == std::ios_base::cur) {
        if (off == 0) return current;
        moved = fseeko(_file, off, SEEK_CUR) == 0;
    }
    const off_type result = moved ? ftello(_file) : -1;
    // A pipe gives -1 for both and keeps its buffered bytes, since nothing was moved.
    if (result != current && (which & std::ios_base::in)) discard();
    return result;
}

cached_istreambuf::pos_type cached_istreambuf::seekpos(pos_type pos,
                                                       std::ios_base::openmode which) {
    if (!_file) return off_type(-1);
    if (pos == pos_type(ftello(_file))) return pos;
    const bool moved = fseeko(_file, pos, SEEK_SET) == 0;
    if (which & std::ios_base::in) discard();
    return moved ? pos : pos_type(off_type(-1));
}

cached_istreambuf::int_type cached_istreambuf::underflow() {
    if (!_file) return traits_type::eof();
    char* const start = _buffer.get();
    const std::size_t n = std::fread(start, 1, static_cast<std::size_t>(_size), _file);
    if (n == 0) return traits_type::eof();
    setg(start, start, start + n);
    return traits_type::to_int_type(*start);
}

// The stream must exist before its buffer, so the buffer is attached here.
cached_ifstream::cached_ifstream(const char* name, unsigned long size)
    : std::istream(nullptr),
      _buffer(std::make_unique<cached_istreambuf>(static_cast<int>(size), name)) {
    rdbuf(_buffer.get());
    if (!_buffer->is_valid()) setstate(std::ios_base::badbit);
}

cached_ifstream::~cached_ifstream() = default;

void cached_ifstream::close() {
    if (!_buffer->is_valid()) setstate(std::ios_base::badbit);
    _buffer->close();
}
