// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tests the units for macOS on any system, with a stand-in for the calls that they make there.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <mach-o/dyld.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "detail/platform/browser.h"
#include "detail/platform/command_output.h"
#include "detail/platform/executable_path.h"
#include "detail/platform/find_last.h"

namespace {
std::string runningProgram;
}

int _NSGetExecutablePath(char* buffer, std::uint32_t* size) {
    const auto needed = static_cast<std::uint32_t>(runningProgram.size() + 1);
    if (*size < needed) {
        *size = needed;
        return -1;
    }
    std::memcpy(buffer, runningProgram.c_str(), needed);
    return 0;
}

TEST(DarwinExecutablePath, IsWhatTheSystemGives) {
    runningProgram = "/Applications/talo/bin/MAC/../MAC/talo";
    EXPECT_EQ(kx::detail::executablePath(), runningProgram);
}

TEST(DarwinExecutablePath, HasUpTo1023Characters) {
    runningProgram = '/' + std::string(1022, 'x');
    EXPECT_EQ(kx::detail::executablePath(), runningProgram);
    runningProgram += 'x';
    EXPECT_EQ(kx::detail::executablePath(), "");
}

TEST(DarwinBrowser, IsSafari) { EXPECT_EQ(kx::detail::browserCommand(), "open -a Safari "); }

TEST(DarwinCommandOutput, IsReadThroughAPipeThatNobodyInherits) {
    std::FILE* const output = kx::detail::openCommandOutput("echo word; exit 3");
    ASSERT_NE(output, nullptr);
    EXPECT_NE(fcntl(fileno(output), F_GETFD) & FD_CLOEXEC, 0);
    char line[8] = {};
    EXPECT_STREQ(std::fgets(line, sizeof line, output), "word\n");
    EXPECT_EQ(pclose(output), 3 << 8);
}

TEST(DarwinCommandOutput, IsNullWhereNothingCanBeStarted) {
    rlimit old{};
    getrlimit(RLIMIT_NOFILE, &old);
    const rlimit none{0, old.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    std::FILE* const output = kx::detail::openCommandOutput("exit 0");
    setrlimit(RLIMIT_NOFILE, &old);
    EXPECT_EQ(output, nullptr);
}

TEST(DarwinFindLast, FindsTheLastOne) {
    EXPECT_EQ(kx::detail::findLast("", '/'), std::string_view::npos);
    EXPECT_EQ(kx::detail::findLast("abc", '/'), std::string_view::npos);
    EXPECT_EQ(kx::detail::findLast("/a/b", '/'), 2U);
    EXPECT_EQ(kx::detail::findLast("/", '/'), 0U);
    EXPECT_EQ(kx::detail::findLast("a\xFF", '\xFF'), 1U);
}
