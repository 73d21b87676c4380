// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "plain_loops.h"

#include <array>
#include <cstring>
#include <string_view>

namespace plain {
namespace {

constexpr std::uint32_t polynomial = 0xEDB88320;

constexpr std::uint32_t steps(std::uint32_t crc, int bits) {
    for (int i = 0; i < bits; ++i) crc = (crc >> 1) ^ ((crc & 1) != 0 ? polynomial : 0);
    return crc;
}

constexpr std::array<std::uint32_t, 16> makeNibbles() {
    std::array<std::uint32_t, 16> table{};
    for (std::uint32_t i = 0; i < 16; ++i) table[i] = steps(i, 4);
    return table;
}
constexpr auto nibbles = makeNibbles();

constexpr std::array<std::array<std::uint32_t, 256>, 8> makeTables() {
    std::array<std::array<std::uint32_t, 256>, 8> tables{};
    for (std::uint32_t i = 0; i < 256; ++i)
        for (std::size_t k = 0; k < 8; ++k) tables[k][i] = steps(i, static_cast<int>(8 * k) + 8);
    return tables;
}
constexpr auto tables = makeTables();

constexpr std::string_view alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr std::array<unsigned char, 256> makeValues() {
    std::array<unsigned char, 256> table{};
    for (unsigned char& value : table) value = 64;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        table[static_cast<unsigned char>(alphabet[i])] = static_cast<unsigned char>(i);
    return table;
}
constexpr auto values = makeValues();

const unsigned char* bytesOf(const void* data) { return static_cast<const unsigned char*>(data); }

std::uint32_t word(const unsigned char* p) {
    std::uint32_t w;
    std::memcpy(&w, p, sizeof w);
    return w;
}

}  // namespace

std::uint32_t crcBitwise(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const unsigned char* p = bytesOf(data);
    while (length-- != 0) crc = steps(crc ^ *p++, 8);
    return ~crc;
}

std::uint32_t crcHalfByte(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const unsigned char* p = bytesOf(data);
    while (length-- != 0) {
        crc = nibbles[(crc ^ *p) & 15] ^ (crc >> 4);
        crc = nibbles[(crc ^ (*p >> 4U)) & 15] ^ (crc >> 4);
        ++p;
    }
    return ~crc;
}

std::uint32_t crc1Byte(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const unsigned char* p = bytesOf(data);
    while (length-- != 0) crc = (crc >> 8) ^ tables[0][(crc & 0xFF) ^ *p++];
    return ~crc;
}

std::uint32_t crc4Bytes(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const unsigned char* p = bytesOf(data);
    for (; length >= 4; length -= 4, p += 4) {
        crc ^= word(p);
        crc = tables[3][crc & 0xFF] ^ tables[2][(crc >> 8) & 0xFF] ^ tables[1][(crc >> 16) & 0xFF] ^
              tables[0][crc >> 24];
    }
    return crc1Byte(p, length, ~crc);
}

std::uint32_t crc8Bytes(const void* data, unsigned long length, std::uint32_t previous) {
    std::uint32_t crc = ~previous;
    const unsigned char* p = bytesOf(data);
    for (; length >= 8; length -= 8, p += 8) {
        const std::uint32_t one = word(p) ^ crc, two = word(p + 4);
        crc = tables[0][two >> 24] ^ tables[1][(two >> 16) & 0xFF] ^ tables[2][(two >> 8) & 0xFF] ^
              tables[3][two & 0xFF] ^ tables[4][one >> 24] ^ tables[5][(one >> 16) & 0xFF] ^
              tables[6][(one >> 8) & 0xFF] ^ tables[7][one & 0xFF];
    }
    return crc1Byte(p, length, ~crc);
}

std::uint32_t jesteress(const void* data, unsigned long length, std::uint32_t seed) {
    constexpr std::uint32_t prime = 709607;
    std::uint32_t hash = seed != 0 ? seed : 2166136261U;
    const unsigned char* p = bytesOf(data);
    for (; length >= 8; length -= 8, p += 8) {
        const std::uint32_t first = word(p);
        hash = (hash ^ ((first << 5 | first >> 27) ^ word(p + 4))) * prime;
    }
    if ((length & 4) != 0) {
        hash = (hash ^ word(p)) * prime;
        p += 4;
    }
    if ((length & 2) != 0) {
        hash = (hash ^ static_cast<std::uint32_t>(p[0] | p[1] << 8)) * prime;
        p += 2;
    }
    if ((length & 1) != 0) hash = (hash ^ *p) * prime;
    return hash ^ (hash >> 16);
}

unsigned long base64Encode(const char* data, unsigned long n, char* out) {
    const unsigned char* p = bytesOf(data);
    char* const begin = out;
    for (; n >= 3; n -= 3, p += 3) {
        const unsigned int a = p[0], b = p[1], c = p[2];
        *out++ = alphabet[a >> 2];
        *out++ = alphabet[(a & 3) << 4 | b >> 4];
        *out++ = alphabet[(b & 15) << 2 | c >> 6];
        *out++ = alphabet[c & 63];
    }
    if (n != 0) {
        const unsigned int a = p[0], b = n == 2 ? p[1] : 0;
        *out++ = alphabet[a >> 2];
        *out++ = alphabet[(a & 3) << 4 | b >> 4];
        *out++ = n == 2 ? alphabet[(b & 15) << 2] : '=';
        *out++ = '=';
    }
    *out = '\0';
    return static_cast<unsigned long>(out - begin);
}

unsigned long base64Decode(const char* text, unsigned long n, char* out) {
    const unsigned char* p = bytesOf(text);
    char* const begin = out;
    std::uint32_t bits = 0;
    int held = 0;
    for (; n != 0; --n) {
        const unsigned char value = values[*p++];
        if (value == 64) continue;
        bits = bits << 6 | value;
        if (++held < 4) continue;
        *out++ = static_cast<char>(bits >> 16);
        *out++ = static_cast<char>(bits >> 8);
        *out++ = static_cast<char>(bits);
        held = 0;
    }
    return static_cast<unsigned long>(out - begin);
}

}  // namespace plain
