// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Aligned heap blocks from oneTBB's scalable allocator.
#pragma once

#include "kxExport.h"

// Sizes and alignments are in bytes and go to the allocator unchanged, its results come back
// unchanged. An alignment is a power of two. The receiver owns a block and hands it to
// aligned_free, never to free() or delete. Any thread may call any function, and free a block of
// another thread. Nothing is thrown.

/// A new block of `size` bytes at a multiple of `alignment`, its content unspecified. Null for size
/// 0 or an alignment that is no power of two (errno EINVAL), or if memory runs out (errno ENOMEM).
KXUTILS_API void* aligned_malloc(unsigned long size, unsigned long alignment);

/// Changes the size, and if need be the place, of the block `p`: the first min(old, new) bytes keep
/// their values, and `p` is no longer valid. On failure null, with errno set as above, and `p`
/// stays as it was. The allocator's rules, which are kept:
///
///     p      size  alignment
///     any    any   no power of two  ->  null, errno EINVAL; a block `p` is not freed
///     block  0     a power of two   ->  null, errno left alone; the block is freed
///     null   > 0   a power of two   ->  a new block
///     null   0     a power of two   ->  a new block, to be freed, although aligned_malloc gives
///                                       none for size 0
KXUTILS_API void* aligned_realloc(void* p, unsigned long size, unsigned long alignment);

/// Frees a block of the two functions above; null is ignored.
KXUTILS_API void aligned_free(void* p);
