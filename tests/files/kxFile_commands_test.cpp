// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <string>

#include "kxFile.h"
#include "kxLog.h"
#include "kxtest.h"
#include "rows.h"

namespace {

using Execute = bool (*)(const std::string&, bool, void (*)(unsigned int, void*), void*);

struct Variant {
    const char* name;
    Execute run;
};
void PrintTo(const Variant& v, std::ostream* os) { *os << v.name; }

// Both functions behave alike except at zero bytes.
class ExecuteBoth : public testing::TestWithParam<Variant> {
protected:
    static bool run(const std::string& command, bool wait) {
        return GetParam().run(command, wait, nullptr, nullptr);
    }
};

const Variant variants[] = {{"execute", kxFile::execute}, {"executeW", kxFile::executeW}};
INSTANTIATE_TEST_SUITE_P(Table, ExecuteBoth, testing::ValuesIn(variants), kxtest::nameOfRow);

int progressCalls = 0;
void countProgress(unsigned int /*percent*/, void* /*data*/) { ++progressCalls; }

/// A named pipe, which lets a background command continue and returns its answer.
std::string makeFifo(const kxtest::TempDir& dir, const char* name) {
    std::string path = dir.file(name);
    if (mkfifo(path.c_str(), 0600) != 0) ADD_FAILURE() << "cannot make a FIFO";
    return path;
}

/// Runs `execute` with a command that waits for a word from the test and returns it; the text
/// `behind` is appended to the command. True if the word comes back, which is possible only if the
/// command runs in the background.
bool runsInBackground(Execute execute, const std::string& behind) {
    const kxtest::TempDir dir;
    const std::string go = makeFifo(dir, "go"), done = makeFifo(dir, "done");
    // `timeout` ends a command that wrongly keeps the test waiting.
    const std::string command = "timeout 10 cat <'" + go + "' >'" + done + "'" + behind;
    progressCalls = 0;
    // Both ends are open from the start, so that neither the shell nor the test waits for the
    // other.
    const int goEnd = open(go.c_str(), O_RDWR | O_CLOEXEC);
    const int doneEnd = open(done.c_str(), O_RDWR | O_CLOEXEC);
    const bool started = execute(command, /*wait=*/false, countProgress, nullptr);
    bool answered = false;
    if (started && write(goEnd, "word", 4) == 4) {
        char word[5] = {};
        answered = read(doneEnd, word, 4) == 4 && std::string(word) == "word";
    }
    close(goEnd);
    close(doneEnd);
    EXPECT_EQ(progressCalls, 0);
    return started && answered;
}

}  // namespace

// --- execute and executeW ------------------------------------------------------------------------

TEST_P(ExecuteBoth, AnswersWhetherTheCommandSucceeded) {
    EXPECT_FALSE(run("", true));
    EXPECT_FALSE(run("", false));
    EXPECT_TRUE(run(" ", true));  // a command that the shell accepts
    EXPECT_TRUE(run("exit 0", true));
    EXPECT_FALSE(run("exit 1", true));
    EXPECT_FALSE(run("exit 3", true));
    EXPECT_FALSE(run("kill -9 $$", true));
    EXPECT_FALSE(run("kxtest-no-such-program 2>/dev/null", true));
    EXPECT_FALSE(run("kill -KILL $$; exit 0", true));  // ended by a signal
    EXPECT_FALSE(run("exec sh -c 'kill -TERM $$'", true));
    EXPECT_TRUE(run("A='b  c'; test \"$A\" = 'b  c' | cat && exit 0", true));
}

TEST_P(ExecuteBoth, LeavesTheCommandsStreamsAlone) {
    kxtest::Captured out(stdout), err(stderr);
    EXPECT_TRUE(run("echo one; echo two >&2", true));
    EXPECT_EQ(out.text(), "one\n");
    EXPECT_EQ(err.text(), "two\n");
}

