// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Several processes that log to one file, processes that are killed while they log, and a disk that
// is full for a while.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <array>
#include <cctype>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <thread>

#include "kxLog_fixture.h"
#include "kxLog_texts.h"
#include "rows.h"

extern char** environ;

using kxtest::levels;
using kxtest::numberedText;

namespace {

struct Format {
    const char* name;
    int number;

    /// The beginning that a file must have to count as today's.
    std::string fileStart() const {
        if (number != 3) return "";
        return kxtest::csvHeader + kxtest::noonZone.day(0, kxtest::csvStampFormat) + "\n";
    }
};
void PrintTo(const Format& format, std::ostream* os) { *os << format.name; }
const Format text{"Text", 1}, html{"Html", 2}, csv{"Csv", 3};

/// Reads back a log file of several processes: which lines are whole, in the order of each thread
/// of each process.
class LogFile {
public:
    using Thread = std::pair<int, int>;  ///< process and thread

    explicit LogFile(Format format) : _format(format) {}

    /// Each line must be the next one of its thread (or, if `mayLose`, a later one). If a process
    /// did not live to finish a line, the file contains the start of that line, directly followed
    /// by the next line.
    void read(const std::string& content, bool mayLose = false) {
        ASSERT_EQ(content.compare(0, _format.fileStart().size(), _format.fileStart()), 0);
        std::size_t at = _format.fileStart().size();
        while (at < content.size()) {
            const std::size_t newline = content.find('\n', at);
            const std::size_t end = newline == std::string::npos ? content.size() : newline + 1;
            const std::string line = content.substr(at, end - at);
            std::size_t start = 0;
            while (start < line.size() && !isNext(line.substr(start), mayLose)) ++start;
            if (start < line.size()) ++_whole;
            if (start > 0) {
                ++_torn;
                ASSERT_TRUE(isStart(line.substr(0, start))) << line.substr(0, 100);
            }
            at = end;
        }
    }

    int whole() const { return _whole; }
    int torn() const { return _torn; }
    const std::map<Thread, int>& next() const { return _next; }

private:
    /// A line without the fields that begin CSV lines; "" if these are wrong.
    std::string withoutStamp(const std::string& line) const {
        if (_format.number != 3) return line;
        const std::string form = "01.03.2017;14:05:09;INFO;100;";
        if (line.size() <= form.size()) return "";
        for (std::size_t i = 0; i < form.size(); ++i)
            if (i < form.find('I') && std::isdigit(static_cast<unsigned char>(form[i]))
                    ? !std::isdigit(static_cast<unsigned char>(line[i]))
                    : line[i] != form[i])
                return "";
        return line.substr(form.size());
    }
    std::string made(int process, int thread, int i) const {
        const std::string message = numberedText(process, thread, i);
        return _format.number == 2 ? levels[0].html(kxLog::convertToHtml(message)) : message + "\n";
    }

    bool isNext(const std::string& line, bool mayLose) {
        const std::string body = withoutStamp(line);
        const std::size_t numbers = _format.number == 2 ? body.find('>') + 1 : 0;
        int process = -1, thread = -1, i = -1;
        if (numbers >= body.size() ||
            !kxtest::readNumbers(body.substr(numbers, 40), process, thread, i) || process < 0 ||
            thread < 0 || i < 0 || body != made(process, thread, i))
            return false;
        int& next = _next[{process, thread}];
        if (mayLose ? i < next : i != next) return false;
        next = i + 1;
        return true;
    }

    /// Whether the next line of some thread starts like this.
    bool isStart(const std::string& piece) const {
        const std::string body = withoutStamp(piece);
        for (const auto& [thread, i] : _next)
            if (made(thread.first, thread.second, i).compare(0, body.size(), body) == 0)
                return true;
        return false;
    }

