// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A block for vector instructions, grown without losing its content.
#include <cstdint>
#include <cstring>
#include <iostream>

#include <kxAlignedMemory.h>

int main() {
    void* block = aligned_malloc(100, 64);
    if (!block) return 1;
    std::memcpy(block, "weights", 8);

    // If this fails, the old block stays.
    if (void* const larger = aligned_realloc(block, 100000, 64)) block = larger;
    std::cout << reinterpret_cast<std::uintptr_t>(block) % 64 << ' '
              << static_cast<const char*>(block) << '\n';
    aligned_free(block);  // never free() or delete

    std::cout << (aligned_malloc(100, 48) == nullptr) << '\n';  // no power of two
}
// Prints:
// 0 weights
// 1
