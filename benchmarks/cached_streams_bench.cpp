// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Streams that read and write whole files, opened and closed each time, and read at random offsets.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <vector>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxbench.h"
#include "scratch.h"

namespace {

constexpr std::size_t blockSize = 4096, kib32 = 32 << 10, mib1 = 1 << 20;

// --- The contenders: a file with a buffer of a given size ----------------------------------------

class Buffer {
public:
    // The bytes are not zeroed.
    explicit Buffer(std::size_t size) : _bytes(new char[size]), _size(size) {}
    char* get() const { return _bytes.get(); }
    std::size_t size() const { return _size; }

private:
    std::unique_ptr<char[]> _bytes;
    std::size_t _size;
};

class StandardInput : Buffer, public std::ifstream {
public:
    StandardInput(const char* name, std::size_t size) : Buffer(size) {
        rdbuf()->pubsetbuf(Buffer::get(), static_cast<std::streamsize>(size));
        open(name, std::ios::binary);
    }
    using std::ifstream::get;
};

class StandardOutput : Buffer, public std::ofstream {
public:
    StandardOutput(const char* name, std::size_t size) : Buffer(size) {
        rdbuf()->pubsetbuf(get(), static_cast<std::streamsize>(size));
        open(name, std::ios::binary);
    }
};

// What every stream needs at least: system calls with the length of a buffer, and one copy.
class RawInput : Buffer {
public:
    RawInput(const char* name, std::size_t size)
        : Buffer(size), _file(open(name, O_RDONLY | O_CLOEXEC)) {}
    ~RawInput() { close(_file); }
    RawInput(const RawInput&) = delete;
    RawInput& operator=(const RawInput&) = delete;

    void read(char* out, std::streamsize wanted) {
        const auto n = static_cast<std::size_t>(wanted);
        if (_next == _end) refill(::read(_file, Buffer::get(), size()));
        _count = std::min(n, _end - _next);
        std::memcpy(out, Buffer::get() + _next, _count);
        _next += _count;
    }
    std::streamsize gcount() const { return static_cast<std::streamsize>(_count); }
    explicit operator bool() const { return _count != 0; }
    void seekg(std::streamoff offset) { refill(pread(_file, Buffer::get(), size(), offset)); }

private:
    void refill(ssize_t n) {
        _next = 0;
        _end = n > 0 ? static_cast<std::size_t>(n) : 0;
    }

    int _file;
    std::size_t _next = 0, _end = 0, _count = 0;
};

class RawOutput : Buffer {
public:
    RawOutput(const char* name, std::size_t size)
        : Buffer(size), _file(open(name, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666)) {}
    ~RawOutput() {
        flush();
        close(_file);
    }
    RawOutput(const RawOutput&) = delete;
    RawOutput& operator=(const RawOutput&) = delete;

    // The size of the buffer must be a multiple of `n`.
    void write(const char* data, std::streamsize n) {
        if (_used == size()) flush();
        std::memcpy(get() + _used, data, static_cast<std::size_t>(n));
        _used += static_cast<std::size_t>(n);
    }

private:
    void flush() {
        if (::write(_file, get(), _used) != static_cast<ssize_t>(_used)) std::abort();
        _used = 0;
    }

