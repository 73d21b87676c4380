// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// talo: a host application without a window, to be read by those who write their own.
//
// It starts from an installation layout, tells the library what application it is, answers the
// library's questions on the terminal, and reports on files. It exits with 0 if all went well, 1 if
// anything failed, and 2 on wrong usage.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <initializer_list>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "banner.h"
#include "complain.h"
#include "file_copy.h"
#include "integrity.h"
#include "kxCPUInfo.h"
#include "kxFile.h"
#include "kxFileExtension.h"
#include "kxLog.h"
#include "kxPlatform.h"
#include "kxString.h"
#include "log_watch.h"
#include "open_file.h"
#include "options.h"
#include "private_directory.h"
#include "terminal_host.h"

namespace {

int logFormatCode(const std::string& name) {
    if (name == "html") return 2;
    if (name == "csv") return 3;
    return 1;
}

void describeProcessor() {
    const kxCPUInfo& cpu = kxCPUInfo::getCPUInfo();
    std::string features;
    if (cpu.hasSSE2Support()) features += " SSE2";
    if (cpu.hasSSE42Support()) features += " SSE4.2";
    if (cpu.hasAVXSupport()) features += " AVX";
    if (cpu.hasAVX2Support()) features += " AVX2";
    if (cpu.hasAVX512Support()) features += " AVX-512";
    kxLog::info("Processor:%s", features.c_str());
}

// A program that is started by its bare name does not know where it is installed. The library then
// looks for the installation around the working directory, where another user may have prepared
// one, with their own data and plug-ins.
bool isRootTrusted(const char* program) {
    std::error_code error;
    const bool isFoundFromHere =
        !std::strchr(program, '/') &&
        (std::filesystem::equivalent("../..", kxPlatform::getBaseDir(), error) || error);
    if (!isFoundFromHere) return true;
    for (const char* directory : {".", "..", "../.."}) {
        if (!canOthersWrite(directory)) continue;
        kxLog::error(
            "Others can write to the working directory, or above it, and the installation"
            " '%s' was found from there. Start talo by its full path",
            kxPlatform::getBaseDir());
        return false;
    }
    return true;
}

// Everything that a host sets up before it works. The order matters: the log file's place depends
// on the application's name, its header on the format, and the version name on the full name and
// the year. Returns false if the requested log file cannot be written.
bool startUp(const Options& options) {
    installTerminalHost(options.answer);
    kxPlatform::setFullAppName(options.fullName.c_str());
    kxPlatform::setDisplayVersionYearString(options.year.c_str());
    if (options.dpi != 0) kxPlatform::setDpi(options.dpi, options.dpi);
    if (!options.logFile.empty()) {
        kxLog::setLogFormat(logFormatCode(options.logFormat));
        kxLog::setLogFile(options.logFile.c_str());
    }
    // Everything that a user may have typed is data: it is passed for a "%s", never as part of the
    // format.
    kxLog::info("%s, installed in %s", kxPlatform::getAppVersionName(), kxPlatform::getBaseDir());
    describeProcessor();
    return options.logFile.empty() || kxLog::getLogFile();
}

// The formats that this host knows. They are registered and looked up with the dot, in lower case.
kxFileExtension knownFormats() {
    kxFileExtension formats;
    formats.addFormat("Mesh", {".obj", ".stl"});
    formats.addFormat("Picture", {".png", ".ppm"});
    formats.addFormat("Scene", {".json", ".osb"});
    formats.addFormat("Table", {".csv", ".tsv"});
    return formats;
}

// The full path, so that it can be shown relative to the installation. Returns "", with an error in
// the log, if it cannot be found. If the path of the working directory is too long for the library,
// the path is returned unchanged, since as a relative one it leads to the same place.
std::string absolutePath(const std::string& path) {
    std::string expanded = kxFile::expandFilename(path);  // "~/x" and "$DIR/x"
    if (expanded.empty()) kxLog::error("An empty path leads nowhere");
    if (!kxFile::isRelative(expanded)) return expanded;
    const std::string current = kxFile::getCurrentDir();
    if (current.empty() && errno != ERANGE) {
        fail("Couldn't find '" + path + "': working directory");
        return {};
    }
    const std::string absolute = kxFile::rel2Abs(current, expanded);
    return absolute.empty() ? expanded : absolute;
}

// A link counts as what it leads to. Returns false, with an error in the log, if that cannot be
// found out.
bool isDirectory(const std::filesystem::path& path, bool& answer) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    answer = std::filesystem::is_directory(status);
    if (status.type() != std::filesystem::file_type::none) return true;
    kxLog::error("Couldn't look at '%s': %s", path.c_str(), error.message().c_str());
    return false;
}

