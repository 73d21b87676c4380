// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Path names, file operations, temporary files, file checksums and external commands.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <ios>
#include <string>
#include <vector>

#include "kxExport.h"

/// Static functions on paths and files.
///
/// Paths are byte strings with "/" as separator; the operating system gets them unchanged. A
/// failure is a result (false, 0 or an empty string); each function says what it reports besides.
/// Nothing is thrown but std::bad_alloc, the exception that checkChecksum() names, and whatever a
/// callback of the application throws (the host's, a callback of the log, a Progress).
///
/// ## Threads
/// The class takes no lock of its own.
///
/// - Path names, checksums, identifiers and commands: any thread. A command that is waited for
///   blocks the calling thread only.
/// - File operations: any thread. If several threads use one file at the same time, the system
///   decides what becomes of it. Questions to the user run on the calling thread.
/// - expandFilename(): any thread, while none changes the environment. Paths with a tilde are for
///   one thread at a time, since getpwnam(3) has one result for all.
/// - The working directory belongs to the process: no thread may change it while another one uses
///   it, or a relative path.
/// - Temporary files: the main thread only.
class KXUTILS_API kxFile {
public:
    /// Creates the only instance, at the first call, and stores its address in `_me`. Any thread
    /// may call this, and read `_me` afterwards.
    static void init();

    /// The instance that init() created, for callers that want to hold an object; the library
    /// itself does not read it. Null before init().
    static kxFile* _me;

    // --- Path names ------------------------------------------------------------------------------
    // These functions work on the text alone and touch no file. They compare bytes; where case is
    // ignored or changed, only A to Z and a to z count, whatever the locale is.

    /// The part after the last slash; the whole path if it has none.
    ///
    ///     "/a/b.txt" -> "b.txt"    "b.txt" -> "b.txt"    "dir/" -> ""
    static std::string getFileName(const std::string& path);

    /// The part before the last slash; "." if it has none and is not empty.
    ///
    ///     "/a/b.txt" -> "/a"    "file" -> "."    "" -> ""    "/file" -> ""   (deliberate: not "/")
    static std::string getFilePath(const std::string& path);

    /// The text after the last dot, in lower case; "" if there is no dot. The last dot of the whole
    /// path counts, even if a slash follows it (deliberate).
    ///
    ///     "Archive.TAR.GZ" -> "gz"    "name." -> ""    "name" -> ""    "dir.d/file" -> "d/file"
    static std::string getExtension(const std::string& path);

    /// The file name without its last dot and what follows it; case is kept. Here a dot counts only
    /// in the file name, not in a directory.
    ///
    ///     "/x/a.b.c" -> "a.b"    "name" -> "name"    "dir.d/file" -> "file"    ".profile" -> ""
    static std::string getBaseName(const std::string& path);

    /// Replaces the text after the last dot by `extension` (which is passed without a dot), or
    /// appends a dot and `extension` if there is no dot. As in getExtension(), the last dot of the
    /// whole path counts (deliberate).
    ///
    ///     "a.txt", "png" -> "a.png"    "a", "png" -> "a.png"    "", "png" -> ".png"
    ///     "a.txt", ""    -> "a."       "x.d/file", "png" -> "x.png"
    static std::string setExtension(const std::string& path, const std::string& extension);

    /// True if the path ends in `extension`; case is ignored. The function neither requires nor
    /// adds a dot: "foobar" has the extension "bar", and ".gz" is an ending of three characters
    /// like any other. False if either argument is empty.
    static bool hasExtension(const std::string& path, const std::string& extension);

    /// The extension that an entry of a file dialog's filter list stands for, with its dot and in
    /// lower case.
    ///
    ///     "*.OSB Scene files" -> ".osb"    "*" -> ""    "*." -> "."
    ///     "Scenes (*.osb)"    -> ".osb)"   (deliberate: a bracket is kept)
    static std::string getExtensionFromFilter(const std::string& filter);

