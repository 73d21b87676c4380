// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What shows on a terminal only, and faults that have to be made.
#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <cstdio>
#include <future>

#include "emulator.h"
#include "kxutils_tool.h"
#include "reference/crc32_bitwise.h"

namespace {

const std::string stamped("123456789\0TALOCRCCBF43926", 25);

// A terminal that a program can write to; it makes "\r\n" of every newline.
class Terminal {
public:
    Terminal() {
        if (openpty(&_master, &_slave, nullptr, nullptr, nullptr) != 0) _slave = -1;
    }
    ~Terminal() {
        close(_master);
        if (_slave >= 0) close(_slave);
    }
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    int descriptor() const { return _slave; }

    // Waits until a text has been written; returns all up to then.
    std::string readUntil(const std::string& awaited) const {
        std::string text;
        char block[4096];
        while (text.find(awaited) == std::string::npos) {
            const ssize_t n = read(_master, block, sizeof block);
            if (n <= 0) break;
            text.append(block, static_cast<std::size_t>(n));
        }
        return text;
    }

    // What has been written since; nothing can be written any more.
    std::string text() {
        close(_slave);
        _slave = -1;
        std::string text;
        char block[4096];
        for (ssize_t n = 0; (n = read(_master, block, sizeof block)) > 0;)
            text.append(block, static_cast<std::size_t>(n));
        return text;
    }

private:
    int _master = -1, _slave = -1;
};

}  // namespace

// --- Colour --------------------------------------------------------------------------------------

class OnTerminal : public Tool {
protected:
    void SetUp() override {
        if (terminal.descriptor() < 0) GTEST_SKIP() << "no pseudo-terminal";
        dir.write("good", stamped);
        dir.write("damaged", "x" + stamped);
        dir.write("plain", "");
    }
    Terminal terminal;
};

TEST_F(OnTerminal, StatusWordsHaveColours) {
    options.out = terminal.descriptor();
    run({"verify", "good", "damaged", "plain", "missing"});
    EXPECT_EQ(terminal.text(),
              "\033[32mok           \033[0mgood\r\n"
              "\033[31mBAD          \033[0mdamaged\r\n"
              "\033[33mno checksum  \033[0mplain\r\n"
              "\033[31munreadable   \033[0mmissing\r\n"
              "4 files: 1 ok, 1 BAD, 1 no checksum, 1 unreadable\r\n");
}

TEST_F(OnTerminal, NoColourWhereTheUserWantsNone) {
    options.out = terminal.descriptor();
    environment["NO_COLOR"] = "1";
    run({"verify", "--quiet", "damaged"});
    EXPECT_EQ(terminal.text(), "BAD          damaged\r\n");
}

TEST_F(OnTerminal, AnEmptyNoColorCountsAsNotSet) {
    options.out = terminal.descriptor();
    environment["NO_COLOR"] = "";
    run({"verify", "--quiet", "damaged"});
    EXPECT_EQ(terminal.text(), "\033[31mBAD          \033[0mdamaged\r\n");
}

TEST_F(OnTerminal, MessagesFollowTheResultsBeforeThem) {
    options.out = options.err = terminal.descriptor();
    run({"crc", "plain", "missing", "plain"});
    EXPECT_EQ(terminal.text(),
              "00000000  plain\r\nkxutils: missing: No such file or directory\r\n"
              "00000000  plain\r\n");
}

// --- Progress ------------------------------------------------------------------------------------

// The program waits for its input, which comes only after a look at the terminal.
TEST_F(OnTerminal, VerifyShowsProgressWhileItsThreadsWork) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    options.in = ends[0];
    options.err = terminal.descriptor();
    auto outcome = std::async(std::launch::async, [&] { return run({"verify", "-"}); });
    const std::string first = terminal.readUntil("B/s");
    EXPECT_EQ(first.substr(0, 16), "\r\033[K0 B, 0 B/s");
    EXPECT_EQ(write(ends[1], stamped.data(), stamped.size()), 25);
    close(ends[1]);
    EXPECT_EQ(outcome.get().exitCode, 0);
    close(ends[0]);
    const std::string rest = terminal.text();
    EXPECT_EQ(rest.substr(rest.size() - 4), "\r\033[K");
}

