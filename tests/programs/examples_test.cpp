// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Runs the programs in examples/ as their first lines say.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <regex>
#include <string>
#include <vector>

#include "kxtest.h"

namespace {

const std::string programs = EXAMPLES_DIR;

kxtest::Outcome run(std::vector<std::string> arguments, const kxtest::RunOptions& options = {}) {
    arguments[0] = programs + "/" + arguments[0];
    return kxtest::run(arguments, {}, options);
}

std::string outputOf(const std::vector<std::string>& arguments) {
    const kxtest::Outcome outcome = run(arguments);
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
    EXPECT_EQ(output, "CBF43926 intact\nCBF43926 DAMAGED\n");
}

TEST(Examples, StampAndVerifyMakesNoFile) {
    const kxtest::TempDir dir;
    const std::string missing = dir.file("missing");
    const auto outcome = run({"stamp_and_verify", missing});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_EQ(outcome.err, "\033[31mcheckRead:: File '" + missing + "' doesn't exist!\n\033[0m");
    EXPECT_FALSE(kxtest::exists(missing));
}

TEST(Examples, AskBeforeOverwritingFailsWhereNothingCanBeWritten) {
    const kxtest::TempDir dir;
    for (const std::string answer : {"yes", "no"}) {
        const auto outcome = run({"ask_before_overwriting", dir.file("no/file"), answer});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.out,
                  "File '" + dir.file("no/file") + "' is not writable (wrong permissions)!\n");
    }
}

// A regular file that can be opened but not read.
TEST(Examples, FailWhereAFileCannotBeRead) {
    const std::string file = "/proc/self/mem";
    if (!kxtest::exists(file)) GTEST_SKIP() << "no " << file;
    const auto outcome = run({"stream_codec", file});
    EXPECT_EQ(outcome.err, file + ": Input/output error\n");
    EXPECT_EQ(outcome.exitCode, 1);
}

TEST(Examples, FailWhereTheirOutputCannotBeWritten) {
    const kxtest::TempDir dir;
    kxtest::RunOptions options;
    options.out = open("/dev/full", O_WRONLY | O_CLOEXEC);
    if (options.out < 0) GTEST_SKIP() << "no /dev/full here";
    const std::string file = dir.write("file", "content");
    const std::vector<std::vector<std::string>> commands = {{"ask_before_overwriting", file, "no"},
                                                            {"ask_before_overwriting", file, "yes"},
                                                            {"log_files", dir.path()},
                                                            {"shared_log_host", SHARED_LOG_PLUGIN},
                                                            {"stamp_and_verify", file},
                                                            {"stream_codec", file}};
    for (const auto& command : commands) EXPECT_EQ(run(command, options).exitCode, 1) << command[0];
    close(options.out);
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
    // Longer than a block: zero bytes, and every 3 of them become "AAAA".
    const std::string output =
        outputOf({"stream_codec", dir.write("long", std::string(300000, '\0'))});
    EXPECT_EQ(output.substr(0, output.find('\n')), std::string(400000, 'A'));
}
