// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "detail/files/footer.h"
#include "detail/files/handle.h"
#include "detail/files/make_path.h"
#include "detail/files/same_file.h"
#include "detail/files/temporary_name.h"
#include "detail/paths/expand.h"
#include "detail/paths/relative.h"
#include "detail/platform/command_output.h"
#include "detail/platform/find_last.h"
#include "detail/text/ascii.h"
#include "kxLog.h"
#include "kxMessage.h"
#include "kxUtils.h"

using kx::detail::ErrnoKeeper;
using kx::detail::FileHandle;
using kx::detail::findLast;
using kx::detail::isDirectory;
using kx::detail::isSlash;
using kx::detail::makeIfMissing;
using kx::detail::openUnbuffered;
using kx::detail::sizeOf;

kxFile* kxFile::_me = nullptr;
std::string kxFile::_tmp_envvar_name;
std::vector<std::string> kxFile::_tmp_files;

namespace {

constexpr std::size_t maxPath = 2047;  // characters in the buffers in which paths are composed

constexpr mode_t allPermissions = 0777;  // less the umask

// Works in place, so that a text that was just composed is not copied.
void useSlashes(std::string& text) {
    for (std::size_t i = 0; (i = text.find('\\', i)) != std::string::npos;) text[i] = '/';
}

// With the platform's separators, which here are the library's own.
std::string toPlatform(std::string path) { return path; }

// Joins the three with a single allocation.
std::string join(std::string_view first, char between, std::string_view second) {
    std::string result(first.size() + 1 + second.size(), between);
    first.copy(result.data(), first.size());
    second.copy(result.data() + first.size() + 1, second.size());
    return result;
}

}  // namespace

void kxFile::init() {
    static kxFile kxfile;
    // Stored under the guard of the initialisation, too, since several threads may get here at
    // once.
    [[maybe_unused]] static kxFile* const stored = (_me = &kxfile);
}

// --- Path names ----------------------------------------------------------------------------------

std::string kxFile::getFileName(const std::string& path) {
    const std::size_t slash = findLast(path, '/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string kxFile::getFilePath(const std::string& path) {
    if (path.empty()) return {};
    const std::size_t slash = findLast(path, '/');
    return slash == std::string::npos ? "." : path.substr(0, slash);
}

std::string kxFile::getExtension(const std::string& path) {
    const std::size_t dot = findLast(path, '.');
    return dot == std::string::npos ? std::string() : kx::detail::toLower(path.substr(dot + 1));
}

std::string kxFile::getBaseName(const std::string& path) {
    const std::size_t begin = findLast(path, '/') + 1;  // 0 without a slash
    const std::size_t dot = findLast(path, '.');
    const bool hasDot = dot != std::string::npos && dot >= begin;
    return path.substr(begin, hasDot ? dot - begin : std::string::npos);
}

std::string kxFile::setExtension(const std::string& path, const std::string& extension) {
    return join(std::string_view(path).substr(0, findLast(path, '.')), '.', extension);
}

bool kxFile::hasExtension(const std::string& path, const std::string& extension) {
    if (extension.empty() || path.size() < extension.size()) return false;
    return std::equal(extension.rbegin(), extension.rend(), path.rbegin(), [](char a, char b) {
        return kx::detail::toLower(a) == kx::detail::toLower(b);
    });
}

std::string kxFile::getExtensionFromFilter(const std::string& filter) {
    const std::size_t dot = findLast(filter, '.');
    if (dot == std::string::npos) return {};
    const std::size_t blank = std::min(filter.find(' ', dot), filter.size());
    return kx::detail::toLower(filter.substr(dot, blank - dot));
}

std::string kxFile::convertSeparators(const std::string& path) { return toPlatform(path); }

std::string kxFile::convertToUnixSeparators(const std::string& path) {
    std::string result = path;
    useSlashes(result);
    return result;
}

bool kxFile::isRelative(const std::string& path) {
    return !path.empty() && path[0] != '/' && path[0] != '$';
}

std::string kxFile::abs2Rel(const std::string& base, const std::string& path) {
    if (isRelative(path)) return path;
    if (base.empty() || path.empty()) return {};

    std::string result;
    if (path[0] == '$') {
        if (path.size() >= maxPath) return path;
        result = convertToUnixSeparators(path);
    } else {
        if (!isSlash(base[0])) return {};
        if (!kx::detail::composeRelative(base, path, maxPath - 1, result)) return path;
        useSlashes(result);
        if (result.size() > path.size()) {  // otherwise it cannot contain the whole path
            std::string whole = convertToUnixSeparators(path);
            if (result.find(whole) != std::string::npos) result = std::move(whole);
        }
    }
    return toPlatform(std::move(result));
}

std::string kxFile::rel2Abs(const std::string& base, const std::string& path) {
    if (base.empty() || path.empty()) return {};

    std::string result;
    if (isSlash(path[0]) || path[0] == '$') {
        result.assign(path, 0, maxPath);
    } else {
        const bool hasDrive = base.size() > 1 && base[1] == ':';
        const bool fits = base.size() + 1 + path.size() <= maxPath;
        if ((!isSlash(base[0]) && !hasDrive) || !fits) return {};
        result = join(base, '/', path);
    }
    useSlashes(result);
    return toPlatform(std::move(result));
}

void kxFile::makeValidFileName(std::string& name) {
    static constexpr char reservedChars[] = {'<', '>', ':', '"', '/', '\\', '|', '?', '*'};

    if (name.empty()) return;
    if (name.back() == '.' || name.back() == ' ') name.pop_back();
    if (!name.empty() && name.front() == '.') name.erase(0, 1);
    const auto isReserved = [](char c) {
        return std::find(std::begin(reservedChars), std::end(reservedChars), c) !=
               std::end(reservedChars);
    };
    name.erase(std::remove_if(name.begin(), name.end(), isReserved), name.end());
}

bool kxFile::isumlaut(const std::string& text) {
    return std::any_of(text.begin(), text.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= 0xA1; });
}

