// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "support.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace kxfuzz {
namespace {

// The console as it was when the program started. holdConsole() and libFuzzer redirect the original
// descriptor.
const int console = dup(STDERR_FILENO);

class Folder {
public:
    Folder() : path(std::filesystem::temp_directory_path() / "kxfuzz.XXXXXX") {
        if (!mkdtemp(path.data())) fail("cannot create " + path);
    }
    ~Folder() { remove(); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    void remove() const {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }

    std::string path;
};

Folder& folder() {
    static Folder instance;
    return instance;
}

// Reads and empties one of the files that replace the console.
std::string take(int file) {
    struct stat info {};
    if (fstat(file, &info) != 0) fail("cannot look at the console's file");
    std::string text(static_cast<std::size_t>(info.st_size), '\0');
    if (text.empty()) return text;
    if (pread(file, text.data(), text.size(), 0) != info.st_size || ftruncate(file, 0) != 0)
        fail("cannot read the console's file");
    return text;
}

void redirect(int descriptor) {
    const std::string path = privateFolder() + "/console";
    // Opened for appending, so that the next byte goes to the end of the file even after it has
    // been emptied.
    const int file = open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    if (file < 0 || dup2(file, descriptor) < 0) fail("cannot redirect the console");
    close(file);
    unlink(path.c_str());
}

}  // namespace

void fail(const std::string& what) {
    static bool isFailing = false;
    if (!isFailing) {
        isFailing = true;
        dprintf(console, "fuzz: %s\n", what.c_str());
        folder().remove();
    }
    std::abort();
}

std::string shown(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        char hex[8];
        std::snprintf(hex, sizeof hex, "\\x%02x", static_cast<unsigned>(c) & 0xFF);
        result += c >= ' ' && c <= '~' && c != '\\' && c != '"' ? std::string(1, c) : hex;
    }
    return result + '"';
}

const std::string& privateFolder() { return folder().path; }

void holdConsole() {
    static const bool once = [] {
        std::fflush(stdout);
        redirect(STDOUT_FILENO);
        redirect(STDERR_FILENO);
        return true;
    }();
    static_cast<void>(once);
}

std::string takeOut() {
    std::fflush(stdout);
    return take(STDOUT_FILENO);
}

std::string takeErr() { return take(STDERR_FILENO); }

void writeFile(const std::string& path, const std::string& bytes) {
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    if (!file) fail("cannot create " + path);
    const bool isWritten = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (std::fclose(file) != 0 || !isWritten) fail("cannot write " + path);
}

std::string readFile(const std::string& path) {
    std::string bytes;
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return bytes;
    char block[4096];
    for (ssize_t n = 0; (n = read(file, block, sizeof block)) > 0;)
        bytes.append(block, static_cast<std::size_t>(n));
    close(file);
    return bytes;
}

}  // namespace kxfuzz
