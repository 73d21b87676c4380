// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Each kernel against the next one in its table. A kernel has to be clearly faster to be worth
// having.
#include <memory>

#include "detail/base64/kernel.h"
#include "detail/crc/kernel.h"
#include "kxbench.h"

namespace {

/// Calls `add` with the names of the two contenders and with the contenders themselves.
template <class Kernel, class Add>
void compare(const kx::detail::KernelTable<Kernel>& table, Add add) {
    for (auto kernel = table.begin(); kernel + 1 != table.end(); ++kernel) {
        const Kernel &ours = kernel[0], &next = kernel[1];
        if (!ours.usable() || !next.usable()) continue;
        add(ours.name, std::string("kxUtils ") + ours.name, ours);
        add(ours.name, next.name, next);
    }
}

void addCrc32(const std::string& bytes) {
    using kx::detail::Crc32Kernel;
    compare(
        kx::detail::crc32Kernels(),
        [&bytes](const std::string& operation, const std::string& name, const Crc32Kernel& kernel) {
            const auto calc = [&bytes](const Crc32Kernel& k) {
                return k.calc(bytes.data(), bytes.size(), 0);
            };
            kxbench::contender(
                "CRC-32, " + operation, name, bytes.size(),
                [=] { benchmark::DoNotOptimize(calc(kernel)); },
                [=] { return calc(kernel) == calc(kx::detail::crc32Portable()); });
        });
}

using Convert = unsigned long (*)(const char* in, unsigned long n, char* out);
void addBase64(const std::string& operation, const std::string& name, const std::string& input,
               Convert convert, Convert model) {
    const std::size_t room = input.size() / 3 * 4 + 8;
    const auto out = std::make_shared<std::string>(room, 'x');
    const auto call = [=, &input] { return convert(input.data(), input.size(), out->data()); };
    kxbench::contender(
        operation, name, input.size(), [=] { benchmark::DoNotOptimize(call()); },
        [=, &input] {
            std::string expected(room, 'x');
            const unsigned long length = model(input.data(), input.size(), expected.data());
            return call() == length && *out == expected;
        });
}

void addBase64(const std::string& bytes, const std::string& text) {
    const auto portable = kx::detail::base64Portable();
    using Name = const std::string&;
    using Kernel = const kx::detail::Base64Kernel&;
    compare(kx::detail::base64Kernels(), [&](Name operation, Name name, Kernel kernel) {
        addBase64("Base64 encode, " + operation, name, bytes, kernel.encode, portable.encode);
        addBase64("Base64 decode, " + operation, name, text, kernel.decode, portable.decode);
    });
}

const bool registered = [] {
    for (const std::size_t size : kxbench::sizes) addCrc32(kxbench::randomBytes(size));
    for (const std::size_t size : kxbench::sizes)
        addBase64(kxbench::randomBytes(size), kxbench::base64Text(size));
    return true;
}();

}  // namespace
