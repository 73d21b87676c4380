// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <unistd.h>

#include "detail/platform/executable_path.h"

namespace kx::detail {

std::string executablePath() {
    char buffer[1024];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer);
    // A path that fills the buffer may have been truncated.
    if (length < 0 || length == static_cast<ssize_t>(sizeof buffer)) return {};
    return {buffer, static_cast<std::size_t>(length)};
}

}  // namespace kx::detail
