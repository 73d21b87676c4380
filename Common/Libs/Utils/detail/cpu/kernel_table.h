// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Versions of one operation for different processors.
//
// Tables are made by functions when they are asked for. As constant data they would be pointers,
// each of which the loader has to relocate whenever a program starts.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>

namespace kx::detail {

/// The versions that are built, fastest first; the last one is portable. A `Kernel` has the member
/// `usable`, which tells whether processor and operating system can run it.
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

/// The fastest kernel of the table that `table` returns, found out when one is first asked for:
/// what loads the library need not wait for the processor's answers. Any thread may ask.
template <class Kernel, KernelTable<Kernel> (*table)()>
class FastestKernel {
public:
    static const Kernel& get() {
        static const Kernel kernel = table().fastest();
        return kernel;
    }

    /// get().*function(arguments...), without a look at the guard of get() where that has been
    /// called before, and without anything to keep across it: this matters for a few bytes.
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
