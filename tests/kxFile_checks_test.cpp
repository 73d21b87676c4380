// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// checkRead and checkWrite, observed in a child process that is not the super-user: what the host
// is asked, what is logged, in which order, and what is answered.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "descriptors.h"
#include "file_support.h"
#include "kxFile.h"
#include "kxLog.h"
#include "kxUtils.h"

namespace {

// What the host does with the overwrite question, and what its callback returns.
struct Host {
    bool installed = true;
    std::function<void(kxMessage&)> react = [](kxMessage&) {};
    bool handled = true;
};

Host theHost;
std::string events;  // one line per request and per message, in the order of their arrival

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

// Files of every kind, owned by the user who makes them, in the working directory.
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
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, "socket");  // exists, and cannot be opened
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
        return events;
    });
}

}  // namespace

// --- Every row, with and without a host, in all combinations of ask and log ----------------------

struct CheckRow {
    const char* name;
    Check check;
    std::string path;
    bool asksFirst;       // the overwrite question comes before the test
    std::string warning;  // "": nothing to complain about
    std::string logged;   // the log's form of the warning
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
    writeRow("WritePlain", "plain", true, "", 0),
    writeRow("WriteDirectory", "dir", true, "", 0),
    writeRow("WriteForbidden", "fixed", true, "File 'fixed' is not writable (wrong permissions)!",
             EACCES),
    writeRow("WriteForbiddenDirectory", "sealed", true,
             "File 'sealed' is not writable (wrong permissions)!", EACCES),
};
INSTANTIATE_TEST_SUITE_P(Table, FileCheck, testing::ValuesIn(checkRows),
                         [](const auto& test) { return std::string(test.param.name); });

// --- The overwrite question ----------------------------------------------------------------------

struct AnswerRow {
    const char* name;
    boost::any button;  // empty: the host sets none
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
        // Consent only leads on to the test. A refusal is not logged.
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
INSTANTIATE_TEST_SUITE_P(Table, OverwriteAnswer, testing::ValuesIn(answerRows),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(OverwriteQuestion, ComesBeforeTheAccessTest) {
    Host host;
    host.react = [](kxMessage&) { chmod("fixed", 0644); };
    EXPECT_EQ(observe(kxFile::checkWrite, "fixed", true, true, host), question("fixed") + "true");
    host.react = [](kxMessage&) { chmod("plain", 0444); };
    const std::string text = "File 'plain' is not writable (wrong permissions)!";
    EXPECT_EQ(observe(kxFile::checkWrite, "plain", true, false, host),
              question("plain") + warning(text) + "false, Permission denied");
}

// Deliberate: the probe goes through the link, and takes the link away again.
TEST(CheckWrite, LeavesTheTargetOfALinkThatLedNowhere) {
    const kxtest::TempDir dir;
    ASSERT_EQ(symlink(dir.file("target").c_str(), dir.file("link").c_str()), 0);
    EXPECT_TRUE(kxFile::checkWrite(dir.file("link"), /*ask=*/true, /*log=*/true));
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>{"target"});
}

// What no right of a user changes, seen without a process of its own.
TEST(Checks, OfPathsThatAreEmptyOrWritable) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("plain", "old");
    for (const Check check : {kxFile::checkRead, kxFile::checkWrite}) {
        EXPECT_FALSE(check("", /*ask=*/true, /*log=*/true));
        EXPECT_TRUE(check(file, /*ask=*/false, /*log=*/false));
    }
    EXPECT_EQ(kxtest::slurp(file), "old");
}

// A name that nothing can have is free, and cannot be written to.
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
