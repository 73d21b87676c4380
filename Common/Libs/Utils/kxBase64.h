// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64 text form of bytes.
#pragma once

#include <array>
#include <string>

#include "kxExport.h"

/// Base64 of RFC 4648, section 4: the standard alphabet with "+" and "/", "=" padding, no line
/// breaks. decode() is deliberately forgiving; isBase64String() tests a text more strictly.
///
/// ATTENTION if you pass a raw buffer to encode(): it writes a terminating zero byte, and
/// getEncodeSize() leaves room for that byte only if `n` is a multiple of 3. Allocate
///
///     std::vector<char> buffer(kxBase64::getEncodeSize(n) + 1);
///
/// Encoding and decoding use the vector instructions that the processor offers: AVX-512 with VBMI
/// and VBMI2, or AVX2 (Mula and Lemire, 2018 and 2020). Which it offers is found out at the first
/// use. The results do not depend on it.
///
/// All sizes are in bytes. There is no state: any thread may call any function. Only the forms that
/// fill a string throw, and only std::bad_alloc or std::length_error; the string then stays as it
/// was.
class KXUTILS_API kxBase64 {
public:
    /// An object holds nothing; all functions are static.
    /// @{
    kxBase64() = default;
    virtual ~kxBase64();
    /// @}

    // --- Encoding --------------------------------------------------------------------------------

    /// Writes the text of `data[0, n)` and a terminating zero byte to `out`, 4 * ceil(n / 3) + 1
    /// bytes in all, which must not overlap `data`. Returns the length of the text without the
    /// terminator. If `n` is 0 or a pointer is null, returns 0 and writes nothing.
    static unsigned long encode(const char* data, unsigned long n, char* out);

    /// Replaces `out` by the text of `data[0, n)` and returns its length. If `n` is 0 or `data` is
    /// null, returns 0 and deliberately leaves `out` as it is (not cleared). `data` may point into
    /// `out`.
    static unsigned long encode(const char* data, unsigned long n, std::string& out);

    /// As above, for the bytes of `in`, which may be `out` itself.
    static unsigned long encode(const std::string& in, std::string& out);

    /// 4 * floor(n / 3) + 4, which is enough for the text of `n` bytes. If `n` is no multiple of 3,
    /// this is exactly the length of the text. Deliberately, that leaves NO room for the terminator
    /// that the raw form of encode() writes: make raw buffers one byte larger.
    static unsigned long getEncodeSize(unsigned long n);

    // --- Decoding --------------------------------------------------------------------------------

    /// Writes the bytes that `text[0, n)` stands for to `out`, which has room for getDecodeSize(n)
    /// bytes, and returns their number. No terminator is written, and nothing after the bytes of
    /// the complete groups.
    ///
    /// `out` may be `text` itself: a text can be decoded in place, since no byte is written before
    /// the characters that it comes from have been read. The two must not overlap in any other way.
    ///
    ///     "Zm9vYmFy"   -> 6, "foobar"
    ///     "Zm9v\nYmFy" -> 6, "foobar"   bytes outside the alphabet are skipped, wherever they are
    ///     "Zm9vY"      -> 0             incomplete group at the end; "foo" has been written
    ///     "Zg==Zm9v"   -> 2, "ff"       see below
    ///     "Z=9v"       -> 2, "d\x0f"    "=" is six zero bits, wherever it stands
    ///
    /// Deliberate: "=" is counted over the whole text. From the group on that holds the first "=",
    /// each group gives only its first two bytes; from the group on that holds the second, only its
    /// first byte.
    ///
    /// If `n` is 0 or a pointer is null, returns 0 and writes nothing.
    static unsigned long decode(const char* text, unsigned long n, char* out);

    /// Replaces `out` by the bytes that `text[0, n)` stands for and returns their number. If the
    /// text ends in an incomplete group, returns 0 and empties `out`. If `n` is 0 or `text` is
    /// null, returns 0 and deliberately leaves `out` as it is (not cleared). `text` may point into
    /// `out`.
    static unsigned long decode(const char* text, unsigned long n, std::string& out);

    /// As above, for the characters of `in`, which may be `out` itself.
    static unsigned long decode(const std::string& in, std::string& out);

    /// 3 * floor(n / 4) + 3, which is enough for the bytes that `n` characters stand for.
    static unsigned long getDecodeSize(unsigned long n);

    // --- Tests of text ---------------------------------------------------------------------------

    /// True for the 64 characters of the alphabet and for "=".
    static bool isBase64Char(char c);

    /// True if the length is a multiple of 4, at least 4, and every character satisfies
    /// isBase64Char(). Deliberately, the place of "=" is not tested: "====" is accepted.
    static bool isBase64String(const std::string& s);

    /// The meaning of each byte in a text: 0 to 63 for the alphabet, 254 for "=", 255 for all other
    /// bytes.
    static const std::array<unsigned char, 256> _map;
};
