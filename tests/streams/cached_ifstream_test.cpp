// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "cached_ifstream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <type_traits>

#include "bytes.h"
#include "descriptors.h"
#include "emulator.h"
#include "kxtest.h"
#include "reference/cached_input_model.h"
#include "rows.h"

namespace {

using std::ios_base;

constexpr int endOfFile = std::char_traits<char>::eof();
const ios_base::openmode neither{};

/// Bytes 0, 1, 2, ...
std::string counted(int n) {
    std::string bytes;
    for (int i = 0; i < n; ++i) bytes += static_cast<char>(i);
    return bytes;
}

std::string rest(std::streambuf& buffer) {
    return {std::istreambuf_iterator<char>(&buffer), std::istreambuf_iterator<char>()};
}

long position(std::streambuf& buffer) { return buffer.pubseekoff(0, ios_base::cur, ios_base::in); }

// Plug-ins are compiled against this layout.
struct Fields : std::streambuf {
    char* buffer;
    std::int32_t size;
    std::FILE* file;
    bool valid;
};
static_assert(sizeof(cached_istreambuf) == sizeof(Fields), "fields of the buffer");
static_assert(sizeof(cached_ifstream) == sizeof(std::istream) + sizeof(void*), "one pointer");
static_assert(std::is_base_of_v<std::istream, cached_ifstream>, "an input stream");
static_assert(!std::is_copy_constructible_v<cached_istreambuf>, "owns its file");
static_assert(!std::is_copy_constructible_v<cached_ifstream>, "owns its buffer");

}  // namespace

// --- Opening, closing, buffer sizes --------------------------------------------------------------

struct BlockCase {
    const char* name;
    unsigned long size;
    long block;
};
static void PrintTo(const BlockCase& c, std::ostream* os) { *os << c.name; }

class CachedIfstreamBlock : public testing::TestWithParam<BlockCase> {};
TEST_P(CachedIfstreamBlock, RefillsByTheBufferSize) {
    const BlockCase& c = GetParam();
    const kxtest::TempDir dir;
    const std::string bytes = kxtest::someBytes(80000);
    cached_ifstream in(dir.write("f", bytes).c_str(), c.size);
    std::string read;
    for (long block = 1; block <= 2; ++block) {
        EXPECT_EQ(in.rdbuf()->in_avail(), 0);
        read += static_cast<char>(in.get());
        EXPECT_EQ(in.rdbuf()->in_avail(), c.block - 1);
        EXPECT_EQ(in.tellg(), block * c.block);
        while (in.rdbuf()->in_avail() > 0) read += static_cast<char>(in.get());
    }
    EXPECT_EQ(read + rest(*in.rdbuf()), bytes);
}
static const BlockCase blockCases[] = {
    {"Default", 0, 32768}, {"One", 1, 1},           {"Hundred", 100, 100},
    {"Page", 4096, 4096},  {"Large", 40000, 40000}, {"NarrowedToInt", 0x100000064, 100},
};
INSTANTIATE_TEST_SUITE_P(Table, CachedIfstreamBlock, testing::ValuesIn(blockCases),
                         kxtest::nameOfRow);

TEST(CachedIfstream, HasTheDefaultBufferWithoutASize) {
    const kxtest::TempDir dir;
    cached_ifstream in(dir.write("f", kxtest::someBytes(40000)).c_str());
    in.get();
    EXPECT_EQ(in.tellg(), 32768);
}

TEST(CachedIstreambuf, ReplacesSizeZeroByTheDefault) {
    const kxtest::TempDir dir;
    cached_istreambuf buffer(0, dir.write("f", kxtest::someBytes(40000)).c_str());
    buffer.sgetc();
    EXPECT_EQ(buffer.in_avail(), 32768);
}

