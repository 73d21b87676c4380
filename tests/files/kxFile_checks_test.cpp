// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// checkRead and checkWrite, observed in a child process that is not the super-user: what they ask
// the host, what they log, in which order, and what they return.
#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "child.h"
#include "descriptors.h"
#include "kxFile.h"
#include "kxLog.h"
#include "kxUtils.h"
#include "rows.h"
#include "write_at.h"

// These replace the C library's functions, even for calls from the library, so that a test can do
// what other programs might do at that moment.
static std::function<int(const std::string&, int)> afterStat;
static std::function<void()> beforeFstat;

extern "C" int stat(const char* path, struct stat* info) noexcept {
    const int result = fstatat(AT_FDCWD, path, info, 0);
    return afterStat ? afterStat(path, result) : result;
}
#ifdef AT_EMPTY_PATH
extern "C" int fstat(int file, struct stat* info) noexcept {
    if (beforeFstat) std::exchange(beforeFstat, nullptr)();
    return fstatat(file, "", info, AT_EMPTY_PATH);
}
#endif

namespace {

// How the host answers the overwrite question, and what its callback returns.
struct Host {
    bool installed = true;
    std::function<void(kxMessage&)> react = [](kxMessage&) {};
    bool handled = true;
};

Host theHost;
std::string events;  // one line per request and per message, in the order of arrival

std::string describe(const boost::any& value) {
    if (const auto* text = boost::any_cast<std::string>(&value)) return "string '" + *text + "'";
    if (const auto* number = boost::any_cast<int>(&value)) return "int " + std::to_string(*number);
    return std::string("other ") + value.type().name();
}

bool recordRequest(const char* request, kxMessage& message, int flags) {
    events += std::string("host: ") + request + " id " + std::to_string(message.id()) + " flags " +
              std::to_string(flags);
    for (const auto& [name, value] : message.getMap())
        events += " [" + name + "] " + describe(value);
    events += "\n";
    if (message.exists("button0"))
        theHost.react(message);
    else
        errno = EDOM;  // showing a warning must not hide the reason for it
    return theHost.handled;
}

template <const char* level>
void recordMessage(const char* text) {
    events += std::string(level) + ": " + text + "\n";
    errno = ERANGE;
}
constexpr char infoLevel[] = "info", warningLevel[] = "warning", errorLevel[] = "error";

std::string warning(const std::string& text) {
    return "host: showMainWarning id 0 flags 0 [text] string '" + text + "'\n";
}

std::string question(const std::string& path) {
    return "host: showMainWarning id 0 flags 0 [button0] string '&Yes' [button1] string '&No' "
           "[button2] string 'Cancel' [default button] int 0 [escape button] int 2 "
           "[text] string 'File '" +
           path + "' already exists!\nOverwrite file?'\n";
}

using Check = bool (*)(const std::string&, bool, bool);

// Makes files of every kind in the working directory; they belong to the user who makes them.
void makeFiles() {
    const auto make = [](const char* name, mode_t mode) {
        kxtest::writeAt(name, 0, "old");
        chmod(name, mode);
    };
    make("plain", 0644);
    make("secret", 0000);
    make("fixed", 0444);
    mkdir("dir", 0755);
    mkdir("sealed", 0555);
    mkdir("closed", 0755);
    make("closed/plain", 0644);
    chmod("closed", 0);
    const int failed = symlink("closed/plain", "into") | symlink("closed/new", "intonew");
    if (failed != 0) ADD_FAILURE() << "no links";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "socket");  // exists but cannot be opened
    const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
    bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(socket);
}