    int _file;
    std::size_t _used = 0;
};

// --- The operations ------------------------------------------------------------------------------

// Each of them passes what it reads to `take`.
template <class Input, class Take>
void readBlocks(const std::string& path, std::size_t bufferSize, Take take) {
    Input in(path.c_str(), bufferSize);
    char block[blockSize];
    do {
        in.read(block, blockSize);
        take(block, static_cast<std::size_t>(in.gcount()));
    } while (in);
}

template <class Input, class Take>
void getAll(const std::string& path, std::size_t bufferSize, Take take) {
    Input in(path.c_str(), bufferSize);
    for (int c = in.get(); c != EOF; c = in.get()) {
        const char byte = static_cast<char>(c);
        take(&byte, 1UL);
    }
}

constexpr std::size_t pieceSize = 64;

template <class Input, class Take>
void readPieces(Input& in, const std::vector<long>& offsets, Take take) {
    char piece[pieceSize];
    for (const long offset : offsets) {
        in.seekg(offset);
        in.read(piece, pieceSize);
        take(piece, static_cast<std::size_t>(in.gcount()));
    }
}

template <class Output>
void writeBlocks(const std::string& path, std::size_t bufferSize, const std::string& bytes) {
    Output out(path.c_str(), bufferSize);
    for (std::size_t i = 0; i < bytes.size(); i += blockSize)
        out.write(bytes.data() + i,
                  static_cast<std::streamsize>(std::min(blockSize, bytes.size() - i)));
}

template <class Output>
void putAll(const std::string& path, std::size_t bufferSize, const std::string& bytes) {
    Output out(path.c_str(), bufferSize);
    for (const char byte : bytes) out.put(byte);
}

// --- Registration --------------------------------------------------------------------------------

const auto ignore = [](const char* data, std::size_t) { benchmark::DoNotOptimize(data); };

template <class Read>
bool reads(const std::string& expected, Read read) {
    std::string bytes;
    read([&bytes](const char* data, std::size_t n) { bytes.append(data, n); });
    return bytes == expected;
}

// The file of that size, which is made when it is first used.
const std::string& inputFile(std::size_t size) {
    static std::map<std::size_t, std::string> paths;
    std::string& path = paths[size];
    if (path.empty()) {
        path = kxbench::scratch("in" + std::to_string(size));
        std::ofstream(path, std::ios::binary) << kxbench::randomBytes(size);
    }
    return path;
}

template <class Input>
void addRead(const std::string& operation, const char* name, std::size_t size,
             std::size_t bufferSize) {
    const auto read = [=](auto take) { readBlocks<Input>(inputFile(size), bufferSize, take); };
    kxbench::contender(
        operation, name, size, [=] { read(ignore); },
        [=] { return reads(kxbench::randomBytes(size), read); });
}

template <class Input>
void addGet(const char* name, std::size_t size) {
    const auto read = [=](auto take) { getAll<Input>(inputFile(size), kib32, take); };
    kxbench::contender(
        "cached_ifstream::get", name, size, [=] { read(ignore); },
        [=] { return reads(kxbench::randomBytes(size), read); });
}

template <class Input>
void addSeek(const char* name) {
    constexpr std::size_t size = 16 << 20;
    std::vector<long> offsets;
    std::mt19937 random(7);
    for (int i = 0; i < 16; ++i) offsets.push_back(static_cast<long>(random() % (size - mib1)));

    const auto in = std::make_shared<std::unique_ptr<Input>>();  // opened when it is first used
    const auto read = [=](auto take) {
        if (!*in) *in = std::make_unique<Input>(inputFile(size).c_str(), kib32);
        readPieces(**in, offsets, take);
    };
    const auto isRight = [=] {
        std::string expected;
        for (const long offset : offsets)
            expected.append(kxbench::randomBytes(size), static_cast<std::size_t>(offset),
                            pieceSize);
        return reads(expected, read);
    };
    kxbench::contender(
        "cached_ifstream::seekg + read 64 bytes", name, offsets.size() * pieceSize,
        [=] { read(ignore); }, isRight);
}

using Write = void (*)(const std::string& path, std::size_t bufferSize, const std::string& bytes);

void addWrite(const std::string& operation, const char* name, std::size_t size, Write write,
              std::size_t bufferSize) {
    static const std::string path = kxbench::scratch("out");
    const std::string& bytes = kxbench::randomBytes(size);
    kxbench::contender(
        operation, name, size, [=, &bytes] { write(path, bufferSize, bytes); },
        [&bytes] { return kxbench::slurp(path) == bytes; });
}

const bool registered = [] {
    for (const std::size_t bufferSize : {kib32, mib1})
        for (const std::size_t size : {1UL << 10, 1UL << 16, 16UL << 20}) {
            const std::string buffer = bufferSize == kib32 ? ", buffer 32 KiB" : ", buffer 1 MiB";
            const std::string read = "cached_ifstream::read 4 KiB" + buffer;
            addRead<cached_ifstream>(read, "kxUtils", size, bufferSize);
            addRead<StandardInput>(read, "std::ifstream", size, bufferSize);
            addRead<RawInput>(read, "limit read + memcpy", size, bufferSize);
            const std::string write = "cached_ofstream::write 4 KiB" + buffer;
            addWrite(write, "kxUtils", size, writeBlocks<cached_ofstream>, bufferSize);
            addWrite(write, "std::ofstream", size, writeBlocks<StandardOutput>, bufferSize);
            addWrite(write, "limit memcpy + write", size, writeBlocks<RawOutput>, bufferSize);
        }
    for (const std::size_t size : {1UL << 10, 1UL << 20}) {
        addGet<cached_ifstream>("kxUtils", size);
        addGet<StandardInput>("std::ifstream", size);
        addWrite("cached_ofstream::put", "kxUtils", size, putAll<cached_ofstream>, kib32);
        addWrite("cached_ofstream::put", "std::ofstream", size, putAll<StandardOutput>, kib32);
    }
    addSeek<cached_ifstream>("kxUtils");
    addSeek<StandardInput>("std::ifstream");
    addSeek<RawInput>("limit pread + memcpy");
    return true;
}();

}  // namespace
