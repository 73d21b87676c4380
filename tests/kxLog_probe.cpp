// What the tests of the log run as a process of its own.
//
//   kxLog_probe initial-state              prints the log's public state
//   kxLog_probe die-unflushed              logs to standard output and is killed before it flushes
//   kxLog_probe unreadable FILE            logs "new" to FILE as a text log, without privileges
//   kxLog_probe write FORMAT FILE PROCESS THREADS COUNT
//                                          logs numbered texts to FILE from several threads
//   kxLog_probe clock FORMAT FILE CLOCK    does what standard input says at moments that it says:
//   each
//                                          line is a moment (seconds of the epoch) and the text of
//                                          an info or, to choose the log file, nothing. Runs with
//                                          libfaketime, which takes the time from the file CLOCK.
#include <sys/types.h>
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

int write(int format, const char* file, int process, int threads, int count) {
    kxLog::_log_format = format;
    kxLog::_log_file = file;  // not through setLogFile: the processes would move the file away
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
    if (what == "clock" && argc == 5) return clock(std::atoi(argv[2]), argv[3], argv[4]);
    return 64;
}
