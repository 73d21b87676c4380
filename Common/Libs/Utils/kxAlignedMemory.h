// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

/// \file
/// \brief Aligned heap blocks from oneTBB's scalable allocator.
///
/// The allocator keeps memory per thread, so threads that allocate at the same time do not wait for
/// each other. It gets sizes and alignments, both in bytes, as they are passed in, and its results
/// come back unchanged. An alignment is a power of two. The receiver owns a block and gives it back
/// to aligned_free(), never to free() or delete. Any thread may call any function, and may free a
/// block of another thread. Nothing is thrown.
#pragma once

#include "kxExport.h"

/// Allocates a block of `size` bytes whose address is a multiple of `alignment`; its content is
/// unspecified. Null if the size is 0 or the alignment is no power of two (errno EINVAL), or if
/// memory runs out (errno ENOMEM).
KXUTILS_API void* aligned_malloc(unsigned long size, unsigned long alignment);

/// Changes the size of the block `p` and, if need be, its place. The first min(old, new) bytes keep
/// their values, and `p` is no longer valid. On failure the result is null, errno is set as by
/// aligned_malloc(), and the block stays as it was. These special cases are the allocator's:
///
///     p      size  alignment
///     any    any   no power of two  ->  null, errno EINVAL; a block `p` is not freed
///     block  0     a power of two   ->  null, errno left alone; the block is freed
///     null   > 0   a power of two   ->  a new block
///     null   0     a power of two   ->  a new block, to be freed, although aligned_malloc gives
///                                       none for size 0
KXUTILS_API void* aligned_realloc(void* p, unsigned long size, unsigned long alignment);

/// Frees a block that aligned_malloc() or aligned_realloc() has returned. Null is ignored.
KXUTILS_API void aligned_free(void* p);
