// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/base64.h"
#include "detail/crc32.h"

namespace kx::detail {

KernelTable<Base64Kernel> base64Kernels() {
    return {{{base64Avx512(), base64Avx2(), base64Portable()}}, 3};
}

KernelTable<Crc32Kernel> crc32Kernels() {
    return {{{crc32Vpclmulqdq(), crc32Pclmulqdq(), crc32Portable()}}, 3};
}

}  // namespace kx::detail
