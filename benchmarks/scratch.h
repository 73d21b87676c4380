// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A place for the files of the benchmarks, and the contents of these files.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace kxbench {

/// The path of a file in a new directory, which is removed with everything in it when the program
/// ends. It is in memory if the system has a place for that, so that the speed of a disk does not
/// matter.
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
