// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Log files: whatever an existing file of the name contains, opening the log and writing messages
// in each format moves, creates and appends to files as the model says, which works on strings in
// place of files. No byte of an old log is lost, except those of a file that was moved aside
// earlier under the same name.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iomanip>
#include <map>
#include <set>

#include "input.h"
#include "kxLog.h"
#include "support.h"

using kxfuzz::requireEqual;

namespace {

struct Settings {
    int format;
    bool hasStamps;
    int number;
};

struct Level {
    void (*log)(const char*, int, bool);
    const char *word, *color, *before, *after;
    int number;
    bool isError;
};
constexpr Level levels[] = {
    {kxLog::infoI, "INFO", "008c00", "", "", 100, false},
    {kxLog::warningI, "WARN", "b4b400", "\033[33m", "\033[0m", 200, false},
    {kxLog::errorI, "ERROR", "b40000", "\033[31m", "\033[0m", 300, true},
};

// --- The model -----------------------------------------------------------------------------------

std::string formatted(const char* format, std::time_t moment) {
    std::tm fields{};
    localtime_r(&moment, &fields);
    std::ostringstream text;
    text << std::put_time(&fields, format);
    return text.str();
}

// Reads as scanf does.
class Scanner {
public:
    explicit Scanner(const std::string& text) : _text(text) {}

    void space() {
        while (_at < _text.size() && std::string(" \t\n\v\f\r").find(_text[_at]) != _none) ++_at;
    }
    bool literal(char c) {
        if (c == ' ') space();
        if (c == ' ') return true;
        if (_at == _text.size() || _text[_at] != c) return false;
        ++_at;
        return true;
    }
    bool number(std::size_t width, int& result) {
        space();
        std::size_t end = _at;
        const bool isNegative = end < _text.size() && _text[end] == '-';
        if (isNegative || (end < _text.size() && _text[end] == '+')) ++end;
        const std::size_t first = end;
        long value = 0;
        for (; end < _text.size() && end - _at < width && _text[end] >= '0' && _text[end] <= '9';
             ++end)
            value = std::min(10 * value + (_text[end] - '0'), 1L << 40);
        if (end == first) return false;
        if (value > INT_MAX) isRepresentable = false;
        result = static_cast<int>(isNegative ? -value : value);
        _at = end;
        return true;
    }

    bool isRepresentable = true;  ///< no number was too large

private:
    static constexpr std::size_t _none = std::string::npos;
    const std::string& _text;
    std::size_t _at = 0;
};

struct Stamp {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
    bool isRepresentable = true;
};

constexpr std::size_t anyWidth = 1000000;

Stamp firstStamp(std::string file, bool isCsv) {
    Stamp stamp;
    if (isCsv) {
        const std::size_t header = std::min(file.find('\n'), file.size() - 1);
        if (file.empty()) return stamp;
        file = file.substr(std::min(header + 1, std::size_t{1023}));
    }
    Scanner scanner(file);
    if (isCsv)
        static_cast<void>(scanner.number(2, stamp.day) && scanner.literal('.') &&
                          scanner.number(2, stamp.month) && scanner.literal('.') &&
                          scanner.number(anyWidth, stamp.year) && scanner.literal(';') &&
                          scanner.number(2, stamp.hour) && scanner.literal(':') &&
                          scanner.number(2, stamp.minute) && scanner.literal(':') &&
                          scanner.number(2, stamp.second));
    else
        static_cast<void>(scanner.number(anyWidth, stamp.year) && scanner.literal('-') &&
                          scanner.number(2, stamp.month) && scanner.literal('-') &&
                          scanner.number(2, stamp.day) && scanner.literal(' ') &&
                          scanner.number(2, stamp.hour) && scanner.literal(':') &&
                          scanner.number(2, stamp.minute) && scanner.literal(':') &&
                          scanner.number(2, stamp.second));
    stamp.isRepresentable = scanner.isRepresentable;
    return stamp;
}

struct State {
    std::map<std::string, std::string> files;  ///< by path
    std::set<std::string> folders;
    std::string logFile, out, err;

