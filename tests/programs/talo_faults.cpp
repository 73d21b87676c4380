// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Preloaded into the example host. It makes one call fail, chosen by KXTEST_FAULT as "FUNCTION
// NUMBER", where the first call has the number 1. KXTEST_REACHED is a path that is created when
// that happens.
//
//     append                            fails with ENOSPC: write() to a log
//     close pread pwrite rename write   fail with ENOSPC; close() has done its work, and calls for
//                                       the standard streams and for places (O_PATH) are not
//                                       counted
//     remove stat unlink                fail with EIO
//     fread                             a real error of reading: the descriptor is exchanged
//     new                               throws std::bad_alloc
//     keep                              every remove() fails with EIO
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

// Nothing here may allocate, since operator new is among the callers.
bool mustFail(const char* function) {
    static int calls = 0;
    const char* const fault = std::getenv("KXTEST_FAULT");
    const std::size_t length = std::strlen(function);
    if (!fault || std::strncmp(fault, function, length) != 0 || fault[length] != ' ') return false;
    if (++calls != std::atoi(fault + length)) return false;
    const char* const path = std::getenv("KXTEST_REACHED");
    // Not closed: close() is one of the functions here.
    return !path || open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0666) >= 0;
}

template <typename Function>
Function original(Function /*ours*/, const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

template <typename Result>
Result failed(int error, Result result) {
    errno = error;
    return result;
}

}  // namespace

extern "C" int close(int descriptor) {
    // Descriptors that only stand for a place hold nothing that could be lost.
    const bool isPlace = (fcntl(descriptor, F_GETFL) & O_PATH) != 0;
    const int result = original(&close, "close")(descriptor);
    return descriptor > 2 && !isPlace && mustFail("close") ? failed(ENOSPC, -1) : result;
}

extern "C" ssize_t pread(int descriptor, void* buffer, size_t size, off_t position) {
    if (mustFail("pread")) return failed(ENOSPC, -1);
    return original(&pread, "pread")(descriptor, buffer, size, position);
}

extern "C" ssize_t pwrite(int descriptor, const void* buffer, size_t size, off_t position) {
    if (mustFail("pwrite")) return failed(ENOSPC, -1);
    return original(&pwrite, "pwrite")(descriptor, buffer, size, position);
}

extern "C" ssize_t write(int descriptor, const void* buffer, size_t size) {
    const bool isLog = (fcntl(descriptor, F_GETFL) & O_APPEND) != 0;
    if (descriptor > 2 && size > 0 && mustFail(isLog ? "append" : "write"))
        return failed(ENOSPC, -1);
    return original(&write, "write")(descriptor, buffer, size);
}

extern "C" int rename(const char* from, const char* to) noexcept {
    return mustFail("rename") ? failed(ENOSPC, -1) : original(&rename, "rename")(from, to);
}

extern "C" int remove(const char* path) noexcept {
    const char* const fault = std::getenv("KXTEST_FAULT");
    const bool keepsAll = fault && std::strncmp(fault, "keep", 4) == 0;
    return keepsAll || mustFail("remove") ? failed(EIO, -1) : original(&remove, "remove")(path);
}

extern "C" int unlink(const char* path) noexcept {
    return mustFail("unlink") ? failed(EIO, -1) : original(&unlink, "unlink")(path);
}

extern "C" int stat(const char* path, struct stat* info) noexcept {
    return mustFail("stat") ? failed(EIO, -1) : fstatat(AT_FDCWD, path, info, 0);
}

extern "C" size_t fread(void* buffer, size_t size, size_t count, std::FILE* file) {
    if (mustFail("fread")) dup2(open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC), fileno(file));
    return original(&fread, "fread")(buffer, size, count, file);
}

void* operator new(std::size_t size) {
    void* const block = mustFail("new") ? nullptr : std::malloc(size > 0 ? size : 1);
    if (!block) throw std::bad_alloc();
    return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
