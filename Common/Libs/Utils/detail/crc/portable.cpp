// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// CRC-32 for every processor.
#include "detail/bytes/little_endian.h"
#include "detail/crc/kernel.h"
#include "detail/crc/table.h"

namespace kx::detail {

std::uint32_t crc32EightBytes(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const auto* p = static_cast<const unsigned char*>(data);
    for (; length >= 8; length -= 8, p += 8) {
        const std::uint32_t one = loadLittleEndian32(p) ^ crc, two = loadLittleEndian32(p + 4);
        crc = lookUpWord<0>(two) ^ lookUpWord<4>(one);
    }
    return ~oneByOne(crc, p, length, lookUpByte);
}

Crc32Kernel crc32Portable() {
    return {"portable", [] { return true; }, crc32EightBytes};
}

}  // namespace kx::detail
