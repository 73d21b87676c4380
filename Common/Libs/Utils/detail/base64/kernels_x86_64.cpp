// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/base64/kernel.h"

namespace kx::detail {

KernelTable<Base64Kernel> base64Kernels() {
    return {{{base64Avx512(), base64Avx2(), base64Portable()}}, 3};
}

}  // namespace kx::detail
