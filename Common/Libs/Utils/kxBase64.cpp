// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxBase64.h"

#include <algorithm>
#include <functional>

#include "detail/base64.h"

using kx::detail::Base64Decoder;
using kx::detail::Base64Kernel;

namespace {

constexpr auto alphabet = kx::detail::base64Alphabet;

constexpr unsigned char padding = 254;
constexpr unsigned char foreign = 255;
// Set in both of the above and in no value of the alphabet.
constexpr unsigned char noValue = 0xC0;

constexpr unsigned char byteOf(char c) { return static_cast<unsigned char>(c); }

// Built by rule, not typed in: a mistyped entry among 256 would pass review.
constexpr std::array<unsigned char, 256> makeMap() {
    std::array<unsigned char, 256> table{};
    for (auto& value : table) value = foreign;
    for (std::size_t i = 0; i < alphabet.size(); ++i)
        table[byteOf(alphabet[i])] = static_cast<unsigned char>(i);
    table['='] = padding;
    return table;
}
constexpr auto ruled = makeMap();
static_assert(ruled['A'] == 0 && ruled['Z'] == 25 && ruled['a'] == 26 && ruled['z'] == 51 &&
              ruled['0'] == 52 && ruled['9'] == 61 && ruled['+'] == 62 && ruled['/'] == 63);
static_assert(ruled['='] == padding && ruled['\0'] == foreign && ruled['-'] == foreign &&
              ruled[0xFF] == foreign);

constexpr char character(unsigned int sixBits) { return alphabet[sixBits & 63]; }

// --- Strings -------------------------------------------------------------------------------------

// Resizing a string and converting into it would fill it with zeros first; to convert into a buffer
// that stays in the first cache, and to append from there, costs less.
struct Buffer {
    static constexpr unsigned long bytes = 6144, characters = 8192;
    char at[characters + 1];  // with the terminator of encode()
};

template <class Convert>
unsigned long atOnce(const char* in, unsigned long n, std::string& out, Convert convert) {
    Buffer buffer;
    out.assign(buffer.at, convert(in, n, buffer.at));
    return out.size();
}

// The same piece by piece, for a result of at most `size` bytes.
template <class Convert>
unsigned long inPieces(const char* in, unsigned long n, unsigned long piece, std::string& out,
                       unsigned long size, Convert convert) {
    const std::less<const char*> before;
    const bool isInside = !before(in, out.data()) && before(in, out.data() + out.size());
    const bool fits = !isInside && out.capacity() >= size;
    std::string other;
    std::string& to = fits ? out : other;
    to.reserve(size);
    to.clear();
    Buffer buffer;
    for (unsigned long count; n != 0; in += count, n -= count) {
        count = std::min(n, piece);
        to.append(buffer.at, convert(in, count, buffer.at));
    }
    if (!fits) out.swap(other);
    return out.size();
}

using Fastest = kx::detail::FastestKernel<Base64Kernel, kx::detail::base64Kernels>;

}  // namespace

namespace kx::detail {

unsigned long base64EncodePortable(const char* data, unsigned long n, char* out) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    char* const begin = out;
    for (; n >= 3; n -= 3, bytes += 3, out += 4) {
        const unsigned int bits =
            static_cast<unsigned int>(bytes[0] << 16 | bytes[1] << 8 | bytes[2]);
        out[0] = character(bits >> 18);
        out[1] = character(bits >> 12);
        out[2] = character(bits >> 6);
        out[3] = character(bits);
    }
    if (n != 0) {
        const unsigned int first = bytes[0], second = n == 2 ? bytes[1] : 0U;
        *out++ = character(first >> 2);
        *out++ = character(first << 4 | second >> 4);
        *out++ = n == 2 ? character(second << 2) : '=';
        *out++ = '=';
    }
    *out = '\0';
    return static_cast<unsigned long>(out - begin);
}

// Up to the first group that holds anything but characters of the alphabet.
Base64Progress base64DecodeGroupsPortable(const char* text, unsigned long n, char* out) {
    unsigned long read = 0, written = 0;
    for (; n - read >= 4; read += 4, written += 3) {
        const unsigned int a = ruled[byteOf(text[read])], b = ruled[byteOf(text[read + 1])],
                           c = ruled[byteOf(text[read + 2])], d = ruled[byteOf(text[read + 3])];
        if (((a | b | c | d) & noValue) != 0) break;
        out[written] = static_cast<char>(a << 2 | b >> 4);
        out[written + 1] = static_cast<char>(b << 4 | c >> 2);
        out[written + 2] = static_cast<char>(c << 6 | d);
    }
    return {read, written};
}

