// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The log file: choosing it, its header, its lines, and what can go wrong with it.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>

#include "bytes.h"
#include "kxLog.h"
#include "kxLog_fixture.h"
#include "rows.h"

using kxtest::Console;
using kxtest::consoleOf;
using kxtest::isStamped;
using kxtest::levels;
using kxtest::slurp;
using Names = std::vector<std::string>;

namespace {

class LogFile : public kxtest::LogTest {
protected:
    const kxtest::TempDir dir;
    const std::string path = dir.file("app.log");

    /// What is printed when the file is chosen and all goes well.
    static Console setting(const std::string& file) {
        return {"Setting log file to '" + file + "'.\n", ""};
    }
    static Console failing(const std::string& file) {
        return {"Setting log file to '" + file + "'.\n",
                "\x1b[31mCouldn't create log file '" + file + "'!\n\x1b[0m"};
    }
    static Console choose(const std::string& name) {
        return consoleOf([&] { kxLog::setLogFile(name.c_str()); });
    }
};

// --- Choosing the file ---------------------------------------------------------------------------

TEST_F(LogFile, NoneAtFirstAndNullChangesNothing) {
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    EXPECT_EQ(consoleOf([] { kxLog::setLogFile(nullptr); }), Console());
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    choose(path);
    EXPECT_EQ(consoleOf([] { kxLog::setLogFile(nullptr); }), Console());
    EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
}

TEST_F(LogFile, TextStartsEmpty) {
    kxLog::setLogFormat(1);
    EXPECT_EQ(choose(path), setting(path));
    EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    EXPECT_EQ(kxLog::_log_file, path);
    EXPECT_EQ(slurp(path), "");
}

// The descriptor of the file is then 0.
TEST_F(LogFile, TakesTextWhereStandardInputIsClosed) {
    kxLog::setLogFormat(1);
    choose(path);
    consoleOf([] {
        const int saved = dup(0);
        close(0);
        kxLog::info("without an input");
        if (saved < 0) return;
        dup2(saved, 0);
        close(saved);
    });
    EXPECT_NE(slurp(path).find("without an input"), std::string::npos);
}

TEST_F(LogFile, CsvStartsWithItsHeader) {
    kxLog::setLogFormat(3);
    EXPECT_EQ(choose(path), setting(path));
    EXPECT_EQ(slurp(path), kxtest::csvHeader);
}

TEST_F(LogFile, HtmlStartsWithItsHead) {
    const std::string rule =
        "<font color=\"#b40000\">----------------------------------------------------</font><br>";
    const std::time_t start = std::time(nullptr);
    EXPECT_EQ(choose(path), setting(path));
    EXPECT_TRUE(
        isStamped(slurp(path), start, "%d.%m.%Y %H:%M:%S", "</font><br>" + rule + "</p>\n",
                  "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head><br>"
                  "<p align=\"middle\">" +
                      rule + "<font color=\"#b40000\">Log file from "));
}

TEST_F(LogFile, UnknownFormatStartsEmptyAndStaysEmpty) {
    kxLog::setLogFormat(0);
    choose(path);
    consoleOf([] { kxLog::warning("x"); });
    EXPECT_EQ(slurp(path), "");
}

TEST_F(LogFile, NameIsItsOwnStorage) {
    kxLog::setLogFormat(1);
    choose(path);
    consoleOf([] { kxLog::info("x"); });
    const std::string content = slurp(path);
    EXPECT_EQ(consoleOf([] { kxLog::setLogFile(kxLog::_log_file.c_str()); }), setting(path));
    EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    EXPECT_EQ(slurp(path), content);

    const std::string gone = dir.file("a/rather/long/path/whose/directory/does/not/exist/app.log");
    kxLog::_log_file = gone;
    EXPECT_EQ(consoleOf([] { kxLog::setLogFile(kxLog::_log_file.c_str()); }), failing(gone));
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
}

TEST_F(LogFile, FailureTurnsFileLoggingOffAndIsAnError) {
    const std::string below = dir.write("file", "kept") + "/app.log";
    for (const int format : {1, 2, 0}) {
        std::string buffer;
        kxLog::_log_format = format;
        choose(path);
        const std::string before = slurp(path);
        listen();
        heard().clear();
        kxLog::enableOutputBuffer(buffer);
        EXPECT_EQ(choose(below), failing(below));
        const std::string report = "Couldn't create log file '" + below + "'!";
        EXPECT_EQ(kxLog::getLastError(), report);
        EXPECT_EQ(heard(), Hearings({{2, report}}));
        if (format == 2) {
            EXPECT_EQ(buffer, levels[2].html(report));
        }
        EXPECT_EQ(kxLog::getLogFile(), nullptr);
        EXPECT_EQ(slurp(path), before);  // the report is not in the file chosen before
        EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x"));
        EXPECT_EQ(slurp(path), before);
    }
    EXPECT_EQ(slurp(dir.file("file")), "kept");
}

// The report then goes only to the console and the last error, since the output is busy.
TEST_F(LogFile, CallbackMayChooseAFileThatCannotBeOpened) {
    const std::string below = dir.write("file", "") + "/app.log";
    static std::string name;
    name = below;
    std::string buffer;
    kxLog::_log_format = 1;
    kxLog::enableOutputBuffer(buffer);
    listen();
    kxLog::setInfoCB([](const char*) { kxLog::setLogFile(name.c_str()); });
    alarm(20);
    const Console console = consoleOf([] { kxLog::info("x"); });
    alarm(0);
    EXPECT_EQ(console.out, failing(below).out + "x\n");
    EXPECT_EQ(console.err, failing(below).err);
    EXPECT_EQ(kxLog::getLastError(), "Couldn't create log file '" + below + "'!");
    EXPECT_EQ(heard(), Hearings());
    EXPECT_EQ(buffer, "x\n");
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
}

TEST_F(LogFile, FailureInCsvConcernsTheHeaderToo) {
    const std::string below = dir.write("file", "") + "/app.log";
    kxLog::setLogFormat(3);
    const Console console = choose(below);
    EXPECT_EQ(console.out, failing(below).out);
    EXPECT_EQ(console.err, "kxLog::writeCSVHeader: couldn't write log file '" + below + "'!\n" +
                               failing(below).err);
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
}

TEST_F(LogFile, EmptyOrEndlessNamesFail) {
    kxLog::setLogFormat(1);
    EXPECT_EQ(choose(""), failing(""));
    // The report is cut like every formatted text.
    const std::string endless(5000, 'x'), report = "Couldn't create log file '" + endless;
    choose(endless);
    EXPECT_EQ(kxLog::_last_error.size(), 2047U);
    EXPECT_EQ(kxLog::_last_error.compare(report.substr(0, 2047)), 0);
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
}

TEST_F(LogFile, DirectoryIsLeftAlone) {
    dir.write("app.log/inside", "kept");
    for (const int format : {1, 2, 3}) {
        kxLog::_log_format = format;
        EXPECT_EQ(choose(path), failing(path));
        EXPECT_EQ(kxLog::getLogFile(), nullptr);
        EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
        EXPECT_EQ(slurp(dir.file("app.log/inside")), "kept");
    }
}

TEST_F(LogFile, FifoIsWrittenToAndNotMoved) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    const int fifo = open(path.c_str(), O_RDWR | O_NONBLOCK);  // with a reader, so no open waits
    ASSERT_GE(fifo, 0);
    for (const int format : {1, 3}) {
        kxLog::_log_format = format;
        EXPECT_EQ(choose(path), setting(path));
        EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x"));
        EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    }
    char text[100];
    const ssize_t n = read(fifo, text, sizeof text);
    close(fifo);
    EXPECT_EQ(std::string(text, n > 0 ? static_cast<std::size_t>(n) : 0), "x\nx\n");
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
}

