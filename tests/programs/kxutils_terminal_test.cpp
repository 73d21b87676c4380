// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What is shown only on a terminal, and faults that have to be provoked.
#include <fcntl.h>
#include <pty.h>
#include <unistd.h>

#include <cstdio>
#include <future>
#include <sstream>

#include "emulator.h"
#include "kxutils_tool.h"
#include "reference/checksum_footer.h"

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

    // Waits until a text has been written; returns everything up to there.
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

    // What has been written since then; nothing more can be written.
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

// --- Names ---------------------------------------------------------------------------------------

namespace {

// All names of one byte except "-", "." and "/", and some others.
std::vector<std::string> nastyNames() {
    std::vector<std::string> names;
    for (int byte = 1; byte < 256; ++byte)
        if (byte != '-' && byte != '.' && byte != '/')
            names.emplace_back(1, static_cast<char>(byte));
    for (const char* const name : {"plain",
                                   "a b",
                                   " ",
                                   "a\nb",
                                   "\n",
                                   "a\n",
                                   "\nb",
                                   "a\n\033[31m\r\tb\a\b\f\v\177",
                                   "it's",
                                   "'",
                                   "''",
                                   "it's\n",
                                   "\n'\n",
                                   "it's $1",
                                   "it's #1",
                                   "#it's",
                                   "~it's",
                                   "a~'",
                                   "{it's}",
                                   "a{",
                                   "{}",
                                   "a#",
                                   "a~",
                                   "#a",
                                   "~a",
                                   "a\\b",
                                   "a\\n",
                                   "\"a\"",
                                   "a\"'",
                                   "?*[a]",
                                   "a=b",
                                   "a^b",
                                   "a@b",
                                   "a:b,c+d%e_f",
                                   "-x",
                                   "--x=y",
                                   "...",
                                   "ok           good",
                                   "\xC3\xA4",
                                   "\xC3\xA4 b",
                                   "\xC3\xA4'b",
                                   "\xC3\xA4\nb",
                                   "\xE6\x97\xA5\xE6\x9C\xAC",
                                   "a\xCC\x80",
                                   "\xC2\x85",
                                   "\xE2\x80\x8B",
                                   "\xE2\x80\xAE",
                                   "\xC3",
                                   "\xC3(",
                                   "a\xE6\x97",
                                   "\xE6\x97 b",
                                   "\xED\xA0\x80",
                                   "\xF4\x90\x80\x80",
                                   "\xF0\x9F\x98\x80",
                                   "\xFF\xFE'"})
        names.emplace_back(name);
    return names;
}

}  // namespace

class NamesOnTerminal : public OnTerminal {
protected:
    // Creates files of these names and returns how the program shows the names, without line ends.
    std::vector<std::string> shown(const std::vector<std::string>& names) {
        std::vector<std::string> arguments = {"crc", "--"};
        for (const std::string& name : names) {
            dir.write(name, "");
            arguments.push_back((name[0] == '@' ? "@" : "") + name);
        }
        const Terminal screen;
        options.out = screen.descriptor();
        auto outcome = std::async(std::launch::async, [&] { return run(arguments); });
        std::vector<std::string> lines;
        std::string text;
        while (lines.size() < names.size()) {
            text += screen.readUntil("\r\n");
            for (std::size_t end = 0; (end = text.find("\r\n")) != std::string::npos;) {
                EXPECT_EQ(text.substr(0, 10), "00000000  ");
                lines.push_back(text.substr(10, end - 10));
                text.erase(0, end + 2);
            }
        }
        EXPECT_EQ(outcome.get().exitCode, 0);
        options.out = -1;
        return lines;
    }
};

// ls is asked for its default form on a terminal. If a name has an apostrophe and ends with an
// escape sequence, the ls of coreutils 9.1 writes a different name.
TEST_F(NamesOnTerminal, AreQuotedAsLsDoes) {
    const std::string style = "--quoting-style=shell-escape";
    if (shell("ls -d " + style + " .").exitCode != 0) GTEST_SKIP() << "not the GNU ls";
    std::vector<std::string> names;
    for (const std::string& name : nastyNames())
        if (name.find('\'') == std::string::npos || name.back() != '\n') names.push_back(name);
    std::vector<std::string> list = {"/bin/ls", "-dU", style, "--"};
    list.insert(list.end(), names.begin(), names.end());
    for (const char* const locale : {"C", "C.UTF-8"}) {
        environment["LC_ALL"] = locale;
        const std::vector<std::string> ours = shown(names);
        std::istringstream lines(kxtest::run(list, environment, options).out);
        for (std::size_t i = 0; i < names.size(); ++i) {
            std::string line;
            std::getline(lines, line);
            EXPECT_EQ(ours[i], line) << locale;
        }
    }
}

TEST_F(NamesOnTerminal, AreReadBackByTheShell) {
    if (!kxtest::exists("/bin/bash")) GTEST_SKIP() << "no bash";
    const std::vector<std::string> names = nastyNames();
    std::string command = "printf '%s\\0'", expected;
    for (const std::string& quoted : shown(names)) command += ' ' + quoted;
    for (const std::string& name : names) expected += name + '\0';
    EXPECT_EQ(kxtest::run({"/bin/bash", "-c", command}).out, expected);
}

TEST_F(NamesOnTerminal, HaveNoControlCharacterLeft) {
    for (const std::string& name : shown(nastyNames()))
        for (const char c : name) EXPECT_TRUE(c >= ' ' && c < '\177') << name;
    environment["LC_ALL"] = "no such locale";
    EXPECT_EQ(shown({"a\xC3\xA4"}), std::vector<std::string>{"'a'$'\\303\\244'"});
}

