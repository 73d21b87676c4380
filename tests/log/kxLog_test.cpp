// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxLog.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <climits>
#include <csignal>
#include <functional>
#include <set>
#include <sstream>
#include <stdexcept>

#include "kxLog_fixture.h"
#include "rows.h"

using kxtest::Console;
using kxtest::consoleOf;
using kxtest::isStamped;
using kxtest::Level;
using kxtest::levels;

namespace {

class Log : public kxtest::LogTest {};

// Everything that must pass through unchanged: a terminal escape, ";", "%", line ends, high bytes.
const std::string odd = "a%s\x1b[31m;b\n\n;c%n\xff\t";

// --- Console -------------------------------------------------------------------------------------

struct ColorCase {
    const char* name;
    int type;
    const char *before, *after;
    bool onStandardError;
};
void PrintTo(const ColorCase& c, std::ostream* os) { *os << c.name; }

class ColorOutput : public kxtest::LogTest, public testing::WithParamInterface<ColorCase> {};
TEST_P(ColorOutput, PaintsTextAndNewline) {
    const ColorCase& c = GetParam();
    for (const std::string& text : {std::string("a"), std::string(), odd, std::string(9000, 'x')}) {
        const std::string painted = c.before + text + "\n" + c.after;
        EXPECT_EQ(consoleOf([&] { kxLog::colorOutput(c.type, text.c_str()); }),
                  (c.onStandardError ? Console{"", painted} : Console{painted, ""}));
    }
}
const ColorCase colorCases[] = {
    {"Plain", 0, "", "", false},
    {"Yellow", 1, "\x1b[33m", "\x1b[0m", false},
    {"Red", 2, "\x1b[31m", "\x1b[0m", true},
    {"Blue", 4, "\x1b[34m", "\x1b[0m", false},
    {"Cyan", 5, "\x1b[36m", "\x1b[0m", false},
    {"Magenta", 6, "\x1b[35m", "\x1b[0m", true},
};
INSTANTIATE_TEST_SUITE_P(Table, ColorOutput, testing::ValuesIn(colorCases), kxtest::nameOfRow);

TEST(ColorOutputType, UnknownIsReportedInPlaceOfTheText) {
    for (const int type : {INT_MIN, -1, 3, 7, INT_MAX})
        EXPECT_EQ(
            consoleOf([&] { kxLog::colorOutput(type, "text"); }),
            (Console{"", "kxLog::colorOutput : unknown tpye (" + std::to_string(type) + ")!\n"}));
}

TEST(LogConsole, IsNotFlushed) {
    const kxtest::Outcome outcome = kxtest::run({KX_LOG_PROBE, "die-unflushed"});
    EXPECT_EQ(outcome.signal, SIGKILL);
    EXPECT_EQ(outcome.out, "");
}

TEST(LogState, AtLoadTime) {
    EXPECT_EQ(kxtest::run({KX_LOG_PROBE, "initial-state"}).out,
              "format 2, stamps off, nr 0, last error '', log file '' (null)\n"
              "callbacks, buffer and stream are null\n");
}

// --- Levels, colours and flags -------------------------------------------------------------------

class PerLevel : public kxtest::LogTest, public testing::WithParamInterface<int> {
protected:
    const int index = GetParam();
    const Level& level = levels[index];
    const bool isError = index == 2;
};
INSTANTIATE_TEST_SUITE_P(All, PerLevel, testing::Range(0, 3),
                         [](const auto& test) { return std::string(levels[test.param].name); });

TEST_P(PerLevel, FlagsChooseTheDestinations) {
    const kxtest::TempDir dir;
    for (int flags = 0; flags < 8; ++flags)
        for (const bool alternate : {false, true}) {
            SCOPED_TRACE(testing::Message() << "flags " << flags << ", alternate " << alternate);
            const std::string file = dir.file("log" + std::to_string(2 * flags + alternate));
            std::string buffer = "kept ";
            std::stringbuf stream;
            heard().clear();
            listen();
            kxLog::enableOutputBuffer(buffer);
            kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
            kxLog::_log_file = file;
            kxLog::_last_error = "old";

            const Console console = consoleOf([&] { level.output("a<b", flags, alternate); });
            EXPECT_EQ(console, level.console("a<b", alternate));
            EXPECT_STREQ(kxLog::getLastError(), isError ? "a<b" : "old");
            EXPECT_EQ(heard(), flags & 2 ? Hearings({{index, "a<b"}}) : Hearings());

            const std::string line = flags & 4 ? level.html("a&#60;b", alternate) : "";
            EXPECT_EQ(buffer, "kept " + line);
            EXPECT_EQ(stream.str(), flags & 4 ? level.stream(line) : "");
            EXPECT_EQ(kxtest::exists(file), (flags & 4) != 0);
            if (flags & 4) {
                EXPECT_EQ(kxtest::slurp(file), line);
            }
        }
}

TEST_P(PerLevel, DestinationsAreOptional) {
    std::string buffer;
    std::stringbuf stream;
    const auto say = [&](const char* text) {
        EXPECT_EQ(consoleOf([&] { level.print("%s", text); }), level.console(text));
    };
    say("nothing set");
    kxLog::enableOutputBuffer(buffer);
    say("1");
    kxLog::disableOutputBuffer();
    kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
    say("2");
    kxLog::disableOutputStream();
    listen();
    say("3");
    level.setCallback(nullptr);
    say("4");
    EXPECT_EQ(buffer, level.html("1"));
    EXPECT_EQ(stream.str(), level.stream(level.html("2")));
    EXPECT_EQ(heard(), Hearings({{index, "3"}}));
}

TEST_P(PerLevel, EveryEntryPointUsesCallbackBufferAndNormalColour) {
    const std::function<void()> calls[] = {
        [&] { level.print("%s%d", "x ", 5); },
        [&] { level.printNumbered(4, "%s%d", "x ", 5); },
        [&] { level.script("x 5"); },
        [&] { level.scriptNumbered(4, "x 5"); },
    };
    for (const auto& call : calls) {
        std::string buffer;
        heard().clear();
        listen();
        kxLog::enableOutputBuffer(buffer);
        EXPECT_EQ(consoleOf(call), level.console("x 5"));
        EXPECT_EQ(heard(), Hearings({{index, "x 5"}}));
        EXPECT_EQ(buffer, level.html("x 5"));
    }
}

TEST_P(PerLevel, OddTextsPassUnchanged) {
    listen();
    for (const int format : {1, 3}) {
        std::string buffer;
        kxLog::_log_format = format;
        kxLog::enableOutputBuffer(buffer);
        heard().clear();
        EXPECT_EQ(consoleOf([&] { level.print("%s", odd.c_str()); }), level.console(odd));
        EXPECT_EQ(consoleOf([&] { level.script(odd.c_str()); }), level.console(odd));
        EXPECT_EQ(consoleOf([&] { level.scriptNumbered(0, odd.c_str()); }), level.console(odd));
        EXPECT_EQ(buffer, odd + "\n" + odd + "\n" + odd + "\n");
        EXPECT_EQ(heard(), Hearings(3, {index, odd}));
    }
}

TEST_P(PerLevel, SwitchedOffVariantDoesNothing) {
    std::string buffer;
    std::stringbuf stream;
    listen();
    kxLog::enableOutputBuffer(buffer);
    kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
    kxLog::_last_error = "old";
    kxLog::_nr = 9;
    const char* none = nullptr;
    EXPECT_EQ(consoleOf([&] { level.printOff("x %d\n", 5), level.printOff(none); }), Console());
    EXPECT_EQ(heard(), Hearings());
    EXPECT_EQ(buffer + stream.str(), "");
    EXPECT_STREQ(kxLog::getLastError(), "old");
    EXPECT_EQ(kxLog::_nr, 9);
}

TEST_P(PerLevel, NullFormatIsIgnored) {
    listen();
    kxLog::_last_error = "old";
    kxLog::_nr = 9;
    const char* none = nullptr;
    EXPECT_EQ(consoleOf([&] { level.print(none), level.printNumbered(7, none); }), Console());
    EXPECT_EQ(heard(), Hearings());
    EXPECT_EQ(kxLog::_nr, 9);
    EXPECT_STREQ(kxLog::getLastError(), "old");
}

// --- Last error ----------------------------------------------------------------------------------

TEST_F(Log, OnlyErrorsSetTheLastError) {
    EXPECT_STREQ(kxLog::getLastError(), "");
    consoleOf([] {
        kxLog::error("first");
        kxLog::info("i"), kxLog::warning("w"), kxLog::errorNR("nr");
    });
    EXPECT_STREQ(kxLog::getLastError(), "first");
    const std::string longText(5000, 'x');
    consoleOf([&] { kxLog::errorI(longText.c_str(), 0, true); });
    EXPECT_EQ(kxLog::getLastError(), longText);
    EXPECT_EQ(kxLog::_last_error, longText);
    kxLog::clearLastError();
    EXPECT_STREQ(kxLog::getLastError(), "");
}

// --- Text length ---------------------------------------------------------------------------------

TEST_P(PerLevel, FormattedTextsAreCutAt2047) {
    listen();
    const auto log = [&](const std::string& text, bool numbered) {
        heard().clear();
        const Console console = consoleOf([&] {
            numbered ? level.printNumbered(1, "%s", text.c_str()) : level.print("%s", text.c_str());
        });
        const std::string cut = text.substr(0, 2047);
        EXPECT_EQ(heard(), Hearings({{index, cut}}));
        EXPECT_EQ(console, level.console(cut));
        if (isError) {
            EXPECT_EQ(kxLog::getLastError(), cut);
        }
    };
    for (const bool numbered : {false, true})
        for (const std::size_t size : {2046U, 2047U, 2048U, 3000U, 1U}) {
            std::string text(size, 'x');
            text.back() = 'z';
            if (size > 2047) text[2047] = 'y';
            log(text, numbered);
        }
}

TEST_P(PerLevel, ScriptTextsKeepTheirLength) {
    const std::string text = std::string(5000, '%') + "n";
    for (const auto& call : {std::function<void()>([&] { level.script(text.c_str()); }),
                             std::function<void()>([&] { level.scriptNumbered(1, text.c_str()); }),
                             std::function<void()>([&] { level.output(text.c_str(), 0, false); })})
        EXPECT_EQ(consoleOf(call), level.console(text));
}

// From texts that are composed on the stack to texts that are not.
TEST_P(PerLevel, TextsOfEveryLengthAreWholeEverywhere) {
    std::string buffer;
    kxLog::enableOutputBuffer(buffer);
    const std::string stamp = "2017-03-01 14:05:09 " + std::string(level.word) + " 100 ";
    for (const int format : {1, 3}) {
        kxLog::setLogFormat(format);
        for (std::size_t size = 2040; size < 2200; ++size) {
            std::string text(size, 'x');
            text.back() = 'z';
            buffer.clear();
            ASSERT_EQ(consoleOf([&] { level.script(text.c_str()); }), level.console(text));
            ASSERT_EQ(buffer.size(), stamp.size() + size + 1);
            ASSERT_EQ(buffer.substr(stamp.size()), text + "\n");
        }
    }
}

// A wide character that the locale "C" cannot express makes vsnprintf fail.
TEST_P(PerLevel, FailedFormattingStillGivesOneBoundedText) {
    listen();
    const std::string full(3000, 'x');
    consoleOf([&] {
        level.print("%s", full.c_str());
        level.print("ab%lscd", L"\x20ac");
        level.printNumbered(1, "%s", full.c_str());
        level.printNumbered(1, "ab%lscd", L"\x20ac");
    });
    ASSERT_EQ(heard().size(), 4U);
    for (const Heard& message : heard()) EXPECT_LE(message.text.size(), 2047U);
}

// The callback receives the static buffer itself; a shared or an allocated buffer would be noticed.
std::vector<const char*> addresses;
void noteAddress(const char* text) { addresses.push_back(text); }
TEST_F(Log, EachEntryPointFormatsIntoABufferOfItsOwn) {
    addresses.clear();
    consoleOf([] {
        for (int round = 0; round < 2; ++round)
            for (const Level& level : levels) {
                level.setCallback(noteAddress);
                level.print("a");
                level.printNumbered(1, "a");
            }
    });
    ASSERT_EQ(addresses.size(), 12U);
    EXPECT_EQ(std::set<const char*>(addresses.begin(), addresses.end()).size(), 6U);
    for (std::size_t i = 0; i < 6; ++i) EXPECT_EQ(addresses[i], addresses[i + 6]);
}

// --- Lines ---------------------------------------------------------------------------------------

TEST_P(PerLevel, StampedLines) {
    kxLog::_add_time_stamp = true;
    kxLog::_nr = 7;
    const std::string number = std::to_string(level.number + 7);
    for (const std::string& text : {std::string("x"), std::string(), std::string("two\nlines\n")}) {
        const std::string end = !text.empty() && text.back() == '\n' ? "" : "\n";
        std::string textLine, csvLine;
        const std::time_t start = std::time(nullptr);
        const Console console = consoleOf([&] {
            kxLog::_log_format = 1;
            kxLog::enableOutputBuffer(textLine);
            level.print("%s", text.c_str());
            kxLog::_log_format = 3;
            kxLog::enableOutputBuffer(csvLine);
            level.print("%s", text.c_str());
        });
        EXPECT_TRUE(isStamped(textLine, start, kxtest::textStampFormat,
                              level.word + (" " + number) + " " + text + end));
        EXPECT_TRUE(isStamped(csvLine, start, kxtest::csvStampFormat,
                              level.word + (";" + number) + ";" + text + end));
        const Console once = level.console(text);  // always with a newline, never with a stamp
        EXPECT_EQ(console, (Console{once.out + once.out, once.err + once.err}));
    }
}

struct LineCase {
    const char* name;
    int format;
    const char *text, *line;
};
void PrintTo(const LineCase& c, std::ostream* os) { *os << c.name; }

class PlainLine : public kxtest::LogTest, public testing::WithParamInterface<LineCase> {};
TEST_P(PlainLine, GoesToBufferStreamAndFile) {
    const LineCase& c = GetParam();
    const kxtest::TempDir dir;
    std::string buffer;
    std::stringbuf stream;
    kxLog::_log_format = c.format;
    kxLog::enableOutputBuffer(buffer);
    kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
    if (c.format != 3) kxLog::_log_file = dir.file("log");
    EXPECT_EQ(consoleOf([&] { kxLog::warning("%s", c.text); }), levels[1].console(c.text));
    EXPECT_EQ(buffer, c.line);
    EXPECT_EQ(stream.str(), std::string("\x1b[33m") + c.line + "\x1b[0m");
    if (c.format != 3) {
        EXPECT_EQ(kxtest::slurp(dir.file("log")), c.line);
    }
}
const LineCase lineCases[] = {
    {"Text", 1, "a<b", "a<b\n"},
    {"TextEmpty", 1, "", "\n"},
    {"TextEndsInNewline", 1, "a\n", "a\n"},
    {"TextEndsInTwo", 1, "a\n\n", "a\n\n"},
    {"TextIsANewline", 1, "\n", "\n"},
    {"Html", 2, "a<b", "<span style=\"color:#b4b400;\">a&#60;b</span><br>\n"},
    {"HtmlEmpty", 2, "", "<span style=\"color:#b4b400;\"></span><br>\n"},
    {"HtmlLosesOneNewline", 2, "a\n\n", "<span style=\"color:#b4b400;\">a\n</span><br>\n"},
    {"Csv", 3, "a;<b", "a;<b\n"},
    {"CsvEmpty", 3, "", "\n"},
    {"CsvEndsInNewline", 3, "a\n", "a\n"},
    {"FormatZero", 0, "a", ""},
    {"FormatFour", 4, "a", ""},
    {"FormatNegative", -1, "a", ""},
};
INSTANTIATE_TEST_SUITE_P(Table, PlainLine, testing::ValuesIn(lineCases), kxtest::nameOfRow);

TEST_F(Log, HtmlAndUnknownFormatsCarryNoStamp) {
    std::string buffer;
    kxLog::_add_time_stamp = true;
    kxLog::enableOutputBuffer(buffer);
    consoleOf([] { kxLog::info(5, "a"); });
    kxLog::_log_format = 0;
    consoleOf([] { kxLog::info(5, "b"); });
    EXPECT_EQ(buffer, levels[0].html("a"));
}

TEST_F(Log, ExtraInfoReplacesTheLineOnlyWithStampsOn) {
    std::string text = "old", csv = "old";
    kxLog::_nr = -3;
    kxLog::addExtraInfo(text, "TYPE", 40);
    kxLog::addExtraInfoCSV(csv, "TYPE", 40);
    EXPECT_EQ(text + csv, "oldold");
    kxLog::_add_time_stamp = true;
    const std::time_t start = std::time(nullptr);
    kxLog::addExtraInfo(text, "TYPE", 40);
    kxLog::addExtraInfoCSV(csv, "TYPE", 40);
    EXPECT_TRUE(isStamped(text, start, kxtest::textStampFormat, "TYPE 37 "));
    EXPECT_TRUE(isStamped(csv, start, kxtest::csvStampFormat, "TYPE;37;"));
}

// --- Numbers -------------------------------------------------------------------------------------

TEST_F(Log, NumberStaysForLaterMessagesOfEveryLevel) {
    std::string buffer;
    kxLog::_log_format = 1;
    kxLog::_add_time_stamp = true;
    kxLog::enableOutputBuffer(buffer);
    const auto numberAfter = [&](const std::function<void()>& call) {
        buffer.clear();
        consoleOf(call);
        return buffer.substr(std::string("2017-03-01 14:05:09 ").size());
    };
    EXPECT_EQ(numberAfter([] { kxLog::info(3, "a"); }), "INFO 103 a\n");
    EXPECT_EQ(numberAfter([] { kxLog::error("b"); }), "ERROR 303 b\n");
    EXPECT_EQ(numberAfter([] { kxLog::warningIPython("c"); }), "WARN 203 c\n");
    EXPECT_EQ(numberAfter([] { kxLog::warning(-4, "d"); }), "WARN 196 d\n");
    EXPECT_EQ(numberAfter([] { kxLog::infoIPython(11, "e"); }), "INFO 111 e\n");
    EXPECT_EQ(numberAfter([] { kxLog::warningIPython(12, "f"); }), "WARN 212 f\n");
    EXPECT_EQ(numberAfter([] { kxLog::errorIPython(13, "g"); }), "ERROR 313 g\n");
    EXPECT_EQ(numberAfter([] { kxLog::error(14, "h"); }), "ERROR 314 h\n");
    EXPECT_EQ(numberAfter([] { kxLog::infoI("i", 6, true); }), "INFO 114 i\n");
    EXPECT_EQ(numberAfter([] { kxLog::info(0, "j"); }), "INFO 100 j\n");
    EXPECT_EQ(kxLog::_nr, 0);
}

TEST_F(Log, NumberWrapsAroundBeyondTheLargest) {
    kxLog::_add_time_stamp = true;
    for (const int nr : {INT_MAX - 300, INT_MAX - 299, INT_MAX}) {
        kxLog::_nr = nr;
        std::string text, csv;
        kxLog::addExtraInfo(text, "E", 300);
        kxLog::addExtraInfoCSV(csv, "E", 300);
        const auto sum = static_cast<int>(static_cast<unsigned>(nr) + 300U);
        EXPECT_EQ(text.substr(text.find('E')), "E " + std::to_string(sum) + " ");
        EXPECT_EQ(csv.substr(csv.find('E')), "E;" + std::to_string(sum) + ";");
    }
}

// --- Order ---------------------------------------------------------------------------------------

/// A stream buffer that looks at the log's state before it accepts anything.
class WatchingStream : public std::stringbuf {
public:
    std::function<void()> look;

protected:
    std::streamsize xsputn(const char* text, std::streamsize n) override {
        look();
        return std::stringbuf::xsputn(text, n);
    }
    int_type overflow(int_type c) override {
        look();
        return std::stringbuf::overflow(c);
    }
};

std::function<void()> lookFromCallback;

TEST_P(PerLevel, CallbackThenConsoleThenBufferThenStreamThenFile) {
    struct Moment {
        std::string lastError, buffer, stream;
        Console console;
        bool file;
    };
    const kxtest::TempDir dir;
    std::string buffer;
    WatchingStream stream;
    std::vector<Moment> inCallback, inStream;
    kxLog::_log_format = 1;
    kxLog::_last_error = "old";
    kxLog::_log_file = dir.file("log");
    kxLog::enableOutputBuffer(buffer);
    kxLog::enableOutputStream(static_cast<std::streambuf*>(&stream));
    {
        kxtest::Captured out(stdout), err(stderr);
        const auto now = [&] {
            return Moment{kxLog::getLastError(),
                          buffer,
                          stream.str(),
                          {out.text(), err.text()},
                          kxtest::exists(dir.file("log"))};
        };
        lookFromCallback = [&] { inCallback.push_back(now()); };
        stream.look = [&] { inStream.push_back(now()); };
        level.setCallback([](const char*) { lookFromCallback(); });
        level.print("x");
    }
    lookFromCallback = nullptr;
    ASSERT_EQ(inCallback.size(), 1U);
    EXPECT_EQ(inCallback[0].lastError, isError ? "x" : "old");
    EXPECT_EQ(inCallback[0].console, Console());
    EXPECT_EQ(inCallback[0].buffer, "");

    ASSERT_FALSE(inStream.empty());
    EXPECT_EQ(inStream[0].stream, "");
    EXPECT_EQ(inStream[0].console, level.console("x"));
    for (const Moment& moment : inStream) {
        EXPECT_EQ(moment.buffer, "x\n");
        EXPECT_FALSE(moment.file);
    }
    EXPECT_EQ(stream.str(), level.stream("x\n"));
    EXPECT_EQ(kxtest::slurp(dir.file("log")), "x\n");
}

// Standard error is unbuffered, so on a pipe without a reader the console step raises SIGPIPE.
const std::string* bufferToWatch;
std::string seenByConsole;
void onBrokenPipe(int) { seenByConsole += *bufferToWatch + kxLog::getLastError(); }

TEST_F(Log, ConsoleComesBeforeTheBuffer) {
    std::string buffer = "empty ";
    bufferToWatch = &buffer;
    seenByConsole.clear();
    kxLog::enableOutputBuffer(buffer);
    listen();
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const int standardError = dup(2);
    dup2(ends[1], 2);
    close(ends[0]);
    close(ends[1]);
    const auto before = std::signal(SIGPIPE, onBrokenPipe);
    kxLog::error("x");
    std::signal(SIGPIPE, before);
    dup2(standardError, 2);
    close(standardError);
    std::clearerr(stderr);
    EXPECT_EQ(seenByConsole, "empty x");
    EXPECT_EQ(buffer, "empty " + levels[2].html("x"));
}

// The output is not checked: a stream that fails or throws does not keep the line out of the file.
TEST_P(PerLevel, FailingStreamIsIgnored) {
    const kxtest::TempDir dir;
    WatchingStream throwing;
    throwing.look = [] { throw std::runtime_error("full"); };
    struct : std::streambuf {
    } refusing;
    kxLog::_log_format = 1;
    kxLog::_log_file = dir.file("log");
    for (std::streambuf* stream :
         {static_cast<std::streambuf*>(&throwing), static_cast<std::streambuf*>(&refusing)}) {
        kxLog::enableOutputStream(stream);
        EXPECT_EQ(consoleOf([&] { level.print("x"); }), level.console("x"));
    }
    EXPECT_EQ(kxtest::slurp(dir.file("log")), "x\nx\n");
}

// --- Format check --------------------------------------------------------------------------------

// Each call is wrong and on a line of its own; with the right argument none may be reported.
TEST(LogFormatCheck, CompilerRejectsWrongArguments) {
    std::string calls;
    for (const char* level : {"info", "warning", "error"}) {
        calls += std::string("kxLog::") + level + "(\"%s\", ARGUMENT);\n";
        calls += std::string("kxLog::") + level + "(1, \"%s\", ARGUMENT);\n";
        calls += std::string("kxLog::") + level + "NR(\"%s\", ARGUMENT);\n";
    }
    const kxtest::RunOptions source{"#include \"kxLog.h\"\nvoid f() {\n" + calls + "}\n", ""};
    const auto compile = [&](const char* argument) {
        return kxtest::run({KX_CXX_COMPILER, "-std=c++17", "-fsyntax-only", "-Werror=format",
                            "-I" KX_LOG_HEADERS, argument, "-x", "c++", "-"},
                           {}, source);
    };
    const kxtest::Outcome right = compile("-DARGUMENT=\"text\"");
    EXPECT_EQ(right.exitCode, 0) << right.err;

    const kxtest::Outcome wrong = compile("-DARGUMENT=5");
    EXPECT_NE(wrong.exitCode, 0);
    int errors = 0;
    for (std::size_t at = 0; (at = wrong.err.find("error: format", at)) != std::string::npos; ++at)
        ++errors;
    EXPECT_EQ(errors, 9) << wrong.err;
}

}  // namespace
