// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "cached_ofstream.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "bytes.h"
#include "descriptors.h"
#include "file_limit.h"
#include "kxtest.h"
#include "rows.h"

namespace {

using std::ios_base;

const std::string failed = "cached_streambuf::write_buffer: failed!\n";
const char* const fullDevice = "/dev/full";

long sizeOf(const std::string& path) {
    struct stat info {};
    EXPECT_EQ(stat(path.c_str(), &info), 0);
    return info.st_size;
}

/// Makes the protected operations public and counts the calls of sync that come through the virtual
/// table.
class Probe : public cached_streambuf {
public:
    using cached_streambuf::cached_streambuf;
    using cached_streambuf::overflow;
    int syncs = 0;

protected:
    int sync() override {
        ++syncs;
        return cached_streambuf::sync();
    }
};

// Plug-ins are compiled against this layout.
struct Fields : std::streambuf {
    std::FILE* file;
    bool ok;
    std::int64_t count;
    bool counting;
};
static_assert(sizeof(cached_streambuf) == sizeof(Fields), "fields of the buffer");
static_assert(sizeof(cached_ofstream) == sizeof(std::ostream) + sizeof(void*), "one pointer");
static_assert(std::is_base_of_v<std::ostream, cached_ofstream>, "an output stream");
static_assert(sizeof(std::declval<const cached_ofstream&>().size()) == 8, "64-bit count");
static_assert(sizeof(std::declval<const cached_streambuf&>().size()) == 8, "64-bit count");
static_assert(!std::is_copy_constructible_v<cached_streambuf>, "owns its file");
static_assert(!std::is_copy_constructible_v<cached_ofstream>, "owns its buffer");
static_assert(std::is_nothrow_destructible_v<cached_streambuf>, "an exception terminates");

}  // namespace

// --- Writing files -------------------------------------------------------------------------------

// What is on the disk at any moment: everything but the bytes after the last block of `size`.
class CachedStreambufModel : public testing::TestWithParam<int> {};
TEST_P(CachedStreambufModel, AgreesOnRandomSequences) {
    const int size = GetParam();
    const kxtest::TempDir dir;
    const std::string file = dir.write("f", "is truncated");
    std::string written, pending;
    const auto put = [&](char byte) {
        pending += byte;
        if (static_cast<int>(pending.size()) > size) {
            const std::size_t leaving = pending.size() - (size >= 1 ? 1 : 0);
            written += pending.substr(0, leaving);
            pending.erase(0, leaving);
        }
    };

    std::mt19937 random(static_cast<unsigned>(size + 2));
    cached_streambuf buffer(size, file.c_str());
    EXPECT_EQ(sizeOf(file), 0);
    for (int step = 0; step < 1000; ++step) {
        SCOPED_TRACE(step);
        std::string bytes(random() % (size < 100 ? 20 : 3000), '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        switch (random() % 10) {
            case 0:
                EXPECT_EQ(buffer.pubsync(), 0);
                written += pending;
                pending.clear();
                break;
            case 1:  // goes ahead of the pending bytes
                buffer.write_buffer(bytes.data(), bytes.size());
                written += bytes;
                break;
            case 2:
            case 3:
            case 4: {
                const char byte = static_cast<char>(random());
                const int stored = static_cast<unsigned char>(byte);
                const bool overflows = static_cast<int>(pending.size()) >= size;
                EXPECT_EQ(buffer.sputc(byte), overflows ? 0 : stored);
                put(byte);
                break;
            }
            default:
                EXPECT_EQ(buffer.sputn(bytes.data(), static_cast<std::streamsize>(bytes.size())),
                          static_cast<std::streamsize>(bytes.size()));
                for (const char byte : bytes) put(byte);
        }
        ASSERT_EQ(sizeOf(file), static_cast<long>(written.size()));
    }
    EXPECT_TRUE(buffer.is_valid());
    EXPECT_EQ(buffer.size(), 0);
    buffer.close();
    EXPECT_FALSE(buffer.is_valid());
    EXPECT_TRUE(kxtest::slurp(file) == written + pending);
}
INSTANTIATE_TEST_SUITE_P(BufferSizes, CachedStreambufModel,
                         testing::Values(-1, 0, 1, 2, 100, 4096, 32768), [](const auto& test) {
                             return test.param < 0 ? "Negative" : std::to_string(test.param);
                         });

TEST(CachedOfstream, NarrowsTheSizeToInt) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("f");
    cached_ofstream four(file.c_str(), 0x100000004);
    four << "abcd";
    EXPECT_EQ(sizeOf(file), 0);
    four << 'e';
    EXPECT_EQ(sizeOf(file), 4);
    cached_ofstream none(file.c_str(), 0x80000000);  // as a negative size, it means unbuffered
    none << "ab";
    EXPECT_EQ(sizeOf(file), 2);
}

