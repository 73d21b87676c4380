// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Child processes of a process that logs. None may hang: each has an alarm that ends it.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <future>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "kxLog_fixture.h"

using kxtest::levels;
using kxtest::slurp;
using Clock = std::chrono::steady_clock;

namespace {

constexpr unsigned patience = 20;  // seconds

/// Logs through every entry point of the log.
void logEverywhere(const std::string& text) {
    for (const kxtest::Level& level : levels) {
        level.print("%s", text.c_str());
        level.printNumbered(0, "%s", text.c_str());
        level.script(text.c_str());
    }
}

/// Ends a child in which all went well.
[[noreturn]] void endChild() {
    if (kxtest::countsCoverage()) std::exit(0);  // this writes the counts
    _exit(0);
}

/// The exit status of a child; 0 if all went well in it.
int statusOf(pid_t child) {
    int status = -1;
    return waitpid(child, &status, 0) == child ? status : -1;
}

pid_t forkWithAlarm() {
    const pid_t child = fork();
    if (child == 0) alarm(patience);
    return child;
}

class LogFork : public kxtest::LogTest {
protected:
    LogFork() {
        kxLog::_log_format = 1;
        kxLog::_log_file = path;
    }

    const kxtest::TempDir dir;
    const std::string path = dir.write("log", "");
    kxtest::Captured out{stdout}, err{stderr};
};

/// Threads that log until this object is destroyed.
class Busy {
public:
    Busy() {
        for (std::size_t i = 0; i < 8; ++i)
            _threads.emplace_back([this, i] {
                while (!_isOver) {
                    levels[i % 3].print("busy");
                    levels[i / 3].printNumbered(0, "busy");
                }
            });
    }
    ~Busy() {
        _isOver = true;
        for (std::thread& thread : _threads) thread.join();
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;

private:
    std::atomic<bool> _isOver{false};
    std::vector<std::thread> _threads;
};

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++n;
    return n;
}

}  // namespace

TEST_F(LogFork, ChildrenOfABusyProcessLog) {
    const auto end = Clock::now() + std::chrono::seconds(10);
    int children = 0;
    Clock::duration longest{};
    {
        const Busy busy;
        for (; children < 300 && Clock::now() < end; ++children) {
            const auto start = Clock::now();
            const pid_t child = forkWithAlarm();
            ASSERT_GE(child, 0);
            if (child == 0) {
                logEverywhere("child " + std::to_string(children));
                _exit(0);
            }
            longest = std::max(longest, Clock::now() - start);
            ASSERT_EQ(statusOf(child), 0) << "child " << children;
        }
    }
    std::map<std::string, int> lines;
    std::istringstream file(slurp(path));
    for (std::string line; std::getline(file, line);) ++lines[line];
    lines.erase("busy");
    std::map<std::string, int> expected;
    for (int i = 0; i < children; ++i) expected["child " + std::to_string(i)] = 9;
    EXPECT_EQ(lines, expected);
    EXPECT_LT(longest, std::chrono::seconds(5));
    using std::chrono::milliseconds;
    RecordProperty("longestForkInMs",
                   std::to_string(std::chrono::duration_cast<milliseconds>(longest).count()));
}

namespace {

pid_t forked = -1;
std::atomic<bool> isWaiting{false};

void forkInCallback(const char* /*text*/) {
    isWaiting = true;
    // This gives the other thread time to wait for this message; if it is too short, it does no
    // harm.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    forked = forkWithAlarm();
}

}  // namespace

