// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What all sub-commands have in common: help, arguments, streams, documents, exit codes.
#include <unistd.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "emulator.h"
#include "kxutils_tool.h"

namespace {

const std::vector<std::string> subCommands = {"base64", "cpu",   "crc",    "dirs",  "inspect",
                                              "label",  "log",   "number", "path",  "selftest",
                                              "shader", "stamp", "tmp",    "verify"};

}  // namespace

TEST_F(Tool, ShowsItsVersion) {
    expectRun(run({"--version"}), 0, "kxutils " KXTEST_VERSION "\n", "");
}

TEST_F(Tool, HelpListsEverySubCommandAndTheExitCodes) {
    const auto help = run({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_EQ(help.err, "");
    std::vector<std::string> listed;
    std::istringstream lines(help.out.substr(help.out.find("\nSubcommands:\n") + 14));
    for (std::string line; std::getline(lines, line) && !line.empty();)
        listed.push_back(line.substr(2, line.find(' ', 2) - 2));
    EXPECT_EQ(listed, subCommands);
    EXPECT_NE(help.out.find("Exit codes: 0 all good, 1 "), std::string::npos);
    EXPECT_EQ(help.out.back(), '\n');
}

TEST_F(Tool, HelpShowsWhatIsTakenByDefault) {
    EXPECT_NE(run({"crc", "--help"}).out.find("=8bytes"), std::string::npos);
    EXPECT_NE(run({"number", "--help"}).out.find("=3 "), std::string::npos);
    EXPECT_NE(run({"verify", "--help"}).out.find("N=1 "), std::string::npos);
}

TEST_F(Tool, EverySubCommandHasHelpWithAnExample) {
    for (const std::string& name : subCommands) {
        const auto help = run({name, "--help"});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.err, "");
        EXPECT_NE(help.out.find("Usage: kxutils " + name + ' '), std::string::npos) << help.out;
        EXPECT_NE(help.out.find("\nExample:\n  "), std::string::npos) << help.out;
        EXPECT_NE(help.out.find("kxutils " + name, help.out.find("Example:")), std::string::npos);
    }
}

namespace {

// The first words of the indented lines of a help text; "-r,--recursive" gives two.
std::vector<std::string> optionsOf(const std::string& help) {
    std::vector<std::string> options;
    std::istringstream lines(help.substr(help.find("\nOptions:\n")));
    static const std::regex option("^  (-\\w,)?(-[-\\w]+)( .*)?");
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (!std::regex_match(line, match, option)) continue;
        if (match[1].matched) options.push_back(match[1].str().substr(0, 2));
        options.push_back(match[2]);
    }
    return options;
}

std::string sectionOf(const std::string& page, const std::string& head) {
    const std::size_t begin = page.find('\n' + head);
    if (begin == std::string::npos) return {};
    return page.substr(begin, page.find("\n.S", begin + 1) - begin);
}

}  // namespace

TEST_F(Tool, ManPageAndCompletionKnowEveryOption) {
    const std::string page = kxtest::slurp(KXTEST_SOURCES "/kxutils.1");
    const std::string completion = KXTEST_SOURCES "/kxutils.bash";
    const std::string common = sectionOf(page, ".SH COMMON OPTIONS");
    environment["COMPLETION"] = completion;
    for (const std::string& name : subCommands) {
        const std::string section = sectionOf(page, ".SS kxutils " + name);
        EXPECT_NE(section, "") << name;
        std::vector<std::string> known = optionsOf(run({name, "--help"}).out);
        EXPECT_GE(known.size(), 3U) << name;
        for (const std::string& option : known) {
            const std::string inRoff = std::regex_replace(option, std::regex("-"), "\\-");
            EXPECT_NE((section + common).find(inRoff), std::string::npos) << name << ' ' << option;
        }
        if (!kxtest::exists("/bin/bash")) continue;
        environment["NAME"] = name;
        const auto completed = kxtest::run(
            {"/bin/bash", "-c",
             ". \"$COMPLETION\"; COMP_WORDS=(kxutils \"$NAME\" -); COMP_CWORD=2; _kxutils;"
             "printf '%s\\n' \"${COMPREPLY[@]}\""},
            environment);
        std::vector<std::string> words;
        std::istringstream lines(completed.out);
        for (std::string word; lines >> word;) words.push_back(word);
        std::sort(words.begin(), words.end());
        std::sort(known.begin(), known.end());
        EXPECT_EQ(words, known) << name << completed.err;
    }
}

