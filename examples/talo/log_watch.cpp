// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "log_watch.h"

#include <sys/stat.h>

#include <string_view>

#include "kxFile.h"
#include "kxLog.h"

namespace {

// Returns 0 if there is no log file, or if its number cannot be found out.
ino_t logFileNumber() {
    struct stat info {};
    const char* const path = kxLog::getLogFile();
    return path && stat(path, &info) == 0 ? info.st_ino : 0;
}

}  // namespace

LogWatch::LogWatch() { kxLog::enableOutputBuffer(_lines); }

LogWatch::~LogWatch() { kxLog::disableOutputBuffer(); }

void LogWatch::begin() { _file = logFileNumber(); }

bool LogWatch::isComplete() const {
    if (!kxLog::getLogFile()) return true;
    const ino_t file = logFileNumber();
    std::string content;
    if (file == 0 || !kxFile::read(kxLog::getLogFile(), content)) return false;
    if (_file != 0 && file != _file) return true;
    // The header of the format is not a line.
    const std::string_view head = kxLog::_log_format == 2   ? "<head>"
                                  : kxLog::_log_format == 3 ? "Date;"
                                                            : "";
    if (content.compare(0, head.size(), head) != 0) return false;
    // They are looked for in order, but other lines may stand between them.
    std::size_t at = 0;
    for (std::size_t begin = 0, end = 0; begin < _lines.size(); begin = end) {
        end = _lines.find('\n', begin) + 1;
        const std::string line = _lines.substr(begin, end - begin);
        const std::size_t found = content.find(line, at);
        if (found == std::string::npos) return false;
        at = found + line.size();
    }
    return true;
}
