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
/// Paths are byte strings with "/" as separator, handed to the operating system unchanged. A
/// failure is a result (false, 0, an empty string); what is reported besides stands at each
/// function. Nothing but std::bad_alloc is thrown, with the one exception named at checkChecksum.
class KXUTILS_API kxFile {
public:
    /// Creates the one instance, once, and stores its address in `_me`; any thread may call it, and
    /// read `_me` afterwards.
    static void init();

    /// The instance that init() created, for callers that want to hold an object; the library does
    /// not read it. Null before init().
    static kxFile* _me;

    // --- Path names ------------------------------------------------------------------------------
    // Work on the text alone: no file is touched, no lock taken; any thread may call them. Bytes
    // are compared as they are; case is folded for A-Z only, whatever the locale.

    /// What follows the last slash.
    ///
    ///     "/a/b.txt" -> "b.txt"    "b.txt" -> "b.txt"    "dir/" -> ""
    static std::string getFileName(const std::string& path);

    /// What stands before the last slash.
    ///
    ///     "/a/b.txt" -> "/a"    "file" -> "."    "" -> ""    "/file" -> ""   (deliberate: not "/")
    static std::string getFilePath(const std::string& path);

    /// The text after the last dot, in lower case. The dot is searched for in the whole path, also
    /// before a slash (deliberate).
    ///
    ///     "Archive.TAR.GZ" -> "gz"    "name." -> ""    "name" -> ""    "dir.d/file" -> "d/file"
    static std::string getExtension(const std::string& path);

    /// The file name without its extension; case is kept.
    ///
    ///     "/x/a.b.c" -> "a.b"    "name" -> "name"    ".profile" -> ""
    static std::string getBaseName(const std::string& path);

    /// Replaces what follows the last dot, or appends a dot and `extension` (which comes without
    /// its dot). As in getExtension the dot may stand before a slash (deliberate).
    ///
    ///     "a.txt", "png" -> "a.png"    "a", "png" -> "a.png"    "", "png" -> ".png"
    ///     "a.txt", ""    -> "a."       "x.d/file", "png" -> "x.png"
    static std::string setExtension(const std::string& path, const std::string& extension);

    /// True if the path ends in `extension`, ignoring case. No dot is required or added:
    /// "foobar" has the extension "bar", and ".gz" is a suffix of three characters like any other.
    /// False if either argument is empty.
    static bool hasExtension(const std::string& path, const std::string& extension);

    /// The extension, with its dot and in lower case, of an entry of a file dialog's filter list.
    ///
    ///     "*.OSB Scene files" -> ".osb"    "*" -> ""    "*." -> "."
    ///     "Scenes (*.osb)"    -> ".osb)"   (deliberate: a bracket is kept)
    static std::string getExtensionFromFilter(const std::string& filter);

    /// The path in the platform's separators: on this platform the path unchanged.
    static std::string convertSeparators(const std::string& path);

    /// A copy with every backslash turned into a slash.
    static std::string convertToUnixSeparators(const std::string& path);

    /// True unless the path is empty or begins with a slash or a dollar sign (a path that begins
    /// with an environment variable will be expanded). "C:/x" counts as relative.
    static bool isRelative(const std::string& path);

    /// `path` as seen from the directory `base`. Both are compared byte by byte; "." and ".." in
    /// them are not interpreted; backslashes count as slashes.
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
    /// Deliberate: a result that contains the whole path is replaced by the path ("/a/c", "/b"
    /// gives "/b" and not "../../b"). A result of more than 2046 characters is refused: `path`
    /// comes back as passed in.
    static std::string abs2Rel(const std::string& base, const std::string& path);

    /// `path` below the directory `base`, joined with one slash and not normalised; backslashes
    /// become slashes.
    ///
    ///     "/a", "b" -> "/a/b"    "/a/", "b" -> "/a//b"    "/a/b", "../c" -> "/a/b/../c"
    ///     any, "/x" -> "/x"      any, "$V/x" -> "$V/x"    "C:\p", "x\y" -> "C:/p/x/y"
    ///     "rel", "b" -> ""       "", "b" -> ""            "/a", "" -> ""
    ///
    /// An absolute path is cut at 2047 characters; a joined result that would be longer is refused
    /// ("") rather than cut, since a cut path names another file.
    static std::string rel2Abs(const std::string& base, const std::string& path);