// --- Faults --------------------------------------------------------------------------------------

class Faults : public OnTerminal {
protected:
    void SetUp() override {
        OnTerminal::SetUp();
        if (kxtest::underSanitizer()) GTEST_SKIP() << "sanitizers have interceptors of their own";
        if (kxtest::underEmulator()) GTEST_SKIP() << "the library would go into the emulator too";
        environment["LD_PRELOAD"] = KXTEST_FAULTS;
    }
    kxtest::Outcome runWithFault(const std::string& fault,
                                 const std::vector<std::string>& arguments) {
        environment["KXTEST_FAULT"] = fault;
        return run(arguments);
    }
};

constexpr std::size_t block = 98304;  // what the program reads at once

// The clock advances by 0.3 s at each look: one when the program starts, one for each block.
TEST_F(Faults, ProgressShowsAfterHalfASecondOnATerminal) {
    dir.write("f", std::string(4 * block, '\0'));
    options.err = terminal.descriptor();
    const auto outcome = runWithFault("clock", {"crc", "f"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out.substr(8), "  f\n");
    EXPECT_EQ(terminal.text(),
              "\r\033[K192.0 KiB of 384.0 KiB, 320.0 KiB/s, 1 s left"
              "\r\033[K288.0 KiB of 384.0 KiB, 320.0 KiB/s, 0 s left"
              "\r\033[K384.0 KiB of 384.0 KiB, 320.0 KiB/s, 0 s left"
              "\r\033[K");
}

TEST_F(Faults, ProgressOfAPipeHasNoTimeLeft) {
    dir.write("f", std::string(3 * block, '\0'));
    options.err = terminal.descriptor();
    environment["KXTEST_FAULT"] = "clock";
    environment.erase("LD_PRELOAD");
    environment["FAULTS"] = KXTEST_FAULTS;  // for the program alone
    shell("cat f | LD_PRELOAD=\"$FAULTS\" \"$K\" base64 -o out");
    EXPECT_EQ(terminal.text(),
              "\r\033[K192.0 KiB, 320.0 KiB/s"
              "\r\033[K288.0 KiB, 320.0 KiB/s"
              "\r\033[K");
}

TEST_F(Faults, ShortWorkShowsNoProgress) {
    dir.write("f", std::string(block, '\0'));
    options.err = terminal.descriptor();
    EXPECT_EQ(runWithFault("clock", {"crc", "f"}).exitCode, 0);
    EXPECT_EQ(terminal.text(), "");
}

TEST_F(Faults, ProgressIsErasedBeforeResultsAndMessages) {
    const std::string bytes(2 * block, '\0');
    dir.write("f", bytes);
    options.out = options.err = terminal.descriptor();
    runWithFault("clock", {"crc", "f", "missing"});
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08X", reference::crc32Bitwise(bytes));
    EXPECT_EQ(terminal.text(),
              "\r\033[K192.0 KiB of 192.0 KiB, 320.0 KiB/s, 0 s left"
              "\r\033[K" +
                  std::string(digits) +
                  "  f\r\n"
                  "kxutils: missing: No such file or directory\r\n");
}

TEST_F(Faults, ProgressIsNotForFiles) {
    dir.write("f", std::string(4 * block, '\0'));
    EXPECT_EQ(runWithFault("clock", {"crc", "f"}).err, "");
}

TEST_F(Faults, AFileThatShrinksWhileItIsReadIsUnreadable) {
    const std::string shrunk = "kxutils: f: the file has shrunk while it was read\n";
    const std::string bytes(4 * block, 'x');
    environment["KXTEST_FILE"] = dir.file("f");
    dir.write("f", bytes);
    expectRun(runWithFault("shrink", {"crc", "f"}), 3, "", shrunk);
    dir.write("f", bytes);
    expectRun(runWithFault("shrink", {"base64", "f", "-o", "out"}), 3, "", shrunk);
    dir.write("f", bytes + stamped.substr(9));
    expectRun(runWithFault("shrink", {"verify", "--quiet", "f"}), 3, "unreadable   f\n", shrunk);
    dir.write("f", bytes + stamped.substr(9));
    expectRun(runWithFault("shrink", {"inspect", "f"}), 3, "", shrunk);
    dir.write("f", bytes);
    expectRun(runWithFault("shrink", {"stamp", "f"}), 3, "", shrunk);
    EXPECT_EQ(kxtest::slurp(dir.file("f")).size(), 50000U);
}

TEST_F(Faults, AReadThatFailsIsExitCode3) {
    dir.write("f", std::string(4 * block, 'x'));
    expectRun(runWithFault("error", {"crc", "f"}), 3, "", "kxutils: f: Input/output error\n");
}

TEST_F(Faults, AFileThatCannotBeOpenedIsUnreadable) {
    dir.write("f", stamped);
    environment["KXTEST_FILE"] = "f";
    expectRun(runWithFault("open", {"verify", "--quiet", "f"}), 3, "unreadable   f\n",
              "kxutils: f: Permission denied\n");
}

TEST_F(Faults, InspectHearsThatItCannotOpenTheFileAgain) {
    dir.write("f", stamped);
    environment["KXTEST_FILE"] = "f";
    expectRun(runWithFault("reopen", {"inspect", "f"}), 3, "", "kxutils: f: Permission denied\n");
}

TEST_F(Faults, VerifyWorksWithTheThreadsThatItGets) {
    std::vector<std::string> arguments = {"verify", "-j", "4", "--quiet"};
    std::string lines;
    for (int i = 10; i < 60; ++i) {
        const std::string name = std::to_string(i);
        dir.write(name, i % 2 == 0 ? stamped : 'x' + stamped);
        arguments.push_back(name);
        if (i % 2 != 0) lines += "BAD          " + name + '\n';
    }
    for (const char* const fault : {"threads", "memory"})
        expectRun(runWithFault(fault, arguments), 1, lines, "");
}

// A file system across the network reports a full disk here.
TEST_F(Faults, AnOutputThatCannotBeClosedIsExitCode3) {
    dir.write("f", "foo");
    expectRun(runWithFault("close", {"base64", "f", "-o", "out"}), 3, "",
              "kxutils: f: cannot write 'out': Input/output error\n"
              "kxutils: standard output: Input/output error\n");
    EXPECT_EQ(kxtest::list(dir.path()),
              (std::vector<std::string>{"damaged", "f", "good", "home", "plain"}));
    expectRun(runWithFault("close", {"path", "name", "x"}), 3, "x\n",
              "kxutils: standard output: Input/output error\n");
}

TEST_F(Faults, WhatTheLibraryPrintsStaysOutOfTheResults) {
    dir.write("f", "123456789");
    expectRun(runWithFault("print", {"crc", "f"}), 0, "CBF43926  f\n", "printed by the library\n");
}

TEST_F(Faults, WrongAnswersOfTheLibraryAreFound) {
    dir.write("f", "123456789");
    expectRun(runWithFault("wrong", {"crc", "--method", "all", "f"}), 1, "",
              "kxutils: f: the methods disagree\n");
    const auto outcome = runWithFault("wrong", {"selftest"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.out.find("\nBAD          CRC-32 8bytes\n"), std::string::npos);
    EXPECT_EQ(outcome.err, "kxutils: CRC-32 8bytes: wrong: 123456789\n");
}

TEST_F(Faults, AnInternalFaultIsExitCode5) {
    dir.write("f", "123456789");
    expectRun(runWithFault("throw", {"crc", "missing", "f"}), 5, "",
              "kxutils: missing: No such file or directory\nkxutils: internal fault: injected\n");
    const auto json = document({"crc", "missing", "f"}, 5);
    EXPECT_EQ(json["error"], "internal fault: injected");
    EXPECT_EQ(json["items"].size(), 1U);
}
