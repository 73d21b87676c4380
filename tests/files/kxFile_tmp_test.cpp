// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The temporary directory is chosen once per process, so every case runs in its own process.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <map>

#include "child.h"
#include "kxFile.h"
#include "kxtest.h"
#include "rows.h"
#include "write_at.h"

namespace {

// The console lines of the log's levels.
std::string info(const std::string& text) { return text + "\n"; }
std::string warning(const std::string& text) { return "\033[33m" + text + "\n\033[0m"; }
std::string error(const std::string& text) { return "\033[31m" + text + "\n\033[0m"; }

std::string chosen(const std::string& value) { return info("TALO_TMP_DIR = '" + value + "'"); }
std::string cannotCreate(const std::string& path) {
    return warning("Couldn't create tmp directory '" + path + "'");
}
std::string answer(const std::string& what, const std::string& text) {
    return what + " [" + text + "]\n";
}
// The result of getTmpDir(), and what a child process finds in the environment.
std::string published(const std::string& path) {
    return answer("get", path) + answer("child", path);
}

const std::string noDirectory = info("kxFile::getTmpDir: Couldn't get tmp dir!");
const std::string noBase = warning("kxFile::getTeamcenterTmpDir : Couldn't get base tmp dir!");

using Steps = std::vector<std::string>;
using Variables = std::map<std::string, std::string>;

// Files below /tmp, like the names that the library uses; the file "file" exists.
class TmpDir : public testing::Test {
protected:
    TmpDir() { dir.write("file", "x"); }

    // Returns what the steps print on standard output; expects nothing but `errors` on standard
    // error.
    std::string run(Steps steps, Variables variables = {}, const std::string& errors = "") const {
        steps.insert(steps.begin(), KX_TMP_PROBE);
        variables["KXTEST_TALO"] = dir.file("talo");
        kxtest::RunOptions options;
        options.directory = dir.path();
        const kxtest::Outcome outcome = kxtest::run(steps, variables, options);
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err, errors);
        return outcome.out;
    }

    // The name that makes initTmpDir use a directory in `dir`.
    std::string name(const std::string& sub) const {
        return dir.path().substr(dir.path().rfind('/') + 1) + "/" + sub;
    }
    // The directory that initTmpDir makes from it.
    std::string made(const std::string& sub) const { return "/tmp/" + name(sub); }

    const kxtest::ScopedEnv tmp{"TMPDIR", "/tmp"};
    const kxtest::TempDir dir;
};

}  // namespace

// --- Choosing and publishing ---------------------------------------------------------------------

TEST_F(TmpDir, EmptyNameWarnsAndDoesNotCount) {
    EXPECT_EQ(run({"init", "", "init", "", "init", name("a"), "get", "child"}),
              warning("kxFile::initTmpDir: dirname is empty.\n") +
                  warning("kxFile::initTmpDir: dirname is empty.\n") + chosen(made("a")) +
                  published(made("a")));
    EXPECT_EQ(run({"init", "", "child"}),
              warning("kxFile::initTmpDir: dirname is empty.\n") + answer("child", "unset"));
}