    /// Makes `name` a valid file name, in place: removes one trailing dot or space, one leading
    /// dot, then every one of the characters < > : " / \ | ? *
    ///
    ///     "a:b" -> "ab"    "a.." -> "a."    "." -> ""    ".a?b*. " -> "ab."
    static void makeValidFileName(std::string& name);

    /// True if a byte of the text is 161 (0xA1) or greater.
    static bool isumlaut(const std::string& text);

    // --- Working directory -----------------------------------------------------------------------
    // Process-wide and not guarded: no thread may change it while another one uses it, or a
    // relative path.

    /// The working directory; "" if it cannot be read or is longer than 2047 characters.
    static std::string getCurrentDir();

    /// Changes the working directory. An empty path is ignored; a failure is not reported.
    static void setCurrentDir(const std::string& directory);

    // --- Expansion -------------------------------------------------------------------------------

    /// Replaces environment variables and home directories in a path, in one pass (what a value
    /// contains is not expanded again).
    ///
    ///     "$NAME", "${NAME}", "$(NAME)"  the variable's value
    ///     "~", "~/x"                     home directory of the effective user, from the user
    ///                                    database (never from $HOME)
    ///     "~user", "~user/x"             home directory of that user
    ///
    /// A tilde counts at the start and after a tab, a blank or one of ; < > | only.
    ///
    /// All or nothing: where a variable is not set or a user unknown the path comes back unchanged
    /// and the log gets an error. Note that this makes "$HOME" expand to "$HOME", not to "", where
    /// HOME is not set. A bracket that is not closed is logged and read as if it were, swallowing
    /// the character after the name. A path of 2048 or more characters, and one whose expansion
    /// would be, comes back unchanged with a message on standard error.
    ///
    /// Threads: any, while none changes the environment; with a tilde in the path one at a time,
    /// since getpwnam(3) has one result for all.
    static std::string expandFilename(const std::string& path);

    // --- File operations -------------------------------------------------------------------------
    // No state and no locks: any thread may call these. What becomes of a file that several use at
    // the same time is the system's answer. Questions to the user run on the calling thread. After
    // a failure errno is that of the call that failed, so perror() can follow.
    //
    // A path may lead to a pipe or a device. On a pipe checkRead(), getFileSize() and all that read
    // or write wait until somebody has its other end open, and copy() reads on until that is
    // closed; on a device without an end, as /dev/zero, copy() never returns. A read() of the whole
    // file is false for both, since they have no size. The same holds for the checksums below, of
    // which getChecksum() is the one that reads to the end. Where a path comes from elsewhere, ask
    // std::filesystem::is_regular_file() first.

    /// True if the path is not empty and leads to a file, a directory or anything else. The flags
    /// are accepted and ignored.
    static bool exists(const std::string& path, bool ignored1 = false, bool ignored2 = false);

    /// True if the file exists and can be opened for reading. Otherwise, except for an empty path,
    /// `ask` shows the reason to the user through the host and `log` logs it as an error.
    static bool checkRead(const std::string& path, bool ask, bool log);

    /// True if the file may be written. Where exists() finds nothing, the file is created and
    /// deleted again to find out; for a symbolic link that leads nowhere, where it leads: the link
    /// stays. That also decides where the system does not let look (below a closed directory). For
    /// a file that exists `ask` first lets the user refuse through the host (a host that cannot ask
    /// lets it pass); then its access rights are tested, for the real user as access(2) does. Where
    /// writing is impossible, `ask` shows the reason and `log` logs it as an error; a refusal is
    /// not logged.
    ///
    /// The file is created exclusively: one that others create meanwhile is never emptied or
    /// deleted, and goes on as one that exists, question included. Who opens the empty file while
    /// it is there, though, and has written nothing yet when it is deleted, writes into nowhere.
    static bool checkWrite(const std::string& path, bool ask, bool log);

    /// Creates one directory (mode 0777 less the umask), no parents. False if it exists already.
    static bool createDir(const std::string& path);

