// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <functional>
#include <thread>
#include <type_traits>

#include "bytes.h"
#include "child.h"
#include "descriptors.h"
#include "emulator.h"
#include "kxFile.h"
#include "kxLog.h"
#include "rows.h"
#include "write_at.h"

using kxtest::someBytes;

// These replace the C library's functions, even for calls from the library, so that a test can see
// what is to be created and refuse it, and can end a read early.
static std::function<int(const std::string&, mode_t)> theMkdir;

static std::function<ssize_t(int, void*, std::size_t)> theRead;

// By its symbol, since the headers of a hardened build define a function of the name itself.
extern "C" ssize_t replacedRead(int file, void* buffer, std::size_t size) __asm__("read");
extern "C" ssize_t replacedRead(int file, void* buffer, std::size_t size) {
    const iovec whole{buffer, size};
    return theRead ? theRead(file, buffer, size) : readv(file, &whole, 1);
}

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
    return theMkdir ? theMkdir(path, mode) : mkdirat(AT_FDCWD, path, mode);
}

namespace {

// A prepared working directory:
//   file (9 bytes), empty, dir/, full/inside, dangling -> nowhere
class FileOperations : public testing::Test {
protected:
    FileOperations() {
        dir.write("file", "123456789");
        dir.write("empty", "");
        dir.makeDir("dir");
        dir.write("full/inside", "x");
        EXPECT_EQ(symlink("nowhere", dir.file("dangling").c_str()), 0);
    }
    ~FileOperations() override {
        theMkdir = nullptr;
        theRead = nullptr;
    }

    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd{dir.path()};
};

mode_t modeOf(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(stat(path.c_str(), &info), 0) << path;
    return info.st_mode & 07777;
}

// The texts of errors logged during its lifetime, received by a callback that spoils errno.
class LoggedErrors {
public:
    LoggedErrors() {
        text.clear();
        kxLog::setErrorCB([](const char* message) {
            text += message;
            errno = ERANGE;
        });
    }
    ~LoggedErrors() { kxLog::setErrorCB(nullptr); }
    LoggedErrors(const LoggedErrors&) = delete;
    LoggedErrors& operator=(const LoggedErrors&) = delete;

    inline static std::string text;
};

}  // namespace

// --- The instance --------------------------------------------------------------------------------

static_assert(std::is_empty_v<kxFile> && std::is_trivially_default_constructible_v<kxFile> &&
                  std::is_trivially_destructible_v<kxFile>,
              "an object of kxFile holds nothing");

TEST(Init, CreatesOneInstanceFromAnyThread) {
    EXPECT_EQ(kxFile::_me, nullptr);
    std::thread other(kxFile::init);
    kxFile::init();
    other.join();
    kxFile* const first = kxFile::_me;
    EXPECT_NE(first, nullptr);
    kxFile::init();
    EXPECT_EQ(kxFile::_me, first);
}

// --- Existence -----------------------------------------------------------------------------------

TEST_F(FileOperations, ExistsForWhateverStatFinds) {
    for (const bool first : {false, true})
        for (const bool second : {false, true}) {
            for (const char* path : {"file", "empty", "dir", "dir/", "/", "/dev/null"})
                EXPECT_TRUE(kxFile::exists(path, first, second)) << path;
            for (const char* path : {"", "missing", "file/", "file/x", "dangling"})
                EXPECT_FALSE(kxFile::exists(path, first, second)) << path;
        }
}

// --- Directories ---------------------------------------------------------------------------------

TEST_F(FileOperations, CreateDirMakesOneDirectory) {
    EXPECT_TRUE(kxFile::createDir("dir/new"));
    EXPECT_EQ(kxtest::list("dir"), std::vector<std::string>{"new"});
    for (const char* path : {"", "dir", "file", "missing/new", "file/new", "dangling"})
        EXPECT_FALSE(kxFile::createDir(path)) << path;
    EXPECT_TRUE(kxFile::createDir("back\\slash"));  // not a separator here
    EXPECT_TRUE(kxtest::exists("back\\slash"));
}

