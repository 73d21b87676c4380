// Versions of one operation for different processors.
#pragma once

#include <cstddef>

namespace kx::detail {

/// The versions that are built, fastest first; the last one is portable. A `Kernel` has the member
/// `usable`, which tells whether processor and operating system can run it.
template <class Kernel>
struct KernelTable {
    template <std::size_t n>
    constexpr explicit KernelTable(const Kernel* const (&rows)[n])
        : first(rows), behindLast(rows + n), fastest(rows[n - 1]) {}

    const Kernel* const* begin() const { return first; }
    const Kernel* const* end() const { return behindLast; }

    /// Makes the first usable one the fastest, which before is the portable one.
    void choose() {
        const Kernel* const* row = first;
        while (!(*row)->usable()) ++row;
        fastest = *row;
    }

    const Kernel* const* first;
    const Kernel* const* behindLast;
    const Kernel* fastest;
};

}  // namespace kx::detail