    /// Creates every missing directory along the path; backslashes count as slashes. True if all
    /// exist in the end (it does not matter who has made them), apart from the first component,
    /// whose creation may fail (it is often a volume). The walk goes on after a failure; errno is
    /// that of the first. False for ""; true for a path of slashes only.
    static bool createPath(const std::string& path);

    /// Removes a file or an empty directory. True also if nothing exists at the path; false for "".
    /// Where the system does not let look whether something exists, as below a closed directory,
    /// removing is tried: a file there stays (false), a link that leads there goes (true).
    static bool remove(const std::string& path);

    /// Renames `directory`/`oldName` to `directory`/`newName`, replacing a file of that name. False
    /// if one of the three is empty or nothing of the old name exists.
    static bool rename(const std::string& directory, const std::string& oldName,
                       const std::string& newName);

    /// Logs "text: description of errno" as an error; errno is kept.
    static void perror(const std::string& text);

    /// Reads the whole file into `buffer`, the caller's, of at least getFileSize(path) bytes. True
    /// if at least one byte was read: false for an empty file, a directory, "" or a null buffer.
    /// A short read is not detected.
    ///
    /// WARNING: writes beyond the buffer where the file has grown since its size was asked for. Use
    /// the next function, which knows the buffer's size, or read into a string.
    static bool read(const std::string& path, char* buffer);

    /// Reads at most `capacity` bytes from the start of the file into `buffer`, the caller's;
    /// `size` becomes their number, and the rest of the buffer stays as it was. True if the file
    /// was read up to there or to its end, also if it is empty; `more`, if given, tells whether the
    /// file goes on (which takes the read of one byte more).
    ///
    /// Otherwise false: `more` is false, `size` the number of bytes read before the failure (0 for
    /// "", a file that cannot be opened, a directory, or a null buffer with a capacity above 0) and
    /// errno the cause. A read that is interrupted or comes back short is continued.
    ///
    ///     std::size_t size = 0;
    ///     bool more = false;
    ///     char head[512];
    ///     if (!kxFile::read("scene.osb", head, sizeof head, size, &more)) return false;
    static bool read(const std::string& path, char* buffer, std::size_t capacity, std::size_t& size,
                     bool* more = nullptr);

    /// Replaces `content` by the file's bytes. True if at least one byte was read; otherwise
    /// `content` is empty. False, not an exception, if the file does not fit into memory, in which
    /// a sparse file takes its full size, holes included. A file that shrinks while it is read, or
    /// cannot be read on, leaves zero bytes at the end.
    /// @{
    static bool read(const std::string& path, std::string& content);
    static bool read(const std::string& path, std::vector<char>& content);
    /// @}

    /// Creates or truncates the file and writes `content`. True only if the system has taken every
    /// byte: a full disk gives false whatever the size.
    static bool write(const std::string& path, const std::string& content);

    /// As write(), but appends to a file that exists.
    static bool append(const std::string& path, const std::string& content);

    /// Copies a file in chunks of 1024 bytes, replacing the destination. False if one of the two
    /// cannot be opened. Deliberate: an error while writing is NOT detected (read the copy back, or
    /// compare sizes, where it matters), and a file copied onto itself is emptied.
    static bool copy(const std::string& source, const std::string& destination);

    /// The file's size in bytes; 0 for "", a directory and a file that cannot be opened.
    static std::uint64_t getFileSize(const std::string& path);

    /// The plain offset of a stream position, without its conversion state.
    static std::streamoff convertStreamPosToStreamOff(const std::streampos& position);

    // --- Temporary files -------------------------------------------------------------------------
    // One directory per process, published in the environment variable TALO_TMP_DIR so that child
    // processes and plug-ins find the same place. Main thread only.
    //
    // The directory below /tmp is shared, and belongs to whoever was the first to create it. As far
    // as its mode lets them, other users read, replace and delete what is in it, and plant links
    // under names that can be guessed, those of getTmpName() included: writing to such a name
    // writes where the link leads. Where that matters, make a directory of your own with
    // mkdtemp(3), name it in TALO_TMP_DIR before the first of these calls, and remove it in the
    // end.

