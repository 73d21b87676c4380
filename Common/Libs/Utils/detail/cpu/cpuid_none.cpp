// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/cpu/cpuid.h"

namespace kx::detail {

CpuidRegisters cpuid(std::uint32_t /*leaf*/, std::uint32_t /*subLeaf*/) { return {}; }

}  // namespace kx::detail
