// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log with several threads: no text is mixed, torn or lost.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <sstream>
#include <thread>

#include "emulator.h"
#include "kxLog.h"
#include "kxLog_fixture.h"
#include "kxLog_texts.h"
#include "rows.h"

using kxtest::Console;
using kxtest::consoleOf;
using kxtest::Level;
using kxtest::levels;
using kxtest::numberedText;

namespace {

/// One of the entry points of a level.
struct Entry {
    enum Kind { Plain, Numbered, Script, ScriptNumbered, Output, Alternate, NoLines };

    int level = 0;
    Kind kind = Plain;

    void log(int nr, const char* text) const {
        const Level& to = levels[level];
        switch (kind) {
            case Plain:
                return to.print("%s", text);
            case Numbered:
                return to.printNumbered(nr, "%s", text);
            case Script:
                return to.script(text);
            case ScriptNumbered:
                return to.scriptNumbered(nr, text);
            case Output:
                return to.output(text, 6, false);
            case Alternate:
                return to.output(text, 6, true);
            case NoLines:
                return to.output(text, 2, false);
        }
    }
    std::size_t limit() const { return kind <= Numbered ? 2047 : std::string::npos; }

    std::string name() const {
        const char* const kinds[] = {"",       "Numbered",  "Script", "ScriptNumbered",
                                     "Output", "Alternate", "NoLines"};
        return levels[level].name + std::string(kinds[kind]);
    }
};
void PrintTo(const Entry& entry, std::ostream* os) { *os << entry.name(); }

std::vector<Entry> allEntries() {
    std::vector<Entry> entries;
    for (int level = 0; level < 3; ++level)
        for (int kind = Entry::Plain; kind <= Entry::NoLines; ++kind)
            entries.push_back({level, static_cast<Entry::Kind>(kind)});
    return entries;
}
const std::vector<Entry> entries = allEntries();

/// The thread and i decide which entry point.
const Entry& mixedEntry(int thread, int i) {
    return entries[static_cast<std::size_t>(3 * thread + i) % entries.size()];
}

template <class Code>
void inThreads(int count, const Code& code) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < count; ++thread) threads.emplace_back(code, thread);
    for (auto& thread : threads) thread.join();
}

/// Checks texts of which `threads` threads had to log `count` each: all must be there and whole,
/// and those of each thread in order.
class Collector {
public:
    /// `limit` is the length at which the texts were cut.
    void add(const std::string& text, std::size_t limit = std::string::npos) {
        int process = -1, thread = -1, i = -1;
        if (!kxtest::readNumbers(text, process, thread, i) ||
            text != numberedText(0, thread, i).substr(0, limit) || i != _next[thread]++) {
            if (_wrong.size() < 5) _wrong.push_back(text.substr(0, 100));
        }
    }
    void expect(int threads, int count) const {
        EXPECT_EQ(_wrong, std::vector<std::string>());
        std::map<int, int> all;
        for (int thread = 0; thread < threads; ++thread) all[thread] = count;
        EXPECT_EQ(_next, all);
    }

private:
    std::map<int, int> _next;  // by thread
    std::vector<std::string> _wrong;
};

/// The prefixes of text and CSV lines that `threads` threads, numbered from 0, could have written
/// from the construction of this object until now.
class Prefixes {
public:
    Prefixes(int format, int threads) : _format(format), _threads(threads) {}

    /// The prefix that `lines` has at that place; "none" if there is no valid one.
    std::string at(const std::string& lines, std::size_t place, const Level& level) const {
        if (_format == 2) return "";
        const char* const blank = _format == 1 ? " " : ";";
        for (std::time_t now = _start; now <= std::time(nullptr) + 1; ++now) {
            const std::string start =
                kxtest::noonZone.format(
                    _format == 1 ? kxtest::textStampFormat : kxtest::csvStampFormat, now) +
                level.word + blank;
            if (lines.compare(place, start.size(), start) != 0) continue;
            for (int nr = 0; nr < _threads; ++nr) {
                const std::string prefix = start + std::to_string(level.number + nr) + blank;
                if (lines.compare(place, prefix.size(), prefix) == 0) return prefix;
            }
        }
        return "none";
    }

private:
    int _format, _threads;
    const std::time_t _start = std::time(nullptr);
};

