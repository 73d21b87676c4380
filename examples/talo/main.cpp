// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// talo: a host application without a window, to read when you write one of your own.
//
// It starts from an installation layout, tells the library who it is, answers the library's
// questions on the terminal, and reports on files. It exits with 0 when all went well, 1 when
// anything failed, 2 on wrong usage.
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

// Started by its name alone, a program does not know where it lies: the library then looks for the
// installation around the working directory. There another user may have prepared one, with data
// and plug-ins of theirs.
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
// on the application's name, its head on the format, the version name on the full name and year.
// False if the log file that was asked for cannot be written.
bool startUp(const Options& options) {
    installTerminalHost(options.answer);
    kxPlatform::setFullAppName(options.fullName.c_str());
    kxPlatform::setDisplayVersionYearString(options.year.c_str());
    if (options.dpi != 0) kxPlatform::setDpi(options.dpi, options.dpi);
    if (!options.logFile.empty()) {
        kxLog::setLogFormat(logFormatCode(options.logFormat));
        kxLog::setLogFile(options.logFile.c_str());
    }
    // Everything a user may have typed is data: it goes behind a "%s", never into the format.
    kxLog::info("%s, installed in %s", kxPlatform::getAppVersionName(), kxPlatform::getBaseDir());
    describeProcessor();
    return options.logFile.empty() || kxLog::getLogFile();
}

// The formats this host knows. Registered and asked for with the dot, in lower case.
kxFileExtension knownFormats() {
    kxFileExtension formats;
    formats.addFormat("Mesh", {".obj", ".stl"});
    formats.addFormat("Picture", {".png", ".ppm"});
    formats.addFormat("Scene", {".json", ".osb"});
    formats.addFormat("Table", {".csv", ".tsv"});
    return formats;
}

// The path in full, so that it can be shown relative to the installation; "", with an error in the
// log, if it cannot be told. Below a working directory that is too long for the library the path
// stays as it is: relative, it leads there all the same.
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

// What a link leads to counts. False, with an error in the log, if it cannot be told.
bool isDirectory(const std::filesystem::path& path, bool& answer) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    answer = std::filesystem::is_directory(status);
    if (status.type() != std::filesystem::file_type::none) return true;
    kxLog::error("Couldn't look at '%s': %s", path.c_str(), error.message().c_str());
    return false;
}

// Appends the file itself, or all files below a directory, sorted. False if a directory cannot be
// read.
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
        errno = source.error;  // by now it could be opened
        fail("Couldn't open '" + source.path + "'");
    }
}

// Reports on one file; false if it cannot be read.
bool report(const SourceFile& source, const kxFileExtension& formats) {
    const bool isReadable = static_cast<bool>(source.file);
    if (!isReadable) explain(source);
    // The extension of the name, not of the path: a dot in a directory's name would count too.
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

// Whether nothing is at a path, or only a link that leads nowhere. False if that cannot be told, or
// if it is something that a copy cannot replace.
bool look(const std::string& path, bool& isFree) {
    struct stat info {};
    isFree = stat(path.c_str(), &info) != 0;
    if (!isFree && !S_ISREG(info.st_mode)) {
        errno = S_ISDIR(info.st_mode) ? EISDIR : EEXIST;
        return false;
    }
    return !isFree || errno == ENOENT;
}

// Copies one file, asking before it overwrites another. A file that the user keeps is no failure.
bool copyTo(const std::string& directory, const SourceFile& source) {
    const std::string target = directory + '/' + kxFile::getFileName(source.path);
    if (isSameFile(source.path, target)) {
        kxLog::error("'%s' is where the copy would go", source.path.c_str());
        return false;
    }
    bool isFree = false;
    if (!look(target, isFree)) return fail("Couldn't copy to '" + target + "'");
    // Where nothing is, checkWrite() would create a file to find out, also where a link leads to:
    // copyFile() finds out by itself, and follows no link.
    if (!isFree) {
        // A refusal and a file that cannot be written both answer false; only the latter is logged.
        kxLog::clearLastError();
        const int before = answeredQuestions();
        const bool mayWrite = kxFile::checkWrite(target, /*ask=*/true, /*log=*/true);
        const bool isAnswered = answeredQuestions() > before;
        if (mayWrite && !isAnswered)  // it could not look at the file, and so did not ask
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
// std::cout: what has failed at any time shows here.
bool isOutputWritten() {
    std::cout.flush();
    return std::fflush(stdout) == 0 && std::ferror(stdout) == 0 && std::cout.good();
}

int run(int argc, char** argv) {
    // First of all, before anything asks for a directory: where are we installed?
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

// A program may be started with its standard streams closed. The next file that it opens would take
// the place of one, and receive what is meant for it. Opened the wrong way round, each still fails
// when it is used.
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
    std::signal(SIGPIPE, SIG_IGN);  // a reader that has gone is an error like any other
    int exitCode = 1;
    // What a host does not catch ends it at once: nothing is removed, and nobody told why.
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
