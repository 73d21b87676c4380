// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tests of the test support itself: a helper that hides a failure would hide it in every test.
#include "kxtest.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>
#include <set>
#include <string>

#include "bytes.h"
#include "descriptors.h"

TEST(TempDir, IsRemovedWithItsContent) {
    std::string path;
    {
        const kxtest::TempDir dir;
        path = dir.path();
        EXPECT_EQ(kxtest::slurp(dir.write("a/b.txt", std::string("x\0y", 3))),
                  std::string("x\0y", 3));
        EXPECT_EQ(kxtest::list(path), std::vector<std::string>{"a"});
    }
    EXPECT_FALSE(kxtest::exists(path));
}

TEST(Captured, SeesStdioStreamsAndDescriptors) {
    kxtest::Captured out(stdout);
    std::printf("one ");
    std::fflush(stdout);
    std::cout << "two " << std::flush;
    ASSERT_EQ(write(1, "three", 5), 5);
    EXPECT_EQ(out.text(), "one two three");
}

TEST(ScopedEnv, PutsBackSetAndUnset) {
    unsetenv("KXTEST_A");
    setenv("KXTEST_B", "old", 1);
    {
        const kxtest::ScopedEnv a("KXTEST_A", "1"), b("KXTEST_B", nullptr);
        EXPECT_STREQ(getenv("KXTEST_A"), "1");
        EXPECT_EQ(getenv("KXTEST_B"), nullptr);
    }
    EXPECT_EQ(getenv("KXTEST_A"), nullptr);
    EXPECT_STREQ(getenv("KXTEST_B"), "old");
}

TEST(ScopedCwd, Returns) {
    const auto before = std::filesystem::current_path();
    {
        const kxtest::TempDir dir;
        const kxtest::ScopedCwd cwd(dir.path());
        EXPECT_EQ(std::filesystem::current_path(), dir.path());
    }
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST(Run, ReportsStreamsExitCodeAndEnvironment) {
    const auto outcome = kxtest::run({"/bin/sh", "-c", "cat; echo \"$A\" >&2; pwd; exit 3"},
                                     {{"A", "b c"}}, {"input\n", "/"});
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_EQ(outcome.out, "input\n/\n");
    EXPECT_EQ(outcome.err, "b c\n");
    EXPECT_EQ(kxtest::run({"/bin/sh", "-c", "kill -9 $$"}).signal, 9);
}

TEST(Home, IsATemporaryDirectory) {
    ASSERT_NE(getenv("HOME"), nullptr);
    EXPECT_NE(std::string(getenv("HOME")).find("kxutils-test-folder."), std::string::npos);
}

// The lowest free number would not show this: a file closed meanwhile may have left it free.
TEST(OpenDescriptors, ShowWhatIsLeftOpenBehindOneThatIsClosed) {
    const auto before = kxtest::openDescriptors();
    const int first = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const int second = open("/dev/null", O_RDONLY | O_CLOEXEC);
    close(first);
    const auto during = kxtest::openDescriptors();
    close(second);
    EXPECT_EQ(during.size(), before.size() + 1);
    EXPECT_EQ(during.count(second), 1u);
    EXPECT_EQ(kxtest::openDescriptors(), before);
}

TEST(OpenDescriptors, ShowAnotherFileUnderTheSameNumber) {
    const kxtest::TempDir dir;
    const int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const auto before = kxtest::openDescriptors();
    const int other = open(dir.write("a", "").c_str(), O_RDONLY | O_CLOEXEC);
    dup2(other, fd);
    close(other);
    const auto during = kxtest::openDescriptors();
    close(fd);
    EXPECT_NE(during, before);
}

TEST(Bytes, AreTheSameAtEveryCallAndTheBeginningOfMore) {
    const std::string bytes = kxtest::someBytes(1000);
    EXPECT_EQ(bytes, kxtest::someBytes(1000));
    EXPECT_EQ(bytes.substr(0, 100), kxtest::someBytes(100));
    EXPECT_EQ(kxtest::someBytes(0), "");
    EXPECT_GT(std::set<char>(bytes.begin(), bytes.end()).size(), 200U);
}

TEST(Bytes, AreOthersForEachUseOfAGenerator) {
    std::mt19937 random(1), again(1);
    const std::string bytes = kxtest::randomBytes(random, 100);
    EXPECT_EQ(bytes.size(), 100U);
    EXPECT_NE(bytes, kxtest::randomBytes(random, 100));
    EXPECT_EQ(bytes, kxtest::randomBytes(again, 100));
}

TEST(Bytes, AreEveryOneOnceInOrder) {
    const std::string bytes = kxtest::everyByte();
    ASSERT_EQ(bytes.size(), 256U);
    for (std::size_t i = 0; i < 256; ++i) EXPECT_EQ(static_cast<unsigned char>(bytes[i]), i);
}
