// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The process-wide log.
#pragma once

#include <streambuf>
#include <string>

#include "kxExport.h"

/// Messages of three levels (info, warning and error), formatted as by printf, that go to many
/// destinations at once.
///
/// Every message goes to the console in the level's colour. It also goes to the level's callback,
/// to a string, to a stream buffer and to a log file, as far as these are set. All state is static.
/// Logging works from the moment the library is loaded and never reports a failure: if memory runs
/// out for a destination, or the system refuses the output, that destination misses the message. An
/// exception that a callback throws reaches the caller. Apart from that, only the functions under
/// "Lines and log file" and colorOutput() throw, and only std::bad_alloc.
///
///     kxLog::setLogFormat(1);              // text; before setLogFile
///     kxLog::setLogFile("/tmp/app.log");
///     kxLog::warning("%d faces dropped", n);
///
/// Texts reach the console, text lines and CSV lines unchanged, with any terminal escapes, ";" and
/// newlines that they hold. A spreadsheet takes a CSV field that starts with "=", "+", "-" or "@"
/// for a formula. Do not log untrusted text where that matters.
///
/// ## Threads
/// Any thread may log. One mutex is held from the first to the last output of a message (last
/// error, callback, console, buffer, stream, file), so two messages never mix, and all destinations
/// see them in one order. Each formatting entry point has a static text buffer with a mutex of its
/// own. That mutex is held from formatting to the end of the call and always taken before the
/// output's mutex, so threads that log through one entry point take turns. The mutexes are not
/// recursive: neither a callback nor the stream buffer that receives the lines may log through
/// kxLog.
///
/// Any thread may also call infoNR(), warningNR(), errorNR(), convertToHtml() and colorOutput().
/// Everything else (setters, format, file, last error, the public members) takes no lock and is for
/// the main thread only, while no other thread logs. The first message of a new day opens a new CSV
/// file on the thread that logs. That thread then reads the environment and the application's name,
/// and neither may change meanwhile.
///
/// ## The end of the process
/// Logging works until the process has ended, even in threads that still run and in destructors of
/// static objects. Once the library's own static objects are destroyed, the public strings below
/// may no longer be used; the functions may, since they have copies. The callbacks, the buffer and
/// the stream that you hand to the log must live as long as any thread logs: take them away, or
/// join your threads, before you destroy them. If another thread is in the middle of a message, the
/// end of the process waits for it, for a second at most. Before the library is unloaded (dlclose),
/// all threads must have left it.
///
/// ## Child processes
/// `fork` waits until no thread is in the middle of a message, for a second at most. The log works
/// in the child, whatever other threads were doing. A callback may fork. As always with fork, both
/// processes write the output that is still in the buffer of standard output, so end a child with
/// _exit(). Handlers of pthread_atfork that were registered before the library was loaded must not
/// log.
///
/// ## Signals
/// A signal handler must not log: it may have interrupted a message and would wait for that
/// message's mutex. SIGXFSZ (a file has reached the limit of its size) and SIGPIPE (nobody reads
/// standard output, or the pipe that a stream buffer writes to) are the business of the
/// application: they end it unless it ignores or handles them. A log file that is a pipe is the
/// exception: it raises no SIGPIPE.
class KXUTILS_API kxLog {
public:
    // --- Messages --------------------------------------------------------------------------------

    /// Logs a text, which is cut at 2047 characters and needs no newline at its end. A null format
    /// is ignored.
    static void info(const char* format, ...) KXUTILS_PRINTF(1, 2);
    /// As info(), in yellow.
    static void warning(const char* format, ...) KXUTILS_PRINTF(1, 2);
    static void error(const char* format, ...) KXUTILS_PRINTF(1, 2);  ///< As info(), in red.

    /// Logs a text with a number. Text and CSV lines show the sum of this number and the level's
    /// base number (100, 200 or 300). The number stays in force for all later messages, of every
    /// level, until the next numbered one. With a null format the call does nothing, and the
    /// earlier number stays.
    static void info(int nr, const char* format, ...) KXUTILS_PRINTF(2, 3);
    /// As info(), in yellow.
    static void warning(int nr, const char* format, ...) KXUTILS_PRINTF(2, 3);
    /// As info(), in red.
    static void error(int nr, const char* format, ...) KXUTILS_PRINTF(2, 3);