TEST(CachedOfstream, Has32KiBWithoutASizeAndNoneOfSize0) {
    const kxtest::TempDir dir;
    cached_ofstream buffered(dir.file("f").c_str());
    buffered << std::string(32768, 'x');
    EXPECT_EQ(sizeOf(dir.file("f")), 0);
    buffered << 'x';
    EXPECT_EQ(sizeOf(dir.file("f")), 32768);
    cached_ofstream unbuffered(dir.file("g").c_str(), 0);
    unbuffered << "ab";
    EXPECT_EQ(sizeOf(dir.file("g")), 2);
}

TEST(CachedOfstream, WritesBytesUnchanged) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("f");
    const std::string bytes = "a\r\nb\n\r\x1a\n" + kxtest::everyByte();
    cached_ofstream out(file.c_str(), 100);
    out << bytes;
    out.put('\xff');
    out.close();
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    EXPECT_EQ(kxtest::slurp(file), bytes + '\xff');
}

TEST(CachedOfstream, DestructorFlushesAndClosesAlsoThroughTheVirtualBase) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("f");
    const int before = kxtest::nextDescriptor();
    auto out = std::make_unique<cached_ofstream>(file.c_str(), 100);
    *out << "abc";
    EXPECT_EQ(kxtest::slurp(file), "");
    EXPECT_NE(kxtest::nextDescriptor(), before);
    std::unique_ptr<std::ios> base = std::move(out);
    base.reset();
    EXPECT_EQ(kxtest::slurp(file), "abc");
    EXPECT_EQ(kxtest::nextDescriptor(), before);

    std::unique_ptr<std::streambuf> buffer = std::make_unique<cached_streambuf>(9, file.c_str());
    buffer->sputn("de", 2);
    buffer.reset();
    EXPECT_EQ(kxtest::slurp(file), "de");
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST(CachedOfstream, IsBadForAFileThatCannotBeCreated) {
    const kxtest::TempDir dir;
    kxtest::Captured err(stderr);
    cached_ofstream out(dir.file("missing/f").c_str(), 4);
    EXPECT_EQ(out.rdstate(), ios_base::badbit);
    out.clear();
    out << "dropped silently";
    out.flush();
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    EXPECT_EQ(out.size(), 0);
    out.close();
    EXPECT_EQ(out.rdstate(), ios_base::badbit);
    EXPECT_EQ(err.text(), "");
}

TEST(CachedOfstream, CloseSetsBadbitOnlyWithoutAnOpenFile) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    cached_ofstream out(dir.file("f").c_str(), 4);
    out.close();
    EXPECT_EQ(kxtest::nextDescriptor(), before);
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    out.close();
    EXPECT_EQ(out.rdstate(), ios_base::badbit);
}

TEST(CachedOfstream, HasNoPositions) {
    const kxtest::TempDir dir;
    cached_ofstream out(dir.file("f").c_str(), 4);
    out << "abcdef";
    EXPECT_EQ(out.tellp(), -1);
    EXPECT_EQ(out.rdbuf()->pubseekoff(0, ios_base::beg, ios_base::out), std::streampos(-1));
    EXPECT_EQ(out.rdbuf()->pubseekpos(0, ios_base::out), std::streampos(-1));
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    out.seekp(0);
    EXPECT_EQ(out.rdstate(), ios_base::failbit);
}

TEST(CachedStreambuf, OverflowSyncsThroughTheVirtualTableAndAnswersZero) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("f");
    Probe buffer(2, file.c_str());
    buffer.sputn("ab", 2);
    EXPECT_EQ(buffer.syncs, 0);
    EXPECT_EQ(buffer.sputc('c'), 0);
    EXPECT_EQ(buffer.syncs, 1);
    EXPECT_EQ(kxtest::slurp(file), "ab");
    EXPECT_EQ(buffer.overflow('d'), 0);  // empties the area though it is not full
    EXPECT_EQ(kxtest::slurp(file), "abc");
    EXPECT_EQ(buffer.overflow(std::char_traits<char>::eof()), 0);
    EXPECT_EQ(kxtest::slurp(file), "abcd");
    EXPECT_EQ(buffer.syncs, 3);
    buffer.close();
    EXPECT_EQ(buffer.syncs, 4);
    buffer.close();
    EXPECT_EQ(buffer.syncs, 4);  // nothing is synced without a file
}

TEST(CachedStreambuf, UnbufferedOverflowSyncsThroughTheVirtualTable) {
    Probe buffer(0, nullptr);
    EXPECT_EQ(buffer.overflow('a'), 0);
    EXPECT_EQ(buffer.overflow(std::char_traits<char>::eof()), 0);
    EXPECT_EQ(buffer.size(), 1);
    EXPECT_EQ(buffer.syncs, 2);
}