Base64Kernel base64Portable() {
    const auto decode = [](const char* text, unsigned long n, char* out) {
        return base64DecodeRest(base64DecodeGroupsPortable, text, n, out, {0, 0});
    };
    return {"portable", [] { return true; }, base64EncodePortable, decode,
            base64DecodeGroupsPortable};
}

unsigned long Base64Decoder::decode(const char* text, unsigned long n, char* out) {
    unsigned long written = 0;
    for (unsigned long at = 0; at < n; ++at) {
        if (_held == 0 && _allowance == 3 && n - at > 8) {  // for few it would not pay
            const Base64Progress progress = _decodeGroups(text + at, n - at, out + written);
            at += progress.read;
            written += progress.written;
            if (at == n) break;
        }
        const unsigned char value = ruled[byteOf(text[at])];
        if (value == foreign) continue;
        if (value == padding) --_allowance;
        _bits = _bits << 6 | (value == padding ? 0U : value);
        if (++_held < 4) continue;
        out[written++] = static_cast<char>(_bits >> 16);
        if (_allowance >= 2) out[written++] = static_cast<char>(_bits >> 8);
        if (_allowance >= 3) out[written++] = static_cast<char>(_bits);
        _bits = 0;
        _held = 0;
    }
    return written;
}

unsigned long base64DecodeRest(Base64DecodeGroups decodeGroups, const char* text, unsigned long n,
                               char* out, Base64Progress done) {
    Base64Decoder decoder(decodeGroups);
    const unsigned long written =
        done.written + decoder.decode(text + done.read, n - done.read, out + done.written);
    return decoder.isComplete() ? written : 0;
}

}  // namespace kx::detail

// Not constexpr itself: an exported inline variable would keep the library from being unloaded.
const std::array<unsigned char, 256> kxBase64::_map = ruled;

kxBase64::~kxBase64() = default;

unsigned long kxBase64::encode(const char* data, unsigned long n, char* out) {
    if (!data || n == 0 || !out) return 0;
    return Fastest::call(&Base64Kernel::encode, data, n, out);
}

unsigned long kxBase64::encode(const char* data, unsigned long n, std::string& out) {
    if (!data || n == 0) return 0;
    const auto convert = Fastest::get().encode;
    if (n <= Buffer::bytes) return atOnce(data, n, out, convert);
    return inPieces(data, n, Buffer::bytes, out, getEncodeSize(n), convert);
}

unsigned long kxBase64::encode(const std::string& in, std::string& out) {
    return encode(in.data(), in.size(), out);
}

unsigned long kxBase64::getEncodeSize(unsigned long n) { return 4 * (n / 3) + 4; }

unsigned long kxBase64::decode(const char* text, unsigned long n, char* out) {
    if (!text || n == 0 || !out) return 0;
    return Fastest::call(&Base64Kernel::decode, text, n, out);
}

unsigned long kxBase64::decode(const char* text, unsigned long n, std::string& out) {
    if (!text || n == 0) return 0;
    const Base64Kernel& kernel = Fastest::get();
    if (n <= Buffer::characters) return atOnce(text, n, out, kernel.decode);
    Base64Decoder decoder(kernel.decodeGroups);
    inPieces(text, n, Buffer::characters, out, getDecodeSize(n),
             [&decoder](const char* piece, unsigned long length, char* bytes) {
                 return decoder.decode(piece, length, bytes);
             });
    if (!decoder.isComplete()) out.clear();
    return out.size();
}

unsigned long kxBase64::decode(const std::string& in, std::string& out) {
    return decode(in.data(), in.size(), out);
}

unsigned long kxBase64::getDecodeSize(unsigned long n) { return 3 * (n / 4) + 3; }

bool kxBase64::isBase64Char(char c) { return ruled[byteOf(c)] != foreign; }

bool kxBase64::isBase64String(const std::string& s) {
    if (s.size() < 4 || s.size() % 4 != 0) return false;
    for (const char c : s)
        if (!isBase64Char(c)) return false;
    return true;
}
