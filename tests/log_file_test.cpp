// What the log does with its file that is unsafe to try through the log itself: run by the
// super-user, a mistake would move the system's devices.
#include "detail/log_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "descriptors.h"
#include "kxtest.h"

TEST(StaleStamp, OnlyARegularFileIsAnOldLog) {
    const kxtest::TempDir dir;
    const std::string link = dir.file("link"), old = dir.write("old", "no stamp\n");
    ASSERT_EQ(symlink("/dev/null", link.c_str()), 0);
    for (const bool isCsv : {false, true}) {
        for (const std::string& path : {std::string("/dev/null"), std::string("/dev/zero"), link,
                                        dir.path(), dir.file("missing"), old + "/below"})
            EXPECT_EQ(kx::detail::staleStamp(path, isCsv), "") << path;
        EXPECT_EQ(kx::detail::staleStamp(old, isCsv), "00000-000000");
    }
}

TEST(StaleStamp, DoesNotWaitForTheOtherEndOfAPipe) {
    const kxtest::TempDir dir;
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
    EXPECT_EQ(kx::detail::staleStamp(dir.file("pipe"), /*isCsv=*/false), "");
}

TEST(LogFile, LeavesNoDescriptorOpen) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    EXPECT_TRUE(kx::detail::appendToFile(dir.file("log"), "x\n"));
    kx::detail::staleStamp(dir.file("log"), /*isCsv=*/true);
    kx::detail::staleStamp(dir.path(), /*isCsv=*/true);
    EXPECT_EQ(kxtest::nextDescriptor(), before);
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
