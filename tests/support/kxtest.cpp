// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxtest.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>
#include <system_error>

extern char** environ;

namespace kxtest {
namespace {

[[noreturn]] void fail(const std::string& what) {
    throw std::system_error(errno, std::generic_category(), "kxtest: " + what);
}

// Names too long for any standard library's string to hold without allocating memory.
std::string tempPattern() {
    return std::filesystem::canonical(std::filesystem::temp_directory_path()).string() +
           "/kxutils-test-folder.XXXXXX";
}

/// Returns an unlinked temporary file.
int anonymousFile() {
    std::string pattern = tempPattern();
    const int fd = mkostemp(pattern.data(), O_CLOEXEC);
    if (fd < 0) fail("mkostemp");
    unlink(pattern.c_str());
    return fd;
}

std::string readAll(int fd) {
    std::string text;
    char block[65536];
    off_t at = 0;
    for (;;) {
        const ssize_t n = pread(fd, block, sizeof block, at);
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) fail("pread");
        if (n == 0) return text;
        text.append(block, static_cast<std::size_t>(n));
        at += n;
    }
}

void writeAll(int fd, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t n = write(fd, text.data() + done, text.size() - done);
        if (n < 0 && errno != EINTR) fail("write");
        if (n > 0) done += static_cast<std::size_t>(n);
    }
}

}  // namespace

TempDir::TempDir() : _path(tempPattern()) {
    if (!mkdtemp(_path.data())) fail("mkdtemp");
}

TempDir::~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(_path, ignored);
}

std::string TempDir::write(const std::string& name, const std::string& bytes) const {
    const std::string path = file(name);
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    out.close();
    if (!out) fail("writing " + path);
    return path;
}

std::string TempDir::makeDir(const std::string& name) const {
    const std::string path = file(name);
    std::filesystem::create_directories(path);
    return path;
}

std::string slurp(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        ADD_FAILURE() << "cannot read " << path;
        return {};
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

bool exists(const std::string& path) {
    struct stat info {};
    return lstat(path.c_str(), &info) == 0;
}

std::vector<std::string> list(const std::string& directory) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(directory))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

ScopedEnv::ScopedEnv(const char* name, const char* value) : _name(name) {
    const char* old = std::getenv(name);
    _wasSet = old != nullptr;
    if (_wasSet) _old = old;
    if (value)
        setenv(name, value, 1);
    else
        unsetenv(name);
}

ScopedEnv::~ScopedEnv() {
    if (_wasSet)
        setenv(_name.c_str(), _old.c_str(), 1);
    else
        unsetenv(_name.c_str());
}

ScopedLocale::ScopedLocale(const std::string& territory, const std::string& charset)
    : _old(std::setlocale(LC_ALL, nullptr)) {
    const std::string name = territory + '.' + charset;
    _isSet = std::setlocale(LC_ALL, name.c_str()) != nullptr;
    const std::string compiler = "/usr/bin/localedef";
    if (_isSet || !exists(compiler)) return;
    const TempDir dir;
    run({compiler, "--no-archive", "-i", territory, "-f", charset, dir.file(name)},
        {{"PATH", "/usr/bin:/bin"}});
    const ScopedEnv where("LOCPATH", dir.path().c_str());
    _isSet = std::setlocale(LC_ALL, name.c_str()) != nullptr;
}

ScopedLocale::~ScopedLocale() { std::setlocale(LC_ALL, _old.c_str()); }

ScopedCwd::ScopedCwd(const std::string& directory)
    : _old(open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    if (_old < 0) fail("open .");
    if (chdir(directory.c_str()) != 0) fail("chdir " + directory);
}

ScopedCwd::~ScopedCwd() {
    if (fchdir(_old) != 0) std::abort();  // otherwise every later test would run in the wrong place
    close(_old);
}

Captured::Captured(std::FILE* stream)
    : _stream(stream), _saved(dup(fileno(stream))), _file(anonymousFile()) {
    std::cout.flush();
    std::fflush(_stream);
    if (_saved < 0 || dup2(_file, fileno(_stream)) < 0) fail("redirecting a stream");
}

Captured::~Captured() {
    std::cout.flush();
    std::fflush(_stream);
    dup2(_saved, fileno(_stream));
    close(_saved);
    close(_file);
}

std::string Captured::text() {
    std::cout.flush();
    std::fflush(_stream);
    return readAll(_file);
}

Outcome run(const std::vector<std::string>& argv,
            const std::map<std::string, std::string>& environment, const RunOptions& options) {
    std::map<std::string, std::string> variables = environment;
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS"}) {
        const char* value = std::getenv(name);
        if (value) variables.emplace(name, value);
    }
    std::vector<std::string> settings;
    for (const auto& [name, value] : variables) settings.push_back(name + "=" + value);
    std::vector<char*> args, env;
    for (const auto& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
    for (auto& setting : settings) env.push_back(setting.data());
    args.push_back(nullptr);
    env.push_back(nullptr);

    const int in = anonymousFile(), out = anonymousFile(), err = anonymousFile();
    writeAll(in, options.input);
    lseek(in, 0, SEEK_SET);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, options.in < 0 ? in : options.in, 0);
    posix_spawn_file_actions_adddup2(&actions, options.out < 0 ? out : options.out, 1);
    posix_spawn_file_actions_adddup2(&actions, options.err < 0 ? err : options.err, 2);
    if (!options.directory.empty())
        posix_spawn_file_actions_addchdir_np(&actions, options.directory.c_str());

    Outcome outcome;
    pid_t child = 0;
    const int failed =
        posix_spawn(&child, argv[0].c_str(), &actions, nullptr, args.data(), env.data());
    posix_spawn_file_actions_destroy(&actions);
    if (failed != 0) {
        ADD_FAILURE() << "cannot run " << argv[0] << ": " << std::strerror(failed);
    } else {
        int status = 0;
        while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
        }
        if (WIFEXITED(status)) outcome.exitCode = WEXITSTATUS(status);
        if (WIFSIGNALED(status)) outcome.signal = WTERMSIG(status);
        outcome.out = readAll(out);
        outcome.err = readAll(err);
    }
    close(in);
    close(out);
    close(err);
    return outcome;
}

bool isRoot() { return geteuid() == 0; }

bool underSanitizer() {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    return true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
    return true;
#else
    return false;
#endif
#else
    return false;
#endif
}

bool countsCoverage() { return KXTEST_COVERAGE != 0; }

}  // namespace kxtest