    /// The path with the platform's own separators. On this platform the path comes back unchanged.
    static std::string convertSeparators(const std::string& path);

    /// A copy with every backslash turned into a slash.
    static std::string convertToUnixSeparators(const std::string& path);

    /// True unless the path is empty or begins with a slash or a dollar sign. (A path that begins
    /// with an environment variable counts as absolute, since it will be expanded.) "C:/x" counts
    /// as relative.
    static bool isRelative(const std::string& path);

    /// The path that leads from the directory `base` to `path`. Both are compared byte by byte.
    /// Backslashes count as slashes; "." and ".." have no special meaning.
    ///
    ///     "/usr/local/lib", "/usr/src/sys" -> "../../src/sys"
    ///     "/usr", "/usr/src/sys"           -> "src/sys"
    ///     "/usr/src/sys", "/usr"           -> "../.."
    ///     "/a/b", "/a/b"                   -> "."
    ///     "/a/b/", "/a/b/"                 -> "./"
    ///     any, "x\y"                       -> "x\y"   (a relative path comes back as passed in)
    ///     "/a" or "rel", "$ROOT\x"         -> "$ROOT/x"
    ///     "", "/a"   "rel", "/a"   "/a", ""  -> ""
    ///
    /// Deliberate: a result that would contain the whole of `path` is replaced by `path` ("/a/c"
    /// and "/b" give "/b", not "../../b"). If the result would have more than 2046 characters,
    /// `path` comes back as passed in.
    static std::string abs2Rel(const std::string& base, const std::string& path);

    /// Joins the directory `base` and `path` with one slash. The result is not normalised;
    /// backslashes become slashes.
    ///
    ///     "/a", "b" -> "/a/b"    "/a/", "b" -> "/a//b"    "/a/b", "../c" -> "/a/b/../c"
    ///     any, "/x" -> "/x"      any, "$V/x" -> "$V/x"    "C:\p", "x\y" -> "C:/p/x/y"
    ///     "rel", "b" -> ""       "", "b" -> ""            "/a", "" -> ""
    ///
    /// An absolute `path` is cut at 2047 characters. A joined path that would be longer gives ""
    /// instead, since a cut path would name another file.
    static std::string rel2Abs(const std::string& base, const std::string& path);

    /// Turns `name` into a valid file name, in place. It removes one dot or space at the end, then
    /// one dot at the start, then every character of the first line below:
    ///
    ///     < > : " / \ | ? *
    ///
    ///     "a:b" -> "ab"    "a.." -> "a."    "." -> ""    ".a?b*. " -> "ab."
    static void makeValidFileName(std::string& name);

    /// True if a byte of the text is 161 (0xA1) or greater.
    static bool isumlaut(const std::string& text);

    // --- Working directory -----------------------------------------------------------------------
    // It belongs to the whole process and is not guarded (see "Threads" above).

    /// The working directory; "" if it cannot be read or has more than 2047 characters.
    static std::string getCurrentDir();

    /// Changes the working directory. An empty path is ignored; a failure is not reported.
    static void setCurrentDir(const std::string& directory);

    // --- Expansion -------------------------------------------------------------------------------

    /// Replaces environment variables and home directories in a path. This is done in one pass: the
    /// value that is put in is not expanded again.
    ///
    ///     "$NAME", "${NAME}", "$(NAME)"  the variable's value
    ///     "~", "~/x"                     home directory of the effective user, from the user
    ///                                    database (never from $HOME)
    ///     "~user", "~user/x"             home directory of that user
    ///
    /// A tilde counts only at the start of the path and after one of ; < > |, a tab or a blank.
    ///
    /// All or nothing: if a variable is not set or a user is unknown, the path comes back unchanged
    /// and an error is logged. So where HOME is not set, "$HOME" expands to "$HOME" and not to "".
    /// If a closing bracket is missing, an error is logged and the name is expanded as if the
    /// bracket were there; the character after the name is lost. If the path has 2048 or more
    /// characters, or its expansion would have, the path comes back unchanged and a message goes to
    /// standard error.
    ///
    /// Threads: see the class; paths with a tilde are for one thread at a time.
    static std::string expandFilename(const std::string& path);

