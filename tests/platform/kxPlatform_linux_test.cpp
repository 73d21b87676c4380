// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Start-up with features of this system: filters of system calls, mounts of one process, and files
// reached through a descriptor.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <iterator>
#include <string>

#include "child.h"
#include "kxPlatform.h"
#include "kxtest.h"

namespace {

#ifndef SYS_faccessat2
constexpr unsigned SYS_faccessat2 = 439;  // the number on every processor
#endif

// Makes the system refuse a call to this process, permanently.
bool refuse(unsigned call) {
    constexpr unsigned number = offsetof(seccomp_data, nr);
    sock_filter steps[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, number),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog program{static_cast<unsigned short>(std::size(steps)), steps};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// A temporary home directory.
class HomeDir : public testing::Test {
protected:
    const kxtest::TempDir dir;

private:
    const kxtest::ScopedEnv _home{"HOME", dir.makeDir("home").c_str()};
};
class PlatformSandbox : public HomeDir {};
class PlatformMount : public HomeDir {};
class PlatformRoot : public HomeDir {};
class PlatformDescriptor : public HomeDir {};

/// The executable's directory for that start path, and where the process gets by entering that
/// directory: two equal texts.
std::string startedIn(const std::string& directory) {
    kxPlatform::init((directory + "/talo").c_str());
    char buffer[2048];
    const bool isNamed = chdir(directory.c_str()) == 0 && getcwd(buffer, sizeof buffer);
    return std::string(kxPlatform::getExeDir()) + ' ' + (isNamed ? buffer : "");
}

/// Where to mount something so that only this process sees it.
std::string mountPoint(const kxtest::TempDir& dir) {
    const bool isAlone = unshare(CLONE_NEWNS) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0;
    if (!isAlone || mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return "";
    return dir.file("mounted");
}
bool mountAt(const std::string& point) {
    return mount("kxtest", point.c_str(), "tmpfs", 0, nullptr) == 0;
}

}  // namespace

// The filter is older than the call, so it refuses the call instead of saying that it does not
// exist.
TEST_F(PlatformSandbox, ThatDoesNotKnowFaccessat2DoesNotMoveTheInstallation) {
    const std::string path = dir.write("Talo/bin/MAC/talo", "");
    const std::string answer = kxtest::inChild([&]() -> std::string {
        if (!refuse(SYS_faccessat2)) return "cannot";
        kxPlatform::init(path.c_str());
        return std::string(kxPlatform::getExeDir()) + ' ' + kxPlatform::getBaseDir();
    });
    if (answer == "cannot") GTEST_SKIP() << "the system lets nobody filter system calls";
    EXPECT_EQ(answer, dir.file("Talo/bin/MAC ") + dir.file("Talo"));
}

TEST_F(PlatformMount, OverTheWorkingDirectoryDoesNotMoveIt) {
    dir.makeDir("mounted/bin/MAC");
    const std::string answer = kxtest::inChild([&]() -> std::string {
        const std::string point = mountPoint(dir);
        if (point.empty() || chdir(point.c_str()) != 0 || !mountAt(point)) return "cannot";
        return startedIn("bin/MAC");
    });
    if (answer == "cannot") GTEST_SKIP() << "the system lets nobody mount anything";
    EXPECT_EQ(answer, dir.file("mounted/bin/MAC ") + dir.file("mounted/bin/MAC"));
}

// Neither from the inside nor through a descriptor.
TEST_F(PlatformMount, ThatIsGoneLeavesNoName) {
    dir.makeDir("mounted");
    const std::string answer = kxtest::inChild([&]() -> std::string {
        const std::string point = mountPoint(dir);
        if (point.empty() || !mountAt(point) || chdir(point.c_str()) != 0 ||
            mkdir("bin", 0777) != 0)
            return "cannot";
        const int descriptor = open("bin", O_PATH | O_CLOEXEC);
        if (umount2(point.c_str(), MNT_DETACH) != 0) return "cannot";
        const std::string inside = startedIn("bin");
        if (chdir(dir.path().c_str()) != 0) return "cannot";
        return inside + ',' + startedIn("/proc/self/fd/" + std::to_string(descriptor));
    });
    if (answer == "cannot") GTEST_SKIP() << "the system lets nobody mount anything";
    EXPECT_EQ(answer, " , ");
}

TEST_F(PlatformRoot, ADirectoryOutsideItHasNoName) {
    if (!kxtest::isRoot()) GTEST_SKIP() << "only the super-user changes the root directory";
    dir.makeDir("outside/bin");
    dir.makeDir("root/some/bin");
    EXPECT_EQ(
        kxtest::inChild([&]() -> std::string {
            if (chdir(dir.file("outside").c_str()) != 0 || chroot(dir.file("root").c_str()) != 0)
                return "cannot";
            const std::string outside = startedIn("bin");
            return outside + ", " + startedIn("/some/bin");
        }),
        " , /some/bin /some/bin");
}

TEST_F(PlatformDescriptor, OfADeletedDirectoryLeadsThereButHasNoName) {
    const kxtest::ScopedCwd cwd(dir.path());
    const std::string deleted = dir.makeDir("deleted");
    const int descriptor = open(deleted.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    ASSERT_EQ(symlink(link.c_str(), "link"), 0);
    EXPECT_EQ(kxtest::inChild([] { return startedIn("link"); }), deleted + ' ' + deleted);
    ASSERT_EQ(rmdir(deleted.c_str()), 0);
    EXPECT_EQ(kxtest::inChild([] { return startedIn("link"); }), " ");
    EXPECT_EQ(kxtest::inChild([&] { return startedIn(link); }), " ");
    close(descriptor);
}