// The events of one check, its result and, after a failure, errno.
std::string observe(Check check, const std::string& path, bool ask, bool log, const Host& host) {
    const kxtest::TempDir dir;
    chmod(dir.path().c_str(), 0777);
    return kxtest::asOrdinaryUser([&] {
        if (chdir(dir.path().c_str()) != 0 || !std::freopen("/dev/null", "w", stderr))
            return std::string("no place to work in");
        makeFiles();
        theHost = host;
        kxUtils::init(host.installed ? recordRequest : nullptr);
        kxLog::setInfoCB(recordMessage<infoLevel>);
        kxLog::setWarningCB(recordMessage<warningLevel>);
        kxLog::setErrorCB(recordMessage<errorLevel>);
        const auto before = kxtest::list(".");
        const int openBefore = kxtest::nextDescriptor();
        errno = 0;
        const bool result = check(path, ask, log);
        const int error = errno;
        events += result ? "true" : "false";
        if (!result && error != 0) events += std::string(", ") + std::strerror(error);
        if (kxtest::list(".") != before) events += ", other files";
        if (kxtest::nextDescriptor() != openBefore) events += ", open files";
        if (kxtest::slurp("plain") != "old") events += ", changed content";
        chmod("closed", 0755);
        if (kxtest::list("closed") != std::vector<std::string>{"plain"} ||
            kxtest::slurp("closed/plain") != "old")
            events += ", changed what was closed";
        return events;
    });
}

}  // namespace

// --- Every row, with and without a host, in all combinations of ask and log ----------------------

struct CheckRow {
    const char* name;
    Check check;
    std::string path;
    bool asksFirst;       // the overwrite question comes before the access test
    std::string warning;  // "" if there is nothing to complain about
    std::string logged;   // the form of the warning in the log
    bool result;
    int error;  // errno after false
};
static void PrintTo(const CheckRow& row, std::ostream* os) { *os << row.name; }

class FileCheck : public testing::TestWithParam<CheckRow> {};
TEST_P(FileCheck, ReportsAndAnswers) {
    const CheckRow& row = GetParam();
    for (const bool hosted : {true, false})
        for (const bool ask : {false, true})
            for (const bool log : {false, true}) {
                Host host;
                host.installed = hosted;
                std::string expected;
                if (row.asksFirst && ask && hosted) expected += question(row.path);
                if (!row.warning.empty() && ask && hosted) expected += warning(row.warning);
                if (!row.warning.empty() && log) expected += "error: " + row.logged + "\n";
                expected += row.result ? "true" : "false";
                if (row.error != 0) expected += std::string(", ") + std::strerror(row.error);
                EXPECT_EQ(observe(row.check, row.path, ask, log, host), expected)
                    << "host " << hosted << ", ask " << ask << ", log " << log;
            }
}

static CheckRow readRow(const char* name, const std::string& path, const std::string& warning,
                        int error) {
    return {name,    kxFile::checkRead,        path,       false,
            warning, "checkRead:: " + warning, error == 0, error};
}

static CheckRow writeRow(const char* name, const std::string& path, bool asksFirst,
                         const std::string& warning, int error) {
    return {name,    kxFile::checkWrite,       path,       asksFirst,
            warning, "checkWrite: " + warning, error == 0, error};
}

