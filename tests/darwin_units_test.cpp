// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The units for macOS, compiled and run on any system with a stand-in for what they call there.
#include <gtest/gtest.h>
#include <mach-o/dyld.h>

#include <cstring>
#include <string>

#include "detail/browser.h"
#include "detail/executable_path.h"
#include "detail/find_last.h"

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

TEST(DarwinFindLast, FindsTheLastOne) {
    EXPECT_EQ(kx::detail::findLast("", '/'), std::string_view::npos);
    EXPECT_EQ(kx::detail::findLast("abc", '/'), std::string_view::npos);
    EXPECT_EQ(kx::detail::findLast("/a/b", '/'), 2U);
    EXPECT_EQ(kx::detail::findLast("/", '/'), 0U);
    EXPECT_EQ(kx::detail::findLast("a\xFF", '\xFF'), 1U);
}
