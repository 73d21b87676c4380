// Versions of one operation for different processors.
#pragma once

namespace kx::detail {

/// The versions that are built, fastest first; the last one is portable. A `Kernel` has the member
/// `usable`, which tells whether processor and operating system can run it.
template <class Kernel>
struct KernelTable {
    const Kernel* const* first;
    const Kernel* const* behindLast;

    const Kernel* const* begin() const { return first; }
    const Kernel* const* end() const { return behindLast; }

    const Kernel& fastest() const {
        const Kernel* const* kernel = first;
        while (!(*kernel)->usable()) ++kernel;
        return **kernel;
    }
};

}  // namespace kx::detail
