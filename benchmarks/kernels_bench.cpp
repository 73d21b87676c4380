// Each kernel against the next one of its table, which it has to beat clearly to be there.
#include "detail/crc32.h"
#include "kxbench.h"

namespace {

template <class Kernel, class Register>
void againstNext(const kx::detail::KernelTable<Kernel>& table, Register add) {
    for (auto kernel = table.begin(); kernel + 1 != table.end(); ++kernel) {
        const Kernel &ours = *kernel[0], &next = *kernel[1];
        if (!ours.usable() || !next.usable()) continue;
        add("kxUtils ", ours, ours.name);
        add("", next, ours.name);
    }
}

const bool registered = [] {
    using kx::detail::Crc32Kernel;
    for (const std::size_t size : kxbench::sizes) {
        const std::string& bytes = kxbench::randomBytes(size);
        againstNext(
            kx::detail::crc32Kernels,
            [&bytes](const char* prefix, const Crc32Kernel& kernel, const char* operation) {
                const auto calc = [&bytes](const Crc32Kernel& k) {
                    return k.calc(bytes.data(), bytes.size(), 0);
                };
                kxbench::contender(
                    std::string("CRC-32 ") + operation, std::string(prefix) + kernel.name,
                    bytes.size(), [=, &kernel] { benchmark::DoNotOptimize(calc(kernel)); },
                    [=, &kernel] { return calc(kernel) == calc(kx::detail::crc32Portable); });
            });
    }
    return true;
}();

}  // namespace