// --- Working directory ---------------------------------------------------------------------------

std::string kxFile::getCurrentDir() {
    char buffer[maxPath + 1];
    return getcwd(buffer, sizeof buffer) ? buffer : "";
}

void kxFile::setCurrentDir(const std::string& directory) {
    if (directory.empty()) return;
    [[maybe_unused]] const int failed = chdir(directory.c_str());
}

// --- Expansion -----------------------------------------------------------------------------------

std::string kxFile::expandFilename(const std::string& path) {
    return kx::detail::expandFilename(path, maxPath);
}

// --- File operations -----------------------------------------------------------------------------

bool kxFile::exists(const std::string& path, bool /*ignored1*/, bool /*ignored2*/) {
    struct stat info {};
    return !path.empty() && stat(path.c_str(), &info) == 0;
}

namespace {

// Shows and logs why a check failed, as far as the caller wants this. errno stays that of the
// failure.
void report(const std::string& text, bool ask, bool log, const char* origin) {
    const ErrnoKeeper keeper;
    if (ask) {
        kxMessage message(0, "text", text);
        kxUtils::call("showMainWarning", message);
    }
    if (log) kxLog::error("%s %s", origin, text.c_str());
}

std::string wrongPermissions(const std::string& path, const char* what) {
    return "File '" + path + "' is not " + what + " (wrong permissions)!";
}

// True if the user agrees to overwriting the file; if the host does not answer, that counts as a
// yes.
bool mayOverwrite(const std::string& path) {
    kxMessage message;
    message.set("text", "File '" + path + "' already exists!\nOverwrite file?", true);
    message.set("button0", std::string("&Yes"), true);
    message.set("button1", std::string("&No"), true);
    message.set("button2", std::string("Cancel"), true);
    message.set("default button", 0, true);
    message.set("escape button", 2, true);
    kxUtils::call("showMainWarning", message);
    int button = 0;
    getFromMessage(message, "button", button);
    return button < 1;
}

// True if the last stat failed because nothing is there, not because the system could not look.
bool isMissing() {
    return errno == ENOENT || errno == ENOTDIR || errno == ENAMETOOLONG || errno == ELOOP;
}

bool isGone(const std::string& path) { return !kxFile::exists(path) && isMissing(); }

// If there is a link at `place`, changes `place` to the link's target; otherwise leaves it alone.
void followLink(std::string& place) {
    char target[PATH_MAX];
    const ssize_t size = readlink(place.c_str(), target, sizeof target);
    if (size == -1) return;
    const std::string_view next(target, static_cast<std::size_t>(size));
    const bool isAbsolute = next.substr(0, 1) == "/";
    place.erase(isAbsolute ? 0 : findLast(place, '/') + 1);  // 0 without a slash
    place += next;
}

// Deletes a file that was created here, unless others have written to it or replaced it meanwhile.
void withdraw(int file, const std::string& place) {
    struct stat ours {
    }, there{};
    const bool isTaken =
        fstat(file, &ours) == 0 && (ours.st_size != 0 || (lstat(place.c_str(), &there) == 0 &&
                                                          !kx::detail::isSameFile(there, ours)));
    if (!isTaken) unlink(place.c_str());
    close(file);
}

// How often to look again at a file that others create and delete meanwhile. It is more than the
// number of links that a system follows.
constexpr int patience = 100;

// What is at a path, or could be.
enum class Finding { isThere, canBeCreated, cannotBeCreated };

// Creates the file to find out whether that is possible, and deletes it again. It is created
// exclusively, because otherwise a file that others create at the same time would be emptied and
// deleted.
Finding tryToCreate(const std::string& path) {
    std::string place = path;
    for (int step = 0; step < patience; ++step) {
        const int file = open(place.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0) {
            withdraw(file, place);
            return Finding::canBeCreated;
        }
        if (errno != EEXIST) break;
        if (kxFile::exists(path)) return Finding::isThere;
        if (errno != ENOENT) break;
        followLink(place);  // a dangling link: the file is created at its target
    }
    return Finding::cannotBeCreated;
}

bool makeDir(const std::string& path) { return mkdir(path.c_str(), allPermissions) == 0; }

template <typename Container>
bool readWhole(const std::string& path, Container& content) {
    content.clear();
    if (path.empty()) return false;
    const FileHandle file(path, "rbe");
    if (!file) return false;
    const off_t size = sizeOf(file.get());
    if (size <= 0) return false;
    try {
        content.resize(static_cast<std::size_t>(size));
    } catch (...) {  // out of memory, or more than a container can hold
        errno = ENOMEM;
        return false;
    }
    if (std::fread(content.data(), 1, content.size(), file.get()) == 0) {
        content.clear();
        return false;
    }
    return true;
}

// Adds to `size` the number of bytes read, until it is `capacity` or the file ends. False on an
// error.
bool readUpTo(std::FILE* file, char* buffer, std::size_t capacity, std::size_t& size) {
    constexpr std::size_t most = 1U << 30;  // every system reads this much in one call
    while (size < capacity) {
        const ssize_t n = read(fileno(file), buffer + size, std::min(capacity - size, most));
        if (n == 0) break;
        if (n > 0)
            size += static_cast<std::size_t>(n);
        else if (errno != EINTR)
            return false;
    }
    return true;
}

bool writeWhole(const std::string& path, const std::string& content, const char* mode) {
    if (path.empty()) return false;
    // Without a buffer every byte goes to the system here, where its answer is seen.
    FileHandle file(openUnbuffered(path.c_str(), mode));
    if (!file) return false;
    return std::fwrite(content.data(), 1, content.size(), file.get()) == content.size() &&
           file.close();
}

}  // namespace