TEST_F(OnTerminal, EveryNameInALineIsQuoted) {
    const std::string name = "x\nok           good\033[31m",
                      quoted = "'x'$'\\n''ok           good'$'\\033''[31m'";
    dir.write(name, stamped);
    dir.write("bad", "12345678" + std::string("\0TALOCRC\n\033[31mok", 16));
    dir.write("list", "\\CBF43926  x\\nok           good\033[31m\n");
    options.out = terminal.descriptor();
    environment["NO_COLOR"] = "1";
    run({"verify", name});
    run({"inspect", name, "bad"});
    run({"stamp", "--force", "--dry-run", name});
    run({"crc", "-c", "list"});
    run({"path", "name", "/d/" + name, "plain"});
    run({"dirs", "--app", dir.file(name)});
    environment["TALO_TMP_DIR"] = dir.makeDir("t\nt");
    run({"tmp"});
    const std::string text = terminal.text();
    EXPECT_EQ(text.find('\033'), std::string::npos);
    EXPECT_EQ(text.find("\nok           good"), std::string::npos);
    EXPECT_EQ(text.substr(0, 13 + quoted.size() + 2), "ok           " + quoted + "\r\n");
    EXPECT_NE(text.find("\r\n" + quoted + "\r\n  size             25\r\n"), std::string::npos);
    EXPECT_NE(text.find("  stored           ''$'\\n\\033''[31mok'\r\n"), std::string::npos) << text;
    EXPECT_NE(text.find("\r\nwould stamp  "), std::string::npos);
    EXPECT_NE(text.find("BAD          " + quoted + "\r\n"), std::string::npos);
    EXPECT_NE(text.find("\r\n" + quoted + "\r\nplain\r\n"), std::string::npos);
    EXPECT_NE(text.find("/x'$'\\n''ok           good'$'\\033''[31m/'\r\n"), std::string::npos)
        << text;
    EXPECT_NE(text.find("temporary    exists   '" + dir.path() + "/t'$'\\n''t'\r\n"),
              std::string::npos);
}

TEST_F(OnTerminal, EveryNameInAMessageIsQuoted) {
    const std::string name = "x\n\033[31my", inside = "x'$'\\n\\033''[31my";
    const std::string missing = ": No such file or directory\r\n";
    options.err = terminal.descriptor();
    dir.write("f", "");
    run({"verify", "-z", name});
    run({"crc", "-c", name});
    run({"crc", "@" + name});
    run({"base64", "f", "-o", name + "/o"});
    run({"cpu", "--has", name});
    run({"path", "expand", "$" + name, "$KXA"});
    dir.makeDir(name);
    run({"log", "--file", name});
    options.input = "x\n";
    dir.write(name + "/f", "mine");
    run({"log", "--file", name + "/f"});
    run({"log", "--file", name + "/f", "--force"});
    environment["TALO_TMP_DIR"] = dir.makeDir("t\nt");
    run({"tmp"});
    const std::string head = "kxutils: ";
    EXPECT_EQ(terminal.text(),
              head + "'" + inside + "'" + missing +       // verify
                  head + "'" + inside + "'" + missing +   // crc
                  head + "'@" + inside + "'" + missing +  // the arguments
                  head + "f: cannot write '" + inside + "/o'" + missing + head +
                  "--has: unknown feature '" + inside + "'\r\n" + head + "'$" + inside +
                  "': expandFilename: couldn't expand env.var x!\r\n" + head +
                  "'$KXA': expandFilename: couldn't expand env.var KXA!\r\n" + head +
                  "-: Couldn't create log file '" + inside + "'!\r\n" + head + "-: '" + inside +
                  "/f' is not a text log to go on with; --force moves it aside\r\n" + head + "'" +
                  inside + "/f' is now '" + inside + "/f.~1~'\r\n" + head +
                  "Setting log file to 'x'$'\\n''y/f'.\r\n" +  // by the library, without colours
                  head + "TALO_TMP_DIR = '" + dir.path() + "/t'$'\\n''t'\r\n");
}

// Each stream is examined separately.
TEST_F(OnTerminal, NamesAreRawInPipes) {
    dir.write("a\nb", "123456789");
    options.err = terminal.descriptor();
    EXPECT_EQ(run({"crc", "a\nb", "n\n"}).out, "\\CBF43926  a\\nb\n");
    EXPECT_EQ(run({"path", "name", "a b\n"}).out, "a b\n\n");
    EXPECT_EQ(terminal.text(), "kxutils: 'n'$'\\n': No such file or directory\r\n");
    const Terminal other;
    options.err = -1;
    options.out = other.descriptor();
    EXPECT_EQ(run({"crc", "-z", "a\nb", "n\n"}).err, "kxutils: n\n: No such file or directory\n");
    EXPECT_EQ(run({"crc", "n\n"}).err, "kxutils: \\n\\n: No such file or directory\n");
    EXPECT_EQ(other.readUntil("b").substr(0, 14), "CBF43926  a\r\nb");
}

// --- Progress ------------------------------------------------------------------------------------

// The program waits for its input, which comes only after the test has looked at the terminal.
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

constexpr std::size_t block = 98304;  // the size that the program reads at once

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
    environment["FAULTS"] = KXTEST_FAULTS;  // for this program only
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
    EXPECT_EQ(terminal.text(),
              "\r\033[K192.0 KiB of 192.0 KiB, 320.0 KiB/s, 0 s left"
              "\r\033[K" +
                  reference::crc32Digits(bytes) +
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

// A network file system reports a full disk here.
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