    bool operator==(const State& other) const {
        return files == other.files && folders == other.folders && logFile == other.logFile &&
               out == other.out && err == other.err;
    }
};

std::ostream& operator<<(std::ostream& out, const State& state) {
    for (const auto& [path, content] : state.files)
        out << "\n  " << path << ": " << kxfuzz::shown(content);
    for (const std::string& folder : state.folders) out << "\n  " << folder << "/";
    return out << "\n  log " << state.logFile << ", output " << kxfuzz::shown(state.out)
               << ", errors " << kxfuzz::shown(state.err) << "\n";
}

bool isStale(const Stamp& stamp, std::time_t now) {
    std::tm today{};
    localtime_r(&now, &today);
    return stamp.year != today.tm_year + 1900 || stamp.month != today.tm_mon + 1 ||
           stamp.day != today.tm_mday;
}

std::string asideName(const std::string& path, const Stamp& stamp) {
    char text[100];
    std::snprintf(text, sizeof text, "%d%02d%02d-%02d%02d%02d", stamp.year, stamp.month, stamp.day,
                  stamp.hour, stamp.minute, stamp.second);
    return path + text;
}

void openLog(State& state, const Settings& settings, const std::string& path, std::time_t now) {
    const bool isCsv = settings.format == 3;
    const auto old = state.files.find(path);
    if (old != state.files.end()) {
        const Stamp stamp = firstStamp(old->second, isCsv);
        const std::string aside = asideName(path, stamp);
        if (isStale(stamp, now)) {
            if (state.folders.count(aside) != 0) {
                state.err += "kxLog::setLogFile: couldn't rename old log file!\n";
            } else {
                state.files[aside] = old->second;
                state.files.erase(path);
            }
        }
    }
    const bool isFolder = state.folders.count(path) != 0;
    if (isCsv && !isFolder && state.files.count(path) == 0)
        state.files[path] = "Date;Time;Type of Message;Message Number;Description\n";
    state.out += "Setting log file to '" + path + "'.\n";
    if (isFolder) {
        state.logFile = "";
        state.err += "\033[31mCouldn't create log file '" + path + "'!\n\033[0m";
        return;
    }
    state.logFile = path;
    const std::string hyphens(52, '-'), font = "<font color=\"#b40000\">", end = "</font><br>";
    state.files[path] +=
        settings.format != 2
            ? ""
            : "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head><br>"
              "<p align=\"middle\">" +
                  font + hyphens + end + font + "Log file from " +
                  formatted("%d.%m.%Y %H:%M:%S", now) + end + font + hyphens + end + "</p>\n";
}

std::string line(const Level& level, const Settings& settings, const std::string& text,
                 std::time_t now) {
    const std::string number = std::to_string(level.number + settings.number), word = level.word;
    std::string result;
    if (settings.format == 2)
        return std::string("<span style=\"color:#") + level.color + ";\">" +
               kxLog::convertToHtml(text) + "</span><br>\n";
    if (settings.format == 1) {
        if (settings.hasStamps)
            result = formatted("%Y-%m-%d %H:%M:%S ", now) + word + " " + number + " ";
    } else if (settings.format == 3) {
        if (settings.hasStamps)
            result = formatted("%d.%m.%Y;%H:%M:%S;", now) + word + ";" + number + ";";
    } else {
        return "";
    }
    result += text;
    if (result.empty() || result[result.size() - 1] != '\n') result += '\n';
    return result;
}

void logMessage(State& state, const Level& level, const Settings& settings, const std::string& text,
                std::time_t now) {
    (level.isError ? state.err : state.out) += level.before + text + "\n" + level.after;
    if (state.logFile.empty()) return;
    if (settings.format == 3 && state.files.count(state.logFile) != 0 &&
        isStale(firstStamp(state.files[state.logFile], true), now)) {
        state.out += "create new log file, new day started!\n";
        openLog(state, settings, std::string(state.logFile), now);
    }
    state.files[state.logFile] += line(level, settings, text, now);
}

// --- The library ---------------------------------------------------------------------------------

// Sets a zone where it is noon when the program starts, so that runs of less than twelve hours do
// not meet midnight. (A run that does spoils only one input.)
bool setNoon() {
    constexpr long day = 24 * 3600;
    const long west = std::time(nullptr) % day - day / 2;
    char zone[32];
    std::snprintf(zone, sizeof zone, "KXF%c%02ld:%02ld:%02ld", west < 0 ? '-' : '+',
                  std::labs(west) / 3600, std::labs(west) / 60 % 60, std::labs(west) % 60);
    setenv("TZ", zone, 1);
    tzset();
    return true;
}

State lookAround(const std::string& folder) {
    State state;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_directory())
            state.folders.insert(entry.path());
        else
            state.files[entry.path()] = kxfuzz::readFile(entry.path());
    }
    state.logFile = kxLog::getLogFile() ? kxLog::getLogFile() : "";
    state.out = kxfuzz::takeOut();
    state.err = kxfuzz::takeErr();
    return state;
}