TEST_F(FileOperations, DirectoriesHaveTheModeThatTheUmaskLeaves) {
    const mode_t old = umask(0);
    EXPECT_TRUE(kxFile::createDir("open"));
    EXPECT_TRUE(kxFile::createPath("p/q"));
    umask(027);
    EXPECT_TRUE(kxFile::createDir("narrow"));
    umask(old);
    EXPECT_EQ(modeOf("open"), 0777U);
    EXPECT_EQ(modeOf("p"), 0777U);
    EXPECT_EQ(modeOf("p/q"), 0777U);
    EXPECT_EQ(modeOf("narrow"), 0750U);
}

struct PathCase {
    const char* name;
    std::string path;
    bool result;
    std::vector<std::string> created;
};
static void PrintTo(const PathCase& c, std::ostream* os) { *os << c.name; }

class CreatePath : public FileOperations, public testing::WithParamInterface<PathCase> {};
TEST_P(CreatePath, MatchesTable) {
    const PathCase& c = GetParam();
    std::vector<std::string> created;
    theMkdir = [&](const std::string& path, mode_t mode) {
        const int result = mkdirat(AT_FDCWD, path.c_str(), mode);
        if (result == 0) created.push_back(path);
        return result;
    };
    EXPECT_EQ(kxFile::createPath(c.path), c.result);
    theMkdir = nullptr;
    for (const std::string& path : c.created) EXPECT_TRUE(kxtest::exists(path)) << path;
    EXPECT_EQ(created, c.created);
    EXPECT_EQ(kxtest::slurp("file"), "123456789");
}

static const std::string tooLong(300, 'n');
static const PathCase pathCases[] = {
    {"Empty", "", false, {}},
    {"OneSlash", "/", true, {}},
    {"TwoSlashes", "//", true, {}},
    {"ManySlashes", "////", true, {}},
    {"BackslashesOnly", "\\\\", true, {}},
    {"OneComponent", "a", true, {"a"}},
    {"AllMissing", "a/b/c", true, {"a", "a/b", "a/b/c"}},
    {"SomeThere", "dir/b/c", true, {"dir/b", "dir/b/c"}},
    {"AllThere", "full", true, {}},
    {"EmptyComponents", "a//b///c//", true, {"a", "a/b", "a/b/c"}},
    {"Backslashes", "a\\b\\\\c\\", true, {"a", "a/b", "a/b/c"}},
    {"MixedSeparators", "a\\b/c", true, {"a", "a/b", "a/b/c"}},
    {"Dots", "./a/../b", true, {"./a", "./a/../b"}},
    {"FileInPlaceOfTheLast", "file", true, {}},
    {"FileInTheWay", "file/b", false, {}},
    {"FileFurtherInTheWay", "full/inside/b/c", false, {}},
    {"FirstFails", "dangling", true, {}},
    {"FirstHasNoValidName", tooLong, true, {}},
    {"FirstFailsAndTheNextToo", "dangling/b", false, {}},
    {"LaterFails", "a/" + tooLong, false, {"a"}},
};
INSTANTIATE_TEST_SUITE_P(Table, CreatePath, testing::ValuesIn(pathCases), kxtest::nameOfRow);

TEST_F(FileOperations, CreatePathTakesAbsolutePaths) {
    for (const char* leading : {"", "/", "//"}) {
        const std::string path = leading + dir.path() + "/abs" + std::to_string(strlen(leading));
        EXPECT_TRUE(kxFile::createPath(path + "/x")) << path;
        EXPECT_TRUE(kxFile::exists(path + "/x")) << path;
    }
}

struct WalkCase {
    const char* name;
    std::string path;
    std::vector<std::string> refused;
    bool result;
    std::vector<std::string> tried;
};
static void PrintTo(const WalkCase& c, std::ostream* os) { *os << c.name; }

// Paths below the root, where nothing may be created: the attempts alone are recorded.
class CreatePathWalk : public FileOperations, public testing::WithParamInterface<WalkCase> {};
TEST_P(CreatePathWalk, TriesEveryComponent) {
    const WalkCase& c = GetParam();
    std::vector<std::string> tried;
    theMkdir = [&](const std::string& path, mode_t mode) {
        EXPECT_EQ(mode, 0777U);
        tried.push_back(path);
        for (std::size_t i = 0; i < c.refused.size(); ++i)
            if (path == c.refused[i]) {
                errno = i == 0 ? EROFS : EACCES;
                return -1;
            }
        return 0;
    };
    if (!kxFile::createDir("probe") || tried.empty()) GTEST_SKIP() << "mkdir cannot be replaced";
    tried.clear();
    errno = 0;
    EXPECT_EQ(kxFile::createPath(c.path), c.result);
    if (!c.result) {
        EXPECT_EQ(errno, c.refused[0] == c.tried[0] ? EACCES : EROFS);
    }
    EXPECT_EQ(tried, c.tried);
}

