// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The decoder around the kernels: what a text holds beside whole groups.
#pragma once

#include <cstdint>

#include "detail/base64/kernel.h"

namespace kx::detail {

/// Decodes a text that comes in pieces, whatever is in it.
class Base64Decoder {
public:
    /// `decodeGroups` is the fast way through what is regular.
    explicit Base64Decoder(Base64DecodeGroups decodeGroups) : _decodeGroups(decodeGroups) {}

    /// Returns the number of bytes that the next `n` characters have added at `out`.
    unsigned long decode(const char* text, unsigned long n, char* out);
    /// No group has begun and not ended.
    bool isComplete() const { return _held == 0; }

private:
    unsigned long take(char c, char* out);

    Base64DecodeGroups _decodeGroups;
    std::uint32_t _bits = 0;
    int _held = 0;        ///< characters in `_bits`
    long _allowance = 3;  ///< bytes a group may give; "=" takes one away from all groups to come
};

/// What is left to do for kxBase64::decode when the groups in `done` are decoded.
unsigned long base64DecodeRest(Base64DecodeGroups decodeGroups, const char* text, unsigned long n,
                               char* out, Base64Progress done);

/// A kernel's `decode`, made of its `decodeGroups`.
template <Base64DecodeGroups decodeGroups>
unsigned long base64Decode(const char* text, unsigned long n, char* out) {
    const Base64Progress done = decodeGroups(text, n, out);
    if (done.read == n) return done.written;
    return base64DecodeRest(decodeGroups, text, n, out, done);
}

}  // namespace kx::detail
