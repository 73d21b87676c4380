// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Asks the user before a file is overwritten: the library asks the question, and the application
// shows it. A real application would open a window; here the answer is the second argument.
//
//     ask_before_overwriting FILE yes|no
#include <cstring>
#include <iostream>
#include <string>

#include <kxFile.h>
#include <kxMessage.h>
#include <kxUtils.h>

namespace {

bool userSaysYes = false, isRefused = false;

// Every request from the library comes here; false means "not shown".
bool answer(const char* request, kxMessage& message, int /*flags*/) {
    if (std::strcmp(request, "showMainWarning") != 0) return false;
    std::string text, button;
    getFromMessage(message, "text", text);
    if (!getFromMessage(message, "button0", button)) {  // a notice, which asks nothing
        std::cout << text << '\n';
        return true;
    }
    std::cout << text << (userSaysYes ? " yes" : " no") << '\n';
    isRefused = !userSaysYes;
    // The buttons are in the message as well: the first one is "Yes", the second one "No".
    message.set("button", userSaysYes ? 0 : 1, /*overwrite=*/true);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const std::string path = argv[1];
    userSaysYes = std::strcmp(argv[2], "yes") == 0;
    kxUtils::init(answer);

    if (!kxFile::checkWrite(path, /*ask=*/true, /*log=*/true)) {
        if (!isRefused) return 1;  // it cannot be written; the error was printed
        std::cout << "kept\n";
        return std::cout.flush() ? 0 : 1;
    }
    if (!kxFile::write(path, "new content\n")) {
        kxFile::perror(path);
        return 1;
    }
    std::cout << "written\n";
    return std::cout.flush() ? 0 : 1;  // the terminal may be a full disk
}