    Format _format;
    std::map<Thread, int> _next;
    int _whole = 0, _torn = 0;
};

class LogProcesses : public kxtest::LogTest, public testing::WithParamInterface<Format> {
protected:
    const kxtest::TempDir dir;
    const Format format = GetParam();
    const std::string path = dir.write("log", format.fileStart());
    LogFile file{format};
};

// --- One file ------------------------------------------------------------------------------------

// If the variable KX_LOG_FULL is set, there are twice the threads and five times the lines of each.
using SharedLog = LogProcesses;
TEST_P(SharedLog, HasEveryLineOfEveryProcess) {
    const bool full = std::getenv("KX_LOG_FULL") != nullptr;
    const int threads = full ? 4 : 2, count = full ? 5000 : 1000;
    std::vector<std::thread> processes;
    std::map<LogFile::Thread, int> all;
    for (int process = 0; process < 8; ++process) {
        processes.emplace_back([&, process] {
            const kxtest::Outcome outcome = kxtest::run(
                {KX_LOG_PROBE, "write", std::to_string(format.number), path,
                 std::to_string(process), std::to_string(threads), std::to_string(count)},
                {{"TZ", std::getenv("TZ")}});
            EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        });
        for (int thread = 0; thread < threads; ++thread) all[{process, thread}] = count;
    }
    for (auto& process : processes) process.join();
    file.read(kxtest::slurp(path));
    EXPECT_EQ(file.torn(), 0);
    EXPECT_EQ(file.next(), all);
}
INSTANTIATE_TEST_SUITE_P(As, SharedLog, testing::Values(text, html, csv), kxtest::nameOfRow);

// --- Processes that are killed -------------------------------------------------------------------

/// A process that logs to a file until it is killed.
class Writer {
public:
    void start(Format format, const std::string& path, int process) {
        std::array<std::string, 7> words = {
            KX_LOG_PROBE, "write",     std::to_string(format.number), path, std::to_string(process),
            "2",          "1000000000"};
        std::array<char*, 8> argv{};
        for (std::size_t i = 0; i < words.size(); ++i) argv[i] = words[i].data();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
        ASSERT_EQ(posix_spawn(&_pid, KX_LOG_PROBE, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
    }

    void kill() { ::kill(_pid, SIGKILL); }

private:
    pid_t _pid = 0;
};

off_t sizeOf(const std::string& path) {
    struct stat info {};
    return stat(path.c_str(), &info) == 0 ? info.st_size : 0;
}

// Eight processes, one of which is killed and replaced 50 times (1000 times with the variable
// KX_LOG_FULL), each time after the file has grown by a random number of bytes. When a process is
// killed, the system may end its write at the end of a memory page, so each killed process may
// leave the start of a line.
using KilledLog = LogProcesses;
TEST_P(KilledLog, HasWholeLines) {
    const unsigned seed = 20170301U + static_cast<unsigned>(format.number);
    const int kills = std::getenv("KX_LOG_FULL") ? 1000 : 50;
    std::mt19937 random(seed);
    std::array<Writer, 8> writers;
    int processes = 0;
    for (Writer& writer : writers) writer.start(format, path, processes++);
    for (int i = 0; i < kills; ++i) {
        Writer& victim = writers[random() % writers.size()];
        const off_t until = sizeOf(path) + static_cast<off_t>(random() % 65536);
        while (sizeOf(path) < until) sched_yield();
        victim.kill();
        victim.start(format, path, processes++);
    }
    for (Writer& writer : writers) writer.kill();
    for (int process = 0, status = 0; process < processes; ++process)
        EXPECT_TRUE(wait(&status) > 0 && WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    file.read(kxtest::slurp(path));
    EXPECT_LE(file.torn(), processes);
    std::set<int> logged;
    for (const auto& [thread, next] : file.next()) logged.insert(thread.first);
    std::cout << "seed " << seed << ": " << processes << " processes killed, " << logged.size()
              << " of them after they had logged; " << file.whole() << " lines whole, "
              << file.torn() << " not ended\n";
}
INSTANTIATE_TEST_SUITE_P(As, KilledLog, testing::Values(text, html, csv), kxtest::nameOfRow);

// --- A disk without space ------------------------------------------------------------------------

// A line that finds no room is lost as a whole, so the next line does not continue its start.
struct Limit {
    const char* name;
    Format format;
    int bytes;  ///< the greatest size of the file during the first five lines
    int kept;   ///< how many of these lines are kept
};
void PrintTo(const Limit& limit, std::ostream* os) { *os << limit.name; }

class LimitedLog : public testing::TestWithParam<Limit> {};
TEST_P(LimitedLog, LosesWholeLinesAndGoesOn) {
    const Limit& limit = GetParam();
    const kxtest::TempDir dir;
    const int devNull = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    kxtest::RunOptions options;
    options.out = devNull;  // the limit applies to all files
    const kxtest::Outcome outcome =
        kxtest::run({KX_LOG_PROBE, "limit", std::to_string(limit.format.number), dir.file("log"),
                     std::to_string(limit.bytes)},
                    {}, options);
    close(devNull);
    EXPECT_EQ(outcome.exitCode, 0);
    std::string expected;
    for (int i = 1; i <= 9; ++i) {
        const std::string message = "line-000" + std::to_string(i);
        if (i <= limit.kept || i > 5)
            expected += limit.format.number == 2 ? levels[0].html(message) : message + "\n";
    }
    EXPECT_EQ(kxtest::slurp(dir.file("log")), expected);
}
// A line has 10 bytes as text and 50 bytes as HTML.
const Limit limits[] = {
    {"TextNothing", text, 0, 0},          {"TextOneByte", text, 1, 0},
    {"TextAllButNewline", text, 9, 0},    {"TextOneLine", text, 10, 1},
    {"TextOneLineAndAByte", text, 11, 1}, {"TextTwoAndAHalf", text, 25, 2},
    {"TextAllButLastByte", text, 49, 4},  {"TextAll", text, 50, 5},
    {"HtmlAllButNewline", html, 49, 0},   {"HtmlOneLine", html, 50, 1},
    {"HtmlTwoAndAHalf", html, 125, 2},    {"HtmlAllButLastByte", html, 249, 4},
};
INSTANTIATE_TEST_SUITE_P(At, LimitedLog, testing::ValuesIn(limits), kxtest::nameOfRow);

// A small disk in memory, if the system lets ordinary users mount one for themselves.
using FullDisk = LogProcesses;
TEST_P(FullDisk, LosesWholeLinesAndGoesOn) {
    const auto onSmallDisk = [&](const std::string& command) {
        return kxtest::run({"/usr/bin/unshare", "-rm", "/bin/sh", "-c",
                            "mount -t tmpfs -o size=4m none \"$1\" && " + command, KX_LOG_PROBE,
                            dir.path(), std::to_string(format.number)},
                           {{"PATH", "/usr/bin:/bin:/usr/sbin:/sbin"}});
    };
    if (!kxtest::exists("/usr/bin/unshare") || onSmallDisk("true").exitCode != 0)
        GTEST_SKIP() << "no small disk can be mounted here";
    const kxtest::Outcome outcome = onSmallDisk("exec \"$0\" full \"$2\" \"$1\"");
    ASSERT_EQ(outcome.exitCode, 0);
    file.read(outcome.err, /*mayLose=*/true);
    EXPECT_EQ(file.torn(), 0);
    // All lines of the second half are there, and some of the first.
    EXPECT_GT(file.whole(), 8 * 200);
    EXPECT_LT(file.whole(), 2 * 8 * 200);
    for (const auto& [thread, next] : file.next()) EXPECT_EQ(next, 400) << thread.first;
    EXPECT_EQ(file.next().size(), 8U);
}
INSTANTIATE_TEST_SUITE_P(As, FullDisk, testing::Values(text, html), kxtest::nameOfRow);

}  // namespace