// A program that waits for a reader is ended by its alarm.
TEST_F(LogFile, FifoThatNobodyReadsCannotBeOpened) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    alarm(20);
    for (const int format : {1, 2, 3, 0}) {
        kxLog::_log_format = format;
        EXPECT_EQ(choose(path), failing(path));
        EXPECT_EQ(kxLog::getLogFile(), nullptr);
        EXPECT_EQ(consoleOf([] { kxLog::writeCSVHeader(nullptr); }).out, "");
        EXPECT_EQ(consoleOf([&] { kxLog::writeCSVHeader(path.c_str()); }), Console());
    }
    alarm(0);
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
}

TEST_F(LogFile, LinesToAFifoAreLostWhileNobodyReads) {
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    alarm(20);
    for (const int format : {1, 3}) {
        kxLog::_log_format = format;
        kxLog::_log_file = path;
        EXPECT_EQ(consoleOf([] { kxLog::info("lost"); }), levels[0].console("lost"));
        const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
        EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x"));
        char text[100];
        const ssize_t n = read(reader, text, sizeof text);
        close(reader);
        EXPECT_EQ(std::string(text, n > 0 ? static_cast<std::size_t>(n) : 0), "x\n");
        EXPECT_STREQ(kxLog::getLogFile(), path.c_str());
    }
    alarm(0);
}