bool kxFile::checkRead(const std::string& path, bool ask, bool log) {
    if (path.empty()) return false;
    if (!exists(path)) {
        report("File '" + path + "' doesn't exist!", ask, log, "checkRead::");
        return false;
    }
    if (!FileHandle(path, "rbe")) {
        report(wrongPermissions(path, "readable"), ask, log, "checkRead::");
        return false;
    }
    return true;
}

bool kxFile::checkWrite(const std::string& path, bool ask, bool log) {
    if (path.empty()) return false;
    // If nobody is asked, a file that has disappeared before the access test (such as another
    // caller's probe) is looked for again, but not for ever.
    for (int attempts = ask ? 1 : patience; attempts > 0; --attempts) {
        const Finding found = exists(path) ? Finding::isThere : tryToCreate(path);
        if (found == Finding::canBeCreated) return true;
        if (found == Finding::cannotBeCreated) break;
        if (ask && !mayOverwrite(path)) return false;
        if (faccessat(AT_FDCWD, path.c_str(), W_OK, 0) == 0) return true;
        if (errno != ENOENT) break;
    }
    report(wrongPermissions(path, "writable"), ask, log, "checkWrite:");
    return false;
}

bool kxFile::createDir(const std::string& path) { return !path.empty() && makeDir(path); }

