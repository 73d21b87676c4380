// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log: a message never fails. A destination that runs out of memory, or that the system
// refuses, misses the whole message; the others get it. What was logged before is never lost.
#include <cstdlib>
#include <cstring>
#include <set>
#include <streambuf>

#include "kxFile.h"
#include "kxLog.h"
#include "kxPlatform.h"
#include "log/kxLog_fixture.h"
#include "operations.h"

namespace {

using kxtest::Attempt;
using kxtest::TempDir;

enum Format { textFormat = 1, htmlFormat = 2, csvFormat = 3 };

// A stream and a callback that record what they get without using the heap.
class Sink : public std::streambuf {
public:
    Sink() { setp(_bytes, _bytes + sizeof _bytes); }
    std::string text() const { return {pbase(), pptr()}; }

private:
    char _bytes[20000];
};
int calls = 0;
char heard[4000];
void hear(const char* text) {
    ++calls;
    std::strncpy(heard, text, sizeof heard - 1);
}

// Sets the log to its initial state with a format, and restores it in the end; no memory stays
// behind.
class Log {
public:
    explicit Log(int format) {
        kxLog::setLogFormat(format);
        kxLog::_add_time_stamp = false;
        kxLog::clearLastError();
    }
    ~Log() {
        for (const kxtest::Level& level : kxtest::levels) level.setCallback(nullptr);
        kxLog::setLogFormat(htmlFormat);
        kxLog::disableOutputBuffer();
        kxLog::disableOutputStream();
        kxLog::_add_time_stamp = false;
        kxLog::_nr = 0;
        std::string().swap(kxLog::_last_error);
        std::string().swap(kxLog::_log_file);
    }
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;
};

// --- Messages ------------------------------------------------------------------------------------

struct Destinations {
    TempDir dir;
    std::string file = dir.write("a.log", "old\n"), buffer = "old\n";
    Sink sink;

