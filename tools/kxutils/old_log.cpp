// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "old_log.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "failure.h"
#include "kxFile.h"
#include "streams.h"

namespace {

constexpr std::string_view csvHeader = "Date;Time;Type of Message;Message Number;Description\n";
constexpr std::string_view htmlHead =
    "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head>"
    "<br><p align=\"middle\">";

// What the library adds to the name of a file without a date when it moves the file, replacing what
// is there.
constexpr const char* undated = "00000-000000";

bool startsWith(std::string_view text, std::string_view start) {
    return text.substr(0, start.size()) == start;
}

// In the pattern a 0 stands for any digit.
bool startsLike(std::string_view text, std::string_view pattern) {
    return text.size() >= pattern.size() &&
           std::equal(pattern.begin(), pattern.end(), text.begin(), [](char expected, char c) {
               return expected == '0' ? c >= '0' && c <= '9' : c == expected;
           });
}

bool startsAsLog(std::string_view text, LogFormat format) {
    if (text.empty()) return true;
    switch (format) {
        case LogFormat::text:
            return startsLike(text, "0000-00-00 00:00:00 ");
        case LogFormat::html:
            return startsWith(text, htmlHead);
        case LogFormat::csv:
            break;
    }
    if (!startsWith(text, csvHeader)) return false;
    text.remove_prefix(csvHeader.size());
    return text.empty() || startsLike(text, "00.00.0000;00:00:00;");
}

// The size of a regular file, following links; no value for anything else.
std::optional<std::uint64_t> regularSize(const std::string& path) {
    struct stat info {};
    if (stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return {};
    return static_cast<std::uint64_t>(info.st_size);
}

// True if the library gives the undated name to the file at `path`, or to the file that it makes
// there.
bool becomesUndated(const std::string& path, LogFormat format) {
    const std::optional<std::uint64_t> size = regularSize(path);
    if (format == LogFormat::csv) return size.value_or(0) <= csvHeader.size();
    return size && (format == LogFormat::html || *size == 0);
}

// True for a file that is worth no more than the one that takes its name.
bool isReplaceable(const std::string& path, LogFormat format) {
    const std::optional<std::uint64_t> size = regularSize(path);
    if (!size) return true;
    return isLog(path, format) && (format == LogFormat::html || *size <= headSize(format));
}

}  // namespace

std::size_t headSize(LogFormat format) { return format == LogFormat::csv ? csvHeader.size() : 0; }

std::string logPath(const std::string& name) {
    const char* const directory = std::getenv("KXUTILS_LOG_DIR");
    if (!directory || !*directory) return name;
    return std::string(directory) + '/' + kxFile::getFileName(name);
}

bool isLog(const std::string& path, LogFormat format) {
    std::string start(256, '\0');
    forFile('\'' + path + '\'', [&] {
        Input input(path);
        start.resize(input.fill(start.data(), start.size()));
    });
    return startsAsLog(start, format);
}

std::vector<std::string> foreignFiles(const std::string& path, LogFormat format) {
    std::vector<std::string> foreign;
    const bool isForeign = regularSize(path) && !isLog(path, format);
    if (isForeign) foreign.push_back(path);
    const std::string target = path + undated;
    const bool becomesNew = isForeign && format == LogFormat::csv;
    if ((becomesNew || (!isForeign && becomesUndated(path, format))) &&
        !isReplaceable(target, format))
        foreign.push_back(target);
    return foreign;
}

std::string moveAside(const std::string& path) {
    for (int number = 1;; ++number) {
        std::string name = path + ".~" + std::to_string(number) + '~';
        // An empty file of ours reserves the name, so that renaming replaces nothing else.
        const Descriptor reserved(
            open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
        if (reserved.get() < 0 && errno == EEXIST) continue;
        if (reserved.get() >= 0 && std::rename(path.c_str(), name.c_str()) == 0) return name;
        const Failure failure(Status::unwritable,
                              "cannot move '" + path + "' aside: " + std::strerror(errno));
        if (reserved.get() >= 0) unlink(name.c_str());
        throw failure;
    }
}
