// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log and labels on the command line.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "file_limit.h"
#include "kxFont.h"
#include "kxutils_tool.h"
#include "rows.h"

namespace {

// The lines with every time stamp replaced by "STAMP".
std::string withoutStamps(const std::string& lines) {
    static const std::regex text("\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"),
        csv("\\d\\d\\.\\d\\d\\.\\d{4};\\d\\d:\\d\\d:\\d\\d");
    return std::regex_replace(std::regex_replace(lines, text, "STAMP"), csv, "STAMP");
}

}  // namespace

// --- log -----------------------------------------------------------------------------------------

TEST_F(Tool, LogWritesLinesInEachFormat) {
    const std::string lines =
        "started\nWARN disk <80%>\nERROR: full\nWARNING:x\nERRORS\nwarn\n\nend";
    auto outcome = runWith(lines, {"log"});
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(withoutStamps(outcome.out),
              "STAMP INFO 100 started\nSTAMP WARN 200 disk <80%>\nSTAMP ERROR 300 full\n"
              "STAMP WARN 200 x\nSTAMP INFO 100 ERRORS\nSTAMP INFO 100 warn\nSTAMP INFO 100 \n"
              "STAMP INFO 100 end\n");
    EXPECT_EQ(run({"log", "--format", "text"}).exitCode, 0);
    outcome = runWith("WARN a;%s", {"log", "--format", "csv"});
    EXPECT_EQ(withoutStamps(outcome.out), "STAMP;WARN;200;a;%s\n");
    expectRun(runWith("ERROR <b>\n", {"log", "--format", "html"}), 0,
              "<span style=\"color:#b40000;\">&#60;b&#62;</span><br>\n", "");
    EXPECT_EQ(run({"log", "--format", "xml"}).exitCode, 2);
}

TEST_F(Tool, LogLevelHoldsForAllLines) {
    for (const auto& [level, word] :
         {std::pair("info", "INFO 100"), std::pair("warning", "WARN 200"),
          std::pair("error", "ERROR 300")}) {
        const auto outcome = runWith("ERROR x\n", {"log", "--level", level});
        EXPECT_EQ(withoutStamps(outcome.out), std::string("STAMP ") + word + " ERROR x\n");
        EXPECT_EQ(outcome.err, "");
    }
    EXPECT_EQ(run({"log", "--level", "loud"}).exitCode, 2);
}

TEST_F(Tool, LogKeepsLongLinesWhole) {
    const std::string text(300000, 'x');
    const auto outcome = runWith(text + "\ny\n", {"log"});
    EXPECT_TRUE(withoutStamps(outcome.out) == "STAMP INFO 100 " + text + "\nSTAMP INFO 100 y\n");
    // Only texts longer than 1 MiB come in pieces.
    const std::size_t most = 1 << 20;
    EXPECT_TRUE(withoutStamps(runWith(std::string(most + 1, 'x') + "\ny", {"log"}).out) ==
                "STAMP INFO 100 " + std::string(most, 'x') +
                    "\nSTAMP INFO 100 x\nSTAMP INFO 100 y\n");
}

TEST_F(Tool, LogAppendsToAFile) {
    const std::string said = "kxutils: Setting log file to 'a.log'.\n";
    expectRun(runWith("one\n", {"log", "--file", "a.log"}), 0, "", said);
    expectRun(runWith("WARN two\n", {"log", "--file", "a.log"}), 0, "", said);
    EXPECT_EQ(withoutStamps(kxtest::slurp(dir.file("a.log"))),
              "STAMP INFO 100 one\nSTAMP WARN 200 two\n");
    options.input = "x\n";
    EXPECT_EQ(run({"log", "--file", "a.csv", "--format", "csv"}).exitCode, 0);
    EXPECT_EQ(withoutStamps(kxtest::slurp(dir.file("a.csv"))),
              "Date;Time;Type of Message;Message Number;Description\nSTAMP;INFO;100;x\n");
    EXPECT_EQ(run({"log", "--file", "a.html", "--format", "html"}).exitCode, 0);
    EXPECT_NE(kxtest::slurp(dir.file("a.html")).find("Log file from "), std::string::npos);
}

