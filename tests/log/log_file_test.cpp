// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the log does with its file that is unsafe to test through the log itself: if the super-user
// runs it, a mistake would move the system's devices.
#include "detail/log/file.h"
#include "detail/log/rotation.h"
#include "detail/log/stamp.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "descriptors.h"
#include "file_limit.h"
#include "kxtest.h"

namespace {

std::string staleStamp(const std::string& path, bool isCsv) {
    return kx::detail::staleStamp(path.c_str(), isCsv, kx::detail::stampNow());
}

/// The stamp for a rotated file's name, read by the C library.
std::string stampReadByScanf(const std::string& path, bool isCsv) {
    std::FILE* const file = std::fopen(path.c_str(), "r");
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    char line[1024];
    if (!isCsv)
        static_cast<void>(std::fscanf(file, "%d-%02d-%02d %02d:%02d:%02d ", &year, &month, &day,
                                      &hour, &minute, &second));
    else if (std::fgets(line, sizeof line, file))
        static_cast<void>(std::fscanf(file, "%02d.%02d.%d;%02d:%02d:%02d;", &day, &month, &year,
                                      &hour, &minute, &second));
    std::fclose(file);
    char text[96];
    std::snprintf(text, sizeof text, "%d%02d%02d-%02d%02d%02d", year, month, day, hour, minute,
                  second);
    return text;
}

}  // namespace

TEST(StaleStamp, OnlyARegularFileIsAnOldLog) {
    const kxtest::TempDir dir;
    const std::string link = dir.file("link"), old = dir.write("old", "no stamp\n");
    ASSERT_EQ(symlink("/dev/null", link.c_str()), 0);
    for (const bool isCsv : {false, true}) {
        for (const std::string& path : {std::string("/dev/null"), std::string("/dev/zero"), link,
                                        dir.path(), dir.file("missing"), old + "/below"})
            EXPECT_EQ(staleStamp(path, isCsv), "") << path;
        EXPECT_EQ(staleStamp(old, isCsv), "00000-000000");
    }
}

// A program that reads the log at the other end of a pipe gets all of it.
TEST(StaleStamp, NeitherWaitsForTheOtherEndOfAPipeNorReadsFromIt) {
    const kxtest::TempDir dir;
    const std::string pipe = dir.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const bool isCsv : {false, true}) EXPECT_EQ(staleStamp(pipe, isCsv), "");
    const int ends = open(pipe.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    ASSERT_EQ(write(ends, "abc", 3), 3);
    for (const bool isCsv : {false, true}) EXPECT_EQ(staleStamp(pipe, isCsv), "");
    char bytes[4];
    EXPECT_EQ(read(ends, bytes, sizeof bytes), 3);
    close(ends);
}

TEST(StaleStamp, ReadsWhatScanfReads) {
    const kxtest::TempDir dir;
    std::mt19937 random(7);
    const auto pick = [&random](const auto& from) { return from[random() % std::size(from)]; };
    const auto repeat = [&](const std::vector<std::size_t>& counts, char c) {
        return std::string(pick(counts), c);
    };
    const std::string characters("0123456789+-.:;x \t\n\v\f\r\0\xa0", 24);
    const std::vector<std::string> fields = {"7",
                                             "07",
                                             "007",
                                             "-1",
                                             "+5",
                                             "-",
                                             "+",
                                             "--1",
                                             "x",
                                             "",
                                             "0x1",
                                             "2017",
                                             "2147483647",
                                             "2147483648",
                                             "-2147483649",
                                             "99999999999",
                                             "4294967297",
                                             "-4294967298",
                                             "00000000007",
                                             "9223372036854775807",
                                             "1e3",
                                             "9223372036854775808",
                                             "-9223372036854775809",
                                             std::string(300, '1')};

    for (int round = 0; round < 10000; ++round) {
        const bool isCsv = round % 2 == 0;
        std::string content;
        if (isCsv)
            content = repeat({0, 1, 52, 254, 255, 256, 257, 1021, 1022, 1023, 1024, 1500}, 'h') +
                      pick(std::vector<std::string>{"\n", "", "\n\n", std::string("\0\n", 2)});
        content += repeat({0, 0, 0, 1, 200, 256, 1000}, ' ');
        for (const char separator : std::string(isCsv ? "..;::;" : "-- :: "))
            content +=
                (random() % 4 ? "0" + std::to_string(random() % 10) : pick(fields)) + separator;
        for (unsigned changes = random() % 4; changes > 0; --changes)
            content[random() % content.size()] = pick(characters);
        content.resize(random() % 3 ? content.size() : random() % (content.size() + 1));

        const std::string path = dir.write("log", content);
        ASSERT_EQ(staleStamp(path, isCsv), stampReadByScanf(path, isCsv))
            << "round " << round << ": " << testing::PrintToString(content);
        std::remove(path.c_str());  // some disks are slow to replace a file's content
    }
}

