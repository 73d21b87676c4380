// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Feeds files to a fuzz target, for builds without libFuzzer.
//
//     NAME_corpus FOLDER
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "support.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    if (argc != 2) kxfuzz::fail("usage: NAME_corpus FOLDER");
    std::vector<std::string> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(argv[1], error))
        files.push_back(entry.path());
    if (files.empty()) kxfuzz::fail(std::string("no files in ") + argv[1]);
    std::sort(files.begin(), files.end());

    for (const std::string& file : files) {
        const std::string bytes = kxfuzz::readFile(file);
        // Exactly as large as the file, so that a read beyond its end is noticed.
        const std::vector<std::uint8_t> input(bytes.begin(), bytes.end());
        try {
            LLVMFuzzerTestOneInput(input.data(), input.size());
        } catch (const std::exception& e) {
            kxfuzz::fail(file + " throws " + e.what());
        }
    }
    return 0;
}
