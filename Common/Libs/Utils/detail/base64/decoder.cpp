// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/base64/decoder.h"

#include "detail/base64/alphabet.h"

namespace kx::detail {

unsigned long Base64Decoder::decode(const char* text, unsigned long n, char* out) {
    constexpr unsigned long worthwhile = 9;  // characters that make the fast way pay
    unsigned long written = 0;
    for (unsigned long at = 0; at < n; ++at) {
        const bool isRegular = _held == 0 && _allowance == 3;
        if (isRegular && n - at >= worthwhile) {
            const Base64Progress progress = _decodeGroups(text + at, n - at, out + written);
            at += progress.read;
            written += progress.written;
            if (at == n) break;
        }
        written += take(text[at], out + written);
    }
    return written;
}

// Takes in one character. If it ends a group, writes the group's bytes and returns their number;
// otherwise returns 0.
unsigned long Base64Decoder::take(char c, char* out) {
    const unsigned char value = base64Map[byteOf(c)];
    if (value == base64Foreign) return 0;
    if (value == base64Padding) --_allowance;
    _bits = _bits << 6 | (value == base64Padding ? 0U : value);
    if (++_held < 4) return 0;
    unsigned long written = 0;
    out[written++] = static_cast<char>(_bits >> 16);
    if (_allowance >= 2) out[written++] = static_cast<char>(_bits >> 8);
    if (_allowance >= 3) out[written++] = static_cast<char>(_bits);
    _bits = 0;
    _held = 0;
    return written;
}

unsigned long base64DecodeRest(Base64DecodeGroups decodeGroups, const char* text, unsigned long n,
                               char* out, Base64Progress done) {
    Base64Decoder decoder(decodeGroups);
    const unsigned long written =
        done.written + decoder.decode(text + done.read, n - done.read, out + done.written);
    return decoder.isComplete() ? written : 0;
}

}  // namespace kx::detail
