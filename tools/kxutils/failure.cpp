// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "failure.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

ExitCode worse(ExitCode a, ExitCode b) {
    constexpr ExitCode mildestFirst[] = {ExitCode::ok,          ExitCode::noFooter,
                                         ExitCode::inputOutput, ExitCode::failedCheck,
                                         ExitCode::usage,       ExitCode::internal};
    const auto rank = [&](ExitCode code) {
        return std::find(std::begin(mildestFirst), std::end(mildestFirst), code);
    };
    return rank(a) < rank(b) ? b : a;
}

const char* word(Status status) {
    switch (status) {
        case Status::ok:
            return "ok";
        case Status::bad:
            return "BAD";
        case Status::noChecksum:
            return "no checksum";
        case Status::unreadable:
            return "unreadable";
        case Status::unwritable:
            return "unwritable";
    }
    return "";
}

Failure systemFailure(Status status) { return {status, std::strerror(errno)}; }

Failure cannotWrite(const std::string& name) {
    const std::string reason = std::strerror(errno);
    return {Status::unwritable, "cannot write '" + name + "': " + reason};
}