TEST(LogFile, LeavesNoDescriptorOpen) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("log").c_str(), "x\n"));
    EXPECT_NE(staleStamp(dir.file("log"), /*isCsv=*/true), "");
    staleStamp(dir.path(), /*isCsv=*/true);
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

struct StampCase {
    kx::detail::Stamp stamp;
    std::string text, csv;
};
TEST(Stamps, HaveFieldsOfFixedWidthButTheYear) {
    for (const StampCase& c : {
             StampCase{{2017, 3, 1, 4, 5, 9}, "2017-03-01 04:05:09 ", "01.03.2017;04:05:09;"},
             {{1970, 12, 31, 23, 59, 60}, "1970-12-31 23:59:60 ", "31.12.1970;23:59:60;"},
             {{12345, 10, 10, 0, 0, 0}, "12345-10-10 00:00:00 ", "10.10.12345;00:00:00;"},
             {{-2147481748, 1, 1, 0, 0, 0},
              "-2147481748-01-01 00:00:00 ",
              "01.01.-2147481748;00:00:00;"},
         }) {
        char out[kx::detail::maxStampSize];
        EXPECT_EQ(std::string(out, kx::detail::putTextStamp(c.stamp, out)), c.text);
        EXPECT_EQ(std::string(out, kx::detail::putCsvStamp(c.stamp, out)), c.csv);
    }
}

TEST(AppendToFile, LeavesThePermissionsToTheUmask) {
    const kxtest::TempDir dir;
    const mode_t old = umask(027);
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("log").c_str(), "x\n"));
    umask(old);
    struct stat info {};
    ASSERT_EQ(stat(dir.file("log").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
}

TEST(AppendToFile, FailsOnlyIfTheFileCannotBeOpened) {
    const kxtest::TempDir dir;
    EXPECT_TRUE(kx::detail::appendToFile("/dev/full", "lost"));
    EXPECT_FALSE(kx::detail::appendToFile(dir.path().c_str(), ""));
    EXPECT_FALSE(kx::detail::appendToFile(dir.file("missing/file").c_str(), ""));
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("new").c_str(), ""));
    EXPECT_EQ(kxtest::slurp(dir.file("new")), "");
}

// A full disk, simulated with the limit on the size of files.
TEST(AppendToFile, TakesThePartBackThatHadRoom) {
    const kxtest::TempDir dir;
    const std::string log = dir.write("log", "first\n");
    bool isOpened = false;
    {
        const kxtest::ScopedFileLimit limit(10);
        isOpened = kx::detail::appendToFile(log.c_str(), "second\n");
    }
    EXPECT_TRUE(isOpened);
    EXPECT_EQ(kxtest::slurp(log), "first\n");
}

namespace {

int otherProcess = -1;  // the descriptor of a process that has more room

// The system calls this when a file has reached the limit.
void appendAsOtherProcess(int /*signal*/) {
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit more{100, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &more);
    static_cast<void>(!write(otherProcess, "other\n", 6));
    setrlimit(RLIMIT_FSIZE, &limit);
}

}  // namespace

TEST(AppendToFile, TakesNothingBackBehindWhichAnotherProcessHasWritten) {
    const kxtest::TempDir dir;
    const std::string log = dir.write("log", "first\n");
    otherProcess = open(log.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    {
        const kxtest::ScopedFileLimit limit(10);
        std::signal(SIGXFSZ, appendAsOtherProcess);
        kx::detail::appendToFile(log.c_str(), "second\n");
    }
    close(otherProcess);
    EXPECT_EQ(kxtest::slurp(log), "first\nsecoother\n");
}

// --- Pipes ---------------------------------------------------------------------------------------

namespace {

class Pipe : public testing::Test {
protected:
    Pipe() {
        EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
        alarm(20);  // ends a program that would wait for ever
    }
    ~Pipe() override { alarm(0); }

    int openReader() const { return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC); }

    /// Returns this many bytes, as soon as they arrive.
    static std::string readAll(int reader, std::size_t size) {
        std::string bytes;
        while (bytes.size() < size) {
            char part[4096];
            const ssize_t n = read(reader, part, sizeof part);
            if (n > 0) bytes.append(part, static_cast<std::size_t>(n));
        }
        return bytes;
    }

    /// Waits until the long text has begun to arrive; the writer is then waiting, or will be soon.
    static void waitForStart(int reader) {
        for (int filled = 0; filled < 4096;) ioctl(reader, FIONREAD, &filled);
    }

    static sigset_t onlySigpipe() {
        sigset_t set{};
        sigemptyset(&set);
        sigaddset(&set, SIGPIPE);
        return set;
    }
    static bool isSigpipePending() {
        sigset_t set{};
        sigpending(&set);
        return sigismember(&set, SIGPIPE) == 1;
    }
    static bool isSigpipeBlocked() {
        sigset_t set{};
        pthread_sigmask(SIG_BLOCK, nullptr, &set);
        return sigismember(&set, SIGPIPE) == 1;
    }

    const kxtest::TempDir dir;
    const std::string path = dir.file("pipe");
    const std::string longText = std::string(300000, 'x') + "end";  // no pipe has room for it
};

}  // namespace

