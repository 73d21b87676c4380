// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// How a message is folded, written once for all vector widths. A file that includes this one
// defines KXUTILS_TARGET, the instructions that its vectors need, and a class of vectors:
//
//     Block                       the register
//     load(p)                     the bytes at `p`
//     add(a, b)                   the sum of two blocks, which is their XOR
//     word(crc)                   the four bytes of `crc`, then zeros
//     loadAtEnd(p, count, start)  zeros, then the `count` bytes at `p` with `start` added
//     fold(block, factors, next)  `block` folded over a distance and added to `next`
//     overBlocks[n]               the factors for a distance of n + 1 blocks
#pragma once

#include <cstdint>

namespace kx::detail {
namespace {

/// Folds a message of `length` bytes, which is not 0, to a single block. `crc` is the start value
/// of the register. The register after that block is the register after the message.
template <class Vector>
KXUTILS_TARGET inline typename Vector::Block foldMessage(const char* p, unsigned long length,
                                                         std::uint32_t crc) {
    using Block = typename Vector::Block;
    constexpr unsigned long size = sizeof(Block);

    // Zeros in front of a message change nothing while the register is zero. The first bytes, which
    // need not fill a block, therefore move to its end once the start value has been added. The
    // part of the start value that does not fit into them is added to what follows.
    const unsigned long count = (length - 1) % size + 1;
    Block a = Vector::loadAtEnd(p, count, crc);
    Block rest = Vector::word(count < 4 ? crc >> 8 * count : 0);

    const char* const end = p + length;
    for (p += count; static_cast<unsigned long>(end - p) % (4 * size) != 0; p += size) {
        a = Vector::fold(a, Vector::overBlocks[0], Vector::add(Vector::load(p), rest));
        rest = Vector::word(0);
    }
    if (p == end) return a;

    // Four chains side by side hide the latency of the multiplications.
    a = Vector::fold(a, Vector::overBlocks[0], Vector::add(Vector::load(p), rest));
    Block b = Vector::load(p + size), c = Vector::load(p + 2 * size),
          d = Vector::load(p + 3 * size);
    for (p += 4 * size; p != end; p += 4 * size) {
        a = Vector::fold(a, Vector::overBlocks[3], Vector::load(p));
        b = Vector::fold(b, Vector::overBlocks[3], Vector::load(p + size));
        c = Vector::fold(c, Vector::overBlocks[3], Vector::load(p + 2 * size));
        d = Vector::fold(d, Vector::overBlocks[3], Vector::load(p + 3 * size));
    }
    c = Vector::fold(c, Vector::overBlocks[0], d);
    b = Vector::fold(b, Vector::overBlocks[1], c);
    return Vector::fold(a, Vector::overBlocks[2], b);
}

}  // namespace
}  // namespace kx::detail
