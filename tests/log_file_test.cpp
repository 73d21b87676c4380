// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the log does with its file that is unsafe to try through the log itself: run by the
// super-user, a mistake would move the system's devices.
#include "detail/log_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "descriptors.h"
#include "file_limit.h"
#include "kxtest.h"

namespace {

std::string staleStamp(const std::string& path, bool isCsv) {
    return kx::detail::staleStamp(path, isCsv, kx::detail::stampNow());
}

/// The stamp in a rotated file's name, read by the C library.
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

// Whoever reads the log at the other end of a pipe gets all of it.
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
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("log"), "x\n"));
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
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("log"), "x\n"));
    umask(old);
    struct stat info {};
    ASSERT_EQ(stat(dir.file("log").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
}

TEST(AppendToFile, FailsOnlyIfTheFileCannotBeOpened) {
    const kxtest::TempDir dir;
    EXPECT_TRUE(kx::detail::appendToFile("/dev/full", "lost"));
    EXPECT_FALSE(kx::detail::appendToFile(dir.path(), ""));
    EXPECT_FALSE(kx::detail::appendToFile(dir.file("missing/file"), ""));
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("new"), ""));
    EXPECT_EQ(kxtest::slurp(dir.file("new")), "");
}

// A disk without room, as the limit on the size of files shows it.
TEST(AppendToFile, TakesThePartBackThatHadRoom) {
    const kxtest::TempDir dir;
    const std::string log = dir.write("log", "first\n");
    bool isOpened = false;
    {
        const kxtest::ScopedFileLimit limit(10);
        isOpened = kx::detail::appendToFile(log, "second\n");
    }
    EXPECT_TRUE(isOpened);
    EXPECT_EQ(kxtest::slurp(log), "first\n");
}

namespace {

int otherProcess = -1;  // the descriptor of one that has more room

// The system calls this where a file has reached the limit.
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
        kx::detail::appendToFile(log, "second\n");
    }
    close(otherProcess);
    EXPECT_EQ(kxtest::slurp(log), "first\nsecoother\n");
}
