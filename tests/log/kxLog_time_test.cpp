// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log while the clock moves: over midnight, the end of the year and 29 February, through both
// clock changes of several zones, and backwards. libfaketime provides the clock in a separate
// process.
#include <gtest/gtest.h>

#include <cstdio>
#include <ctime>
#include <map>

#include "kxLog_fixture.h"
#include "rows.h"

namespace {

// Rules instead of names, since names need the machine's zone files. Clocks change in Berlin at
// 1:00 UTC, in New York at 2:00 and (until 2011) in St. John's at one minute past midnight.
constexpr const char* utc = "UTC0";
constexpr const char* berlin = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr const char* newYork = "EST5EDT,M3.2.0,M11.1.0";
constexpr const char* kathmandu = "NPT-5:45";
constexpr const char* stJohns = "NST3:30NDT,M3.2.0/0:01,M11.1.0/0:01";

constexpr const char* open = "";  ///< instead of a text: setLogFile

struct Step {
    const char* utc;   ///< the moment
    const char* text;  ///< logged then
    bool newDay = false;
};

struct Story {
    const char* name;
    const char* zone;
    int format;
    std::vector<Step> steps;
    std::map<std::string, std::string>
        files;  ///< in the end: the name after "app.log", and the content
};
void PrintTo(const Story& story, std::ostream* os) { *os << story.name; }

std::time_t moment(const char* text) {
    std::tm fields{};
    EXPECT_EQ(std::sscanf(text, "%d-%d-%d %d:%d:%d", &fields.tm_year, &fields.tm_mon,
                          &fields.tm_mday, &fields.tm_hour, &fields.tm_min, &fields.tm_sec),
              6);
    fields.tm_year -= 1900;
    fields.tm_mon -= 1;
    return timegm(&fields);
}

class LogTime : public testing::TestWithParam<Story> {};
TEST_P(LogTime, NamesStampsAndFilesFollowTheLocalClock) {
    if (kxtest::underSanitizer()) GTEST_SKIP() << "libfaketime cannot be preloaded here";
    if (!kxtest::exists(KX_FAKETIME)) GTEST_SKIP() << "libfaketime is not installed";
    const Story& story = GetParam();
    const kxtest::TempDir logs, dir;
    const std::string path = logs.file("app.log");
    const std::string setting = "Setting log file to '" + path + "'.\n";

    kxtest::RunOptions options;
    std::string console;
    for (const Step& step : story.steps) {
        const std::string text = step.text;
        options.input += std::to_string(moment(step.utc)) + (text.empty() ? "" : " " + text) + "\n";
        console += text.empty() ? setting : text + "\n";
        if (step.newDay) console += "create new log file, new day started!\n" + setting;
    }
    const kxtest::Outcome outcome =
        kxtest::run({KX_LOG_PROBE, "clock", std::to_string(story.format), path, dir.file("clock")},
                    {{"TZ", story.zone},
                     {"LD_PRELOAD", KX_FAKETIME},
                     {"FAKETIME_TIMESTAMP_FILE", dir.file("clock")},
                     {"FAKETIME_FMT", "%s"},
                     {"FAKETIME_NO_CACHE", "1"},
                     {"NO_FAKE_STAT", "1"}},
                    options);
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(outcome.out, console);
    EXPECT_EQ(outcome.err, "");

    std::map<std::string, std::string> expected, files;
    for (const auto& [suffix, content] : story.files) expected["app.log" + suffix] = content;
    for (const std::string& name : kxtest::list(logs.path()))
        files[name] = kxtest::slurp(logs.file(name));
    EXPECT_EQ(files, expected);
}

const std::string header = kxtest::csvHeader;
const std::string undated = "00000-000000";

// A CSV file checks the day with every message. The first message finds only the header, which has
// no date.
const Story csvStories[] = {
    {"MidnightInUtc",
     utc,
     3,
     {{"2023-05-04 23:59:58", open},
      {"2023-05-04 23:59:58", "a", true},
      {"2023-05-04 23:59:59", "b"},
      {"2023-05-05 00:00:00", "c", true},
      {"2023-05-05 00:00:01", "d"}},
     {{undated, header},
      {"20230504-235958",
       header + "04.05.2023;23:59:58;INFO;100;a\n" + "04.05.2023;23:59:59;INFO;100;b\n"},
      {"", header + "05.05.2023;00:00:00;INFO;100;c\n" + "05.05.2023;00:00:01;INFO;100;d\n"}}},
    // 5:45 ahead of UTC.
    {"MidnightInKathmandu",
     kathmandu,
     3,
     {{"2023-05-04 18:14:59", open},
      {"2023-05-04 18:14:59", "a", true},
      {"2023-05-04 18:15:00", "b", true},
      {"2023-05-04 23:59:59", "c"},
      {"2023-05-05 00:00:00", "d"}},
     {{undated, header},
      {"20230504-235959", header + "04.05.2023;23:59:59;INFO;100;a\n"},
      {"", header + "05.05.2023;00:00:00;INFO;100;b\n" + "05.05.2023;05:44:59;INFO;100;c\n" +
               "05.05.2023;05:45:00;INFO;100;d\n"}}},
    // 4:00 behind UTC in summer.
    {"MidnightInNewYork",
     newYork,
     3,
     {{"2023-06-30 23:59:59", open},
      {"2023-06-30 23:59:59", "a", true},
      {"2023-07-01 00:00:00", "b"},
      {"2023-07-01 03:59:59", "c"},
      {"2023-07-01 04:00:00", "d", true}},
     {{undated, header},
      {"20230630-195959", header + "30.06.2023;19:59:59;INFO;100;a\n" +
                              "30.06.2023;20:00:00;INFO;100;b\n" +
                              "30.06.2023;23:59:59;INFO;100;c\n"},
      {"", header + "01.07.2023;00:00:00;INFO;100;d\n"}}},
    {"YearsEnd",
     berlin,
     3,
     {{"2023-12-31 22:59:59", open},
      {"2023-12-31 22:59:59", "a", true},
      {"2023-12-31 23:00:00", "b", true},
      {"2023-12-31 23:59:59", "c"}},
     {{undated, header},
      {"20231231-235959", header + "31.12.2023;23:59:59;INFO;100;a\n"},
      {"", header + "01.01.2024;00:00:00;INFO;100;b\n" + "01.01.2024;00:59:59;INFO;100;c\n"}}},
    {"SameDayOfAnotherMonthAndYear",
     utc,
     3,
     {{"2023-05-04 12:00:00", open},
      {"2023-05-04 12:00:00", "a", true},
      {"2023-06-04 12:00:00", "b", true},
      {"2024-06-04 12:00:00", "c", true}},
     {{undated, header},
      {"20230504-120000", header + "04.05.2023;12:00:00;INFO;100;a\n"},
      {"20230604-120000", header + "04.06.2023;12:00:00;INFO;100;b\n"},
      {"", header + "04.06.2024;12:00:00;INFO;100;c\n"}}},
    {"LeapDay",
     utc,
     3,
     {{"2024-02-28 23:59:59", open},
      {"2024-02-28 23:59:59", "a", true},
      {"2024-02-29 00:00:00", "b", true},
      {"2024-02-29 23:59:59", "c"},
      {"2024-03-01 00:00:00", "d", true}},
     {{undated, header},
      {"20240228-235959", header + "28.02.2024;23:59:59;INFO;100;a\n"},
      {"20240229-000000",
       header + "29.02.2024;00:00:00;INFO;100;b\n" + "29.02.2024;23:59:59;INFO;100;c\n"},
      {"", header + "01.03.2024;00:00:00;INFO;100;d\n"}}},
    {"NoLeapDay",
     utc,
     3,
     {{"2023-02-28 23:59:59", open},
      {"2023-02-28 23:59:59", "a", true},
      {"2023-03-01 00:00:00", "b", true},
      {"2100-02-28 23:59:59", "c", true},
      {"2100-03-01 00:00:00", "d", true}},
     {{undated, header},
      {"20230228-235959", header + "28.02.2023;23:59:59;INFO;100;a\n"},
      {"20230301-000000", header + "01.03.2023;00:00:00;INFO;100;b\n"},
      {"21000228-235959", header + "28.02.2100;23:59:59;INFO;100;c\n"},
      {"", header + "01.03.2100;00:00:00;INFO;100;d\n"}}},
    {"BeyondThe32BitsOf2038",
     utc,
     3,
     {{"2038-01-19 03:14:07", open},
      {"2038-01-19 03:14:07", "a", true},
      {"2038-01-19 03:14:08", "b"},
      {"2038-01-20 00:00:00", "c", true}},
     {{undated, header},
      {"20380119-031407",
       header + "19.01.2038;03:14:07;INFO;100;a\n" + "19.01.2038;03:14:08;INFO;100;b\n"},
      {"", header + "20.01.2038;00:00:00;INFO;100;c\n"}}},
    // A day of 23 hours, from 23:00 UTC to 22:00 UTC.
    {"SpringInBerlin",
     berlin,
     3,
     {{"2024-03-30 23:00:00", open},
      {"2024-03-30 23:00:00", "a", true},
      {"2024-03-31 00:59:59", "b"},
      {"2024-03-31 01:00:00", "c"},
      {"2024-03-31 21:59:59", "d"},
      {"2024-03-31 22:00:00", "e", true}},
     {{undated, header},
      {"20240331-000000",
       header + "31.03.2024;00:00:00;INFO;100;a\n" + "31.03.2024;01:59:59;INFO;100;b\n" +
           "31.03.2024;03:00:00;INFO;100;c\n" + "31.03.2024;23:59:59;INFO;100;d\n"},
      {"", header + "01.04.2024;00:00:00;INFO;100;e\n"}}},
    // A day of 25 hours, from 22:00 UTC to 23:00 UTC.
    {"AutumnInBerlin",
     berlin,
     3,
     {{"2024-10-26 22:00:00", open},
      {"2024-10-26 22:00:00", "a", true},
      {"2024-10-27 00:00:00", "b"},
      {"2024-10-27 00:59:59", "c"},
      {"2024-10-27 01:00:00", "d"},
      {"2024-10-27 01:59:59", "e"},
      {"2024-10-27 22:59:59", "f"},
      {"2024-10-27 23:00:00", "g", true}},
     {{undated, header},
      {"20241027-000000",
       header + "27.10.2024;00:00:00;INFO;100;a\n" + "27.10.2024;02:00:00;INFO;100;b\n" +
           "27.10.2024;02:59:59;INFO;100;c\n" + "27.10.2024;02:00:00;INFO;100;d\n" +
           "27.10.2024;02:59:59;INFO;100;e\n" + "27.10.2024;23:59:59;INFO;100;f\n"},
      {"", header + "28.10.2024;00:00:00;INFO;100;g\n"}}},
    // Half a minute into Sunday it becomes Saturday again, for 59 minutes.
    {"AutumnInStJohns",
     stJohns,
     3,
     {{"2024-11-03 02:29:59", open},
      {"2024-11-03 02:29:59", "a", true},
      {"2024-11-03 02:30:30", "b", true},
      {"2024-11-03 02:31:00", "c", true},
      {"2024-11-03 03:29:59", "d"},
      {"2024-11-03 03:30:00", "e", true}},
     {{undated, header},
      {"20241102-235959", header + "02.11.2024;23:59:59;INFO;100;a\n"},
      {"20241103-000030", header + "03.11.2024;00:00:30;INFO;100;b\n"},
      {"20241102-230100",
       header + "02.11.2024;23:01:00;INFO;100;c\n" + "02.11.2024;23:59:59;INFO;100;d\n"},
      {"", header + "03.11.2024;00:00:00;INFO;100;e\n"}}},
    {"BackBySeconds",
     kathmandu,
     3,
     {{"2023-05-04 12:00:10", open},
      {"2023-05-04 12:00:10", "a", true},
      {"2023-05-04 12:00:05", "b"},
      {"2023-05-04 12:00:11", "c"}},
     {{undated, header},
      {"", header + "04.05.2023;17:45:10;INFO;100;a\n" + "04.05.2023;17:45:05;INFO;100;b\n" +
               "04.05.2023;17:45:11;INFO;100;c\n"}}},
    {"BackBySecondsOverMidnight",
     utc,
     3,
     {{"2023-05-05 00:00:00", open},
      {"2023-05-05 00:00:00", "a", true},
      {"2023-05-04 23:59:58", "b", true},
      {"2023-05-05 00:00:01", "c", true}},
     {{undated, header},
      {"20230505-000000", header + "05.05.2023;00:00:00;INFO;100;a\n"},
      {"20230504-235958", header + "04.05.2023;23:59:58;INFO;100;b\n"},
      {"", header + "05.05.2023;00:00:01;INFO;100;c\n"}}},
    // If a file starts at the same moment as an earlier one, it replaces that one.
    {"BackByADay",
     newYork,
     3,
     {{"2023-05-05 12:00:00", open},
      {"2023-05-05 12:00:00", "a", true},
      {"2023-05-04 12:00:00", "b", true},
      {"2023-05-05 12:00:00", "c", true},
      {"2023-05-06 12:00:00", "d", true}},
     {{undated, header},
      {"20230504-080000", header + "04.05.2023;08:00:00;INFO;100;b\n"},
      {"20230505-080000", header + "05.05.2023;08:00:00;INFO;100;c\n"},
      {"", header + "06.05.2023;08:00:00;INFO;100;d\n"}}},
};
INSTANTIATE_TEST_SUITE_P(Csv, LogTime, testing::ValuesIn(csvStories), kxtest::nameOfRow);

// A text file checks the day when it is chosen, and at no other time.
const Story textStories[] = {
    {"MidnightInKathmandu",
     kathmandu,
     1,
     {{"2023-05-04 18:14:59", open},
      {"2023-05-04 18:14:59", "a"},
      {"2023-05-04 18:15:00", "b"},
      {"2023-05-04 18:15:00", open},
      {"2023-05-04 18:15:01", "c"},
      {"2023-05-05 18:14:59", open},
      {"2023-05-05 18:14:59", "d"}},
     {{"20230504-235959", "2023-05-04 23:59:59 INFO 100 a\n2023-05-05 00:00:00 INFO 100 b\n"},
      {"", "2023-05-05 00:00:01 INFO 100 c\n2023-05-05 23:59:59 INFO 100 d\n"}}},
    {"YearsEnd",
     newYork,
     1,
     {{"2024-01-01 04:59:59", open},
      {"2024-01-01 04:59:59", "a"},
      {"2024-01-01 05:00:00", "b"},
      {"2024-01-01 05:00:00", open},
      {"2024-01-01 05:00:01", "c"}},
     {{"20231231-235959", "2023-12-31 23:59:59 INFO 100 a\n2024-01-01 00:00:00 INFO 100 b\n"},
      {"", "2024-01-01 00:00:01 INFO 100 c\n"}}},
    {"LeapDay",
     utc,
     1,
     {{"2024-02-28 23:59:59", open},
      {"2024-02-28 23:59:59", "a"},
      {"2024-02-29 00:00:00", open},
      {"2024-02-29 00:00:00", "b"},
      {"2024-03-01 00:00:00", open},
      {"2024-03-01 00:00:00", "c"}},
     {{"20240228-235959", "2024-02-28 23:59:59 INFO 100 a\n"},
      {"20240229-000000", "2024-02-29 00:00:00 INFO 100 b\n"},
      {"", "2024-03-01 00:00:00 INFO 100 c\n"}}},
    {"SpringInNewYork",
     newYork,
     1,
     {{"2024-03-10 06:59:59", open},
      {"2024-03-10 06:59:59", "a"},
      {"2024-03-10 07:00:00", "b"},
      {"2024-03-11 03:59:59", open},
      {"2024-03-11 03:59:59", "c"},
      {"2024-03-11 04:00:00", open},
      {"2024-03-11 04:00:00", "d"}},
     {{"20240310-015959",
       "2024-03-10 01:59:59 INFO 100 a\n2024-03-10 03:00:00 INFO 100 b\n"
       "2024-03-10 23:59:59 INFO 100 c\n"},
      {"", "2024-03-11 00:00:00 INFO 100 d\n"}}},
    {"AutumnInNewYork",
     newYork,
     1,
     {{"2024-11-03 05:59:59", open},
      {"2024-11-03 05:59:59", "a"},
      {"2024-11-03 06:00:00", "b"},
      {"2024-11-04 04:59:59", open},
      {"2024-11-04 04:59:59", "c"},
      {"2024-11-04 05:00:00", open},
      {"2024-11-04 05:00:00", "d"}},
     {{"20241103-015959",
       "2024-11-03 01:59:59 INFO 100 a\n2024-11-03 01:00:00 INFO 100 b\n"
       "2024-11-03 23:59:59 INFO 100 c\n"},
      {"", "2024-11-04 00:00:00 INFO 100 d\n"}}},
    {"Back",
     berlin,
     1,
     {{"2023-05-05 12:00:10", open},
      {"2023-05-05 12:00:10", "a"},
      {"2023-05-05 12:00:05", open},
      {"2023-05-05 12:00:05", "b"},
      {"2023-05-04 12:00:05", "c"},
      {"2023-05-04 12:00:06", open},
      {"2023-05-04 12:00:06", "d"}},
     {{"20230505-140010",
       "2023-05-05 14:00:10 INFO 100 a\n2023-05-05 14:00:05 INFO 100 b\n"
       "2023-05-04 14:00:05 INFO 100 c\n"},
      {"", "2023-05-04 14:00:06 INFO 100 d\n"}}},
};
INSTANTIATE_TEST_SUITE_P(Text, LogTime, testing::ValuesIn(textStories), kxtest::nameOfRow);

// An HTML file has a stamp only in its header, and is moved to one name whenever it is chosen.
std::string html(const std::string& date, const std::string& texts) {
    const std::string rule =
        "<font color=\"#b40000\">----------------------------------------------------</font><br>";
    std::string file =
        "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head><br>"
        "<p align=\"middle\">" +
        rule + "<font color=\"#b40000\">Log file from " + date + "</font><br>" + rule + "</p>\n";
    for (const char text : texts)
        file += std::string("<span style=\"color:#008c00;\">") + text + "</span><br>\n";
    return file;
}
const Story htmlStories[] = {
    {"MidnightInKathmandu",
     kathmandu,
     2,
     {{"2023-05-04 18:14:59", open},
      {"2023-05-04 18:14:59", "a"},
      {"2023-05-04 18:15:00", "b"},
      {"2023-05-04 18:15:00", open},
      {"2023-05-04 18:15:00", "c"}},
     {{undated, html("04.05.2023 23:59:59", "ab")}, {"", html("05.05.2023 00:00:00", "c")}}},
    {"YearsEnd",
     berlin,
     2,
     {{"2023-12-31 22:59:59", open}, {"2023-12-31 23:00:00", open}},
     {{undated, html("31.12.2023 23:59:59", "")}, {"", html("01.01.2024 00:00:00", "")}}},
    {"LeapDay",
     utc,
     2,
     {{"2024-02-28 23:59:59", open}, {"2024-02-29 00:00:00", open}, {"2024-03-01 00:00:00", open}},
     {{undated, html("29.02.2024 00:00:00", "")}, {"", html("01.03.2024 00:00:00", "")}}},
    {"SpringInBerlin",
     berlin,
     2,
     {{"2024-03-31 00:59:59", open}, {"2024-03-31 01:00:00", open}},
     {{undated, html("31.03.2024 01:59:59", "")}, {"", html("31.03.2024 03:00:00", "")}}},
    {"AutumnInNewYork",
     newYork,
     2,
     {{"2024-11-03 05:59:59", open}, {"2024-11-03 06:00:00", open}},
     {{undated, html("03.11.2024 01:59:59", "")}, {"", html("03.11.2024 01:00:00", "")}}},
    {"BackByADay",
     utc,
     2,
     {{"2023-05-05 12:00:00", open},
      {"2023-05-05 12:00:00", "a"},
      {"2023-05-04 12:00:00", "b"},
      {"2023-05-04 12:00:00", open}},
     {{undated, html("05.05.2023 12:00:00", "ab")}, {"", html("04.05.2023 12:00:00", "")}}},
};
INSTANTIATE_TEST_SUITE_P(Html, LogTime, testing::ValuesIn(htmlStories), kxtest::nameOfRow);

}  // namespace