    /// Chooses the directory, once in the life of the process (an empty name is refused with a
    /// warning and does not count). A TALO_TMP_DIR set by the user wins and is never changed;
    /// otherwise "/tmp/" + `name` is used, or else "$TALO_ROOT/tmp". A directory that is missing is
    /// created; what cannot be created is logged as a warning. In the end the choice is logged
    /// once, as information. All users and processes share a directory of one name below /tmp.
    ///
    /// Deliberate: a "$TALO_ROOT/tmp" that exists already is not published, so that getTmpDir()
    /// then has no directory to report.
    static void initTmpDir(const std::string& name);

    /// The temporary directory, after initTmpDir("talo") if none was chosen yet: the value that
    /// TALO_TMP_DIR has at the moment. It is not checked whether the directory still exists. "" if
    /// there is none: with an information in the log if the variable is not set, and without a
    /// report if it is set but empty (of which initTmpDir() warns).
    static std::string getTmpDir();

    /// The sub-directory "teamcenter" of getTmpDir(), created if it is missing. If it cannot be
    /// created: getTmpDir() itself, with a warning. "" with a warning if there is none.
    static std::string getTeamcenterTmpDir();

    /// A name (`prefix` and a number, without the directory) that does not exist in `directory`.
    /// The numbers never repeat within a process (after 2147483647 negative ones follow). No file
    /// is created: two processes can be given the same name, and a link that leads nowhere counts
    /// as a free name. "" if an argument is empty.
    static std::string getTmpName(const std::string& directory, const std::string& prefix);

    /// Registers a path for removeTmpFiles(); an empty one is ignored.
    static void addTmpFile(const std::string& path);

    /// Removes the file of that name (only the last component of `name` counts) from the temporary
    /// directory, by the rules of remove(). True if it is gone or was not there, also where there
    /// is no temporary directory; false for "". A name that ends in a slash stands for the
    /// directory itself, which is never removed: false while it exists. Registered paths are
    /// untouched.
    static bool removeTmpFile(const std::string& name);

    /// Removes all registered files that exists() finds, in the order of their registration, and
    /// forgets every path, also of those that could not be removed. A link that leads nowhere, or
    /// to where the system does not let look, stays. The library never calls this itself: a host
    /// does when it shuts down.
    static void removeTmpFiles();

    /// Not implemented: logs an error.
    static void clearTmpDir();

    // --- Checksums and identifiers ---------------------------------------------------------------
    // The checksum is the standard CRC-32 of IEEE 802.3 and zlib: polynomial 0x04C11DB7, reflected,
    // initial value and final XOR 0xFFFFFFFF; "123456789" has 0xCBF43926. A read that comes back
    // short, also by an error, counts as the file's end. Sizes and positions have 64 bits. No state
    // and no locks: any thread may call these. Nothing is logged.
    //
    // A stamped file: [offset bytes, not covered][protected data][checksum footer], optionally
    // followed by [meta data][meta footer]. Each footer has 16 bytes:
    //
    //     checksum footer   00 54 41 4C 4F 43 52 43 (0, "TALOCRC"), then the CRC-32 of the
    //                       protected data as eight upper-case hexadecimal digits
    //     meta footer       "TALOMETA", then eight hexadecimal digits: the bytes from the start of
    //                       the checksum footer to the start of the meta footer
    //
    // To stamp a file, write it, then appendChecksum(path, getChecksum(path, offset)); later
    // checkChecksum(path, crc, offset) with the same offset. Nothing here writes a meta footer.

    /// The CRC-32 of the file after its first `skip` bytes (none if `skip` is 0 or less). 0 for "",
    /// a file that cannot be opened and one of fewer than `skip` bytes: a checksum of 0 and a
    /// failure cannot be told apart.
    static std::uint32_t getChecksum(const std::string& path, int skip = 0);

    /// Appends a checksum footer, creating the file if it is missing. True only if the system has
    /// taken all 16 bytes; false for "" and a file that cannot be opened.
    static bool appendChecksum(const std::string& path, std::uint32_t checksum);

