// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shader decryption and its cipher: well-formed blocks decode to the original text, all with one
// key stream from their first byte on, and nothing after their end is read.
#include <cstring>
#include <vector>

#include "guarded.h"
#include "input.h"
#include "kxCrypt.h"
#include "kxUtils.h"
#include "reference/rc4.h"
#include "support.h"

using kxfuzz::requireEqual;

namespace {

// The block for `text`, at the end of readable memory or `offset` bytes after its start.
const unsigned char* block(const std::string& text, std::size_t offset, bool atEnd) {
    static const kxtest::Guarded memory(1 << 16);
    std::string bytes;
    for (unsigned shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(text.size() >> shift & 0xFF);
    bytes += text;
    const char* const place = atEnd ? memory.atEnd(bytes) : memory.atBegin(bytes, offset);
    return reinterpret_cast<const unsigned char*>(place);
}

std::string exclusiveOr(std::string text, const std::string& other) {
    for (std::size_t i = 0; i < text.size(); ++i) text[i] = static_cast<char>(text[i] ^ other[i]);
    return text;
}

void checkDecryption(const std::string& text, std::size_t offset) {
    // Encrypting zeros gives the key stream itself.
    const std::string stream =
        kxUtils::decryptShader(block(std::string(text.size(), '\0'), 0, true));
    const std::string coded = kxUtils::decryptShader(block(text, 0, true));
    requireEqual("coded text", coded, exclusiveOr(text, stream));
    requireEqual("decoded text", kxUtils::decryptShader(block(coded, offset, false)), text);
    requireEqual("decoded line", kxUtils::decryptShaderLF(block(coded, 0, true)), text + '\n');
    requireEqual("line decoded again", kxUtils::decryptShader(block(coded, offset, false), true),
                 text + '\n');
}

void checkCipher(const std::vector<unsigned char>& key, const std::string& text,
                 std::size_t restartAt) {
    const std::string expected =
        reference::rc4(key.empty() ? std::vector<unsigned char>{0} : key, text);
    kxCrypt cipher(key);
    const auto code = [&cipher](const std::string& part) {
        std::string result;
        for (const char c : part)
            result += static_cast<char>(cipher.code(static_cast<unsigned char>(c)));
        return result;
    };
    const std::string start = code(text.substr(0, restartAt));
    requireEqual("start of the coded text", start, expected.substr(0, restartAt));
    const kxCrypt copy = cipher;
    cipher.reset();
    requireEqual("coded text from the start again", code(text), expected);
    cipher = copy;
    requireEqual("rest of the coded text", start + code(text.substr(start.size())), expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::Input input(data, size);
    const std::size_t offset = input.upTo(15), restartAt = input.upTo(255);
    const std::size_t repetitions = 1 + input.upTo(3);
    std::string keyText;
    const std::string piece = input.text();
    for (std::size_t i = 0; i < repetitions; ++i) keyText += piece;  // also more than 256 bytes
    const std::string text = input.rest().substr(0, 4096);

    checkDecryption(text, offset);
    checkCipher(std::vector<unsigned char>(keyText.begin(), keyText.end()), text, restartAt);
    return 0;
}
