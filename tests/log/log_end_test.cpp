// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log after it has left its static strings for good. Each test begins with that, and also
// passes after the others. kxLog_end_test covers what happens at the end of a process.
#include "detail/log/end.h"

#include <gtest/gtest.h>

#include <climits>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "kxLog_fixture.h"

using kx::detail::moveLogOffStatics;
using kxtest::consoleOf;
using kxtest::slurp;

namespace {

class LogOffStatics : public testing::Test {
protected:
    LogOffStatics() {
        kxPlatform::setAppName("anApplicationWithALongName");
        kxLog::setLogFormat(1);
        kxLog::_add_time_stamp = false;
    }
    ~LogOffStatics() override {
        kxLog::setInfoCB(nullptr);
        consoleOf([] { kxLog::setLogFile("/"); });
        kxLog::clearLastError();
    }
    const kxtest::TempDir dir;
    const std::string path = dir.file("a log file whose name is long.txt");
};

}  // namespace

TEST_F(LogOffStatics, KeepsFileAndLastError) {
    consoleOf([&] {
        kxLog::setLogFile(path.c_str());
        kxLog::error("an error that a short string has no room for");
    });
    moveLogOffStatics();
    EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    EXPECT_STREQ(kxLog::getLastError(), "an error that a short string has no room for");
    consoleOf([] { kxLog::info("x"); });
    { const kx::detail::LogEnd again; }
    consoleOf([] { kxLog::info("y"); });
    EXPECT_EQ(slurp(path), "an error that a short string has no room for\nx\ny\n");
}

TEST_F(LogOffStatics, TakesOtherFilesAndErrors) {
    moveLogOffStatics();
    consoleOf([&] {
        kxLog::setLogFile(path.c_str());
        kxLog::setLogFile(kxLog::getLogFile());  // its own storage
    });
    EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    const std::string text(3000, 'e');
    consoleOf([&] { kxLog::errorIPython(text.c_str()); });
    EXPECT_EQ(kxLog::getLastError(), text.substr(0, 2047));
    EXPECT_EQ(slurp(path), text + '\n');
    kxLog::clearLastError();
    EXPECT_STREQ(kxLog::getLastError(), "");
    consoleOf([] { kxLog::setLogFile("/"); });
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    EXPECT_STREQ(kxLog::getLastError(), "Couldn't create log file '/'!");
}

TEST_F(LogOffStatics, FindsTheDirectoryOfTheApplication) {
    moveLogOffStatics();
    const kxtest::ScopedEnv variable("ANAPPLICATIONWITHALONGNAME_LOG_DIR", dir.path().c_str());
    consoleOf([] { kxLog::setLogFile("elsewhere/a.log"); });
    EXPECT_EQ(kxLog::getLogFile(), dir.file("a.log"));
}

TEST_F(LogOffStatics, TakesNoPartOfANameThatIsTooLong) {
    consoleOf([] { kxLog::setLogFile("/"); });
    kxLog::_log_file.assign(PATH_MAX, 'x');
    moveLogOffStatics();
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    kxLog::_log_file.clear();
}

// The callback holds the log's mutex and may end the process.
TEST_F(LogOffStatics, HappensInACallbackToo) {
    consoleOf([&] { kxLog::setLogFile(path.c_str()); });
    kxLog::setInfoCB([](const char*) { moveLogOffStatics(); });
    consoleOf([] { kxLog::info("x"); });
    EXPECT_EQ(slurp(path), "x\n");
}

namespace {

std::promise<void> hangs, goesOn;

}  // namespace

// The callback keeps the mutex; after a second the copies are made without it.
TEST_F(LogOffStatics, HappensBesideACallbackThatHangs) {
    hangs = {};
    goesOn = {};
    consoleOf([&] {
        kxLog::setLogFile(path.c_str());
        kxLog::setInfoCB([](const char*) {
            hangs.set_value();
            goesOn.get_future().wait();
        });
        std::thread other([] { kxLog::info("x"); });
        hangs.get_future().wait();
        moveLogOffStatics();
        EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
        goesOn.set_value();
        other.join();
    });
    EXPECT_EQ(slurp(path), "x\n");
}
