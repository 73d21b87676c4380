// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Run by the tests of the log as a separate process.
//
//   kxLog_probe initial-state              prints the log's public state
//   kxLog_probe die-unflushed              logs to standard output and is killed before it flushes
//   kxLog_probe unreadable FILE            logs "new" to FILE as a text log, without privileges
//   kxLog_probe write FORMAT FILE PROCESS THREADS COUNT
//                                          logs numbered texts to FILE from several threads
//   kxLog_probe limit FORMAT FILE BYTES    logs "line-0001" to "line-0009" to FILE, which may not
//                                          grow beyond BYTES with the first five
//   kxLog_probe full FORMAT DIRECTORY      eight processes log numbered texts: each logs 200 while
//                                          the disk has only 16 KiB left, then 200 when it has
//                                          space again; prints the log file as an error
//   kxLog_probe clock FORMAT FILE CLOCK    logs what standard input says, when it says. Each line
//                                          is a moment (seconds of the epoch) and the text of an
//                                          info, or nothing, which chooses the log file. Runs with
//                                          libfaketime, which takes the time from the file CLOCK.
#include <sys/resource.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "kxLog.h"
#include "kxLog_texts.h"

namespace {

int initialState() {
    const char* file = kxLog::getLogFile();
    std::printf("format %d, stamps %s, nr %d, last error '%s', log file '%s' %s\n",
                kxLog::_log_format, kxLog::_add_time_stamp ? "on" : "off", kxLog::_nr,
                kxLog::getLastError(), kxLog::_log_file.c_str(), file ? file : "(null)");
    if (!kxLog::_info_fp && !kxLog::_warning_fp && !kxLog::_error_fp && !kxLog::_output_buffer &&
        !kxLog::_output_streambuf)
        std::puts("callbacks, buffer and stream are null");
    return 0;
}

int dieUnflushed() {
    kxLog::info("a"), kxLog::warning("b"), kxLog::infoI("c", 0, true),
        kxLog::warningI("d", 0, true);
    return std::raise(SIGKILL);
}

int unreadable(const char* file) {
    const gid_t nobody = 65534;
    if (geteuid() == 0 && (setgid(nobody) != 0 || setuid(nobody) != 0)) return 1;
    if (access(file, R_OK) == 0) return 2;
    kxLog::setLogFormat(1);
    kxLog::setLogFile(file);
    kxLog::_add_time_stamp = false;
    kxLog::info("new");
    return 0;
}

int limit(int format, const char* file, unsigned bytes) {
    std::signal(SIGXFSZ, SIG_IGN);
    kxLog::_log_format = format;
    kxLog::_log_file = file;
    rlimit size{};
    if (getrlimit(RLIMIT_FSIZE, &size) != 0) return 1;
    const rlim_t unlimited = size.rlim_cur;
    for (int i = 1; i <= 9; ++i) {
        size.rlim_cur = i <= 5 ? bytes : unlimited;
        if (setrlimit(RLIMIT_FSIZE, &size) != 0) return 2;
        kxLog::info("line-000%d", i);
    }
    return 0;
}

/// Eight processes log `count` texts each, beginning with the number `first`.
void logFromEight(int first, int count) {
    for (int process = 0; process < 8; ++process) {
        if (fork() != 0) continue;
        for (int i = first; i < first + count; ++i)
            kxLog::infoIPython(kxtest::numberedText(process, 0, i).c_str());
        _exit(0);
    }
    while (wait(nullptr) > 0) {
    }
}

int full(int format, const std::string& directory) {
    const std::string filler = directory + "/filler";
    kxLog::_log_format = format;
    kxLog::_log_file = directory + "/log";
    std::FILE* const file = std::fopen(filler.c_str(), "w");
    if (!file) return 1;
    std::setbuf(file, nullptr);
    const std::string block(4096, 'x');
    long blocks = 0;
    while (std::fwrite(block.data(), block.size(), 1, file) == 1) ++blocks;
    const bool hasRoom = ftruncate(fileno(file), 4096 * (blocks - 4)) == 0;
    std::fclose(file);
    if (!hasRoom) return 2;
    logFromEight(0, 200);
    std::remove(filler.c_str());
    logFromEight(200, 200);
    std::cerr << std::ifstream(kxLog::_log_file).rdbuf();
    return 0;
}

int write(int format, const char* file, int process, int threads, int count) {
    const int niceness = nice(19);  // the program that kills eight such processes must not be late
    static_cast<void>(niceness);
    kxLog::_log_format = format;
    kxLog::_add_time_stamp = format == 3;
    kxLog::_log_file = file;  // not with setLogFile, because the processes would move the file away
    std::vector<std::thread> running;
    for (int thread = 0; thread < threads; ++thread)
        running.emplace_back([=] {
            for (int i = 0; i < count; ++i)
                kxLog::infoIPython(kxtest::numberedText(process, thread, i).c_str());
        });
    for (auto& thread : running) thread.join();
    return 0;
}

int clock(int format, const char* file, const char* clockFile) {
    kxLog::setLogFormat(format);
    std::time_t moment = 0;
    for (std::string text; std::cin >> moment && std::getline(std::cin, text);) {
        std::ofstream(clockFile) << moment << '\n';
        if (std::time(nullptr) != moment) return 1;
        if (text.empty())
            kxLog::setLogFile(file);
        else
            kxLog::info("%s", text.c_str() + 1);  // after the blank
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    if (what == "initial-state") return initialState();
    if (what == "die-unflushed") return dieUnflushed();
    if (what == "unreadable" && argc == 3) return unreadable(argv[2]);
    if (what == "write" && argc == 7)
        return write(std::atoi(argv[2]), argv[3], std::atoi(argv[4]), std::atoi(argv[5]),
                     std::atoi(argv[6]));
    if (what == "limit" && argc == 5)
        return limit(std::atoi(argv[2]), argv[3], static_cast<unsigned>(std::atoi(argv[4])));
    if (what == "full" && argc == 4) return full(std::atoi(argv[2]), argv[3]);
    if (what == "clock" && argc == 5) return clock(std::atoi(argv[2]), argv[3], argv[4]);
    return 64;
}