TEST_F(Tool, CompletionKnowsEverySubCommand) {
    if (!kxtest::exists("/bin/bash")) GTEST_SKIP() << "no bash";
    environment["COMPLETION"] = KXTEST_SOURCES "/kxutils.bash";
    const auto completed = kxtest::run({"/bin/bash", "-c",
                                        ". \"$COMPLETION\"; COMP_WORDS=(kxutils ''); COMP_CWORD=1; "
                                        "_kxutils; echo \"${COMPREPLY[*]}\""},
                                       environment);
    std::string expected;
    for (const std::string& name : subCommands) expected += name + ' ';
    EXPECT_EQ(completed.out, expected + "--help --version\n");
}

TEST_F(Tool, WrongUsageIsExitCode2AndAMessage) {
    expectRun(run({}), 2, "", "kxutils: A subcommand is required\n");
    expectRun(run({"path"}), 2, "", "kxutils: operation is required\n");
    expectRun(run({"cpu", "--nonsense"}), 2, "",
              "kxutils: The following argument was not expected: --nonsense\n");
    EXPECT_EQ(run({"nonsense"}).exitCode, 2);
    EXPECT_EQ(run({"path", "nonsense", "x"}).exitCode, 2);
    EXPECT_EQ(run({"number", "group", "1", "--size", "0"}).exitCode, 2);
    EXPECT_EQ(run({"crc", "--skip", "many"}).exitCode, 2);
}

TEST_F(Tool, WrongUsageIsADocumentToo) {
    const auto usage = document({"path", "nonsense", "x"}, 2);
    EXPECT_NE(usage["error"].get<std::string>().find("nonsense"), std::string::npos);
    EXPECT_TRUE(usage["items"].empty());
    EXPECT_EQ(document({}, 2)["error"], "A subcommand is required");
    dir.write("list", "nonsense\n--json\n");
    EXPECT_EQ(run({"path", "@list"}).out.substr(0, 2), "{\n");
    expectRun(run({"path", "nonsense", "--", "--json"}), 2, "", run({"path", "nonsense", "x"}).err);
}

TEST_F(Tool, DocumentsHaveTheCommandAndAStatusPerItem) {
    expectRun(run({"path", "name", "/a/b", "c", "--json"}), 0,
              "{\n"
              "  \"command\": \"path\",\n"
              "  \"exitCode\": 0,\n"
              "  \"items\": [\n"
              "    {\n"
              "      \"name\": \"/a/b\",\n"
              "      \"status\": \"ok\",\n"
              "      \"result\": \"b\"\n"
              "    },\n"
              "    {\n"
              "      \"name\": \"c\",\n"
              "      \"status\": \"ok\",\n"
              "      \"result\": \"c\"\n"
              "    }\n"
              "  ]\n"
              "}\n",
              "");
}

TEST_F(Tool, DocumentsHoldErrorsInPlaceOfMessages) {
    dir.write("there", "123456789");
    const auto json = document({"crc", "missing", "there", "."}, 3);
    ASSERT_EQ(json["items"].size(), 3U);
    EXPECT_EQ(json["items"][0]["name"], "missing");
    EXPECT_EQ(json["items"][0]["status"], "unreadable");
    EXPECT_EQ(json["items"][0]["error"], "No such file or directory");
    EXPECT_EQ(json["items"][1]["status"], "ok");
    EXPECT_EQ(json["items"][1]["crc"], "CBF43926");
    EXPECT_EQ(json["items"][2]["error"], "Is a directory");
}

// U+FFFD stands for anything that is not UTF-8; the bytes themselves are beside it.
TEST_F(Tool, DocumentsKeepNamesOfAnyBytes) {
    const auto json = document({"path", "dir", "d\xFF\n/\xC3\xA4", "\xC3\xA4"}, 0);
    EXPECT_EQ(json["items"][0]["name"], "d\xEF\xBF\xBD\n/\xC3\xA4");
    EXPECT_EQ(json["items"][0]["nameBase64"], "ZP8KL8Ok");  // 64 FF 0A 2F C3 A4
    EXPECT_EQ(json["items"][0]["resultBase64"], "ZP8K");
    EXPECT_EQ(json["items"][1]["name"], "\xC3\xA4");
    EXPECT_EQ(json["items"][1].count("nameBase64"), 0U);
}