// Deliberate: the caller must quote the arguments, including file names from elsewhere.
TEST_P(ExecuteBoth, QuotesNothing) {
    const std::string name = "a  b; echo $((1 + 1)) 'c  d' #";
    kxtest::Captured out(stdout);
    EXPECT_TRUE(run("echo " + name + " e", true));
    EXPECT_EQ(out.text(), "a b\n2 c  d\n");
}

TEST_P(ExecuteBoth, ReturnsAtOnceFromTheBackground) {
    EXPECT_TRUE(runsInBackground(GetParam().run, ""));
}

TEST_P(ExecuteBoth, SaysOfTheBackgroundOnlyThatItWasStarted) {
    EXPECT_TRUE(run("exit 3", false));
    EXPECT_TRUE(run("kxtest-no-such-program 2>/dev/null", false));
    // The backslash is followed by the blank; an ampersand directly after it would become an
    // argument of exit.
    EXPECT_TRUE(run("exit 3 \\", false));
    kxtest::Captured err(stderr);
    EXPECT_FALSE(run("(", false));  // nothing that the shell can start
    EXPECT_NE(err.text(), "");
}

TEST_P(ExecuteBoth, NeverReportsProgress) {
    progressCalls = 0;
    int data = 5;
    EXPECT_TRUE(GetParam().run("exit 0", true, countProgress, &data));
    EXPECT_FALSE(GetParam().run("exit 3", true, countProgress, &data));
    EXPECT_FALSE(GetParam().run("", true, countProgress, &data));
    EXPECT_EQ(progressCalls, 0);
    EXPECT_EQ(data, 5);
}

TEST(ExecuteW, CutsTheCommandAtItsFirstZeroByte) {
    const std::string zero(1, '\0');
    EXPECT_FALSE(kxFile::executeW(zero + "exit 0", true));
    EXPECT_FALSE(kxFile::executeW(zero, false));
    EXPECT_TRUE(kxFile::executeW("exit 0" + zero + "3", true));
    EXPECT_FALSE(kxFile::executeW("exit 3" + zero, true));
    EXPECT_TRUE(runsInBackground(kxFile::executeW, zero + "rest"));
}

// The shell sees an empty command and succeeds.
TEST(Execute, TakesACommandOfZeroBytesForOne) {
    EXPECT_TRUE(kxFile::execute(std::string(1, '\0'), true));
}

// --- execute_no_output ---------------------------------------------------------------------------

