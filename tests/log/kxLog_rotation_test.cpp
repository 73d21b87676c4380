// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Old log files: how they are recognised and moved aside when the file is chosen and, in CSV
// format, with every message.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <sstream>
#include <thread>

#include "kxLog.h"
#include "kxLog_fixture.h"
#include "rows.h"

using kxtest::Console;
using kxtest::consoleOf;
using kxtest::isStamped;
using kxtest::Level;
using kxtest::levels;
using kxtest::noonZone;
using kxtest::slurp;
using Names = std::vector<std::string>;

namespace {

constexpr const char* undated = "00000-000000";
constexpr const char* newDay = "create new log file, new day started!\n";
constexpr const char* renameFailure = "kxLog::setLogFile: couldn't rename old log file!\n";

const std::string header = kxtest::csvHeader;
const std::string oldText = "2017-03-01 14:05:09 INFO 100 old\n";
const std::string oldCsv = "01.03.2017;14:05:09;INFO;100;old\n";
constexpr const char* oldStamp = "20170301-140509";

std::string textDay(int days, const char* rest = "INFO 100 x\n") {
    return noonZone.day(days, kxtest::textStampFormat) + rest;
}
std::string csvDay(int days, const char* rest = "INFO;100;x\n") {
    return noonZone.day(days, kxtest::csvStampFormat) + rest;
}

class Rotation : public kxtest::LogTest {
protected:
    const kxtest::TempDir dir;
    const std::string path = dir.file("app.log");
    const Console setting{"Setting log file to '" + path + "'.\n", ""};