static const CheckRow checkRows[] = {
    {"ReadEmptyPath", kxFile::checkRead, "", false, "", "", false, 0},
    readRow("ReadMissing", "missing", "File 'missing' doesn't exist!", ENOENT),
    readRow("ReadBelowAFile", "plain/x", "File 'plain/x' doesn't exist!", ENOTDIR),
    readRow("ReadPercentSigns", "100%s%n", "File '100%s%n' doesn't exist!", ENOENT),
    readRow("ReadForbidden", "secret", "File 'secret' is not readable (wrong permissions)!",
            EACCES),
    readRow("ReadCannotOpen", "socket", "File 'socket' is not readable (wrong permissions)!",
            ENXIO),
    readRow("ReadPlain", "plain", "", 0),
    readRow("ReadDirectory", "dir", "", 0),

    {"WriteEmptyPath", kxFile::checkWrite, "", false, "", "", false, 0},
    writeRow("WriteNew", "new", false, "", 0),
    writeRow("WriteNewForbidden", "sealed/new", false,
             "File 'sealed/new' is not writable (wrong permissions)!", EACCES),
    writeRow("WriteNewWithoutDirectory", "missing/new", false,
             "File 'missing/new' is not writable (wrong permissions)!", ENOENT),
    writeRow("WriteBelowAFile", "plain/new", false,
             "File 'plain/new' is not writable (wrong permissions)!", ENOTDIR),
    writeRow("WritePercentSigns", "sealed/100%s%n", false,
             "File 'sealed/100%s%n' is not writable (wrong permissions)!", EACCES),
    writeRow("WriteBelowAClosedDirectory", "closed/plain", false,
             "File 'closed/plain' is not writable (wrong permissions)!", EACCES),
    writeRow("WriteNewBelowAClosedDirectory", "closed/new", false,
             "File 'closed/new' is not writable (wrong permissions)!", EACCES),
    writeRow("WriteLinkIntoAClosedDirectory", "into", false,
             "File 'into' is not writable (wrong permissions)!", EACCES),
    writeRow("WriteLinkToNewInAClosedDirectory", "intonew", false,
             "File 'intonew' is not writable (wrong permissions)!", EACCES),
    writeRow("WriteNewDirectory", "new/", false, "File 'new/' is not writable (wrong permissions)!",
             EISDIR),
    writeRow("WritePlain", "plain", true, "", 0),
    writeRow("WriteDirectory", "dir", true, "", 0),
    writeRow("WriteForbidden", "fixed", true, "File 'fixed' is not writable (wrong permissions)!",
             EACCES),
    writeRow("WriteForbiddenDirectory", "sealed", true,
             "File 'sealed' is not writable (wrong permissions)!", EACCES),
};
INSTANTIATE_TEST_SUITE_P(Table, FileCheck, testing::ValuesIn(checkRows), kxtest::nameOfRow);

// --- The overwrite question ----------------------------------------------------------------------

struct AnswerRow {
    const char* name;
    boost::any button;  // if empty, the host sets none
    bool consents;
};
static void PrintTo(const AnswerRow& row, std::ostream* os) { *os << row.name; }

class OverwriteAnswer : public testing::TestWithParam<AnswerRow> {};
TEST_P(OverwriteAnswer, DecidesWhateverTheCallbackReturns) {
    const AnswerRow& row = GetParam();
    const std::string text = "File 'fixed' is not writable (wrong permissions)!";
    const std::string complaint = warning(text) + "error: checkWrite: " + text + "\n";
    for (const bool handled : {true, false}) {
        Host host;
        host.handled = handled;
        if (!row.button.empty())
            host.react = [&](kxMessage& message) { message.set("button", row.button, true); };
        EXPECT_EQ(observe(kxFile::checkWrite, "plain", true, true, host),
                  question("plain") + (row.consents ? "true" : "false"));
        // Consent only leads to the access test. A refusal is not logged.
        EXPECT_EQ(
            observe(kxFile::checkWrite, "fixed", true, true, host),
            question("fixed") + (row.consents ? complaint + "false, Permission denied" : "false"));
    }
}

static const AnswerRow answerRows[] = {
    {"None", {}, true},
    {"Yes", 0, true},
    {"No", 1, false},
    {"Cancel", 2, false},
    {"BeyondTheButtons", 99, false},
    {"Negative", -1, true},
    {"MostNegative", std::numeric_limits<int>::min(), true},
    {"Text", std::string("1"), true},
    {"Unsigned", 1U, true},
    {"Long", 1L, true},
    {"Boolean", true, true},
};
INSTANTIATE_TEST_SUITE_P(Table, OverwriteAnswer, testing::ValuesIn(answerRows), kxtest::nameOfRow);

