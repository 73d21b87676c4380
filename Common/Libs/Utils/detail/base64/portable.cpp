// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64 for every processor.
#include "detail/base64/alphabet.h"
#include "detail/base64/decoder.h"
#include "detail/base64/kernel.h"

namespace kx::detail {
namespace {

constexpr char character(unsigned int sixBits) { return base64Alphabet[sixBits & 63]; }

}  // namespace

unsigned long base64EncodePortable(const char* data, unsigned long n, char* out) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    char* const begin = out;
    for (; n >= 3; n -= 3, bytes += 3, out += 4) {
        const unsigned int bits =
            static_cast<unsigned int>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
        out[0] = character(bits >> 18);
        out[1] = character(bits >> 12);
        out[2] = character(bits >> 6);
        out[3] = character(bits);
    }
    if (n != 0) {
        const unsigned int first = bytes[0], second = n == 2 ? bytes[1] : 0U;
        *out++ = character(first >> 2);
        *out++ = character(first << 4 | second >> 4);
        *out++ = n == 2 ? character(second << 2) : '=';
        *out++ = '=';
    }
    *out = '\0';
    return static_cast<unsigned long>(out - begin);
}

// Stops at the first group that holds anything but characters of the alphabet.
Base64Progress base64DecodeGroupsPortable(const char* text, unsigned long n, char* out) {
    unsigned long read = 0, written = 0;
    for (; n - read >= 4; read += 4, written += 3) {
        const unsigned int a = base64Map[byteOf(text[read])], b = base64Map[byteOf(text[read + 1])],
                           c = base64Map[byteOf(text[read + 2])],
                           d = base64Map[byteOf(text[read + 3])];
        if (((a | b | c | d) & base64NoValue) != 0) break;
        out[written] = static_cast<char>(a << 2 | b >> 4);
        out[written + 1] = static_cast<char>(b << 4 | c >> 2);
        out[written + 2] = static_cast<char>(c << 6 | d);
    }
    return {read, written};
}

Base64Kernel base64Portable() {
    return {"portable", [] { return true; }, base64EncodePortable,
            base64Decode<base64DecodeGroupsPortable>, base64DecodeGroupsPortable};
}

}  // namespace kx::detail
