// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils dirs: the installation layout as the library sees it.
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "directories.h"
#include "kxFile.h"
#include "kxPlatform.h"
#include "kxUtils.h"
#include "session.h"

namespace fs = std::filesystem;

namespace {

// Initialises the library's layout without its side effect: init() creates the preferences
// directory, which must not happen when somebody only looks at an installation. It is therefore
// made to try below a device, where nothing can be created. Returns the preferences directory that
// it would have used.
std::string initLayout(const std::string& application, Report& report) {
    const std::string nowhere = "/dev/null/";
    const char* const variable = std::getenv("HOME");
    const std::string home = variable ? variable : "$HOME";  // init() leaves it unexpanded
    if (!variable) report.note("HOME is not set: the preferences are below a directory \"$HOME\"");

    kxUtils::setenv("HOME", nowhere.c_str());
    kxPlatform::init(application.c_str());
    if (variable)
        kxUtils::setenv("HOME", home.c_str());
    else
        kxUtils::unsetenv("HOME");

    if (home.empty()) return std::string(kxPlatform::getBaseDir()) + "/preferences";
    const std::string below = std::string(kxPlatform::getPreferencesDir()).substr(nowhere.size());
    return home + (home.back() == '/' ? "" : "/") + below;
}

// The name by which the shell calls this program may have been found in PATH.
std::string ownPath() {
    std::error_code error;
    const auto path = fs::read_symlink("/proc/self/exe", error);
    if (error) throw Failure(Status::unreadable, "this program's path: " + error.message());
    return path.string();
}

// True for a directory; throws Failure where the system does not tell.
bool isDirectory(const fs::path& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::none)
        throw Failure(Status::unreadable, path.string() + ": " + error.message());
    return fs::is_directory(status);
}

void requireSame(const fs::path& expected, const char* answer) {
    std::error_code error;
    if (!fs::equivalent(expected, answer, error))
        throw Failure(Status::unreadable, expected.string() + ": cannot be entered");
}

// kxPlatform::init() says nothing where it cannot find a directory out, and takes another one.
void requireRightAnswers(const std::string& application) {
    const fs::path directory = kxFile::getFilePath(application), up = "../..";
    if (directory.empty() || !isDirectory(directory)) return;
    requireSame(directory, kxPlatform::getExeDir());
    const fs::path program = directory / up / "bin" / kxPlatform::getPlatform();
    const bool isInstalled =
        isDirectory(program) && kxFile::exists(program / fs::path(kxPlatform::getAppName()));
    requireSame((isInstalled ? directory : fs::path(ownPath()).parent_path()) / up,
                kxPlatform::getBaseDir());
}

void run(const std::string& given, Session& session) {
    Report& report = session.report;
    const std::string application = given.empty() ? ownPath() : given;
    const std::string preferences = initLayout(application, report);
    requireRightAnswers(application);
    report.set("application", kxPlatform::getAppName());
    addDirectory(report, "base", kxPlatform::getBaseDir());
    addDirectory(report, "executable", kxPlatform::getExeDir());
    addDirectory(report, "bin", kxPlatform::getBinDir());
    addDirectory(report, "lib", kxPlatform::getLibDir());
    addDirectory(report, "plugins", kxPlatform::getPluginsDir());
    addDirectory(report, "Qt plugins", kxPlatform::getQtPluginsDir());
    addDirectory(report, "data", kxPlatform::getDataDir());
    addDirectory(report, "examples", kxPlatform::getExamplesDir());
    addDirectory(report, "preferences", preferences);
}

}  // namespace

void addDirectory(Report& report, const std::string& name, const std::string& path) {
    report.add(name, [&](Item& item) {
        setBytes(item.fields, "path", path);
        std::error_code error;
        const auto status = fs::status(path, error);
        if (status.type() == fs::file_type::none)  // nobody knows
            throw Failure(Status::unreadable, path + ": " + error.message());
        const bool exists = fs::is_directory(status);
        item.fields["exists"] = exists;
        std::string columns = name;
        columns.resize(13, ' ');
        item.text = report.nameLine(columns + (exists ? "exists   " : "missing  "), path);
    });
}

Work addDirs(Arguments& arguments, Session& session) {
    const auto application = std::make_shared<std::string>();
    arguments
        .text("--app", *application,
              "Path by which the application is started (default: the path of this program)")
        .typeName("PATH");
    addZeroOption(arguments, session);
    arguments.footer(
        "No directory is created.\n\n"
        "Example:\n  kxutils dirs --app /opt/talo/bin/MAC/talo");
    return [application, &session] { run(*application, session); };
}
