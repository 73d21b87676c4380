// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Several of Boost's CRC-32 calculations side by side.
#pragma once

#include <boost/crc.hpp>
#include <cstddef>

namespace kx::detail {

/// The CRC-32 of IEEE 802.3 and zlib.
using BoostCrc32 = boost::crc_optimal<32, 0x04C11DB7, 0xFFFFFFFF, 0xFFFFFFFF, true, true>;

/// Does what crc.process_bytes(data, size) does, in a fifth of the time if there are some
/// kilobytes. A single CRC spends its time waiting, because each byte's look-up needs the result of
/// the one before.
void processBytesInLanes(BoostCrc32& crc, const void* data, std::size_t size);

}  // namespace kx::detail
