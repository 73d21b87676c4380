// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxBase64: every kernel and every form agrees with the slow model and touches nothing beyond its
// buffers. Encoded bytes decode to themselves, whatever foreign bytes come in between.
#include "kxBase64.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "detail/base64/kernel.h"
#include "guarded.h"
#include "input.h"
#include "reference/base64_reference.h"
#include "support.h"

using kxfuzz::require;
using kxfuzz::requireEqual;
using Raw = std::function<unsigned long(const char*, unsigned long, char*)>;

namespace {

// Input and output first end, and then begin, next to memory that must not be touched. The output
// has room for a few bytes beside `expected`, which must not change.
void checkRaw(const char* what, const Raw& convert, const std::string& in, unsigned long result,
              const std::string& expected) {
    static const kxtest::Guarded source(1 << 17), target(1 << 17);
    const std::string margin(80, '\x5a');
    std::memset(target.end() - expected.size() - margin.size(), '\x5a',
                expected.size() + margin.size());
    char* const last = target.end() - expected.size();
    requireEqual(what, convert(source.atEnd(in), in.size(), last), result);
    requireEqual(what, std::string(last - margin.size(), target.end()), margin + expected);

    std::memset(target.begin(), '\x5a', expected.size() + margin.size());
    char* const first = target.begin();
    requireEqual(what, convert(source.atBegin(in), in.size(), first), result);
    requireEqual(what, std::string(first, expected.size() + margin.size()), expected + margin);
}

// The forms that fill a string, even from that string itself.
template <class Convert, class ConvertString>
void checkStrings(const Convert& convert, const ConvertString& convertString, const std::string& in,
                  const std::string& expected, std::size_t capacity) {
    std::string out = "old";
    out.reserve(capacity);
    requireEqual("result of the string form", convertString(in, out), expected.size());
    requireEqual("string", out, in.empty() ? "old" : expected);
    std::string self = in;
    requireEqual("result of the string form on itself", convertString(self, self), expected.size());
    requireEqual("string made of itself", self, expected);
    std::string around = "<" + in + ">";
    requireEqual("result on a part of itself", convert(around.data() + 1, in.size(), around),
                 expected.size());
    requireEqual("string made of a part of itself", around, in.empty() ? "<>" : expected);
}

unsigned long encodeToString(const char* data, unsigned long n, std::string& out) {
    return kxBase64::encode(data, n, out);
}
unsigned long encodeString(const std::string& in, std::string& out) {
    return kxBase64::encode(in, out);
}
unsigned long decodeToString(const char* text, unsigned long n, std::string& out) {
    return kxBase64::decode(text, n, out);
}
unsigned long decodeString(const std::string& in, std::string& out) {
    return kxBase64::decode(in, out);
}
unsigned long encodeRaw(const char* data, unsigned long n, char* out) {
    return kxBase64::encode(data, n, out);
}
unsigned long decodeRaw(const char* text, unsigned long n, char* out) {
    return kxBase64::decode(text, n, out);
}

std::string checkEncode(const std::string& bytes, std::size_t capacity) {
    const std::string text = reference::encodeBase64(bytes);
    const unsigned long length = text.size();
    require(length <= kxBase64::getEncodeSize(bytes.size()), "the encode size is too small");
    checkRaw("encoding", encodeRaw, bytes, length, bytes.empty() ? "" : text + '\0');
    for (const kx::detail::Base64Kernel& kernel : kx::detail::base64Kernels())
        if (kernel.usable()) checkRaw(kernel.name, kernel.encode, bytes, length, text + '\0');
    checkStrings(encodeToString, encodeString, bytes, text, capacity);
    return text;
}

void checkDecode(const std::string& text, std::size_t capacity) {
    const reference::Decoded decoded = reference::decodeBase64(text);
    const unsigned long length = decoded.complete ? decoded.written.size() : 0;
    require(decoded.written.size() <= kxBase64::getDecodeSize(text.size()),
            "the decode size is too small");
    checkRaw("decoding", decodeRaw, text, length, decoded.written);
    for (const kx::detail::Base64Kernel& kernel : kx::detail::base64Kernels())
        if (kernel.usable()) checkRaw(kernel.name, kernel.decode, text, length, decoded.written);
    checkStrings(decodeToString, decodeString, text, decoded.complete ? decoded.written : "",
                 capacity);

    bool isStrict = text.size() >= 4 && text.size() % 4 == 0;
    for (const char c : text) {
        const bool isInAlphabet = reference::base64Alphabet.find(c) != std::string::npos;
        requireEqual("isBase64Char", kxBase64::isBase64Char(c), isInAlphabet || c == '=');
        isStrict = isStrict && (isInAlphabet || c == '=');
    }
    requireEqual("isBase64String", kxBase64::isBase64String(text), isStrict);
}

// `text` with foreign bytes after every `interval` characters.
std::string interrupted(const std::string& text, const std::string& foreign, std::size_t interval) {
    std::string result;
    for (std::size_t at = 0; at < text.size(); at += interval)
        result += text.substr(at, interval) + foreign;
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::Input input(data, size);
    const std::size_t interval = 1 + input.upTo(99);
    const bool isLong = input.byte() == 0xFF;
    const std::size_t capacity = 8 * input.byte();
    std::string foreign;
    for (const char c : input.text())
        if (c != '=' && reference::base64Alphabet.find(c) == std::string::npos) foreign += c;
    foreign.resize(std::min<std::size_t>(foreign.size(), 16));
    std::string bytes = input.rest().substr(0, 4096);
    if (isLong && !bytes.empty()) {
        // Long enough for the forms that convert piece by piece.
        for (const std::string piece = bytes; bytes.size() < 8300;) bytes += piece;
        const reference::Decoded decoded = reference::decodeBase64(bytes);
        checkStrings(decodeToString, decodeString, bytes, decoded.complete ? decoded.written : "",
                     capacity);
        checkStrings(encodeToString, encodeString, bytes, reference::encodeBase64(bytes), capacity);
        return 0;
    }

    checkDecode(bytes, capacity);
    const std::string text = checkEncode(bytes, capacity);
    const std::string lines = interrupted(text, foreign, interval);
    std::string back;
    kxBase64::decode(lines, back);
    requireEqual("what was encoded and decoded", back, bytes);
    checkDecode(lines, capacity);
    return 0;
}
