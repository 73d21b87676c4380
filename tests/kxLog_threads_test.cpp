// The log under several threads and processes: no text mixed, torn or lost.
#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <sstream>
#include <thread>

#include "kxLog.h"
#include "kxLog_fixture.h"
#include "kxLog_texts.h"

using kxtest::Console;
using kxtest::consoleOf;
using kxtest::levels;
using kxtest::numberedText;

namespace {

struct Entry {
    const char* name;
    int level;
    void (*log)(int nr, const char* text);
};
void PrintTo(const Entry& entry, std::ostream* os) { *os << entry.name; }

const Entry entries[] = {
    {"Info", 0, [](int, const char* text) { kxLog::info("%s", text); }},
    {"InfoNumbered", 0, [](int nr, const char* text) { kxLog::info(nr, "%s", text); }},
    {"Warning", 1, [](int, const char* text) { kxLog::warning("%s", text); }},
    {"WarningNumbered", 1, [](int nr, const char* text) { kxLog::warning(nr, "%s", text); }},
    {"Error", 2, [](int, const char* text) { kxLog::error("%s", text); }},
    {"ErrorNumbered", 2, [](int nr, const char* text) { kxLog::error(nr, "%s", text); }},
    {"InfoScript", 0, [](int, const char* text) { kxLog::infoIPython(text); }},
    {"ErrorScriptNumbered", 2, [](int nr, const char* text) { kxLog::errorIPython(nr, text); }},
};
constexpr std::size_t entryCount = std::size(entries);

template <class Code>
void inThreads(int count, const Code& code) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < count; ++thread) threads.emplace_back(code, thread);
    for (auto& thread : threads) thread.join();
}

/// Checks texts that `threads` threads of a process were to log `count` of each: all there, whole,
/// and each thread's in its order. Numbers count from 0 per process and thread.
class Collector {
public:
    void add(const std::string& text) {
        int process = -1, thread = -1, i = -1;
        if (!kxtest::readNumbers(text, process, thread, i) ||
            text != numberedText(process, thread, i) || i != _next[{process, thread}]++)
            _wrong.push_back(text.substr(0, 100));
    }
    void expect(int processes, int threads, int count) const {
        EXPECT_EQ(_wrong, std::vector<std::string>());
        std::map<std::pair<int, int>, int> all;
        for (int process = 0; process < processes; ++process)
            for (int thread = 0; thread < threads; ++thread) all[{process, thread}] = count;
        EXPECT_EQ(_next, all);
    }

private:
    std::map<std::pair<int, int>, int> _next;
    std::vector<std::string> _wrong;
};

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class LogThreads : public kxtest::LogTest {
protected:
    static constexpr int threads = 4, count = 300;

    /// Logs from all threads, thread t its i-th text through `entryFor(t, i)`, to all destinations,
    /// and checks that each has all messages, in the one order that the callbacks heard.
    template <class EntryFor>
    void hammer(EntryFor entryFor) {
        const kxtest::TempDir dir;
        std::string buffer;
        std::stringbuf stream;
        listen();
        kxLog::enableOutputBuffer(buffer);
        kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
        kxLog::_log_file = dir.file("log");
        const Console console = consoleOf([&] {
            inThreads(threads, [&](int thread) {
                for (int i = 0; i < count; ++i)
                    entryFor(thread, i).log(i, numberedText(0, thread, i).c_str());
            });
        });
        Collector collector;
        Console expectedConsole;
        std::string expectedLines, expectedStream, lastError;
        for (const Heard& message : heard()) {
            collector.add(message.text);
            const auto& level = levels[message.level];
            const Console painted = level.console(message.text);
            expectedConsole.out += painted.out;
            expectedConsole.err += painted.err;
            const std::string line = level.html(kxLog::convertToHtml(message.text));
            expectedLines += line;
            expectedStream += level.stream(line);
            if (message.level == 2) lastError = message.text;
        }
        collector.expect(1, threads, count);
        // Not EXPECT_EQ, which would print megabytes.
        EXPECT_TRUE(console == expectedConsole);
        EXPECT_TRUE(buffer == expectedLines);
        EXPECT_TRUE(stream.str() == expectedStream);
        EXPECT_TRUE(kxtest::slurp(dir.file("log")) == expectedLines);
        EXPECT_TRUE(kxLog::_last_error == lastError);
    }
};

