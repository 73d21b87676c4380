// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Reads a file of any size through one buffer, and makes its Base64 text and its CRC-32 in one
// pass.
//
//     stream_codec FILE
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <cached_ifstream.h>
#include <kxBase64.h>
#include <kxCRC32.h>

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    cached_ifstream in(argv[1], 1 << 20);
    if (in.fail()) {
        std::perror(argv[1]);
        return 1;
    }

    // A multiple of 3, so that there is padding only at the very end.
    std::vector<char> bytes(196608);
    std::string text;
    std::uint32_t crc = 0;
    int error = 0;
    // A read error ends the stream just as the end of the file does; errno tells them apart.
    const auto readBlock = [&] {
        errno = 0;
        in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        if (errno != 0) error = errno;
        return in.gcount() > 0;
    };
    while (readBlock()) {
        const auto n = static_cast<unsigned long>(in.gcount());
        crc = kxCRC32::calc(bytes.data(), n, crc);
        kxBase64::encode(bytes.data(), n, text);
        std::cout << text;
    }
    if (error != 0) {
        std::cerr << argv[1] << ": " << std::strerror(error) << '\n';
        return 1;
    }
    std::cout << "\nCRC-32: " << std::hex << std::uppercase << crc << '\n';
    return std::cout.flush() ? 0 : 1;  // the terminal may be a full disk
}
