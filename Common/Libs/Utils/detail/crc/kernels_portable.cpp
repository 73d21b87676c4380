// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/crc/kernel.h"

namespace kx::detail {

KernelTable<Crc32Kernel> crc32Kernels() { return {{{crc32Portable()}}, 1}; }

}  // namespace kx::detail
