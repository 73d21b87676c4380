// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxLog.h"

#include <pthread.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <new>
#include <optional>
#include <ostream>
#include <string_view>
#include <thread>
#include <type_traits>

#include "detail/log/end.h"
#include "detail/log/file.h"
#include "detail/log/rotation.h"
#include "detail/log/stamp.h"
#include "detail/text/ascii.h"
#include "kxFile.h"
#include "kxPlatform.h"

int kxLog::_log_format = 2;
bool kxLog::_add_time_stamp = false;
int kxLog::_nr = 0;
std::string kxLog::_last_error;
void (*kxLog::_info_fp)(const char*) = nullptr;
void (*kxLog::_warning_fp)(const char*) = nullptr;
void (*kxLog::_error_fp)(const char*) = nullptr;
std::string* kxLog::_output_buffer = nullptr;
std::streambuf* kxLog::_output_streambuf = nullptr;
std::string kxLog::_log_file;

namespace {

// --- Mutexes -------------------------------------------------------------------------------------

// A static object that static destruction does not touch, since threads use it until the process
// ends.
template <class T, bool = std::is_trivially_destructible_v<T>>
struct Lasting {
    T value;
};
template <class T>
struct Lasting<T, false> {  // libc++'s mutex
    constexpr Lasting() : value() {}
    ~Lasting() {}  // NOLINT(modernize-use-equals-default): a defaulted one would be deleted
    Lasting(const Lasting&) = delete;
    Lasting& operator=(const Lasting&) = delete;
    union {
        T value;
    };
};

void renew(Lasting<std::mutex>& mutex) { new (&mutex.value) std::mutex; }

// Held from the first to the last output of a message. It knows which thread holds it.
class OutputMutex {
public:
    void lock() {
        _mutex.value.lock();
        hold();
    }
    /// Waits up to a second, since a callback that hangs holds the mutex for ever.
    bool lockInTime() {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(1);
        while (!_mutex.value.try_lock()) {
            if (std::chrono::steady_clock::now() > end) return false;
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
        hold();
        return true;
    }
    void unlock() {
        _holder.store({}, std::memory_order_relaxed);
        _mutex.value.unlock();
    }

    bool isMine() const {
        return pthread_equal(_holder.load(std::memory_order_relaxed), pthread_self()) != 0;
    }

    /// For a child process, which has only the thread that forked.
    void renewUnlessMine() {
        if (isMine()) return;
        renew(_mutex);
        _holder.store({}, std::memory_order_relaxed);
    }

private:
    void hold() { _holder.store(pthread_self(), std::memory_order_relaxed); }

    Lasting<std::mutex> _mutex;
    std::atomic<pthread_t> _holder{};
} _mutex;
const char* _textOnItsWay = nullptr;  // used only by the holder of the mutex

enum Format { textFormat = 1, htmlFormat = 2, csvFormat = 3 };
enum Flags { callCallback = 2, writeLines = 4 };

struct Level {
    int baseNumber;
    char typeWord[6];  // arrays, not pointers, so that the loader has nothing to relocate
    int consoleType, alternateConsoleType;
    char colour[7], alternateColour[7];  // of HTML lines
    char before[6], after[5];            // around lines to the stream
};

constexpr Level infoLevel = {100, "INFO", 0, 4, "008c00", "008c8c", "", ""};
constexpr Level warningLevel = {200, "WARN", 1, 5, "b4b400", "b4b48c", "\033[33m", "\033[0m"};
constexpr Level errorLevel = {300, "ERROR", 2, 6, "b40000", "b4008c", "\033[31m", "\033[0m"};

// A numbered call of any thread writes the public integer, so every use here is atomic.
void setNumber(int nr) { __atomic_store_n(&kxLog::_nr, nr, __ATOMIC_RELAXED); }

std::string numberText(int base) {
    const int nr = __atomic_load_n(&kxLog::_nr, __ATOMIC_RELAXED);
    // Added as unsigned numbers, since an application may have chosen a number near the limit.
    const unsigned sum = static_cast<unsigned>(base) + static_cast<unsigned>(nr);
    return std::to_string(static_cast<int>(sum));
}

constexpr std::size_t maxTextLength = 2047;  // of a formatted text

// The text buffer of one formatting entry point, which has its own mutex.
class EntryPoint {
public:
    using Output = void (*)(const char* text, int flags, bool alternate);

