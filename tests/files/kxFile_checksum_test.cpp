// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cinttypes>
#include <climits>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <regex>
#include <stdexcept>
#include <thread>

#include "bytes.h"
#include "descriptors.h"
#include "kxFile.h"
#include "kxtest.h"
#include "reference/checksum_footer.h"
#include "rows.h"
#include "write_at.h"

using kxtest::someBytes;
using reference::checksumFooter;
using reference::checksumMark;
using reference::crc32Bitwise;
using reference::crc32Digits;

namespace {

std::string digits(std::uint32_t value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08" PRIX32, value);
    return text;
}

std::string footer(const std::string& text) { return checksumMark + text; }
std::string stamped(const std::string& data) { return data + checksumFooter(data); }
std::string meta(const std::string& length) { return "TALOMETA" + length; }

const std::string none = "Couldn't find file checksum!\n", foundMeta = "Found meta footer.\n";

std::string correct(const std::string& data) {
    return "Found correct file checksum " + crc32Digits(data) + ".\n";
}

std::string incorrect(const std::string& data, const std::string& stored) {
    return "Found incorrect file checksum " + crc32Digits(data) + " != " + stored + "!\n";
}

}  // namespace

// --- The checksum of memory and files ------------------------------------------------------------

struct PublishedCase {
    const char* name;
    std::string bytes;
    std::uint32_t crc;
};
static void PrintTo(const PublishedCase& c, std::ostream* os) { *os << c.name; }

class ChecksumPublished : public testing::TestWithParam<PublishedCase> {};
TEST_P(ChecksumPublished, HoldsForMemoryAndFiles) {
    const PublishedCase& c = GetParam();
    EXPECT_EQ(crc32Bitwise(c.bytes), c.crc);
    EXPECT_EQ(kxFile::getID(c.bytes.data(), static_cast<std::uint32_t>(c.bytes.size())), c.crc);
    const kxtest::TempDir dir;
    EXPECT_EQ(kxFile::getChecksum(dir.write("f", c.bytes)), c.crc);
}

static const PublishedCase publishedCases[] = {
    {"Empty", "", 0},
    {"CheckValue", "123456789", 0xCBF43926},
    {"OneLetter", "a", 0xE8B7BE43},
    {"MessageDigest", "message digest", 0x20159D7F},
    {"Alphabet", "abcdefghijklmnopqrstuvwxyz", 0x4C2750BD},
    {"PngEndChunk", "IEND", 0xAE426082},
    {"ZeroBytes", std::string(32, '\0'), 0x190A55AD},
    {"HighBytes", std::string(32, '\xFF'), 0xFF6CAB0B},
    {"AllBitsSet", std::string(4, '\xFF'), 0xFFFFFFFF},
};
INSTANTIATE_TEST_SUITE_P(Table, ChecksumPublished, testing::ValuesIn(publishedCases),
                         kxtest::nameOfRow);

TEST(GetID, IsZeroForNullAndForNoBytes) {
    EXPECT_EQ(kxFile::getID(nullptr, 0), 0U);
    EXPECT_EQ(kxFile::getID(nullptr, 100), 0U);
    EXPECT_EQ(kxFile::getID("abc", 0), 0U);
}

TEST(GetID, CoversExactlyTheLength) {
    const std::string bytes = someBytes(300);
    for (std::uint32_t n = 0; n <= bytes.size(); ++n)
        EXPECT_EQ(kxFile::getID(bytes.data(), n), crc32Bitwise(bytes.substr(0, n))) << n;
}

TEST(GetChecksum, MatchesTheModelAroundTheBlockSize) {
    const kxtest::TempDir dir;
    for (const std::size_t size : {1U, 8191U, 8192U, 8193U, 16384U, 16385U, 24576U}) {
        const std::string bytes = someBytes(size), path = dir.write("f", bytes);
        for (const int skip : {INT_MIN, -1, 0, 1, 8191, 8192, 8193, 16384, 16385, INT_MAX}) {
            const std::size_t skipped = skip > 0 ? static_cast<std::size_t>(skip) : 0;
            const std::uint32_t crc = skipped > size ? 0 : crc32Bitwise(bytes.substr(skipped));
            EXPECT_EQ(kxFile::getChecksum(path, skip), crc) << size << " bytes, skip " << skip;
        }
    }
}

