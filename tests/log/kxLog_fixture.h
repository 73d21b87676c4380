// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shared by the tests of the log: the table of levels, a fixture that starts and ends with the
// log's initial state, captured console output, and a time zone in which it is noon.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "kxLog.h"
#include "kxPlatform.h"
#include "kxtest.h"

namespace kxtest {

/// Permanently puts the process into a time zone where it is noon, and where the date differs from
/// that of UTC. No test meets midnight, and local time is never mistaken for UTC.
class NoonZone {
public:
    NoonZone() {
        const long day = 24 * 3600, second = static_cast<long>(_start % day);
        _east = (second < day / 2 ? -day / 2 : day + day / 2) - second;
        const long west = std::labs(_east);
        char zone[32];
        std::snprintf(zone, sizeof zone, "KXT%c%02ld:%02ld:%02ld", _east > 0 ? '-' : '+',
                      west / 3600, west / 60 % 60, west % 60);
        setenv("TZ", zone, 1);
        tzset();
    }

    /// A moment in this zone, formatted as by strftime.
    std::string format(const char* format, std::time_t moment) const {
        moment += _east;
        std::tm fields{};
        gmtime_r(&moment, &fields);
        std::ostringstream text;
        text << std::put_time(&fields, format);
        return text.str();
    }

    /// The moment some days from the start of the program, formatted as above.
    std::string day(int days, const char* text) const {
        return format(text, _start + 24L * 3600 * days);
    }

private:
    const std::time_t _start = std::time(nullptr);
    long _east;  // seconds
};
inline const NoonZone noonZone;

constexpr const char* textStampFormat = "%Y-%m-%d %H:%M:%S ";
constexpr const char* csvStampFormat = "%d.%m.%Y;%H:%M:%S;";
constexpr const char* csvHeader = "Date;Time;Type of Message;Message Number;Description\n";

/// Whether `text` consists of `before`, a stamp in `format` of a moment from `start` until now, and
/// `after`.
inline testing::AssertionResult isStamped(const std::string& text, std::time_t start,
                                          const char* format, const std::string& after,
                                          const std::string& before = "") {
    // time() may lag behind a finer clock by a tick, so one second later still counts as now.
    for (const std::time_t end = std::time(nullptr) + 1; start <= end; ++start)
        if (text == before + noonZone.format(format, start) + after)
            return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << '"' << text << "\" is not \"" << before << '<' << format << '>' << after << '"';
}

/// The console output of a piece of code.
struct Console {
    std::string out, err;
    bool operator==(const Console& other) const { return out == other.out && err == other.err; }
};
inline void PrintTo(const Console& console, std::ostream* os) {
    *os << testing::PrintToString(console.out) << " and, as errors, "
        << testing::PrintToString(console.err);
}
template <class Code>
Console consoleOf(Code&& code) {
    Captured out(stdout), err(stderr);
    code();
    return {out.text(), err.text()};
}

/// A row of the table of levels. The arrays contain the normal and the alternate variant.
struct Level {
    const char* name;
    int number;
    const char* word;
    bool onStandardError;
    const char* consoleColor[2];
    const char* htmlColor[2];
    const char* streamColor;
    void (*print)(const char*, ...);
    void (*printNumbered)(int, const char*, ...);
    void (*printOff)(const char*, ...);
    void (*script)(const char*);
    void (*scriptNumbered)(int, const char*);
    void (*output)(const char*, int, bool);
    void (*setCallback)(void (*)(const char*));

    static std::string paint(const std::string& color, const std::string& text) {
        return color.empty() ? text : color + text + "\x1b[0m";
    }
    Console console(const std::string& text, bool alternate = false) const {
        const std::string painted = paint(consoleColor[alternate], text + "\n");
        return onStandardError ? Console{"", painted} : Console{painted, ""};
    }
    /// `escaped` is the text as HTML shows it.
    std::string html(const std::string& escaped, bool alternate = false) const {
        return std::string("<span style=\"color:#") + htmlColor[alternate] + ";\">" + escaped +
               "</span><br>\n";
    }
    std::string stream(const std::string& line) const { return paint(streamColor, line); }
};
inline void PrintTo(const Level& level, std::ostream* os) { *os << level.name; }

inline const Level levels[] = {
    {"Info",
     100,
     "INFO",
     false,
     {"", "\x1b[34m"},
     {"008c00", "008c8c"},
     "",
     kxLog::info,
     kxLog::info,
     kxLog::infoNR,
     kxLog::infoIPython,
     kxLog::infoIPython,
     kxLog::infoI,
     kxLog::setInfoCB},
    {"Warning",
     200,
     "WARN",
     false,
     {"\x1b[33m", "\x1b[36m"},
     {"b4b400", "b4b48c"},
     "\x1b[33m",
     kxLog::warning,
     kxLog::warning,
     kxLog::warningNR,
     kxLog::warningIPython,
     kxLog::warningIPython,
     kxLog::warningI,
     kxLog::setWarningCB},
    {"Error",
     300,
     "ERROR",
     true,
     {"\x1b[31m", "\x1b[35m"},
     {"b40000", "b4008c"},
     "\x1b[31m",
     kxLog::error,
     kxLog::error,
     kxLog::errorNR,
     kxLog::errorIPython,
     kxLog::errorIPython,
     kxLog::errorI,
     kxLog::setErrorCB},
};

/// Starts from and returns to the log's initial state. Collects what the callbacks receive, once
/// listen() has installed them.
class LogTest : public testing::Test {
protected:
    struct Heard {
        int level;  ///< index into `levels`
        std::string text;
        bool operator==(const Heard& other) const {
            return level == other.level && text == other.text;
        }
    };
    friend void PrintTo(const Heard& heard, std::ostream* os) {
        *os << levels[heard.level].name << ' ' << testing::PrintToString(heard.text);
    }
    using Hearings = std::vector<Heard>;

    LogTest() { reset(); }
    ~LogTest() override { reset(); }

    /// Filled without a lock, because the lock of the log must be enough.
    static Hearings& heard() {
        static Hearings hearings;
        return hearings;
    }
    template <int level>
    static void hear(const char* text) {
        heard().push_back({level, text});
    }
    static void listen() {
        kxLog::setInfoCB(hear<0>);
        kxLog::setWarningCB(hear<1>);
        kxLog::setErrorCB(hear<2>);
    }

private:
    static void reset() {
        kxLog::_log_format = 2;
        kxLog::_add_time_stamp = false;
        kxLog::_nr = 0;
        kxLog::clearLastError();
        for (const Level& level : levels) level.setCallback(nullptr);
        kxLog::disableOutputBuffer();
        kxLog::disableOutputStream();
        kxLog::_log_file.clear();
        kxPlatform::setAppName("");
        heard().clear();
    }
};

}  // namespace kxtest