    Destinations() {
        for (const kxtest::Level& level : kxtest::levels) level.setCallback(hear);
        kxLog::enableOutputBuffer(buffer);
        kxLog::enableOutputStream(static_cast<std::streambuf*>(&sink));
        kxLog::_log_file = file;
    }
};

using Logger = void (*)(const char* text);

// Logs to all destinations. The formatting functions cut long texts; the others do not.
void logMessage(Attempt& attempt, const kxtest::Level& level, Logger log, int format,
                std::size_t size) {
    const Log state(format);
    Destinations to;
    calls = 0;
    const std::string text(size, 'm');
    std::string line = format == htmlFormat ? level.html(text) : text + '\n';

    attempt.run([&] { log(text.c_str()); });
    EXPECT_FALSE(attempt.outOfMemory());
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(heard, text);
    const bool isError = level.onStandardError;
    const std::string expected = isError ? text : "";
    EXPECT_TRUE(kxLog::_last_error == expected ||
                (kxLog::_last_error.empty() && attempt.failedAt("allocation")));
    for (const std::string& got : {to.buffer, kxtest::slurp(to.file)})
        EXPECT_TRUE(got == "old\n" + line || (got == "old\n" && attempt.failed()));
    const std::string streamed = to.sink.text();
    EXPECT_TRUE(streamed == level.stream(line) || (streamed.empty() && attempt.failed()));

    const std::string before = to.buffer, beforeInFile = kxtest::slurp(to.file);
    {
        const kxtest::Captured out(stdout), err(stderr);
        log("again");
    }
    line = format == htmlFormat ? level.html("again") : "again\n";
    EXPECT_TRUE(to.buffer == before + line);
    EXPECT_TRUE(to.sink.text() == streamed + level.stream(line));
    EXPECT_TRUE(kxtest::slurp(to.file) == beforeInFile + line);
}

template <int level>
void print(const char* text) {
    kxtest::levels[level].print("%s", text);
}
template <int level>
void printNumbered(const char* text) {
    kxtest::levels[level].printNumbered(7, "%s", text);
}
template <int level>
void script(const char* text) {
    kxtest::levels[level].script(text);
}
template <int level>
void scriptNumbered(const char* text) {
    kxtest::levels[level].scriptNumbered(7, text);
}
template <int level>
void output(const char* text) {
    kxtest::levels[level].output(text, 6, false);
}

template <int level, Logger log, int format, std::size_t size = 300>
void message(Attempt& attempt) {
    logMessage(attempt, kxtest::levels[level], log, format, size);
}

// Reports only with a message, which never fails.
void report(Attempt& attempt, void (*function)(), const char* text) {
    const Log state(textFormat);
    attempt.run(function);
    EXPECT_FALSE(attempt.outOfMemory());
    EXPECT_TRUE(kxLog::_last_error == text || attempt.failedAt("allocation"));
}

// --- Lines ---------------------------------------------------------------------------------------

// Writes directly to the console, which may show a part if it takes no more.
template <int type>
void printLong(Attempt& attempt) {
    const std::string text(5000, 'm'),
        line = type == 0 ? text + '\n' : "\033[31m" + text + "\n\033[0m";
    attempt.run([&] { kxLog::colorOutput(type, text.c_str()); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failedAt("allocation"));
    const std::string printed = type == 0 ? attempt.out() : attempt.err();
    EXPECT_TRUE(startsWith(line, printed));
    EXPECT_TRUE(printed == line || attempt.failed());
    EXPECT_TRUE(printed.empty() || !attempt.outOfMemory());
}

// Adds all of it or nothing.
void addExtraInfo(Attempt& attempt, void (*add)(std::string&, const std::string&, int)) {
    const Log state(textFormat);
    kxLog::_add_time_stamp = true;
    std::string line = "old";
    attempt.run([&] { add(line, part, 100); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(line == "old", attempt.failed());
    EXPECT_EQ(line.find(part) != std::string::npos, !attempt.failed());
}

// --- Files ---------------------------------------------------------------------------------------

// The whole texts of the files in a directory.
std::multiset<std::string> contents(const TempDir& dir) {
    std::multiset<std::string> texts;
    for (const std::string& name : kxtest::list(dir.path()))
        texts.insert(kxtest::slurp(dir.file(name)));
    return texts;
}
bool isSomewhere(const TempDir& dir, const std::string& text) {
    for (const std::string& content : contents(dir))
        if (content.find(text) != std::string::npos) return true;
    return false;
}

// Opens a log where an old one exists.
void openLog(Attempt& attempt, int format, const std::string& old) {
    const Log state(format);
    const TempDir dir;
    const std::string file = dir.write(part, old);
    attempt.run([&] { kxLog::setLogFile(file.c_str()); });

    EXPECT_TRUE(isSomewhere(dir, old));
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    const char* const opened = kxLog::getLogFile();
    EXPECT_TRUE(opened || attempt.failed());
    if (opened) {
        EXPECT_EQ(opened, file);
    } else if (!attempt.outOfMemory() && !attempt.failedAt("allocation")) {
        EXPECT_EQ(kxLog::_last_error, "Couldn't create log file '" + file + "'!");
    }

    const kxtest::Captured out(stdout), err(stderr);
    kxLog::setLogFile(file.c_str());
    EXPECT_EQ(kxLog::getLogFile(), file);
    kxLog::info("again");
    EXPECT_TRUE(isSomewhere(dir, "again"));
}

// The path is below a file, so logging to a file is switched off, and the last error says so.
void openLogNowhere(Attempt& attempt) {
    const Log state(textFormat);
    const TempDir dir;
    const std::string old = dir.write("old", ""), file = dir.write("a", "") + '/' + part;
    kxLog::_log_file = old;
    attempt.run([&] { kxLog::setLogFile(file.c_str()); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    if (attempt.outOfMemory()) return;
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    EXPECT_TRUE(kxLog::_last_error == "Couldn't create log file '" + file + "'!" ||
                attempt.failedAt("allocation"));
}

// The directory that the environment names is created.
void openLogElsewhere(Attempt& attempt) {
    const Log state(textFormat);
    const TempDir dir;
    const std::string logs = dir.file("a/b" + part);
    const kxtest::ScopedEnv variable("_LOG_DIR", logs.c_str());
    attempt.run([&] { kxLog::setLogFile("/elsewhere/a.log"); });
    EXPECT_LE(attempt.outOfMemory(), attempt.failedAt("allocation"));
    const char* const opened = kxLog::getLogFile();
    EXPECT_TRUE(opened || attempt.failed());
    if (opened) {
        EXPECT_EQ(opened, logs + "/a.log");
        EXPECT_TRUE(kxtest::exists(opened));
    }
}

const std::string oldCsv = std::string(kxtest::csvHeader) + "01.03.2017;14:05:09;INFO;100;old\n";

// Logs the first message of a new day.
void changeDay(Attempt& attempt, void (*log)(const char* line)) {
    const Log state(csvFormat);
    const TempDir dir;
    const std::string file = dir.write(part, oldCsv);
    kxLog::_log_file = file;
    attempt.run([&] { log("new\n"); });
    EXPECT_TRUE(isSomewhere(dir, oldCsv));
    EXPECT_TRUE(isSomewhere(dir, "new\n") || attempt.failed());
    const char* const opened = kxLog::getLogFile();
    EXPECT_TRUE(opened ? opened == file : attempt.failed());
}
void logOnNewDay(Attempt& attempt) {
    changeDay(attempt, [](const char* line) { kxLog::info("%s", line); });
    EXPECT_FALSE(attempt.outOfMemory());
}
void addOnNewDay(Attempt& attempt) {
    changeDay(attempt, [](const char* line) { kxLog::addToLogFile(line); });
}

// A message is a whole line, or nothing if only a part of it could be written.
void addLine(Attempt& attempt) {
    const Log state(textFormat);
    const TempDir dir;
    const std::string file = dir.write(part, "old\n"), line = part + '\n';
    kxLog::_log_file = file;
    attempt.run([&] { kxLog::addToLogFile(line); });
    const std::string content = kxtest::slurp(file);
    EXPECT_TRUE(content == "old\n" + line || (content == "old\n" && attempt.failed())) << content;
}

void writeHeader(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.file(part);
    attempt.run([&] { kxLog::writeCSVHeader(file.c_str()); });
    const bool isWritten = kxtest::exists(file) && kxtest::slurp(file) == kxtest::csvHeader;
    EXPECT_TRUE(isWritten || attempt.failed());
    if (attempt.outOfMemory()) return;
    const std::string complaint =
        "kxLog::writeCSVHeader: couldn't write log file '" + file + "'!\n";
    const bool maySayNothing =
        isWritten || attempt.failsOnward();  // the rest cannot be written either
    EXPECT_TRUE(attempt.err().empty() ? maySayNothing : attempt.err() == complaint)
        << attempt.err();
}

// A log that cannot be looked at keeps its lines.
void writeHeaderAgain(Attempt& attempt) {
    const TempDir dir;
    const std::string file = dir.write(part, oldCsv);
    attempt.run([&] { kxLog::writeCSVHeader(file.c_str()); });
    EXPECT_TRUE(startsWith(kxtest::slurp(file), oldCsv));
}

const std::string today = kxtest::noonZone.day(0, "%Y-%m-%d 12:00:00 INFO 100 old\n");

}  // namespace

const std::vector<Operation> logOperations = {
    {"LogInfo", message<0, print<0>, textFormat>, allSteps},
    {"LogWarning", message<1, print<1>, textFormat>, allSteps},
    {"LogError", message<2, print<2>, htmlFormat>, allSteps},
    {"LogInfoNumbered", message<0, printNumbered<0>, htmlFormat>, allSteps},
    {"LogWarningNumbered", message<1, printNumbered<1>, textFormat>, allSteps},
    {"LogErrorNumbered", message<2, printNumbered<2>, textFormat>, allSteps},
    {"LogInfoScript", message<0, script<0>, textFormat, 3000>, allSteps},
    {"LogWarningScript", message<1, script<1>, textFormat, 3000>, allSteps},
    {"LogErrorScript", message<2, script<2>, textFormat, 3000>, allSteps},
    {"LogInfoScriptNumbered", message<0, scriptNumbered<0>, htmlFormat, 3000>, allSteps},
    {"LogWarningScriptNumbered", message<1, scriptNumbered<1>, htmlFormat, 3000>, allSteps},
    {"LogErrorScriptNumbered", message<2, scriptNumbered<2>, htmlFormat, 3000>, allSteps},
    {"LogInfoOutput", message<0, output<0>, textFormat, 3000>, allSteps},
    {"LogWarningOutput", message<1, output<1>, textFormat, 3000>, allSteps},
    {"LogErrorOutput", message<2, output<2>, textFormat, 3000>, allSteps},

    {"ReportPathfind",
     [](Attempt& attempt) {
         report(
             attempt, [] { kxFile::pathfind(part, part, part); }, "kxFile::pathfind : NIY!\n");
     },
     allSteps},
    {"ReportClearTmpDir",
     [](Attempt& attempt) {
         report(attempt, kxFile::clearTmpDir, "kxFile::clearTmpDir: NOT IMPLEMENTED YET!");
     },
     allSteps},
    {"ReportNoExeDir",
     [](Attempt& attempt) {
         report(
             attempt, [] { kxPlatform::getExeDir(); }, "kxPlatform not initialized!");
     },
     allSteps},
    {"ReportNoBaseDir",
     [](Attempt& attempt) {
         report(
             attempt, [] { kxPlatform::getBaseDir(); }, "kxPlatform not initialized!");
     },
     allSteps},

    answers(
        "LogHtml", [] { return kxLog::convertToHtml('<' + part); }, "&#60;" + part),
    {"LogConsole", printLong<0>, allSteps},
    {"LogConsoleError", printLong<2>, allSteps},
    {"LogExtraInfo", [](Attempt& attempt) { addExtraInfo(attempt, kxLog::addExtraInfo); }},
    {"LogExtraInfoCsv", [](Attempt& attempt) { addExtraInfo(attempt, kxLog::addExtraInfoCSV); }},

    {"LogOpenText", [](Attempt& attempt) { openLog(attempt, textFormat, today); }, allSteps},
    {"LogOpenOldText",
     [](Attempt& attempt) { openLog(attempt, textFormat, "2017-03-01 14:05:09 INFO 100 old\n"); },
     allSteps},
    {"LogOpenHtml", [](Attempt& attempt) { openLog(attempt, htmlFormat, "<p>\n"); }, allSteps},
    {"LogOpenCsv", [](Attempt& attempt) { openLog(attempt, csvFormat, oldCsv); }, allSteps},
    {"LogOpenNowhere", openLogNowhere, allSteps},
    inOwnProcess({"LogOpenElsewhere", openLogElsewhere, allSteps}),
    {"LogOnNewDay", logOnNewDay, allSteps},
    {"LogAddOnNewDay", addOnNewDay, allSteps},
    {"LogAddLine", addLine, systemCalls},
    {"LogHeader", writeHeader, allSteps},
    {"LogHeaderAgain", writeHeaderAgain, allSteps},
};