static const WalkCase walkCases[] = {
    {"OneLeadingSlash", "/kxNo/b/c", {}, true, {"/kxNo", "/kxNo/b", "/kxNo/b/c"}},
    {"TwoLeadingSlashes", "//kxNo/b//c", {}, true, {"//kxNo", "//kxNo/b", "//kxNo/b/c"}},
    {"ThreeLeadingSlashes", "///kxNo/b", {}, true, {"//kxNo", "//kxNo/b"}},
    {"LeadingBackslashes", "\\\\kxNo\\b", {}, true, {"//kxNo", "//kxNo/b"}},
    {"FirstMayFail", "//kxNo/b", {"//kxNo"}, true, {"//kxNo", "//kxNo/b"}},
    {"FirstRelativeMayFail", "kxNo/b", {"kxNo"}, true, {"kxNo", "kxNo/b"}},
    {"LaterFailureGoesOn", "/kxNo/b/c", {"/kxNo/b"}, false, {"/kxNo", "/kxNo/b", "/kxNo/b/c"}},
    {"LastFails", "/kxNo/b/c", {"/kxNo/b/c"}, false, {"/kxNo", "/kxNo/b", "/kxNo/b/c"}},
    {"FirstErrorIsKept", "a/b/c/d", {"a/b", "a/b/c"}, false, {"a", "a/b", "a/b/c", "a/b/c/d"}},
    {"FirstComponentsErrorIsNot", "a/b/c", {"a", "a/b"}, false, {"a", "a/b", "a/b/c"}},
};
INSTANTIATE_TEST_SUITE_P(Table, CreatePathWalk, testing::ValuesIn(walkCases), kxtest::nameOfRow);

// --- Removing and renaming -----------------------------------------------------------------------

TEST_F(FileOperations, RemoveTakesFilesAndEmptyDirectories) {
    EXPECT_TRUE(kxFile::remove("file"));
    EXPECT_TRUE(kxFile::remove("dir"));
    EXPECT_TRUE(kxFile::remove("missing"));
    EXPECT_TRUE(kxFile::remove("missing/x"));
    EXPECT_FALSE(kxFile::remove(""));
    EXPECT_FALSE(kxFile::remove("full"));
    EXPECT_EQ(kxtest::list("."), (std::vector<std::string>{"dangling", "empty", "full"}));
}

TEST_F(FileOperations, RemoveIsDoneWithWhatCannotBeThere) {
    ASSERT_EQ(symlink("loop", "loop"), 0);
    for (const std::string& path :
         {std::string("file/x"), std::string(300, 'x'), std::string("loop"), std::string("loop/x")})
        EXPECT_TRUE(kxFile::remove(path)) << path;
    EXPECT_EQ(kxtest::list("."),
              (std::vector<std::string>{"dangling", "dir", "empty", "file", "full", "loop"}));
}

TEST_F(FileOperations, RemoveIsFalseWhereNobodyCanTell) {
    chmod(dir.path().c_str(), 0755);
    chmod("full", 0);
    const uid_t user = geteuid();
    if (kxtest::isRoot()) {
        ASSERT_EQ(seteuid(65534), 0);
    }
    const bool removed = kxFile::remove("full/missing");
    const int error = errno;
    ASSERT_EQ(seteuid(user), 0);
    chmod("full", 0755);
    EXPECT_FALSE(removed);
    EXPECT_EQ(error, EACCES);
}

// Deliberate: the link itself is removed, so nobody needs to see where it leads.
TEST_F(FileOperations, RemoveTakesALinkIntoAClosedDirectory) {
    chmod(dir.path().c_str(), 0777);
    const std::string answers = kxtest::asOrdinaryUser([] {
        mkdir("closed", 0700);
        kxtest::writeAt("closed/kept", 0, "x");
        chmod("closed", 0);
        std::string text;
        for (const char* target : {"closed/kept", "closed/missing"}) {
            if (symlink(target, "link") != 0) return std::string("no link");
            text += kxFile::remove("link") ? "true, " : "false, ";
        }
        chmod("closed", 0700);
        for (const std::string& name : kxtest::list(".")) text += name + " ";
        return text + kxtest::slurp("closed/kept");
    });
    EXPECT_EQ(answers, "true, true, closed dangling dir empty file full x");
}