bool kxFile::createPath(const std::string& path) {
    return !path.empty() && kx::detail::makePath(convertToUnixSeparators(path));
}

bool kxFile::remove(const std::string& path) {
    if (path.empty()) return false;
    return isGone(path) || std::remove(path.c_str()) == 0;
}

bool kxFile::rename(const std::string& directory, const std::string& oldName,
                    const std::string& newName) {
    if (directory.empty() || oldName.empty() || newName.empty()) return false;
    const std::string from = directory + '/' + oldName, to = directory + '/' + newName;
    return exists(from) && std::rename(from.c_str(), to.c_str()) == 0;
}

void kxFile::perror(const std::string& text) {
    const ErrnoKeeper keeper;
    kxLog::error("%s: %s", text.c_str(), std::strerror(errno));
}

bool kxFile::read(const std::string& path, char* buffer) {
    if (path.empty() || !buffer) return false;
    const FileHandle file(path, "rbe");
    if (!file) return false;
    const off_t size = sizeOf(file.get());
    return size > 0 && std::fread(buffer, 1, static_cast<std::size_t>(size), file.get()) > 0;
}

bool kxFile::read(const std::string& path, char* buffer, std::size_t capacity, std::size_t& size,
                  bool* more) {
    size = 0;
    if (more) *more = false;
    if (!buffer && capacity > 0) {
        errno = EINVAL;
        return false;
    }
    const FileHandle file(path, "rbe");
    if (!file || isDirectory(file.get())) return false;
    if (!readUpTo(file.get(), buffer, capacity, size)) return false;
    if (!more || size < capacity) return true;
    char next = 0;
    std::size_t count = 0;
    if (!readUpTo(file.get(), &next, 1, count)) return false;
    *more = count == 1;
    return true;
}

bool kxFile::read(const std::string& path, std::string& content) {
    return readWhole(path, content);
}

bool kxFile::read(const std::string& path, std::vector<char>& content) {
    return readWhole(path, content);
}

bool kxFile::write(const std::string& path, const std::string& content) {
    return writeWhole(path, content, "wbe");
}

bool kxFile::append(const std::string& path, const std::string& content) {
    return writeWhole(path, content, "abe");
}

bool kxFile::copy(const std::string& source, const std::string& destination) {
    const FileHandle in(source, "rbe");
    if (!in) return false;
    const FileHandle out(destination, "wbe");
    if (!out) return false;
    char chunk[1024];
    std::size_t n = sizeof chunk;
    while (n == sizeof chunk) {
        n = std::fread(chunk, 1, sizeof chunk, in.get());
        std::fwrite(chunk, 1, n, out.get());
    }
    return true;
}

std::uint64_t kxFile::getFileSize(const std::string& path) {
    if (path.empty()) return 0;
    const FileHandle file(path, "rbe");
    if (!file) return 0;
    return static_cast<std::uint64_t>(std::max<off_t>(sizeOf(file.get()), 0));
}

