// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <fcntl.h>

#include "detail/platform/command_output.h"

namespace kx::detail {

// This system does not promise to support the mode "e".
std::FILE* openCommandOutput(const char* command) {
    std::FILE* const output = popen(command, "r");
    if (output) fcntl(fileno(output), F_SETFD, FD_CLOEXEC);
    return output;
}

}  // namespace kx::detail