TEST(OverwriteQuestion, ComesBeforeTheAccessTest) {
    Host host;
    host.react = [](kxMessage&) { chmod("fixed", 0644); };
    EXPECT_EQ(observe(kxFile::checkWrite, "fixed", true, true, host), question("fixed") + "true");
    host.react = [](kxMessage&) { chmod("plain", 0444); };
    const std::string text = "File 'plain' is not writable (wrong permissions)!";
    EXPECT_EQ(observe(kxFile::checkWrite, "plain", true, false, host),
              question("plain") + warning(text) + "false, Permission denied");
}

// --- Dangling links ------------------------------------------------------------------------------

struct LinkCase {
    const char* name;
    std::vector<std::pair<std::string, std::string>> links;  // each with its target
    int error;  // 0 if a file can be created where the first link leads
};
static void PrintTo(const LinkCase& c, std::ostream* os) { *os << c.name; }

// The file is created, and deleted again, where the link leads, as if it were being written.
class CheckWriteLink : public testing::TestWithParam<LinkCase> {};
TEST_P(CheckWriteLink, AnswersForItsTargetAndChangesNothing) {
    const LinkCase& c = GetParam();
    const kxtest::TempDir dir;
    chmod(dir.path().c_str(), 0777);
    const std::string observed = kxtest::asOrdinaryUser([&] {
        const kxtest::ScopedEnv place("TMPDIR", dir.path().c_str());
        const kxtest::TempDir own;  // belongs to the user
        for (const char* name : {"sub/x", "sub/deep/x"}) own.write(name, "");
        mkdir(own.file("sealed").c_str(), 0555);
        if (symlink("sub/deep", own.file("way").c_str()) != 0) return std::string("no link");
        const std::string first = own.file(c.links[0].first);
        for (const auto& [name, target] : c.links) {
            const bool isAbsolute = target[0] == '/';
            if (symlink((isAbsolute ? own.path() + target : target).c_str(),
                        own.file(name).c_str()) != 0)
                return std::string("no link");
        }
        const auto seen = [&] {
            std::string text;
            for (const char* name : {"", "sub", "sub/deep", "sealed"})
                for (const std::string& entry : kxtest::list(own.file(name))) text += entry + " ";
            return text;
        };
        const std::string before = seen();
        errno = 0;
        const bool answer = kxFile::checkWrite(first, /*ask=*/true, /*log=*/false);
        std::string text = answer ? "true" : std::string("false, ") + std::strerror(errno);
        if (seen() != before) text += ", changed to " + seen();
        const bool isWritten = kxFile::write(first, "x");  // tells what is really possible
        if (isWritten != answer) text += ", wrongly";
        return text;
    });
    EXPECT_EQ(observed, c.error == 0 ? "true" : std::string("false, ") + std::strerror(c.error));
}

static const LinkCase linkCases[] = {
    {"Beside", {{"link", "new"}}, 0},
    {"Below", {{"link", "sub/new"}}, 0},
    {"Above", {{"sub/link", "../new"}}, 0},
    {"AboveALinkedDirectory", {{"way/link", "../new"}}, 0},
    {"ThroughALinkedDirectory", {{"link", "way/../new"}}, 0},
    {"Absolute", {{"sub/link", "/new"}}, 0},
    {"Chain", {{"link", "sub/a"}, {"sub/a", "deep/b"}, {"sub/deep/b", "/c"}, {"c", "new"}}, 0},
    {"Itself", {{"link", "link"}}, ELOOP},
    {"EachOther", {{"link", "sub/a"}, {"sub/a", "../link"}}, ELOOP},
    {"WithoutDirectory", {{"link", "missing/new"}}, ENOENT},
    {"BelowAFile", {{"link", "sub/x/new"}}, ENOTDIR},
    {"AsDirectory", {{"link", "new/"}}, EISDIR},
    {"Forbidden", {{"link", "sealed/new"}}, EACCES},
    {"ChainForbidden", {{"link", "sub/a"}, {"sub/a", "/sealed/new"}}, EACCES},
};
INSTANTIATE_TEST_SUITE_P(Table, CheckWriteLink, testing::ValuesIn(linkCases), kxtest::nameOfRow);

