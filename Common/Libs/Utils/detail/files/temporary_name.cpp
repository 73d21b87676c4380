// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/files/temporary_name.h"

#include "kxFile.h"

namespace kx::detail {

std::string nextFreeName(const std::string& directory, const std::string& prefix,
                         std::uint32_t& count) {
    if (directory.empty() || prefix.empty()) return {};
    for (;;) {
        std::string name = prefix + std::to_string(static_cast<std::int32_t>(count++));
        std::string path = directory;
        if (!kxFile::exists(path.append("/").append(name))) return name;
    }
}

}  // namespace kx::detail
