// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/crc/boost_lanes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "detail/crc/arithmetic.h"

namespace kx::detail {
namespace {

// Measured: six lanes are a tenth slower, and ten are no faster. If a lane is shorter than
// shortestLane, joining costs as much as the lanes save. longestLane is an eighth of the largest
// block in which files are read.
constexpr std::size_t lanes = 8, shortestLane = 16, longestLane = 10240;

// The bytes that a lane takes at a time. More than one, because each call checks whether Boost's
// table has been made; with four, compilers keep a loop instead of unrolling it.
constexpr std::size_t bytesPerTurn = 2;

// A polynomial to multiply others by, modulo P.
class Factor {
public:
    constexpr Factor() = default;
    explicit constexpr Factor(std::uint32_t polynomial) {
        for (std::size_t bit = 32; bit-- != 0; polynomial = crc32BitSteps(polynomial, 1))
            _products[bit] = polynomial;
    }

    constexpr std::uint32_t operator*(std::uint32_t other) const {
        std::uint32_t product = 0;
        for (std::size_t bit = 0; bit < 32; ++bit)
            product ^= _products[bit] & (0 - (other >> bit & 1));
        return product;
    }

private:
    std::array<std::uint32_t, 32> _products{};  // times the term that each bit stands for
};

constexpr std::uint32_t one = 0x80000000;

// Entry i is x^8 to the power of 2^i.
constexpr auto makePowers() {
    std::array<Factor, 14> powers;
    std::uint32_t polynomial = crc32BitSteps(one, 8);
    for (Factor& power : powers) {
        power = Factor(polynomial);
        polynomial = power * polynomial;
    }
    return powers;
}
constexpr auto powers = makePowers();
static_assert(longestLane >> powers.size() == 0);

// x^(8n), by which a checksum is multiplied when n bytes follow.
Factor zeros(std::size_t n) {
    std::uint32_t polynomial = one;
    for (const Factor& power : powers) {
        if ((n & 1) != 0) polynomial = power * polynomial;
        n >>= 1;
    }
    return Factor(polynomial);
}

// Given the checksum `before` of some bytes, returns the checksum of those bytes followed by all
// lanes.
//
// For a followed by b, which has n bytes, the checksum is checksum(a) * x^(8n) modulo P, plus
// checksum(b). The start values and the final XORs are equal and cancel out (Mark Adler's
// crc32_combine in zlib). The function is flattened and the lanes are written out so that all their
// registers are the processor's.
template <std::size_t... lane>
[[gnu::flatten]] std::uint32_t lanesChecksum(const unsigned char* p, std::size_t laneSize,
                                             std::uint32_t before, std::index_sequence<lane...>) {
    const BoostCrc32 fresh;
    BoostCrc32 crcs[] = {(static_cast<void>(lane), fresh)...};
    for (const unsigned char* const end = p + laneSize; p != end; p += bytesPerTurn)
        (crcs[lane].process_bytes(p + lane * laneSize, bytesPerTurn), ...);
    const Factor shift = zeros(laneSize);
    ((before = (shift * before) ^ crcs[lane].checksum()), ...);
    return before;
}

// The bits in the order in which Boost takes the register of a reflected CRC.
std::uint32_t reversed(std::uint32_t bits) {
    std::uint32_t result = 0;
    for (int i = 0; i < 32; ++i, bits >>= 1) result = result << 1 | (bits & 1);
    return result;
}

}  // namespace

void processBytesInLanes(BoostCrc32& crc, const void* data, std::size_t size) {
    const auto* p = static_cast<const unsigned char*>(data);
    if (size >= lanes * shortestLane) {
        std::uint32_t checksum = crc.checksum();
        do {
            const std::size_t turns = size / (lanes * bytesPerTurn);
            const std::size_t laneSize = std::min(turns * bytesPerTurn, longestLane);
            checksum = lanesChecksum(p, laneSize, checksum, std::make_index_sequence<lanes>());
            p += lanes * laneSize;
            size -= lanes * laneSize;
        } while (size >= lanes * shortestLane);
        crc.reset(reversed(~checksum));
    }
    crc.process_bytes(p, size);
}

}  // namespace kx::detail