    // --- File operations -------------------------------------------------------------------------
    // After a failure errno is that of the system call that failed, so perror() can follow.
    //
    // A path may lead to a pipe or a device. On a pipe, checkRead(), getFileSize() and everything
    // that reads or writes wait until somebody has opened its other end, and copy() then reads
    // until that end is closed. On a device without an end, such as /dev/zero, copy() never
    // returns. The forms of read() that take a whole file give false for both, since neither has a
    // size. All this holds for the checksums below as well; of those, getChecksum() is the one that
    // reads to the end. If a path comes from elsewhere, ask std::filesystem::is_regular_file()
    // first.

    /// True if the path is not empty and leads to anything: a file, a directory or something else.
    /// Both flags are ignored.
    static bool exists(const std::string& path, bool ignored1 = false, bool ignored2 = false);

    /// True if the file exists and can be opened for reading. Otherwise the result is false; with
    /// `ask` the host shows the reason to the user, and with `log` it is logged as an error. An
    /// empty path is false without either.
    static bool checkRead(const std::string& path, bool ask, bool log);

    /// True if the file may be written; false for "", without a report.
    ///
    /// If exists() finds nothing at the path, the file is created and deleted again to find out.
    /// For a symbolic link that leads nowhere this happens at the place that it leads to; the link
    /// stays. The attempt also decides where the system does not let the process look, as below a
    /// closed directory.
    ///
    /// If the file exists, `ask` first lets the user refuse through the host; a host that cannot
    /// ask lets the file pass. Then the access rights are tested, those of the real user as
    /// access(2) does.
    ///
    /// If writing is impossible, the host shows the reason with `ask`, and it is logged as an error
    /// with `log`. A refusal is not logged.
    ///
    /// The file is created exclusively: a file that another process creates meanwhile is never
    /// emptied or deleted, but treated as one that exists, question included. A process that opens
    /// the empty file during its short life, however, and has written nothing when it is deleted,
    /// loses what it writes afterwards.
    static bool checkWrite(const std::string& path, bool ask, bool log);

    /// Creates one directory (mode 0777 less the umask) and no parents. False if it exists already,
    /// and for "".
    static bool createDir(const std::string& path);

    /// Creates every missing directory along the path; backslashes count as slashes. True if all of
    /// them exist in the end, whoever has created them. A failure to create the first component
    /// does not count, since that is often a volume. After a failure the walk goes on, and errno is
    /// that of the first failure. False for ""; true for a path of slashes only.
    static bool createPath(const std::string& path);

    /// Removes a file or an empty directory. True also if nothing exists at the path; false for "".
    /// Where the system does not let the process look whether something exists, as below a closed
    /// directory, the removal is tried: a file in such a place stays (false), and a link that leads
    /// there is removed (true).
    static bool remove(const std::string& path);

    /// Renames `directory`/`oldName` to `directory`/`newName`, replacing a file of that name. False
    /// if one of the three is empty or the old name does not exist.
    static bool rename(const std::string& directory, const std::string& oldName,
                       const std::string& newName);

    /// Logs "text: description of errno" as an error; errno keeps its value.
    static void perror(const std::string& text);

    /// Reads the whole file into `buffer`, which belongs to the caller and has at least
    /// getFileSize(path) bytes. True if at least one byte was read, so false for an empty file, a
    /// directory, "" and a null buffer. A short read is not detected.
    ///
    /// WARNING: if the file has grown since its size was asked for, this writes beyond the buffer.
    /// Use the next function, which knows the buffer's size, or read into a string.
    static bool read(const std::string& path, char* buffer);