TEST(GetChecksum, IsZeroOnFailureAndClosesTheFile) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", "123456789");
    const int before = kxtest::nextDescriptor();
    EXPECT_EQ(kxFile::getChecksum("", 0), 0U);
    EXPECT_EQ(kxFile::getChecksum(dir.file("missing"), 0), 0U);
    EXPECT_EQ(kxFile::getChecksum(path + "/below", 0), 0U);
    EXPECT_EQ(kxFile::getChecksum(dir.path(), 0), 0U);
    EXPECT_EQ(kxFile::getChecksum(dir.path(), 1), 0U);
    EXPECT_EQ(kxFile::getChecksum(path, 10), 0U);
    EXPECT_EQ(kxFile::getChecksum(path, 9), 0U);  // no bytes, but no failure
    EXPECT_EQ(kxFile::getChecksum(path, 8), crc32Bitwise("9"));
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

// --- Stamping ------------------------------------------------------------------------------------

TEST(AppendChecksum, AddsSixteenBytesAtTheEnd) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", "data");
    EXPECT_TRUE(kxFile::appendChecksum(path, 0xABC));
    const unsigned char bytes[] = {'d',  'a',  't', 'a', 0x00, 0x54, 0x41, 0x4C, 0x4F, 0x43,
                                   0x52, 0x43, '0', '0', '0',  '0',  '0',  'A',  'B',  'C'};
    EXPECT_EQ(kxtest::slurp(path), std::string(std::begin(bytes), std::end(bytes)));
    EXPECT_TRUE(kxFile::appendChecksum(path, 0xFEDCBA98));
    EXPECT_EQ(kxtest::slurp(path).substr(20), footer("FEDCBA98"));
}

TEST(AppendChecksum, CreatesAMissingFile) {
    const kxtest::TempDir dir;
    EXPECT_TRUE(kxFile::appendChecksum(dir.file("new"), 0));
    EXPECT_EQ(kxtest::slurp(dir.file("new")), footer("00000000"));
}

TEST(AppendChecksum, FailsWhereNothingCanBeWritten) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    EXPECT_FALSE(kxFile::appendChecksum("", 1));
    EXPECT_FALSE(kxFile::appendChecksum(dir.path(), 1));
    EXPECT_FALSE(kxFile::appendChecksum(dir.file("missing/f"), 1));
    if (kxtest::exists("/dev/full")) {
        EXPECT_FALSE(kxFile::appendChecksum("/dev/full", 1));
    }
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST(AppendChecksum, IsWhatCheckChecksumAccepts) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", "HEADdata");
    const std::uint32_t crc = kxFile::getChecksum(path, 4);
    EXPECT_TRUE(kxFile::appendChecksum(path, crc));
    kxtest::Captured out(stdout);
    std::uint32_t checksum = 1;
    EXPECT_TRUE(kxFile::checkChecksum(path, checksum, 4));
    EXPECT_EQ(checksum, crc);
    EXPECT_EQ(out.text(), correct("data"));
}

// A checksum finds damage but not intent: anybody who changes a file can stamp it anew, or leave it
// unstamped.
TEST(AppendChecksum, HelpsAForgerToo) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", "forged data");
    kxtest::Captured out(stdout);
    std::uint32_t checksum = 1;
    EXPECT_TRUE(kxFile::checkChecksum(path, checksum));
    EXPECT_TRUE(kxFile::appendChecksum(path, kxFile::getChecksum(path)));
    EXPECT_TRUE(kxFile::checkChecksum(path, checksum));
    EXPECT_EQ(out.text(), none + correct("forged data"));
}

// --- Checking ------------------------------------------------------------------------------------

struct CheckCase {
    const char* name;
    std::string bytes;
    std::uint32_t offset;
    bool accepted;
    std::string out;
};
static void PrintTo(const CheckCase& c, std::ostream* os) { *os << c.name; }

