// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Temporary files, expansion, commands, streams, memory and libraries. As for files, a failure is
// the result that stands for it.
#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>
#include <vector>

#include "bytes.h"
#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxAlignedMemory.h"
#include "kxFile.h"
#include "kxString.h"
#include "kxUtils.h"
#include "kxtest.h"
#include "operations.h"

namespace {

using kxtest::Attempt;
using kxtest::TempDir;

const std::string bytes = kxtest::someBytes(10000);  // several blocks

// --- Temporary files -----------------------------------------------------------------------------

// A directory that is chosen once per process. It is relative to "/tmp", whatever the test's own
// directory is.
struct TmpDirs {
    TempDir dir;
    std::string shared = dir.file("shared"), root = dir.makeDir("root");
    kxtest::ScopedEnv variable{"TALO_ROOT", root.c_str()};

    // Another execution in the same process finds a new directory, but the old variable.
    static std::string chosen() {
        const char* const value = std::getenv("TALO_TMP_DIR");
        return value ? value : "";
    }
    void init() const { kxFile::initTmpDir(".." + shared); }
    // Expects the shared directory or, if that could not be created, one below the root.
    void expectChosen() const {
        const std::string directory = chosen();
        EXPECT_TRUE(directory == "/tmp/.." + shared || directory == root + "/tmp") << directory;
        EXPECT_TRUE(kxtest::exists(directory));
        EXPECT_EQ(kxFile::getTmpDir(), directory);
    }
};

void tmpDirInit(Attempt& attempt) {
    static bool isFirst = true;  // in this process
    const TmpDirs dirs;
    attempt.run([&] { dirs.init(); });
    if (!std::exchange(isFirst, false)) return;
    const kxtest::Captured out(stdout);
    dirs.init();  // after a lack of memory there is still a choice to be made
    if (attempt.failedAt("mkdir") && attempt.failsOnward()) {
        EXPECT_EQ(TmpDirs::chosen(), "");
        EXPECT_EQ(kxFile::getTmpDir(), "");
    } else {
        dirs.expectChosen();
    }
}

// The user's choice is never changed.
void tmpDirInitChosen(Attempt& attempt) {
    static bool isFirst = true;  // in this process
    const TempDir dir;
    const std::string chosen = dir.file(part);
    const kxtest::ScopedEnv variable("TALO_TMP_DIR", chosen.c_str());
    attempt.run([&] { kxFile::initTmpDir(part); });
    if (!std::exchange(isFirst, false)) return;
    EXPECT_EQ(std::getenv("TALO_TMP_DIR"), chosen);
    if (!attempt.failed()) {
        EXPECT_TRUE(kxtest::exists(chosen));
    }
    if (!attempt.outOfMemory()) {
        EXPECT_EQ(kxFile::getTmpDir(), chosen);
    }
}

// For a directory that the user has chosen.
template <typename Function>
void inTmpDir(Attempt& attempt, const Function& function) {
    const TempDir dir;
    const kxtest::ScopedEnv variable("TALO_TMP_DIR", dir.path().c_str());
    {
        const kxtest::Captured out(stdout);
        EXPECT_EQ(kxFile::getTmpDir(), dir.path());
    }
    function(attempt, dir);
}

void tmpDirGet(Attempt& attempt) {
    inTmpDir(attempt, [](Attempt& a, const TempDir& dir) {
        std::string answer;
        a.run([&] { answer = kxFile::getTmpDir(); });
        EXPECT_EQ(answer, a.outOfMemory() ? "" : dir.path());
    });
}

void tmpDirTeamcenter(Attempt& attempt) {
    inTmpDir(attempt, [](Attempt& a, const TempDir& dir) {
        std::string answer;
        a.run([&] { answer = kxFile::getTeamcenterTmpDir(); });
        if (a.outOfMemory()) return;
        EXPECT_EQ(answer, a.failedAt("mkdir") ? dir.path() : dir.file("teamcenter"));
        EXPECT_TRUE(kxtest::exists(answer));
    });
}

void tmpName(Attempt& attempt) {
    const TempDir dir;
    std::string answer;
    attempt.run([&] { answer = kxFile::getTmpName(dir.path(), part); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failedAt("allocation"));
    EXPECT_EQ(answer.empty(), attempt.outOfMemory());
    EXPECT_TRUE(answer.empty() || startsWith(answer, part)) << answer;
}

// A path is registered or not; those registered before stay.
void tmpFileAdd(Attempt& attempt) {
    const TempDir dir;
    const std::string first = dir.write("a", ""), second = dir.write("b", "");
    kxFile::addTmpFile(first);
    attempt.run([&] { kxFile::addTmpFile(second); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    kxFile::removeTmpFiles();
    EXPECT_FALSE(kxtest::exists(first));
    EXPECT_EQ(kxtest::exists(second), attempt.failed());
}

void tmpFileRemove(Attempt& attempt) {
    inTmpDir(attempt, [](Attempt& a, const TempDir& dir) {
        const std::string file = dir.write(part, "");
        bool done = false;
        a.run([&] { done = kxFile::removeTmpFile(file); });
        EXPECT_EQ(kxtest::exists(file), !done);
        EXPECT_EQ(done, !a.failedAt("unlink") && !a.outOfMemory());
    });
}

// A file that stays, such as one that cannot be seen, does not keep the others from being removed.
void tmpFilesRemove(Attempt& attempt) {
    const TempDir dir;
    for (const char* name : {"a", "b", "c"}) kxFile::addTmpFile(dir.write(name, ""));
    attempt.run([&] { kxFile::removeTmpFiles(); });
    const std::size_t left = kxtest::list(dir.path()).size();
    EXPECT_EQ(left != 0, attempt.failedAt("unlink") || attempt.failedAt("stat"));
    EXPECT_LE(left, attempt.failsOnward() ? 3u : 1u);
    kxFile::removeTmpFiles();  // they are forgotten
    EXPECT_EQ(kxtest::list(dir.path()).size(), left);
}

// --- Expansion -----------------------------------------------------------------------------------

void expandVariable(Attempt& attempt) {
    const kxtest::ScopedEnv variable("KXTEST_LONG_NAME", part.c_str());
    std::string answer;
    attempt.run([&] { answer = kxFile::expandFilename("/a/${KXTEST_LONG_NAME}/b"); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(answer, attempt.failed() ? "" : "/a/" + part + "/b");
}

void expandUnknown(Attempt& attempt) {
    std::string answer;
    attempt.run([&] { answer = kxFile::expandFilename("/a/${KXTEST_NO_VARIABLE}/b"); });
    EXPECT_EQ(answer, attempt.outOfMemory() ? "" : "/a/${KXTEST_NO_VARIABLE}/b");
}

// A user database that cannot be read knows no users; another one may know them.
void expandHome(Attempt& attempt) {
    getpwnam("kxtest-nobody");  // the C library loads all of its user databases
    const std::string path = "~/" + part, expanded = getpwuid(geteuid())->pw_dir + ('/' + part);
    std::string answer;
    attempt.run([&] { answer = kxFile::expandFilename(path); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (attempt.outOfMemory()) return;
    EXPECT_TRUE(answer == expanded || attempt.failed()) << answer;
    EXPECT_TRUE(kxString::endsWith(answer, '/' + part)) << answer;
}

void expandUser(Attempt& attempt) {
    getpwnam("kxtest-nobody");
    const std::string path = "~root/" + part;
    std::string answer;
    attempt.run([&] { answer = kxFile::expandFilename(path); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (attempt.outOfMemory()) return;
    EXPECT_TRUE(answer != path || attempt.failed() || !getpwnam("root"));
    EXPECT_TRUE(kxString::endsWith(answer, '/' + part)) << answer;
}

void expandTooLong(Attempt& attempt) {
    const std::string path(5000, 'x');
    std::string answer;
    attempt.run([&] { answer = kxFile::expandFilename(path); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failedAt("allocation"));
    EXPECT_TRUE(answer == (attempt.outOfMemory() ? "" : path));
}

// --- Commands ------------------------------------------------------------------------------------

using Execute = bool (*)(const std::string& command, bool wait,
                         void (*progress)(unsigned int, void*), void* data);

// Whether the command ended in a way that is not known, or by a signal. A signal to the waiting
// process does not end its wait.
bool endedOtherwise(const Attempt& attempt) {
    return attempt.failedAt("wait") && attempt.error() != EINTR;
}

// True if and only if the command has run to its end.
template <Execute function>
void execute(Attempt& attempt) {
    const TempDir dir;
    bool done = false;
    attempt.run([&] { done = function("echo x > " + dir.file("a"), /*wait=*/true, nullptr, {}); });
    EXPECT_EQ(kxtest::exists(dir.file("a")), done || endedOtherwise(attempt));
    EXPECT_FALSE(done && endedOtherwise(attempt));
    EXPECT_TRUE(done || attempt.failed());
}

// A command that a signal ends has not succeeded, whatever it did before.
template <Execute function>
void executeKilled(Attempt& attempt) {
    const TempDir dir;
    const std::string command = "echo x > " + dir.file("a") + "; kill -KILL $$; exit 0";
    bool done = true;
    attempt.run([&] { done = function(command, /*wait=*/true, nullptr, {}); });
    EXPECT_EQ(done, attempt.outOfMemory());
    EXPECT_TRUE(kxtest::exists(dir.file("a")) || attempt.failed());
}

// True if the command was started. What becomes of it afterwards does not matter.
template <Execute function>
void executeInBackground(Attempt& attempt) {
    const TempDir dir;
    const std::string fifo = dir.file("a");
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    // Both ends are open from the start, so that neither side waits for the other.
    pollfd answer{open(fifo.c_str(), O_RDWR | O_CLOEXEC), POLLIN, 0};
    bool done = false;
    attempt.run([&] { done = function("echo x > " + fifo, /*wait=*/false, nullptr, {}); });
    EXPECT_TRUE(done || attempt.failed());
    EXPECT_FALSE(done && endedOtherwise(attempt));
    if (done || endedOtherwise(attempt)) {
        EXPECT_EQ(poll(&answer, 1, /*milliseconds*/ 10000), 1);
    }
    close(answer.fd);
}

// The wait status is that of the command, if it could be started.
void executeNoOutput(Attempt& attempt, const std::string& command, int expected) {
    int status = -2;
    attempt.run([&] { status = kxFile::execute_no_output(command); });
    if (attempt.outOfMemory()) {
        EXPECT_EQ(status, -2);
        return;
    }
    const bool wasStarted = !attempt.out().empty();
    EXPECT_EQ(attempt.out(), wasStarted ? "Close and waiting for subprocess to end...\n" : "");
    EXPECT_TRUE(wasStarted || attempt.failed());
    EXPECT_EQ(attempt.err(), "");
    if (attempt.failedAt("close")) {  // pclose then gives up without waiting
        EXPECT_TRUE(status == -1 || status == 0 || status == expected) << status;
        if (status == -1) waitpid(-1, nullptr, 0);
    } else if (endedOtherwise(attempt)) {
        EXPECT_EQ(status, attempt.error() == 0 ? SIGKILL : -1);
    } else {
        EXPECT_EQ(status, wasStarted ? expected : 0);
    }
}

// A signal does not end the reading, since that would end a command that is still writing.
void executeNoOutputLong(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", std::string(100000, 'x'));  // more than a pipe holds
    executeNoOutput(attempt, "cat " + file + "; exit 3", 3 << 8);
}

// A failure to read does end it. Nothing takes what the command still writes, and the status is the
// signal that ends the command.
void executeNoOutputUnread(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", std::string(100000, 'x'));
    auto* const old = std::signal(SIGPIPE, SIG_DFL);
    int status = -1;
    attempt.run([&] { status = kxFile::execute_no_output("exec cat " + file); });
    std::signal(SIGPIPE, old);
    if (attempt.failedAt("read") && attempt.error() == EIO) {
        EXPECT_TRUE(status == SIGPIPE || status == 0) << status;  // 0 if everything was written
    } else if (!attempt.failed() || attempt.failedAt("read")) {
        EXPECT_EQ(status, 0);
    }
    if (attempt.failedAt("close") && status == -1) waitpid(-1, nullptr, 0);
}

void executeNoOutputKilled(Attempt& attempt) {
    executeNoOutput(attempt, "kill -KILL $$; # " + part, SIGKILL);
}

// --- Streams -------------------------------------------------------------------------------------

// The bytes before the failure are read; a stream whose file cannot be opened is bad.
void streamRead(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes);
    std::string content(bytes.size() + 1, '\0');
    bool isOpen = false;
    std::size_t n = 0;
    attempt.run([&] {
        cached_ifstream stream(file.c_str(), 4096);
        isOpen = stream.good();
        stream.read(content.data(), static_cast<std::streamsize>(content.size()));
        n = static_cast<std::size_t>(stream.gcount());
    });
    content.resize(n);
    EXPECT_TRUE(startsWith(bytes, content));
    EXPECT_TRUE(content == bytes || attempt.failed());
    EXPECT_TRUE(isOpen || attempt.failed());
    if (attempt.failedAt("open")) {
        EXPECT_FALSE(isOpen);
    }
}

// A failing seek puts the stream into a failed state and leaves it usable.
template <typename Seek>
void streamSeek(Attempt& attempt, const Seek& seek) {
    const TempDir dir;
    cached_ifstream stream(dir.write("a", bytes).c_str(), 4096);
    char c = '\0';
    stream.get(c);
    attempt.run([&] { seek(stream); });
    EXPECT_TRUE(stream.good() || attempt.failed());
    if (stream.get(c)) {
        EXPECT_EQ(c, bytes[100]);
    }
    stream.clear();
    stream.seekg(200);
    stream.get(c);
    EXPECT_EQ(c, bytes[200]);
}

// The buffer is opened again, even after a failure.
template <typename Buffer>
void bufferOpen(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "");
    Buffer buffer(16, file.c_str());
    buffer.close();
    attempt.run([&] { buffer.open(file.c_str()); });
    EXPECT_EQ(buffer.is_valid(), !attempt.failed());
    if (!buffer.is_valid()) buffer.open(file.c_str());
    EXPECT_TRUE(buffer.is_valid());
    buffer.close();
    EXPECT_FALSE(buffer.is_valid());
}

// Whatever the system answers, the file is closed.
template <typename Stream>
void streamClose(Attempt& attempt) {
    const TempDir dir;
    Stream stream(dir.write("a", "").c_str(), 16);
    attempt.run([&] { stream.close(); });
    EXPECT_TRUE(stream.good());
    stream.close();
    EXPECT_TRUE(stream.bad());
}

// Without a buffer every character is a write; after a failed write there are no more.
void streamWriteUnbuffered(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "");
    cached_streambuf buffer(0, file.c_str());
    attempt.run([&] {
        buffer.sputn("abc", 3);
        buffer.write_buffer("def", 3);
    });
    const std::string content = kxtest::slurp(file);
    EXPECT_TRUE(startsWith("abcdef", content));
    EXPECT_EQ(buffer.is_valid(), content == "abcdef");
    EXPECT_TRUE(buffer.is_valid() || attempt.failed());
}

// Writes as the header recommends.
void streamWrite(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "");
    bool done = false;
    attempt.run([&] {
        cached_ofstream stream(file.c_str(), 4096);
        stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        stream.flush();
        stream.close();
        done = !stream.bad();
    });
    const std::string content = kxtest::slurp(file);
    EXPECT_TRUE(startsWith(bytes, content));
    EXPECT_TRUE(done || attempt.failed());
    EXPECT_FALSE(done && content != bytes);
    const bool isComplaint = attempt.err() == "cached_streambuf::write_buffer: failed!\n";
    const bool mustComplain = attempt.failedAt("write") && !done;
    // A complaint that cannot be written either does not appear.
    EXPECT_EQ(isComplaint, mustComplain && !attempt.failsOnward());
}

// The destructor writes and closes, whatever fails.
void streamLeave(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "");
    attempt.run([&] { cached_ofstream(file.c_str()) << bytes; });
    EXPECT_TRUE(startsWith(bytes, kxtest::slurp(file)));
    EXPECT_TRUE(kxtest::slurp(file) == bytes || attempt.failed());
}

// --- Memory, libraries, browser ------------------------------------------------------------------

void alignedMemoryNew(Attempt& attempt) {
    void* block = nullptr;
    attempt.run([&] { block = aligned_malloc(1UL << 26, 64); });
    EXPECT_TRUE(block || attempt.failed());
    if (!block) {
        EXPECT_EQ(attempt.errnoAfter(), ENOMEM);
    }
    aligned_free(block);
}

// A block that cannot grow keeps its place and its content.
void alignedMemory(Attempt& attempt) {
    char* block = static_cast<char*>(aligned_malloc(1000, 64));
    std::fill_n(block, 1000, 'x');
    void* grown = nullptr;
    attempt.run([&] { grown = aligned_realloc(block, 1UL << 26, 64); });
    EXPECT_TRUE(grown || attempt.failed());
    if (grown)
        block = static_cast<char*>(grown);
    else
        EXPECT_EQ(attempt.errnoAfter(), ENOMEM);
    EXPECT_EQ(std::string(block, 1000), std::string(1000, 'x'));
    aligned_free(block);
}

// The result is a handle or a reason. A library that could not be loaded can be loaded later.
void libraryLoad(Attempt& attempt) {
    kxUtils::loadSharedLibrary('/' + part, /*lazy=*/false);  // makes room for an error, once
    EXPECT_NE(kxUtils::getLastError(), "");
    void* handle = nullptr;
    attempt.run([&] { handle = kxUtils::loadSharedLibrary(KX_PROVIDER_PLUGIN, /*lazy=*/false); });
    EXPECT_TRUE(handle ? kxUtils::getLastError().empty() : attempt.failed());
    EXPECT_TRUE(handle || !kxUtils::getLastError().empty() || attempt.failedAt("allocation"));
    EXPECT_EQ(kxUtils::getLastError(), "");
    if (!handle) handle = kxUtils::loadSharedLibrary(KX_PROVIDER_PLUGIN, /*lazy=*/false);
    EXPECT_NE(kxUtils::resolveSymbol(handle, "kxProvidedValue"), nullptr);
    EXPECT_TRUE(kxUtils::unloadSharedLibrary(handle));
}

// The result is null, with a reason as far as there is memory for one.
void libraryMissingSymbol(Attempt& attempt) {
    void* const handle = kxUtils::loadSharedLibrary(KX_PROVIDER_PLUGIN, /*lazy=*/false);
    void* symbol = handle;
    attempt.run([&] { symbol = kxUtils::resolveSymbol(handle, part); });
    EXPECT_EQ(symbol == nullptr, !attempt.outOfMemory());
    EXPECT_TRUE(!kxUtils::getLastError().empty() || attempt.failed());
    EXPECT_NE(kxUtils::resolveSymbol(handle, "kxProvidedValue"), nullptr);
    EXPECT_TRUE(kxUtils::unloadSharedLibrary(handle));
}

void libraryError(Attempt& attempt) {
    EXPECT_EQ(kxUtils::loadSharedLibrary('/' + part, /*lazy=*/false), nullptr);
    std::string text;
    attempt.run([&] { text = kxUtils::getLastError(); });
    // The loader has a text for the case that it cannot compose one.
    EXPECT_TRUE(text.find(part) != std::string::npos || attempt.failed());
    EXPECT_EQ(text.empty(), attempt.outOfMemory());
    EXPECT_EQ(kxUtils::getLastError(), "");  // when asked again, the loader drops its text
}

// The value is the new one or, with the error number, the old one. The C library keeps every value
// for ever, so each value has to be different.
void environmentSet(Attempt& attempt) {
    static int count = 0;
    const kxtest::ScopedEnv variable("KXTEST_SET", "old");
    const std::string value = part + std::to_string(++count);
    int failed = -2;
    attempt.run([&] { failed = kxUtils::setenv("KXTEST_SET", value.c_str()); });
    if (failed != 0) {
        EXPECT_EQ(failed, -1);
        EXPECT_TRUE(attempt.failed());
        EXPECT_EQ(attempt.errnoAfter(), ENOMEM);
        EXPECT_STREQ(std::getenv("KXTEST_SET"), "old");
        EXPECT_EQ(kxUtils::setenv("KXTEST_SET", value.c_str()), 0);
    }
    EXPECT_EQ(std::getenv("KXTEST_SET"), value);
}

void browserOpen(Attempt& attempt) {
    const TempDir dir;
    const std::string opener = dir.write("open", "#!/bin/sh\necho \"$@\" > \"$SEEN\"\n");
    ASSERT_EQ(chmod(opener.c_str(), 0755), 0);
    const kxtest::ScopedEnv path("PATH", dir.path().c_str()),
        seen("SEEN", dir.file("seen").c_str());
    attempt.run([&] { kxUtils::openBrowser("http://" + part); });
    if (kxtest::exists(dir.file("seen")))
        EXPECT_EQ(kxtest::slurp(dir.file("seen")), "-a Safari http://" + part + '\n');
    else
        EXPECT_TRUE(attempt.failed());
}

}  // namespace

const std::vector<Operation> serviceOperations = {
    inOwnProcess({"TmpDirInit", tmpDirInit, allSteps}),
    inOwnProcess({"TmpDirInitChosen", tmpDirInitChosen, allSteps}),
    inOwnProcess({"TmpDirGet", tmpDirGet, allocations}),
    inOwnProcess({"TmpDirTeamcenter", tmpDirTeamcenter, allSteps}),
    {"TmpName", tmpName, allSteps},
    inOwnProcess({"TmpFileAdd", tmpFileAdd, allocations}),
    inOwnProcess({"TmpFileRemove", tmpFileRemove, allSteps}),
    inOwnProcess({"TmpFilesRemove", tmpFilesRemove, systemCalls}),

    {"ExpandVariable", expandVariable},
    {"ExpandUnknown", expandUnknown, allSteps},
    {"ExpandHome", expandHome, allSteps},
    {"ExpandUser", expandUser, allSteps},
    {"ExpandTooLong", expandTooLong, allSteps},

    {"Execute", execute<kxFile::execute>, allSteps},
    {"ExecuteW", execute<kxFile::executeW>, allSteps},
    {"ExecuteKilled", executeKilled<kxFile::execute>, allSteps},
    {"ExecuteWKilled", executeKilled<kxFile::executeW>, allSteps},
    {"ExecuteInBackground", executeInBackground<kxFile::execute>, allSteps},
    {"ExecuteWInBackground", executeInBackground<kxFile::executeW>, allSteps},
    {"ExecuteNoOutput", executeNoOutputLong, allSteps},
    {"ExecuteNoOutputUnread", executeNoOutputUnread, allSteps},
    {"ExecuteNoOutputKilled", executeNoOutputKilled, allSteps},

    {"StreamRead", streamRead, allSteps},
    {"StreamSeek",
     [](Attempt& attempt) { streamSeek(attempt, [](std::istream& s) { s.seekg(100); }); },
     systemCalls},
    {"StreamSeekRelative",
     [](Attempt& attempt) {
         streamSeek(attempt, [](std::istream& s) { s.seekg(100 - 4096, std::ios_base::cur); });
     },
     systemCalls},
    {"StreamSeekFromEnd",
     [](Attempt& attempt) {
         streamSeek(attempt, [](std::istream& s) { s.seekg(100 - 10000, std::ios_base::end); });
     },
     systemCalls},
    {"StreamInOpen", bufferOpen<cached_istreambuf>, allSteps},
    {"StreamOutOpen", bufferOpen<cached_streambuf>, allSteps},
    {"StreamInClose", streamClose<cached_ifstream>, systemCalls},
    {"StreamOutClose", streamClose<cached_ofstream>, systemCalls},
    {"StreamWriteUnbuffered", streamWriteUnbuffered, systemCalls},
    answers(
        "StreamCount",
        [] {
            cached_ofstream stream;
            stream << bytes;
            return stream.size();
        },
        std::int64_t{10000}),
    {"StreamWrite", streamWrite, allSteps},
    {"StreamLeave", streamLeave, allSteps},

    // oneTBB's allocator reads files of the system.
    {"AlignedMemoryNew", alignedMemoryNew, systemCalls, /*inOwnProcess=*/true,
     /*opensElsewhere=*/true},
    inOwnProcess({"AlignedMemory", alignedMemory, systemCalls}),
    inOwnProcess({"LibraryLoad", libraryLoad, allSteps}),
    inOwnProcess({"LibraryMissingSymbol", libraryMissingSymbol}),
    {"LibraryError", libraryError},
    inOwnProcess({"EnvironmentSet", environmentSet}),
    inOwnProcess({"BrowserOpen", browserOpen, allSteps}),
};