class OneEntry : public LogThreads, public testing::WithParamInterface<Entry> {};
TEST_P(OneEntry, KeepsTextsWhole) {
    const Entry& entry = GetParam();
    hammer([&](int, int) { return entry; });
}
INSTANTIATE_TEST_SUITE_P(Through, OneEntry, testing::ValuesIn(entries),
                         [](const auto& test) { return std::string(test.param.name); });

TEST_F(LogThreads, AllEntriesAtOnceKeepTextsWholeAndInOneOrder) {
    hammer([](int thread, int i) {
        return entries[static_cast<std::size_t>(3 * thread + i) % entryCount];
    });
}

TEST_F(LogThreads, NumberIsThatOfSomeThread) {
    std::string buffer;
    kxLog::_log_format = 1;
    kxLog::_add_time_stamp = true;
    kxLog::enableOutputBuffer(buffer);
    consoleOf([] {
        inThreads(threads, [](int thread) {
            for (int i = 0; i < count; ++i)
                entries[static_cast<std::size_t>(i) % entryCount].log(1000 * thread, "x");
        });
    });
    const std::vector<std::string> lines = splitLines(buffer);
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(threads * count));
    for (const std::string& line : lines) {
        std::istringstream words(line.substr(std::string("2017-03-01 14:05:09 ").size()));
        std::string word, text;
        int number = -1;
        words >> word >> number >> text;
        const int base = word == "INFO" ? 100 : word == "WARN" ? 200 : word == "ERROR" ? 300 : -1;
        EXPECT_EQ((number - base) % 1000, 0) << line;
        EXPECT_TRUE(number >= base && number < base + 1000 * threads) << line;
        EXPECT_EQ(text, "x");
    }
    EXPECT_EQ(kxLog::_nr % 1000, 0);
}

TEST_F(LogThreads, CsvFileStartsOnceADay) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("log", std::string(kxtest::csvHeader) + "01.03.2017;1:2:3;");
    std::string buffer;
    kxLog::setLogFormat(3);
    kxLog::_log_file = path;
    kxLog::enableOutputBuffer(buffer);
    const Console console = consoleOf([] {
        inThreads(threads, [](int) {
            for (int i = 0; i < 50; ++i) kxLog::info("x");
        });
    });
    EXPECT_TRUE(kxtest::slurp(path) == kxtest::csvHeader + buffer);
    EXPECT_EQ(kxtest::list(dir.path()), (std::vector<std::string>{"log", "log20170301-010203"}));
    EXPECT_EQ(console.out.find("new day"), console.out.rfind("new day"));
}

// --- Processes -----------------------------------------------------------------------------------

/// The text of an info line; a line that is none comes back as it is.
std::string fromHtml(const std::string& line) {
    const std::string before = "<span style=\"color:#008c00;\">", after = "</span><br>",
                      less = "&#60;";
    if (line.size() < before.size() + after.size() || line.compare(0, before.size(), before) != 0 ||
        line.compare(line.size() - after.size(), after.size(), after) != 0)
        return line;
    std::string text = line.substr(before.size(), line.size() - before.size() - after.size());
    for (std::size_t at = 0; (at = text.find(less, at)) != std::string::npos; ++at)
        text.replace(at, less.size(), "<");
    return text;
}

struct ProcessCase {
    const char* name;
    int format;
    int processes, threads, count;
};
void PrintTo(const ProcessCase& c, std::ostream* os) { *os << c.name; }

// With the variable KX_LOG_FULL set: twice the threads, five times the lines of each.
class LogProcesses : public kxtest::LogTest, public testing::WithParamInterface<ProcessCase> {};
TEST_P(LogProcesses, ShareAFileLineByLine) {
    ProcessCase c = GetParam();
    if (std::getenv("KX_LOG_FULL")) {
        c.threads *= 2;
        c.count *= 5;
    }
    const kxtest::TempDir dir;
    const std::string path = dir.file("log");
    inThreads(c.processes, [&](int process) {
        const kxtest::Outcome outcome = kxtest::run(
            {KX_LOG_PROBE, "write", std::to_string(c.format), path, std::to_string(process),
             std::to_string(c.threads), std::to_string(c.count)});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    });
    Collector collector;
    for (const std::string& line : splitLines(kxtest::slurp(path)))
        collector.add(c.format == 2 ? fromHtml(line) : line);
    collector.expect(c.processes, c.threads, c.count);
}
const ProcessCase processCases[] = {
    {"Text", 1, 8, 2, 2000},
    {"Html", 2, 8, 2, 500},
};
INSTANTIATE_TEST_SUITE_P(Format, LogProcesses, testing::ValuesIn(processCases),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
