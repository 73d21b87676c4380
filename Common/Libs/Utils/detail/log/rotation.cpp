// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/log/rotation.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <limits>

namespace kx::detail {
namespace {

// The bytes of a file from its start, read only as far as they are asked for. Reads at offsets,
// which consumes nothing if the path leads to a pipe or a terminal.
class Reader {
public:
    static constexpr int endOfFile = -1;

    explicit Reader(int descriptor) : _descriptor(descriptor) {}

    int peek() {
        if (_next == _end && !refill()) return endOfFile;
        return static_cast<unsigned char>(_bytes[_next]);
    }
    int get() {
        const int c = peek();
        if (c != endOfFile) ++_next;
        return c;
    }

    /// Skips a line, or as much of it as fgets would read into `size` bytes.
    void skipLine(int size) {
        for (int c = 0; size > 1 && c != '\n' && c != endOfFile; --size) c = get();
    }

    /// Reads a number as scanf does: blanks, then a sign and digits that together have at most
    /// `width` characters. Cuts off a number that is too large as scanf does. Returns false, with
    /// `value` 0, if there is no digit.
    bool number(int& value, int width = std::numeric_limits<int>::max()) {
        while (isBlank(peek())) get();
        const bool isNegative = peek() == '-';
        if (isNegative || peek() == '+') {
            get();
            --width;
        }
        long result = 0;
        bool hasDigit = false, isTooLarge = false;
        for (; width > 0 && isDigit(peek()); --width) {
            const int digit = get() - '0';
            hasDigit = true;
            isTooLarge |= __builtin_mul_overflow(result, 10, &result) ||
                          __builtin_add_overflow(result, isNegative ? -digit : digit, &result);
        }
        using Limits = std::numeric_limits<long>;
        if (isTooLarge) result = isNegative ? Limits::min() : Limits::max();
        value = static_cast<int>(result);
        return hasDigit;
    }

    bool literal(char expected) {
        if (peek() != static_cast<unsigned char>(expected)) return false;
        get();
        return true;
    }

private:
    static bool isBlank(int c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    static bool isDigit(int c) { return c >= '0' && c <= '9'; }

    bool refill() {
        const ssize_t n = pread(_descriptor, _bytes, sizeof _bytes, _offset);
        if (n <= 0) return false;
        _offset += n;
        _next = 0;
        _end = static_cast<std::size_t>(n);
        return true;
    }

    const int _descriptor;
    off_t _offset = 0;
    std::size_t _next = 0, _end = 0;
    char _bytes[256];  // a header and a stamp; longer starts take several reads
};

// Fields that cannot be read stay 0.
Stamp readFirstStamp(int descriptor, bool isCsv) {
    Stamp stamp;
    Reader in(descriptor);
    bool isWhole = false;
    if (isCsv) {
        in.skipLine(1024);
        isWhole = in.number(stamp.day, 2) && in.literal('.') && in.number(stamp.month, 2) &&
                  in.literal('.') && in.number(stamp.year) && in.literal(';');
    } else {
        isWhole = in.number(stamp.year) && in.literal('-') && in.number(stamp.month, 2) &&
                  in.literal('-') && in.number(stamp.day, 2);
    }
    isWhole = isWhole && in.number(stamp.hour, 2) && in.literal(':') &&
              in.number(stamp.minute, 2) && in.literal(':') && in.number(stamp.second, 2);
    static_cast<void>(isWhole);
    return stamp;
}

}  // namespace

std::string staleStamp(const char* path, bool isCsv, const Stamp& now) {
    // Does not block, since the path may lead to a pipe; only a regular file is an old log.
    const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return {};
    const Stamp first = readFirstStamp(descriptor, isCsv);
    struct stat info {};
    const bool isStale =
        (first.year != now.year || first.month != now.month || first.day != now.day) &&
        fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
    close(descriptor);
    if (!isStale) return {};
    char text[96];  // six integers of any value
    std::snprintf(text, sizeof text, "%d%02d%02d-%02d%02d%02d", first.year, first.month, first.day,
                  first.hour, first.minute, first.second);
    return text;
}

}  // namespace kx::detail