TEST(CachedIstreambuf, ThrowsForANegativeSize) {
    if (kxtest::underSanitizer() || kxtest::underValgrind())
        GTEST_SKIP() << "the tool's allocator aborts instead";
    const kxtest::TempDir dir;
    const std::string file = dir.write("f", "abc");
    const int before = kxtest::nextDescriptor();
    EXPECT_THROW(cached_istreambuf(-1, file.c_str()), std::bad_alloc);
    EXPECT_THROW(cached_ifstream(file.c_str(), 0x80000000), std::bad_alloc);  // narrowed size
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST(CachedIfstream, IsBadForAFileThatCannotBeOpened) {
    const kxtest::TempDir dir;
    const std::string missing = dir.file("missing");
    for (const char* name : {missing.c_str(), static_cast<const char*>(nullptr)}) {
        cached_ifstream in(name, 100);
        EXPECT_EQ(in.rdstate(), ios_base::badbit);
        EXPECT_EQ(in.rdbuf()->sgetc(), endOfFile);
        EXPECT_EQ(position(*in.rdbuf()), -1);
        EXPECT_EQ(in.rdbuf()->pubseekpos(0), std::streampos(-1));
        in.clear();
        EXPECT_EQ(in.get(), endOfFile);
    }
    EXPECT_FALSE(kxtest::exists(missing));
}

TEST(CachedIfstream, ReadsAnEmptyFileAsEndOfFile) {
    const kxtest::TempDir dir;
    cached_ifstream in(dir.write("f", "").c_str());
    EXPECT_EQ(in.rdstate(), ios_base::goodbit);
    EXPECT_EQ(in.get(), endOfFile);
    EXPECT_EQ(in.rdstate(), ios_base::eofbit | ios_base::failbit);
}

TEST(CachedIfstream, DeliversBytesUnchanged) {
    const kxtest::TempDir dir;
    std::string bytes = "a\r\nb\n\r\x1a\n";
    for (int i = 0; i < 3; ++i) bytes += counted(256);
    for (const unsigned long size : {0UL, 1UL, 3UL, 256UL}) {
        cached_ifstream in(dir.write("f", bytes).c_str(), size);
        EXPECT_EQ(rest(*in.rdbuf()), bytes);
    }
}

TEST(CachedIstreambuf, DeliversTheHighestByteUnsigned) {
    const kxtest::TempDir dir;
    cached_istreambuf buffer(1, dir.write("f", "\xff\x80").c_str());
    EXPECT_EQ(buffer.sbumpc(), 255);
    EXPECT_EQ(buffer.snextc(), endOfFile);
}

TEST(CachedIfstream, CloseSetsBadbitOnlyWithoutAnOpenFile) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    cached_ifstream in(dir.write("f", "abc").c_str());
    EXPECT_NE(kxtest::nextDescriptor(), before);
    in.close();
    EXPECT_EQ(kxtest::nextDescriptor(), before);
    EXPECT_EQ(in.rdstate(), ios_base::goodbit);
    in.close();
    EXPECT_EQ(in.rdstate(), ios_base::badbit);
}

// badbit is set only if no file is open, so an exception cannot leave one open.
TEST(CachedIfstream, CloseThrowsOnlyWithoutAnOpenFile) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("f", "abc");
    const int before = kxtest::nextDescriptor();
    cached_ifstream in(file.c_str(), 4);
    std::string word;
    in >> word >> word;  // to the end and beyond
    EXPECT_TRUE(in.fail());
    in.exceptions(ios_base::badbit);
    EXPECT_NO_THROW(in.close());
    EXPECT_EQ(kxtest::nextDescriptor(), before);
    EXPECT_THROW(in.close(), ios_base::failure);
}

TEST(CachedIfstream, DestructorClosesTheFileAlsoThroughTheVirtualBase) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("f", "abc");
    const int before = kxtest::nextDescriptor();
    std::unique_ptr<std::ios> stream = std::make_unique<cached_ifstream>(file.c_str());
    EXPECT_NE(kxtest::nextDescriptor(), before);
    stream.reset();
    EXPECT_EQ(kxtest::nextDescriptor(), before);
    std::unique_ptr<std::streambuf> buffer = std::make_unique<cached_istreambuf>(1, file.c_str());
    EXPECT_NE(kxtest::nextDescriptor(), before);
    buffer.reset();
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST(CachedIstreambuf, KeepsBufferedBytesAfterClose) {
    const kxtest::TempDir dir;
    cached_istreambuf buffer(4, dir.write("f", "abcdefgh").c_str());
    EXPECT_TRUE(buffer.is_valid());
    EXPECT_EQ(buffer.sbumpc(), 'a');
    buffer.close();
    EXPECT_FALSE(buffer.is_valid());
    EXPECT_EQ(position(buffer), -1);
    EXPECT_EQ(buffer.pubseekoff(0, ios_base::beg), std::streampos(-1));
    EXPECT_EQ(buffer.pubseekpos(0), std::streampos(-1));
    EXPECT_EQ(rest(buffer), "bcd");
    buffer.close();
    EXPECT_EQ(buffer.sgetc(), endOfFile);
}