class ChecksumCheck : public testing::TestWithParam<CheckCase> {};
TEST_P(ChecksumCheck, MatchesTable) {
    const CheckCase& c = GetParam();
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", c.bytes);
    const int before = kxtest::nextDescriptor();
    std::uint32_t checksum = 0xDEADBEEF;
    std::string text;
    bool accepted = false;
    {
        kxtest::Captured out(stdout), err(stderr);
        accepted = kxFile::checkChecksum(path, checksum, c.offset);
        text = out.text();
        EXPECT_EQ(err.text(), "");
    }
    EXPECT_EQ(accepted, c.accepted);
    EXPECT_EQ(text, c.out);
    // The out value is the number in the "correct" line, otherwise 0.
    const std::size_t at = c.out.find("Found correct file checksum ");
    EXPECT_EQ(digits(checksum), at == std::string::npos ? "00000000" : c.out.substr(at + 28, 8));
    EXPECT_EQ(kxtest::nextDescriptor(), before);
    EXPECT_EQ(kxtest::slurp(path), c.bytes);
}

static CheckCase withMeta(const char* name, const std::string& length, const std::string& out,
                          std::uint32_t offset = 0) {
    // The checksum footer is at 4, the meta footer at 4 + 0x1A.
    return {name, stamped("data") + "0123456789" + meta(length), offset, true, foundMeta + out};
}

static const CheckCase checkCases[] = {
    // Files without a meta footer.
    {"EmptyFile", "", 0, true, none},
    {"FifteenBytes", checksumFooter("").substr(1), 0, true, none},
    {"OnlyAFooter", footer("00000000"), 0, true, correct("")},
    {"OnlyAWrongFooter", footer("00000001"), 0, false, incorrect("", "00000001")},
    {"NoFooter", someBytes(100), 0, true, none},
    {"Correct", stamped("data"), 0, true, correct("data")},
    {"OneByteChanged", "dbta" + checksumFooter("data"), 0, false,
     incorrect("dbta", crc32Digits("data"))},
    {"LowerCaseDigits", "123456789" + footer("cbf43926"), 0, false,
     "Found incorrect file checksum CBF43926 != cbf43926!\n"},
    {"OneDigitLower", "123456789" + footer("CbF43926"), 0, false,
     "Found incorrect file checksum CBF43926 != CbF43926!\n"},
    {"DigitsAreNoDigits", footer("no hex!!"), 0, false, incorrect("", "no hex!!")},
    {"LastMarkByteDiffers", std::string("\0TALOCRX", 8) + "00000000", 0, true, none},
    {"FirstMarkByteDiffers", "\1TALOCRC00000000", 0, true, none},
    {"MarkInLowerCase", std::string("\0talocrc", 8) + "00000000", 0, true, none},
    {"ByteAfterTheFooter", stamped("data") + "x", 0, true, none},
    {"DataEndsInAFooter", stamped(stamped("data")), 0, true, correct(stamped("data"))},
    // Files with an offset.
    {"HeaderExcluded", "HEAD" + stamped("data"), 4, true, correct("data")},
    {"HeaderNotExcluded", "HEAD" + stamped("data"), 0, false,
     incorrect("HEADdata", crc32Digits("data"))},
    {"OffsetAtTheFooter", "HEAD" + footer("00000000"), 4, true, correct("")},
    {"OffsetInsideTheFooter", "HEAD" + footer("00000000"), 5, true, none},
    {"OffsetAtTheEnd", stamped("data"), 20, true, none},
    {"OffsetPastTheEnd", stamped("data"), 21, true, none},
    {"LargestOffset", stamped("data"), 0xFFFFFFFF, true, none},
    // Files with a meta footer: L is 0x10 plus the length of the meta data.
    {"NoMetaData", stamped("data") + meta("00000010"), 0, true, foundMeta + correct("data")},
    {"NoProtectedData", footer("00000000") + meta("00000010"), 0, true, foundMeta + correct("")},
    {"OnlyAMetaFooter", meta("00000010"), 0, true, foundMeta + none},
    {"MetaMarkDiffers", stamped("data") + "TALOMETB00000010", 0, true, none},
    {"MetaMarkInLowerCase", stamped("data") + "talometa00000010", 0, true, none},
    {"OnlyTheLetterT", stamped("data") + "T" + std::string(15, 'x'), 0, true, none},
    {"MetaDataEndsInAFooter", stamped("data") + checksumMark + "FFFFFFFF" + meta("00000020"), 0,
     true, foundMeta + correct("data")},
    {"MetaAndOffset", "HEAD" + stamped("data") + "abc" + meta("00000013"), 4, true,
     foundMeta + correct("data")},
    {"MetaAndWrongChecksum", "data" + footer("00000000") + meta("00000010"), 0, false,
     foundMeta + incorrect("data", "00000000")},
    {"FootersOverlap", "data" + checksumMark + meta("00000008"), 0, false,
     foundMeta + incorrect("data", "TALOMETA")},
    // Where L leads.
    withMeta("Right", "0000001A", correct("data")),
    withMeta("OneLess", "00000019", none),
    withMeta("OneMore", "0000001B", none),
    withMeta("ItselfTheMetaFooter", "00000000", none),
    withMeta("StartOfFile", "0000001E", none),
    withMeta("BeforeTheFile", "0000001F", none),
    withMeta("FarBeforeTheFile", "FFFFFFFF", none),
    withMeta("JustAboveSignedRange", "80000000", none),
    {"AtTheOffset", "HEAD" + footer("00000000") + meta("00000010"), 4, true,
     foundMeta + correct("")},
    withMeta("IntoThePrefix", "0000001A", none, 5),
    withMeta("PrefixReachesTheMetaFooter", "0000001A", none, 30),
    // How L is read.
    withMeta("LowerCase", "0000001a", correct("data")),
    withMeta("TextBehind", "1A junk!", correct("data")),
    withMeta("LetterBehind", "00001Axy", correct("data")),
    withMeta("BlankBehind", "000001A ", correct("data")),
    withMeta("ZeroByteBehind", std::string("1A\0\0\0\0\0\0", 8), correct("data")),
    withMeta("BlanksBefore", "      1A", correct("data")),
    withMeta("OtherBlanksBefore", "\t\n\v\f\r 1A", correct("data")),
    withMeta("PlusSign", "+000001A", correct("data")),
    withMeta("MinusSign", "-000001A", none),
    withMeta("MinusOne", "-1      ", none),
    withMeta("MinusZero", "-0000000", none),
    withMeta("Prefix0x", "0x00001A", correct("data")),
    withMeta("Prefix0X", "  +0X1A ", correct("data")),
    withMeta("Prefix0xWithoutDigits", "0xyz    ", none),
};
INSTANTIATE_TEST_SUITE_P(Table, ChecksumCheck, testing::ValuesIn(checkCases), kxtest::nameOfRow);