    /// What findChecksum() has found in a file. Positions and sizes are in bytes.
    struct ChecksumInfo {
        /// What the search has come to.
        enum class State {
            notOpened,        ///< the path is empty or the file cannot be opened for reading
            noFooter,         ///< no checksum footer, nor a meta footer that leads to one
            badMetaDistance,  ///< a meta footer whose number has no hexadecimal digit
            correct,          ///< a footer that matches the data
            incorrect         ///< a footer that does not
        };
        State state = State::notOpened;  ///< what `checkChecksum` would have said
        /// errno of what went wrong while opening or reading the file; 0 if nothing.
        int error = 0;
        bool hasMetaFooter = false;      ///< whatever `state` says
        std::uint64_t metaFooterAt = 0;  ///< position; set if hasMetaFooter
        std::uint64_t footerAt = 0;      ///< position; set, as what follows, for correct, incorrect
        std::string stored;              ///< the eight characters of the checksum footer
        std::uint32_t computed = 0;      ///< the CRC-32 of the data from `offset` to the footer
        std::uint64_t covered = 0;  ///< size of the data that `computed` stands for: less than that
                                    ///< if the file has become shorter or could not be read on
    };

    /// Called during long work with the number of bytes done since the last call, on the thread
    /// that does the work. What it throws ends the work and reaches the caller.
    using Progress = std::function<void(std::uint64_t bytes)>;

    /// Looks for the file's checksum footer and compares it with the data, as checkChecksum() does,
    /// but prints nothing and says all that it has found. Also for a meta footer without a number
    /// nothing is thrown; and a file that cannot be read, which passes there, shows in `error`.
    ///
    /// The file is read in blocks and closed in any case; `progress`, if set, is called for each
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
    /// Deliberate: also a file that cannot be opened or read passes. findChecksum() tells it from
    /// one that is intact, by its `error`.
    ///
    /// The eight characters are compared as text: lower-case digits never match (deliberate). After
    /// a meta footer "Found meta footer." comes first, and a footer that is not where it says
    /// counts as no footer. The messages bypass the log; each is a line written in one call.
    ///
    /// Throws std::invalid_argument, after "Found meta footer." and with `checksum` set to 0, if
    /// the meta footer's number does not start with a hexadecimal digit. It is read by the rules of
    /// std::stoul: blanks, a sign and "0x" may come before the digits, and what follows them is
    /// ignored.
    static bool checkChecksum(const std::string& path, std::uint32_t& checksum,
                              std::uint32_t offset = 0);

    /// The CRC-32 of `length` bytes at `data`; 0 for a null pointer and for no bytes.
    static std::uint32_t getID(const void* data, std::uint32_t length);

    /// A cheap identifier: the size in bytes and the CRC-32 of the first 8192 bytes, both in
    /// decimal and without a separator. "00" for an empty file and one that cannot be read; "" for
    /// "". Deliberately weak: files of one size that differ only later share it, and so can files
    /// of different sizes.
    ///
    ///     10 bytes with the CRC-32 305419896 -> "10305419896"
    static std::string getFileID(const std::string& path);

    // --- External commands -----------------------------------------------------------------------
    // The system shell parses the command: nothing is quoted or escaped. It inherits none of the
    // files and pipes that the library has open at that moment. No state: any thread may call
    // these; a call that waits blocks its own thread only.

    /// Runs a command. With `wait`, true if it ended with exit status 0 (and not by a signal);
    /// without, it runs in the background and true only says that the shell started it. False for
    /// "", and where the system does not tell how a command has ended, as in a process that ignores
    /// SIGCHLD. `progress` is never called, and `data` never read.
    static bool execute(const std::string& command, bool wait,
                        void (*progress)(unsigned int, void*) = nullptr, void* data = nullptr);

    /// As execute(), for a command cut at its first zero byte.
    static bool executeW(const std::string& command, bool wait,
                         void (*progress)(unsigned int, void*) = nullptr, void* data = nullptr);

    /// Runs a command, discards its standard output (its standard error is not redirected), says so
    /// on standard output and waits for its end. The wait status as of waitpid(2), of which
    /// WIFSIGNALED says that a signal has ended the command; 0 if the command could not be started;
    /// -1 where the system does not tell the status, as in execute().
    static int execute_no_output(const std::string& command);

    /// Not implemented: always "", with an error in the log if `a` and `b` are not empty.
    static std::string pathfind(const std::string& a, const std::string& b, const std::string& c);

private:
    static std::string _tmp_envvar_name;
    static std::vector<std::string> _tmp_files;
};
