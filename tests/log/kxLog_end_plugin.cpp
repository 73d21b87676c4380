// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The part of kxLog_end_probe that logs; the library is loaded and unloaded with it. "Late" means
// while the library's static objects are being destroyed. The log file comes after the mode.
//
//   late FILE          logs, and logs again late
//   errors FILE        logs an error; reads, sets and clears the last error late
//   choose FILE OTHER  late, chooses another file, then a directory, and logs after each
//   new-day FILE       late, logs the first CSV line of a day, for an application with a name that
//                      does not fit into a short string
//   overlong FILE      late, logs with a name that is longer than any path
//   threads FILE       four threads log until the process has ended
//   exit FILE          ends with code 3 in a callback
//   hang FILE          ends while another thread's callback does not return
//   unload FILE        logs an error
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <thread>

#include "kxLog.h"
#include "kxPlatform.h"

namespace {

// Without destructors, since they are read late.
std::string_view mode;
const char* other = nullptr;

void check(bool holds, const char* what) {
    if (holds) return;
    std::fprintf(stderr, "not so: %s\n", what);
    std::fflush(nullptr);
    _exit(1);
}

void errors() {
    check(std::string(kxLog::getLastError()) == "an error that a short string has no room for",
          "the last error is kept");
    const std::string text(3000, 'e');
    kxLog::errorI(text.c_str(), 0, false);
    check(kxLog::getLastError() == text.substr(0, 2047), "a long error is cut");
    kxLog::clearLastError();
    check(*kxLog::getLastError() == '\0', "the last error can be cleared");
    kxLog::info("last line");
}

void choose() {
    kxLog::info("before");
    kxLog::setLogFile(other);
    check(std::string(kxLog::getLogFile()) == other, "the other file is chosen");
    kxLog::info("after");
    kxLog::setLogFile("/");
    check(!kxLog::getLogFile(), "there is no log file");
    check(std::string(kxLog::getLastError()) == "Couldn't create log file '/'!", "and it is said");
    kxLog::info("lost");
}

// Adds slashes until the path is one character longer than a path may be.
std::string lengthened(std::string path) {
    path.insert(path.rfind('/'), PATH_MAX - path.size(), '/');
    return path;
}

std::atomic<bool> isHanging{false};
void hang(const char* /*text*/) {
    isHanging = true;
    std::this_thread::sleep_for(std::chrono::hours(1));
}

std::atomic<int> busy{0};
void logAlways() {
    kxLog::info("a line of an info");
    ++busy;
    for (;;) {
        kxLog::info("a line of an info");
        kxLog::error(5, "a line of an error");
    }
}

}  // namespace

extern "C" [[gnu::visibility("default")]] void logLate() {
    if (mode == "late" || mode == "new-day" || mode == "overlong") kxLog::info("late %d", 1);
    if (mode == "errors") errors();
    if (mode == "choose") choose();
    if (mode == "threads") std::this_thread::sleep_for(std::chrono::milliseconds(2));
}

extern "C" [[gnu::visibility("default")]] void logEarly(const char* chosen, const char* file,
                                                        const char* otherFile) {
    mode = chosen;
    other = otherFile;
    if (mode == "new-day") {
        kxPlatform::setAppName("anApplicationWithALongName");
        kxLog::setLogFormat(3);
        kxLog::_log_file = file;
        return;
    }
    kxLog::_log_format = 1;
    if (mode == "overlong")
        kxLog::_log_file = lengthened(file);
    else
        kxLog::setLogFile(file);
    if (mode == "late") kxLog::info("early");
    if (mode == "errors" || mode == "unload")
        kxLog::error("an error that a short string has no room for");
    if (mode == "threads") {
        for (int i = 0; i < 4; ++i) std::thread(logAlways).detach();
        while (busy < 4) std::this_thread::yield();
    }
    if (mode == "exit") {
        kxLog::setInfoCB([](const char*) { std::exit(3); });
        kxLog::info("x");
    }
    if (mode == "hang") {
        kxLog::setWarningCB(hang);
        std::thread([] { kxLog::warning("x"); }).detach();
        while (!isHanging) std::this_thread::yield();
    }
}
