// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxAlignedMemory.h"

#include <oneapi/tbb/scalable_allocator.h>

void* aligned_malloc(unsigned long size, unsigned long alignment) {
    return scalable_aligned_malloc(size, alignment);
}

void* aligned_realloc(void* p, unsigned long size, unsigned long alignment) {
    return scalable_aligned_realloc(p, size, alignment);
}

void aligned_free(void* p) { scalable_aligned_free(p); }
