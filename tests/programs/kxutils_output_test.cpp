// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files that the command line writes: as a whole or not at all, and to where their names lead.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "kxutils_tool.h"
#include "rows.h"

namespace {

// A command that fails when half of the output has been written.
struct Failing {
    const char* name;
    const char* command;
    int exitCode;
};
void PrintTo(const Failing& f, std::ostream* os) { *os << f.name; }

struct stat infoOf(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(lstat(path.c_str(), &info), 0) << path;
    return info;
}

}  // namespace

class Output : public Tool {
protected:
    std::vector<std::string> filesBut(const std::string& hidden) const {
        std::vector<std::string> names = kxtest::list(dir.path());
        names.erase(std::remove(names.begin(), names.end(), hidden), names.end());
        return names;
    }

    /// Feeds the program more than a pipe can hold, so that it is working when `command` runs.
    kxtest::Outcome whileWriting(const std::string& command) {
        // Without the `:` at the end, a last command might replace the shell and lose the pipe.
        return shell("{ head -c 1000000 /dev/zero; " + command +
                     "; :; } | sh -c 'echo $$ >pid; exec \"$K\" base64 -o out'; echo $?");
    }
};

class FailingOutput : public Output, public testing::WithParamInterface<Failing> {
protected:
    void SetUp() override {
        dir.write("cut", std::string(400001, 'A'));
        dir.write("cut.ppm", "P6\n200 500\n255\n" + std::string(200000, 'x'));
        dir.write("large", std::string(400000, 'x'));
        dir.write("home/f", "");
    }
};

TEST_P(FailingOutput, LeavesTheOldFileAndNothingBeside) {
    dir.write("out", "old");
    const auto files = kxtest::list(dir.path());
    const auto outcome = shell(GetParam().command);
    EXPECT_EQ(outcome.exitCode, GetParam().exitCode) << outcome.err;
    EXPECT_EQ(kxtest::slurp(dir.file("out")), "old");
    EXPECT_EQ(kxtest::list(dir.path()), files);
}

TEST_P(FailingOutput, LeavesNoFileWhereThereWasNone) {
    const auto files = kxtest::list(dir.path());
    EXPECT_EQ(shell(GetParam().command).exitCode, GetParam().exitCode);
    EXPECT_EQ(kxtest::list(dir.path()), files);
}

INSTANTIATE_TEST_SUITE_P(
    Commands, FailingOutput,
    testing::Values(Failing{"Decode", R"("$K" base64 -d cut -o out)", 1},
                    Failing{"Label", R"("$K" label x cut.ppm out)", 1},
                    Failing{"Unpack", R"("$K" shader unpack cut -o out)", 1},
                    Failing{"FileLimit", R"(ulimit -f 1; "$K" base64 large -o out)", 3},
                    Failing{"FileLimitOfPack", R"(ulimit -f 1; "$K" shader pack large -o out)", 3}),
    kxtest::nameOfRow);

TEST_F(Output, TheOldFileStandsUntilTheNewOneIsWhole) {
    dir.write("out", "old");
    EXPECT_EQ(whileWriting("cp out seen").out, "0\n");
    EXPECT_EQ(kxtest::slurp(dir.file("seen")), "old");
    EXPECT_EQ(kxtest::slurp(dir.file("out")).size(), 1333337U);
}

TEST_F(Output, ANameThatCannotBeTakenIsExitCode3) {
    const auto outcome = whileWriting("mkdir out; : >out/f");
    EXPECT_EQ(outcome.out, "3\n");
    EXPECT_EQ(outcome.err, "kxutils: -: cannot write 'out': Is a directory\n");
    EXPECT_EQ(filesBut("pid"), (std::vector<std::string>{"home", "out"}));
    expectRun(runWith("foo", {"base64", "-o", "none/out"}), 3, "",
              "kxutils: -: cannot write 'none/out': No such file or directory\n");
    expectRun(runWith("foo", {"base64", "-o", ""}), 3, "",
              "kxutils: -: cannot write '': No such file or directory\n");
}

