// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// How a message is folded, written once for every width of a vector. The file that includes this
// defines KXUTILS_TARGET, the instructions that its vectors need, and a class of vectors:
//
//     Block                       the register
//     load(p), add(a, b)          its bytes in memory; the sum of two, which is their XOR
//     word(crc)                   four bytes and zeros
//     loadAtEnd(p, count, start)  zeros and the `count` bytes at `p`, added to `start`
//     fold(block, factors, next)  `block`, folded over a distance, and added to `next`
//     overBlocks[n]               the factors for a distance of n + 1 blocks
#pragma once

#include <cstdint>

namespace kx::detail {
namespace {

/// The last block that is left of a message of `length` bytes, which is not 0, with the start value
/// `crc` of the register: the register after that block is the register after the message.
template <class Vector>
KXUTILS_TARGET inline typename Vector::Block foldMessage(const char* p, unsigned long length,
                                                         std::uint32_t crc) {
    using Block = typename Vector::Block;
    constexpr unsigned long size = sizeof(Block);

    // A message may begin with zeros as long as the register is zero: bytes that do not fill a
    // block move to its end, after the start value has been added. What does not fit into them of
    // the start value comes after them.
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
