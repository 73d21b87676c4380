// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The CPUID instruction, and the walk over its leaves.
#pragma once

#include <cstdint>

#include "kxCPUInfo.h"

namespace kx::detail {

struct CpuidRegisters {
    std::uint32_t eax, ebx, ecx, edx;
};

/// Answers one query; tests replace the processor by one of their own making.
using CpuidQuery = CpuidRegisters (*)(std::uint32_t leaf, std::uint32_t subLeaf);

/// Executes CPUID. All registers are zero on a processor without that instruction.
CpuidRegisters cpuid(std::uint32_t leaf, std::uint32_t subLeaf);

/// Reads the processor's description. The queries are, in this order: leaf 0; leaves 0 to the
/// highest standard one; the highest extended leaf; the extended leaves, if there are any; leaf 4
/// up to the first sub-leaf without a cache. The number of queries is bounded whatever the
/// processor answers.
kxCPUInfo::Fields readCpu(CpuidQuery query);

}  // namespace kx::detail
