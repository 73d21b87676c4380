// Each method of kxCRC32 as one would write it down, compiled with -O3.
#pragma once

#include <cstdint>

namespace plain {

std::uint32_t crcBitwise(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crcHalfByte(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crc1Byte(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crc4Bytes(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t crc8Bytes(const void* data, unsigned long length, std::uint32_t previous);
std::uint32_t jesteress(const void* data, unsigned long length, std::uint32_t seed);

}  // namespace plain