// If a file can be appended to but not read, its age is unknown.
TEST_F(LogFile, UnreadableFileIsAppendedTo) {
    dir.write("app.log", "2017-03-01 14:05:09 old\n");
    chmod(path.c_str(), 0222);
    chmod(dir.path().c_str(), 0777);
    const kxtest::RunOptions inside{"", dir.path()};  // whatever the rights of the path to it
    ASSERT_EQ(kxtest::run({KX_LOG_PROBE, "unreadable", "app.log"}, {}, inside).exitCode, 0);
    chmod(path.c_str(), 0666);
    EXPECT_EQ(slurp(path), "2017-03-01 14:05:09 old\nnew\n");
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
}

// --- The directory variable ----------------------------------------------------------------------

struct VariableCase {
    const char *name, *appName, *variable;
};
void PrintTo(const VariableCase& c, std::ostream* os) { *os << c.name; }

class LogDirectory : public LogFile, public testing::WithParamInterface<VariableCase> {};
TEST_P(LogDirectory, TakesTheFileUnderItsOwnName) {
    const VariableCase& c = GetParam();
    kxPlatform::setAppName(c.appName);
    const std::string elsewhere = dir.file("a/b/c");
    const kxtest::ScopedEnv variable(c.variable, elsewhere.c_str());
    const kxtest::ScopedCwd here(dir.path());
    for (const std::string& name :
         {path, std::string("app.log"), std::string("/no/such/app.log")}) {
        EXPECT_EQ(choose(name), setting(elsewhere + "/app.log"));
        EXPECT_EQ(kxLog::_log_file, elsewhere + "/app.log");
    }
    EXPECT_EQ(kxtest::list(dir.path()), Names{"a"});
    EXPECT_EQ(kxtest::list(elsewhere), (Names{"app.log", "app.log00000-000000"}));
}
const VariableCase variableCases[] = {
    {"LowerCase", "talo", "TALO_LOG_DIR"},
    {"MixedCase", "MyApp", "MYAPP_LOG_DIR"},
    {"OtherCharacters", "my-app 2_\xe4z", "MY-APP 2_\xe4Z_LOG_DIR"},
    {"NoName", "", "_LOG_DIR"},
};
INSTANTIATE_TEST_SUITE_P(Table, LogDirectory, testing::ValuesIn(variableCases), kxtest::nameOfRow);

TEST_F(LogFile, OtherVariablesDoNotCount) {
    kxPlatform::setAppName("talo");
    const std::string elsewhere = dir.file("elsewhere");
    const kxtest::ScopedEnv empty("TALO_LOG_DIR", ""), lower("talo_LOG_DIR", elsewhere.c_str()),
        other("OTHER_LOG_DIR", elsewhere.c_str());
    EXPECT_EQ(choose(path), setting(path));
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
}

