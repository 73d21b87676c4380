#include <iterator>

#include "detail/crc32.h"

namespace kx::detail {
namespace {

const Crc32Kernel* const crc32Rows[] = {&crc32Portable};

}  // namespace

const KernelTable<Crc32Kernel> crc32Kernels = {std::begin(crc32Rows), std::end(crc32Rows)};

}  // namespace kx::detail
