// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <stdexcept>

#include "bytes.h"
#include "descriptors.h"
#include "kxFile.h"
#include "kxtest.h"
#include "reference/checksum_footer.h"

using reference::checksumMark;

namespace {

using State = kxFile::ChecksumInfo::State;

constexpr std::size_t block = 81920;  // the size that is read at once

std::string stampedBytes(std::size_t size) {
    const std::string bytes = kxtest::someBytes(size);
    return bytes + reference::checksumFooter(bytes);
}

}  // namespace

TEST(FindChecksum, SaysAllAndPrintsNothing) {
    const kxtest::TempDir dir;
    const std::string path =
        dir.write("f", "HEAD123456789" + checksumMark + "CBF43926xyTALOMETA00000012");
    kxtest::Captured out(stdout), err(stderr);
    const kxFile::ChecksumInfo info = kxFile::findChecksum(path, 4);
    EXPECT_EQ(out.text() + err.text(), "");
    EXPECT_EQ(info.state, State::correct);
    EXPECT_EQ(info.error, 0);
    EXPECT_TRUE(info.hasMetaFooter);
    EXPECT_EQ(info.metaFooterAt, 31U);
    EXPECT_EQ(info.footerAt, 13U);
    EXPECT_EQ(info.stored, "CBF43926");
    EXPECT_EQ(info.computed, 0xCBF43926U);
    EXPECT_EQ(info.covered, 9U);
    EXPECT_EQ(kxFile::findChecksum(path).state, State::incorrect);
    EXPECT_EQ(kxFile::findChecksum(path).covered, 13U);
}

TEST(FindChecksum, ThrowsNothingForAMetaFooterWithoutANumber) {
    const kxtest::TempDir dir;
    const auto info = kxFile::findChecksum(dir.write("f", "12345TALOMETA--------"));
    EXPECT_EQ(info.state, State::badMetaDistance);
    EXPECT_EQ(info.error, 0);
}

TEST(FindChecksum, TakesNoEarlierErrorForItsOwn) {
    const kxtest::TempDir dir;
    for (const std::size_t size : {0UL, 5UL, 100UL}) {
        const std::string path = dir.write("f", kxtest::someBytes(size));
        errno = EIO;
        const auto info = kxFile::findChecksum(path);
        EXPECT_EQ(info.state, State::noFooter) << size;
        EXPECT_EQ(info.error, 0) << size;
    }
}

TEST(FindChecksum, NamesTheErrorOfWhatCannotBeRead) {
    const kxtest::TempDir dir;
    for (const std::string& path : {std::string(), dir.file("missing")}) {
        EXPECT_EQ(kxFile::findChecksum(path).state, State::notOpened);
        EXPECT_EQ(kxFile::findChecksum(path).error, ENOENT);
    }
    EXPECT_EQ(kxFile::findChecksum(dir.path()).state, State::noFooter);
    EXPECT_EQ(kxFile::findChecksum(dir.path()).error, EISDIR);
}

TEST(FindChecksum, TellsItsProgressBlockByBlock) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", stampedBytes(2 * block + 10));
    std::vector<std::uint64_t> steps;
    const auto info =
        kxFile::findChecksum(path, 1, [&](std::uint64_t bytes) { steps.push_back(bytes); });
    EXPECT_EQ(steps, (std::vector<std::uint64_t>{block, block, 9}));
    EXPECT_EQ(info.covered, 2 * block + 9);
    EXPECT_EQ(info.error, 0);
}

TEST(FindChecksum, WhatProgressThrowsLeavesWithTheFileClosed) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", stampedBytes(10));
    const int before = kxtest::nextDescriptor();
    EXPECT_THROW(kxFile::findChecksum(path, 0, [](std::uint64_t) { throw std::runtime_error(""); }),
                 std::runtime_error);
    EXPECT_EQ(kxtest::nextDescriptor(), before);
}

TEST(FindChecksum, AFileThatShrinksMeanwhileIsCoveredInPart) {
    const kxtest::TempDir dir;
    const std::string path = dir.write("f", stampedBytes(3 * block));
    const auto shrink = [&](std::uint64_t) { std::filesystem::resize_file(path, block + 5); };
    const auto info = kxFile::findChecksum(path, 0, shrink);
    EXPECT_EQ(info.state, State::incorrect);
    EXPECT_EQ(info.footerAt, 3 * block);
    EXPECT_EQ(info.covered, block + 5);
    EXPECT_EQ(info.error, 0);
}