TEST_F(Tool, DocumentsReplaceStreamsOfBytesOnlyWhereThoseGoToAFile) {
    EXPECT_EQ(document({"base64"}, 2)["error"], "--json needs --output");
    EXPECT_EQ(document({"shader", "pack", "-"}, 2)["error"], "--json needs --output");
    EXPECT_EQ(document({"log"}, 2)["error"], "--json needs --file");
    EXPECT_EQ(document({"label", "x", "-"}, 2)["error"], "--json needs a file for the picture");
    options.input = "foo";
    EXPECT_EQ(document({"base64", "-o", "text"}, 0)["items"][0]["status"], "ok");
    EXPECT_EQ(kxtest::slurp(dir.file("text")), "Zm9v\n");
}

// --- Arguments -----------------------------------------------------------------------------------

TEST_F(Tool, AFileOfArgumentsHasOneALine) {
    dir.write("list", "name\n/x/a b\n/x/\"c\"\n\n/x/d");
    expectRun(run({"path", "@list", "/x/e"}), 0, "a b\n\"c\"\n\nd\ne\n", "");
    expectRun(runWith("/x/f\n", {"path", "name", "@-"}), 0, "f\n", "");
}

TEST_F(Tool, AFileOfArgumentsWithZeroBytesHasOneUpToEach) {
    dir.write("list", std::string("/x/a\nb\0/x/c\0", 12));
    expectRun(run({"path", "name", "@list"}), 0, "a\nb\nc\n", "");
}

TEST_F(Tool, OptionsInAFileOfArgumentsCountUnlessTheyFollowTwoDashes) {
    dir.write("list", "/a/b\n-z\n");
    expectRun(run({"path", "name", "@list"}), 0, std::string("b\0", 2), "");
    expectRun(run({"path", "name", "--", "@list"}), 0, "b\n-z\n", "");
}

TEST_F(Tool, TwoAtSignsStandForOne) {
    expectRun(run({"path", "name", "@@home", "@", "a@b"}), 0, "@home\n@\na@b\n", "");
}

TEST_F(Tool, AFileOfArgumentsThatCannotBeReadIsExitCode3) {
    expectRun(run({"path", "name", "@missing"}), 3, "",
              "kxutils: @missing: No such file or directory\n");
    expectRun(run({"path", "name", "@."}), 3, "", "kxutils: @.: Is a directory\n");
    EXPECT_EQ(document({"path", "name", "@missing"}, 3)["error"],
              "@missing: No such file or directory");
}

// Texts that an option parser may take for something else.
TEST_F(Tool, ArgumentsReachTheirSubCommandAsTheyAre) {
    const std::vector<std::string> texts = {"[a,b]", "[x]",  "[]",    "{}", "++", "%%",
                                            "",      "\x01", "\x01x", "-",  "/",  "name",
                                            "a=b",   "\n",   "a;b",   "-1"};
    for (const std::string& text : texts) {
        expectRun(run({"path", "ext", "x." + text}), 0, run({"path", "ext", "--", "x." + text}).out,
                  "");
        const std::string name = text == "/" ? "" : text;
        expectRun(run({"path", "name", text}), 0, name + "\n", "");
        expectRun(run({"path", "name", text, text}), 0, name + "\n" + name + "\n", "");
        if (text == "-1") continue;  // digits in a separator are grouped again
        expectRun(run({"number", "group", "123", "--size=1", "--separator", text}), 0,
                  "1" + text + "2" + text + "3\n", "");
    }
    expectRun(run({"path", "name", "--", "--json", "-z"}), 0, "--json\n-z\n", "");
    expectRun(run({"path", "base", "--base", "--json", "x"}), 0, "x\n", "");
}

// --- Lines and names -----------------------------------------------------------------------------

