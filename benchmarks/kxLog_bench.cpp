// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// One message through the log, with the null device as the console. The standard streams are
// redirected for the lifetime of the program; its report goes to the earlier standard output.
#include "kxLog.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>

#include "kxbench.h"
#include "scratch.h"

#if KXBENCH_SPDLOG
#include <spdlog/details/file_helper.h>
#include <spdlog/logger.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/sinks/stdout_sinks.h>
#endif

namespace {

// All contenders log the text "42: " followed by these words.
std::string words(std::size_t size) { return std::string(size - 4, 'w'); }
std::string textOf(std::size_t size) { return "42: " + words(size); }

// --- What a message takes at least ---------------------------------------------------------------

void append(const std::string& path, const std::string& line) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    benchmark::DoNotOptimize(write(file, line.data(), line.size()));
    close(file);
}

void readStart(const std::string& path) {
    char start[128];
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    benchmark::DoNotOptimize(read(file, start, sizeof start));
    close(file);
}

// Only what the console takes: formatting, one lock, one call.
KXUTILS_PRINTF(4, 5)
void printLocked(std::FILE* stream, const char* before, const char* after, const char* format,
                 ...) {
    static std::mutex mutex;
    static char text[2048];
    const std::lock_guard<std::mutex> guard(mutex);
    const std::size_t start = std::strlen(before);
    std::memcpy(text, before, start);
    std::va_list arguments;
    va_start(arguments, format);
    const int n = std::vsnprintf(text + start, sizeof text - 16, format, arguments);
    va_end(arguments);
    std::strcpy(text + start + n, after);
    std::fputs(text, stream);
}

// --- The contenders ------------------------------------------------------------------------------

enum Format { consoleOnly = 0, textFormat = 1, csvFormat = 3 };

// The log has one file and one format at a time.
void select(Format format, const char* path) {
    if (kxLog::_log_format == format) return;
    kxLog::_log_file.clear();
    kxLog::setLogFormat(format);
    if (format != consoleOnly) kxLog::setLogFile(path);
}

#if KXBENCH_SPDLOG
// spdlog's own file sinks stay open; this one opens and closes the file for each message.
class ReopeningSink : public spdlog::sinks::base_sink<std::mutex> {
public:
    explicit ReopeningSink(std::string path) : _path(std::move(path)) {}

protected:
    void sink_it_(const spdlog::details::log_msg& message) override {
        spdlog::memory_buf_t line;
        formatter_->format(message, line);
        _file.open(_path);
        _file.write(line);
        _file.close();
    }
    void flush_() override {}

private:
    std::string _path;
    spdlog::details::file_helper _file;
};

// spdlog's console sinks flush after each message, which the log does not do on standard
// output.
template <class... Sinks>
std::shared_ptr<spdlog::logger> spdlogger(Sinks... sinks) {
    return std::make_shared<spdlog::logger>("", std::initializer_list<spdlog::sink_ptr>{sinks...});
}

// `pattern` is for the whole line, including its end.
template <class Sink, class... Arguments>
spdlog::sink_ptr spdlogSink(const std::string& pattern, Arguments... arguments) {
    auto sink = std::make_shared<Sink>(arguments...);
    sink->set_formatter(std::make_unique<spdlog::pattern_formatter>(
        pattern, spdlog::pattern_time_type::local, /*eol=*/""));
    return sink;
}
#endif

// --- Registration --------------------------------------------------------------------------------

// What `run` writes to a standard stream.
template <class Run>
std::string consoleOf(std::FILE* stream, Run run) {
    const std::string path = kxbench::scratch("console");
    const auto redirect = [stream](const std::string& to) {
        std::fflush(stream);
        const int file = open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
        dup2(file, fileno(stream));
        close(file);
    };
    redirect(path);
    run();
    redirect("/dev/null");
    return kxbench::slurp(path);
}

