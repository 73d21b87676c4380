// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The process-wide log.
#pragma once

#include <streambuf>
#include <string>

#include "kxExport.h"

/// Three levels (info, warning, error), printf-style, to many destinations at once.
///
/// Every message goes to the console in the level's colour. It also goes to the level's callback,
/// to a string, to a stream buffer and to a log file where one is set. All state is static; logging
/// works from the moment the library is loaded and never reports a failure: a destination for which
/// memory runs out, or which the system refuses, misses the message. What a callback throws reaches
/// the caller; else only the functions under "Lines and log file" and colorOutput() throw
/// std::bad_alloc.
///
///     kxLog::setLogFormat(1);              // text; before setLogFile
///     kxLog::setLogFile("/tmp/app.log");
///     kxLog::warning("%d faces dropped", n);
///
/// Texts pass through unchanged to the console and to text and CSV lines: terminal escapes, ";" and
/// newlines in a message stay what they are, and a spreadsheet takes a CSV field that starts with
/// "=", "+", "-" or "@" for a formula. Do not log untrusted text where that matters.
///
/// ## Threads
/// Any thread may log. One mutex is held from the first to the last output of a message (last
/// error, callback, console, buffer, stream, file), so two messages never mix and all destinations
/// see them in the same order. Each formatting entry point has a static text buffer with a mutex of
/// its own, held from formatting to the end of the call and always taken before the output's mutex;
/// threads that log through the same entry point take turns. The mutexes are not recursive: neither
/// a callback nor the stream buffer that receives the lines may log through kxLog.
///
/// infoNR and its like, convertToHtml and colorOutput may be called by any thread as well.
/// Everything else (setters, format, file, last error, the public members) takes no lock: main
/// thread only, while no other thread logs. The first message of a new day opens a CSV file on the
/// thread that logs, which reads the environment and the application's name then; neither may
/// change meanwhile.
///
/// ## The end of the process
/// Logging works until the process has ended, in threads that still run and in destructors of
/// static objects too. Once the library's own static objects are destroyed, the public strings
/// below are gone; the functions, which have copies, are not. What you hand to the log (callbacks,
/// buffer, stream) must live as long as anybody logs, so take it away, or join your threads, before
/// you destroy it. Where a message is on its way in another thread, the end of the process waits
/// for it, a second at most. Before the library is unloaded (dlclose), all threads must have left
/// it.
///
/// ## Child processes
/// `fork` waits for the message on its way, a second at most, and the child's log works, whatever
/// other threads were doing. A callback may fork. What standard output has not written yet is
/// written by both processes, as always with fork: end a child with _exit(). Handlers of
/// pthread_atfork that were registered before the library was loaded must not log.
///
/// ## Signals
/// A signal handler must not log: it may have interrupted a message, whose mutex it would wait for.
/// SIGXFSZ (a file has reached the limit of its size) and SIGPIPE (nobody reads standard output, or
/// the pipe behind a stream buffer) are the application's: they end it unless it ignores or handles
/// them. Only the log file, where it is a pipe, raises no SIGPIPE.
class KXUTILS_API kxLog {
public:
    // --- Messages --------------------------------------------------------------------------------

    /// Logs a text. A null format is ignored. A text is cut at 2047 characters. No newline is
    /// needed at its end.
    static void info(const char* format, ...) KXUTILS_PRINTF(1, 2);
    static void warning(const char* format, ...) KXUTILS_PRINTF(1, 2);  ///< the same, in yellow
    static void error(const char* format, ...) KXUTILS_PRINTF(1, 2);    ///< the same, in red

    /// With a number, which text and CSV lines show added to the level's base number (100, 200,
    /// 300). It stays in force for all later messages of every level until the next numbered one.
    static void info(int nr, const char* format, ...) KXUTILS_PRINTF(2, 3);
    static void warning(int nr, const char* format, ...) KXUTILS_PRINTF(2, 3);  ///< the same
    static void error(int nr, const char* format, ...) KXUTILS_PRINTF(2, 3);    ///< the same

    /// The switched-off variants: they take the same arguments and, deliberately, do nothing.
    static void infoNR(const char* format, ...) KXUTILS_PRINTF(1, 2);
    static void warningNR(const char* format, ...) KXUTILS_PRINTF(1, 2);  ///< the same
    static void errorNR(const char* format, ...) KXUTILS_PRINTF(1, 2);    ///< the same

    /// For script bindings: the text as it is ("%" stays "%"), of any length; not null. With a
    /// number as above.
    /// @{
    static void infoIPython(const char* text);
    static void warningIPython(const char* text);
    static void errorIPython(const char* text);
    static void infoIPython(int nr, const char* text);
    static void warningIPython(int nr, const char* text);
    static void errorIPython(int nr, const char* text);
    /// @}

    /// The output itself, for a text of any length; not null. `flags` is a sum of 2 (call the
    /// level's callback) and 4 (write buffer, stream and file); the console is written in any case.
    /// `alternate` chooses the level's second colour.
    /// @{
    static void infoI(const char* text, int flags, bool alternate);
    static void warningI(const char* text, int flags, bool alternate);
    static void errorI(const char* text, int flags, bool alternate);
    /// @}