std::streamoff kxFile::convertStreamPosToStreamOff(const std::streampos& position) {
    return position;
}

// --- Temporary files -----------------------------------------------------------------------------

namespace {

// Makes `directory` the value of the variable `name` for this process and its children. Must not be
// called again once it has succeeded.
void publish(const std::string& name, const std::string& directory) {
    // Never freed: putenv keeps the pointer, and the environment may be read until the process
    // ends.
    static std::string* const envar = new std::string;
    *envar = name + '=' + directory;
    if (putenv(envar->data()) != 0) throw std::bad_alloc();
}

// Chooses the library's own temporary directory and publishes it.
void chooseTmpDir(const std::string& variable, const std::string& name) {
    const std::string shared = "/tmp/" + name;
    if (makeIfMissing(shared)) {
        publish(variable, shared);
        return;
    }
    kxLog::warning("Couldn't create tmp directory '%s'", shared.c_str());

    const std::string own = kxFile::expandFilename("$TALO_ROOT/tmp");
    if (kxFile::exists(own)) return;  // deliberately not published
    if (makeIfMissing(own))
        publish(variable, own);
    else
        kxLog::warning("Couldn't create tmp directory '%s'", own.c_str());
}

}  // namespace

void kxFile::initTmpDir(const std::string& name) {
    if (name.empty()) {
        kxLog::warning("kxFile::initTmpDir: dirname is empty.\n");
        return;
    }
    static bool initialized = false;
    if (initialized) return;
    initialized = true;
    _tmp_envvar_name = "TALO_TMP_DIR";

    const char* const chosen = std::getenv(_tmp_envvar_name.c_str());
    if (!chosen) {
        try {
            chooseTmpDir(_tmp_envvar_name, name);
        } catch (const std::bad_alloc&) {
            initialized = false;  // nothing is chosen now; a later call does that
            throw;
        }
    } else if (!makeIfMissing(chosen)) {
        kxLog::warning("Couldn't create tmp directory '%s'", chosen);
    }

    const char* const value = std::getenv(_tmp_envvar_name.c_str());
    kxLog::info("%s = '%s'", _tmp_envvar_name.c_str(), value ? value : "(null)");
}

std::string kxFile::getTmpDir() {
    initTmpDir("talo");
    const char* const directory = std::getenv(_tmp_envvar_name.c_str());
    if (directory) return directory;
    kxLog::info("kxFile::getTmpDir: Couldn't get tmp dir!");
    return {};
}

std::string kxFile::getTeamcenterTmpDir() {
    std::string base = getTmpDir();
    if (base.empty()) {
        kxLog::warning("kxFile::getTeamcenterTmpDir : Couldn't get base tmp dir!");
        return {};
    }
    std::string directory = base + "/teamcenter";
    if (makeIfMissing(directory)) return directory;
    kxLog::warning("kxFile::getTeamcenterTmpDir : Couldn't create teamcenter tmp dir!");
    return base;
}

std::string kxFile::getTmpName(const std::string& directory, const std::string& prefix) {
    static std::uint32_t count = 0;
    return kx::detail::nextFreeName(directory, prefix, count);
}

void kxFile::addTmpFile(const std::string& path) {
    if (!path.empty()) _tmp_files.push_back(path);
}

bool kxFile::removeTmpFile(const std::string& name) {
    if (name.empty()) return false;
    const std::string directory = getTmpDir(), file = getFileName(name);
    const std::string path = directory + '/' + file;
    if (file.empty()) return isGone(path);  // the directory itself, which is never removed
    // If there is no directory, it holds no such file; "/" + file would be somebody else's file.
    return directory.empty() || remove(path);
}

void kxFile::removeTmpFiles() {
    for (const std::string& path : _tmp_files)
        if (exists(path)) std::remove(path.c_str());
    _tmp_files.clear();
}

void kxFile::clearTmpDir() { kxLog::error("kxFile::clearTmpDir: NOT IMPLEMENTED YET!"); }

// --- Checksums and identifiers -------------------------------------------------------------------

