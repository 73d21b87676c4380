// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#pragma once

#include <cstdint>

namespace kxtest {

/// Sets what __builtin_cpu_supports says about the first 64 features; the destructor restores the
/// earlier answers. x86-64 only. Only one object may exist at a time, and no other thread may ask
/// meanwhile.
class ScopedFeatures {
public:
    ScopedFeatures();
    ~ScopedFeatures() { set(_old); }
    ScopedFeatures(const ScopedFeatures&) = delete;
    ScopedFeatures& operator=(const ScopedFeatures&) = delete;

    /// One bit for each feature, numbered as in the compiler's runtime library.
    static void set(std::uint64_t bits);

private:
    std::uint64_t _old;
};

}  // namespace kxtest