TEST_F(FileOperations, RenameStaysInTheDirectory) {
    EXPECT_TRUE(kxFile::rename(dir.path(), "file", "new"));
    EXPECT_EQ(kxtest::slurp("new"), "123456789");
    EXPECT_TRUE(kxFile::rename(".", "new", "empty"));  // replaces the existing one
    EXPECT_EQ(kxtest::slurp("empty"), "123456789");
    EXPECT_TRUE(kxFile::rename("full", "inside", "../dir/outside"));
    EXPECT_TRUE(kxFile::rename(".", "dir", "other"));
    EXPECT_EQ(kxtest::slurp("other/outside"), "x");
    EXPECT_EQ(kxtest::list("."), (std::vector<std::string>{"dangling", "empty", "full", "other"}));
}

TEST_F(FileOperations, RenameRefuses) {
    const std::string fromRoot = dir.path().substr(1);
    EXPECT_FALSE(kxFile::rename("", fromRoot + "/file", fromRoot + "/new"));
    EXPECT_FALSE(kxFile::rename(".", "", "new"));
    EXPECT_FALSE(kxFile::rename(".", "file", ""));
    EXPECT_FALSE(kxFile::rename(".", "missing", "new"));
    EXPECT_FALSE(kxFile::rename("dir", "file", "new"));
    EXPECT_FALSE(kxFile::rename(".", "file", "missing/new"));
    EXPECT_FALSE(kxFile::rename(".", "file", "full"));
    EXPECT_FALSE(kxFile::rename(".", "dangling", "new"));
    EXPECT_EQ(kxtest::list("."),
              (std::vector<std::string>{"dangling", "dir", "empty", "file", "full"}));
}

// --- Reading -------------------------------------------------------------------------------------

TEST_F(FileOperations, ReadGivesTheBytesUnchanged) {
    for (const std::string& bytes :
         {std::string(1, '\0'), std::string("a\r\nb\n\x1A\0\xFF", 8), someBytes(100000)}) {
        dir.write("bytes", bytes);
        std::string text = "old text that is longer";
        EXPECT_TRUE(kxFile::read("bytes", text));
        EXPECT_EQ(text, bytes);
        std::vector<char> vector(7, 'o');
        EXPECT_TRUE(kxFile::read("bytes", vector));
        EXPECT_EQ(std::string(vector.begin(), vector.end()), bytes);
        std::string buffer(bytes.size() + 2, '#');
        EXPECT_TRUE(kxFile::read("bytes", &buffer[1]));
        EXPECT_EQ(buffer, "#" + bytes + "#");
    }
}

