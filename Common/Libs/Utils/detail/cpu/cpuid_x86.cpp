// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <cpuid.h>

#include "detail/cpu/cpuid.h"

namespace kx::detail {

CpuidRegisters cpuid(std::uint32_t leaf, std::uint32_t subLeaf) {
    CpuidRegisters r{};
    __cpuid_count(leaf, subLeaf, r.eax, r.ebx, r.ecx, r.edx);
    return r;
}

}  // namespace kx::detail
