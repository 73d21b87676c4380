// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Chooses code by processor, and tests the choice on another one.
#include <iostream>

#include <kxCPUInfo.h>

static const char* choose(const kxCPUInfo& cpu) {
    if (cpu.hasAVX512Support()) return "64 bytes a step";
    if (cpu.hasAVX2Support()) return "32 bytes a step";
    return "8 bytes a step";
}

int main() {
    // Here it runs for this machine, so the answer depends on it.
    const char* const here = choose(kxCPUInfo::getCPUInfo());

    kxCPUInfo::Fields fields;  // a processor without any feature ...
    std::cout << choose(kxCPUInfo(fields)) << '\n';
    fields.avx2 = true;  // ... and one with AVX2
    std::cout << choose(kxCPUInfo(fields)) << '\n';
    std::cout << (here != nullptr) << ' ' << kxCPUInfo::_szFeatures[26] << '\n';
}
// Prints:
// 8 bytes a step
// 32 bytes a step
// 1 SSE2 Extensions