TEST(CachedIstreambuf, OpensLater) {
    const kxtest::TempDir dir;
    cached_istreambuf buffer(4, nullptr);
    EXPECT_FALSE(buffer.is_valid());
    buffer.open(dir.write("f", "abcdef").c_str());
    EXPECT_TRUE(buffer.is_valid());
    EXPECT_EQ(rest(buffer), "abcdef");
    EXPECT_TRUE(buffer.is_valid());  // also at the end of the file
    buffer.open(nullptr);
    EXPECT_TRUE(buffer.is_valid());
    buffer.close();
    buffer.open(dir.file("missing").c_str());
    EXPECT_FALSE(buffer.is_valid());
}

TEST(CachedIstreambuf, OpenNeitherClosesTheFileNorResetsTheBuffer) {
    const kxtest::TempDir dir;
    const std::string first = dir.write("a", "abcdefgh"), second = dir.write("b", "12345678");
    const int lost = kxtest::nextDescriptor();
    cached_istreambuf buffer(4, first.c_str());
    EXPECT_EQ(buffer.sbumpc(), 'a');
    buffer.open(second.c_str());
    EXPECT_EQ(rest(buffer), "bcd12345678");
    EXPECT_TRUE(kxtest::isOpenOn(lost, first));
    close(lost);  // nothing else can close it
}

// --- Positions -----------------------------------------------------------------------------------

TEST(CachedIfstream, ReportsThePositionBehindTheBuffer) {
    const kxtest::TempDir dir;
    cached_ifstream in(dir.write("f", counted(100)).c_str());
    EXPECT_EQ(in.tellg(), 0);
    char bytes[10];
    in.read(bytes, 10);
    EXPECT_EQ(in.tellg(), 100);
    in.seekg(100);  // the file is there already, so the buffer is kept
    EXPECT_EQ(in.get(), 10);
    in.seekg(0, ios_base::end);
    EXPECT_EQ(in.get(), 11);
    in.seekg(0);
    EXPECT_EQ(in.get(), 0);
    EXPECT_EQ(in.rdstate(), ios_base::goodbit);
}

struct SeekCase {
    const char* name;
    long offset;
    ios_base::seekdir direction;
    ios_base::openmode which;
    long result;
    int next;  // the byte delivered after the seek
};
static void PrintTo(const SeekCase& c, std::ostream* os) { *os << c.name; }

// Byte 0 of a file with the bytes 0, 1, ... 99 was read through a buffer of 10: the file is at 10,
// and 9 bytes are buffered.
class CachedIstreambufSeek : public testing::TestWithParam<SeekCase> {};
TEST_P(CachedIstreambufSeek, Offset) {
    const SeekCase& c = GetParam();
    const kxtest::TempDir dir;
    cached_istreambuf buffer(10, dir.write("f", counted(100)).c_str());
    buffer.sbumpc();
    EXPECT_EQ(buffer.pubseekoff(c.offset, c.direction, c.which), std::streampos(c.result));
    EXPECT_EQ(buffer.sgetc(), c.next);
}
static const auto unknownDirection = static_cast<ios_base::seekdir>(3);
static const SeekCase seekCases[] = {
    {"Query", 0, ios_base::cur, ios_base::in, 10, 1},
    {"ForwardIsFromTheFilePosition", 5, ios_base::cur, ios_base::in, 15, 15},
    {"BackwardIsFromTheFilePosition", -5, ios_base::cur, ios_base::in, 5, 5},
    {"BackToTheStart", -10, ios_base::cur, ios_base::in, 0, 0},
    {"BeforeTheStartFailsAndDiscards", -11, ios_base::cur, ios_base::in, -1, 10},
    {"Absolute", 50, ios_base::beg, ios_base::in, 50, 50},
    {"AbsoluteToTheFilePositionKeeps", 10, ios_base::beg, ios_base::in, 10, 1},
    {"NegativeFailsAndDiscards", -1, ios_base::beg, ios_base::in, -1, 10},
    {"FromTheEnd", -1, ios_base::end, ios_base::in, 99, 99},
    {"ToTheEnd", 0, ios_base::end, ios_base::in, 100, endOfFile},
    {"BehindTheEnd", 7, ios_base::end, ios_base::in, 107, endOfFile},
    {"FromTheEndToTheFilePositionKeeps", -90, ios_base::end, ios_base::in, 10, 1},
    {"UnknownDirectionDiscards", 20, unknownDirection, ios_base::in, -1, 10},
    {"InAndOutDiscards", 50, ios_base::beg, ios_base::in | ios_base::out, 50, 50},
    {"OutMovesOnlyTheFile", 50, ios_base::beg, ios_base::out, 50, 1},
    {"NeitherMovesOnlyTheFile", 50, ios_base::beg, neither, 50, 1},
    {"OutFailsAndKeeps", -1, ios_base::beg, ios_base::out, -1, 1},
};
INSTANTIATE_TEST_SUITE_P(Table, CachedIstreambufSeek, testing::ValuesIn(seekCases),
                         kxtest::nameOfRow);

