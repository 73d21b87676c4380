// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The check value of CRC-32, at once and in pieces, and a hash.
#include <iostream>

#include <kxCRC32.h>

int main() {
    const char* const data = "123456789";
    std::cout << std::hex << std::uppercase << kxCRC32::calc(data, 9) << '\n';

    std::uint32_t crc = 0;
    crc = kxCRC32::calc(data, 4, crc);
    crc = kxCRC32::calc(data + 4, 5, crc);
    std::cout << crc << '\n';

    std::cout << kxCRC32::calc_halfbyte(data, 9) << '\n';  // slower, with a table of 64 bytes
    std::cout << (kxCRC32::calc_FNV1A_Jesteress(data, 9) != crc) << '\n';
}
// Prints:
// CBF43926
// CBF43926
// CBF43926
// 1
