// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Files: a failure is the result that stands for it, with the error number of the call that failed.
// Success is reported only for what is really there.
#include <stdexcept>
#include <vector>

#include "bytes.h"
#include "kxCRC32.h"
#include "kxFile.h"
#include "kxUtils.h"
#include "kxtest.h"
#include "operations.h"

namespace {

using kxtest::Attempt;
using kxtest::TempDir;

// Several stdio blocks.
const std::string bytes = kxtest::someBytes(10000);

// A refusal comes only after a failure, and leaves the error number of that failure.
void expectRefusal(const Attempt& attempt) {
    EXPECT_TRUE(attempt.failed());
    EXPECT_EQ(attempt.errnoAfter(), attempt.error());
}

// --- Access --------------------------------------------------------------------------------------

void currentDir(Attempt& attempt) {
    const TempDir dir;
    const kxtest::ScopedCwd cwd(dir.makeDir(part));
    std::string answer = "none";
    attempt.run([&] { answer = kxFile::getCurrentDir(); });
    if (attempt.failedAt("getcwd"))
        EXPECT_EQ(answer, "");
    else
        EXPECT_EQ(answer, attempt.outOfMemory() ? "none" : dir.file(part));
    EXPECT_EQ(attempt.outOfMemory(), attempt.failedAt("allocation"));
}

// If a directory cannot be entered, the current one stays.
void setCurrentDir(Attempt& attempt) {
    const TempDir dir;
    const kxtest::ScopedCwd cwd(dir.path());
    const std::string directory = dir.makeDir(part);
    attempt.run([&] { kxFile::setCurrentDir(directory); });
    EXPECT_EQ(kxFile::getCurrentDir(), attempt.failed() ? dir.path() : directory);
}

void exists(Attempt& attempt) {
    const TempDir dir;
    bool answer = false;
    attempt.run([&] { answer = kxFile::exists(dir.path()); });
    EXPECT_EQ(answer, !attempt.failed());
    if (!answer) expectRefusal(attempt);
}

// The texts that the host was asked to show.
std::string shown;
bool show(const char* /*request*/, kxMessage& message, int /*flags*/) {
    shown = boost::any_cast<std::string>(message.get("text"));
    return true;
}

// Asks and logs. The reason for a refusal is shown. The result is true if nothing fails.
void check(Attempt& attempt, bool (*function)(const std::string&, bool, bool),
           const std::string& file) {
    shown.clear();
    kxUtils::init(show);
    bool answer = false;
    attempt.run([&] { answer = function(file, true, true); });
    kxUtils::init(nullptr);
    const std::string reason = std::move(shown);
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (answer || attempt.outOfMemory()) return;
    EXPECT_TRUE(attempt.failed());
    // If a file cannot be looked at, another call finds out more.
    EXPECT_TRUE(attempt.errnoAfter() == attempt.error() || attempt.failedAt("stat"));
    EXPECT_NE(attempt.errnoAfter(), 0);
    EXPECT_TRUE(startsWith(reason, "File '" + file + "' ")) << reason;
}

void checkRead(Attempt& attempt) {
    const TempDir dir;
    check(attempt, kxFile::checkRead, dir.write(part, bytes));
}

// A missing file is refused in any case. The reason is that it is missing, unless the system cannot
// look.
void checkReadMissing(Attempt& attempt) {
    const TempDir dir;
    bool answer = true;
    attempt.run([&] { answer = kxFile::checkRead(dir.file(part), /*ask=*/true, /*log=*/true); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (attempt.outOfMemory()) return;
    EXPECT_FALSE(answer);
    EXPECT_EQ(attempt.errnoAfter(), attempt.failedAt("stat") ? EACCES : ENOENT);
}

// Whatever the result, a file that exists keeps its content.
void checkWrite(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write(part, bytes);
    check(attempt, kxFile::checkWrite, file);
    ASSERT_EQ(kxtest::list(dir.path()), std::vector<std::string>{part});
    EXPECT_EQ(kxtest::slurp(file), bytes);
}

void checkWriteNew(Attempt& attempt) {
    const TempDir dir;
    check(attempt, kxFile::checkWrite, dir.file(part));
    EXPECT_EQ(kxtest::exists(dir.file(part)), attempt.failedAt("unlink"));
}

// The error number can be used afterwards.
void reportError(Attempt& attempt) {
    attempt.run([] {
        errno = ENOTDIR;
        kxFile::perror(part);
    });
    EXPECT_FALSE(attempt.outOfMemory());
    EXPECT_EQ(attempt.errnoAfter(), ENOTDIR);
}

// --- Directories and names -----------------------------------------------------------------------

void createDir(Attempt& attempt) {
    const TempDir dir;
    bool done = false;
    attempt.run([&] { done = kxFile::createDir(dir.file("a")); });
    EXPECT_EQ(done, !attempt.failed());
    EXPECT_EQ(kxtest::exists(dir.file("a")), done);
    if (!done) expectRefusal(attempt);
}

// The first directories exist. One that cannot be looked at cannot be created again.
void createPath(Attempt& attempt) {
    const TempDir dir;
    const std::string path = dir.path() + '/' + part + "/b/c";
    bool done = false;
    attempt.run([&] { done = kxFile::createPath(path); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    EXPECT_EQ(done && !kxtest::exists(path), false);
    EXPECT_TRUE(done || attempt.failed());
    EXPECT_FALSE(done && attempt.failedAt("mkdir"));
    EXPECT_TRUE(kxFile::createPath(path));
    EXPECT_TRUE(kxtest::exists(path));
}

void removeFile(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write(part, bytes);
    bool done = false;
    attempt.run([&] { done = kxFile::remove(file); });
    EXPECT_EQ(kxtest::exists(file), !done);
    EXPECT_EQ(done, !attempt.failedAt("unlink"));
    if (!done) expectRefusal(attempt);
}

void removeDirectory(Attempt& attempt) {
    const TempDir dir;
    const std::string directory = dir.makeDir(part);
    bool done = false;
    attempt.run([&] { done = kxFile::remove(directory); });
    EXPECT_EQ(kxtest::exists(directory), !done);
    EXPECT_EQ(done, !attempt.failedAt("unlink"));
    if (!done) expectRefusal(attempt);
}

void renameFile(Attempt& attempt) {
    const TempDir dir;
    dir.write("a", bytes);
    bool done = false;
    attempt.run([&] { done = kxFile::rename(dir.path(), "a", part); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failedAt("allocation"));
    EXPECT_EQ(done, !attempt.failed());
    EXPECT_EQ(kxtest::slurp(dir.file(done ? part : "a")), bytes);
    EXPECT_EQ(kxtest::list(dir.path()).size(), 1u);
    if (!done && !attempt.outOfMemory()) expectRefusal(attempt);
}

// --- Content -------------------------------------------------------------------------------------

// If a read fails before the first byte, the result is a refusal. A later failure goes unnoticed,
// and the rest is zero bytes.
void expectRead(const Attempt& attempt, bool done, const std::string& content) {
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (done) {
        ASSERT_EQ(content.size(), bytes.size());
        for (std::size_t i = 0; i < bytes.size(); ++i)
            ASSERT_TRUE(content[i] == bytes[i] || (content[i] == 0 && attempt.failedAt("read")));
    } else if (!attempt.outOfMemory()) {
        expectRefusal(attempt);
    }
}

void readToBuffer(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes);
    std::string content(bytes.size(), '\0');
    bool done = false;
    attempt.run([&] { done = kxFile::read(file, content.data()); });
    expectRead(attempt, done, content);
}

// No failure goes unnoticed here; what was read before a failure counts.
void readBounded(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes);
    constexpr std::size_t room = 7000;
    std::string content(room, '#');
    std::size_t size = 77;
    bool done = false, more = false;
    attempt.run([&] { done = kxFile::read(file, content.data(), room, size, &more); });
    EXPECT_FALSE(attempt.outOfMemory());
    // Three things do no harm: an interruption, half a read, and a failure to close a file that was
    // only read.
    const bool isHarmless =
        !attempt.failed() || attempt.failedAt("close") ||
        (attempt.failedAt("read") && (attempt.error() == 0 || attempt.error() == EINTR));
    EXPECT_EQ(done, isHarmless);
    EXPECT_EQ(more, done);
    if (done) {
        EXPECT_EQ(size, room);
    } else {
        expectRefusal(attempt);
        EXPECT_TRUE(size == 0 || (size == room && attempt.failedAt("read")));
    }
    ASSERT_LE(size, room);
    EXPECT_EQ(content, bytes.substr(0, size) + std::string(room - size, '#'));
}

template <typename Container>
void readTo(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes);
    Container content{'o', 'l', 'd'};
    bool done = false;
    attempt.run([&] { done = kxFile::read(file, content); });
    expectRead(attempt, done, std::string(content.begin(), content.end()));
    if (!done) {
        EXPECT_TRUE(content.empty());
    }
    // A lack of memory is a plain refusal.
    EXPECT_FALSE(attempt.outOfMemory());
    EXPECT_TRUE(kxFile::read(file, content));
    EXPECT_EQ(std::string(content.begin(), content.end()), bytes);
}

void expectWritten(const Attempt& attempt, bool done, const std::string& before,
                   const std::string& content) {
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    const bool isHarmless = !attempt.failed() || attempt.error() == 0;  // half first, then the rest
    EXPECT_TRUE(done || !isHarmless || attempt.outOfMemory());
    if (done) {
        EXPECT_EQ(content, before + bytes);
    } else {
        EXPECT_TRUE(startsWith(content, before) && startsWith(before + bytes, content));
        if (!attempt.outOfMemory()) expectRefusal(attempt);
    }
    if (attempt.failedAt("open") || attempt.failedAt("close")) {
        EXPECT_FALSE(done);
    }
}

void writeFile(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "");
    bool done = false;
    attempt.run([&] { done = kxFile::write(file, bytes); });
    expectWritten(attempt, done, "", kxtest::slurp(file));
}

void appendToFile(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "old");
    bool done = false;
    attempt.run([&] { done = kxFile::append(file, bytes); });
    expectWritten(attempt, done, "old", kxtest::slurp(file));
}

// By contract only the opening of the two files is checked.
void copyFile(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes), copy = dir.write("b", "");
    bool done = false;
    attempt.run([&] { done = kxFile::copy(file, copy); });
    EXPECT_FALSE(done && attempt.failedAt("open"));
    if (!done) expectRefusal(attempt);
    if (!attempt.failed()) {
        EXPECT_EQ(kxtest::slurp(copy), bytes);
    }
    EXPECT_EQ(kxtest::slurp(file), bytes);
}

