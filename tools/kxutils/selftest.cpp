// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils selftest: tests the codecs, checksums and ciphers of the library with published vectors.
#include <array>
#include <utility>

#include "kxBase64.h"
#include "kxCRC32.h"
#include "kxCrypt.h"
#include "kxFile.h"
#include "kxUtils.h"
#include "session.h"

namespace {

void expect(bool isRight, const std::string& what) {
    if (!isRight) throw Failure(Status::bad, "wrong: " + what);
}

// RFC 4648, section 10.
constexpr std::array<std::pair<const char*, const char*>, 6> base64Vectors = {
    {{"f", "Zg=="},
     {"fo", "Zm8="},
     {"foo", "Zm9v"},
     {"foob", "Zm9vYg=="},
     {"fooba", "Zm9vYmE="},
     {"foobar", "Zm9vYmFy"}}};

void testEncoding(Item& /*item*/) {
    for (const auto& [bytes, text] : base64Vectors) {
        std::string result;
        kxBase64::encode(std::string(bytes), result);
        expect(result == text, bytes);
    }
}

void testDecoding(Item& /*item*/) {
    for (const auto& [bytes, text] : base64Vectors) {
        std::string result;
        kxBase64::decode(std::string(text), result);
        expect(result == bytes && kxBase64::isBase64String(text), text);
    }
}

// Uses the check value of the catalogue of CRC algorithms, and a text long enough for every fast
// path.
template <typename Function>
void testCrc(Function crc) {
    const std::string digits = "123456789", million(1000000, 'a');
    expect(crc(digits) == 0xCBF43926, digits);
    expect(crc(million) == 0xDC25BFBC, "a million times a");
}

using Crc = std::uint32_t (*)(const void* data, unsigned long length, std::uint32_t previous);

template <Crc crc>
void testMethod(Item& /*item*/) {
    testCrc([](const std::string& bytes) { return crc(bytes.data(), bytes.size(), 0); });
}

void testFileChecksum(Item& /*item*/) {
    testCrc([](const std::string& bytes) {
        return kxFile::getID(bytes.data(), static_cast<std::uint32_t>(bytes.size()));
    });
}

void testHash(Item& /*item*/) {
    constexpr std::array<std::pair<const char*, std::uint32_t>, 4> vectors = {
        {{"", 0x811C1CD9}, {"a", 0x3F2855D4}, {"abcdefgh", 0xF027F373}, {"123456789", 0xBA2690B3}}};
    for (const auto& [text, hash] : vectors)
        expect(kxCRC32::calc_FNV1A_Jesteress(text, std::string(text).size()) == hash, text);
}

// RFC 6229, key 01 02 ... 10, at offsets 0 and 4096; zero bytes show the key stream.
void testCipher(Item& /*item*/) {
    using Bytes = std::vector<unsigned char>;
    Bytes key(16);
    for (std::size_t i = 0; i < key.size(); ++i) key[i] = static_cast<unsigned char>(i + 1);
    const Bytes at0 = {0x9a, 0xc7, 0xcc, 0x9a, 0x60, 0x9d, 0x1e, 0xf7,
                       0xb2, 0x93, 0x28, 0x99, 0xcd, 0xe4, 0x1b, 0x97};
    const Bytes at4096 = {0xa3, 0x6a, 0x4c, 0x30, 0x1a, 0xe8, 0xac, 0x13,
                          0x61, 0x0c, 0xcb, 0xc1, 0x22, 0x56, 0xca, 0xcc};
    kxCrypt cipher(key);
    Bytes stream(4096 + at4096.size());
    for (unsigned char& byte : stream) byte = cipher.code(0);
    expect(std::equal(at0.begin(), at0.end(), stream.begin()), "offset 0");
    expect(std::equal(at4096.begin(), at4096.end(), stream.begin() + 4096), "offset 4096");
}

// The key is the library's own, so there are no published vectors. What is enciphered must come
// back.
void testShader(Item& /*item*/) {
    const std::string text = "void main() {}\n";
    const std::string head = {static_cast<char>(text.size()), 0, 0, 0};
    const auto code = [](const std::string& block) {
        return kxUtils::decryptShader(reinterpret_cast<const unsigned char*>(block.data()));
    };
    const std::string enciphered = code(head + text);
    expect(enciphered != text && code(head + enciphered) == text, "a block does not come back");
}

constexpr std::array<std::pair<const char*, void (*)(Item&)>, 11> tests = {
    {{"Base64 encoding", testEncoding},
     {"Base64 decoding", testDecoding},
     {"CRC-32 bitwise", testMethod<kxCRC32::calc_bitwise>},
     {"CRC-32 halfbyte", testMethod<kxCRC32::calc_halfbyte>},
     {"CRC-32 1byte", testMethod<kxCRC32::calc_1byte>},
     {"CRC-32 4bytes", testMethod<kxCRC32::calc_4bytes>},
     {"CRC-32 8bytes", testMethod<kxCRC32::calc_8bytes>},
     {"CRC-32 of files", testFileChecksum},
     {"FNV-1a Jesteress", testHash},
     {"RC4", testCipher},
     {"shader blocks", testShader}}};

void run(Report& report) {
    for (const auto& [name, test] : tests) {
        Item item = makeItem(name, test);
        item.text = report.statusLine(item.status, name);
        report.add(item);
    }
}

}  // namespace

Work addSelftest(Arguments& arguments, Session& session) {
    arguments.footer("Example:\n  kxutils selftest");
    return [&session] { run(session.report); };
}
