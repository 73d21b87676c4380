// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The kernels of kxBase64.
#pragma once

#include "detail/cpu/kernel_table.h"

namespace kx::detail {

struct Base64Progress {
    unsigned long read, written;
};

/// Decodes whole groups from the beginning of a text, and stops at the latest before the group that
/// holds a "=" or is incomplete. It writes only the bytes that it counts.
using Base64DecodeGroups = Base64Progress (*)(const char* text, unsigned long n, char* out);

/// No pointer is null; `n` may be 0. Input and output do not overlap, except that decoding may be
/// in place, with `out` equal to `text`.
struct Base64Kernel {
    const char* name;
    bool (*usable)();
    /// Like kxBase64::encode with raw buffers; writes only the terminator if `n` is 0.
    unsigned long (*encode)(const char* data, unsigned long n, char* out);
    /// Like kxBase64::decode with raw buffers.
    unsigned long (*decode)(const char* text, unsigned long n, char* out);
    Base64DecodeGroups decodeGroups;
};

Base64Kernel base64Avx512(), base64Avx2();  // x86-64 only
Base64Kernel base64Portable();
KernelTable<Base64Kernel> base64Kernels();

/// The functions of base64Portable(), for what the other kernels leave over.
unsigned long base64EncodePortable(const char* data, unsigned long n, char* out);
Base64Progress base64DecodeGroupsPortable(const char* text, unsigned long n, char* out);

}  // namespace kx::detail
