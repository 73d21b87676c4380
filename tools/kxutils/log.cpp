// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils log: writes lines of standard input through the library's log.
#include <sys/stat.h>

#include <array>
#include <map>
#include <memory>

#include "kxLog.h"
#include "kxPlatform.h"
#include "old_log.h"
#include "session.h"

namespace {

using Level = void (*)(const char* text, int flags, bool alternate);

struct Options {
    std::string file;
    int format = 1;
    bool isForced = false;
    std::string level;  // if "", the first word of each line decides
};

const std::map<std::string, Level> levels = {
    {"info", kxLog::infoI}, {"warning", kxLog::warningI}, {"error", kxLog::errorI}};

// The level word at the start of a line. The word, and the colon and the blank that may follow it,
// are removed from the line.
Level levelOf(std::string_view& line) {
    constexpr std::array<std::pair<std::string_view, Level>, 4> words = {
        {{"INFO", kxLog::infoI},
         {"WARN", kxLog::warningI},
         {"WARNING", kxLog::warningI},
         {"ERROR", kxLog::errorI}}};
    const std::string_view first = line.substr(0, line.find_first_of(": "));
    for (const auto& [text, level] : words) {
        if (first != text) continue;
        line.remove_prefix(first.size());
        if (!line.empty() && line.front() == ':') line.remove_prefix(1);
        if (!line.empty() && line.front() == ' ') line.remove_prefix(1);
        return level;
    }
    return kxLog::infoI;
}

// Finds out what has become of the log file. kxLog silently loses a line, or a header, that it
// cannot write.
class LogFile {
public:
    explicit LogFile(const std::string& name) : _path(name) {
        struct stat info {};
        if (stat(_path.c_str(), &info) == 0) _before = info;
    }

    // The library has opened the file, or one that replaces it. Throws Failure unless it is a
    // regular file that starts as a log does.
    void expectHead(LogFormat format) {
        const struct stat after = look();
        if (!S_ISREG(after.st_mode))
            throw Failure(Status::unwritable, "a log file is a regular file");
        // Each opening adds a header in HTML.
        const bool hasGrown = format != LogFormat::html || after.st_size > sizeBefore(after);
        const bool hasHead =
            format == LogFormat::text || (after.st_size > 0 && isLog(_path, format));
        if (!hasGrown || !hasHead)
            throw Failure(Status::unwritable, "the head of the log was not written");
        _headSize = headSize(format);
        _before = after;
    }

    // Throws Failure unless a line of that many bytes has been added, perhaps to a new file started
    // by a change of day.
    void expectGrowth(std::size_t bytes) {
        const struct stat after = look();
        const off_t head = isBefore(after) ? 0 : static_cast<off_t>(_headSize);
        if (after.st_size < sizeBefore(after) + head + static_cast<off_t>(bytes))
            throw Failure(Status::unwritable, "a line was not written");
        _before = after;
    }

private:
    struct stat look() const {
        struct stat info {};
        if (stat(_path.c_str(), &info) != 0) throw systemFailure(Status::unwritable);
        return info;
    }
    bool isBefore(const struct stat& info) const {
        return _before && info.st_ino == _before->st_ino && info.st_dev == _before->st_dev;
    }
    off_t sizeBefore(const struct stat& info) const {
        return isBefore(info) ? _before->st_size : 0;
    }

    std::string _path;
    std::optional<struct stat> _before;
    std::size_t _headSize = 0;
};

// Appends to a string what the log writes.
struct OutputBuffer {
    explicit OutputBuffer(std::string& text) { kxLog::enableOutputBuffer(text); }
    ~OutputBuffer() { kxLog::disableOutputBuffer(); }
    OutputBuffer(const OutputBuffer&) = delete;
    OutputBuffer& operator=(const OutputBuffer&) = delete;
};

// The library would replace or extend a file that is no log.
void requireRoom(const std::string& path, LogFormat format, const Options& options,
                 Report& report) {
    const std::map<LogFormat, const char*> names = {
        {LogFormat::text, "a text"}, {LogFormat::html, "an HTML"}, {LogFormat::csv, "a CSV"}};
    for (const std::string& foreign : foreignFiles(path, format)) {
        if (!options.isForced)
            throw Failure(Status::unwritable, '\'' + foreign + "' is not " + names.at(format) +
                                                  " log to go on with; --force moves it aside");
        report.note('\'' + foreign + "' is now '" + moveAside(foreign) + '\'', {foreign});
    }
}

std::optional<LogFile> openLogFile(const Options& options, Report& report) {
    if (options.file.empty()) return {};
    const auto format = static_cast<LogFormat>(options.format);
    const std::string path = logPath(options.file);
    requireRoom(path, format, options, report);
    LogFile file(path);
    std::string said;
    {
        LibraryMessages messages;
        kxLog::setLogFile(options.file.c_str());
        said = messages.text();
    }
    if (!kxLog::getLogFile()) throw Failure(Status::unwritable, kxLog::getLastError());
    if (!said.empty()) report.note(said, {path});
    file.expectHead(format);
    return file;
}

void run(const Options& options, Session& session) {
    if (session.report.asJson && options.file.empty()) throw UsageError("--json needs --file");
    kxPlatform::setAppName("kxutils");  // names the variable KXUTILS_LOG_DIR
    kxLog::setLogFormat(options.format);
    session.report.add("-", [&](Item& item) {
        std::optional<LogFile> file = openLogFile(options, session.report);
        std::string logged;
        const OutputBuffer buffer(logged);
        const LibraryMessages console(LibraryMessages::dropped);
        Input input("-");
        LineReader lines(input);
        std::uint64_t count = 0;
        for (std::string line; lines.next(line); ++count) {
            std::string_view message = line;
            const Level level = options.level.empty() ? levelOf(message) : levels.at(options.level);
            // The message ends where `line` does, or at a zero byte before.
            level(message.data(), /*flags: buffer and file*/ 4, /*alternate=*/false);
            if (file)
                file->expectGrowth(logged.size());
            else
                session.out.write(logged);
            logged.clear();
            // The lines may come from a program that is still running.
            if (lines.mustRead()) session.out.flush();
        }
        item.fields["lines"] = count;
    });
}

}  // namespace

Work addLog(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments.number("--format", options->format, "Format of the lines")
        .named({{"text", 1}, {"html", 2}, {"csv", 3}});
    arguments
        .text(
            "--file", options->file,
            "Append to this log file, after moving one of another day aside; without it the lines "
            "go to standard output")
        .typeName("FILE");
    arguments.flag("--force", options->isForced,
                   "First move FILE aside, to FILE.~1~, if it is not a log of the format");
    arguments
        .text("--level", options->level,
              "Level of all lines; without it the word INFO, WARN, WARNING or ERROR at a line's "
              "start decides and is taken away (default: info)")
        .oneOf({"info", "warning", "error"});
    arguments.footer("Example:\n  echo 'WARN disk nearly full' | kxutils log --file build.log");
    return [options, &session] { run(*options, session); };
}
