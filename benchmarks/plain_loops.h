// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the library does, written in the plainest way and compiled with -O3.
#pragma once

#include <cstdint>

namespace plain {

std::uint32_t crcBitwise(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crcHalfByte(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crc1Byte(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crc4Bytes(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crc8Bytes(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t jesteress(const void* data, unsigned long length, std::uint32_t seed);

unsigned long base64Encode(const char* data, unsigned long n, char* out);
/// Skips characters outside the alphabet; does not know "=".
unsigned long base64Decode(const char* text, unsigned long n, char* out);

}  // namespace plain
