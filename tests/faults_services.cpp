// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Temporary files, expansion, commands, streams, memory and libraries: as for files, a failure is
// the result that stands for it.
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <vector>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "faults_operations.h"
#include "file_support.h"
#include "kxAlignedMemory.h"
#include "kxFile.h"
#include "kxString.h"
#include "kxUtils.h"

namespace {

using kxtest::Attempt;
using kxtest::TempDir;

const std::string bytes = kxtest::someBytes(10000);  // several blocks

// --- Temporary files -----------------------------------------------------------------------------

// A directory that is chosen once in a process. Seen from "/tmp", whatever the test's own is.
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
    // The shared directory, or, where that could not be created, one below the root.
    void expectChosen() const {
        const std::string directory = chosen();
        EXPECT_TRUE(directory == "/tmp/.." + shared || directory == root + "/tmp") << directory;
        EXPECT_TRUE(kxtest::exists(directory));
        EXPECT_EQ(kxFile::getTmpDir(), directory);
    }
};

void tmpDirInit(Attempt& attempt) {
    const TmpDirs dirs;
    const bool isFirst = TmpDirs::chosen().empty();
    attempt.run([&] { dirs.init(); });
    if (!isFirst) return;
    const kxtest::Captured out(stdout);
    dirs.init();  // after a failure of memory there is still a choice to be made
    dirs.expectChosen();
}

// Which the user has chosen.
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

// A path is registered or not; those that were stay.
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

// One file that stays does not keep the others.
void tmpFilesRemove(Attempt& attempt) {
    const TempDir dir;
    for (const char* name : {"a", "b", "c"}) kxFile::addTmpFile(dir.write(name, ""));
    attempt.run([&] { kxFile::removeTmpFiles(); });
    EXPECT_EQ(kxtest::list(dir.path()).size(), attempt.failedAt("unlink") ? 1u : 0u);
    const std::size_t left = kxtest::list(dir.path()).size();
    kxFile::removeTmpFiles();  // forgotten
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

// A user database that cannot be read knows no user; another one may.
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

// --- Commands ------------------------------------------------------------------------------------

// True if it has run and only then; waiting goes on after a signal.
void execute(Attempt& attempt) {
    const TempDir dir;
    bool done = false;
    attempt.run([&] { done = kxFile::execute("echo x > " + dir.file("a"), /*wait=*/true); });
    EXPECT_EQ(kxtest::exists(dir.file("a")), done);
    EXPECT_TRUE(done || attempt.failed());
}

void executeW(Attempt& attempt) {
    const TempDir dir;
    bool done = false;
    attempt.run([&] { done = kxFile::executeW("echo x > " + dir.file("a"), /*wait=*/true); });
    EXPECT_EQ(kxtest::exists(dir.file("a")), done);
    EXPECT_TRUE(done || attempt.failed());
}

// The command's own status, if it could be started. A signal does not end the reading, which would
// end a command that goes on writing, as a failure to read does.
void executeNoOutput(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", std::string(100000, 'x'));  // more than a pipe holds
    int status = -1;
    attempt.run([&] { status = kxFile::execute_no_output("cat " + file + "; exit 3"); });
    if (attempt.outOfMemory()) return;
    const bool wasStarted = !attempt.out().empty();
    EXPECT_EQ(attempt.out(), wasStarted ? "Close and waiting for subprocess to end...\n" : "");
    EXPECT_TRUE(wasStarted || attempt.failed());
    EXPECT_EQ(attempt.err(), "");
    if (!attempt.failedAt("close")) {  // of which pclose says -1
        EXPECT_EQ(status, wasStarted ? 3 << 8 : 0);
    }
}

// --- Streams -------------------------------------------------------------------------------------

// The bytes before the failure; one that cannot be opened is bad.
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

// A seek that fails is the stream's failure, and leaves it usable.
void streamSeek(Attempt& attempt) {
    const TempDir dir;
    cached_ifstream stream(dir.write("a", bytes).c_str(), 4096);
    char c = '\0';
    stream.get(c);
    attempt.run([&] { stream.seekg(100); });
    EXPECT_TRUE(stream.good() || attempt.failed());
    if (stream.get(c)) {
        EXPECT_EQ(c, bytes[100]);
    }
    stream.clear();
    stream.seekg(200);
    stream.get(c);
    EXPECT_EQ(c, bytes[200]);
}

// In the way that the header recommends.
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
    EXPECT_EQ(isComplaint, attempt.failedAt("write") && !done);
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

// A block that cannot grow keeps its place and content.
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

// A handle or a reason; a library that could not be loaded can be loaded later.
void libraryLoad(Attempt& attempt) {
    kxUtils::loadSharedLibrary('/' + part, /*lazy=*/false);  // room for an error, once and for all
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

void libraryError(Attempt& attempt) {
    EXPECT_EQ(kxUtils::loadSharedLibrary('/' + part, /*lazy=*/false), nullptr);
    std::string text;
    attempt.run([&] { text = kxUtils::getLastError(); });
    // The loader has a text for the case that it cannot make one.
    EXPECT_TRUE(text.find(part) != std::string::npos || attempt.failed());
    EXPECT_EQ(text.empty(), attempt.outOfMemory());
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
    inOwnProcess({"TmpDirGet", tmpDirGet, allocations}),
    inOwnProcess({"TmpDirTeamcenter", tmpDirTeamcenter, allSteps}),
    {"TmpName", tmpName, allSteps},
    inOwnProcess({"TmpFileAdd", tmpFileAdd, allocations}),
    inOwnProcess({"TmpFileRemove", tmpFileRemove, allSteps}),
    inOwnProcess({"TmpFilesRemove", tmpFilesRemove, systemCalls}),

    {"ExpandVariable", expandVariable},
    {"ExpandUnknown", expandUnknown, allSteps},
    {"ExpandHome", expandHome, allSteps},

    {"Execute", execute, allSteps},
    {"ExecuteW", executeW, allSteps},
    {"ExecuteNoOutput", executeNoOutput, allSteps},

    {"StreamRead", streamRead, allSteps},
    {"StreamSeek", streamSeek, systemCalls},
    {"StreamWrite", streamWrite, allSteps},
    {"StreamLeave", streamLeave, allSteps},

    inOwnProcess({"AlignedMemory", alignedMemory, systemCalls}),
    inOwnProcess({"LibraryLoad", libraryLoad, allSteps}),
    {"LibraryError", libraryError},
    inOwnProcess({"BrowserOpen", browserOpen, allSteps}),
};