    KXUTILS_PRINTF(3, 0)
    void log(Output output, const char* format, std::va_list arguments) {
        const std::lock_guard<std::mutex> guard(_bufferMutex.value);
        // Even if formatting fails, the last character stays 0.
        std::vsnprintf(_text, sizeof _text, format, arguments);
        output(_text, callCallback | writeLines, /*alternate=*/false);
    }

    /// For a child process. Its only thread may hold the mutex, if a callback has forked; then it
    /// is kept.
    void renewUnlessMine() {
        if (!_mutex.isMine() || _textOnItsWay != _text) renew(_bufferMutex);
    }

private:
    Lasting<std::mutex> _bufferMutex;
    char _text[maxTextLength + 1] = {};
};

EntryPoint infoEntry, infoNumberEntry;
EntryPoint warningEntry, warningNumberEntry;
EntryPoint errorEntry, errorNumberEntry;

// --- Child processes -----------------------------------------------------------------------------

// The mutex of the output is held while a process forks, so that the child finds no half-written
// message in the console's buffers or the strings. The text buffers need no such care: the child
// has no use for their content, and their mutexes start anew there.

bool _isHeldForFork = false;  // used only by the holder of the mutex

void beforeFork() {
    // A callback that forks holds the mutex already, and in the child it does so until it returns.
    if (!_mutex.isMine() && _mutex.lockInTime()) _isHeldForFork = true;
}

void afterFork() {
    if (!_mutex.isMine() || !_isHeldForFork) return;
    _isHeldForFork = false;
    _mutex.unlock();
}

void afterForkInChild() {
    afterFork();
    _mutex.renewUnlessMine();  // if a thread with a hanging callback held it
    infoEntry.renewUnlessMine(), infoNumberEntry.renewUnlessMine();
    warningEntry.renewUnlessMine(), warningNumberEntry.renewUnlessMine();
    errorEntry.renewUnlessMine(), errorNumberEntry.renewUnlessMine();
}

// If there is no memory for the handlers, a child may hang, and there is nobody to tell. The C
// library drops the handlers when the library is unloaded.
const int _forkHandlers = pthread_atfork(beforeFork, afterFork, afterForkInChild);

// --- Strings -------------------------------------------------------------------------------------

// Static destruction destroys the strings while threads may still log. From then on the texts are
// kept here, where nothing is destroyed.
struct Kept {
    char logFile[PATH_MAX];  // the system opens no longer path
    char lastError[maxTextLength + 1];
    char appName[maxTextLength + 1];
};
Kept _kept;
std::atomic<bool> _isKept{false};

// Destroyed before the strings.
const kx::detail::LogEnd _end;

template <std::size_t size>
void keep(char (&kept)[size], std::string_view text) {
    kept[text.copy(kept, size - 1)] = '\0';
}
void keepLogFile(std::string_view path) {
    // Part of a path would be a different path.
    keep(_kept.logFile, path.size() < sizeof _kept.logFile ? path : "");
}

const char* lastError() { return _isKept ? _kept.lastError : kxLog::_last_error.c_str(); }
void setLastError(std::string_view text) {
    if (_isKept)
        keep(_kept.lastError, text);
    else
        kxLog::_last_error = text;
}

// "" if there is none.
const char* logFile() { return _isKept ? _kept.logFile : kxLog::_log_file.c_str(); }
bool hasLogFile() { return *logFile() != '\0'; }
void storeLogFile(const std::string& path) {
    if (_isKept)
        keepLogFile(path);
    else
        kxLog::_log_file = path;
}

// --- Lines ---------------------------------------------------------------------------------------

// A text composed on the stack, which has room for formatted messages; a longer one moves to the
// heap.
class Composition {
public:
    Composition& operator<<(std::string_view part) {
        if (part.size() <= _room) {
            part.copy(_short + _size, part.size());
            _size += part.size();
            _room -= part.size();
        } else {
            appendLong(part);
        }
        return *this;
    }
    Composition& operator<<(char c) { return *this << std::string_view(&c, 1); }

    std::string_view view() const {
        return _long.empty() ? std::string_view(_short, _size) : std::string_view(_long);
    }

private:
    void appendLong(std::string_view part) {
        if (_long.empty()) _long.assign(_short, _size);
        _long.append(part);
        _room = 0;
    }

