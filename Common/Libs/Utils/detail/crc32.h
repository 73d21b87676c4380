// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The arithmetic of CRC-32, and the kernels of kxCRC32::calc.
#pragma once

#include <cstdint>

#include "detail/kernel_table.h"

namespace kx::detail {

// A register holds a polynomial over GF(2) of a degree below 32, reflected: bit 31 is the
// coefficient of x^0, bit 0 that of x^31. This is the polynomial P of the CRC-32, 0x04C11DB7
// reflected, without its x^32.
constexpr std::uint32_t crc32Polynomial = 0xEDB88320;

/// One bit step multiplies the register by x, modulo P.
constexpr std::uint32_t crc32BitSteps(std::uint32_t crc, int count) {
    for (; count != 0; --count) crc = (crc >> 1) ^ ((crc & 1) != 0 ? crc32Polynomial : 0);
    return crc;
}

/// Arguments and result of `calc` are those of kxCRC32::calc.
struct Crc32Kernel {
    const char* name;
    bool (*usable)();
    std::uint32_t (*calc)(const void* data, unsigned long length, std::uint32_t previous);
};

Crc32Kernel crc32Vpclmulqdq(), crc32Pclmulqdq();  // x86-64 only
Crc32Kernel crc32Portable();
KernelTable<Crc32Kernel> crc32Kernels();

/// That of crc32Portable(): eight bytes at a time by look-up.
std::uint32_t crc32EightBytes(const void* data, unsigned long length, std::uint32_t previous);

}  // namespace kx::detail
