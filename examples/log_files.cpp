// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Logs to a text file and also to a callback, with which an application would show warnings in its
// status line.
//
//     log_files FOLDER        writes FOLDER/session.log
#include <iostream>
#include <string>

#include <kxFile.h>
#include <kxLog.h>

namespace {

std::string statusLine;

// Runs while the log's lock is held: it stores the text and must not log itself.
void showInStatusLine(const char* text) { statusLine = text; }

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;

    kxLog::setWarningCB(showInStatusLine);
    kxLog::setLogFormat(1);  // text; to be chosen before the file
    kxLog::setLogFile((std::string(argv[1]) + "/session.log").c_str());
    if (!kxLog::getLogFile()) return 1;  // an error on standard error has said why

    kxLog::info("loading %s", "engine.obj");
    kxLog::warning("%d of %d faces dropped", 3, 1200);
    kxLog::info("done");

    // The log does not report whether a line has reached the file; if it matters, look into the
    // file.
    std::string lines;
    if (!kxFile::read(kxLog::getLogFile(), lines)) {
        kxFile::perror(kxLog::getLogFile());
        return 1;
    }
    std::cout << "status line: " << statusLine << '\n' << lines;
    return std::cout.flush() ? 0 : 1;  // the terminal may be a full disk
}
