// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "complain.h"

#include <unistd.h>

#include <cstring>
#include <exception>
#include <initializer_list>
#include <new>

void complain(const char* text) {
    for (const char* part : {"talo: ", text, "\n"})
        if (write(STDERR_FILENO, part, std::strlen(part)) < 0) return;  // there is nobody to tell
}

void endWithComplaint() {
    try {
        if (const auto exception = std::current_exception()) std::rethrow_exception(exception);
        complain("ended without an exception");
    } catch (const std::bad_alloc&) {
        complain("out of memory");
    } catch (...) {
        complain("ended by an exception");
    }
    _exit(1);
}