TEST_F(Output, WhatMayNotBeWrittenIsNotReplaced) {
    if (kxtest::isRoot()) GTEST_SKIP() << "the super-user may write everything";
    chmod(dir.write("out", "old").c_str(), 0400);
    const std::string refused = "kxutils: -: cannot write 'out': Permission denied\n";
    expectRun(runWith("foo", {"base64", "-o", "out"}), 3, "", refused);
    chmod(dir.file("out").c_str(), 0600);
    chmod(dir.path().c_str(), 0500);
    expectRun(runWith("foo", {"base64", "-o", "out"}), 3, "", refused);
    chmod(dir.path().c_str(), 0700);
    EXPECT_EQ(kxtest::slurp(dir.file("out")), "old");
}

// --- Rights --------------------------------------------------------------------------------------

TEST_F(Output, ANewFileHasTheModeThatTheMaskLeaves) {
    EXPECT_EQ(shell("umask 027; echo foo | \"$K\" base64 -o out").exitCode, 0);
    EXPECT_EQ(infoOf(dir.file("out")).st_mode & 07777U, 0640U);
    EXPECT_EQ(shell("umask 0; echo foo | \"$K\" base64 -o all").exitCode, 0);
    EXPECT_EQ(infoOf(dir.file("all")).st_mode & 07777U, 0666U);
}

TEST_F(Output, AFileKeepsItsModeAndOwner) {
    const std::string out = dir.write("out", "old");
    for (const mode_t mode : {0600U, 0660U, 0755U}) {
        ASSERT_EQ(chmod(out.c_str(), mode), 0);
        expectRun(runWith("foo", {"base64", "-o", "out"}), 0, "", "");
        EXPECT_EQ(infoOf(out).st_mode & 07777U, mode);
    }
    if (!kxtest::isRoot()) return;
    ASSERT_EQ(chown(out.c_str(), 65534, 65533), 0);
    expectRun(runWith("foo", {"base64", "-o", "out"}), 0, "", "");
    EXPECT_EQ(infoOf(out).st_uid, 65534U);
    EXPECT_EQ(infoOf(out).st_gid, 65533U);
}

// Meanwhile nobody else can read what only the owner may read.
TEST_F(Output, APrivateFileIsPrivateFromTheStart) {
    chmod(dir.write("out", "old").c_str(), 0600);
    EXPECT_EQ(whileWriting("find . -name '.kx*' -perm /077 >seen; ls -A >all").out, "0\n");
    EXPECT_EQ(kxtest::slurp(dir.file("seen")), "");
    EXPECT_NE(kxtest::slurp(dir.file("all")).find(".kxutils-"), std::string::npos);
}

// --- Where a name leads --------------------------------------------------------------------------

TEST_F(Output, LinksAreFollowed) {
    dir.write("sub/file", "old");
    ASSERT_EQ(symlink("file", dir.file("sub/link").c_str()), 0);
    ASSERT_EQ(symlink("sub/link", dir.file("out").c_str()), 0);
    ASSERT_EQ(symlink(dir.file("sub/new").c_str(), dir.file("dangling").c_str()), 0);
    for (const char* const name : {"out", "dangling"}) {
        expectRun(runWith("foo", {"base64", "-o", name}), 0, "", "");
        EXPECT_TRUE(S_ISLNK(infoOf(dir.file(name)).st_mode));
    }
    EXPECT_TRUE(S_ISLNK(infoOf(dir.file("sub/link")).st_mode));
    EXPECT_EQ(kxtest::slurp(dir.file("sub/file")), "Zm9v\n");
    EXPECT_EQ(kxtest::slurp(dir.file("sub/new")), "Zm9v\n");
    EXPECT_EQ(kxtest::list(dir.file("sub")), (std::vector<std::string>{"file", "link", "new"}));
    ASSERT_EQ(symlink("circle", dir.file("circle").c_str()), 0);
    expectRun(runWith("foo", {"base64", "-o", "circle"}), 3, "",
              "kxutils: -: cannot write 'circle': Too many levels of symbolic links\n");
}

