// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Versions of one operation for different processors.
//
// Tables are made by functions when they are asked for. Constant data would hold pointers, and the
// loader would have to relocate each of them whenever a program starts.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace kx::detail {

/// The versions that are built, fastest first; the last one is portable. A `Kernel` has the member
/// `usable`, which tells whether the processor and the operating system can run it.
template <class Kernel>
struct KernelTable {
    std::array<Kernel, 3> rows;
    std::size_t count;

    const Kernel* begin() const { return rows.data(); }
    const Kernel* end() const { return rows.data() + count; }

    const Kernel& fastest() const {
        const Kernel* row = begin();
        while (!row->usable()) ++row;
        return *row;
    }
};

/// The fastest usable kernel of the table that `table` returns. It is chosen when a kernel is first
/// asked for, so that a program that loads the library need not wait for the processor's answers.
/// Any thread may ask.
template <class Kernel, KernelTable<Kernel> (*table)()>
class FastestKernel {
public:
    static const Kernel& get() {
        static const Kernel kernel = table().fastest();
        return kernel;
    }

    /// Calls get().*function(arguments...). After the first call it skips the guard of get(), and
    /// it has nothing to keep across the call, which matters when there are only a few bytes to
    /// process.
    template <class Function, class... Arguments>
    static auto call(Function Kernel::*function, Arguments... arguments) {
        const Kernel* const kernel = _known.load(std::memory_order_acquire);
        if (kernel) return (kernel->*function)(arguments...);
        return callFirst(function, arguments...);
    }

private:
    template <class Function, class... Arguments>
    [[gnu::noinline]] static auto callFirst(Function Kernel::*function, Arguments... arguments) {
        _known.store(&get(), std::memory_order_release);
        return (get().*function)(arguments...);
    }

    static inline std::atomic<const Kernel*> _known{nullptr};
};

}  // namespace kx::detail
