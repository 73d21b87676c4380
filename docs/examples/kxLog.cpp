// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// One message, several destinations. Errors go to standard error, in red.
#include <iostream>
#include <string>

#include <kxLog.h>

static std::string statusLine;

// Runs with the log's mutex held: it takes the text and must not log.
static void show(const char* text) { statusLine = text; }

int main() {
    std::string lines;
    kxLog::setErrorCB(show);
    kxLog::enableOutputBuffer(lines);  // HTML, unless setLogFormat has chosen another format

    kxLog::info("%d faces, %s", 1200, "a < b");
    kxLog::error("texture '%s' is missing", "oak.png");
    kxLog::disableOutputBuffer();

    std::cout << lines << "status line: " << statusLine << '\n'
              << "last error: " << kxLog::getLastError() << '\n';
}
// Prints:
// 1200 faces, a < b
// <span style="color:#008c00;">1200 faces, a &#60; b</span><br>
// <span style="color:#b40000;">texture 'oak.png' is missing</span><br>
// status line: texture 'oak.png' is missing
// last error: texture 'oak.png' is missing