void fileSize(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes);
    std::uint64_t size = 0;
    attempt.run([&] { size = kxFile::getFileSize(file); });
    EXPECT_TRUE(size == bytes.size() || size == 0);
    if (size == 0) expectRefusal(attempt);
}

// --- Checksums -----------------------------------------------------------------------------------

// The CRC-32 of `bytes` by another implementation.
const std::uint32_t crc = kxCRC32::calc_bitwise(bytes.data(), bytes.size());

// A failure before the first byte gives 0; a later one counts as the end of the file.
void checksum(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "skip" + bytes);
    std::uint32_t answer = 1;
    attempt.run([&] { answer = kxFile::getChecksum(file, 4); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (!attempt.failed()) {
        EXPECT_EQ(answer, crc);
    } else if (attempt.failedAt("open")) {
        EXPECT_EQ(answer, 0u);
    }
}

void checksumAppend(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", "old"),
                      footer = std::string(1, '\0') + "TALOCRC0000ABCD";
    bool done = false;
    attempt.run([&] { done = kxFile::appendChecksum(file, 0xABCD); });
    const std::string content = kxtest::slurp(file);
    EXPECT_TRUE(startsWith("old" + footer, content));
    if (done) {
        EXPECT_EQ(content, "old" + footer);
    } else if (!attempt.outOfMemory()) {
        expectRefusal(attempt);
    }
    EXPECT_EQ(attempt.failedAt("write") && attempt.error() == ENOSPC && done, false);
}

std::string stamped(const TempDir& dir) {
    const std::string file = dir.write("a", bytes);
    EXPECT_TRUE(kxFile::appendChecksum(file, crc));
    return file;
}

// The result says what keeps the file from being read. Nothing that was not read is called correct.
void checksumFind(Attempt& attempt) {
    using Info = kxFile::ChecksumInfo;
    const TempDir dir;
    const std::string file = stamped(dir);
    std::optional<Info> found;
    attempt.run([&] { found = kxFile::findChecksum(file); });
    EXPECT_EQ(found.has_value(), !attempt.outOfMemory());
    if (!found) return;
    if (found->state == Info::State::correct) {
        EXPECT_EQ(found->computed, crc);
        EXPECT_EQ(found->covered, bytes.size());
        EXPECT_EQ(found->error, 0);
    } else {
        EXPECT_EQ(found->error, attempt.error());
        EXPECT_NE(found->error, 0);
    }
}

// An exception thrown by the progress function reaches the caller.
void checksumFindWithProgress(Attempt& attempt) {
    const TempDir dir;
    const std::string file = stamped(dir);
    std::string steps;
    std::optional<kxFile::ChecksumInfo> found;
    const auto progress = [&](std::uint64_t size) { steps += std::to_string(size) + part; };
    attempt.run([&] { found = kxFile::findChecksum(file, 0, progress); });
    EXPECT_EQ(found.has_value(), !attempt.outOfMemory());
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    found = kxFile::findChecksum(file);
    EXPECT_TRUE(found->state == kxFile::ChecksumInfo::State::correct);
}

// Either the exception for the number, or the one for lack of memory.
void checksumCheckBadMeta(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", bytes + "TALOMETAxxxxxxxx");
    bool passes = false, isThrown = false;
    std::uint32_t computed = 1;
    attempt.run([&] {
        try {
            passes = kxFile::checkChecksum(file, computed);
        } catch (const std::invalid_argument&) {
            isThrown = true;
        }
    });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    EXPECT_TRUE(isThrown || attempt.failed());
    EXPECT_LE(passes + isThrown + attempt.outOfMemory(), 1);
    EXPECT_EQ(computed, 0u);
}

void checksumCheck(Attempt& attempt) {
    const TempDir dir;
    const std::string file = stamped(dir);
    bool passes = false;
    std::uint32_t computed = 1;
    attempt.run([&] { passes = kxFile::checkChecksum(file, computed); });
    if (attempt.outOfMemory()) return;
    const bool isCorrect = startsWith(attempt.out(), "Found correct");
    EXPECT_TRUE(isCorrect || attempt.failed());
    EXPECT_EQ(computed, isCorrect ? crc : 0);
    EXPECT_EQ(passes, !startsWith(attempt.out(), "Found incorrect"));
}

void fileId(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write("a", part + part);
    const std::string size = "120";
    const std::string id =
        size + std::to_string(kxCRC32::calc_bitwise((part + part).data(), 2 * part.size()));
    std::string answer;
    attempt.run([&] { answer = kxFile::getFileID(file); });
    if (!attempt.failed() || attempt.failedAt("close")) {
        EXPECT_EQ(answer, id);
    } else if (attempt.failedAt("open")) {
        EXPECT_EQ(answer, "00");
    }
    EXPECT_EQ(answer.empty(), attempt.outOfMemory());
}

}  // namespace

