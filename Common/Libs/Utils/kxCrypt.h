// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// RC4 byte cipher.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kxExport.h"

/// RC4 (ARCFOUR; key stream as in RFC 6229), one byte per call, no byte of the key stream dropped.
/// Coding is its own inverse: the same key and the same sequence of calls turn coded bytes back.
///
///     kxCrypt cipher(key);
///     for (unsigned char& byte : bytes) byte = cipher.code(byte);
///
/// RC4 hides texts from a casual look and is no protection against an attacker; do not use it for
/// secrets.
///
/// A copy goes on from where the original stands, independently of it. One thread uses an object at
/// a time. Throws std::bad_alloc when the key is copied, nothing else; a cipher that was to be
/// assigned to then goes on as before.
class KXUTILS_API kxCrypt {
public:
    /// Keeps a copy of `key` (for reset()). Bytes beyond the 256th have no effect. An empty key is
    /// the caller's mistake; it codes as a key of one zero byte does. Not explicit, deliberately: a
    /// key stands for its cipher.
    kxCrypt(const std::vector<unsigned char>& key);
    /// The copy goes on from where the original stands.
    /// @{
    kxCrypt(const kxCrypt&) = default;
    kxCrypt& operator=(const kxCrypt& other) {
        std::vector<unsigned char> key = other._key;  // first: only this can fail
        _key.swap(key);
        _state = other._state;
        _i = other._i;
        _j = other._j;
        return *this;
    }
    /// @}
    virtual ~kxCrypt();  ///< the key is not wiped from memory

    /// Returns to the start of the key stream.
    void reset();

    /// `c` combined with the next byte of the key stream.
    unsigned char code(unsigned char c);

private:
    std::vector<unsigned char> _key;
    std::array<unsigned char, 256> _state{};  // the permutation S
    std::uint32_t _i = 0, _j = 0;             // indices of the generator, 0 to 255
};