TEST_F(FileOperations, ReadOfNothingIsFalseAndEmptiesTheContent) {
    const int before = kxtest::nextDescriptor();
    for (const char* path : {"", "empty", "missing", "file/x", "dir", "/", "/dev/null"}) {
        std::string text = "old";
        std::vector<char> vector(3, 'o');
        char buffer = '#';
        EXPECT_FALSE(kxFile::read(path, text)) << path;
        EXPECT_FALSE(kxFile::read(path, vector)) << path;
        EXPECT_FALSE(kxFile::read(path, &buffer)) << path;
        EXPECT_EQ(text, "");
        EXPECT_TRUE(vector.empty());
        EXPECT_EQ(buffer, '#');
    }
    EXPECT_FALSE(kxFile::read("file", static_cast<char*>(nullptr)));
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST_F(FileOperations, ReadIsFalseWhereTheMemoryDoesNotSuffice) {
    constexpr rlim_t limit = rlim_t{4} << 30;
    if (kxtest::underSanitizer() || kxtest::underEmulator())
        GTEST_SKIP() << "needs a limit on memory";
    if (!kxtest::writeAt("huge", 2 * static_cast<off_t>(limit), "x"))
        GTEST_SKIP() << "no room for sparse files";
    EXPECT_EQ(kxtest::inChild([&] {
                  const rlimit memory{limit, limit};
                  setrlimit(RLIMIT_AS, &memory);
                  std::string text = "old";
                  std::vector<char> bytes(3, 'o');
                  std::string answers;
                  answers += std::to_string(kxFile::read("huge", text)) + text;
                  answers += std::to_string(kxFile::read("huge", bytes));
                  return answers + std::to_string(bytes.size());
              }),
              "000");
}

// A file of the system that announces a page and delivers a line.
TEST_F(FileOperations, AShortReadIsNotDetected) {
    const std::string path = "/sys/kernel/mm/transparent_hugepage/enabled";
    const std::uint64_t size = kxFile::getFileSize(path);
    if (size == 0) GTEST_SKIP() << "no such file here";
    std::string content;
    EXPECT_TRUE(kxFile::read(path, content));
    EXPECT_EQ(content.size(), size);
    EXPECT_EQ(content.back(), '\0');
}

// A device without a size is not read as a whole, so the call ends even if the device does not.
TEST_F(FileOperations, DevicesAndPipesAreNotReadWhole) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const int other = open("pipe", O_RDWR | O_CLOEXEC);  // so that no open waits
    for (const char* path : {"/dev/zero", "pipe"}) {
        std::string text = "old";
        std::vector<char> bytes(3, 'o');
        char byte = '#';
        EXPECT_FALSE(kxFile::read(path, text)) << path;
        EXPECT_FALSE(kxFile::read(path, bytes)) << path;
        EXPECT_FALSE(kxFile::read(path, &byte)) << path;
        EXPECT_EQ(kxFile::getFileSize(path), 0U) << path;
        EXPECT_TRUE(kxFile::checkRead(path, /*ask=*/false, /*log=*/false)) << path;
        using State = kxFile::ChecksumInfo::State;
        EXPECT_TRUE(kxFile::findChecksum(path).state == State::noFooter) << path;
    }
    close(other);
}

// If the other end is not open yet, they wait for it.
TEST_F(FileOperations, PipesAreWaitedFor) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    std::thread writer([] { EXPECT_TRUE(kxFile::write("pipe", "through the pipe")); });
    EXPECT_TRUE(kxFile::copy("pipe", "copy"));
    writer.join();
    EXPECT_EQ(kxtest::slurp("copy"), "through the pipe");
}

TEST_F(FileOperations, ASparseFileIsReadInItsFullSize) {
    if (!kxtest::writeAt("sparse", 1 << 20, "x")) GTEST_SKIP() << "no room for sparse files";
    std::string text;
    EXPECT_TRUE(kxFile::read("sparse", text));
    EXPECT_EQ(text, std::string(1 << 20, '\0') + "x");
}

// --- Reading into a buffer of known size ---------------------------------------------------------

struct BoundedCase {
    const char* name;
    std::string path;
    std::size_t capacity;
    bool result;
    std::string content;  // the bytes that were read
    bool more;
    int error;  // errno after false
};
static void PrintTo(const BoundedCase& c, std::ostream* os) { *os << c.name; }

