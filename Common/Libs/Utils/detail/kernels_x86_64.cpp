#include "detail/base64.h"
#include "detail/crc32.h"

namespace kx::detail {
namespace {

const Base64Kernel* const base64Rows[] = {&base64Avx512, &base64Avx2, &base64Portable};
const Crc32Kernel* const crc32Rows[] = {&crc32Vpclmulqdq, &crc32Pclmulqdq, &crc32Portable};

}  // namespace

KernelTable<Base64Kernel> base64Kernels{base64Rows};
KernelTable<Crc32Kernel> crc32Kernels{crc32Rows};

// When the library is loaded, so that no call has to ask.
static const bool chosen = [] {
    __builtin_cpu_init();
    base64Kernels.choose();
    crc32Kernels.choose();
    return true;
}();

}  // namespace kx::detail
