// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// talo: a host application without a window, to read when you write one of your own.
//
// It starts from an installation layout, tells the library who it is, answers the library's
// questions on the terminal, and reports on files. It exits with 0 when all went well, 1 when a
// file failed, 2 on wrong usage.
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "banner.h"
#include "file_copy.h"
#include "integrity.h"
#include "kxCPUInfo.h"
#include "kxFile.h"
#include "kxFileExtension.h"
#include "kxLog.h"
#include "kxPlatform.h"
#include "kxString.h"
#include "options.h"
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

// Everything that a host sets up before it works. The order matters: the log file's place depends
// on the application's name, its head on the format, the version name on the full name and year.
void startUp(const Options& options) {
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

// The path in full, so that it can be shown relative to the installation.
std::string absolutePath(const std::string& path) {
    const std::string expanded = kxFile::expandFilename(path);  // "~/x" and "$DIR/x"
    return kxFile::isRelative(expanded) ? kxFile::rel2Abs(kxFile::getCurrentDir(), expanded)
                                        : expanded;
}

// Appends the file itself, or all files below a directory, sorted. False if a directory cannot be
// read.
bool listFiles(const std::string& path, std::vector<std::string>& files) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    // Nobody knows what it is, or where: without a current directory there is no path in full.
    if (path.empty() || status.type() == std::filesystem::file_type::none) {
        kxLog::error("Couldn't look at '%s': %s", path.c_str(), error.message().c_str());
        return false;
    }
    if (!std::filesystem::is_directory(status)) {
        files.push_back(path);
        return true;
    }
    std::vector<std::string> found;
    try {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
            if (!entry.is_directory()) found.push_back(entry.path().string());
    } catch (const std::filesystem::filesystem_error& failure) {
        kxLog::error("Couldn't list '%s': %s", path.c_str(), failure.code().message().c_str());
        return false;
    }
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
    return true;
}

// Reports on one file; false if it cannot be read.
bool report(const std::string& path, const kxFileExtension& formats) {
    const bool isReadable = kxFile::checkRead(path, /*ask=*/false, /*log=*/true);
    // The extension of the name, not of the path: a dot in a directory's name would count too.
    const std::string name = kxFile::getFileName(path), extension = kxFile::getExtension(name);
    const std::string format = formats.getName('.' + extension);
    const std::string size =
        kxString::beautifyDigits(std::to_string(kxFile::getFileSize(path)), ",", 3);
    std::cout << name << '\n'
              << "  extension  " << extension << '\n'
              << "  base name  " << kxFile::getBaseName(name) << '\n'
              << "  format     " << (format.empty() ? "unknown" : format) << '\n'
              << "  size       " << size << '\n'
              << "  path       " << kxFile::abs2Rel(kxPlatform::getBaseDir(), path) << '\n'
              << "  readable   " << (isReadable ? "yes" : "no") << '\n';
    return isReadable;
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code ignored;
    return std::filesystem::equivalent(a, b, ignored);
}

// Copies one file, asking before it overwrites another. A file that the user keeps is no failure.
bool copyTo(const std::string& directory, const std::string& path) {
    const std::string target = directory + '/' + kxFile::getFileName(path);
    if (isSameFile(path, target)) {  // copying would empty it
        kxLog::error("'%s' is where the copy would go", path.c_str());
        return false;
    }
    // Both a refusal and a file that cannot be written answer false; only the latter is logged.
    kxLog::clearLastError();
    if (!kxFile::checkWrite(target, /*ask=*/true, /*log=*/true)) {
        std::cout << "  copied     no\n";
        return *kxLog::getLastError() == '\0';
    }
    const bool isCopied = copyFile(path, target);
    if (!isCopied) kxLog::error("Couldn't copy '%s' to '%s'", path.c_str(), target.c_str());
    std::cout << "  copied     " << (isCopied ? target : "no") << '\n';
    return isCopied;
}

}  // namespace

int main(int argc, char** argv) {
    // First of all, before anything asks for a directory: where are we installed?
    kxPlatform::init(argv[0]);

    Options options;
    int exitCode = 0;
    if (!parseOptions(argc, argv, options, exitCode)) return exitCode;
    startUp(options);

    std::vector<std::string> paths = options.paths;
    if (paths.empty()) paths.emplace_back(kxPlatform::getDataDir());
    const std::string target = options.copyTo.empty() ? "" : absolutePath(options.copyTo);
    if (!options.copyTo.empty() && !kxFile::createPath(target)) {
        kxFile::perror("Couldn't create '" + target + "'");
        return 1;
    }

    bool allWell = true;
    if (!options.banner.empty() && !writeBanner(options.banner, kxPlatform::getAppVersionName())) {
        kxFile::perror("Couldn't write '" + options.banner + "'");
        allWell = false;
    }
    const kxFileExtension formats = knownFormats();
    std::vector<std::string> files;
    for (const std::string& path : paths) allWell = listFiles(absolutePath(path), files) && allWell;
    for (const std::string& file : files) {
        const bool isDone =
            report(file, formats) && tryChecksum(file) && (target.empty() || copyTo(target, file));
        allWell = allWell && isDone;
    }
    std::cout << std::flush;
    kxLog::info("%s", allWell ? "All files are well." : "Some files failed.");
    return allWell ? 0 : 1;
}
