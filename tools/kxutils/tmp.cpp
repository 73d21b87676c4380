// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils tmp: the temporary directory as the library sees it.
#include <cstdlib>
#include <filesystem>

#include "directories.h"
#include "kxFile.h"
#include "session.h"

namespace {

std::string variable(const char* name) {
    const char* const value = std::getenv(name);
    return value ? value : "";
}

void run(Session& session) {
    std::string path, warnings;
    {
        LibraryMessages messages;
        path = kxFile::getTmpDir();
        warnings = messages.text();
    }
    if (!warnings.empty())
        session.report.note(warnings, {path, variable("TALO_TMP_DIR"), variable("TALO_ROOT")});
    addDirectory(session.report, "temporary", path);
    std::error_code ignored;
    if (!std::filesystem::is_directory(path, ignored))
        session.report.stop(ExitCode::failedCheck, "there is no temporary directory");
}

}  // namespace

Work addTmp(Arguments& arguments, Session& session) {
    addZeroOption(arguments, session);
    arguments.footer(
        "The directory is TALO_TMP_DIR if that is set, otherwise /tmp/talo, or tmp below\n"
        "TALO_ROOT.\n\n"
        "Example:\n  TALO_TMP_DIR=/scratch/talo kxutils tmp");
    return [&session] { run(session); };
}
