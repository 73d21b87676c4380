// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Reads the bytes that a fuzzer invents as numbers and texts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace kxfuzz {

/// Anything read after the end is 0 or empty, so every input has a meaning.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : _at(data), _end(data + size) {}

    bool empty() const { return _at == _end; }

    unsigned byte() { return empty() ? 0U : *_at++; }

    bool flag() { return (byte() & 1) != 0; }

    /// 0 to `largest`, read from one byte or, if that is too small, from two or four.
    std::uint32_t upTo(std::uint32_t largest) {
        std::uint32_t value = byte();
        if (largest > 0xFF) value |= byte() << 8;
        if (largest > 0xFFFF) value |= byte() << 16 | byte() << 24;
        return largest == 0xFFFFFFFF ? value : value % (largest + 1);
    }

    /// The bytes up to the next 0xFF or the end; two 0xFF in a row stand for a real one. Words of a
    /// dictionary can thus be inserted anywhere without a length that has to match.
    std::string text() {
        std::string result;
        while (!empty()) {
            const unsigned c = byte();
            if (c == 0xFF && (empty() || *_at != 0xFF)) break;
            if (c == 0xFF) ++_at;
            result += static_cast<char>(c);
        }
        return result;
    }

    /// A text, or one repeated to a length of 1990 to 2117, so that a small input can come near the
    /// limit of 2047 characters.
    std::string longText() {
        const unsigned length = byte();
        std::string result = text();
        if (length < 128 || result.empty()) return result;
        const std::string piece = result;
        while (result.size() < 1862 + length) result += piece;
        result.resize(1862 + length);
        return result;
    }

    /// All that is left, unchanged.
    std::string rest() {
        const std::string result(_at, _end);
        _at = _end;
        return result;
    }

private:
    const std::uint8_t *_at, *_end;
};

}  // namespace kxfuzz