    Console choose() const {
        return consoleOf([&] { kxLog::setLogFile(path.c_str()); });
    }
    /// Chooses an existing CSV file with this content, as a program left it on an earlier day.
    void adopt(const std::string& content) {
        kxLog::setLogFormat(3);
        dir.write("app.log", content);
        kxLog::_log_file = path;
    }
};

// --- When the file is chosen ---------------------------------------------------------------------

struct OldFile {
    const char* name;
    int format;
    std::string content, stamp;  ///< of the moved file; "" if the file stays
};
void PrintTo(const OldFile& c, std::ostream* os) { *os << c.name; }

class OldLogFile : public Rotation, public testing::WithParamInterface<OldFile> {};
TEST_P(OldLogFile, MovesIfNotOfToday) {
    const OldFile& c = GetParam();
    dir.write("app.log", c.content);
    kxLog::setLogFormat(c.format);
    const std::string fresh = c.format == 3 ? header : "";
    EXPECT_EQ(choose(), setting);
    EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    if (c.stamp.empty()) {
        EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
        EXPECT_EQ(slurp(path), c.content);
    } else {
        EXPECT_EQ(kxtest::list(dir.path()), (Names{"app.log", "app.log" + c.stamp}));
        EXPECT_EQ(slurp(path + c.stamp), c.content);
        EXPECT_EQ(slurp(path), fresh);
    }
}

// Only the day matters; the fields of a stamp are read as scanf reads them, as far as they go.
const OldFile textCases[] = {
    {"TextOld", 1, oldText, oldStamp},
    {"TextToday", 1, textDay(0), ""},
    {"TextTodayThenOld", 1, textDay(0) + oldText, ""},
    {"TextOldThenToday", 1, oldText + textDay(0), oldStamp},
    {"TextTodayAtAnotherHour", 1, noonZone.day(0, "%Y-%m-%d 00:00:01 x\n"), ""},
    {"TextTodayWithoutTime", 1, noonZone.day(0, "%Y-%m-%d"), ""},
    {"TextYesterday", 1, textDay(-1), noonZone.day(-1, "%Y%m%d-%H%M%S")},
    {"TextTomorrow", 1, textDay(1), noonZone.day(1, "%Y%m%d-%H%M%S")},
    {"TextOtherYear", 1, noonZone.day(0, "1999-%m-%d 12:34:56 "),
     noonZone.day(0, "1999%m%d-123456")},
    {"TextOtherMonth", 1, noonZone.day(0, "%Y-00-%d 12:34:56 "), noonZone.day(0, "%Y00%d-123456")},
    {"TextOtherDay", 1, noonZone.day(0, "%Y-%m-00 12:34:56 "), noonZone.day(0, "%Y%m00-123456")},
    {"TextAfterBlankLines", 1, "\n\n " + oldText, oldStamp},
    {"TextOneDigitFields", 1, "2017-3-1 4:5:9 x\n", "20170301-040509"},
    {"TextDayUnreadable", 1, "2017-03-xx 14:05:09 x\n", "20170300-000000"},
    {"TextMonthTooLong", 1, "2017-123-01 14:05:09 x\n", "20171200-000000"},
    {"TextMinuteUnreadable", 1, "2017-03-01 14;05\n", "20170301-140000"},
    {"TextYearOnly", 1, "7\n", "70000-000000"},
    {"TextWithoutStamp", 1, "hello\n", undated},
    {"TextEmpty", 1, "", undated},
    {"TextInCsv", 3, oldText + oldText, "00020-000000"},
    {"CsvInText", 1, oldCsv, "10000-000000"},
    {"FormatZeroOld", 0, oldText, oldStamp},
    {"FormatFourToday", 4, textDay(0), ""},
};
INSTANTIATE_TEST_SUITE_P(Text, OldLogFile, testing::ValuesIn(textCases), kxtest::nameOfRow);

// The first line is skipped whatever it contains: up to 1023 bytes of it, as with fgets and a size
// of 1024.
const OldFile csvCases[] = {
    {"CsvOld", 3, header + oldCsv, oldStamp},
    {"CsvToday", 3, header + csvDay(0), ""},
    {"CsvTodayThenOld", 3, header + csvDay(0) + oldCsv, ""},
    {"CsvOldThenToday", 3, header + oldCsv + csvDay(0), oldStamp},
    {"CsvYesterday", 3, header + csvDay(-1), noonZone.day(-1, "%Y%m%d-%H%M%S")},
    {"CsvTomorrow", 3, header + csvDay(1), noonZone.day(1, "%Y%m%d-%H%M%S")},
    {"CsvOtherYear", 3, header + noonZone.day(0, "%d.%m.1999;"),
     noonZone.day(0, "1999%m%d-000000")},
    {"CsvOtherMonth", 3, header + noonZone.day(0, "%d.00.%Y;"), noonZone.day(0, "%Y00%d-000000")},
    {"CsvOtherDay", 3, header + noonZone.day(0, "00.%m.%Y;"), noonZone.day(0, "%Y%m00-000000")},
    {"CsvTodayWithoutTime", 3, header + noonZone.day(0, "%d.%m.%Y"), ""},
    {"CsvHeaderOnly", 3, header, undated},
    {"CsvEmpty", 3, "", undated},
    {"CsvWithoutHeader", 3, oldCsv + csvDay(0), ""},
    {"CsvFirstLineEmpty", 3, "\n" + oldCsv, oldStamp},
    {"CsvTimeUnreadable", 3, header + "01.03.2017;x\n", "20170301-000000"},
    {"CsvMonthUnreadable", 3, header + "01.x\n", "00001-000000"},
    {"CsvStampInFirstLine", 3, oldCsv, undated},
    {"CsvFirstLine1022", 3, std::string(1022, 'h') + "\n" + oldCsv, oldStamp},
    {"CsvFirstLine1023", 3, std::string(1023, 'h') + "\n" + oldCsv, oldStamp},
    {"CsvFirstLine1024", 3, std::string(1024, 'h') + "\n" + oldCsv, undated},
    {"CsvRestOfFirstLine", 3, std::string(1023, 'h') + "21.03.2017;14:05:09;\n", "20170321-140509"},
    {"CsvRestIsToday", 3, std::string(1023, 'h') + csvDay(0) + oldCsv, ""},
};
INSTANTIATE_TEST_SUITE_P(Csv, OldLogFile, testing::ValuesIn(csvCases), kxtest::nameOfRow);

// Deliberate: HTML cannot be dated, so every start moves the file, over the one moved before.
TEST_F(Rotation, HtmlAlwaysMovesToOneName) {
    dir.write("app.log", "first");
    EXPECT_EQ(choose(), setting);
    EXPECT_EQ(slurp(path + undated), "first");
    consoleOf([] { kxLog::info("second"); });
    const std::string second = slurp(path);
    EXPECT_EQ(choose(), setting);
    EXPECT_EQ(slurp(path + undated), second);
    EXPECT_EQ(kxtest::list(dir.path()), (Names{"app.log", std::string("app.log") + undated}));
    EXPECT_EQ(slurp(path).substr(0, 6), "<head>");
}

TEST_F(Rotation, TextOfTodayStaysAndGetsAHeadInHtml) {
    dir.write("app.log", textDay(0));
    EXPECT_EQ(choose(), setting);
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
    EXPECT_EQ(slurp(path).substr(0, textDay(0).size() + 6), textDay(0) + "<head>");
}

TEST_F(Rotation, TextWithoutStampsAlwaysMoves) {
    kxLog::_log_format = 1;
    choose();
    consoleOf([] { kxLog::info("a"); });
    choose();
    EXPECT_EQ(slurp(path + undated), "a\n");
    EXPECT_EQ(slurp(path), "");
}

TEST_F(Rotation, FailedRenameIsReportedAndTheOldFileAppendedTo) {
    const auto chooseAfter = [&](int format, const std::string& content, const char* stamp) {
        dir.write("app.log", content);
        dir.write(std::string("app.log") + stamp + "/in the way", "");
        kxLog::setLogFormat(format);
        EXPECT_EQ(choose(), (Console{setting.out, renameFailure}));
        EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
        EXPECT_EQ(slurp(path).substr(0, content.size()), content);
        return slurp(path).substr(content.size());
    };
    EXPECT_EQ(chooseAfter(1, oldText, oldStamp), "");
    EXPECT_EQ(chooseAfter(3, header + oldCsv, oldStamp), "");
    EXPECT_EQ(chooseAfter(2, "html", undated).substr(0, 6), "<head>");
    consoleOf([] { kxLog::info("x"); });
    EXPECT_NE(slurp(path).find(levels[0].html("x")), std::string::npos);
    EXPECT_STREQ(kxLog::getLastError(), "");
}

// The path is used as it is: lines go where the link leads, and the link itself is moved aside.
TEST_F(Rotation, LinkIsFollowedByLinesAndMovedItself) {
    const std::string target = dir.write("target", textDay(0));
    std::filesystem::create_symlink("target", path);
    kxLog::setLogFormat(1);
    kxLog::_add_time_stamp = false;
    choose();
    consoleOf([] { kxLog::info("x"); });
    EXPECT_EQ(slurp(target), textDay(0) + "x\n");

    dir.write("target", oldText);
    choose();
    consoleOf([] { kxLog::info("y"); });
    EXPECT_EQ(kxtest::list(dir.path()),
              (Names{"app.log", std::string("app.log") + oldStamp, "target"}));
    EXPECT_EQ(std::filesystem::read_symlink(path + oldStamp), "target");
    EXPECT_EQ(slurp(target), oldText);
    EXPECT_EQ(slurp(path), "y\n");
}

// --- While the program runs ----------------------------------------------------------------------

TEST_F(Rotation, FirstMessageOfTheDayStartsANewCsvFile) {
    adopt(header + oldCsv + csvDay(0));
    const std::time_t start = std::time(nullptr);
    EXPECT_EQ(consoleOf([] { kxLog::warning("new"); }),
              (Console{levels[1].console("new").out + newDay + setting.out, ""}));
    EXPECT_EQ(slurp(path + oldStamp), header + oldCsv + csvDay(0));
    EXPECT_TRUE(isStamped(slurp(path), start, kxtest::csvStampFormat, "WARN;200;new\n", header));

    const std::string content = slurp(path);
    EXPECT_EQ(consoleOf([] { kxLog::warning("next"); }), levels[1].console("next"));
    EXPECT_EQ(slurp(path).substr(0, content.size()), content);
    EXPECT_EQ(kxtest::list(dir.path()), (Names{"app.log", std::string("app.log") + oldStamp}));
}

TEST_F(Rotation, CsvFileWhoseFirstMessageIsOfTodayGoesOn) {
    const std::string content = header + csvDay(0) + oldCsv;
    adopt(content);
    EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x"));
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
    EXPECT_EQ(slurp(path).substr(0, content.size()), content);
}

// Deliberate: a header alone is undated.
TEST_F(Rotation, CsvFileMovesAtItsFirstMessage) {
    kxLog::setLogFormat(3);
    choose();
    EXPECT_EQ(consoleOf([] { kxLog::info("a"); }),
              (Console{levels[0].console("a").out + newDay + setting.out, ""}));
    EXPECT_EQ(slurp(path + undated), header);
    EXPECT_EQ(slurp(path).substr(0, header.size()), header);
    EXPECT_EQ(slurp(path).size(),
              header.size() + std::string("01.03.2017;14:05:09;INFO;100;a\n").size());
    EXPECT_EQ(consoleOf([] { kxLog::info("b"); }), levels[0].console("b"));
}

// Deliberate. It follows from two moves to one name that a file that was no log is gone after the
// first message.
TEST_F(Rotation, CsvTakesThePlaceOfAFileThatWasNoLog) {
    const std::string text = "Chapter 1\nIt was a dark and stormy night.\n";
    dir.write("app.log", text);
    kxLog::setLogFormat(3);
    choose();
    EXPECT_EQ(slurp(path + undated), text);
    EXPECT_EQ(slurp(path), header);
    consoleOf([] { kxLog::info("a"); });
    EXPECT_EQ(slurp(path + undated), header);
    EXPECT_EQ(slurp(path).substr(0, header.size()), header);
    EXPECT_EQ(kxtest::list(dir.path()), (Names{"app.log", std::string("app.log") + undated}));
}

TEST_F(Rotation, CsvWithoutStampsMovesAtEveryMessage) {
    kxLog::setLogFormat(3);
    kxLog::_add_time_stamp = false;
    choose();
    for (const std::string& text : {std::string("a"), std::string("b"), std::string("c")})
        EXPECT_EQ(consoleOf([&] { kxLog::info("%s", text.c_str()); }),
                  (Console{text + "\n" + newDay + setting.out, ""}));
    EXPECT_EQ(slurp(path), header + "c\n");
    EXPECT_EQ(slurp(path + undated), header + "b\n");
}

TEST_F(Rotation, DeletedCsvFileComesBackWithoutHeader) {
    adopt(header + csvDay(0));
    std::filesystem::remove(path);
    std::string line;
    kxLog::enableOutputBuffer(line);
    EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x"));
    EXPECT_EQ(slurp(path), line);
}

TEST_F(Rotation, TextAndHtmlFilesNeverChangeWhileRunning) {
    for (const int format : {1, 2, 0}) {
        adopt(format == 1 ? oldText : header + oldCsv);
        kxLog::_log_format = format;
        EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x"));
        EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
    }
}

TEST_F(Rotation, FailedRenameOnANewDayAppendsToTheOldFile) {
    adopt(header + oldCsv);
    dir.write(std::string("app.log") + oldStamp + "/in the way", "");
    kxLog::_add_time_stamp = false;
    EXPECT_EQ(consoleOf([] { kxLog::info("x"); }),
              (Console{std::string("x\n") + newDay + setting.out, renameFailure}));
    EXPECT_EQ(slurp(path), header + oldCsv + "x\n");
}

TEST_F(Rotation, AddToLogFileLooksAtTheDayToo) {
    adopt(header + oldCsv);
    EXPECT_EQ(consoleOf([] { kxLog::addToLogFile("line"); }), (Console{newDay + setting.out, ""}));
    EXPECT_EQ(slurp(path + oldStamp), header + oldCsv);
    EXPECT_EQ(slurp(path), header + "line");
}

// --- A new day, and a file that cannot be opened -------------------------------------------------

struct Message {
    const char* name;
    int level;
    void (*log)(const char* text);
};
void PrintTo(const Message& c, std::ostream* os) { *os << c.name; }

class FailedNewDay : public Rotation, public testing::WithParamInterface<Message> {
protected:
    FailedNewDay() { kxPlatform::setAppName("talo"); }