TEST_F(LogFile, DirectoryThatCannotBeMadeIsAFailure) {
    kxPlatform::setAppName("talo");
    const std::string below = dir.write("file", "") + "/sub";
    const kxtest::ScopedEnv variable("TALO_LOG_DIR", below.c_str());
    EXPECT_EQ(choose(path), failing(below + "/app.log"));
    EXPECT_EQ(kxLog::getLogFile(), nullptr);
    EXPECT_EQ(kxtest::list(dir.path()), Names{"file"});
}

// --- Format --------------------------------------------------------------------------------------

TEST_F(LogFile, FormatTurnsStampsOnAndNeverOff) {
    choose(path);
    const std::string content = slurp(path);
    for (const int format : {0, 2, 4, -1, 1, 3})
        for (const bool before : {false, true}) {
            kxLog::_add_time_stamp = before;
            EXPECT_EQ(consoleOf([&] { kxLog::setLogFormat(format); }), Console());
            EXPECT_EQ(kxLog::_log_format, format);
            EXPECT_EQ(kxLog::_add_time_stamp, before || format == 1 || format == 3) << format;
        }
    EXPECT_EQ(slurp(path), content);
    EXPECT_EQ(kxtest::list(dir.path()), Names{"app.log"});
}

// --- The CSV header ------------------------------------------------------------------------------

TEST_F(LogFile, CsvHeaderGoesToNewFilesOnly) {
    const auto write = [](const char* name) {
        return consoleOf([&] { kxLog::writeCSVHeader(name); });
    };
    for (const int format : {1, 3}) {  // in either format
        kxLog::_log_format = format;
        const std::string fresh = dir.file("fresh" + std::to_string(format));
        EXPECT_EQ(write(fresh.c_str()), Console());
        EXPECT_EQ(slurp(fresh), kxtest::csvHeader);
        EXPECT_EQ(write(fresh.c_str()), Console());
        EXPECT_EQ(slurp(fresh), kxtest::csvHeader);
    }
    const std::string empty = dir.write("empty", ""), inside = dir.makeDir("dir");
    EXPECT_EQ(write(empty.c_str()), Console());
    EXPECT_EQ(write(inside.c_str()), Console());
    EXPECT_EQ(slurp(empty), "");
    EXPECT_EQ(kxtest::list(inside), Names());

    kxLog::_log_file = path;
    EXPECT_EQ(write(nullptr), Console());
    EXPECT_EQ(slurp(path), kxtest::csvHeader);
}

TEST_F(LogFile, CsvHeaderFailureGoesToStandardError) {
    const std::string below = dir.write("file", "") + "/x";
    listen();
    for (const std::string& name : {below, std::string()})
        EXPECT_EQ(
            consoleOf([&] { kxLog::writeCSVHeader(name.c_str()); }),
            (Console{"", "kxLog::writeCSVHeader: couldn't write log file '" + name + "'!\n"}));
    EXPECT_EQ(consoleOf([] { kxLog::writeCSVHeader(nullptr); }),
              (Console{"", "kxLog::writeCSVHeader: couldn't write log file ''!\n"}));
    EXPECT_EQ(heard(), Hearings());
    EXPECT_STREQ(kxLog::getLastError(), "");
}

// A full disk, simulated with the limit on the size of files. The message goes to a pipe, which has
// no such limit.
TEST_F(LogFile, CsvHeaderThatDoesNotFitIsReported) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    std::fflush(stderr);
    const int standardError = dup(2);
    dup2(ends[1], 2);
    close(ends[1]);
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit full{0, limit.rlim_max};
    const auto before = std::signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &full);
    kxLog::writeCSVHeader(path.c_str());
    setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, before);
    dup2(standardError, 2);
    close(standardError);
    char text[1000];
    const ssize_t n = read(ends[0], text, sizeof text);
    close(ends[0]);
    EXPECT_EQ(std::string(text, n > 0 ? static_cast<std::size_t>(n) : 0),
              "kxLog::writeCSVHeader: couldn't write log file '" + path + "'!\n");
}

// --- Lines ---------------------------------------------------------------------------------------