TEST_F(Tool, ResultsCanEndWithAZeroByte) {
    expectRun(run({"path", "name", "-z", "/x/a\nb", "c"}), 0, std::string("a\nb\0c\0", 6), "");
}

TEST_F(Tool, ANameThatWouldBreakALineIsEscaped) {
    dir.write("a\n\r\\b", "123456789");
    expectRun(run({"crc", "a\n\r\\b"}), 0, "\\CBF43926  a\\n\\r\\\\b\n", "");
    expectRun(run({"crc", "-z", "a\n\r\\b"}), 0, std::string("CBF43926  a\n\r\\b\0", 16), "");
    expectRun(run({"crc", "x\ny"}), 3, "", "kxutils: \\x\\ny: No such file or directory\n");
}

// --- Streams -------------------------------------------------------------------------------------

TEST_F(Tool, AFullDiskIsExitCode3) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    const std::string full = "kxutils: standard output: No space left on device\n";
    for (const std::string command :
         {"--version", "--help", "path name x", "path name x --json", "crc", "dirs", "cpu",
          "number group 1", "label x -", "shader pack -"})
        expectRun(shell("\"$K\" " + command + " >/dev/full"), 3, "", full);
    expectRun(shell("echo x | \"$K\" log >/dev/full"), 3, "", full);
    expectRun(shell("echo x | \"$K\" base64 -o /dev/full"), 3, "",
              "kxutils: -: cannot write '/dev/full': No space left on device\n");
}

TEST_F(Tool, AFailedCheckCountsMoreThanAFullDisk) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    EXPECT_EQ(shell("\"$K\" path expand '$NOPE' --json >/dev/full").exitCode, 1);
    EXPECT_EQ(shell("\"$K\" path nonsense x --json >/dev/full").exitCode, 2);
}

TEST_F(Tool, AClosedPipeIsExitCode3) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    options.out = ends[1];
    expectRun(run({"path", "name", "x"}), 3, "", "kxutils: standard output: Broken pipe\n");
    options.input = std::string(1000000, 'x');
    expectRun(run({"base64"}), 3, "", "kxutils: standard output: Broken pipe\n");
    close(ends[1]);
}

TEST_F(Tool, ClosedStandardStreamsAreExitCode3) {
    if (kxtest::underValgrind()) GTEST_SKIP() << "it needs standard error itself";
    expectRun(shell("\"$K\" path name x >&-"), 3, "",
              "kxutils: standard output: Bad file descriptor\n");
    expectRun(shell("\"$K\" crc - <&-"), 3, "", "kxutils: -: Bad file descriptor\n");
    // No message gets into a file that happens to have the descriptor of standard error.
    dir.write("cut", "Zm9vY");
    dir.write("out", "old");
    EXPECT_EQ(shell("\"$K\" base64 -d cut -o out >&- 2>&-").exitCode, 1);
    EXPECT_EQ(kxtest::slurp(dir.file("out")), "old");
    expectRun(shell("echo foo | \"$K\" base64 -o out >&- 2>&-; cat out"), 0, "Zm9vCg==\n", "");
}

TEST_F(Tool, AMessageThatCannotBeWrittenIsExitCode3) {
    if (!kxtest::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
    environment["TALO_TMP_DIR"] = dir.file("scratch");
    EXPECT_EQ(shell("\"$K\" tmp 2>/dev/full").exitCode, 3);
}

TEST_F(Tool, ResultsAndMessagesKeepTheirOrderInOneFile) {
    dir.write("f", "123456789");
    expectRun(shell("\"$K\" crc f missing f 2>&1"), 3,
              "CBF43926  f\nkxutils: missing: No such file or directory\nCBF43926  f\n", "");
}

TEST_F(Tool, AFileSizeLimitIsExitCode3) {
    options.input = std::string(100000, 'x');
    const auto outcome = shell("ulimit -f 1; \"$K\" base64 -o out");
    expectRun(outcome, 3, "", "kxutils: -: cannot write 'out': File too large\n");
}

TEST_F(Tool, OutputIsNotColouredWhereItIsNoTerminal) {
    dir.write("list", "00000000  missing\n");
    EXPECT_EQ(run({"crc", "-c", "list"}).out, "unreadable   missing\n");
}