TEST(CheckWrite, FollowsALinkOfTheWorkingDirectory) {
    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd(dir.path());
    ASSERT_EQ(symlink("new", "link"), 0);
    EXPECT_TRUE(kxFile::checkWrite("link", /*ask=*/true, /*log=*/true));
    EXPECT_EQ(kxtest::list("."), std::vector<std::string>{"link"});
}

TEST(CheckWrite, FollowsALinkWithAnAbsoluteTarget) {
    const kxtest::TempDir dir;
    ASSERT_EQ(symlink(dir.file("new").c_str(), dir.file("link").c_str()), 0);
    EXPECT_TRUE(kxFile::checkWrite(dir.file("link"), /*ask=*/true, /*log=*/true));
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>{"link"});
}

// --- Other processes at work ---------------------------------------------------------------------

namespace {

// A file that others create and delete while checkWrite is at work.
class CheckWriteRace : public testing::Test {
protected:
    ~CheckWriteRace() override {
        afterStat = nullptr;
        beforeFstat = nullptr;
        kxUtils::init(nullptr);
    }

    void create() const { kxtest::writeAt(file, 0, "theirs"); }
    void remove() const { unlink(file.c_str()); }
    static bool isReplaced() {
        bool isCalled = false;
        afterStat = [&](const std::string&, int result) {
            isCalled = true;
            return result;
        };
        kxFile::exists("/");
        afterStat = nullptr;
        return isCalled;
    }

    const kxtest::TempDir dir;
    const std::string file = dir.file("f");
};

int questions = 0, answer = 0;
bool countQuestion(const char* /*request*/, kxMessage& message, int /*flags*/) {
    ++questions;
    message.set("button", answer, true);
    return true;
}

}  // namespace

TEST_F(CheckWriteRace, FileCreatedMeanwhileIsLeftAlone) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    afterStat = [&](const std::string&, int result) {
        create();
        return result;
    };
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/true));
    afterStat = nullptr;
    EXPECT_EQ(kxtest::slurp(file), "theirs");
}

// The file exists by then, so the user is asked.
TEST_F(CheckWriteRace, FileCreatedMeanwhileIsAskedFor) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    kxUtils::init(countQuestion);
    for (answer = 0; answer < 2; ++answer) {
        remove();
        questions = 0;
        afterStat = [&](const std::string&, int result) {
            create();
            return result;
        };
        EXPECT_EQ(kxFile::checkWrite(file, /*ask=*/true, /*log=*/true), answer == 0);
        afterStat = nullptr;
        EXPECT_EQ(questions, 1);
        EXPECT_EQ(kxtest::slurp(file), "theirs");
    }
}

TEST_F(CheckWriteRace, FileCreatedAndDeletedMeanwhileIsNone) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    kxUtils::init(countQuestion);
    questions = 0;
    int calls = 0;
    afterStat = [&](const std::string&, int result) {
        if (++calls == 1) create();
        if (calls != 2) return result;
        remove();  // in truth there was nothing to be seen
        errno = ENOENT;
        return -1;
    };
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/true, /*log=*/true));
    afterStat = nullptr;
    EXPECT_EQ(questions, 0);
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>());
}

// Like the file of another caller's probe.
TEST_F(CheckWriteRace, FileThatGoesBeforeTheAccessTestIsNone) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    create();
    afterStat = [&](const std::string&, int result) {
        remove();
        return result;
    };
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/true));
    afterStat = nullptr;
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>());
}

// The user was asked about a file that existed, so the rights of that file are tested.
TEST_F(CheckWriteRace, FileThatGoesDuringTheQuestionIsNotWritable) {
    create();
    static std::string path;
    path = file;
    kxUtils::init([](const char*, kxMessage&, int) {
        unlink(path.c_str());
        return true;
    });
    EXPECT_FALSE(kxFile::checkWrite(file, /*ask=*/true, /*log=*/false));
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>());
}

