// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/files/footer.h"
#include "detail/files/same_file.h"
#include "detail/files/temporary_name.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "bytes.h"
#include "kxtest.h"
#include "reference/checksum_footer.h"

using Info = kxFile::ChecksumInfo;
using State = Info::State;
using kx::detail::nextFreeName;
using reference::checksumMark;

// --- Footers ------------------------------------------------------------------------------------

namespace {

// The findings in a file of these bytes; nothing must be printed meanwhile.
Info inspect(const std::string& bytes, std::uint32_t offset) {
    const kxtest::TempDir dir;
    kxtest::Captured out(stdout), err(stderr);
    Info found = kxFile::findChecksum(dir.write("f", bytes), offset);
    EXPECT_EQ(out.text() + err.text(), "");
    return found;
}

}  // namespace

TEST(InspectChecksum, TellsAMissingFileFromAMissingFooter) {
    const kxtest::TempDir dir;
    EXPECT_EQ(kxFile::findChecksum("", 0).state, State::notOpened);
    EXPECT_EQ(kxFile::findChecksum(dir.file("missing"), 0).state, State::notOpened);
    EXPECT_EQ(inspect("no footer in these bytes", 0).state, State::noFooter);
    EXPECT_FALSE(inspect("no footer in these bytes", 0).hasMetaFooter);
}

TEST(InspectChecksum, SaysWhereAFooterStandsAndWhatItHolds) {
    const Info found = inspect("HEAD123456789" + checksumMark + "CBF43926", 4);
    EXPECT_EQ(found.state, State::correct);
    EXPECT_FALSE(found.hasMetaFooter);
    EXPECT_EQ(found.footerAt, 13U);
    EXPECT_EQ(found.stored, "CBF43926");
    EXPECT_EQ(found.computed, 0xCBF43926);
}

TEST(InspectChecksum, KeepsBothValuesOfAMismatch) {
    const Info found = inspect("123456789" + checksumMark + "cbf43926xyTALOMETA00000012", 0);
    EXPECT_EQ(found.state, State::incorrect);
    EXPECT_TRUE(found.hasMetaFooter);
    EXPECT_EQ(found.metaFooterAt, 27U);
    EXPECT_EQ(found.footerAt, 9U);
    EXPECT_EQ(found.stored, "cbf43926");
    EXPECT_EQ(found.computed, 0xCBF43926);
}

TEST(InspectChecksum, ReportsAMetaFooterThatLeadsNowhere) {
    const Info nowhere = inspect("12345TALOMETA00000001", 0);
    EXPECT_EQ(nowhere.state, State::noFooter);
    EXPECT_TRUE(nowhere.hasMetaFooter);
    EXPECT_EQ(nowhere.metaFooterAt, 5U);
    const Info noNumber = inspect("12345TALOMETA--------", 0);
    EXPECT_EQ(noNumber.state, State::badMetaDistance);
    EXPECT_TRUE(noNumber.hasMetaFooter);
    EXPECT_EQ(noNumber.metaFooterAt, 5U);
}

TEST(Crc32Of, ReadsAtMostTheLengthFromTheFilesPosition) {
    const kxtest::TempDir dir;
    const std::string bytes = kxtest::someBytes(100), path = dir.write("f", bytes);
    for (const std::size_t maxBlock : {1U, 7U, 10U, 100U, 1000U}) {
        std::FILE* const file = std::fopen(path.c_str(), "rb");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(kx::detail::crc32Of(file, 70, maxBlock),
                  reference::crc32Bitwise(bytes.substr(0, 70)));
        EXPECT_EQ(kx::detail::crc32Of(file, 31, maxBlock),
                  reference::crc32Bitwise(bytes.substr(70)));
        EXPECT_EQ(kx::detail::crc32Of(file, 1, maxBlock), 0U);
        std::fclose(file);
    }
}

// --- Names of temporary files -------------------------------------------------------------------

TEST(NextFreeName, GoesOnWithNegativeNumbers) {
    const kxtest::TempDir dir;
    std::uint32_t count = 2147483646;
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n2147483646");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n2147483647");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-2147483648");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-2147483647");
    count = 0xFFFFFFFF;
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-1");
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n0");
    EXPECT_EQ(count, 1U);
}

TEST(NextFreeName, PassesOverWhatExists) {
    const kxtest::TempDir dir;
    dir.write("n2147483647", "");
    dir.makeDir("n-2147483648");
    std::uint32_t count = 2147483647;
    EXPECT_EQ(nextFreeName(dir.path(), "n", count), "n-2147483647");
    EXPECT_EQ(count, 2147483650U);
}

TEST(NextFreeName, TakesNoNumberForAnEmptyArgument) {
    std::uint32_t count = 5;
    EXPECT_EQ(nextFreeName("", "n", count), "");
    EXPECT_EQ(nextFreeName("/", "", count), "");
    EXPECT_EQ(count, 5U);
}

// --- Which file it is ---------------------------------------------------------------------------

TEST(SameFile, HasTheSameNumberOnTheSameDevice) {
    struct stat file {
    }, other{};
    file.st_dev = other.st_dev = 1;
    file.st_ino = other.st_ino = 2;
    EXPECT_TRUE(kx::detail::isSameFile(file, other));
    other.st_dev = 2;
    EXPECT_FALSE(kx::detail::isSameFile(file, other));
    other.st_dev = 1;
    other.st_ino = 1;
    EXPECT_FALSE(kx::detail::isSameFile(file, other));
}