class ReadBounded : public FileOperations, public testing::WithParamInterface<BoundedCase> {};
TEST_P(ReadBounded, MatchesTable) {
    const BoundedCase& c = GetParam();
    const int before = kxtest::nextDescriptor();
    for (const bool asksForMore : {false, true}) {
        std::string buffer(c.capacity + 2, '#');
        std::size_t size = 77;
        bool more = !c.more;
        errno = 0;
        EXPECT_EQ(kxFile::read(c.path, &buffer[1], c.capacity, size, asksForMore ? &more : nullptr),
                  c.result);
        if (!c.result) {
            EXPECT_EQ(errno, c.error);
        }
        EXPECT_EQ(size, c.content.size());
        EXPECT_EQ(buffer, '#' + c.content + std::string(c.capacity - c.content.size() + 1, '#'));
        EXPECT_EQ(more, asksForMore ? c.more : !c.more);
    }
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

static const BoundedCase boundedCases[] = {
    {"RoomToSpare", "file", 20, true, "123456789", false, 0},
    {"OneByteToSpare", "file", 10, true, "123456789", false, 0},
    {"JustRoom", "file", 9, true, "123456789", false, 0},
    {"OneByteShort", "file", 8, true, "12345678", true, 0},
    {"OneByte", "file", 1, true, "1", true, 0},
    {"NoByte", "file", 0, true, "", true, 0},
    {"EmptyFile", "empty", 5, true, "", false, 0},
    {"EmptyFileAndNoByte", "empty", 0, true, "", false, 0},
    {"WithoutEnd", "/dev/zero", 3, true, std::string(3, '\0'), true, 0},
    {"EmptyPath", "", 5, false, "", false, ENOENT},
    {"Missing", "missing", 5, false, "", false, ENOENT},
    {"BelowAFile", "file/x", 5, false, "", false, ENOTDIR},
    {"Directory", "dir", 5, false, "", false, EISDIR},
    {"DirectoryAndNoByte", "dir", 0, false, "", false, EISDIR},
};
INSTANTIATE_TEST_SUITE_P(Table, ReadBounded, testing::ValuesIn(boundedCases), kxtest::nameOfRow);

TEST_F(FileOperations, ReadBoundedTakesANullBufferForNoBytesOnly) {
    std::size_t size = 77;
    bool more = true;
    errno = 0;
    EXPECT_FALSE(kxFile::read("file", nullptr, 1, size, &more));
    EXPECT_EQ(errno, EINVAL);
    EXPECT_EQ(size, 0U);
    EXPECT_FALSE(more);
    EXPECT_TRUE(kxFile::read("file", nullptr, 0, size, &more));
    EXPECT_EQ(size, 0U);
    EXPECT_TRUE(more);
}

// The capacity is more than the system takes in one call.
TEST_F(FileOperations, ReadBoundedTakesAnyCapacity) {
    const std::string bytes = someBytes(100000);
    dir.write("bytes", bytes);
    std::string buffer(bytes.size(), '#');
    std::size_t size = 0;
    bool more = true;
    EXPECT_TRUE(kxFile::read("bytes", buffer.data(), SIZE_MAX, size, &more));
    EXPECT_EQ(size, bytes.size());
    EXPECT_FALSE(more);
    EXPECT_EQ(buffer, bytes);
}

// A file that has grown since its size was asked for does not overflow the buffer.
TEST_F(FileOperations, ReadBoundedStopsWhereTheFileWentOn) {
    const std::size_t room = kxFile::getFileSize("file");
    std::string buffer(room + 4, '#');
    EXPECT_TRUE(kxFile::append("file", "more than there is room for"));
    std::size_t size = 0;
    bool more = false;
    EXPECT_TRUE(kxFile::read("file", buffer.data(), room, size, &more));
    EXPECT_EQ(size, room);
    EXPECT_TRUE(more);
    EXPECT_EQ(buffer, "123456789####");
}

// Content that arrives in pieces is put together.
TEST_F(FileOperations, ReadBoundedGoesOnAfterAShortRead) {
    ASSERT_EQ(mkfifo("pipe", 0600), 0);
    const std::string bytes = someBytes(300000);  // more than a pipe holds
    for (const std::size_t room : {bytes.size(), bytes.size() + 1, std::size_t{200000}}) {
        std::thread writer([&] {
            const std::string start = bytes.substr(0, room);
            kxFile::write("pipe", start);
        });
        std::string buffer(room, '#');
        std::size_t size = 0;
        EXPECT_TRUE(kxFile::read("pipe", buffer.data(), room, size));
        writer.join();
        EXPECT_EQ(size, std::min(room, bytes.size()));
        EXPECT_TRUE(buffer.compare(0, size, bytes, 0, size) == 0);
    }
}

// Reading continues after interruptions, and what was read before a failure counts.
TEST_F(FileOperations, ReadBoundedSaysHowFarItCame) {
    unsigned calls = 0;
    std::size_t most = 0;
    theRead = [&](int file, void* buffer, std::size_t size) -> ssize_t {
        most = std::max(most, size);
        if (++calls % 2 != 0) {
            errno = calls < 7 ? EINTR : EIO;
            return -1;
        }
        return pread(file, buffer, 2, calls - 2);  // two bytes at a time
    };
    std::string buffer(20, '#');
    std::size_t size = 77;
    bool more = true;
    errno = 0;
    const bool isRead = kxFile::read("file", buffer.data(), SIZE_MAX, size, &more);
    const int error = errno;
    theRead = nullptr;
    if (calls == 0) GTEST_SKIP() << "read cannot be replaced";
    EXPECT_FALSE(isRead);
    EXPECT_EQ(error, EIO);
    EXPECT_EQ(size, 6U);
    EXPECT_FALSE(more);
    EXPECT_EQ(buffer, "123456" + std::string(14, '#'));
    EXPECT_EQ(most, 1U << 30);  // no system refuses that much
}

// --- Sizes ---------------------------------------------------------------------------------------

TEST_F(FileOperations, GetFileSizeCountsBytes) {
    EXPECT_EQ(kxFile::getFileSize("file"), 9U);
    for (const char* path : {"", "empty", "missing", "file/x", "dir", "/", "dangling"})
        EXPECT_EQ(kxFile::getFileSize(path), 0U) << path;
}

TEST_F(FileOperations, GetFileSizeHas64Bits) {
    if (!kxtest::writeAt("huge", off_t{5} << 32, "0123456789"))
        GTEST_SKIP() << "no room for sparse files";
    EXPECT_EQ(kxFile::getFileSize("huge"), 21474836490U);
}

// --- Writing -------------------------------------------------------------------------------------

TEST_F(FileOperations, WriteReplacesAndAppendAdds) {
    const std::string odd("a\r\nb\n\x1A\0\xFF", 8);
    EXPECT_TRUE(kxFile::write("file", odd));
    EXPECT_EQ(kxtest::slurp("file"), odd);
    EXPECT_TRUE(kxFile::append("file", odd));
    EXPECT_EQ(kxtest::slurp("file"), odd + odd);
    EXPECT_TRUE(kxFile::append("file", ""));
    EXPECT_EQ(kxtest::slurp("file"), odd + odd);
    EXPECT_TRUE(kxFile::write("file", ""));
    EXPECT_EQ(kxtest::slurp("file"), "");
    EXPECT_TRUE(kxFile::write("written", someBytes(100000)));
    EXPECT_EQ(kxtest::slurp("written"), someBytes(100000));
    EXPECT_TRUE(kxFile::append("appended", "x"));
    EXPECT_EQ(kxtest::slurp("appended"), "x");
}

TEST_F(FileOperations, WriteAndAppendRefuse) {
    for (const char* path : {"", "dir", "missing/x", "file/x"}) {
        EXPECT_FALSE(kxFile::write(path, "new")) << path;
        EXPECT_FALSE(kxFile::append(path, "new")) << path;
    }
    EXPECT_EQ(kxtest::slurp("file"), "123456789");
}

TEST_F(FileOperations, AFullDiskIsNoticedAtEverySize) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    const int before = kxtest::nextDescriptor();
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 1U << 20}) {
        const std::string bytes(size, 'x');
        for (const auto function : {kxFile::write, kxFile::append}) {
            errno = 0;
            EXPECT_EQ(function("/dev/full", bytes), size == 0) << size;
            EXPECT_EQ(errno, size == 0 ? 0 : ENOSPC) << size;
        }
    }
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST_F(FileOperations, AByteThatDoesNotFitIsNoticed) {
    EXPECT_EQ(kxtest::inChild([] {
                  std::signal(SIGXFSZ, SIG_IGN);
                  const rlimit size{10000, 10000};
                  setrlimit(RLIMIT_FSIZE, &size);
                  std::string answers;
                  answers += std::to_string(kxFile::write("w", std::string(10000, 'x')));
                  answers += std::to_string(kxFile::append("w", "x"));
                  answers += std::to_string(kxFile::write("w", std::string(10001, 'x')));
                  return answers + (errno == EFBIG ? " EFBIG" : " other");
              }),
              "100 EFBIG");
}

