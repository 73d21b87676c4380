// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxBase64.h"

#include <algorithm>
#include <functional>

#include "detail/base64/alphabet.h"
#include "detail/base64/decoder.h"
#include "detail/base64/kernel.h"

using kx::detail::Base64Decoder;
using kx::detail::base64Foreign;
using kx::detail::Base64Kernel;
using kx::detail::base64Map;
using kx::detail::byteOf;

namespace {

// --- Strings -------------------------------------------------------------------------------------

// Resizing a string in order to convert into it would first fill it with zeros. Converting into a
// buffer that stays in the first-level cache, and appending from there, costs less.
struct Buffer {
    static constexpr unsigned long bytes = 6144, characters = 8192;
    char at[characters + 1];  // with the terminator that encode() writes
};

template <class Convert>
unsigned long atOnce(const char* in, unsigned long n, std::string& out, Convert convert) {
    Buffer buffer;
    out.assign(buffer.at, convert(in, n, buffer.at));
    return out.size();
}

// Converts piece by piece like the above, for a result of at most `size` bytes.
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

// Not constexpr in the header: an exported inline variable would keep the library from being
// unloaded.
const std::array<unsigned char, 256> kxBase64::_map = kx::detail::base64Map;

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

bool kxBase64::isBase64Char(char c) { return base64Map[byteOf(c)] != base64Foreign; }

bool kxBase64::isBase64String(const std::string& s) {
    if (s.size() < 4 || s.size() % 4 != 0) return false;
    for (const char c : s)
        if (!isBase64Char(c)) return false;
    return true;
}