    // At the change of day the directory variable is resolved again, and the path meets a regular
    // file.
    const std::string below = dir.write("file", "kept");
    const std::string lost = below + "/app.log";
    const kxtest::ScopedEnv variable{"TALO_LOG_DIR", below.c_str()};
    const std::string report = "Couldn't create log file '" + lost + "'!";
};

// A report that waits for a lock that is already held would hang here, until ctest's time limit.
TEST_P(FailedNewDay, IsReportedAfterTheMessage) {
    const Message& c = GetParam();
    const Level& level = levels[c.level];
    std::string buffer;
    std::stringbuf stream;
    adopt(header + oldCsv);
    kxLog::_add_time_stamp = false;
    kxLog::enableOutputBuffer(buffer);
    kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
    listen();

    const Console console = consoleOf([&] { c.log("x"); });
    EXPECT_EQ(console.out,
              level.console("x").out + newDay + "Setting log file to '" + lost + "'.\n");
    EXPECT_EQ(console.err, level.console("x").err +
                               "kxLog::writeCSVHeader: couldn't write log file '" + lost + "'!\n" +
                               levels[2].console(report).err);
    EXPECT_EQ(heard(), Hearings({{c.level, "x"}, {2, report}}));
    EXPECT_EQ(buffer, "x\n" + report + "\n");
    EXPECT_EQ(stream.str(), level.stream("x\n") + levels[2].stream(report + "\n"));
    EXPECT_EQ(kxLog::getLastError(), report);
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    EXPECT_EQ(slurp(path), header + oldCsv);

    EXPECT_EQ(consoleOf([&] { c.log("y"); }), level.console("y"));  // and the log goes on
    EXPECT_EQ(kxLog::getLastError(), c.level == 2 ? "y" : report);
}
const Message messages[] = {
    {"Info", 0, [](const char* text) { kxLog::info("%s", text); }},
    {"InfoNumbered", 0, [](const char* text) { kxLog::info(1, "%s", text); }},
    {"Warning", 1, [](const char* text) { kxLog::warning("%s", text); }},
    {"WarningNumbered", 1, [](const char* text) { kxLog::warning(1, "%s", text); }},
    {"Error", 2, [](const char* text) { kxLog::error("%s", text); }},
    {"ErrorNumbered", 2, [](const char* text) { kxLog::error(1, "%s", text); }},
    {"ErrorScript", 2, [](const char* text) { kxLog::errorIPython(text); }},
    {"ErrorOutput", 2, [](const char* text) { kxLog::errorI(text, 6, false); }},
};
INSTANTIATE_TEST_SUITE_P(Through, FailedNewDay, testing::ValuesIn(messages), kxtest::nameOfRow);

using FailedDay = FailedNewDay;

TEST_F(FailedDay, IsReportedWithCallbackEvenIfTheMessageHadNone) {
    adopt(header + oldCsv);
    listen();
    consoleOf([] { kxLog::infoI("x", 4, false); });
    EXPECT_EQ(heard(), Hearings({{2, report}}));
}

TEST_F(FailedDay, IsReportedByAddToLogFileItself) {
    adopt(header + oldCsv);
    listen();
    consoleOf([] { kxLog::addToLogFile("lost"); });
    EXPECT_EQ(heard(), Hearings({{2, report}}));
    EXPECT_EQ(kxLog::getLastError(), report);
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    EXPECT_EQ(slurp(path), header + oldCsv);
}

TEST_F(FailedDay, HappensAtADirectoryToo) {
    const std::string inTheWay = dir.makeDir("logs/app.log");
    const kxtest::ScopedEnv logs("TALO_LOG_DIR", dir.file("logs").c_str());
    adopt(header + oldCsv);
    EXPECT_EQ(consoleOf([] { kxLog::error("x"); }).err,
              levels[2].console("x").err +
                  levels[2].console("Couldn't create log file '" + inTheWay + "'!").err);
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
}

TEST_F(FailedDay, IsReportedOnceAmongManyThreads) {
    adopt(header + oldCsv);
    listen();
    consoleOf([] {
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([] {
                for (int k = 0; k < 50; ++k) kxLog::error("x");
            });
        for (auto& thread : threads) thread.join();
    });
    int reports = 0;
    for (const Heard& message : heard()) reports += message.text == report ? 1 : 0;
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(heard().size(), 201U);
}

}  // namespace