TEST_F(Pipe, WithoutReaderCannotBeOpened) {
    EXPECT_FALSE(kx::detail::appendToFile(path.c_str(), "lost"));
    const int reader = openReader();
    EXPECT_TRUE(kx::detail::appendToFile(path.c_str(), "x"));
    EXPECT_EQ(readAll(reader, 1), "x");
    close(reader);
    EXPECT_FALSE(kx::detail::appendToFile(path.c_str(), "lost"));
}

TEST_F(Pipe, WaitsForASlowReader) {
    const int reader = openReader();
    // What is known about one path is not assumed of the next.
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("file").c_str(), "x"));
    std::thread writer([&] { EXPECT_TRUE(kx::detail::appendToFile(path.c_str(), longText)); });
    waitForStart(reader);
    EXPECT_TRUE(readAll(reader, longText.size()) == longText);
    writer.join();
    close(reader);
}

// SIGPIPE would end the program.
TEST_F(Pipe, WhoseReaderLeavesRaisesNoSignal) {
    const int reader = openReader();
    std::thread writer([&] {
        EXPECT_TRUE(kx::detail::appendToFile(path.c_str(), longText));
        EXPECT_FALSE(isSigpipePending());
        EXPECT_FALSE(isSigpipeBlocked());
    });
    waitForStart(reader);
    close(reader);
    writer.join();
}

TEST_F(Pipe, LeavesASignalThatWasPending) {
    const int reader = openReader();
    std::thread writer([&] {
        const sigset_t set = onlySigpipe();
        pthread_sigmask(SIG_BLOCK, &set, nullptr);
        pthread_kill(pthread_self(), SIGPIPE);
        EXPECT_TRUE(kx::detail::appendToFile(path.c_str(), longText));
        EXPECT_TRUE(isSigpipePending());
        EXPECT_TRUE(isSigpipeBlocked());
    });
    waitForStart(reader);
    close(reader);
    writer.join();
}

// The system is asked once a second what a path leads to.
TEST_F(Pipe, ThatTakesThePlaceOfAFileIsNoticed) {
    const std::string file = dir.write("file", "");
    EXPECT_TRUE(kx::detail::appendToFile(file.c_str(), "x"));
    ASSERT_EQ(rename(path.c_str(), file.c_str()), 0);
    const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    const std::time_t start = std::time(nullptr);
    while (std::time(nullptr) <= start) std::this_thread::yield();
    std::thread writer([&] { EXPECT_TRUE(kx::detail::appendToFile(file.c_str(), longText)); });
    waitForStart(reader);
    EXPECT_TRUE(readAll(reader, longText.size()) == longText);
    writer.join();
    close(reader);
}

#ifdef F_SETLEASE
namespace {

int leased = -1;
volatile std::sig_atomic_t wasAskedToLeave = 0;
void leave(int /*signal*/) {
    wasAskedToLeave = 1;
    fcntl(leased, F_SETLEASE, F_UNLCK);
}

}  // namespace

TEST(AppendToFile, WaitsForAProgramThatHoldsALease) {
    const kxtest::TempDir dir;
    const std::string log = dir.write("log", "");
    leased = open(log.c_str(), O_RDONLY | O_CLOEXEC);
    std::signal(SIGIO, leave);
    if (fcntl(leased, F_SETLEASE, F_RDLCK) != 0) GTEST_SKIP() << "no leases on this file system";
    EXPECT_TRUE(kx::detail::appendToFile(log.c_str(), "x\n"));
    std::signal(SIGIO, SIG_DFL);
    close(leased);
    EXPECT_EQ(wasAskedToLeave, 1);
    EXPECT_EQ(kxtest::slurp(log), "x\n");
}
#endif