// Appends the file itself, or all files below a directory, sorted. Returns false if a directory
// cannot be read.
bool listFiles(const std::string& path, std::vector<std::string>& files) {
    bool isThere = false, isComplete = true;
    if (!isDirectory(path, isThere)) return false;
    if (!isThere) {
        files.push_back(path);
        return true;
    }
    std::vector<std::string> found;
    try {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path)) {
            if (!isDirectory(entry.path(), isThere))
                isComplete = false;
            else if (!isThere)
                found.push_back(entry.path().string());
        }
    } catch (const std::filesystem::filesystem_error& error) {
        kxLog::error("Couldn't list '%s': %s", path.c_str(), error.code().message().c_str());
        isComplete = false;
    }
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
    return isComplete;
}

// Logs why a file is not open.
void explain(const SourceFile& source) {
    if (!source.isRegular) {
        kxLog::error("'%s' is not a regular file", source.path.c_str());
    } else if (kxFile::checkRead(source.path, /*ask=*/false, /*log=*/true)) {
        errno = source.error;  // by now it might open
        fail("Couldn't open '" + source.path + "'");
    }
}

// Reports on one file. Returns false if it cannot be read.
bool report(const SourceFile& source, const kxFileExtension& formats) {
    const bool isReadable = static_cast<bool>(source.file);
    if (!isReadable) explain(source);
    // The extension of the name and not of the path, where a dot in a directory's name would count
    // too.
    const std::string name = kxFile::getFileName(source.path);
    const std::string extension = kxFile::getExtension(name);
    const std::string format = formats.getName('.' + extension);
    std::cout << name << '\n'
              << "  extension  " << extension << '\n'
              << "  base name  " << kxFile::getBaseName(name) << '\n'
              << "  format     " << (format.empty() ? "unknown" : format) << '\n';
    if (isReadable)
        std::cout << "  size       "
                  << kxString::beautifyDigits(std::to_string(source.size), ",", 3) << '\n';
    std::cout << "  path       " << kxFile::abs2Rel(kxPlatform::getBaseDir(), source.path) << '\n'
              << "  readable   " << (isReadable ? "yes" : "no") << '\n';
    return isReadable;
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

// Sets `isFree` to whether there is nothing at a path, or only a dangling link. Returns false if
// that cannot be found out, or if there is something that a copy cannot replace.
bool look(const std::string& path, bool& isFree) {
    struct stat info {};
    isFree = stat(path.c_str(), &info) != 0;
    if (!isFree && !S_ISREG(info.st_mode)) {
        errno = S_ISDIR(info.st_mode) ? EISDIR : EEXIST;
        return false;
    }
    return !isFree || errno == ENOENT;
}

// Copies one file and asks before it overwrites another. If the user keeps a file, that is no
// failure.
bool copyTo(const std::string& directory, const SourceFile& source) {
    const std::string target = directory + '/' + kxFile::getFileName(source.path);
    if (isSameFile(source.path, target)) {
        kxLog::error("'%s' is where the copy would go", source.path.c_str());
        return false;
    }
    bool isFree = false;
    if (!look(target, isFree)) return fail("Couldn't copy to '" + target + "'");
    // If nothing is there, checkWrite() would create a file to find out, even at the target of a
    // link. copyFile() finds out by itself and follows no link.
    if (!isFree) {
        // Both a refusal and a file that cannot be written make the answer false; only the latter
        // is logged.
        kxLog::clearLastError();
        const int before = answeredQuestions();
        const bool mayWrite = kxFile::checkWrite(target, /*ask=*/true, /*log=*/true);
        const bool isAnswered = answeredQuestions() > before;
        if (mayWrite && !isAnswered)  // it could not look at the file, so it did not ask
            kxLog::error("'%s' may be there already", target.c_str());
        if (!mayWrite || !isAnswered) {
            std::cout << "  copied     no\n";
            return *kxLog::getLastError() == '\0';
        }
    }
    const bool isCopied = copyFile(source, target);
    std::cout << "  copied     " << (isCopied ? target : "no") << '\n';
    return isCopied;
}

bool work(const std::string& path, const kxFileExtension& formats, const Options& options,
          const std::string& scratch) {
    const SourceFile source(path);
    return report(source, formats) && tryChecksum(source, scratch) &&
           (options.copyTo.empty() || copyTo(options.copyTo, source));
}

// Whether all of standard output has arrived. The library prints through stdio, and so does
// std::cout, so a failure at any time is noticed here.
bool isOutputWritten() {
    std::cout.flush();
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
}

int run(int argc, char** argv) {
    // Before anything asks for a directory, it must be known where the program is installed.
    const char* const program = argc > 0 ? argv[0] : "talo";
    kxPlatform::init(program);
    if (!kxFile::exists(kxPlatform::getBinDir())) {
        kxLog::error("There is no installation in '%s'", kxPlatform::getBaseDir());
        return 1;
    }
    if (!isRootTrusted(program)) return 1;

    Options options;
    int exitCode = 0;
    if (!parseOptions(argc, argv, options, exitCode)) return exitCode;
    if (!kxFile::exists(kxPlatform::getPreferencesDir()))
        kxFile::perror("There is no directory for preferences");  // a real host might need it
    LogWatch log;
    bool allWell = startUp(options);
    log.begin();

    if (options.paths.empty()) options.paths.emplace_back(kxPlatform::getDataDir());
    if (!options.copyTo.empty()) {
        options.copyTo = absolutePath(options.copyTo);
        if (options.copyTo.empty()) return 1;
        if (!kxFile::createPath(options.copyTo)) {
            kxFile::perror("Couldn't create '" + options.copyTo + "'");
            return 1;
        }
    }
    if (!options.banner.empty() && !writeBanner(options.banner, kxPlatform::getAppVersionName()))
        allWell = fail("Couldn't write '" + options.banner + "'");

    const kxFileExtension formats = knownFormats();
    std::vector<std::string> files;
    for (const std::string& given : options.paths) {
        const std::string path = absolutePath(given);
        allWell = !path.empty() && listFiles(path, files) && allWell;
    }
    PrivateDirectory scratch;
    if (scratch.path().empty()) return 1;
    for (const std::string& file : files)
        allWell = work(file, formats, options, scratch.path()) && allWell;
    allWell = scratch.remove() && allWell;
    allWell = isOutputWritten() && allWell;
    kxLog::info("%s", allWell ? "All files are well." : "Some files failed.");
    if (!log.isComplete()) {
        complain("the log file lacks lines");
        return 1;
    }
    return allWell ? 0 : 1;
}

// A program may be started with closed standard streams. The next file that it opened would get the
// descriptor of one, and receive its output. The descriptors are opened for the wrong direction, so
// that each of them still fails when it is used.
bool fillStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        const int mode = stream == STDIN_FILENO ? O_WRONLY : O_RDONLY;
        const bool isClosed = fcntl(stream, F_GETFD) < 0 && errno == EBADF;
        if (isClosed && open("/dev/null", mode) != stream) return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (!fillStandardStreams()) {
        complain("no standard streams");
        return 1;
    }
    std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone is an ordinary error
    int exitCode = 1;
    // An exception that a host does not catch ends it at once: nothing is removed, and no reason is
    // given.
    try {
        exitCode = run(argc, argv);
    } catch (const std::bad_alloc&) {
        complain("out of memory");
    } catch (const std::exception& error) {
        complain(error.what());
    }
    if (!isOutputWritten()) {
        complain("standard output could not be written");
        if (exitCode == 0) exitCode = 1;
    }
    return exitCode;
}