TEST(CachedStreambuf, OpenNeitherClosesTheFileNorResetsTheBuffer) {
    const kxtest::TempDir dir;
    const std::string first = dir.file("a"), second = dir.write("b", "is truncated");
    const int lost = kxtest::nextDescriptor();
    cached_streambuf buffer(4, first.c_str());
    buffer.sputn("abcdef", 6);
    buffer.open(nullptr);
    buffer.open(second.c_str());
    EXPECT_TRUE(buffer.is_valid());
    buffer.close();
    EXPECT_EQ(kxtest::slurp(first), "abcd");
    EXPECT_EQ(kxtest::slurp(second), "ef");
    EXPECT_TRUE(kxtest::isOpenOn(lost, first));
    close(lost);  // nothing else can close it
}

TEST(CachedStreambuf, OpensAgainAfterClose) {
    const kxtest::TempDir dir;
    cached_streambuf buffer(4, dir.file("missing/f").c_str());
    EXPECT_FALSE(buffer.is_valid());
    buffer.open(dir.file("f").c_str());
    EXPECT_TRUE(buffer.is_valid());
    buffer.sputn("ab", 2);
    buffer.close();
    EXPECT_EQ(kxtest::slurp(dir.file("f")), "ab");
}

// --- Writes that fail ----------------------------------------------------------------------------

namespace {

using Buffer = std::unique_ptr<cached_streambuf>;

void put(const Buffer& buffer, int n) {
    EXPECT_EQ(buffer->sputn(std::string(static_cast<std::size_t>(n), 'x').data(), n), n);
}

}  // namespace

struct FailureCase {
    const char* name;
    void (*write)(Buffer& buffer, int size);  // makes the device refuse a write for the first time
};
static void PrintTo(const FailureCase& c, std::ostream* os) { *os << c.name; }

class CachedStreambufFull : public testing::TestWithParam<FailureCase> {};
TEST_P(CachedStreambufFull, ReportsTheFailureOnceAtEverySize) {
    if (access(fullDevice, W_OK) != 0) GTEST_SKIP() << "no " << fullDevice;
    for (int size = 0; size <= 8192; ++size) {
        SCOPED_TRACE(size);
        kxtest::Captured err(stderr);
        Buffer buffer = std::make_unique<cached_streambuf>(size, fullDevice);
        ASSERT_TRUE(buffer->is_valid());
        GetParam().write(buffer, size);
        ASSERT_EQ(err.text(), failed);
        if (buffer) {
            ASSERT_FALSE(buffer->is_valid());
            put(buffer, size + 1);
            buffer->write_buffer("x", 1);
            ASSERT_EQ(buffer->pubsync(), 0);
            ASSERT_EQ(buffer->sputc('x'), size == 0 ? 0 : 'x');
            ASSERT_FALSE(buffer->is_valid());
            ASSERT_EQ(buffer->size(), 0);
            buffer.reset();
        }
        ASSERT_EQ(err.text(), failed);
    }
}
static const FailureCase failureCases[] = {
    {"Overflow", [](Buffer& buffer, int size) { put(buffer, size + 1); }},
    {"Flush",
     [](Buffer& buffer, int size) {
         put(buffer, size < 1 ? 1 : size);
         EXPECT_EQ(buffer->is_valid(), size >= 1);  // nothing has been written yet, or it failed
         EXPECT_EQ(buffer->pubsync(), 0);
     }},
    {"WriteBuffer", [](Buffer& buffer, int) { buffer->write_buffer("x", 1); }},
    {"Close",
     [](Buffer& buffer, int) {
         put(buffer, 1);
         buffer->close();
     }},
    {"Destructor",
     [](Buffer& buffer, int) {
         put(buffer, 1);
         buffer.reset();
     }},
};
INSTANTIATE_TEST_SUITE_P(Table, CachedStreambufFull, testing::ValuesIn(failureCases),
                         kxtest::nameOfRow);

// close() tests validity before its own flush, so the state shows only the failure of an earlier
// flush.
TEST(CachedOfstreamFull, CloseReportsOnlyFailuresBeforeItsOwnFlush) {
    if (access(fullDevice, W_OK) != 0) GTEST_SKIP() << "no " << fullDevice;
    for (const bool flush : {false, true}) {
        kxtest::Captured err(stderr);
        cached_ofstream out(fullDevice, 4096);
        out << "abc";
        if (flush) out.flush();
        EXPECT_EQ(out.rdstate(), ios_base::goodbit);
        out.close();
        EXPECT_EQ(out.rdstate(), flush ? ios_base::badbit : ios_base::goodbit);
        EXPECT_EQ(err.text(), failed);
    }
}

