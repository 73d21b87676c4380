// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <filesystem>

#include "failure.h"

namespace {

namespace fs = std::filesystem;

std::string directoryOf(const std::string& path) {
    const fs::path directory = fs::path(path).parent_path();
    return directory.empty() ? "." : directory.string();
}

// True for names of open descriptors and of devices, where no file can be put.
bool isSystems(const std::string& path) {
    std::error_code ignored;
    const std::string directory = fs::canonical(directoryOf(path), ignored).string() + '/';
    return directory == "/dev/" || directory.compare(0, 8, "/dev/fd/") == 0 ||
           directory.compare(0, 6, "/proc/") == 0;
}

// The path to which a name leads; it need not exist.
std::string behindLinks(const std::string& name) {
    std::string path = name;
    std::error_code error;
    while (!isSystems(path)) {
        const fs::path next = fs::read_symlink(path, error);
        if (error) break;
        path = next.is_absolute() ? next.string() : directoryOf(path) + '/' + next.string();
    }
    return path;
}

// --- Signals -------------------------------------------------------------------------------------

// The file that a signal which ends the program removes; null if there is none.
std::atomic<const char*> _unfinished{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free, "a signal's handler reads it");

extern "C" void removeUnfinished(int signal) {
    if (const char* const path = _unfinished.exchange(nullptr)) unlink(path);
    raise(signal);  // ends the program when this handler returns
}

// A signal that is ignored, as nohup(1) arranges it, stays ignored.
void removeOnSignals(const std::string& path) {
    _unfinished = path.c_str();
    for (const int signal : {SIGHUP, SIGINT, SIGTERM}) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL) continue;
        action.sa_handler = removeUnfinished;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

// --- Modes ---------------------------------------------------------------------------------------

// Sets owner and mode as far as the system allows. If the group has to change, it gets no rights.
void takeRights(int descriptor, const struct stat& from) {
    constexpr mode_t all = 0777, group = 0070;
    mode_t mode = from.st_mode & all;
    if (fchown(descriptor, from.st_uid, from.st_gid) != 0 &&
        fchown(descriptor, static_cast<uid_t>(-1), from.st_gid) != 0)
        mode &= ~group;
    static_cast<void>(fchmod(descriptor, mode));
}

}  // namespace

bool isStandardOutput(const std::string& name) {
    constexpr std::array<const char*, 4> names = {"-", "/dev/stdout", "/dev/fd/1",
                                                  "/proc/self/fd/1"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

void requireDifferentFiles(const std::string& input, const std::string& output) {
    if (input == "-" || isStandardOutput(output)) return;
    std::error_code ignored;
    if (fs::equivalent(input, output, ignored))
        throw UsageError("'" + output + "' is the file that is read");
}

Output::Output(const std::string& name, Writer& standardOutput)
    : _name(name), _standardOutput(standardOutput) {
    if (isStandardOutput(name)) return;
    struct stat info {};
    const bool exists = stat(name.c_str(), &info) == 0;
    if (!exists && errno != ENOENT) throw cannotWrite(name);
    _target = behindLinks(name);
    if ((exists && !S_ISREG(info.st_mode)) || isSystems(_target))
        openInPlace();
    else
        openBeside();
}

void Output::openInPlace() {
    Descriptor file(open(_target.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
    if (file.get() < 0) throw cannotWrite(_name);
    _file.emplace(std::move(file), _name);
}

void Output::openBeside() {
    struct stat old {};
    // Replacing a file does not need the right to write to it, but the user expects that it does.
    const Descriptor earlier(open(_target.c_str(), O_WRONLY | O_CLOEXEC));
    const bool exists = earlier.get() >= 0 && fstat(earlier.get(), &old) == 0;
    if (!exists && errno != ENOENT) throw cannotWrite(_name);

    const std::string start = directoryOf(_target) + "/.kxutils-" + std::to_string(getpid()) + '-';
    for (int number = 1;; ++number) {
        const std::string path = start + std::to_string(number);
        // Nobody may read a file that will get narrower rights. A new file gets those that the
        // user's mask leaves.
        Descriptor file(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                             exists ? S_IRUSR | S_IWUSR : 0666));
        if (file.get() < 0 && errno == EEXIST) continue;  // left by a run that was killed
        if (file.get() < 0) throw cannotWrite(_name);
        _temporary = path;
        removeOnSignals(_temporary);
        if (exists) takeRights(file.get(), old);
        _file.emplace(std::move(file), _name);
        return;
    }
}

Output::~Output() {
    if (!_temporary.empty()) unlink(_temporary.c_str());
    _unfinished = nullptr;
}

void Output::close() {
    if (!_file) return;
    _file->close();
    if (_temporary.empty()) return;
    if (std::rename(_temporary.c_str(), _target.c_str()) != 0) throw cannotWrite(_name);
    _temporary.clear();
}