    /// The switched-off variant of info(): it takes the arguments of info() and, deliberately, does
    /// nothing.
    static void infoNR(const char* format, ...) KXUTILS_PRINTF(1, 2);
    /// As infoNR(), for warning().
    static void warningNR(const char* format, ...) KXUTILS_PRINTF(1, 2);
    /// As infoNR(), for error().
    static void errorNR(const char* format, ...) KXUTILS_PRINTF(1, 2);

    /// Logs a text as it is ("%" stays "%"), for script bindings. The text may have any length and
    /// must not be null. A number has the meaning described above.
    /// @{
    static void infoIPython(const char* text);
    static void warningIPython(const char* text);
    static void errorIPython(const char* text);
    static void infoIPython(int nr, const char* text);
    static void warningIPython(int nr, const char* text);
    static void errorIPython(int nr, const char* text);
    /// @}

    /// The output itself. The text may have any length and must not be null. `flags` is a sum of 2
    /// (call the level's callback) and 4 (write to buffer, stream and file); the text goes to the
    /// console in any case. `alternate` chooses the level's second colour.
    /// @{
    static void infoI(const char* text, int flags, bool alternate);
    static void warningI(const char* text, int flags, bool alternate);
    static void errorI(const char* text, int flags, bool alternate);
    /// @}

    /// Writes `text` (not null) and a newline to the console, without flushing. `type` is 0
    /// (plain), 1 (yellow), 4 (blue) or 5 (cyan) for standard output, and 2 (red) or 6 (magenta)
    /// for standard error. For any other type a complaint goes to standard error in place of the
    /// text. Takes no lock of the log.
    static void colorOutput(int type, const char* text);

    // --- Last error ------------------------------------------------------------------------------

    /// The text of the last error message; "" if there was none. Valid until the next error message
    /// or clearLastError().
    static const char* getLastError();
    static void clearLastError();  ///< Makes the text of the last error "".

    // --- Callbacks, buffer and stream ------------------------------------------------------------

    /// Sets the callback of the level info. It receives the bare text of each message, without
    /// stamp, colour or newline; the text is valid during the call only. It runs on the thread that
    /// logs, with the log's mutex held, and so must not log. Null removes the callback.
    static void setInfoCB(void (*callback)(const char*));
    /// As setInfoCB(), for warnings.
    static void setWarningCB(void (*callback)(const char*));
    static void setErrorCB(void (*callback)(const char*));  ///< As setInfoCB(), for errors.

    /// Appends every line to `buffer`. The buffer belongs to the caller and must live until
    /// disableOutputBuffer().
    static void enableOutputBuffer(std::string& buffer);
    static void disableOutputBuffer();  ///< Lines no longer go to the buffer.

    /// Writes every line to a stream buffer, warnings in yellow and errors in red. The stream
    /// buffer belongs to the caller and must live until disableOutputStream(). Pass a
    /// `std::streambuf*`: convert a pointer to a derived class first, since its type is lost on the
    /// way.
    static void enableOutputStream(void* streambuf);
    static void disableOutputStream();  ///< Lines no longer go to the stream.

    // --- Lines and log file ----------------------------------------------------------------------
    // The formats of the lines for buffer, stream and file:
    //
    //   1 text  2017-03-01 14:05:09 WARN 200 the text
    //   2 HTML  <span style="color:#b4b400;">the text, escaped</span><br>
    //   3 CSV   01.03.2017;14:05:09;WARN;200;the text
    //
    // Any other format makes the lines empty. Stamps show local time. The time zone (the variable
    // TZ, or else the system's zone) is read once, at its first use in the process; a later change
    // takes effect after tzset(). CSV has no quoting: a ";" in a message makes one more field. If
    // stamps are cleared in format 3, the day of the first line cannot be read, and the file is
    // moved aside at EVERY message.

    /// Chooses the format; 1 and 3 also turn stamps on. Call this before setLogFile(), so that the
    /// file's head matches the format.
    static void setLogFormat(int format);