TEST_F(CheckWriteRace, EndsWhereTheSystemContradictsItself) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    int calls = 0;
    afterStat = [&](const std::string&, int) {
        ++calls;
        return 0;  // it exists but cannot be accessed
    };
    EXPECT_FALSE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/false));
    EXPECT_EQ(calls, 100);
    create();
    calls = 0;
    afterStat = [&](const std::string&, int) {
        ++calls;
        errno = ENOENT;
        return -1;  // it does not exist and cannot be created
    };
    EXPECT_FALSE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/false));
    EXPECT_EQ(calls, 1 + 100);
    afterStat = nullptr;
    EXPECT_EQ(kxtest::slurp(file), "theirs");
}

TEST_F(CheckWriteRace, FileThatStaysIsLookedAtOnce) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    chmod(dir.path().c_str(), 0777);
    const std::string observed = kxtest::asOrdinaryUser([&] {
        create();
        chmod(file.c_str(), 0444);
        int calls = 0;
        afterStat = [&](const std::string&, int result) {
            ++calls;
            return result;
        };
        const bool isWritable = kxFile::checkWrite(file, /*ask=*/false, /*log=*/false);
        afterStat = nullptr;
        return std::to_string(isWritable) + " after " + std::to_string(calls);
    });
    EXPECT_EQ(observed, "0 after 1");
}

// A file that is there but could not be seen at first is not created again.
TEST_F(CheckWriteRace, FileThatCannotBeSeenAtFirstIsLeftAlone) {
    if (!isReplaced()) GTEST_SKIP() << "stat cannot be replaced";
    create();
    for (const int visible : {2, 3}) {
        int calls = 0;
        afterStat = [&](const std::string&, int result) {
            if (++calls >= visible) return result;
            errno = EIO;
            return -1;
        };
        errno = 0;
        EXPECT_EQ(kxFile::checkWrite(file, /*ask=*/false, /*log=*/false), visible == 2);
        if (visible == 3) {
            EXPECT_EQ(errno, EIO);
        }
        afterStat = nullptr;
        EXPECT_EQ(kxtest::slurp(file), "theirs");
    }
}

TEST_F(CheckWriteRace, ProbeThatOthersTakeIsTheirs) {
    bool isCalled = false;
    beforeFstat = [&] {
        isCalled = true;
        create();  // they write to the existing file
    };
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/true));
    beforeFstat = nullptr;
    if (!isCalled) GTEST_SKIP() << "fstat cannot be replaced";
    EXPECT_EQ(kxtest::slurp(file), "theirs");
    remove();
    beforeFstat = [&] {
        remove();
        kxtest::writeAt(file, 0, "");  // they replace it, even with an empty one
    };
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/true));
    beforeFstat = nullptr;
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>{"f"});
    remove();
    beforeFstat = [&] { remove(); };
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/false, /*log=*/true));
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>());
}

// Two processes run for half a second. A file that a process creates exclusively stays.
TEST_F(CheckWriteRace, ProcessesThatCreateLoseNothing) {
    const std::string go = dir.file("go");
    kxtest::writeAt(go, 0, "x");
    const pid_t other = fork();
    if (other == 0) {
        while (access(go.c_str(), F_OK) == 0) kxFile::checkWrite(file, false, false);
        _exit(0);
    }
    long created = 0, lost = 0;
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(500);
    while (std::chrono::steady_clock::now() < end) {
        const int mine = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (mine < 0) continue;  // the other process's probe
        ++created;
        EXPECT_EQ(write(mine, "mine", 4), 4);
        bool isThere = true;
        for (int i = 0; isThere && i < 5; ++i) {
            struct stat info {};
            isThere = fstatat(AT_FDCWD, file.c_str(), &info, 0) == 0 && info.st_size == 4;
        }
        lost += !isThere;
        // Moved away by renaming, since deleting it might hit the other process's probe.
        std::rename(file.c_str(), dir.file("done").c_str());
        close(mine);
    }
    unlink(go.c_str());
    waitpid(other, nullptr, 0);
    EXPECT_GT(created, 0);
    EXPECT_EQ(lost, 0) << "of " << created;
}