// --- Copying -------------------------------------------------------------------------------------

TEST_F(FileOperations, CopyTakesEveryByte) {
    for (const std::size_t size : {0U, 1U, 1023U, 1024U, 1025U, 2047U, 2048U, 2049U, 100000U}) {
        const std::string bytes = someBytes(size);
        dir.write("source", bytes);
        dir.write("destination", std::string(3000, 'o'));
        EXPECT_TRUE(kxFile::copy("source", "destination")) << size;
        EXPECT_EQ(kxtest::slurp("destination"), bytes) << size;
        EXPECT_EQ(kxtest::slurp("source"), bytes) << size;
    }
    EXPECT_TRUE(kxFile::copy("file", "new"));
    EXPECT_EQ(kxtest::slurp("new"), "123456789");
}

TEST_F(FileOperations, CopyRefuses) {
    const int before = kxtest::nextDescriptor();
    EXPECT_FALSE(kxFile::copy("missing", "file"));
    EXPECT_FALSE(kxFile::copy("", "file"));
    EXPECT_EQ(kxtest::slurp("file"), "123456789");  // the source is opened first
    for (const char* destination : {"", "dir", "missing/x", "file/x"})
        EXPECT_FALSE(kxFile::copy("file", destination)) << destination;
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

// Deliberate.
TEST_F(FileOperations, CopyDoesNotDetectAWriteError) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no device that is always full";
    EXPECT_TRUE(kxFile::copy("file", "/dev/full"));
    dir.write("large", someBytes(1 << 20));
    EXPECT_TRUE(kxFile::copy("large", "/dev/full"));
}