    /// Opens the log file. For null the function does nothing.
    ///
    /// The environment variable named after the application, in capitals and followed by "_LOG_DIR"
    /// (TALO_LOG_DIR for "talo"), may hold a directory. The file then goes into that directory
    /// under its own name, and the directory is created if it is missing. A variable that is set
    /// but empty counts as not set.
    ///
    /// An existing file whose first message is not of today is moved aside, to its path followed
    /// directly by the stamp of that message ("app.log20170301-140509"). Deliberate: HTML, and text
    /// without stamps, cannot be dated, so such a file is always moved, to path + "00000-000000",
    /// and replaces an earlier file of that name. Only a regular file is moved. If the path is a
    /// link to a regular file, the link itself is moved, and the new file takes its place.
    ///
    /// Do not choose an existing file that is no log. It is moved aside as an undated file. In CSV
    /// format the first message then moves the new file, which holds only its header, to that name
    /// as well, and the content of your file is lost.
    ///
    /// A name that does not start with "/" is looked up anew for each line, in the working
    /// directory of that moment, so after a change of directory the log goes to another file.
    ///
    /// If the file cannot be opened, file logging is off, and an error is logged that says so. If a
    /// callback makes the call, that error goes to the console only, and becomes the last error. A
    /// pipe that nobody reads cannot be opened.
    static void setLogFile(const char* name);

    /// The path of the log file, valid until another file is chosen; null if there is none.
    static const char* getLogFile();

    /// Creates the file `name` with the CSV header line, unless the file exists; null stands for
    /// the log file. A failure is reported on standard error.
    static void writeCSVHeader(const char* name);

    /// A copy of `text` in which the characters " & < > have become character references (&#34; and
    /// so on). If the text ends with newlines, one of them is removed.
    static std::string convertToHtml(const std::string& text);

    /// Appends a line to the log file in one write, so that the lines of several processes stay
    /// whole; the system may cut the line of a process that is killed during the write. Without a
    /// log file the function does nothing. A line that cannot be written completely is lost
    /// silently and as a whole; later lines are written once the disk has space again. If the file
    /// is a pipe, a line is lost while nobody reads, waits for a slow reader, and may be split if
    /// it is longer than PIPE_BUF.
    ///
    /// In CSV format a file whose first message is not of today is first moved aside, and a new one
    /// is started. Deliberate: a file that holds only its header counts as undated and is moved to
    /// path + "00000-000000" at its first message. If the new file cannot be opened, file logging
    /// is off, the line is lost, and an error that says so follows the message. A CSV file that was
    /// deleted comes back without its header. Two processes that share a CSV file may notice the
    /// new day at one moment; the second then moves the file that the first has just started, over
    /// the file moved before. Give each process its own file where every line counts.
    ///
    /// The log itself calls this for every message. A direct call is not guarded against the
    /// messages of other threads.
    static void addToLogFile(const std::string& line);

    /// With stamps on, replaces `line` by the start of a text line: time, `type` and `number` +
    /// _nr. With stamps off, `line` stays as it is.
    static void addExtraInfo(std::string& line, const std::string& type, int number);
    /// As addExtraInfo(), for a CSV line.
    static void addExtraInfoCSV(std::string& line, const std::string& type, int number);

    // --- State -----------------------------------------------------------------------------------
    // It is public for hosts that set it directly during set-up.

    static int _log_format;       ///< 1 text, 2 HTML (the start value), 3 CSV
    static bool _add_time_stamp;  ///< whether text and CSV lines start with stamp, type and number
    static int _nr;               ///< added to the level's base number; threads write it atomically
    static std::string _last_error;            ///< "" if there was none
    static void (*_info_fp)(const char*);      ///< null: no callback
    static void (*_warning_fp)(const char*);   ///< null: no callback
    static void (*_error_fp)(const char*);     ///< null: no callback
    static std::string* _output_buffer;        ///< null: no buffer
    static std::streambuf* _output_streambuf;  ///< null: no stream
    static std::string _log_file;              ///< path; empty: no file
};
