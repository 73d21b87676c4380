// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Tests the unit for macOS that looks at directories, on any system, with a stand-in for the calls
// that it makes there. This needs its own program, because no other source may see the stand-in.
#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "detail/platform/entered_directory.h"

namespace {
std::string openedPath, heldPath;
int openedWith = 0, openResult = 0, heldDescriptor = 0;
}  // namespace

int darwinOpen(const char* path, int flags) {
    openedPath = path;
    openedWith = flags;
    return openResult;
}

int darwinFcntl(int descriptor, int command, char* path) {
    if (descriptor != heldDescriptor || command != F_GETPATH) return -1;
    std::memcpy(path, heldPath.c_str(), heldPath.size() + 1);
    return 0;
}

TEST(DarwinEnteredDirectory, IsOpenedToBeSearchedAlone) {
    for (const int descriptor : {7, -1}) {
        openResult = descriptor;
        EXPECT_EQ(kx::detail::openDirectory("some/directory"), descriptor);
        EXPECT_EQ(openedPath, "some/directory");
        EXPECT_EQ(openedWith, O_SEARCH | O_DIRECTORY | O_CLOEXEC);
    }
}

TEST(DarwinEnteredDirectory, HasThePathThatTheSystemGives) {
    heldDescriptor = 7;
    heldPath = "/Users/anna/Desktop";
    EXPECT_EQ(kx::detail::pathOfDescriptor(7), heldPath);
    EXPECT_EQ(kx::detail::pathOfDescriptor(8), "");
}