namespace {

const std::string closingLine = "Close and waiting for subprocess to end...\n";

/// Keeps the process from opening files during its lifetime.
class NoMoreFiles {
public:
    NoMoreFiles() {
        getrlimit(RLIMIT_NOFILE, &_old);
        const rlimit none{0, _old.rlim_max};
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoMoreFiles() { setrlimit(RLIMIT_NOFILE, &_old); }
    NoMoreFiles(const NoMoreFiles&) = delete;
    NoMoreFiles& operator=(const NoMoreFiles&) = delete;

private:
    rlimit _old{};
};

struct StatusCase {
    const char* name;
    std::string command;
    int exitCode;  // or the negative number of the signal that ends the shell
    std::string err;
};
void PrintTo(const StatusCase& c, std::ostream* os) { *os << c.name; }

class ExecuteNoOutputStatus : public testing::TestWithParam<StatusCase> {};

const StatusCase statusCases[] = {
    {"Success", "echo hi", 0, ""},
    {"Silent", "exit 0", 0, ""},
    {"Empty", "", 0, ""},
    {"Failure", "echo hi; exit 3", 3, ""},
    {"Signal", "echo hi; kill -9 $$", -9, ""},
    {"ErrorsAreNotRedirected", "echo hi; echo bad >&2", 0, "bad\n"},
    // If the reader had stopped early, the pipe's signal would have ended the writer.
    {"OneLongLine", "head -c 10485760 /dev/zero | tr '\\0' x", 0, ""},
    {"ManyLines", "head -c 10485760 /dev/zero | tr '\\0' '\\n'", 0, ""},
    {"ZeroBytes", "head -c 10485760 /dev/zero", 0, ""},
    {"LineOfTheBuffersLength", "head -c 1023 /dev/zero | tr '\\0' x; echo; exit 5", 5, ""},
};

}  // namespace

TEST_P(ExecuteNoOutputStatus, DiscardsTheOutputAndReturnsTheStatus) {
    const StatusCase& c = GetParam();
    kxtest::Captured out(stdout), err(stderr);
    const int status = kxFile::execute_no_output(c.command);
    EXPECT_EQ(out.text(), closingLine);
    EXPECT_EQ(err.text(), c.err);
    if (c.exitCode >= 0) {
        ASSERT_TRUE(WIFEXITED(status)) << status;
        EXPECT_EQ(WEXITSTATUS(status), c.exitCode);
    } else {
        ASSERT_TRUE(WIFSIGNALED(status)) << status;
        EXPECT_EQ(WTERMSIG(status), -c.exitCode);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ExecuteNoOutputStatus, testing::ValuesIn(statusCases),
                         kxtest::nameOfRow);

TEST(ExecuteNoOutput, SaysThatItWaitsBeforeItWaits) {
    const kxtest::TempDir dir;
    const std::string fifo = makeFifo(dir, "stdout"), seen = dir.file("seen");
    // The command closes its output, and ends when it has read what the waiting process says.
    const auto outcome = kxtest::run(
        {KX_COMMANDS_PROBE, fifo, "exec >&-; timeout 10 head -n 1 <'" + fifo + "' >'" + seen + "'"},
        {{"PATH", "/usr/bin:/bin"}});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(kxtest::slurp(seen), closingLine);
    EXPECT_EQ(outcome.err, "");
}

// As in a program that has the system reap its children.
TEST(ExecuteNoOutput, IsMinusOneWhereTheSystemKeepsTheStatus) {
    auto* const old = std::signal(SIGCHLD, SIG_IGN);
    kxtest::Captured out(stdout), err(stderr);
    const int status = kxFile::execute_no_output("exit 3");
    const bool done = kxFile::execute("exit 0", true);
    std::signal(SIGCHLD, old);
    EXPECT_EQ(status, -1);
    EXPECT_FALSE(done);
    EXPECT_EQ(out.text(), closingLine);
    EXPECT_EQ(err.text(), "");
}

TEST(ExecuteNoOutput, IsZeroAndSilentWhereTheCommandCannotBeStarted) {
    kxtest::Captured out(stdout), err(stderr);
    int status = -1;
    {
        const NoMoreFiles limit;
        status = kxFile::execute_no_output("exit 3");
    }
    EXPECT_EQ(status, 0);
    EXPECT_EQ(out.text() + err.text(), "");
}

// --- pathfind ------------------------------------------------------------------------------------

TEST(PathFind, ReportsWhereTheFirstTwoArgumentsAreGiven) {
    for (const char* third : {"", "c"}) {
        kxLog::clearLastError();
        kxtest::Captured out(stdout), err(stderr);
        EXPECT_EQ(kxFile::pathfind("a", "b", third), "");
        EXPECT_STREQ(kxLog::getLastError(), "kxFile::pathfind : NIY!\n");
        EXPECT_EQ(err.text(), "\033[31mkxFile::pathfind : NIY!\n\n\033[0m");
        EXPECT_EQ(out.text(), "");
    }
}

TEST(PathFind, IsSilentOtherwise) {
    kxLog::clearLastError();
    kxtest::Captured out(stdout), err(stderr);
    for (const char* third : {"", "c"}) {
        EXPECT_EQ(kxFile::pathfind("", "b", third), "");
        EXPECT_EQ(kxFile::pathfind("a", "", third), "");
        EXPECT_EQ(kxFile::pathfind("", "", third), "");
    }
    EXPECT_EQ(out.text() + err.text(), "");
    EXPECT_STREQ(kxLog::getLastError(), "");
}
