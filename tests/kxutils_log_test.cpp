// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log and labels on the command line.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "kxFont.h"
#include "kxutils_tool.h"

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
    // Only what is longer than 1 MiB comes in pieces.
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

// The log itself loses such lines without a word.
TEST_F(Tool, LogNoticesALineThatIsLost) {
    options.input = std::string(1000, 'x') + '\n' + std::string(1000, 'y') + '\n';
    expectRun(shell("ulimit -f 2; \"$K\" log --file a.log"), 3, "",
              "kxutils: Setting log file to 'a.log'.\nkxutils: -: a line was not written\n");
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

// A picture of the font's colours, drawn with the library itself.
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