TEST_F(Tool, LogMovesAFileOfAnotherDayAside) {
    dir.write("a.log", "2017-03-01 14:05:09 INFO 100 old\n");
    EXPECT_EQ(runWith("new\n", {"log", "--file", "a.log"}).exitCode, 0);
    EXPECT_EQ(kxtest::slurp(dir.file("a.log20170301-140509")),
              "2017-03-01 14:05:09 INFO 100 old\n");
    EXPECT_EQ(withoutStamps(kxtest::slurp(dir.file("a.log"))), "STAMP INFO 100 new\n");
}

TEST_F(Tool, LogFollowsTheVariableOfTheLogDirectory) {
    environment["KXUTILS_LOG_DIR"] = dir.file("logs");
    expectRun(runWith("x\n", {"log", "--file", "a.log"}), 0, "",
              "kxutils: Setting log file to '" + dir.file("logs/a.log") + "'.\n");
    EXPECT_TRUE(kxtest::exists(dir.file("logs/a.log")));
}

TEST_F(Tool, LogFilesThatCannotBeWrittenAreExitCode3) {
    dir.write("file", "");
    options.input = "x\n";
    expectRun(run({"log", "--file", "file/a.log"}), 3, "",
              "kxutils: -: Couldn't create log file 'file/a.log'!\n");
    if (kxtest::exists("/dev/full"))
        expectRun(run({"log", "--file", "/dev/full"}), 3, "",
                  "kxutils: Setting log file to '/dev/full'.\n"
                  "kxutils: -: a log file is a regular file\n");
    expectRun(shell("\"$K\" log --file a.log <."), 3, "",
              "kxutils: Setting log file to 'a.log'.\nkxutils: -: Is a directory\n");
}

// The log itself loses such lines silently.
TEST_F(Tool, LogNoticesALineThatIsLost) {
    options.input = std::string(1000, 'x') + '\n' + std::string(1000, 'y') + '\n';
    expectRun(shell("ulimit -f 2; \"$K\" log --file a.log"), 3, "",
              "kxutils: Setting log file to 'a.log'.\nkxutils: -: a line was not written\n");
}

// --- Files that are not logs ---------------------------------------------------------------------

namespace {

const std::string header = "Date;Time;Type of Message;Message Number;Description\n";
const std::string headBlock =
    "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head><br>"
    "<p align=\"middle\">";

struct Standing {
    const char* name;
    const char* format;
    std::string bytes;
    bool isLog;
};
void PrintTo(const Standing& s, std::ostream* os) { *os << s.name; }

std::string refusal(const std::string& file, const std::string& format) {
    return "kxutils: -: '" + file + "' is not " + format +
           " log to go on with; --force moves it aside\n";
}

}  // namespace

class LogOntoFile : public Tool, public testing::WithParamInterface<Standing> {};

TEST_P(LogOntoFile, GoesOnWithALogAndLeavesOthersAlone) {
    const auto& [name, format, bytes, isLog] = GetParam();
    dir.write("f", bytes);
    const auto before = kxtest::list(dir.path());
    const auto outcome = runWith("new\n", {"log", "--format", format, "--file", "f"});
    EXPECT_EQ(outcome.exitCode, isLog ? 0 : 3);
    EXPECT_EQ(outcome.out, "");
    if (isLog) {
        EXPECT_EQ(outcome.err, "kxutils: Setting log file to 'f'.\n");
        EXPECT_NE(kxtest::slurp(dir.file("f")).find("new"), std::string::npos);
        return;
    }
    EXPECT_EQ(outcome.err.substr(0, 24), "kxutils: -: 'f' is not a");
    EXPECT_EQ(kxtest::slurp(dir.file("f")), bytes);
    EXPECT_EQ(kxtest::list(dir.path()), before);
}

