// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Logging while the process ends and static objects are being destroyed, and after the library has
// been unloaded.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "kxLog_fixture.h"

using kxtest::Outcome;
using kxtest::slurp;

namespace {

// A name that needs memory from the heap.
class LogEnd : public testing::Test {
protected:
    Outcome probe(const std::string& mode,
                  const std::map<std::string, std::string>& environment = {},
                  const std::string& other = "") {
        return kxtest::run({KX_LOG_END_PROBE, KX_LOG_END_PLUGIN, mode, path, other}, environment);
    }
    const kxtest::TempDir dir;
    const std::string path = dir.file("a log file whose name is long.txt");
};

}  // namespace

TEST_F(LogEnd, LinesAfterStaticDestructionReachConsoleAndFile) {
    const Outcome outcome = probe("late");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.out, "Setting log file to '" + path + "'.\nearly\nlate 1\n");
    EXPECT_EQ(slurp(path), "early\nlate 1\n");
}

TEST_F(LogEnd, LastErrorStaysUsable) {
    const Outcome outcome = probe("errors");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(slurp(path), "an error that a short string has no room for\nlast line\n");
}

TEST_F(LogEnd, AnotherFileCanBeChosen) {
    const std::string other = dir.file("another log file whose name is long.txt");
    const Outcome outcome = probe("choose", {}, other);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(slurp(path), "before\n");
    EXPECT_EQ(slurp(other), "after\n");
}

TEST_F(LogEnd, CsvFileStartsAnewInTheApplicationsDirectory) {
    dir.write("logs/a log file whose name is long.txt", "");
    const std::string logs = dir.file("logs"),
                      old = std::string(kxtest::csvHeader) + "01.03.2017;1:2:3;";
    dir.write("a log file whose name is long.txt", old);
    const Outcome outcome = probe("new-day", {{"ANAPPLICATIONWITHALONGNAME_LOG_DIR", logs}});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(slurp(path), old);
    const std::string started = slurp(logs + "/a log file whose name is long.txt");
    EXPECT_EQ(started.substr(0, std::string(kxtest::csvHeader).size()), kxtest::csvHeader);
    EXPECT_NE(started.find(";INFO;100;late 1\n"), std::string::npos);
}

TEST_F(LogEnd, NameThatNoFileCanHaveMeansNoFile) {
    const Outcome outcome = probe("overlong");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out + outcome.err, "late 1\n");
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>());  // not even a part of it
}

// Each process ends while its threads log: most of them, but not all, in the middle of a message.
TEST_F(LogEnd, ThreadsMayLogUntilTheProcessHasEnded) {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::seconds(10);
    for (int i = 0; i < 200 && Clock::now() < end; ++i) {
        const Outcome outcome = probe("threads");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err.substr(0, 5000);
        ASSERT_EQ(outcome.signal, 0);
        const std::string lines = slurp(path);
        ASSERT_FALSE(lines.empty());
        const std::string info = "a line of an info\n", error = "a line of an error\n";
        std::size_t at = 0;
        for (std::size_t next = 0; (next = lines.find('\n', at)) != std::string::npos;
             at = next + 1) {
            const std::string line = lines.substr(at, next + 1 - at);
            ASSERT_TRUE(line == info || line == error) << line;
        }
        // The system may cut the last line: it ends a thread in the middle of a write.
        const std::string last = lines.substr(at);
        ASSERT_TRUE(info.rfind(last, 0) == 0 || error.rfind(last, 0) == 0) << last;
        // Nothing was written to a file of another name.
        ASSERT_LE(kxtest::list(dir.path()).size(), 2U);
    }
}

// It does not wait for itself. A busy machine may be slow once, but not every time.
TEST_F(LogEnd, CallbackMayEndTheProcess) {
    using Clock = std::chrono::steady_clock;
    auto shortest = Clock::duration::max();
    for (int i = 0; i < 10 && shortest > std::chrono::milliseconds(500); ++i) {
        const auto start = Clock::now();
        EXPECT_EQ(probe("exit").exitCode, 3);
        shortest = std::min(shortest, Clock::now() - start);
    }
    EXPECT_LT(shortest, std::chrono::seconds(1));
}

TEST_F(LogEnd, WaitsASecondForACallbackThatHangs) {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const Outcome outcome = probe("hang");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_GE(Clock::now() - start, std::chrono::seconds(1));
}

// If the tests run with LeakSanitizer, it finds leaked memory.
TEST_F(LogEnd, UnloadingTheLibraryLeavesNothingBehind) {
    const Outcome outcome = probe("unload", {}, KX_LIBRARY);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    EXPECT_EQ(slurp(path), "an error that a short string has no room for\n");
}