    /// Reads at most `capacity` bytes from the start of the file into `buffer`, which belongs to
    /// the caller. `size` becomes the number of bytes read; the rest of the buffer stays as it was.
    /// True if `capacity` bytes were read, or all that the file holds, even if that is nothing.
    /// `more`, if given, then says whether the file goes on; finding out takes the read of one more
    /// byte.
    ///
    /// Otherwise the result is false, `more` is false, and errno says why. `size` is the number of
    /// bytes read before the failure: 0 for "", a file that cannot be opened, a directory, and a
    /// null buffer with a capacity above 0. A read that is interrupted or comes back short is
    /// continued.
    ///
    ///     std::size_t size = 0;
    ///     bool more = false;
    ///     char head[512];
    ///     if (!kxFile::read("scene.osb", head, sizeof head, size, &more)) return false;
    static bool read(const std::string& path, char* buffer, std::size_t capacity, std::size_t& size,
                     bool* more = nullptr);

    /// Replaces `content` by the file's bytes. True if at least one byte was read; otherwise false,
    /// and `content` is empty. A file that does not fit into memory gives false and no exception; a
    /// sparse file takes its full size in memory, holes included. If the file shrinks while it is
    /// read, or an error stops the reading, the end of `content` is zero bytes.
    /// @{
    static bool read(const std::string& path, std::string& content);
    static bool read(const std::string& path, std::vector<char>& content);
    /// @}

    /// Creates or truncates the file and writes `content`. True only if the system has taken every
    /// byte: a full disk gives false, however short the content is. False for "".
    static bool write(const std::string& path, const std::string& content);

    /// As write(), but appends to a file that exists.
    static bool append(const std::string& path, const std::string& content);

    /// Copies a file in chunks of 1024 bytes and replaces the destination. False if one of the two
    /// files cannot be opened. Deliberate: an error while writing is NOT detected (where it
    /// matters, read the copy back or compare the sizes), and a file that is copied onto itself is
    /// emptied.
    static bool copy(const std::string& source, const std::string& destination);

    /// The file's size in bytes; 0 for "", for a directory, and for a file that cannot be opened.
    static std::uint64_t getFileSize(const std::string& path);

    /// The plain offset of a stream position, without its conversion state.
    static std::streamoff convertStreamPosToStreamOff(const std::streampos& position);

    // --- Temporary files -------------------------------------------------------------------------
    // One directory per process, published in the environment variable TALO_TMP_DIR so that child
    // processes and plug-ins use it too. Main thread only.
    //
    // The directory below /tmp is shared and belongs to the user who created it first. As far as
    // its mode lets them, other users can read, replace and delete its files, and plant links under
    // names that can be guessed, such as those of getTmpName(); a program that writes to such a
    // name writes to the file that the link leads to. Where that matters, make a directory of your
    // own with mkdtemp(3), name it in TALO_TMP_DIR before the first of these calls, and remove it
    // in the end.

    /// Chooses the directory, once in the life of the process. An empty name is refused with a
    /// warning and does not count as the choice. A TALO_TMP_DIR set by the user wins and is never
    /// changed; otherwise the directory is "/tmp/" + `name`, or else "$TALO_ROOT/tmp". A missing
    /// directory is created; if that fails, a warning is logged. At the end the choice is logged
    /// once, as information. All users and processes that pass one name share one directory below
    /// /tmp.
    ///
    /// Deliberate: if "$TALO_ROOT/tmp" is needed and exists already, it is not published, so
    /// getTmpDir() then has no directory to report.
    static void initTmpDir(const std::string& name);

    /// The temporary directory: the value that TALO_TMP_DIR has at the moment. If no directory was
    /// chosen yet, initTmpDir("talo") is called first. The function does not check whether the
    /// directory still exists. The result is "" if the variable is not set, which the log reports
    /// as information, and if it is set but empty, without a report (initTmpDir() has warned of
    /// that).
    static std::string getTmpDir();

    /// The sub-directory "teamcenter" of getTmpDir(), which is created if it is missing. If that
    /// fails, a warning is logged and the result is getTmpDir() itself. If there is no temporary
    /// directory, a warning is logged and the result is "".
    static std::string getTeamcenterTmpDir();