namespace {

constexpr std::size_t summingBlockSize = 8192;

}  // namespace

std::uint32_t kxFile::getChecksum(const std::string& path, int skip) {
    if (path.empty()) return 0;
    const FileHandle file(openUnbuffered(path.c_str(), "rbe"));
    if (!file) return 0;
    if (skip > 0 && fseeko(file.get(), skip, SEEK_SET) != 0)  // a pipe: read the bytes instead
        kx::detail::crc32Of(file.get(), static_cast<std::uint64_t>(skip), summingBlockSize);
    constexpr auto toTheEnd = std::numeric_limits<std::uint64_t>::max();
    return kx::detail::crc32Of(file.get(), toTheEnd, summingBlockSize);
}

bool kxFile::appendChecksum(const std::string& path, std::uint32_t checksum) {
    return append(path, kx::detail::checksumFooter(checksum));
}

kxFile::ChecksumInfo kxFile::findChecksum(const std::string& path, std::uint32_t offset,
                                          const Progress& progress) {
    ChecksumInfo info;
    const FileHandle file(openUnbuffered(path.c_str(), "rbe"));
    if (file) kx::detail::findChecksum(file.get(), offset, progress, info);
    if (!file || std::ferror(file.get()) != 0) info.error = errno;
    return info;
}

bool kxFile::checkChecksum(const std::string& path, std::uint32_t& checksum, std::uint32_t offset) {
    using State = ChecksumInfo::State;
    checksum = 0;
    const ChecksumInfo found = findChecksum(path, offset);
    if (found.hasMetaFooter) std::puts("Found meta footer.");
    switch (found.state) {
        case State::notOpened:
            break;
        case State::noFooter:
            std::puts("Couldn't find file checksum!");
            break;
        case State::badMetaDistance:
            throw std::invalid_argument("stoul");  // as converting such a number would do
        case State::correct:
            checksum = found.computed;
            std::fprintf(stdout, "Found correct file checksum %s.\n", found.stored.c_str());
            break;
        case State::incorrect:
            std::fprintf(stdout, "Found incorrect file checksum %s != %s!\n",
                         kx::detail::checksumDigits(found.computed).c_str(), found.stored.c_str());
            return false;
    }
    return true;
}

std::uint32_t kxFile::getID(const void* data, std::uint32_t length) {
    return data ? kx::detail::crc32Of(data, length) : 0;
}

std::string kxFile::getFileID(const std::string& path) {
    if (path.empty()) return {};
    std::uint32_t crc = 0;
    off_t size = 0;
    const FileHandle file(openUnbuffered(path.c_str(), "rbe"));
    if (file) {
        crc = kx::detail::crc32Of(file.get(), summingBlockSize, summingBlockSize);
        size = std::max<off_t>(sizeOf(file.get()), 0);
    }
    return std::to_string(size) + std::to_string(crc);
}

// --- External commands ---------------------------------------------------------------------------

bool kxFile::execute(const std::string& command, bool wait,
                     void (* /*progress*/)(unsigned int, void*), void* /*data*/) {
    if (command.empty()) return false;
    return std::system((wait ? command : command + " &").c_str()) == 0;
}

bool kxFile::executeW(const std::string& command, bool wait, void (*progress)(unsigned int, void*),
                      void* data) {
    return execute(command.c_str(), wait, progress, data);
}

int kxFile::execute_no_output(const std::string& command) {
    std::FILE* const output = kx::detail::openCommandOutput(command.c_str());
    if (!output) return 0;
    char line[1024];
    // A signal must not end the reading: the command could no longer write, and would end as well.
    while (std::fgets(line, sizeof line, output) || (std::ferror(output) && errno == EINTR))
        std::clearerr(output);
    std::puts("Close and waiting for subprocess to end...");
    return pclose(output);
}

std::string kxFile::pathfind(const std::string& a, const std::string& b, const std::string& /*c*/) {
    if (!a.empty() && !b.empty()) kxLog::error("kxFile::pathfind : NIY!\n");
    return {};
}
