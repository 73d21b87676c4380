// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "options.h"

#include <exception>

#include "complain.h"

// CLI11's header has static objects that need memory before main() can catch anything. This object
// comes first in the file, so it is made before them.
[[maybe_unused]] static const std::terminate_handler handlerBefore =
    std::set_terminate(endWithComplaint);

#include <CLI/CLI.hpp>

bool parseOptions(int argc, char** argv, Options& options, int& exitCode) {
    CLI::App app("talo: reports on files and copies them, a host application without a window",
                 "talo");
    app.add_option("path", options.paths, "Files and directories (default: the installed data)");
    app.add_option("--copy-to", options.copyTo, "Copy each file into this directory")
        ->type_name("DIR");
    app.add_option("--banner", options.banner, "Write the version name as a picture (PPM)")
        ->type_name("FILE");
    app.add_option("--answer", options.answer, "Answer every question instead of asking")
        ->check(CLI::IsMember({"yes", "no", "cancel"}));
    app.add_option("--log", options.logFile, "Log to this file")->type_name("FILE");
    app.add_option("--log-format", options.logFormat, "Format of the log file")
        ->check(CLI::IsMember({"text", "html", "csv"}))
        ->capture_default_str();
    app.add_option("--full-name", options.fullName, "Name to present")->capture_default_str();
    app.add_option("--year", options.year, "Version year to present");
    app.add_option("--dpi", options.dpi, "Resolution of the display");
    try {
        app.parse(argc, argv);
        return true;
    } catch (const CLI::ParseError& error) {
        exitCode = app.exit(error) == 0 ? 0 : 2;
        return false;
    }
}
