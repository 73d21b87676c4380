// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Both stream pairs together: one reads what the other has written, and both are measured by the
// system calls they make.
#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxtest.h"

TEST(CachedStreams, ReadBackWhatWasWritten) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("f");
    std::string bytes;
    for (unsigned i = 0; i < 100000; ++i) bytes += static_cast<char>(i * i >> 3);
    for (const unsigned long size : {1UL, 100UL, 32768UL, 200000UL}) {
        cached_ofstream out(file.c_str(), size);
        out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        out.close();
        std::string back(bytes.size() + 1, '\0');
        cached_ifstream in(file.c_str(), size);
        in.read(back.data(), static_cast<std::streamsize>(back.size()));
        EXPECT_EQ(in.gcount(), static_cast<std::streamsize>(bytes.size()));
        back.resize(bytes.size());
        EXPECT_TRUE(back == bytes) << size;
    }
}

// Each block is one system call between the stream's buffer and the file. Nothing in between
// copies, reads ahead or seeks again.
class CachedStreamsCalls : public testing::TestWithParam<long> {
protected:
    void SetUp() override {
        if (kxtest::underSanitizer()) GTEST_SKIP() << "the sanitizer makes calls of its own";
        if (!kxtest::exists(strace) ||
            kxtest::run({strace, "-o", "/dev/null", "/bin/true"}).exitCode)
            GTEST_SKIP() << "no strace here";
        dir.write("f", std::string(static_cast<std::size_t>(bytes()), 'x'));
    }

    static long block() { return GetParam(); }
    /// The size of a file of ten and a half blocks.
    static long bytes() { return 10 * block() + block() / 2; }

    /// Runs the probe. Counts its calls on the file by name and, separately, those that moved a
    /// whole block.
    void trace(const std::string& what) {
        const std::string log = dir.file("log");
        const auto outcome = kxtest::run({strace, "-s0", "-esignal=none", "-o", log, "-P",
                                          dir.file("f"), CACHED_STREAMS_PROBE, what, dir.file("f"),
                                          std::to_string(block()), std::to_string(bytes() - 1)});
        ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
        std::istringstream lines(kxtest::slurp(log));
        for (std::string line; std::getline(lines, line);) {
            ++calls[line.substr(0, line.find('('))];
            const std::size_t result = line.rfind("= ");
            const std::string moved = std::to_string(block());
            if (result != std::string::npos && line.substr(result + 2) == moved &&
                line.find(", " + moved + ")") != std::string::npos)
                ++blocks;
        }
    }

    const std::string strace = "/usr/bin/strace";
    const kxtest::TempDir dir;
    std::map<std::string, long> calls;
    long blocks = 0;
};

TEST_P(CachedStreamsCalls, Read) {
    trace("read");
    EXPECT_EQ(blocks, 10);
    EXPECT_LE(calls["read"], 10 + 4);  // the half block, and finding the end of the file twice
    EXPECT_EQ(calls["lseek"], 0);
}

TEST_P(CachedStreamsCalls, Write) {
    trace("write");
    EXPECT_EQ(blocks, 10);
    EXPECT_EQ(calls["write"], 10 + (block() > 1 ? 1 : 0));
    EXPECT_EQ(calls["lseek"], 0);
}

TEST_P(CachedStreamsCalls, Seek) {
    trace("seek");
    EXPECT_GE(blocks, 20);  // a seek to the current position reads nothing
    EXPECT_LE(blocks, 100);
    EXPECT_EQ(calls["read"], blocks);
    EXPECT_LE(calls["lseek"], 100 + 2);
}

INSTANTIATE_TEST_SUITE_P(BufferSizes, CachedStreamsCalls, testing::Values(1, 100, 4096, 32768),
                         testing::PrintToStringParamName());
