// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A program that is started while the library has a file open does not inherit that file. Otherwise
// whatever the file locks, blocks or keeps on the disk would last as long as that program runs.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxFile.h"
#include "kxLog.h"
#include "kxUtils.h"
#include "kxtest.h"

namespace {

class CloseOnExec : public testing::Test {
protected:
    ~CloseOnExec() override {
        kxUtils::init(nullptr);
        kxLog::setInfoCB(nullptr);
    }

    // The descriptors of a command that kxFile::execute runs, as listed by the command itself.
    static std::string ofACommand() {
        const kxtest::TempDir dir;
        const std::string file = dir.file("list");
        EXPECT_TRUE(kxFile::execute("ls /dev/fd/ >'" + file + "'", /*wait=*/true));
        return kxtest::slurp(file);
    }

    kxtest::Captured output{stdout};  // hides what is printed meanwhile
    const kxtest::TempDir dir;
    const std::string none = ofACommand();  // only those with which the test was started
    inline static std::string inCallback;
};

}  // namespace

// This shows that the list is reliable: a descriptor that commands do inherit is in it.
TEST_F(CloseOnExec, IsWhatTheListTells) {
    const int inherited = open("/dev/null", O_RDONLY);  // without O_CLOEXEC
    EXPECT_NE(ofACommand(), none);
    close(inherited);
    EXPECT_EQ(ofACommand(), none);
}

TEST_F(CloseOnExec, InputStream) {
    const cached_ifstream in(dir.write("f", "abc").c_str());
    ASSERT_TRUE(in);
    EXPECT_EQ(ofACommand(), none);
}

TEST_F(CloseOnExec, InputStreamOpenedLater) {
    cached_istreambuf buffer(0, nullptr);
    buffer.open(dir.write("f", "abc").c_str());
    ASSERT_TRUE(buffer.is_valid());
    EXPECT_EQ(ofACommand(), none);
}

TEST_F(CloseOnExec, OutputStream) {
    const cached_ofstream out(dir.file("f").c_str());
    ASSERT_TRUE(out);
    EXPECT_EQ(ofACommand(), none);
}

TEST_F(CloseOnExec, FileWhoseChecksumIsSought) {
    const std::string file = dir.write("f", "abc");
    ASSERT_TRUE(kxFile::appendChecksum(file, 1));
    std::string seen;
    kxFile::findChecksum(file, 0, [&](std::uint64_t) { seen = ofACommand(); });
    EXPECT_EQ(seen, none);
}

TEST_F(CloseOnExec, LogCallback) {
    kxLog::setLogFile(dir.file("log").c_str());
    kxLog::setInfoCB([](const char*) { inCallback = ofACommand(); });
    kxLog::info("%s", "one");
    kxLog::info("%s", "two");
    EXPECT_EQ(inCallback, none);
    kxLog::_log_file.clear();
}

TEST_F(CloseOnExec, HostCallback) {
    kxUtils::init([](const char*, kxMessage&, int) {
        inCallback += ofACommand();
        return true;
    });
    inCallback.clear();
    EXPECT_TRUE(kxFile::checkWrite(dir.write("f", "abc"), /*ask=*/true, /*log=*/false));
    EXPECT_FALSE(kxFile::checkRead(dir.file("missing"), /*ask=*/true, /*log=*/false));
    EXPECT_EQ(inCallback, none + none);
}

TEST_F(CloseOnExec, OutputOfAnotherCommand) {
    const std::string started = dir.file("started"), go = dir.file("go");
    ASSERT_EQ(mkfifo(started.c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(go.c_str(), 0600), 0);
    // Open from the start, so that nothing waits for the other end.
    const int startedEnd = open(started.c_str(), O_RDWR | O_CLOEXEC);
    const int goEnd = open(go.c_str(), O_RDWR | O_CLOEXEC);
    std::thread other(
        [&] { kxFile::execute_no_output("echo x >'" + started + "'; head -n 1 <'" + go + "'"); });
    char word[2] = {};
    EXPECT_EQ(read(startedEnd, word, 2), 2);
    EXPECT_EQ(ofACommand(), none);
    EXPECT_EQ(write(goEnd, "x\n", 2), 2);
    other.join();
    close(startedEnd);
    close(goEnd);
}