TEST(CheckChecksum, MatchesTheModelAroundTheBlockSize) {
    const kxtest::TempDir dir;
    for (const std::size_t size : {8191U, 8192U, 8193U, 81919U, 81920U, 81921U, 163840U, 163841U})
        for (const std::uint32_t offset : {0U, 1U, 8190U}) {
            std::string bytes = someBytes(size);
            const std::string covered = bytes.substr(offset);
            bytes += checksumFooter(covered);
            const std::string path = dir.write("f", bytes);
            kxtest::Captured out(stdout);
            std::uint32_t checksum = 0;
            EXPECT_TRUE(kxFile::checkChecksum(path, checksum, offset));
            EXPECT_EQ(checksum, crc32Bitwise(covered)) << size << " bytes, offset " << offset;
            bytes[size - 1] ^= 1;  // the last covered byte counts
            dir.write("f", bytes);
            EXPECT_FALSE(kxFile::checkChecksum(path, checksum, offset));
            EXPECT_EQ(checksum, 0U);
        }
}

TEST(CheckChecksum, TakesTheWholeFileByDefault) {
    const kxtest::TempDir dir;
    kxtest::Captured out(stdout);
    std::uint32_t checksum = 0;
    EXPECT_TRUE(kxFile::checkChecksum(dir.write("f", stamped("data")), checksum));
    EXPECT_EQ(checksum, crc32Bitwise("data"));
}

