// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCrypt.h"

#include <utility>

namespace {

constexpr std::array<unsigned char, 256> makeIdentity() {
    std::array<unsigned char, 256> table{};
    for (std::size_t n = 0; n < table.size(); ++n) table[n] = static_cast<unsigned char>(n);
    return table;
}
constexpr auto identity = makeIdentity();
static_assert(identity[0] == 0 && identity[1] == 1 && identity[255] == 255);

}  // namespace

kxCrypt::kxCrypt(const std::vector<unsigned char>& key) : _key(key) { reset(); }

kxCrypt::~kxCrypt() = default;

void kxCrypt::reset() {
    _i = _j = 0;
    _state = identity;
    std::uint32_t j = 0;
    for (std::size_t n = 0; n < _state.size(); ++n) {
        const unsigned char key = _key.empty() ? 0 : _key[n % _key.size()];
        j = (j + _state[n] + key) % 256;
        std::swap(_state[n], _state[j]);
    }
}

unsigned char kxCrypt::code(unsigned char c) {
    const std::uint32_t i = (_i + 1) % 256;
    const std::uint32_t si = _state[i];
    const std::uint32_t j = (_j + si) % 256;
    const std::uint32_t sj = _state[j];
    _state[i] = static_cast<unsigned char>(sj);
    _state[j] = static_cast<unsigned char>(si);
    _i = i;
    _j = j;
    return c ^ _state[(si + sj) % 256];
}