bool endsWith(const std::string& text, const std::string& end) {
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

template <class Run>
void addFile(const std::string& operation, const char* name, std::size_t size,
             const std::string& path, const std::string& end, Run run) {
    kxbench::contender(operation, name, size, run, [=] {
        return consoleOf(stdout, run) == textOf(size) + "\n" && endsWith(kxbench::slurp(path), end);
    });
}

void addText(std::size_t size) {
    const std::string operation = "kxLog::info to a text file", end = textOf(size) + "\n";
    const std::string console = end, line = "2017-03-01 14:05:09 INFO 100 " + end;

    const std::string ours = kxbench::scratch("kx.log");
    addFile(operation, "kxUtils", size, ours, " INFO 100 " + end, [=, text = words(size)] {
        select(textFormat, ours.c_str());
        kxLog::info("%d: %s", 42, text.c_str());
    });
#if KXBENCH_SPDLOG
    const std::string theirs = kxbench::scratch("spdlog.log");
    const auto logger =
        spdlogger(spdlogSink<spdlog::sinks::stdout_sink_mt>("%v\n"),
                  spdlogSink<ReopeningSink>("%Y-%m-%d %H:%M:%S INFO 100 %v\n", theirs));
    addFile(operation, "spdlog, reopening", size, theirs, " INFO 100 " + end,
            [=, text = words(size)] { logger->info("{}: {}", 42, text); });
#endif
    const std::string bare = kxbench::scratch("bare.log");
    addFile(operation, "limit open + write + close", size, bare, line, [=] {
        std::fputs(console.c_str(), stdout);
        append(bare, line);
    });
}

void addCsv(std::size_t size) {
    const std::string operation = "kxLog::info to a CSV file", end = textOf(size) + "\n";
    const std::string console = end, line = "01.03.2017;14:05:09;INFO;100;" + end;

    const std::string ours = kxbench::scratch("kx.csv");
    addFile(operation, "kxUtils", size, ours, ";INFO;100;" + end, [=, text = words(size)] {
        select(csvFormat, ours.c_str());
        kxLog::info("%d: %s", 42, text.c_str());
    });
    const std::string bare = kxbench::scratch("bare.csv");
    addFile(operation, "limit open + read + close + open + write + close", size, bare, line, [=] {
        std::fputs(console.c_str(), stdout);
        readStart(bare);
        append(bare, line);
    });
}

void addConsole(std::size_t size, bool isError) {
    const std::string operation =
        isError ? "kxLog::error to the console" : "kxLog::info to the console";
    std::FILE* const stream = isError ? stderr : stdout;
    const std::string before = isError ? "\033[31m" : "", after = isError ? "\n\033[0m" : "\n";
    const auto add = [=](const char* name, auto run) {
        kxbench::contender(operation, name, size, run,
                           [=] { return consoleOf(stream, run) == before + textOf(size) + after; });
    };
    using Log = void (*)(const char*, ...);
    const Log print = isError ? Log{kxLog::error} : Log{kxLog::info};
    add("kxUtils", [=, text = words(size)] {
        select(consoleOnly, "");
        print("%d: %s", 42, text.c_str());
    });
#if KXBENCH_SPDLOG
    const auto logger =
        spdlogger(isError ? spdlogSink<spdlog::sinks::stderr_sink_mt>("\033[31m%v\n\033[0m")
                          : spdlogSink<spdlog::sinks::stdout_sink_mt>("%v\n"));
    add("spdlog", [=, text = words(size)] { logger->info("{}: {}", 42, text); });
#endif
    add("limit vsnprintf + lock + fputs", [=, text = words(size)] {
        printLocked(stream, before.c_str(), after.c_str(), "%d: %s", 42, text.c_str());
    });
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    std::ofstream report("/dev/fd/" + std::to_string(dup(STDOUT_FILENO)), std::ios::app);
    const int null = open("/dev/null", O_WRONLY);
    dup2(null, STDOUT_FILENO);
    dup2(null, STDERR_FILENO);

    for (const std::size_t size : {64UL, 1024UL}) {
        addText(size);
        addCsv(size);
        addConsole(size, /*isError=*/false);
        addConsole(size, /*isError=*/true);
    }
    benchmark::ConsoleReporter reporter(benchmark::ConsoleReporter::OO_Tabular);
    reporter.SetOutputStream(&report);
    reporter.SetErrorStream(&report);
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
