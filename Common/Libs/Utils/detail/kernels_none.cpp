#include "detail/base64.h"
#include "detail/crc32.h"

namespace kx::detail {
namespace {

const Base64Kernel* const base64Rows[] = {&base64Portable};
const Crc32Kernel* const crc32Rows[] = {&crc32Portable};

}  // namespace

KernelTable<Base64Kernel> base64Kernels{base64Rows};
KernelTable<Crc32Kernel> crc32Kernels{crc32Rows};

}  // namespace kx::detail
