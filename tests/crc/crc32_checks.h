// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The checks that every implementation of CRC-32 must pass.
#pragma once

#include <gtest/gtest.h>

#include <boost/crc.hpp>
#include <cstdint>
#include <string>

#include "bytes.h"
#include "guarded.h"

namespace kxtest {

using Crc32Function = std::uint32_t (*)(const void*, unsigned long, std::uint32_t);

inline std::uint32_t boostCrc(const std::string& bytes) {
    boost::crc_32_type crc;
    crc.process_bytes(bytes.data(), bytes.size());
    return crc.checksum();
}

/// Expects equal results for `bytes` just before a guard page and, at any offset, after one.
inline void expectEverywhere(Crc32Function function, const std::string& bytes,
                             std::uint32_t previous, std::uint32_t expected) {
    static const Guarded memory(4096);
    memory.fill('\x5a');
    ASSERT_EQ(function(memory.atEnd(bytes), bytes.size(), previous), expected) << bytes.size();
    for (std::size_t offset = 0; offset < 64; ++offset) {
        const char* data = memory.atBegin(bytes, offset);
        ASSERT_EQ(function(data, bytes.size(), previous), expected)
            << bytes.size() << " bytes at offset " << offset;
    }
}

}  // namespace kxtest