const std::vector<Operation> fileOperations = {
    {"CurrentDir", currentDir, allSteps},
    {"SetCurrentDir", setCurrentDir, systemCalls},
    {"Exists", exists, systemCalls},
    {"CheckRead", checkRead, allSteps},
    {"CheckReadMissing", checkReadMissing, allSteps},
    {"CheckWrite", checkWrite, allSteps},
    {"CheckWriteNew", checkWriteNew, allSteps},
    {"ReportError", reportError, allSteps},
    {"CreateDir", createDir, systemCalls},
    {"CreatePath", createPath, allSteps},
    {"Remove", removeFile, systemCalls},
    {"RemoveDirectory", removeDirectory, systemCalls},
    {"Rename", renameFile, allSteps},
    {"ReadToBuffer", readToBuffer, allSteps},
    {"ReadBounded", readBounded, allSteps},
    {"ReadToString", readTo<std::string>, allSteps},
    {"ReadToVector", readTo<std::vector<char>>, allSteps},
    {"Write", writeFile, allSteps},
    {"Append", appendToFile, allSteps},
    {"Copy", copyFile, allSteps},
    {"FileSize", fileSize, allSteps},

    {"Checksum", checksum, allSteps},
    {"ChecksumAppend", checksumAppend, allSteps},
    {"ChecksumFind", checksumFind, allSteps},
    {"ChecksumFindWithProgress", checksumFindWithProgress, allSteps},
    {"ChecksumCheck", checksumCheck, allSteps},
    {"ChecksumCheckBadMeta", checksumCheckBadMeta, allSteps},
    {"FileId", fileId, allSteps},
};