TEST_F(LogFork, CallbackMayFork) {
    isWaiting = false;
    kxLog::setErrorCB(forkInCallback);
    std::thread other([] {
        while (!isWaiting) std::this_thread::yield();
        kxLog::warning("other");  // waits while it holds the text buffer of warnings
    });
    kxLog::error("message");  // in both processes from the callback on
    kxLog::setErrorCB(nullptr);
    if (forked == 0) {
        logEverywhere("child");
        endChild();
    }
    other.join();
    EXPECT_GT(forked, 0);
    EXPECT_EQ(statusOf(forked), 0);
    logEverywhere("parent");
    const std::string lines = slurp(path);
    EXPECT_EQ(count(lines, "message\n"), 2U);
    EXPECT_EQ(count(lines, "other\n"), 1U);
    EXPECT_EQ(count(lines, "child\n"), 9U);
    EXPECT_EQ(count(lines, "parent\n"), 9U);
}

namespace {

Clock::duration forking{};
std::thread childsThread;
void forkAndLog(const char* text) {
    if (std::string(text) != "message") return;
    const auto start = Clock::now();
    forked = forkWithAlarm();
    forking = Clock::now() - start;
    if (forked != 0) return;
    childsThread = std::thread([] {
        isWaiting = true;
        kxLog::error("thread");
    });
    while (!isWaiting) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // gives it time to do harm
}

}  // namespace

// The entry point's text buffer is in use until the callback has returned, even in the child. The
// child does not wait for itself; a busy machine may be slow once, but not every time.
TEST_F(LogFork, ChildOfACallbackFinishesItsMessage) {
    if (kxtest::underSanitizer())
        GTEST_SKIP() << "ThreadSanitizer lets no child of several threads start one";
    kxLog::setErrorCB(forkAndLog);
    auto shortest = Clock::duration::max();
    int rounds = 0;
    for (; rounds < 10 && shortest > std::chrono::milliseconds(500); ++rounds) {
        isWaiting = false;
        kxLog::error("message");
        if (forked == 0) {
            childsThread.join();
            endChild();
        }
        ASSERT_EQ(statusOf(forked), 0);
        shortest = std::min(shortest, forking);
    }
    EXPECT_LT(shortest, std::chrono::seconds(1));
    std::string expected;
    for (; rounds > 0; --rounds) expected += "message\nmessage\nthread\n";
    EXPECT_EQ(slurp(path), expected);
}

namespace {

std::promise<void> hangs, goesOn;
void hang(const char* /*text*/) {
    hangs.set_value();
    goesOn.get_future().wait();
}

}  // namespace

TEST_F(LogFork, WaitsASecondForACallbackThatHangs) {
    hangs = {};
    goesOn = {};
    kxLog::setInfoCB(hang);
    std::thread other([] { kxLog::info("other"); });
    hangs.get_future().wait();

    const auto start = Clock::now();
    const pid_t child = forkWithAlarm();
    const auto waited = Clock::now() - start;
    if (child == 0) {
        kxLog::setInfoCB(nullptr);
        logEverywhere("child");
        endChild();
    }
    EXPECT_GE(waited, std::chrono::seconds(1));
    EXPECT_EQ(statusOf(child), 0);
    EXPECT_EQ(count(slurp(path), "other\n"), 0U);
    goesOn.set_value();
    other.join();
    kxLog::setInfoCB(nullptr);
    logEverywhere("parent");
    const std::string lines = slurp(path);
    EXPECT_EQ(count(lines, "other\n"), 1U);
    EXPECT_EQ(count(lines, "child\n"), 9U);
    EXPECT_EQ(count(lines, "parent\n"), 9U);
}

// A message that is being written is complete before the child starts. (ThreadSanitizer makes the
// child report threads that have ended, so this child waits.)
TEST_F(LogFork, WaitsForAMessageOnItsWay) {
    hangs = {};
    goesOn = {};
    kxLog::setInfoCB([](const char*) {
        hangs.set_value();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    });
    std::thread other([] {
        kxLog::info("other");
        goesOn.get_future().wait();
    });
    hangs.get_future().wait();
    const pid_t child = forkWithAlarm();
    if (child == 0) _exit(slurp(kxLog::_log_file) == "other\n" ? 0 : 1);
    EXPECT_EQ(statusOf(child), 0);
    goesOn.set_value();
    other.join();
}