TEST_P(LogOntoFile, ForceLosesNothing) {
    const auto& [name, format, bytes, isLog] = GetParam();
    dir.write("f", bytes);
    dir.write("f.~1~", "earlier");
    const auto outcome = runWith("new\n", {"log", "--format", format, "--file", "f", "--force"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_NE(kxtest::slurp(dir.file("f")).find("new"), std::string::npos);
    EXPECT_EQ(kxtest::slurp(dir.file("f.~1~")), "earlier");
    EXPECT_EQ(kxtest::exists(dir.file("f.~2~")), !isLog);
    if (isLog) return;
    EXPECT_EQ(outcome.err, "kxutils: 'f' is now 'f.~2~'\nkxutils: Setting log file to 'f'.\n");
    EXPECT_EQ(kxtest::slurp(dir.file("f.~2~")), bytes);
}

static const Standing standingFiles[] = {
    {"Text", "text", "2017-03-01 14:05:09 INFO 100 old\n", true},
    {"TextEmpty", "text", "", true},
    {"TextNoStamp", "text", "my letters\n", false},
    {"TextStampCut", "text", "2017-03-01 14:05:09", false},
    {"TextStampBehind", "text", "x\n2017-03-01 14:05:09 INFO 100 old\n", false},
    {"TextNoDigit", "text", "2017-03-0x 14:05:09 INFO 100 old\n", false},
    {"TextOtherMark", "text", "2017/03/01 14:05:09 INFO 100 old\n", false},
    {"TextCsv", "text", header, false},
    {"Csv", "csv", header + "01.03.2017;14:05:09;INFO;100;old\n", true},
    {"CsvHeaderOnly", "csv", header, true},
    {"CsvEmpty", "csv", "", true},
    {"CsvNone", "csv", "x;y\n1;2\n", false},
    {"CsvHeaderCut", "csv", header.substr(0, header.size() - 1), false},
    {"CsvHeaderLonger", "csv", header.substr(0, header.size() - 1) + ";More\n", false},
    {"CsvNoStamps", "csv", header + "old\n", false},
    {"CsvText", "csv", "2017-03-01 14:05:09 INFO 100 old\n", false},
    {"Html", "html", headBlock + "<font>...</p>\n", true},
    {"HtmlEmpty", "html", "", true},
    {"HtmlHeadCut", "html", headBlock.substr(0, headBlock.size() - 1), false},
    {"HtmlPage", "html", "<html><body>mine</body></html>\n", false},
    {"HtmlText", "html", "2017-03-01 14:05:09 INFO 100 old\n", false},
};
INSTANTIATE_TEST_SUITE_P(Table, LogOntoFile, testing::ValuesIn(standingFiles), kxtest::nameOfRow);

TEST_F(Tool, LogSaysWhichFileIsNoLog) {
    dir.write("f", "mine");
    options.input = "x\n";
    expectRun(run({"log", "--file", "f"}), 3, "", refusal("f", "a text"));
    expectRun(run({"log", "--file", "f", "--format", "html"}), 3, "", refusal("f", "an HTML"));
    expectRun(run({"log", "--file", "f", "--format", "csv"}), 3, "", refusal("f", "a CSV"));
    EXPECT_EQ(document({"log", "--file", "f"}, 3)["items"][0]["status"], "unwritable");
    environment["KXUTILS_LOG_DIR"] = dir.makeDir("logs");
    dir.write("logs/f", "mine");
    expectRun(run({"log", "--file", "elsewhere/f"}), 3, "", refusal(dir.file("logs/f"), "a text"));
    EXPECT_EQ(run({"log", "--file", "elsewhere/f", "--force"}).exitCode, 0);
    EXPECT_EQ(kxtest::slurp(dir.file("logs/f.~1~")), "mine");
}

// The library gives all logs without a date one and the same name.
TEST_F(Tool, LogKeepsWhatStandsWhereUndatedLogsGo) {
    const std::string undated = "f00000-000000";
    options.input = "x\n";
    const auto exitCode = [&](const char* format, const std::string& bytes) {
        dir.write(undated, bytes);
        const int code = run({"log", "--file", "f", "--format", format}).exitCode;
        EXPECT_TRUE(code == 0 || kxtest::slurp(dir.file(undated)) == bytes);
        std::filesystem::remove(dir.file("f"));
        return code;
    };
    EXPECT_EQ(exitCode("csv", "mine"), 3);
    EXPECT_EQ(exitCode("csv", header + "01.03.2017;14:05:09;INFO;100;old\n"), 3);
    EXPECT_EQ(exitCode("csv", header), 0);
    EXPECT_EQ(exitCode("html", "mine"), 0);  // a new log does not move one
    EXPECT_EQ(exitCode("text", "mine"), 0);
    dir.write("f", "");
    EXPECT_EQ(exitCode("text", "mine"), 3);
    dir.write("f", headBlock);
    EXPECT_EQ(exitCode("html", "mine"), 3);
    dir.write("f", headBlock);
    EXPECT_EQ(exitCode("html", headBlock), 0);
    dir.write("f", "mine");
    dir.write(undated, "mine, too");
    EXPECT_EQ(run({"log", "--file", "f", "--format", "csv", "--force"}).exitCode, 0);
    EXPECT_EQ(kxtest::slurp(dir.file("f.~1~")), "mine");
    EXPECT_EQ(kxtest::slurp(dir.file(undated + ".~1~")), "mine, too");
}

TEST_F(Tool, LogFollowsALinkOnlyToLook) {
    dir.write("mine", "mine");
    std::filesystem::create_symlink("mine", dir.file("f"));
    options.input = "x\n";
    expectRun(run({"log", "--file", "f", "--format", "csv"}), 3, "", refusal("f", "a CSV"));
    EXPECT_EQ(run({"log", "--file", "f", "--format", "csv", "--force"}).exitCode, 0);
    EXPECT_EQ(std::filesystem::read_symlink(dir.file("f.~1~")), "mine");
    EXPECT_EQ(kxtest::slurp(dir.file("mine")), "mine");
}

TEST_F(Tool, LogRefusesAFileThatItCannotLookAt) {
    if (kxtest::isRoot()) GTEST_SKIP() << "the super-user may read everything";
    std::filesystem::permissions(dir.write("f", "mine"), std::filesystem::perms::owner_write);
    expectRun(runWith("x\n", {"log", "--file", "f"}), 3, "",
              "kxutils: -: 'f': Permission denied\n");
    dir.write("sub/f", "mine");
    std::filesystem::permissions(dir.file("sub"), std::filesystem::perms(0500));
    expectRun(runWith("x\n", {"log", "--file", "sub/f", "--force"}), 3, "",
              "kxutils: -: cannot move 'sub/f' aside: Permission denied\n");
    std::filesystem::permissions(dir.file("sub"), std::filesystem::perms(0700));
    EXPECT_EQ(kxtest::slurp(dir.file("sub/f")), "mine");
}

// The log itself loses a header silently, too.
TEST_F(Tool, LogNoticesAHeadThatIsLost) {
    const auto withLimit = [&](rlim_t bytes, const char* format) {
        const kxtest::ScopedFileLimit limit(bytes);
        return run({"log", "--file", "f", "--format", format});
    };
    const std::string lost =
        "kxutils: Setting log file to 'f'.\nkxutils: -: the head of the log was not written\n";
    for (const rlim_t bytes : {100U, 300U}) {
        expectRun(withLimit(bytes, "html"), 3, "", lost);
        std::filesystem::remove(dir.file("f"));
    }
    EXPECT_EQ(withLimit(1000, "html").exitCode, 0);
    std::filesystem::remove(dir.file("f"));
    // The limit must not apply to what the test reads, and it leaves no room for messages held
    // back.
    // ThreadSanitizer meets the limit before the program can ignore the signal.
    const std::string ignore = kxtest::underSanitizer() ? "trap '' XFSZ; " : "";
    for (const std::string format : {"html", "csv"}) {
        expectRun(shell("(" + ignore + "ulimit -f 0; \"$K\" log --file f --format " + format +
                        " 2>&1; echo $?) | cat"),
                  0, "kxutils: -: the head of the log was not written\n3\n", "");
        std::filesystem::remove(dir.file("f"));
    }
}

TEST_F(Tool, LogDocumentCountsTheLines) {
    options.input = "a\nb\nc";
    const auto outcome = run({"log", "--file", "a.log", "--json"});
    EXPECT_EQ(outcome.err, "kxutils: Setting log file to 'a.log'.\n");
    const auto json = nlohmann::json::parse(outcome.out);
    EXPECT_EQ(json["items"][0]["lines"], 3);
    EXPECT_EQ(json["items"][0]["status"], "ok");
}

// --- label ---------------------------------------------------------------------------------------

namespace {

// A picture in the font's colours, drawn with the library itself.
std::string labelled(std::string pixels, std::size_t width, std::size_t height,
                     const std::string& text, unsigned colour) {
    std::string flipped;
    for (std::size_t row = height; row-- > 0;) flipped += pixels.substr(3 * width * row, 3 * width);
    kxFont::drawText(reinterpret_cast<unsigned char*>(flipped.data()), text,
                     static_cast<int>(width), colour);
    std::string result = "P6\n" + std::to_string(width) + ' ' + std::to_string(height) + "\n255\n";
    for (std::size_t row = height; row-- > 0;) result += flipped.substr(3 * width * row, 3 * width);
    return result;
}

std::string somePixels(std::size_t width, std::size_t height) {
    std::string pixels;
    for (std::size_t i = 0; i < 3 * width * height; ++i) pixels += static_cast<char>(i * 7 & 0xFF);
    return pixels;
}

}  // namespace

TEST_F(Tool, LabelDrawsIntoThePicturesLowerLeftCorner) {
    for (const std::size_t height : {7U, 8U, 500U}) {
        const std::size_t width = 200;
        const std::string pixels = somePixels(width, height);
        dir.write("in.ppm",
                  "P6\n# made by a renderer\n200 " + std::to_string(height) + "\n255\n" + pixels);
        expectRun(run({"label", "Front view", "in.ppm", "out.ppm", "--color", "123abC"}), 0, "",
                  "");
        EXPECT_TRUE(kxtest::slurp(dir.file("out.ppm")) ==
                    labelled(pixels, width, height, "Front view", 0xBC3A12))
            << height;
    }
}

TEST_F(Tool, LabelReadsAndWritesTheStreams) {
    const std::string pixels = somePixels(20, 9);
    expectRun(runWith("P6 20 9 255\n" + pixels, {"label", "ab", "-", "-"}), 0,
              labelled(pixels, 20, 9, "ab", 0xFFFFFF), "");
}

TEST_F(Tool, LabelCutsItselfInALowPicture) {
    const std::string pixels = somePixels(20, 3);
    const std::string whole =
        labelled(std::string(3 * 20 * 4, '\0') + pixels, 20, 7, "ab", 0xFFFFFF);
    expectRun(runWith("P6 20 3 255\n" + pixels, {"label", "ab", "-", "-"}), 0,
              "P6\n20 3\n255\n" + whole.substr(whole.size() - pixels.size()), "");
}

TEST_F(Tool, LabelWithoutPictureGetsABackgroundOfItsSize) {
    expectRun(run({"label", "Rear", "-"}), 0,
              labelled(std::string(3 * 25 * 7, '\0'), 25, 7, "Rear", 0xFFFFFF), "");
    expectRun(run({"label", "", "-", "--color", "000000"}), 0,
              "P6\n1 7\n255\n" + std::string(21, '\0'), "");
}

TEST_F(Tool, LabelRefusesWhatIsNoPicture) {
    const std::string fault = "kxutils: -: not a binary PPM with 8 bits a sample\n";
    for (const std::string picture : {"", "P6", "P5 1 1 255\nx", "P6 0 1 255\n", "P6 1 1 65535\n",
                                      "P6 1 -1 255\n", "P6 x", "P6 1 1 255x", "P6 #"})
        expectRun(runWith(picture, {"label", "x", "-", "out"}), 1, "", fault);
    EXPECT_FALSE(kxtest::exists(dir.file("out")));
    expectRun(runWith("P6 1000001 1 255\n", {"label", "x", "-", "out"}), 1, "",
              "kxutils: -: the picture is too large\n");
    for (const std::size_t missing : {1U, 3 * 10 * 9U})
        expectRun(runWith("P6 10 9 255\n" + somePixels(10, 9).substr(missing),
                          {"label", "x", "-", "out"}),
                  1, "", "kxutils: -: the picture is cut off\n");
}

TEST_F(Tool, LabelNamesFilesThatItCannotUse) {
    dir.write("in.ppm", "P6 1 1 255\nabc");
    expectRun(run({"label", "x", "missing", "out"}), 3, "",
              "kxutils: missing: No such file or directory\n");
    expectRun(run({"label", "x", "in.ppm", "."}), 3, "",
              "kxutils: in.ppm: cannot write '.': Is a directory\n");
    expectRun(run({"label", "x", "in.ppm", "in.ppm"}), 2, "",
              "kxutils: 'in.ppm' is the file that is read\n");
    EXPECT_EQ(kxtest::slurp(dir.file("in.ppm")), "P6 1 1 255\nabc");
    for (const char* colour : {"12345", "1234567", "12345g", "#12345", ""})
        EXPECT_EQ(run({"label", "x", "out", "--color", colour}).exitCode, 2);
    EXPECT_EQ(run({"label", "x"}).exitCode, 2);
    EXPECT_EQ(run({"label", "x", "a", "b", "c"}).exitCode, 2);
}
