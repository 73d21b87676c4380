// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Preloaded into the command-line program. At a known moment it causes faults that cannot be
// arranged from outside. KXTEST_FAULT chooses the fault:
//
//     shrink   KXTEST_FILE is cut to half a block before the third reading call
//     error    the second reading call fails with EIO
//     open     KXTEST_FILE cannot be opened by fopen(3)
//     reopen   KXTEST_FILE cannot be opened a second time, by open(2) or fopen(3)
//     close    every close(2) fails with EIO, having done its work
//     clock    the clock advances by 300 ms at each look
//     wrong    one CRC-32 method gives wrong answers
//     print    the same method prints, too
//     throw    the same method throws
//     threads  no thread can be started
//     memory   when two threads are started, memory runs out once for the thread that started them
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <new>
#include <stdexcept>
#include <string>

#include "kxCRC32.h"

namespace {

const std::string fault = std::getenv("KXTEST_FAULT") ? std::getenv("KXTEST_FAULT") : "";

std::atomic<int> readingCalls{0};

// False if the call must fail.
bool beforeReading() {
    const int call = ++readingCalls;
    if (fault == "shrink" && call == 3 && truncate(std::getenv("KXTEST_FILE"), 50000) != 0)
        std::abort();
    if (fault == "error" && call == 2) {
        errno = EIO;
        return false;
    }
    return true;
}

// False if the call must fail.
bool beforeOpening(const char* path, bool isStream) {
    static std::atomic<int> openings{0};
    const char* const chosen = std::getenv("KXTEST_FILE");
    if (!chosen || std::string(path) != chosen) return true;
    const bool fails = (fault == "open" && isStream) || (++openings == 2 && fault == "reopen");
    if (fails) errno = EACCES;
    return !fails;
}

std::atomic<bool> isMemoryShort{false};
thread_local bool hasStartedThreads = false;

template <typename Function>
Function original(Function /*ours*/, const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" ssize_t read(int descriptor, void* buffer, size_t size) {
    if (!beforeReading()) return -1;
    return original(&read, "read")(descriptor, buffer, size);
}

extern "C" size_t fread(void* buffer, size_t size, size_t count, std::FILE* file) {
    if (!beforeReading()) return 0;
    return original(&fread, "fread")(buffer, size, count, file);
}

// The compiler replaces calls of the two by these where it knows the size of the buffer.
extern "C" ssize_t __read_chk(int descriptor, void* buffer, size_t size, size_t /*room*/) {
    return read(descriptor, buffer, size);
}

extern "C" size_t __fread_chk(void* buffer, size_t /*room*/, size_t size, size_t count,
                              std::FILE* file) {
    return fread(buffer, size, count, file);
}

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    if (!beforeOpening(path, /*isStream=*/true)) return nullptr;
    return original(&fopen, "fopen")(path, mode);
}

extern "C" int open(const char* path, int flags, ...) {
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    if (!beforeOpening(path, /*isStream=*/false)) return -1;
    return original(&open, "open")(path, flags, mode);
}

extern "C" int close(int descriptor) {
    const int result = original(&close, "close")(descriptor);
    if (fault != "close") return result;
    errno = EIO;
    return -1;
}

extern "C" int clock_gettime(clockid_t clock, struct timespec* time) noexcept {
    if (fault != "clock" || clock != CLOCK_MONOTONIC)
        return original(&clock_gettime, "clock_gettime")(clock, time);
    static std::atomic<long> looks{0};
    const long ms = 300 * looks++;
    *time = {1000 + ms / 1000, ms % 1000 * 1000000};
    return 0;
}

std::uint32_t kxCRC32::calc_8bytes(const void* data, unsigned long length, std::uint32_t previous) {
    if (fault == "print") std::puts("printed by the library");
    if (fault == "throw") throw std::logic_error("injected");
    const std::uint32_t crc = calc_bitwise(data, length, previous);
    return fault == "wrong" ? crc + 1 : crc;
}

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*routine)(void*), void* argument) noexcept {
    static std::atomic<int> started{0};
    if (fault == "threads") return EAGAIN;
    const int result =
        original(&pthread_create, "pthread_create")(thread, attributes, routine, argument);
    hasStartedThreads = true;
    if (++started == 2 && fault == "memory") isMemoryShort = true;
    return result;
}

void* operator new(std::size_t size) {
    if (hasStartedThreads && isMemoryShort.exchange(false)) throw std::bad_alloc();
    void* const memory = std::malloc(size > 0 ? size : 1);
    if (!memory) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