// If close() throws, the file must not stay open until the stream is destroyed.
TEST(CachedOfstreamFull, CloseClosesTheFileBeforeBadbitThrows) {
    const kxtest::TempDir dir;
    kxtest::Captured err(stderr);
    const int before = kxtest::nextDescriptor();
    cached_ofstream out(dir.file("f").c_str(), 100);
    out.exceptions(ios_base::badbit);
    {
        const kxtest::ScopedFileLimit limit(2);
        out << "abc";
        out.flush();
    }
    EXPECT_THROW(out.close(), ios_base::failure);
    EXPECT_EQ(kxtest::nextDescriptor(), before);
    EXPECT_EQ(out.rdstate(), ios_base::badbit);
    EXPECT_THROW(out.close(), ios_base::failure);  // nothing is open any more
    EXPECT_EQ(kxtest::slurp(dir.file("f")), "ab");
}

TEST(CachedOfstreamFull, CloseThatSucceedsThrowsNothing) {
    const kxtest::TempDir dir;
    cached_ofstream out(dir.file("f").c_str(), 100);
    out.exceptions(ios_base::badbit | ios_base::failbit | ios_base::eofbit);
    out << "abc";
    EXPECT_NO_THROW(out.close());
    EXPECT_EQ(kxtest::slurp(dir.file("f")), "abc");
}

TEST(CachedStreambufFull, NothingReachesTheFileAfterAFailure) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("f"), other = dir.file("g");
    for (const int size : {0, 1, 100, 8192}) {
        SCOPED_TRACE(size);
        kxtest::Captured err(stderr);
        cached_streambuf buffer(size, file.c_str());
        {
            const kxtest::ScopedFileLimit limit(250);
            buffer.sputn(std::string(300, 'x').data(), 300);
            buffer.pubsync();
        }
        EXPECT_FALSE(buffer.is_valid());
        buffer.sputn(std::string(300, 'y').data(), 300);  // there is room again
        buffer.write_buffer("z", 1);
        buffer.close();
        EXPECT_EQ(kxtest::slurp(file), std::string(250, 'x'));
        buffer.open(other.c_str());  // another file does not clear the failure either
        EXPECT_FALSE(buffer.is_valid());
        buffer.sputn("z", 1);
        buffer.close();
        EXPECT_EQ(kxtest::slurp(other), "");
        EXPECT_EQ(err.text(), failed);
    }
}

// --- Counting ------------------------------------------------------------------------------------

TEST(CachedOfstreamCount, IsExactAtAnyTime) {
    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd(dir.path());
    cached_ofstream out;
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    EXPECT_EQ(out.size(), 0);
    out << "abc";
    EXPECT_EQ(out.size(), 3);
    out.put('\n').put('\xff');
    EXPECT_EQ(out.size(), 5);
    out.flush();
    EXPECT_EQ(out.size(), 5);
    EXPECT_EQ(out.tellp(), -1);
    out.close();
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    EXPECT_EQ(out.size(), 5);
    EXPECT_EQ(kxtest::list(dir.path()), std::vector<std::string>{});
}

TEST(CachedOfstreamCount, CountsABufferOnlyWhenItIsFlushed) {
    cached_ofstream out(nullptr, 4096);
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    out << std::string(4096, 'x');
    EXPECT_EQ(out.size(), 0);
    out << 'x';
    EXPECT_EQ(out.size(), 4096);
    out.close();  // without a file, it does not even flush
    EXPECT_EQ(out.rdstate(), ios_base::goodbit);
    EXPECT_EQ(out.size(), 4096);
    out.flush();
    EXPECT_EQ(out.size(), 4097);
}

TEST(CachedStreambufCount, GoesBeyond32Bits) {
    cached_streambuf buffer(0, nullptr);
    EXPECT_TRUE(buffer.is_valid());
    buffer.write_buffer("", 5000000000);  // the bytes themselves are not looked at
    buffer.sputc('x');
    EXPECT_EQ(buffer.size(), 5000000001);
}

TEST(CachedStreambufCount, TruncatesAFileThatIsOpenedAndStillCounts) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("f", "is truncated");
    cached_streambuf buffer(4, nullptr);
    buffer.open(file.c_str());
    buffer.sputn("abcdef", 6);
    EXPECT_EQ(buffer.size(), 4);
    buffer.close();  // flushes, now that there is a file
    EXPECT_EQ(buffer.size(), 6);
    EXPECT_TRUE(buffer.is_valid());
    EXPECT_EQ(kxtest::slurp(file), "");
    buffer.open(dir.file("missing/f").c_str());
    EXPECT_TRUE(buffer.is_valid());
}
