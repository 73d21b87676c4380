// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <mach-o/dyld.h>

#include <cstdint>

#include "detail/platform/executable_path.h"

namespace kx::detail {

std::string executablePath() {
    char buffer[1024];
    std::uint32_t size = sizeof buffer;
    return _NSGetExecutablePath(buffer, &size) == 0 ? buffer : "";
}

}  // namespace kx::detail