TEST_F(TmpDir, FirstNameIsCreatedAndPublished) {
    EXPECT_EQ(run({"init", name("a"), "get", "child"}), chosen(made("a")) + published(made("a")));
    struct stat made {};
    ASSERT_EQ(stat(dir.file("a").c_str(), &made), 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(made.st_mode, S_IFDIR | (0777 & ~mask));
}

TEST_F(TmpDir, FirstNameIsFixedForTheProcess) {
    EXPECT_EQ(run({"init", name("a"), "init", name("b"), "init", "", "get", "get", "child"}),
              chosen(made("a")) + warning("kxFile::initTmpDir: dirname is empty.\n") +
                  answer("get", made("a")) + published(made("a")));
    EXPECT_FALSE(kxtest::exists(dir.file("b")));
}

TEST_F(TmpDir, DirectoryThatExistsIsPublished) {
    dir.write("a/kept", "x");
    EXPECT_EQ(run({"init", name("a"), "get", "child"}), chosen(made("a")) + published(made("a")));
    EXPECT_EQ(kxtest::list(dir.file("a")), Steps{"kept"});
}

TEST_F(TmpDir, AnythingOfThatNameCountsAsExisting) {
    EXPECT_EQ(run({"init", name("file"), "get", "child"}),
              chosen(made("file")) + published(made("file")));
    EXPECT_EQ(kxtest::slurp(dir.file("file")), "x");
}

// Deliberate: nothing checks whose directory it is.
TEST_F(TmpDir, LinkToADirectoryIsFollowed) {
    dir.write("elsewhere/x.tmp", "x");
    ASSERT_EQ(symlink("elsewhere", dir.file("a").c_str()), 0);
    EXPECT_EQ(run({"init", name("a"), "get", "child", "remove", "x.tmp"}),
              chosen(made("a")) + published(made("a")) + answer("remove", "true"));
    EXPECT_EQ(kxtest::list(dir.file("elsewhere")), Steps());
}

TEST_F(TmpDir, DefaultNameIsTalo) {
    EXPECT_EQ(run({"get", "child", "get", "init", name("b")}),
              chosen("/tmp/talo") + published("/tmp/talo") + answer("get", "/tmp/talo"));
    EXPECT_EQ(kxtest::list(dir.path()), (Steps{"file", "talo"}));
    // By now it exists, so it is taken without further messages.
    EXPECT_EQ(run({"get", "child"}), chosen("/tmp/talo") + published("/tmp/talo"));
}

TEST_F(TmpDir, PathIsReadFromTheEnvironmentEachTime) {
    EXPECT_EQ(run({"init", name("a"), "rmdir", dir.file("a"), "get"}),
              chosen(made("a")) + answer("get", made("a")));
    EXPECT_FALSE(kxtest::exists(dir.file("a")));
    EXPECT_EQ(run({"init", name("a"), "set", "else", "get", "unset", "get", "child"}),
              chosen(made("a")) + answer("get", "else") + noDirectory + answer("get", "") +
                  answer("child", "unset"));
}

// The environment keeps a pointer to the text, even while the process ends.
TEST_F(TmpDir, PublishedValueOutlivesStaticObjects) {
    EXPECT_EQ(run({"atexit", "init", name("a")}), chosen(made("a")) + answer("at exit", made("a")));
}

// Applications that start at the same time all use the directory.
TEST_F(TmpDir, DirectoryThatAnotherProcessMakesFirstIsTaken) {
    EXPECT_EQ(run({"init", name("a"), "teamcenter", "child"}, {{"KXTEST_RACE", "1"}}),
              chosen(made("a")) + answer("teamcenter", made("a") + "/teamcenter") +
                  answer("child", made("a")));
    EXPECT_EQ(
        run({"init", name("b"), "get"}, {{"KXTEST_RACE", "1"}, {"TALO_TMP_DIR", dir.file("c")}}),
        chosen(dir.file("c")) + answer("get", dir.file("c")));
    EXPECT_EQ(
        run({"init", name("no/parent"), "get"}, {{"KXTEST_RACE", "1"}, {"TALO_ROOT", dir.path()}}),
        cannotCreate(made("no/parent")) + chosen(dir.file("tmp")) + answer("get", dir.file("tmp")));
}

// --- The user's choice ---------------------------------------------------------------------------

struct UserCase {
    const char* name;
    std::string value;    // relative to the test's directory; "" stays ""
    bool warns, created;  // whether a directory of that name is created
};
static void PrintTo(const UserCase& c, std::ostream* os) { *os << c.name; }

class TmpDirUser : public TmpDir, public testing::WithParamInterface<UserCase> {};
TEST_P(TmpDirUser, WinsAndIsNeverChanged) {
    const UserCase& c = GetParam();
    dir.makeDir("there");
    const std::string value = c.value.empty() ? "" : dir.file(c.value);
    EXPECT_EQ(run({"init", name("a"), "get", "child"},
                  {{"TALO_TMP_DIR", value}, {"TALO_ROOT", dir.path()}}),
              (c.warns ? cannotCreate(value) : "") + chosen(value) + published(value));
    EXPECT_EQ(kxtest::list(dir.path()),
              c.created ? (Steps{"file", c.value, "there"}) : (Steps{"file", "there"}));
}

static const UserCase userCases[] = {
    {"Exists", "there", false, false},         {"ExistsAsFile", "file", false, false},
    {"IsCreated", "new", false, true},         {"ParentMissing", "no/parent", true, false},
    {"BelowAFile", "file/below", true, false}, {"Empty", "", true, false},
};
INSTANTIATE_TEST_SUITE_P(Table, TmpDirUser, testing::ValuesIn(userCases), kxtest::nameOfRow);

TEST_F(TmpDir, UsersRelativePathStaysRelative) {
    EXPECT_EQ(run({"get", "child"}, {{"TALO_TMP_DIR", "new"}}), chosen("new") + published("new"));
    EXPECT_TRUE(kxtest::exists(dir.file("new")));
}

TEST_F(TmpDir, UsersEmptyValueIsReturnedWithoutAReport) {
    EXPECT_EQ(run({"get", "get", "teamcenter"}, {{"TALO_TMP_DIR", ""}}),
              cannotCreate("") + chosen("") + answer("get", "") + answer("get", "") + noBase +
                  answer("teamcenter", ""));
}

// --- The second candidate ------------------------------------------------------------------------

TEST_F(TmpDir, SecondCandidateIsCreatedAndPublished) {
    dir.makeDir("root");
    const std::string second = dir.file("root/tmp");
    EXPECT_EQ(run({"init", name("no/parent"), "get", "child"}, {{"TALO_ROOT", dir.file("root")}}),
              cannotCreate(made("no/parent")) + chosen(second) + published(second));
    EXPECT_EQ(kxtest::list(dir.file("root")), Steps{"tmp"});
}

// Deliberate.
TEST_F(TmpDir, SecondCandidateThatExistsIsNotPublished) {
    dir.makeDir("root/tmp");
    EXPECT_EQ(run({"init", name("no/parent"), "get", "child", "teamcenter"},
                  {{"TALO_ROOT", dir.file("root")}}),
              cannotCreate(made("no/parent")) + chosen("(null)") + noDirectory + answer("get", "") +
                  answer("child", "unset") + noDirectory + noBase + answer("teamcenter", ""));
    EXPECT_EQ(kxtest::list(dir.file("root/tmp")), Steps{});
}

TEST_F(TmpDir, SecondCandidateThatFailsLeavesTheVariableUnset) {
    const std::string second = dir.file("missing/tmp");
    EXPECT_EQ(
        run({"init", name("no/parent"), "get", "child"}, {{"TALO_ROOT", dir.file("missing")}}),
        cannotCreate(made("no/parent")) + cannotCreate(second) + chosen("(null)") + noDirectory +
            answer("get", "") + answer("child", "unset"));
}

TEST_F(TmpDir, SecondCandidateWithoutARootIsTheTextItself) {
    EXPECT_EQ(run({"init", name("no/parent"), "child"}, {},
                  error("expandFilename: couldn't expand env.var TALO_ROOT!")),
              cannotCreate(made("no/parent")) + cannotCreate("$TALO_ROOT/tmp") + chosen("(null)") +
                  answer("child", "unset"));
}

TEST_F(TmpDir, DefaultNameFallsBackToo) {
    dir.makeDir("root");
    const std::string second = dir.file("root/tmp");
    // The default directory is a link that leads nowhere.
    ASSERT_EQ(symlink("no/where", dir.file("talo").c_str()), 0);
    EXPECT_EQ(run({"get", "child"}, {{"TALO_ROOT", dir.file("root")}}),
              cannotCreate("/tmp/talo") + chosen(second) + published(second));
}

// --- The sub-directory for Teamcenter ------------------------------------------------------------

TEST_F(TmpDir, TeamcenterDirectoryIsCreatedOnce) {
    const Variables variables = {{"TALO_TMP_DIR", dir.path()}};
    const std::string path = dir.file("teamcenter");
    EXPECT_EQ(run({"teamcenter", "teamcenter"}, variables),
              chosen(dir.path()) + answer("teamcenter", path) + answer("teamcenter", path));
    struct stat made {};
    ASSERT_EQ(stat(path.c_str(), &made), 0);
    EXPECT_TRUE(S_ISDIR(made.st_mode));
    EXPECT_EQ(run({"teamcenter"}, variables), chosen(dir.path()) + answer("teamcenter", path));
}

TEST_F(TmpDir, TeamcenterDirectoryThatCannotBeMadeGivesTheBase) {
    const std::string base = dir.file("file/below");
    const std::string complaint =
        warning("kxFile::getTeamcenterTmpDir : Couldn't create teamcenter tmp dir!");
    EXPECT_EQ(run({"teamcenter", "teamcenter"}, {{"TALO_TMP_DIR", base}}),
              cannotCreate(base) + chosen(base) + complaint + answer("teamcenter", base) +
                  complaint + answer("teamcenter", base));
}

TEST_F(TmpDir, TeamcenterDirectoryBelowTheDefault) {
    EXPECT_EQ(run({"teamcenter"}),
              chosen("/tmp/talo") + answer("teamcenter", "/tmp/talo/teamcenter"));
    EXPECT_EQ(kxtest::list(dir.file("talo")), Steps{"teamcenter"});
}

// --- Names ---------------------------------------------------------------------------------------

TEST_F(TmpDir, NamesCountUpAndNothingIsCreated) {
    dir.makeDir("empty");
    const std::string empty = dir.file("empty");
    EXPECT_EQ(run({"name", empty, "img", "name", empty, "img", "name", "", "img", "name", empty, "",
                   "name", empty, "other", "name", dir.file("missing"), "img"}),
              answer("name", "img0") + answer("name", "img1") + answer("name", "") +
                  answer("name", "") + answer("name", "other2") + answer("name", "img3"));
    EXPECT_EQ(kxtest::list(empty), Steps{});
}

TEST_F(TmpDir, NamesThatExistArePassedOver) {
    dir.write("img0", "");
    dir.makeDir("img1");
    ASSERT_EQ(symlink("nowhere", dir.file("img2").c_str()), 0);  // dangling: the name is free
    dir.write("img4", "");
    EXPECT_EQ(
        run({"name", dir.path(), "img", "name", dir.path(), "img", "name", dir.path(), "img"}),
        answer("name", "img2") + answer("name", "img3") + answer("name", "img5"));
}

// --- Removing ------------------------------------------------------------------------------------

struct RemoveCase {
    const char* name;
    std::string argument;
    bool result;
    Steps left;  // of "x.tmp", "empty/", "full/"
};
static void PrintTo(const RemoveCase& c, std::ostream* os) { *os << c.name; }

class RemoveTmpFile : public TmpDir, public testing::WithParamInterface<RemoveCase> {};
TEST_P(RemoveTmpFile, TakesTheLastComponent) {
    const RemoveCase& c = GetParam();
    dir.write("tmp/x.tmp", "");
    dir.makeDir("tmp/empty");
    dir.write("tmp/full/x.tmp", "");
    dir.write("x.tmp", "");
    EXPECT_EQ(run({"remove", c.argument}, {{"TALO_TMP_DIR", dir.file("tmp")}}),
              (c.argument.empty() ? "" : chosen(dir.file("tmp"))) +
                  answer("remove", c.result ? "true" : "false"));
    EXPECT_EQ(kxtest::list(dir.file("tmp")), c.left);
    EXPECT_EQ(kxtest::list(dir.file("tmp/full")), Steps{"x.tmp"});
    EXPECT_TRUE(kxtest::exists(dir.file("x.tmp")));
}

static const RemoveCase removeCases[] = {
    {"Name", "x.tmp", true, {"empty", "full"}},
    {"PathElsewhere", "/anything/x.tmp", true, {"empty", "full"}},
    {"PathBelow", "full/x.tmp", true, {"empty", "full"}},
    {"ParentDirectory", "../x.tmp", true, {"empty", "full"}},
    {"Missing", "y.tmp", true, {"empty", "full", "x.tmp"}},
    {"EmptyDirectory", "empty", true, {"full", "x.tmp"}},
    {"FullDirectory", "full", false, {"empty", "full", "x.tmp"}},
    {"Empty", "", false, {"empty", "full", "x.tmp"}},
};
INSTANTIATE_TEST_SUITE_P(Table, RemoveTmpFile, testing::ValuesIn(removeCases), kxtest::nameOfRow);

// Such a name stands for the directory itself, even if that is empty.
TEST_F(TmpDir, RemoveNeverTakesTheDirectoryItself) {
    dir.makeDir("tmp");
    dir.makeDir("tmp/sub");
    const std::string refused = answer("remove", "false");
    EXPECT_EQ(run({"remove", "sub/", "remove", "sub", "remove", "sub/", "remove", "/", "remove",
                   ".", "get"},
                  {{"TALO_TMP_DIR", dir.file("tmp")}}),
              chosen(dir.file("tmp")) + refused + answer("remove", "true") + refused + refused +
                  refused + answer("get", dir.file("tmp")));
    EXPECT_TRUE(kxtest::exists(dir.file("tmp")));
}

// Like every name but the empty one: the directory is chosen, and a file that is missing counts as
// removed.
TEST_F(TmpDir, RemoveAsksForTheDirectoryWhateverTheNameEndsIn) {
    EXPECT_EQ(run({"remove", ""}), answer("remove", "false"));
    EXPECT_EQ(run({"remove", "sub/", "child"}),
              chosen("/tmp/talo") + answer("remove", "false") + answer("child", "/tmp/talo"));
    const std::string gone = dir.file("gone");
    EXPECT_EQ(
        run({"get", "rmdir", gone, "remove", "sub/", "remove", "x"}, {{"TALO_TMP_DIR", gone}}),
        chosen(gone) + answer("get", gone) + answer("remove", "true") + answer("remove", "true"));
}

// Without a temporary directory there is nothing to remove, especially not in the root directory.
TEST_F(TmpDir, RemoveWithoutADirectoryTouchesNothing) {
    EXPECT_EQ(run({"remove", "tmp", "remove", "tmp/"}, {{"TALO_TMP_DIR", ""}}),
              cannotCreate("") + chosen("") + answer("remove", "true") + answer("remove", "false"));
}

// The system does not let anybody look there.
TEST_F(TmpDir, RemoveInAClosedDirectoryIsFalse) {
    chmod(dir.path().c_str(), 0777);
    const std::string answers = kxtest::asOrdinaryUser([&] {
        mkdir(dir.file("closed").c_str(), 0);
        setenv("TALO_TMP_DIR", dir.file("closed").c_str(), 1);
        std::string text;
        for (const char* name : {"missing", "sub/"})
            text += kxFile::removeTmpFile(name) ? "true " : "false ";
        chmod(dir.file("closed").c_str(), 0700);
        text += kxFile::removeTmpFile("missing") ? "true" : "false";
        return text;
    });
    EXPECT_EQ(answers, "false false true");
}

// Deliberate: the link itself is removed, so nobody needs to see where it leads.
TEST_F(TmpDir, RemoveTakesALinkIntoAClosedDirectory) {
    chmod(dir.path().c_str(), 0777);
    const std::string answers = kxtest::asOrdinaryUser([&] {
        mkdir(dir.file("closed").c_str(), 0700);
        kxtest::writeAt(dir.file("closed/kept"), 0, "x");
        chmod(dir.file("closed").c_str(), 0);
        mkdir(dir.file("tmp").c_str(), 0700);
        setenv("TALO_TMP_DIR", dir.file("tmp").c_str(), 1);
        std::string text;
        for (const char* target : {"../closed/kept", "../closed/missing"}) {
            if (symlink(target, dir.file("tmp/link").c_str()) != 0) return std::string("no link");
            text += kxFile::removeTmpFile("link") ? "true " : "false ";
            text += std::to_string(kxtest::list(dir.file("tmp")).size()) + ", ";
        }
        chmod(dir.file("closed").c_str(), 0700);
        return text + kxtest::slurp(dir.file("closed/kept"));
    });
    EXPECT_EQ(answers, "true 0, true 0, x");
}

TEST_F(TmpDir, RegisteredFilesAreRemovedOnce) {
    const std::string one = dir.write("one", ""), two = dir.write("sub/two", "");
    EXPECT_EQ(run({"add", one, "add", "", "add", one, "add", dir.file("missing"), "add", "sub/two",
                   "removeall", "make", one, "removeall"}),
              "");
    EXPECT_EQ(kxtest::list(dir.path()), (Steps{"file", "one", "sub"}));
    EXPECT_FALSE(kxtest::exists(two));
}

// Only what can be seen to exist is removed.
TEST_F(TmpDir, RegisteredLinkStaysWhereNobodyCanSeeWhatItLeadsTo) {
    chmod(dir.path().c_str(), 0777);
    const std::string left = kxtest::asOrdinaryUser([&] {
        mkdir(dir.file("own").c_str(), 0700);
        mkdir(dir.file("own/closed").c_str(), 0);
        kxtest::writeAt(dir.file("own/plain"), 0, "x");
        std::string text;
        for (const char* target : {"closed/x", "nowhere", "plain"}) {
            const std::string link = dir.file("own/to-") + target[0];
            if (symlink(target, link.c_str()) != 0) return std::string("no link");
            kxFile::addTmpFile(link);
        }
        kxFile::removeTmpFiles();
        for (const std::string& name : kxtest::list(dir.file("own"))) text += name + " ";
        chmod(dir.file("own/closed").c_str(), 0700);
        return text;
    });
    EXPECT_EQ(left, "closed plain to-c to-n ");
}

// A directory is removed once it is empty: all registrations are processed, in their order.
TEST_F(TmpDir, RegistrationsKeepTheirOrderAndDuplicates) {
    for (const char* name : {"a", "b", "c"}) dir.write(std::string(name) + "/inside", "");
    run({"add", "a/inside", "add", "a", "add", "b", "add", "b/inside", "add", "c", "add",
         "c/inside", "add", "c", "removeall"});
    EXPECT_EQ(kxtest::list(dir.path()), (Steps{"b", "file"}));
    EXPECT_EQ(kxtest::list(dir.file("b")), Steps{});
}

TEST_F(TmpDir, RemovingOneFileKeepsItsRegistration) {
    const std::string path = dir.write("one", "");
    EXPECT_EQ(run({"add", path, "remove", "one", "make", path, "removeall"},
                  {{"TALO_TMP_DIR", dir.path()}}),
              chosen(dir.path()) + answer("remove", "true"));
    EXPECT_FALSE(kxtest::exists(path));
}

TEST_F(TmpDir, TheLibraryRemovesNothingByItself) {
    dir.write("one", "");
    EXPECT_EQ(run({"add", "one"}), "");
    EXPECT_TRUE(kxtest::exists(dir.file("one")));
}

// Deliberate: a placeholder.
TEST_F(TmpDir, ClearOnlySaysThatItDoesNothing) {
    dir.write("one", "");
    EXPECT_EQ(run({"clear"}, {{"TALO_TMP_DIR", dir.path()}},
                  error("kxFile::clearTmpDir: NOT IMPLEMENTED YET!")),
              "");
    EXPECT_EQ(kxtest::list(dir.path()), (Steps{"file", "one"}));
}
