// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "kxFile.h"

OpenFile::~OpenFile() {
    const int error = errno;
    close();
    errno = error;
}

bool OpenFile::close() {
    if (_descriptor < 0) {
        errno = EBADF;
        return false;
    }
    return ::close(std::exchange(_descriptor, -1)) == 0;
}

// The file is examined only after it has been opened, since it could be replaced before. Without
// O_NONBLOCK, open() would wait for ever at a pipe that nobody writes to.
SourceFile::SourceFile(const std::string& name)
    : path(name), file(open(name.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {
    struct stat info {};
    if (!file || fstat(file.descriptor(), &info) != 0) {
        error = errno;
        file.close();
        return;
    }
    isRegular = S_ISREG(info.st_mode);
    size = static_cast<std::uint64_t>(info.st_size);
    mode = info.st_mode & 0777;
    if (!isRegular) file.close();
}

OpenFile createNew(const std::string& path, mode_t mode) {
    return OpenFile(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
}

bool writeAll(const OpenFile& file, const char* block, std::size_t size) {
    while (size > 0) {
        const ssize_t n = write(file.descriptor(), block, size);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        block += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

bool fail(const std::string& text) {
    kxFile::perror(text);
    return false;
}
