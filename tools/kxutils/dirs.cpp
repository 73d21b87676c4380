// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils dirs: the installation layout as the library sees it.
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "directories.h"
#include "kxPlatform.h"
#include "kxUtils.h"
#include "session.h"

namespace {

// Initialises the library's layout without what comes with it: init() creates the preferences
// directory, which a look at an installation must not. So it is led below a device, where nothing
// can be created; returns the preferences directory that it would have taken.
std::string initLayout(const std::string& application, Report& report) {
    const std::string nowhere = "/dev/null/";
    const char* const variable = std::getenv("HOME");
    const std::string home = variable ? variable : "$HOME";  // which init() then leaves as it is
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

// What the shell calls this program may be a name that it has found by PATH.
std::string ownPath() {
    std::error_code ignored;
    return std::filesystem::read_symlink("/proc/self/exe", ignored).string();
}

void run(const std::string& application, Session& session) {
    Report& report = session.report;
    const std::string preferences =
        initLayout(application.empty() ? ownPath() : application, report);
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
        std::error_code ignored;
        const bool exists = std::filesystem::is_directory(path, ignored);
        setBytes(item.fields, "path", path);
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
