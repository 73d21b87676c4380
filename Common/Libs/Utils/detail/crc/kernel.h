// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The kernels of kxCRC32::calc.
#pragma once

#include <cstdint>

#include "detail/cpu/kernel_table.h"

namespace kx::detail {

/// `calc` has the arguments and the result of kxCRC32::calc.
struct Crc32Kernel {
    const char* name;
    bool (*usable)();
    std::uint32_t (*calc)(const void* data, unsigned long length, std::uint32_t previous);
};

Crc32Kernel crc32Vpclmulqdq(), crc32Pclmulqdq();  // x86-64 only
Crc32Kernel crc32Portable();
KernelTable<Crc32Kernel> crc32Kernels();

/// The `calc` of crc32Portable(): eight bytes at a time by look-up.
std::uint32_t crc32EightBytes(const void* data, unsigned long length, std::uint32_t previous);

}  // namespace kx::detail