// Probes in several threads do not keep each other from finding out that the file can be written.
TEST_F(CheckWriteRace, ProbesGetAlongWithEachOther) {
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&] {
            for (int n = 0; n < 500; ++n)
                refused += !kxFile::checkWrite(file, /*ask=*/false, /*log=*/false);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(refused, 0);
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>());
}

// What counts is the right to write. If the process may not even look, it does not help that the
// user who started it may.
TEST(CheckWrite, IsFalseWhereOnlyTheRealUserMayLook) {
    if (!kxtest::isRoot()) GTEST_SKIP() << "needs two users";
    const kxtest::TempDir dir;
    dir.write("closed/plain", "old");
    chmod(dir.path().c_str(), 0755);
    chmod(dir.file("closed").c_str(), 0700);
    const std::string observed = kxtest::inChild([&] {
        if (setgroups(0, nullptr) != 0 || seteuid(65534) != 0) return std::string("one user");
        std::string text;
        for (const char* name : {"closed/plain", "closed/new"}) {
            errno = 0;
            text += kxFile::checkWrite(dir.file(name), /*ask=*/false, /*log=*/false) ? "true "
                                                                                     : "false ";
            text += std::string(std::strerror(errno)) + ", ";
        }
        return text;
    });
    EXPECT_EQ(observed, "false Permission denied, false Permission denied, ");
    EXPECT_EQ(kxtest::slurp(dir.file("closed/plain")), "old");
}

// Results that do not depend on a user's rights, so they need no separate process.
TEST(Checks, OfPathsThatAreEmptyOrWritable) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("plain", "old");
    for (const Check check : {kxFile::checkRead, kxFile::checkWrite}) {
        EXPECT_FALSE(check("", /*ask=*/true, /*log=*/true));
        EXPECT_TRUE(check(file, /*ask=*/false, /*log=*/false));
    }
    EXPECT_EQ(kxtest::slurp(file), "old");
}

// A name that no file can have is free, but cannot be written to.
TEST(CheckWrite, IsFalseForWhatCannotBeThere) {
    const kxtest::TempDir dir;
    ASSERT_EQ(symlink("loop", dir.file("loop").c_str()), 0);
    const std::string below = dir.write("plain", "old") + "/new";
    for (const auto& [path, error] : {std::pair(below, ENOTDIR), std::pair(dir.file("loop"), ELOOP),
                                      std::pair(dir.file(std::string(300, 'x')), ENAMETOOLONG)}) {
        EXPECT_FALSE(kxFile::checkWrite(path, /*ask=*/false, /*log=*/false)) << path;
        EXPECT_EQ(errno, error) << path;
    }
    EXPECT_EQ(kxtest::list(dir.path()), (std::vector<std::string>{"loop", "plain"}));
}

TEST(CheckWrite, AsksOnlyWhereItShallAndOnlyAboutWhatIsThere) {
    const kxtest::TempDir dir;
    const std::string there = dir.write("there", "old");
    static int asked;
    asked = 0;
    kxUtils::init([](const char*, kxMessage& message, int) {
        ++asked;
        message.set("button", 1, true);
        return true;
    });
    EXPECT_FALSE(kxFile::checkWrite(there, /*ask=*/true, /*log=*/true));
    EXPECT_EQ(asked, 1);
    EXPECT_TRUE(kxFile::checkWrite(there, /*ask=*/false, /*log=*/true));
    EXPECT_TRUE(kxFile::checkWrite(dir.file("new"), /*ask=*/true, /*log=*/true));
    EXPECT_EQ(asked, 1);
    kxUtils::init(nullptr);
    EXPECT_EQ(kxtest::slurp(there), "old");
}