TEST_F(Output, PipesAndDevicesAreWrittenInPlace) {
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
    expectRun(shell("cat pipe & echo foo | \"$K\" base64 -o pipe; wait"), 0, "Zm9vCg==\n", "");
    EXPECT_TRUE(S_ISFIFO(infoOf(dir.file("pipe")).st_mode));
    expectRun(runWith("foo", {"base64", "-o", "/dev/null"}), 0, "", "");
    EXPECT_TRUE(S_ISCHR(infoOf("/dev/null").st_mode));
    EXPECT_EQ(kxtest::list(dir.path()), (std::vector<std::string>{"home", "pipe"}));
}

// If the files were replaced by renaming, the descriptors would lead to the old ones.
TEST_F(Output, OpenDescriptorsAreWrittenInPlace) {
    for (const std::string name : {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1"}) {
        if (!kxtest::exists(name)) continue;
        expectRun(runWith("foo", {"base64", "-o", name}), 0, "Zm9v\n", "");
        expectRun(shell("echo foo | \"$K\" base64 -o " + name + " >out; cat out"), 0, "Zm9vCg==\n",
                  "");
        EXPECT_EQ(document({"base64", "-o", name}, 2)["error"], "--json needs --output");
    }
    for (const std::string name : {"/dev/fd/5", "/proc/self/fd/5"}) {
        if (!kxtest::exists(name.substr(0, name.rfind('/')))) continue;
        dir.write("out", "old");
        ASSERT_EQ(symlink(name.c_str(), dir.file("link").c_str()), 0);
        for (const std::string& output : {name, std::string("link")})
            expectRun(shell("exec 5>>out; echo foo | \"$K\" base64 -o " + output +
                            "; echo x >&5; cat out"),
                      0, "Zm9vCg==\nx\n", "");
        unlink(dir.file("link").c_str());
    }
    EXPECT_EQ(kxtest::list(dir.path()), (std::vector<std::string>{"home", "out"}));
}

// --- Signals -------------------------------------------------------------------------------------

TEST_F(Output, ASignalLeavesTheOldFileAndNothingBeside) {
    for (const auto& [name, number] :
         {std::pair("HUP", 1), std::pair("INT", 2), std::pair("TERM", 15)}) {
        dir.write("out", "old");
        const auto outcome = whileWriting("kill -" + std::string(name) + " $(cat pid); wait");
        EXPECT_EQ(outcome.out, std::to_string(128 + number) + '\n');
        EXPECT_EQ(kxtest::slurp(dir.file("out")), "old");
        EXPECT_EQ(filesBut("pid"), (std::vector<std::string>{"home", "out"}));
    }
}

TEST_F(Output, ASignalThatIsIgnoredStaysSo) {
    const auto outcome = shell(
        "trap '' HUP; { head -c 1000000 /dev/zero; kill -HUP $(cat pid); }"
        " | sh -c 'echo $$ >pid; exec \"$K\" base64 -o out'; echo $?");
    EXPECT_EQ(outcome.out, "0\n");
    EXPECT_EQ(kxtest::slurp(dir.file("out")).size(), 1333337U);
}

// A process may get the number of an earlier one.
TEST_F(Output, WhatAKilledRunHasLeftIsNotTouched) {
    expectRun(shell("echo foo | sh -c 'echo $$ >pid; echo left >.kxutils-$$-1; exec \"$K\" base64 "
                    "-o out'; cat .kxutils-$(cat pid)-1 out"),
              0, "left\nZm9vCg==\n", "");
    EXPECT_EQ(kxtest::list(dir.path()).size(), 4U);
}
