// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The decoder around the kernels, which handles everything in a text beside whole groups.
#pragma once

#include <cstdint>

#include "detail/base64/kernel.h"

namespace kx::detail {

/// Decodes a text that comes in pieces, whatever it contains.
class Base64Decoder {
public:
    /// `decodeGroups` is the fast way through the regular parts.
    explicit Base64Decoder(Base64DecodeGroups decodeGroups) : _decodeGroups(decodeGroups) {}

    /// Decodes the next `n` characters to `out` and returns the number of bytes written.
    unsigned long decode(const char* text, unsigned long n, char* out);
    /// True if there is no unfinished group.
    bool isComplete() const { return _held == 0; }

private:
    unsigned long take(char c, char* out);

    Base64DecodeGroups _decodeGroups;
    std::uint32_t _bits = 0;
    int _held = 0;        ///< characters in `_bits`
    long _allowance = 3;  ///< bytes a group may give; "=" takes one away from all groups to come
};

/// Does what is left to do for kxBase64::decode once the groups in `done` are decoded.
unsigned long base64DecodeRest(Base64DecodeGroups decodeGroups, const char* text, unsigned long n,
                               char* out, Base64Progress done);

/// Makes a kernel's `decode` out of its `decodeGroups`.
template <Base64DecodeGroups decodeGroups>
unsigned long base64Decode(const char* text, unsigned long n, char* out) {
    const Base64Progress done = decodeGroups(text, n, out);
    if (done.read == n) return done.written;
    return base64DecodeRest(decodeGroups, text, n, out, done);
}

}  // namespace kx::detail
