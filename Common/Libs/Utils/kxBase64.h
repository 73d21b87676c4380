// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64 text form of bytes.
#pragma once

#include <array>
#include <string>

#include "kxExport.h"

/// Base64 of RFC 4648, section 4: the standard alphabet with "+" and "/", "=" padding, no line
/// breaks. decode() is deliberately forgiving; isBase64String() is the strict look at a text.
///
/// ATTENTION, whoever passes a raw buffer to encode(): it writes a terminating zero byte, and
/// getEncodeSize() leaves room for that byte only if `n` is a multiple of 3. Allocate
///
///     std::vector<char> buffer(kxBase64::getEncodeSize(n) + 1);
///
/// Both ways use the vector instructions that the processor offers (AVX-512 with VBMI and VBMI2, or
/// AVX2; Mula and Lemire, 2018 and 2020), which is found out at the first use; results do not
/// depend on them.
///
/// All sizes are in bytes. Stateless: any thread may call any function. Nothing is thrown but
/// std::bad_alloc and std::length_error, by the forms that fill a string, which
/// then stays as it was.
class KXUTILS_API kxBase64 {
public:
    /// An object holds nothing; all functions are static.
    /// @{
    kxBase64() = default;
    virtual ~kxBase64();
    /// @}

    // --- Encoding --------------------------------------------------------------------------------

    /// Writes the text of `data[0, n)` and a terminating zero byte to `out`, together
    /// 4 * ceil(n / 3) + 1 bytes, which must not overlap `data`. Returns the length of the text,
    /// without the terminator. 0, and nothing touched, if `n` is 0 or a pointer is null.
    static unsigned long encode(const char* data, unsigned long n, char* out);

    /// Replaces `out` by the text of `data[0, n)` and returns its length. 0, and `out` deliberately
    /// left as it is (not cleared), if `n` is 0 or `data` is null. `data` may point into `out`.
    static unsigned long encode(const char* data, unsigned long n, std::string& out);

    /// The same for the bytes of `in`, which may be `out` itself.
    static unsigned long encode(const std::string& in, std::string& out);

    /// 4 * floor(n / 3) + 4: enough for the text of `n` bytes. If `n` is no multiple of 3, this is
    /// exactly the length of the text, deliberately WITHOUT room for the terminator that the raw
    /// form of encode() writes: make raw buffers one byte larger.
    static unsigned long getEncodeSize(unsigned long n);

    // --- Decoding --------------------------------------------------------------------------------

    /// Writes the bytes that `text[0, n)` stands for to `out`, which has room for
    /// getDecodeSize(n), and returns how many bytes were written. No terminator is written, and
    /// nothing behind the bytes of complete groups.
    ///
    /// `out` may be `text` itself: a text can be decoded in place, since its bytes are never ahead
    /// of the characters that they come from. In any other way the two do not overlap.
    ///
    ///     "Zm9vYmFy"   -> 6, "foobar"
    ///     "Zm9v\nYmFy" -> 6, "foobar"   bytes outside the alphabet are skipped, wherever they are
    ///     "Zm9vY"      -> 0             incomplete group at the end; "foo" has been written
    ///     "Zg==Zm9v"   -> 2, "ff"       see below
    ///     "Z=9v"       -> 2, "d\x0f"    "=" is six zero bits, wherever it stands
    ///
    /// Deliberate: padding is counted over the whole text and never forgotten. After one "=" every
    /// group, the one that holds it included, gives its first two bytes only; after two or more
    /// its first byte only.
    ///
    /// 0, and nothing touched, if `n` is 0 or a pointer is null.
    static unsigned long decode(const char* text, unsigned long n, char* out);

    /// Replaces `out` by the bytes that `text[0, n)` stands for and returns their number. A text
    /// that ends in an incomplete group leaves `out` empty. 0, and `out` deliberately left as it
    /// is (not cleared), if `n` is 0 or `text` is null. `text` may point into `out`.
    static unsigned long decode(const char* text, unsigned long n, std::string& out);

    /// The same for the characters of `in`, which may be `out` itself.
    static unsigned long decode(const std::string& in, std::string& out);

    /// 3 * floor(n / 4) + 3: enough for the bytes that `n` characters stand for.
    static unsigned long getDecodeSize(unsigned long n);

    // --- Tests of text ---------------------------------------------------------------------------

    /// True for the 64 characters of the alphabet and for "=".
    static bool isBase64Char(char c);

    /// True if the length is a multiple of 4, at least 4, and every character satisfies
    /// isBase64Char(). Deliberately no test of where "=" stands: "====" is accepted.
    static bool isBase64String(const std::string& s);

    /// What each byte stands for in a text: 0 to 63 for the alphabet, 254 for "=", 255 for all
    /// other bytes.
    static const std::array<unsigned char, 256> _map;
};