// Deliberate.
TEST_F(FileOperations, CopyOntoItselfEmptiesTheFile) {
    EXPECT_TRUE(kxFile::copy("file", "./file"));
    EXPECT_EQ(kxtest::slurp("file"), "");
}

// --- Errors --------------------------------------------------------------------------------------

TEST_F(FileOperations, FailuresLeaveTheReasonInErrno) {
    struct {
        const char* name;
        std::function<bool()> call;
        int error;
    } const rows[] = {
        {"exists", [] { return kxFile::exists("missing"); }, ENOENT},
        {"createDir there", [] { return kxFile::createDir("file"); }, EEXIST},
        {"createDir deep", [] { return kxFile::createDir("missing/x"); }, ENOENT},
        {"createPath", [] { return kxFile::createPath("file/x/y"); }, ENOTDIR},
        {"remove", [] { return kxFile::remove("full"); }, ENOTEMPTY},
        {"rename missing", [] { return kxFile::rename(".", "missing", "x"); }, ENOENT},
        {"rename onto", [] { return kxFile::rename(".", "file", "full"); }, EISDIR},
        {"read missing",
         [] {
             std::string text;
             return kxFile::read("missing", text);
         },
         ENOENT},
        {"read directory",
         [] {
             std::vector<char> bytes;
             return kxFile::read("dir", bytes);
         },
         EISDIR},
        {"read into buffer",
         [] {
             char buffer = 0;
             return kxFile::read("file/x", &buffer);
         },
         ENOTDIR},
        {"write", [] { return kxFile::write("dir", "x"); }, EISDIR},
        {"append", [] { return kxFile::append("missing/x", "x"); }, ENOENT},
        {"copy from", [] { return kxFile::copy("missing", "x"); }, ENOENT},
        {"copy to", [] { return kxFile::copy("file", "dir"); }, EISDIR},
        {"getFileSize", [] { return kxFile::getFileSize("missing") != 0; }, ENOENT},
    };
    for (const auto& row : rows) {
        errno = 0;
        EXPECT_FALSE(row.call()) << row.name;
        EXPECT_EQ(errno, row.error) << row.name;
    }
}

TEST(Perror, LogsTheReasonAsAnErrorAndKeepsIt) {
    kxtest::Captured out(stdout), err(stderr);
    const LoggedErrors errors;
    errno = ENOENT;
    kxFile::perror("can't open 100%s");
    EXPECT_EQ(errno, ENOENT);
    const std::string text = std::string("can't open 100%s: ") + std::strerror(ENOENT);
    EXPECT_EQ(errors.text, text);
    EXPECT_EQ(err.text(), "\033[31m" + text + "\n\033[0m");
    EXPECT_EQ(out.text(), "");
}

TEST_F(FileOperations, NothingElseReports) {
    kxtest::Captured out(stdout), err(stderr);
    kxFile::createDir("missing/x");
    kxFile::createPath("file/x");
    kxFile::remove("full");
    kxFile::rename(".", "missing", "x");
    std::string text;
    kxFile::read("missing", text);
    kxFile::write("dir", "x");
    kxFile::copy("missing", "x");
    kxFile::getFileSize("missing");
    EXPECT_EQ(out.text() + err.text(), "");
}

// --- Stream positions ----------------------------------------------------------------------------

TEST(StreamPosition, BecomesAPlainOffset) {
    for (const std::streamoff offset : {std::streamoff{0}, std::streamoff{5} << 32,
                                        std::streamoff{-1}, std::streamoff{LLONG_MAX}}) {
        std::streampos position(offset);
        std::mbstate_t state{};
        std::memset(&state, 0x5A, sizeof state);
        position.state(state);
        EXPECT_EQ(kxFile::convertStreamPosToStreamOff(position), offset);
    }
}
