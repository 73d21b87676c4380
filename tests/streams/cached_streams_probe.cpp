// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Uses one stream on one file, so that a test can count its system calls.
//   cached_streams_probe read|seek NAME BUFFER
//   cached_streams_probe write NAME BUFFER BYTES
#include <cstdlib>
#include <string>

#include "cached_ifstream.h"
#include "cached_ofstream.h"

int main(int argc, char** argv) {
    if (argc < 4) return 2;
    const std::string what = argv[1];
    const char* const name = argv[2];
    const unsigned long size = std::strtoul(argv[3], nullptr, 10);
    if (what == "read") {
        cached_ifstream in(name, size);
        char bytes[777];
        while (in.read(bytes, sizeof bytes)) in.get();
        return in.eof() ? 0 : 1;
    }
    if (what == "seek") {
        cached_ifstream in(name, size);
        for (unsigned long i = 0; i < 100; ++i) {
            in.seekg(static_cast<long>(i * 7919 % (5 * size)));
            in.get();
        }
        return in ? 0 : 1;
    }
    if (what == "write" && argc == 5) {
        cached_ofstream out(name, size);
        const std::string bytes(std::strtoul(argv[4], nullptr, 10), 'x');
        for (std::size_t i = 0; i < bytes.size(); i += 777) out << bytes.substr(i, 777);
        out.put('x');
        out.flush();
        out.close();
        return out ? 0 : 1;
    }
    return 2;
}
