// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The programs of examples/, run as their first lines say.
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "kxtest.h"

namespace {

const std::string programs = EXAMPLES_DIR;

std::string outputOf(std::vector<std::string> arguments) {
    arguments[0] = programs + "/" + arguments[0];
    const kxtest::Outcome outcome = kxtest::run(arguments);
    EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
    return outcome.out;
}

}  // namespace

TEST(Examples, LogFiles) {
    const kxtest::TempDir dir;
    const std::string output = outputOf({"log_files", dir.path()});
    const std::string stamp = "[0-9]{4}(-[0-9]{2}){2} [0-9]{2}(:[0-9]{2}){2} ";
    const std::regex expected("[^]*status line: 3 of 1200 faces dropped\n" + stamp +
                              "INFO 100 loading engine.obj\n" + stamp +
                              "WARN 200 3 of 1200 faces dropped\n" + stamp + "INFO 100 done\n");
    EXPECT_TRUE(std::regex_match(output, expected)) << output;
    EXPECT_NE(kxtest::slurp(dir.file("session.log")).find("INFO 100 done\n"), std::string::npos);
}

TEST(Examples, AskBeforeOverwriting) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("file", "old content\n");
    const std::string question = "File '" + file + "' already exists!\nOverwrite file?";

    EXPECT_EQ(outputOf({"ask_before_overwriting", file, "no"}), question + " no\nkept\n");
    EXPECT_EQ(kxtest::slurp(file), "old content\n");
    EXPECT_EQ(outputOf({"ask_before_overwriting", file, "yes"}), question + " yes\nwritten\n");
    EXPECT_EQ(kxtest::slurp(file), "new content\n");
}

TEST(Examples, StampAndVerify) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("file", "123456789");  // the check value of CRC-32: CBF43926
    const std::string output = outputOf({"stamp_and_verify", file});
    EXPECT_EQ(output.find("Found correct file checksum CBF43926.\nintact\n"), 0U) << output;
    EXPECT_TRUE(std::regex_search(
        output, std::regex("\nFound incorrect file checksum [0-9A-F]{8} != CBF43926!\nDAMAGED\n$")))
        << output;
}

TEST(Examples, SharedLog) {
    EXPECT_NE(outputOf({"shared_log_host", SHARED_LOG_PLUGIN})
                  .find("the host has received: 2 textures missing\n"),
              std::string::npos);
}

TEST(Examples, StreamCodec) {
    const kxtest::TempDir dir;
    EXPECT_EQ(outputOf({"stream_codec", dir.write("short", "123456789")}),
              "MTIzNDU2Nzg5\nCRC-32: CBF43926\n");
    // Longer than a block: zero bytes, of which 3 become "AAAA".
    const std::string output =
        outputOf({"stream_codec", dir.write("long", std::string(300000, '\0'))});
    EXPECT_EQ(output.substr(0, output.find('\n')), std::string(400000, 'A'));
}