class LogThreads : public kxtest::LogTest {
protected:
    /// Logs from all threads to all destinations: thread t logs its i-th text through `entryFor(t,
    /// i)` with its own number. Checks that each destination has all messages in the order in which
    /// the callbacks received them.
    template <class EntryFor>
    void hammer(int format, int threads, int count, EntryFor entryFor) {
        const kxtest::TempDir dir;
        const std::string path = dir.file("log");
        kxLog::setLogFormat(format);
        consoleOf([&] {
            kxLog::setLogFile(path.c_str());
            kxLog::info("first");  // moves a new CSV file aside
        });
        const std::string before = kxtest::slurp(path);
        std::string buffer;
        std::stringbuf stream;
        listen();
        kxLog::enableOutputBuffer(buffer);
        kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
        const Prefixes prefixes(format, threads);
        const Console console = consoleOf([&] {
            inThreads(threads, [&](int thread) {
                for (int i = 0; i < count; ++i) {
                    const Entry& entry = entryFor(thread, i);
                    entry.log(thread, numberedText(0, thread, i).c_str());
                    levels[entry.level].printOff("never");
                }
            });
        });

        Collector collector;
        Console expectedConsole;
        std::string expectedLines, expectedStream, lastError;
        for (const Heard& message : heard()) {
            int process = -1, thread = -1, i = -1;
            kxtest::readNumbers(message.text, process, thread, i);
            ASSERT_TRUE(thread >= 0 && thread < threads) << message.text;
            const Entry& entry = entryFor(thread, i);
            const Level& level = levels[message.level];
            ASSERT_EQ(message.level, entry.level) << message.text;
            collector.add(message.text, entry.limit());
            if (message.level == 2) lastError = message.text;
            const bool alternate = entry.kind == Entry::Alternate;
            const Console painted = level.console(message.text, alternate);
            expectedConsole.out += painted.out;
            expectedConsole.err += painted.err;
            if (entry.kind == Entry::NoLines) continue;
            const std::string line =
                format == 2
                    ? level.html(kxLog::convertToHtml(message.text), alternate)
                    : prefixes.at(buffer, expectedLines.size(), level) + message.text + "\n";
            expectedLines += line;
            expectedStream += level.stream(line);
        }
        collector.expect(threads, count);
        // Not with EXPECT_EQ, which would print megabytes.
        EXPECT_TRUE(console == expectedConsole);
        EXPECT_TRUE(buffer == expectedLines);
        EXPECT_TRUE(stream.str() == expectedStream);
        EXPECT_TRUE(kxtest::slurp(path) == before + expectedLines);
        EXPECT_TRUE(kxLog::_last_error == lastError);
    }

    static constexpr int fewThreads = 4, fewTexts = 300;
};

class OneEntry : public LogThreads, public testing::WithParamInterface<Entry> {};
TEST_P(OneEntry, KeepsTextsWhole) {
    hammer(2, fewThreads, fewTexts, [](int, int) -> const Entry& { return GetParam(); });
}
INSTANTIATE_TEST_SUITE_P(Through, OneEntry, testing::ValuesIn(entries),
                         [](const auto& test) { return test.param.name(); });

// 16 threads, 100,000 messages, all entry points, all destinations. Sanitizers and emulators, which
// take more than half a minute, get a fifth of them unless the variable KX_LOG_FULL is set.
struct Format {
    const char* name;
    int format;
};
void PrintTo(const Format& c, std::ostream* os) { *os << c.name; }

class LogFlood : public LogThreads, public testing::WithParamInterface<Format> {};
TEST_P(LogFlood, LosesTearsAndMixesNothing) {
    const bool full =
        (!kxtest::underSanitizer() && !kxtest::underEmulator()) || std::getenv("KX_LOG_FULL");
    hammer(GetParam().format, 16, full ? 6250 : 1250, mixedEntry);
}
const Format formats[] = {{"Text", 1}, {"Html", 2}, {"Csv", 3}};
INSTANTIATE_TEST_SUITE_P(As, LogFlood, testing::ValuesIn(formats), kxtest::nameOfRow);

TEST_F(LogThreads, CsvFileStartsOnceADay) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("log", std::string(kxtest::csvHeader) + "01.03.2017;1:2:3;");
    std::string buffer;
    kxLog::setLogFormat(3);
    kxLog::_log_file = path;
    kxLog::enableOutputBuffer(buffer);
    const Console console = consoleOf([] {
        inThreads(fewThreads, [](int) {
            for (int i = 0; i < 50; ++i) kxLog::info("x");
        });
    });
    EXPECT_TRUE(kxtest::slurp(path) == kxtest::csvHeader + buffer);
    EXPECT_EQ(kxtest::list(dir.path()), (std::vector<std::string>{"log", "log20170301-010203"}));
    EXPECT_EQ(console.out.find("new day"), console.out.rfind("new day"));
}

}  // namespace
