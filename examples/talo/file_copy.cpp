// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "file_copy.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <vector>

#include "kxCRC32.h"
#include "kxLog.h"
#include "replacing_file.h"

namespace {

constexpr std::uint64_t largeSize = 8U << 20;
constexpr std::size_t blockSize = 1U << 20;

// One line on the terminal, written anew at each percent and erased at the end.
class Progress {
public:
    explicit Progress(std::uint64_t total)
        : _total(total), _isShown(total >= largeSize && isatty(STDERR_FILENO) != 0) {}
    ~Progress() {
        if (_isShown) std::fputs("\r    \r", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::uint64_t done) {
        if (!_isShown) return;
        const auto percent = static_cast<unsigned>(done * 100 / _total);
        if (percent == _percent) return;
        _percent = percent;
        std::fprintf(stderr, "\r%3u%%", percent);
    }

private:
    std::uint64_t _total;
    bool _isShown;
    unsigned _percent = 101;  // a value that is never shown
};

// Like pread(2), but continues after a signal. It may return fewer bytes than asked for.
ssize_t readAt(const OpenFile& file, char* block, std::size_t size, std::uint64_t position) {
    ssize_t n = 0;
    do {
        n = pread(file.descriptor(), block, size, static_cast<off_t>(position));
    } while (n < 0 && errno == EINTR);
    return n;
}

}  // namespace

bool copyContent(const SourceFile& source, OpenFile& copy, std::uint32_t& checksum) {
    // One byte more than there should be: a file that grows without end, or has a size that the
    // system does not tell, must not pass for a complete one.
    const std::uint64_t limit = source.size + 1;
    std::vector<char> block(static_cast<std::size_t>(std::min<std::uint64_t>(limit, blockSize)));
    Progress progress(source.size);
    std::uint64_t done = 0;
    checksum = 0;
    while (done < limit) {
        const auto wanted = std::min<std::uint64_t>(limit - done, block.size());
        const ssize_t n = readAt(source.file, block.data(), static_cast<std::size_t>(wanted), done);
        if (n < 0) return fail("Couldn't read '" + source.path + "'");
        if (n == 0) break;
        const auto size = static_cast<std::size_t>(n);
        if (!writeAll(copy, block.data(), size))
            return fail("Couldn't write a copy of '" + source.path + "'");
        checksum = kxCRC32::calc(block.data(), size, checksum);
        done += size;
        progress.show(std::min(done, source.size));
    }
    if (done == source.size) return true;
    kxLog::error("'%s' has not the size that the system tells, or is changing",
                 source.path.c_str());
    return false;
}

bool copyFile(const SourceFile& source, const std::string& target) {
    ReplacingFile copy(target, source.mode);
    if (!copy.file()) return fail("Couldn't create a file beside '" + target + "'");
    std::uint32_t checksum = 0;
    if (!copyContent(source, copy.file(), checksum)) return false;
    return copy.commit() || fail("Couldn't write '" + target + "'");
}
