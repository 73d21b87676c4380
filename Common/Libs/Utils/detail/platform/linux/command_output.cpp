// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/platform/command_output.h"

namespace kx::detail {

std::FILE* openCommandOutput(const char* command) { return popen(command, "re"); }

}  // namespace kx::detail