TEST(CheckChecksum, AcceptsWhatItCannotOpenSilently) {
    const kxtest::TempDir dir;
    const std::string below = dir.write("f", "x") + "/below";
    kxtest::Captured out(stdout), err(stderr);
    for (const std::string& path : {std::string(), dir.file("missing"), below}) {
        std::uint32_t checksum = 1;
        EXPECT_TRUE(kxFile::checkChecksum(path, checksum, 0)) << path;
        EXPECT_EQ(checksum, 0U);
    }
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST(CheckChecksum, FindsNoChecksumInADirectory) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    std::uint32_t checksum = 1;
    {
        kxtest::Captured out(stdout);
        EXPECT_TRUE(kxFile::checkChecksum(dir.path(), checksum, 0));
        EXPECT_EQ(out.text(), none);
    }
    EXPECT_EQ(checksum, 0U);
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

// Deliberate: the exception of the standard conversion is passed on, with the file closed.
TEST(CheckChecksum, ThrowsForAMetaFooterWithoutADigit) {
    const kxtest::TempDir dir;
    for (const std::string& length :
         {std::string("ghijklmn"), std::string("        "), std::string("x0000010"),
          std::string("-+000010"), std::string("- 000010"), std::string(8, '\0')}) {
        const std::string path = dir.write("f", stamped("data") + meta(length));
        const int before = kxtest::nextDescriptor();
        std::uint32_t checksum = 1;
        {
            kxtest::Captured out(stdout);
            EXPECT_THROW(kxFile::checkChecksum(path, checksum, 0), std::invalid_argument) << length;
            EXPECT_EQ(out.text(), foundMeta);
        }
        EXPECT_EQ(checksum, 0U);
        EXPECT_EQ(kxtest::nextDescriptor(), before);
    }
}

// --- Identifiers ---------------------------------------------------------------------------------

TEST(GetFileID, IsTheSizeAndTheChecksumInDecimal) {
    const kxtest::TempDir dir;
    const std::string tenBytes = "abcdef\x5D\x3E\x90\xFC";  // their CRC-32 is 0x12345678
    ASSERT_EQ(crc32Bitwise(tenBytes), 305419896U);
    EXPECT_EQ(kxFile::getFileID(dir.write("f", tenBytes)), "10305419896");
    EXPECT_EQ(kxFile::getFileID(dir.write("g", std::string(4, '\xFF'))), "44294967295");
}

TEST(GetFileID, IsTwoZerosWithoutContent) {
    const kxtest::TempDir dir;
    const int before = kxtest::nextDescriptor();
    EXPECT_EQ(kxFile::getFileID(""), "");
    EXPECT_EQ(kxFile::getFileID(dir.file("missing")), "00");
    EXPECT_EQ(kxFile::getFileID(dir.write("empty", "")), "00");
    EXPECT_EQ(kxFile::getFileID(dir.path()), "00");
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST(GetFileID, CoversTheFirst8192BytesOnly) {
    const kxtest::TempDir dir;
    for (const std::size_t size : {8191U, 8192U, 8193U, 16384U, 20000U}) {
        std::string bytes = someBytes(size);
        const std::string id =
            std::to_string(size) + std::to_string(crc32Bitwise(bytes.substr(0, 8192)));
        EXPECT_EQ(kxFile::getFileID(dir.write("f", bytes)), id);
        bytes.back() ^= 1;
        EXPECT_EQ(kxFile::getFileID(dir.write("f", bytes)) == id, size > 8192) << size;
    }
}

// --- Pipes, and the system calls made ------------------------------------------------------------

// A pipe cannot seek, so the bytes to be skipped are read and dropped.
TEST(ChecksumOfPipe, SkipsByReading) {
    const kxtest::TempDir dir;
    const std::string path = dir.file("pipe");
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const std::string bytes = kxtest::someBytes(20000);
    for (const int skip : {0, 1, 8192, 19999, 20000, 20001}) {
        std::thread writer([&] {
            std::ofstream out(path, std::ios::binary);
            out << bytes;
        });
        const auto skipped = static_cast<std::size_t>(skip);
        const std::uint32_t crc = skipped > bytes.size() ? 0 : crc32Bitwise(bytes.substr(skipped));
        EXPECT_EQ(kxFile::getChecksum(path, skip), crc) << skip;
        writer.join();
    }
}

struct BlockCase {
    const char* function;
    long block;
};
static void PrintTo(const BlockCase& c, std::ostream* os) { *os << c.function; }

// The calls of the probe on a file of three full blocks, counted by name and size.
class ChecksumBlocks : public testing::TestWithParam<BlockCase> {};
TEST_P(ChecksumBlocks, AreReadWhole) {
    const std::string strace = "/usr/bin/strace";
    if (kxtest::underSanitizer()) GTEST_SKIP() << "the sanitizer makes calls of its own";
    if (!kxtest::exists(strace) || kxtest::run({strace, "-o", "/dev/null", "/bin/true"}).exitCode)
        GTEST_SKIP() << "no strace here";
    const kxtest::TempDir dir;
    const long block = GetParam().block;
    const std::string file =
        dir.write("f", stamped(kxtest::someBytes(static_cast<std::size_t>(3 * block))));
    const std::string log = dir.file("log");
    const auto outcome = kxtest::run({strace, "-s0", "-esignal=none", "-etrace=read", "-o", log,
                                      "-P", file, CHECKSUM_PROBE, GetParam().function, file});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.err;
    const std::string calls = kxtest::slurp(log), size = std::to_string(block);
    const std::regex whole(", " + size + "\\) += " + size + "\n");
    const auto blocks = std::distance(std::sregex_iterator(calls.begin(), calls.end(), whole), {});
    EXPECT_EQ(blocks, 3) << calls;
}
INSTANTIATE_TEST_SUITE_P(Of, ChecksumBlocks,
                         testing::Values(BlockCase{"getChecksum", 8192},
                                         BlockCase{"checkChecksum", 81920}),
                         [](const auto& test) { return std::string(test.param.function); });

// --- Files above 4 GiB ---------------------------------------------------------------------------

namespace {

constexpr off_t fourGiB = off_t{1} << 32;

}  // namespace

TEST(LargeFile, FooterStandsAbove4GiB) {
    const kxtest::TempDir dir;
    const std::string path = dir.file("f"), covered = std::string(1, '\0') + "data";
    if (!kxtest::writeAt(path, fourGiB, stamped(covered).substr(1)))
        GTEST_SKIP() << "no room for sparse files";
    kxtest::Captured out(stdout);
    std::uint32_t checksum = 0;
    EXPECT_TRUE(kxFile::checkChecksum(path, checksum, 0xFFFFFFFF));
    EXPECT_EQ(out.text(), correct(covered));
    EXPECT_EQ(checksum, crc32Bitwise(covered));
}

TEST(LargeFile, MetaDataReachesBeyond8GiB) {
    const kxtest::TempDir dir;
    const std::string path = dir.file("f");
    // Both have their largest value: the offset and L are 4 GiB - 1.
    if (!kxtest::writeAt(path, 0xFFFFFFFF, stamped("data")) ||
        !kxtest::writeAt(path, off_t{0xFFFFFFFF} + 4 + 0xFFFFFFFF, meta("FFFFFFFF")))
        GTEST_SKIP() << "no room for sparse files";
    kxtest::Captured out(stdout);
    std::uint32_t checksum = 0;
    EXPECT_TRUE(kxFile::checkChecksum(path, checksum, 0xFFFFFFFF));
    EXPECT_EQ(out.text(), foundMeta + correct("data"));
}

TEST(LargeFile, IsNotMistakenForAShortOne) {
    const kxtest::TempDir dir;
    const std::string path = dir.file("f");
    // In 32-bit arithmetic this file would have 8 bytes, and L would not fit.
    if (!kxtest::writeAt(path, 0, stamped("data")) ||
        !kxtest::writeAt(path, fourGiB - 8, meta("FFFFFFF4")))
        GTEST_SKIP() << "no room for sparse files";
    kxtest::Captured out(stdout);
    std::uint32_t checksum = 0;
    EXPECT_TRUE(kxFile::checkChecksum(path, checksum, 0));
    EXPECT_EQ(out.text(), foundMeta + correct("data"));
}

TEST(LargeFile, IdentifierShowsA64BitSize) {
    const kxtest::TempDir dir;
    if (!kxtest::writeAt(dir.file("f"), fourGiB, "0123456789"))
        GTEST_SKIP() << "no room for sparse files";
    EXPECT_EQ(kxFile::getFileID(dir.file("f")),
              "4294967306" + std::to_string(crc32Bitwise(std::string(8192, '\0'))));
}

TEST(LargeFile, LargestSkip) {
    const kxtest::TempDir dir;
    if (!kxtest::writeAt(dir.file("f"), INT_MAX, "123456789"))
        GTEST_SKIP() << "no room for sparse files";
    EXPECT_EQ(kxFile::getChecksum(dir.file("f"), INT_MAX), 0xCBF43926);
}
