// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// RC4 byte cipher.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kxExport.h"

/// RC4 (ARCFOUR; key stream as in RFC 6229), one byte per call, no byte of the key stream dropped.
/// Coding is its own inverse: a cipher with that key, from the start of its key stream, turns the
/// coded bytes back into the original ones.
///
///     kxCrypt cipher(key);
///     for (unsigned char& byte : bytes) byte = cipher.code(byte);
///
/// RC4 hides texts from a casual look and does not protect them against an attacker. Do not use it
/// for secrets.
///
/// A copy continues at the position of the original and is then independent of it. One thread uses
/// an object at a time. Only the copying of the key throws, and only std::bad_alloc; if that
/// happens in an assignment, the cipher on its left side goes on as before.
class KXUTILS_API kxCrypt {
public:
    /// Keeps a copy of `key` (for reset()). Bytes beyond the 256th have no effect. An empty key is
    /// a mistake of the caller and codes like a key of one zero byte. Deliberately not explicit: a
    /// key stands for its cipher.
    kxCrypt(const std::vector<unsigned char>& key);
    /// The copy continues at the position of the original.
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
    virtual ~kxCrypt();  ///< Does not wipe the key from memory.

    /// Returns to the start of the key stream.
    void reset();

    /// Returns `c` combined with the next byte of the key stream.
    unsigned char code(unsigned char c);

private:
    std::vector<unsigned char> _key;
    std::array<unsigned char, 256> _state{};  // the permutation S
    std::uint32_t _i = 0, _j = 0;             // indices of the generator, 0 to 255
};