TEST_F(LogFile, TextLinesOfEveryLevel) {
    kxLog::setLogFormat(1);
    choose(path);
    std::string expected;
    for (const auto& level : levels) {
        std::string line;
        kxLog::enableOutputBuffer(line);
        const std::time_t start = std::time(nullptr);
        consoleOf([&] { level.printNumbered(5, "x;%d", 6); });
        EXPECT_TRUE(isStamped(line, start, kxtest::textStampFormat,
                              level.word + (" " + std::to_string(level.number + 5)) + " x;6\n"));
        expected += line;
    }
    EXPECT_EQ(slurp(path), expected);
}

TEST_F(LogFile, HtmlLinesFollowTheHead) {
    choose(path);
    const std::string head = slurp(path);
    consoleOf([] { kxLog::info("a<b"), kxLog::warning("\"\n"), kxLog::errorI("&\n\n>", 6, true); });
    EXPECT_EQ(slurp(path), head + levels[0].html("a&#60;b") + levels[1].html("&#34;") +
                               levels[2].html("&#38;\n\n&#62;", true));
}

TEST_F(LogFile, LinesOfAnyLengthAndByteAreAppended) {
    const std::string every = kxtest::everyByte();
    const std::string longLine(300000, 'x');
    dir.write("app.log", "old");
    kxLog::_log_format = 1;
    kxLog::_log_file = path;
    EXPECT_EQ(consoleOf([&] {
                  kxLog::addToLogFile(every);
                  kxLog::addToLogFile("");
                  kxLog::addToLogFile(longLine);
                  kxLog::addToLogFile("end");
              }),
              Console());
    EXPECT_EQ(slurp(path), "old" + every + longLine + "end");
}

TEST_F(LogFile, LineCreatesAFileThatIsMissing) {
    for (const int format : {1, 2, 3}) {  // without any header
        kxLog::_log_format = format;
        kxLog::_log_file = dir.file(std::to_string(format));
        kxLog::addToLogFile("x\n");
        EXPECT_EQ(slurp(kxLog::_log_file), "x\n");
    }
}

TEST_F(LogFile, LineWithoutAFileOrRoomIsLostSilently) {
    const std::string below = dir.write("file", "kept") + "/x";
    const Names lost = {"", below, dir.file("no/x"), dir.path(), "/dev/full"};
    for (const std::string& name : lost) {
        kxLog::_log_format = 1;
        kxLog::_log_file = name;
        EXPECT_EQ(consoleOf([] { kxLog::addToLogFile("x\n"); }), Console()) << name;
        EXPECT_EQ(consoleOf([] { kxLog::info("x"); }), levels[0].console("x")) << name;
        EXPECT_EQ(kxLog::_log_file, name);
    }
    EXPECT_EQ(kxtest::list(dir.path()), Names{"file"});
    EXPECT_EQ(slurp(dir.file("file")), "kept");
}

// --- HTML ----------------------------------------------------------------------------------------

TEST(ConvertToHtml, EveryByte) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        const std::string html = byte == '"'   ? "&#34;"
                                 : byte == '&' ? "&#38;"
                                 : byte == '<' ? "&#60;"
                                 : byte == '>' ? "&#62;"
                                               : text;
        EXPECT_EQ(kxLog::convertToHtml("a" + text + text + "b"), "a" + html + html + "b") << byte;
        EXPECT_EQ(kxLog::convertToHtml(text), byte == '\n' ? "" : html) << byte;
    }
}

TEST(ConvertToHtml, LosesOneNewlineAtTheEnd) {
    EXPECT_EQ(kxLog::convertToHtml(""), "");
    EXPECT_EQ(kxLog::convertToHtml("a<b>\n"), "a&#60;b&#62;");
    EXPECT_EQ(kxLog::convertToHtml("x\n\n"), "x\n");
    EXPECT_EQ(kxLog::convertToHtml("\nx"), "\nx");
    EXPECT_EQ(kxLog::convertToHtml("x\n "), "x\n ");
    EXPECT_EQ(kxLog::convertToHtml("&#60;"), "&#38;#60;");
}

}  // namespace
