// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The kernels of kxBase64.
#pragma once

#include "detail/cpu/kernel_table.h"

namespace kx::detail {

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

/// Those of base64Portable(), for what the other kernels leave over.
unsigned long base64EncodePortable(const char* data, unsigned long n, char* out);
Base64Progress base64DecodeGroupsPortable(const char* text, unsigned long n, char* out);

}  // namespace kx::detail
