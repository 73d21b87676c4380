// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "processor_features.h"

// From the compiler's runtime library. They have their own unit, because Clang 14 crashes if
// __builtin_cpu_supports is used beside these declarations.
extern "C" {
extern unsigned int __cpu_model[4];  // vendor, type, subtype, features
extern unsigned int __cpu_features2[1];
}

namespace kxtest {

ScopedFeatures::ScopedFeatures() : _old(std::uint64_t{__cpu_features2[0]} << 32 | __cpu_model[3]) {}

void ScopedFeatures::set(std::uint64_t bits) {
    __cpu_model[3] = static_cast<unsigned int>(bits);
    __cpu_features2[0] = static_cast<unsigned int>(bits >> 32);
}

}  // namespace kxtest