    /// Writes `text` (not null) and a newline to the console, without flushing. `type` is 0
    /// (plain), 1 (yellow), 4 (blue), 5 (cyan) on standard output, 2 (red), 6 (magenta) on standard
    /// error. Any other type: a complaint on standard error in place of the text. Takes no lock of
    /// the log.
    static void colorOutput(int type, const char* text);

    // --- Last error ------------------------------------------------------------------------------

    /// The text of the last error message, "" if there was none; valid until the next error
    /// message or clearLastError().
    static const char* getLastError();
    static void clearLastError();  ///< makes it ""

    // --- Callbacks, buffer and stream ------------------------------------------------------------

    /// Receives the bare text of each message of the level (no stamp, colour or newline), valid for
    /// the call only, on the thread that logs and with the log's mutex held: it must not log. Null
    /// removes the callback.
    static void setInfoCB(void (*callback)(const char*));
    static void setWarningCB(void (*callback)(const char*));  ///< the same
    static void setErrorCB(void (*callback)(const char*));    ///< the same

    /// Appends every line to `buffer`, which stays the caller's and must outlive its use here.
    static void enableOutputBuffer(std::string& buffer);
    static void disableOutputBuffer();  ///< lines no longer go to the buffer

    /// Writes every line to a stream buffer, which stays the caller's and must outlive its use
    /// here; warnings in yellow, errors in red. Pass a `std::streambuf*`: a pointer to a class
    /// derived from it must be converted to `std::streambuf*` first, since it loses its type on the
    /// way.
    static void enableOutputStream(void* streambuf);
    static void disableOutputStream();  ///< lines no longer go to the stream

    // --- Lines and log file ----------------------------------------------------------------------
    // Formats of buffer, stream and file lines:
    //
    //   1 text  2017-03-01 14:05:09 WARN 200 the text
    //   2 HTML  <span style="color:#b4b400;">the text, escaped</span><br>
    //   3 CSV   01.03.2017;14:05:09;WARN;200;the text
    //
    // Any other format makes the lines empty. Stamps are local time. The time zone (the variable
    // TZ, or the system's) is read once, at its first use in the process: a later change counts
    // after tzset(). CSV has no quoting: a ";" in a message makes one field more. With stamps
    // cleared in format 3, the day of the first line cannot be read and the file is moved aside at
    // EVERY message.

    /// Chooses the format; 1 and 3 also turn stamps on. Call it before setLogFile, so that the
    /// file's head matches.
    static void setLogFormat(int format);

    /// Opens the log file. Null changes nothing.
    ///
    /// If the environment variable named after the application (in capitals, and "_LOG_DIR"; for
    /// "talo" TALO_LOG_DIR) holds a directory, the file goes there under its own name, and the
    /// directory is created. A variable that is set but empty counts as not set.
    ///
    /// An existing file whose first message is not of today is moved aside, to its path followed
    /// directly by that message's stamp ("app.log20170301-140509"). Deliberate: HTML, and text
    /// without stamps, cannot be dated, so such a file always moves to path + "00000-000000",
    /// replacing an earlier one of that name. Only a regular file is moved; where the path is a
    /// link to one, the link itself is moved, and the new file takes its place.
    ///
    /// Do not choose a file that is no log. It is moved aside as undated, and in CSV format the
    /// first message moves a second file, the new one with its header only, to the same name: the
    /// content of the file that was there is then gone.
    ///
    /// A name that does not start with "/" is looked up in the working directory anew for each
    /// line, so that the log goes elsewhere after a change of directory.
    ///
    /// If the file cannot be opened, file logging is off and an error says so (called by a
    /// callback: only on the console and as the last error). A pipe that nobody reads cannot be
    /// opened.
    static void setLogFile(const char* name);

    /// The path of the log file, valid until it changes; null if there is none.
    static const char* getLogFile();

    /// Creates the file `name` (null: the log file) with the CSV header line, unless it exists. A
    /// failure is reported on standard error.
    static void writeCSVHeader(const char* name);

    /// `text` with the characters " & < > as character references (&#34; and so on), less one
    /// newline at its end.
    static std::string convertToHtml(const std::string& text);

    /// Appends a line to the log file in one write, so that lines of several processes stay whole
    /// (the system may cut that of a process killed within it); nothing if there is no file. A line
    /// that cannot be written, or not completely, is lost silently and as a whole; later ones are
    /// written once the disk has space again. Where the file is a pipe, a line is lost while nobody
    /// reads and waits for a reader that is slow, and one longer than PIPE_BUF may be parted.
    ///
    /// In CSV format a file whose first message is not of today is moved aside first and a new one
    /// started; deliberate: a file that holds its header only counts as undated and moves to path +
    /// "00000-000000" at its first message. If the new file cannot be opened, file logging is off,
    /// the line is lost, and the error that says so follows the message. A CSV file that was
    /// deleted comes back without its header. Processes that share a CSV file may find the new day
    /// at the same moment; the second then moves the file that the first has just started, over the
    /// one moved before. Give each its own file where every line counts.
    ///
    /// The output does this for every message; called directly it is not guarded against other
    /// threads' messages.
    static void addToLogFile(const std::string& line);

    /// With stamps on, replaces `line` by the start of a text line: time, type and number + _nr.
    static void addExtraInfo(std::string& line, const std::string& type, int number);
    /// The same for a CSV line.
    static void addExtraInfoCSV(std::string& line, const std::string& type, int number);

    // --- State -----------------------------------------------------------------------------------
    // Public for hosts that set it directly during set-up.

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