// Runs `act` and compares the result with that of `model` at some moment meanwhile.
template <class Act, class Model>
void compare(const char* what, State& state, const std::string& folder, const Act& act,
             const Model& model) {
    const std::time_t start = std::time(nullptr);
    act();
    const State got = lookAround(folder);
    State expected;
    // time() may lag behind a finer clock by a tick, so one second later still counts as now.
    for (std::time_t now = start; now <= std::time(nullptr) + 1; ++now) {
        expected = state;
        expected.out = expected.err = "";
        model(expected, now);
        if (got == expected) break;
    }
    requireEqual(what, got, expected);
    state = expected;
}

// Stands in for what an input cannot contain: stamps that depend on today's date, and long texts.
std::string unpacked(const std::string& text) {
    const std::time_t now = std::time(nullptr), yesterday = now - 24L * 3600;
    const std::array<std::string, 6> words = {
        "",
        formatted("%Y-%m-%d", now),
        formatted("%d.%m.%Y", now),
        formatted("%Y-%m-%d", yesterday),
        "Date;Time;Type of Message;Message Number;Description\n",
        std::string(250, 'x'),
    };
    std::string result;
    for (const char c : text) {
        if (c >= 1 && static_cast<std::size_t>(c) < words.size())
            result += words[static_cast<std::size_t>(c)];
        else
            result += c;
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::holdConsole();
    static const bool isNoon = setNoon();
    static_cast<void>(isNoon);
    kxfuzz::Input input(data, size);
    Settings settings{};
    settings.format = static_cast<int>(input.upTo(3));
    settings.hasStamps = input.byte() < 192;
    settings.number = static_cast<int>(input.byte());
    const std::string folder = kxfuzz::privateFolder() + "/log", path = folder + "/app.log";
    const std::uint32_t kind = input.upTo(7), aside = input.upTo(7);
    const std::string content = unpacked(input.text());
    const Stamp stamp = firstStamp(content, settings.format == 3);
    const std::string asidePath = asideName(path, stamp);

    std::filesystem::create_directory(folder);
    if (kind == 0)
        std::filesystem::create_directory(path);
    else if (kind > 1)
        kxfuzz::writeFile(path, content);
    if (aside == 0)
        std::filesystem::create_directory(asidePath);
    else if (aside == 1)
        kxfuzz::writeFile(asidePath, "moved aside earlier");
    kxLog::_log_file.clear();
    kxLog::_nr = settings.number;
    kxLog::setLogFormat(settings.format);
    kxLog::_add_time_stamp = settings.hasStamps;

    State state = lookAround(folder);
    if (stamp.isRepresentable) {
        compare(
            "after setLogFile", state, folder, [&] { kxLog::setLogFile(path.c_str()); },
            [&](State& expected, std::time_t now) { openLog(expected, settings, path, now); });
        for (int messages = 0; messages < 4 && !input.empty(); ++messages) {
            const auto log = state.files.find(state.logFile);
            // If the header has no end, the first message becomes the stamp that the next one
            // reads.
            if (settings.format == 3 && log != state.files.end() &&
                !firstStamp(log->second, true).isRepresentable)
                break;
            const Level& level = levels[input.upTo(2)];
            const std::string packed = input.text(), text = unpacked(packed).c_str();
            compare(
                "after a message", state, folder, [&] { level.log(text.c_str(), 6, false); },
                [&](State& expected, std::time_t now) {
                    logMessage(expected, level, settings, text, now);
                });
        }
    } else {  // whatever scanf makes of it is fine, provided that nothing else goes wrong
        kxLog::setLogFile(path.c_str());
    }
    std::filesystem::remove_all(folder);
    return 0;
}