struct PositionCase {
    const char* name;
    long position;
    ios_base::openmode which;
    long result;
    int next;
};
static void PrintTo(const PositionCase& c, std::ostream* os) { *os << c.name; }

class CachedIstreambufPosition : public testing::TestWithParam<PositionCase> {};
TEST_P(CachedIstreambufPosition, Position) {
    const PositionCase& c = GetParam();
    const kxtest::TempDir dir;
    cached_istreambuf buffer(10, dir.write("f", counted(100)).c_str());
    buffer.sbumpc();
    EXPECT_EQ(buffer.pubseekpos(c.position, c.which), std::streampos(c.result));
    EXPECT_EQ(buffer.sgetc(), c.next);
}
static const PositionCase positionCases[] = {
    {"Elsewhere", 50, ios_base::in, 50, 50},
    {"ToTheFilePositionKeeps", 10, ios_base::in, 10, 1},
    {"NegativeFailsAndDiscards", -2, ios_base::in, -1, 10},
    {"BehindTheEnd", 107, ios_base::in, 107, endOfFile},
    {"OutMovesOnlyTheFile", 50, ios_base::out, 50, 1},
    {"OutFailsAndKeeps", -2, ios_base::out, -1, 1},
};
INSTANTIATE_TEST_SUITE_P(Table, CachedIstreambufPosition, testing::ValuesIn(positionCases),
                         kxtest::nameOfRow);

TEST(CachedIstreambuf, PositionsGoBeyond32Bits) {
    constexpr long far = 5L << 30;
    const kxtest::TempDir dir;
    const std::string file = dir.write("f", "abc");
    const int fd = open(file.c_str(), O_WRONLY | O_CLOEXEC);
    ASSERT_EQ(pwrite(fd, "xyz", 3, far), 3);  // the rest is a hole
    close(fd);
    cached_istreambuf buffer(2, file.c_str());
    EXPECT_EQ(buffer.pubseekpos(far), std::streampos(far));
    EXPECT_EQ(buffer.sbumpc(), 'x');
    EXPECT_EQ(position(buffer), far + 2);
    EXPECT_EQ(buffer.pubseekoff(-1, ios_base::end), std::streampos(far + 2));  // keeps the buffer
    EXPECT_EQ(rest(buffer), "yz");
    EXPECT_EQ(buffer.pubseekoff(far, ios_base::beg), std::streampos(far));
    EXPECT_EQ(rest(buffer), "xyz");
}

// The position of a pipe is always -1, and so is the result of seeking in it: nothing moves.
TEST(CachedIstreambuf, SeekingAPipeKeepsTheBufferAndPositioningDiscardsIt) {
    const kxtest::TempDir dir;
    const std::string pipe = dir.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const int fd = open(pipe.c_str(), O_RDWR | O_CLOEXEC);  // with a writer, so no open blocks
    ASSERT_EQ(write(fd, "abcdefgh", 8), 8);
    cached_istreambuf buffer(4, pipe.c_str());
    close(fd);  // the bytes stay, and a read beyond them ends
    EXPECT_EQ(buffer.sbumpc(), 'a');
    EXPECT_EQ(position(buffer), -1);
    EXPECT_EQ(buffer.pubseekoff(1, ios_base::beg), std::streampos(-1));
    EXPECT_EQ(buffer.pubseekoff(0, ios_base::end), std::streampos(-1));
    EXPECT_EQ(buffer.pubseekoff(1, ios_base::cur), std::streampos(-1));
    EXPECT_EQ(buffer.pubseekpos(-1), std::streampos(-1));
    EXPECT_EQ(buffer.sbumpc(), 'b');
    EXPECT_EQ(buffer.pubseekpos(0), std::streampos(-1));
    EXPECT_EQ(buffer.sbumpc(), 'e');
}