    /// A name that does not exist in `directory`: `prefix` and a number, without the directory. The
    /// numbers never repeat within a process; negative ones follow 2147483647. No file is created,
    /// so two processes can be given one name, and a link that leads nowhere counts as a free name.
    /// "" if an argument is empty.
    static std::string getTmpName(const std::string& directory, const std::string& prefix);

    /// Registers a path for removeTmpFiles(); an empty path is ignored.
    static void addTmpFile(const std::string& path);

    /// Removes the file of that name from the temporary directory, by the rules of remove(); only
    /// the last component of `name` counts. True if the file is gone or was not there, and also if
    /// there is no temporary directory; false for "". A name that ends in a slash stands for the
    /// directory itself, which is never removed: the result is false while it exists. Registered
    /// paths stay registered.
    static bool removeTmpFile(const std::string& name);

    /// Removes all registered files that exists() finds, in the order of their registration, and
    /// forgets every registered path, even if its file could not be removed. A link stays if it
    /// leads nowhere, or to a place where the system does not let the process look. The library
    /// never calls this itself: a host calls it when it shuts down.
    static void removeTmpFiles();

    /// Not implemented: it only logs an error.
    static void clearTmpDir();

    // --- Checksums and identifiers ---------------------------------------------------------------
    // The checksum is the CRC-32 of IEEE 802.3 and zlib, as in kxCRC32. A read that comes back
    // short counts as the end of the file, even after an error. Sizes and positions have 64 bits.
    // Nothing is logged.
    //
    // A stamped file ends with a checksum footer of 16 bytes, which meta data and a meta footer may
    // follow. Its layout, byte by byte, is in docs/pages/checksummed-files.md.
    //
    // To stamp a file, write it and call appendChecksum(path, getChecksum(path, offset)); to verify
    // it, call checkChecksum(path, crc, offset) with that offset. The first `offset` bytes of the
    // file are not covered. Nothing here writes a meta footer.

    /// The CRC-32 of the file after its first `skip` bytes, or of the whole file if `skip` is 0 or
    /// less. 0 for "", for a file that cannot be opened, and for one of fewer than `skip` bytes: a
    /// checksum of 0 and a failure cannot be told apart.
    static std::uint32_t getChecksum(const std::string& path, int skip = 0);

    /// Appends a checksum footer; a missing file is created. True only if the system has taken all
    /// 16 bytes; false for "" and for a file that cannot be opened.
    static bool appendChecksum(const std::string& path, std::uint32_t checksum);

    /// The findings of findChecksum(). Positions and sizes are in bytes.
    struct ChecksumInfo {
        /// The outcome of the search.
        enum class State {
            notOpened,        ///< the path is empty or the file cannot be opened for reading
            noFooter,         ///< no checksum footer, nor a meta footer that leads to one
            badMetaDistance,  ///< a meta footer whose number starts with no hexadecimal digit
            correct,          ///< a footer that matches the data
            incorrect         ///< a footer that does not match the data
        };
        State state = State::notOpened;  ///< the outcome
        /// errno of the failure to open or read the file; 0 if there was none.
        int error = 0;
        bool hasMetaFooter = false;      ///< whether a meta footer was found, whatever `state` is
        std::uint64_t metaFooterAt = 0;  ///< position; set if hasMetaFooter
        /// Position; this and the members below are set if `state` is correct or incorrect.
        std::uint64_t footerAt = 0;
        std::string stored;          ///< the eight characters of the checksum footer
        std::uint32_t computed = 0;  ///< the CRC-32 of the data from `offset` to the footer
        /// The size of the data that `computed` stands for: less than the distance from `offset` to
        /// the footer if the file has become shorter or an error has stopped the reading.
        std::uint64_t covered = 0;
    };

    /// Called during long work, on the thread that does the work, with the number of bytes done
    /// since the last call. An exception that it throws ends the work and reaches the caller.
    using Progress = std::function<void(std::uint64_t bytes)>;

