// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "file_copy.h"

#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxFile.h"

namespace {

constexpr std::uint64_t largeSize = 8U << 20;
constexpr unsigned long bufferSize = 1U << 20;

// One line on the terminal, written again at each percent and wiped at the end.
class Progress {
public:
    explicit Progress(std::uint64_t total) : _total(total), _isShown(isatty(STDERR_FILENO) != 0) {}
    ~Progress() {
        if (_isShown) std::fputs("\r    \r", stderr);
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void show(std::uint64_t done) {
        const auto percent = static_cast<unsigned>(done * 100 / _total);
        if (!_isShown || percent == _percent) return;
        _percent = percent;
        std::fprintf(stderr, "\r%3u%%", percent);
    }

private:
    std::uint64_t _total;
    bool _isShown;
    unsigned _percent = 101;  // none that is ever shown
};

bool streamCopy(const std::string& source, const std::string& target, std::uint64_t size) {
    cached_ifstream in(source.c_str(), bufferSize);
    cached_ofstream out(target.c_str(), bufferSize);
    std::vector<char> block(bufferSize);
    Progress progress(size);
    std::uint64_t done = 0;
    while (in && out && done < size) {
        in.read(block.data(), static_cast<std::streamsize>(block.size()));
        out.write(block.data(), in.gcount());
        done += static_cast<std::uint64_t>(in.gcount());
        progress.show(done);
    }
    // A failed write shows in close(), and only if it was flushed before.
    out.flush();
    out.close();
    return done == size && !out.bad();
}

}  // namespace

bool copyFile(const std::string& source, const std::string& target) {
    const std::uint64_t size = kxFile::getFileSize(source);
    if (size >= largeSize) return streamCopy(source, target, size);
    // kxFile::copy does not notice a full disk, so the sizes are compared.
    return kxFile::copy(source, target) && kxFile::getFileSize(target) == size;
}