TEST(CachedIstreambuf, PuttingBackBeforeTheFirstReadDeliversZero) {
    const kxtest::TempDir dir;
    cached_istreambuf buffer(2, dir.write("f", "abcd").c_str());
    EXPECT_EQ(buffer.sungetc(), 0);
    EXPECT_EQ(buffer.sungetc(), 0);
    EXPECT_EQ(buffer.sungetc(), endOfFile);
    EXPECT_EQ(rest(buffer), std::string("\0\0abcd", 6));
}

class CachedIstreambufModel : public testing::TestWithParam<int> {};
TEST_P(CachedIstreambufModel, AgreesOnRandomSequences) {
    const int size = GetParam();
    const kxtest::TempDir dir;
    std::mt19937 random(static_cast<unsigned>(size));
    const auto upTo = [&random](long n) {
        return static_cast<long>(random() % static_cast<unsigned long>(n + 1));
    };
    const ios_base::seekdir directions[] = {ios_base::beg, ios_base::cur, ios_base::end,
                                            unknownDirection};
    const ios_base::openmode modes[] = {ios_base::in, ios_base::in | ios_base::out, ios_base::out,
                                        neither};

    for (const long length : {0, 1, 99, 100, 4096, 32768, 32769, 100000, 1 << 20}) {
        const std::string file = kxtest::someBytes(static_cast<std::size_t>(length));
        cached_istreambuf buffer(size, dir.write("f", file).c_str());
        reference::CachedInput model(file, static_cast<std::size_t>(size));
        for (int step = 0; step < 1000; ++step) {
            SCOPED_TRACE(testing::Message() << "file of " << length << ", step " << step);
            const ios_base::openmode which = modes[upTo(3)];
            switch (upTo(6)) {
                case 0:
                    ASSERT_EQ(buffer.sgetc(), model.peek());
                    break;
                case 1:
                    ASSERT_EQ(buffer.sbumpc(), model.get());
                    break;
                case 2:
                    ASSERT_EQ(buffer.sungetc(), model.putBack());
                    break;
                case 3: {
                    std::string read(static_cast<std::size_t>(upTo(upTo(1) ? 300 : 70000)), '\0');
                    const std::streamsize n =
                        buffer.sgetn(read.data(), static_cast<std::streamsize>(read.size()));
                    std::string expected;
                    while (expected.size() < read.size()) {
                        const int c = model.get();
                        if (c == reference::CachedInput::endOfFile) break;
                        expected += static_cast<char>(c);
                    }
                    ASSERT_EQ(n, static_cast<std::streamsize>(expected.size()));
                    read.resize(expected.size());
                    ASSERT_TRUE(read == expected);
                    break;
                }
                case 4: {
                    const ios_base::seekdir direction = directions[upTo(3)];
                    const long targets[] = {0, model.filePosition(), upTo(length + 10),
                                            upTo(length + 10) - length - 5,
                                            model.filePosition() - length};
                    const long offset = targets[upTo(4)];
                    ASSERT_EQ(buffer.pubseekoff(offset, direction, which),
                              std::streampos(model.seekOffset(offset, direction, which)));
                    break;
                }
                case 5: {
                    const long targets[] = {0, model.filePosition(), upTo(length + 10), -2};
                    const long target = targets[upTo(3)];
                    ASSERT_EQ(buffer.pubseekpos(target, which),
                              std::streampos(model.seekPosition(target, which)));
                    break;
                }
                default:
                    ASSERT_EQ(position(buffer), model.filePosition());
            }
            ASSERT_EQ(buffer.in_avail(), model.available());
        }
    }
}
INSTANTIATE_TEST_SUITE_P(BufferSizes, CachedIstreambufModel,
                         testing::Values(1, 2, 100, 4096, 32768),
                         testing::PrintToStringParamName());