    /// Looks for the file's checksum footer and compares it with the data, as checkChecksum() does,
    /// but prints nothing and returns all its findings. A meta footer without a number is a `state`
    /// and not an exception. A file that cannot be read, which passes checkChecksum(), shows in
    /// `error`.
    ///
    /// The file is read in blocks and closed in any case. `progress`, if set, is called for each
    /// block.
    static ChecksumInfo findChecksum(const std::string& path, std::uint32_t offset = 0,
                                     const Progress& progress = {});

    /// True unless the file has a checksum footer that does not match the data from byte `offset`
    /// up to the footer. `checksum` becomes the computed value if the two match, otherwise 0.
    ///
    ///                                            result  standard output
    ///     "", cannot be opened                   true    nothing
    ///     no checksum footer, or fewer than      true    "Couldn't find file checksum!"
    ///     `offset` + 16 bytes
    ///     footer matches                         true    "Found correct file checksum %s."
    ///     footer does not match                  false   "Found incorrect file checksum %s != %s!"
    ///                                                    (computed, stored)
    ///
    /// Deliberate: a file that cannot be opened or read passes, too. findChecksum() tells it from
    /// an intact file, by its `error`.
    ///
    /// The eight characters are compared as text, so lower-case digits never match (deliberate). If
    /// the file ends in a meta footer, "Found meta footer." is printed first, and a file without a
    /// checksum footer at the place that it names counts as one without a footer. The messages do
    /// not go through the log; each is one line, written in one call.
    ///
    /// Throws std::invalid_argument, after "Found meta footer." and with `checksum` set to 0, if
    /// the meta footer's number does not start with a hexadecimal digit. The number is read by the
    /// rules of std::stoul in base 16: blanks, a sign and "0x" may come before the digits, and
    /// anything after them is ignored.
    static bool checkChecksum(const std::string& path, std::uint32_t& checksum,
                              std::uint32_t offset = 0);

    /// The CRC-32 of `length` bytes at `data`; 0 for a null pointer, and for a length of 0.
    static std::uint32_t getID(const void* data, std::uint32_t length);

    /// A cheap identifier: the size in bytes and the CRC-32 of the first 8192 bytes, both in
    /// decimal and without a separator. "00" for an empty file and for one that cannot be read; ""
    /// for "". Deliberately weak: files of equal size that differ only after those bytes share one
    /// identifier, and even files of different sizes can.
    ///
    ///     10 bytes with the CRC-32 305419896 -> "10305419896"
    static std::string getFileID(const std::string& path);

    // --- External commands -----------------------------------------------------------------------
    // The system shell parses the command; nothing is quoted or escaped. The shell inherits none of
    // the files and pipes that the library has open at that moment.

    /// Runs a command. With `wait` the result is true if the command ended with exit status 0, and
    /// not by a signal. Without `wait` the command runs in the background, and true only says that
    /// the shell has started it. False for "", and where the system does not tell how a command
    /// ended, as in a process that ignores SIGCHLD. `progress` is never called, and `data` is never
    /// read.
    static bool execute(const std::string& command, bool wait,
                        void (*progress)(unsigned int, void*) = nullptr, void* data = nullptr);

    /// As execute(), but the command is cut at its first zero byte.
    static bool executeW(const std::string& command, bool wait,
                         void (*progress)(unsigned int, void*) = nullptr, void* data = nullptr);

    /// Runs a command and discards its standard output until that ends; standard error is not
    /// redirected. It then prints a line on standard output and waits for the command to end. The
    /// result is the wait status as in waitpid(2), so WIFSIGNALED tells whether a signal ended the
    /// command; 0 if the command could not be started; -1 where the system does not tell the
    /// status, as in execute().
    static int execute_no_output(const std::string& command);

    /// Not implemented: the result is always "". If neither `a` nor `b` is empty, an error is
    /// logged.
    static std::string pathfind(const std::string& a, const std::string& b, const std::string& c);

private:
    static std::string _tmp_envvar_name;
    static std::vector<std::string> _tmp_files;
};
