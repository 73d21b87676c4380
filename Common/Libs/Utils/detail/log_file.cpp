// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/log_file.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigpending, sigwait
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>

namespace kx::detail {
namespace {

// A pipe that nobody reads would make the open wait, so that is not waited for (ENXIO).
int openToAppend(const char* path) {
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    const mode_t mode = 0666;  // less the umask
    const int descriptor = open(path, flags | O_NONBLOCK, mode);
    // A program that holds a lease on the file gets the time to give it up.
    if (descriptor < 0 && errno == EWOULDBLOCK) return open(path, flags, mode);
    return descriptor;
}

// Asking the system takes a twentieth of the time of a line, so its answer holds for a second.
bool isRegular(const char* path, int descriptor) {
    static struct {
        char path[PATH_MAX];
        std::time_t time;
        bool isRegular;
    } last;
    const std::time_t now = std::time(nullptr);
    if (last.time == now && std::strcmp(last.path, path) == 0) return last.isRegular;
    struct stat info {};
    last.isRegular = fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
    last.time = now;
    std::memcpy(last.path, path, std::strlen(path) + 1);  // opened, so the system had room for it
    return last.isRegular;
}

// Keeps the SIGPIPE of a write to a pipe that nobody reads any more from the application, which may
// not survive it. One that was pending before stays.
class NoBrokenPipeSignal {
public:
    NoBrokenPipeSignal() : _wasPending(isPending()) {
        sigset_t set = onlySigpipe();
        pthread_sigmask(SIG_BLOCK, &set, &_before);
    }
    ~NoBrokenPipeSignal() {
        const sigset_t set = onlySigpipe();
        int signal = 0;
        if (!_wasPending && isPending()) sigwait(&set, &signal);
        pthread_sigmask(SIG_SETMASK, &_before, nullptr);
    }
    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

private:
    static sigset_t onlySigpipe() {
        sigset_t set{};
        sigemptyset(&set);
        sigaddset(&set, SIGPIPE);
        return set;
    }
    static bool isPending() {
        sigset_t set{};
        sigpending(&set);
        return sigismember(&set, SIGPIPE) == 1;
    }

    const bool _wasPending;
    sigset_t _before{};
};

// How many of the bytes could be written.
std::size_t writeAll(int descriptor, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (n > 0)
            done += static_cast<std::size_t>(n);
        else if (errno != EINTR)
            break;
    }
    return done;
}

// Removes what has just been appended, unless another process has appended since.
void takeBack(int descriptor, std::size_t size) {
    const off_t end = lseek(descriptor, 0, SEEK_CUR);
    if (lseek(descriptor, 0, SEEK_END) != end) return;
    const int failed = ftruncate(descriptor, end - static_cast<off_t>(size));
    static_cast<void>(failed);
}

// localtime would share its result with other threads and look at the zone file at every call.
std::tm localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

// The bytes of a file, from its start as far as they are asked for. Reads at offsets, which takes
// nothing away where the path leads to a pipe or a terminal.
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

    /// Reads a number as scanf does: blanks, then a sign and digits of `width` characters together.
    /// One too large is cut as scanf cuts it. False, with `value` 0, if there is no digit.
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

// Any field but the year.
char* putTwoDigits(char* out, int value) {
    *out++ = static_cast<char>('0' + value / 10);
    *out++ = static_cast<char>('0' + value % 10);
    return out;
}

char* putYear(char* out, int year) { return std::to_chars(out, out + 11, year).ptr; }

char* putTime(char* out, const Stamp& stamp, char end) {
    out = putTwoDigits(out, stamp.hour);
    *out++ = ':';
    out = putTwoDigits(out, stamp.minute);
    *out++ = ':';
    out = putTwoDigits(out, stamp.second);
    *out++ = end;
    return out;
}

}  // namespace

Stamp stampNow() {
    const std::tm now = localNow();
    return {now.tm_year + 1900, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec};
}

char* putTextStamp(const Stamp& stamp, char* out) {
    out = putYear(out, stamp.year);
    *out++ = '-';
    out = putTwoDigits(out, stamp.month);
    *out++ = '-';
    out = putTwoDigits(out, stamp.day);
    *out++ = ' ';
    return putTime(out, stamp, ' ');
}

char* putCsvStamp(const Stamp& stamp, char* out) {
    out = putTwoDigits(out, stamp.day);
    *out++ = '.';
    out = putTwoDigits(out, stamp.month);
    *out++ = '.';
    out = putYear(out, stamp.year);
    *out++ = ';';
    return putTime(out, stamp, ';');
}

std::string htmlHead() {
    const std::string rule =
        "<font color=\"#b40000\">----------------------------------------------------</font><br>";
    const std::tm now = localNow();
    char date[32];
    std::strftime(date, sizeof date, "%d.%m.%Y %H:%M:%S", &now);
    return "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head>"
           "<br>"
           "<p align=\"middle\">" +
           rule + "<font color=\"#b40000\">Log file from " + date + "</font><br>" + rule + "</p>\n";
}

std::string staleStamp(const char* path, bool isCsv, const Stamp& now) {
    // Not blocking, since the path may lead to a pipe; only a regular file is an old log.
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

bool appendToFile(const char* path, std::string_view bytes) {
    const int descriptor = openToAppend(path);
    if (descriptor < 0) return false;
    std::size_t done = 0;
    if (isRegular(path, descriptor)) {
        done = writeAll(descriptor, bytes);
    } else {
        const NoBrokenPipeSignal keepAway;
        fcntl(descriptor, F_SETFL, O_APPEND);  // no longer O_NONBLOCK
        done = writeAll(descriptor, bytes);
    }
    // The next line, when the disk has space again, must not continue the start of this one.
    if (done > 0 && done < bytes.size()) takeBack(descriptor, done);
    close(descriptor);
    return true;
}

}  // namespace kx::detail
