// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A place for the files of benchmarks, and their contents.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace kxbench {

/// The path of a file in a new directory, which is removed at the end of the program with all that
/// is in it. In memory where the system has a place for that, so that no disk decides.
inline std::string scratch(const std::string& name) {
    struct Directory {
        std::string path = std::filesystem::is_directory("/dev/shm")
                               ? "/dev/shm"
                               : std::filesystem::temp_directory_path().string();
        Directory() {
            path += "/kxbench-XXXXXX";
            if (!mkdtemp(path.data())) std::abort();
        }
        ~Directory() {
            std::error_code ignored;
            std::filesystem::remove_all(path, ignored);
        }
    };
    static const Directory directory;
    return directory.path + '/' + name;
}

inline std::string slurp(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace kxbench
