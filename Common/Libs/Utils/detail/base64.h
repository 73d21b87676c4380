// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The kernels of kxBase64.
#pragma once

#include <cstdint>
#include <string_view>

#include "detail/kernel_table.h"

namespace kx::detail {

constexpr std::string_view base64Alphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
static_assert(base64Alphabet.size() == 64);

struct Base64Progress {
    unsigned long read, written;
};

/// Decodes whole groups from the beginning of a text on, and stops at the latest before the group
/// that holds a "=" or is not complete. Nothing is written but the bytes it counts.
using Base64DecodeGroups = Base64Progress (*)(const char* text, unsigned long n, char* out);

/// No pointer is null; `n` may be 0. Input and output do not overlap, but decoding may be in place,
/// with `out` equal to `text`.
struct Base64Kernel {
    const char* name;
    bool (*usable)();
    /// As the raw form of kxBase64::encode; the terminator alone if `n` is 0.
    unsigned long (*encode)(const char* data, unsigned long n, char* out);
    /// As the raw form of kxBase64::decode.
    unsigned long (*decode)(const char* text, unsigned long n, char* out);
    Base64DecodeGroups decodeGroups;
};

Base64Kernel base64Avx512(), base64Avx2();  // x86-64 only
Base64Kernel base64Portable();
KernelTable<Base64Kernel> base64Kernels();

/// Those of base64Portable().
unsigned long base64EncodePortable(const char* data, unsigned long n, char* out);
Base64Progress base64DecodeGroupsPortable(const char* text, unsigned long n, char* out);

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
    Base64DecodeGroups _decodeGroups;
    std::uint32_t _bits = 0;
    int _held = 0;        ///< characters in `_bits`
    long _allowance = 3;  ///< bytes a group may give; "=" takes one away from all groups to come
};

/// What is left to do for kxBase64::decode when the groups in `done` are decoded.
unsigned long base64DecodeRest(Base64DecodeGroups decodeGroups, const char* text, unsigned long n,
                               char* out, Base64Progress done);

}  // namespace kx::detail