    char _short[maxTextLength + 96];  // the text and what stands around it
    std::size_t _size = 0, _room = sizeof _short;
    std::string _long;  // empty, or the whole text
};

// The moment of a message, which is not looked up before it is needed.
class Moment {
public:
    const kx::detail::Stamp& stamp() {
        if (_stamp.month == 0) _stamp = kx::detail::stampNow();
        return _stamp;
    }

private:
    kx::detail::Stamp _stamp;
};

// Writes the start of a text or CSV line.
void addExtra(Composition& line, bool isCsv, Moment& now, std::string_view type, int number) {
    char stamp[kx::detail::maxStampSize];
    char* const end = isCsv ? kx::detail::putCsvStamp(now.stamp(), stamp)
                            : kx::detail::putTextStamp(now.stamp(), stamp);
    const char separator = isCsv ? ';' : ' ';
    line << std::string_view(stamp, static_cast<std::size_t>(end - stamp)) << type << separator
         << numberText(number) << separator;
}

void replaceByExtra(std::string& line, bool isCsv, const std::string& type, int number) {
    if (!kxLog::_add_time_stamp) return;
    Composition extra;
    Moment now;
    addExtra(extra, isCsv, now, type, number);
    line = extra.view();
}

void makeLine(Composition& line, Moment& now, const Level& level, std::string_view text,
              bool alternate) {
    switch (kxLog::_log_format) {
        case textFormat:
        case csvFormat:
            if (kxLog::_add_time_stamp)
                addExtra(line, kxLog::_log_format == csvFormat, now, level.typeWord,
                         level.baseNumber);
            line << text;
            if (line.view().empty() || line.view().back() != '\n') line << '\n';
            break;
        case htmlFormat:
            line << "<span style=\"color:#" << (alternate ? level.alternateColour : level.colour)
                 << ";\">" << kxLog::convertToHtml(std::string(text)) << "</span><br>\n";
            break;
        default:
            break;
    }
}

// The newline is inside the colour. Each message is one call, since other programs share the
// console.
void print(int type, std::string_view text) {
    static constexpr char colours[] = "?31?465";  // digits of the terminal's colours by type
    if (type < 0 || type == 3 || type > 6) {
        std::fprintf(stderr, "kxLog::colorOutput : unknown tpye (%d)!\n", type);
        return;
    }
    Composition line;
    if (type == 0)
        line << text << '\n';
    else
        line << "\033[3" << colours[type] << 'm' << text << "\n\033[0m";
    const bool isError = type == 2 || type == 6;
    std::fwrite(line.view().data(), 1, line.view().size(), isError ? stderr : stdout);
}

// Where the log file of that name really is.
std::string logFilePath(const std::string& name) {
    const char* const appName = _isKept ? _kept.appName : kxPlatform::getAppName();
    const std::string variable = kx::detail::toUpper(appName) + "_LOG_DIR";
    const char* const directory = std::getenv(variable.c_str());
    if (!directory || !*directory) return name;
    kxFile::createPath(directory);
    return std::string(directory) + '/' + kxFile::getFileName(name);
}

// The path of a log file, if it could not be opened. It is reported once the log's mutex is free,
// since the report is itself a message.
using Unopened = std::optional<std::string>;

// Opens the log file, and first moves an old one aside.
Unopened openLogFile(const std::string& name, Moment& now) {
    const std::string path = logFilePath(name);
    const bool isCsv = kxLog::_log_format == csvFormat;
    const std::string stamp = kx::detail::staleStamp(path.c_str(), isCsv, now.stamp());
    if (!stamp.empty() && std::rename(path.c_str(), (path + stamp).c_str()) != 0)
        std::fputs("kxLog::setLogFile: couldn't rename old log file!\n", stderr);
    if (isCsv) kxLog::writeCSVHeader(path.c_str());

    std::fprintf(stdout, "Setting log file to '%s'.\n", path.c_str());
    const bool isHtml = kxLog::_log_format == htmlFormat;
    const bool isOpen =
        kx::detail::appendToFile(path.c_str(), isHtml ? kx::detail::htmlHead() : "");
    storeLogFile(isOpen ? path : "");
    return isOpen ? Unopened() : path;
}

// Writes a line, to a new file if the day has changed.
Unopened writeLine(std::string_view line, Moment& now) {
    if (!hasLogFile()) return {};
    if (kxLog::_log_format == csvFormat &&
        !kx::detail::staleStamp(logFile(), /*isCsv=*/true, now.stamp()).empty()) {
        std::puts("create new log file, new day started!");
        const std::string name = logFile();  // a copy, since opening replaces it
        if (Unopened unopened = openLogFile(name, now)) return unopened;
    }
    kx::detail::appendToFile(logFile(), line);
    return {};
}

// If memory runs out for a step of the output, that step is left out, because logging never fails.
// Returns false if so.
template <typename Step>
bool attempt(const Step& step) {
    try {
        step();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Composes its own text, cut as the entry point `error` would cut it, because that entry point's
// buffer may hold the message that is being written.
void reportUnopened(const std::string& path) {
    const std::string text = ("Couldn't create log file '" + path + "'!").substr(0, maxTextLength);
    if (!_mutex.isMine()) {
        kxLog::errorI(text.c_str(), callCallback | writeLines, /*alternate=*/false);
        return;
    }
    // A callback has chosen the file, and the output is still busy with the callback's message.
    setLastError(text);
    print(errorLevel.consoleType, text);
}

using Callback = void (*)(const char*);

// Brings a message to all its destinations and holds the log's mutex from the first to the last.
Unopened deliver(const Level& level, const Callback& callback, const char* text, int flags,
                 bool alternate) {
    const std::lock_guard<OutputMutex> guard(_mutex);
    _textOnItsWay = text;
    const std::string_view view = text;
    if (&level == &errorLevel) attempt([&] { setLastError(view); });
    if ((flags & callCallback) != 0 && callback) callback(text);
    attempt([&] { print(alternate ? level.alternateConsoleType : level.consoleType, view); });

    if ((flags & writeLines) == 0) return {};
    std::string* const buffer = kxLog::_output_buffer;
    std::streambuf* const streambuf = kxLog::_output_streambuf;
    if (!buffer && !streambuf && !hasLogFile()) return {};
    Composition line;
    Moment now;
    if (!attempt([&] { makeLine(line, now, level, view, alternate); })) return {};
    if (buffer) attempt([&] { *buffer += line.view(); });
    if (streambuf)
        attempt([&] { std::ostream(streambuf) << level.before << line.view() << level.after; });
    Unopened unopened;
    attempt([&] { unopened = writeLine(line.view(), now); });
    return unopened;
}

void output(const Level& level, const Callback& callback, const char* text, int flags,
            bool alternate) {
    const Unopened unopened = deliver(level, callback, text, flags, alternate);
    if (unopened) attempt([&] { reportUnopened(*unopened); });
}

}  // namespace

void kx::detail::moveLogOffStatics() noexcept {
    if (_isKept) return;
    const bool isLocked = !_mutex.isMine() && _mutex.lockInTime();  // a callback may call exit()
    keepLogFile(kxLog::_log_file);
    keep(_kept.lastError, kxLog::_last_error);
    keep(_kept.appName, kxPlatform::getAppName());
    _isKept = true;
    if (isLocked) _mutex.unlock();
}

// --- Messages ------------------------------------------------------------------------------------

void kxLog::info(const char* format, ...) {
    if (!format) return;
    std::va_list arguments;
    va_start(arguments, format);
    infoEntry.log(infoI, format, arguments);
    va_end(arguments);
}

void kxLog::warning(const char* format, ...) {
    if (!format) return;
    std::va_list arguments;
    va_start(arguments, format);
    warningEntry.log(warningI, format, arguments);
    va_end(arguments);
}

void kxLog::error(const char* format, ...) {
    if (!format) return;
    std::va_list arguments;
    va_start(arguments, format);
    errorEntry.log(errorI, format, arguments);
    va_end(arguments);
}

void kxLog::info(int nr, const char* format, ...) {
    if (!format) return;
    setNumber(nr);
    std::va_list arguments;
    va_start(arguments, format);
    infoNumberEntry.log(infoI, format, arguments);
    va_end(arguments);
}

void kxLog::warning(int nr, const char* format, ...) {
    if (!format) return;
    setNumber(nr);
    std::va_list arguments;
    va_start(arguments, format);
    warningNumberEntry.log(warningI, format, arguments);
    va_end(arguments);
}

void kxLog::error(int nr, const char* format, ...) {
    if (!format) return;
    setNumber(nr);
    std::va_list arguments;
    va_start(arguments, format);
    errorNumberEntry.log(errorI, format, arguments);
    va_end(arguments);
}

void kxLog::infoNR(const char* /*format*/, ...) {}
void kxLog::warningNR(const char* /*format*/, ...) {}
void kxLog::errorNR(const char* /*format*/, ...) {}

void kxLog::infoIPython(const char* text) { infoI(text, callCallback | writeLines, false); }
void kxLog::warningIPython(const char* text) { warningI(text, callCallback | writeLines, false); }
void kxLog::errorIPython(const char* text) { errorI(text, callCallback | writeLines, false); }

void kxLog::infoIPython(int nr, const char* text) {
    setNumber(nr);
    infoIPython(text);
}

void kxLog::warningIPython(int nr, const char* text) {
    setNumber(nr);
    warningIPython(text);
}

void kxLog::errorIPython(int nr, const char* text) {
    setNumber(nr);
    errorIPython(text);
}

void kxLog::infoI(const char* text, int flags, bool alternate) {
    output(infoLevel, _info_fp, text, flags, alternate);
}

void kxLog::warningI(const char* text, int flags, bool alternate) {
    output(warningLevel, _warning_fp, text, flags, alternate);
}

void kxLog::errorI(const char* text, int flags, bool alternate) {
    output(errorLevel, _error_fp, text, flags, alternate);
}

void kxLog::colorOutput(int type, const char* text) { print(type, text); }

// --- Last error, callbacks, buffer and stream ----------------------------------------------------

const char* kxLog::getLastError() { return lastError(); }
void kxLog::clearLastError() { setLastError(""); }

void kxLog::setInfoCB(void (*callback)(const char*)) { _info_fp = callback; }
void kxLog::setWarningCB(void (*callback)(const char*)) { _warning_fp = callback; }
void kxLog::setErrorCB(void (*callback)(const char*)) { _error_fp = callback; }

void kxLog::enableOutputBuffer(std::string& buffer) { _output_buffer = &buffer; }
void kxLog::disableOutputBuffer() { _output_buffer = nullptr; }

void kxLog::enableOutputStream(void* streambuf) {
    _output_streambuf = static_cast<std::streambuf*>(streambuf);
}
void kxLog::disableOutputStream() { _output_streambuf = nullptr; }

// --- Lines and log file --------------------------------------------------------------------------

void kxLog::setLogFormat(int format) {
    _log_format = format;
    if (format == textFormat || format == csvFormat) _add_time_stamp = true;
}

void kxLog::setLogFile(const char* name) {
    if (!name) return;
    Moment now;
    // Copied first, since the name may be the stored one, which opening replaces.
    if (const Unopened unopened = openLogFile(std::string(name), now)) reportUnopened(*unopened);
}

const char* kxLog::getLogFile() { return hasLogFile() ? logFile() : nullptr; }

void kxLog::writeCSVHeader(const char* name) {
    const std::string path = name ? name : logFile();
    if (kxFile::exists(path, false, false)) return;
    // Appended, so that a file that could not be looked at keeps its content.
    if (!kxFile::append(path, kx::detail::csvHead))
        std::fprintf(stderr, "kxLog::writeCSVHeader: couldn't write log file '%s'!\n",
                     path.c_str());
}

std::string kxLog::convertToHtml(const std::string& text) {
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (c == '"' || c == '&' || c == '<' || c == '>')
            result.append("&#").append(std::to_string(static_cast<int>(c))).append(";");
        else
            result += c;
    }
    if (!result.empty() && result.back() == '\n') result.pop_back();
    return result;
}

void kxLog::addToLogFile(const std::string& line) {
    Moment now;
    if (const Unopened unopened = writeLine(line, now)) reportUnopened(*unopened);
}

void kxLog::addExtraInfo(std::string& line, const std::string& type, int number) {
    replaceByExtra(line, /*isCsv=*/false, type, number);
}

void kxLog::addExtraInfoCSV(std::string& line, const std::string& type, int number) {
    replaceByExtra(line, /*isCsv=*/true, type, number);
}
