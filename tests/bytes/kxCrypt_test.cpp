// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxCrypt.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <type_traits>

#include "rows.h"
#include "vectors/rfc6229.h"

using namespace std::string_literals;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

std::string code(kxCrypt& cipher, const std::string& text) {
    std::string coded;
    for (const char c : text)
        coded += static_cast<char>(cipher.code(static_cast<unsigned char>(c)));
    return coded;
}

std::string code(const Bytes& key, const std::string& text) {
    kxCrypt cipher(key);
    return code(cipher, text);
}

Bytes fromHex(const std::string& digits) {
    Bytes bytes;
    for (std::size_t at = 0; at < digits.size(); at += 2)
        bytes.push_back(static_cast<unsigned char>(std::stoul(digits.substr(at, 2), nullptr, 16)));
    return bytes;
}

}  // namespace

// --- Published vectors --------------------------------------------------------------------------

namespace rfc6229 {
static void PrintTo(const Vector& vector, std::ostream* os) { *os << vector.name; }
}  // namespace rfc6229

class Rfc6229 : public testing::TestWithParam<rfc6229::Vector> {
protected:
    static void expectVectors(const Bytes& stream) {
        for (std::size_t row = 0; row < std::size(rfc6229::offsets); ++row) {
            const auto from = stream.begin() + static_cast<long>(rfc6229::offsets[row]);
            EXPECT_EQ(Bytes(from, from + 16), fromHex(GetParam().stream[row]))
                << "at " << rfc6229::offsets[row];
        }
    }
    // Encrypting zero bytes shows the key stream itself.
    static Bytes keyStream(kxCrypt& cipher) {
        return bytesOf(code(cipher, std::string(4112, '\0')));
    }
};

TEST_P(Rfc6229, KeyStreamFromTheStartAndAfterReset) {
    kxCrypt cipher(fromHex(GetParam().key));
    expectVectors(keyStream(cipher));
    cipher.reset();
    expectVectors(keyStream(cipher));
}

INSTANTIATE_TEST_SUITE_P(Key, Rfc6229, testing::ValuesIn(rfc6229::vectors), kxtest::nameOfRow);

TEST(Crypt, WellKnownTexts) {
    EXPECT_EQ(code(bytesOf("Key"), "Plaintext"), "\xBB\xF3\x16\xE8\xD9\x40\xAF\x0A\xD3");
    EXPECT_EQ(code(bytesOf("Wiki"), "pedia"), "\x10\x21\xBF\x04\x20");
    EXPECT_EQ(code(bytesOf("Secret"), "Attack at dawn"),
              "\x45\xA0\x1F\x64\x5F\xC3\x5B\x38\x35\x52\x54\x4B\x9B\xF5");
}

// --- The class ----------------------------------------------------------------------------------

// A key converts to its cipher.
static_assert(std::is_convertible_v<const Bytes&, kxCrypt>);

TEST(Crypt, IsMadeOfAKey) {
    kxCrypt cipher = bytesOf("Key");
    EXPECT_EQ(code(cipher, "Plaintext"), "\xBB\xF3\x16\xE8\xD9\x40\xAF\x0A\xD3");
}

// --- Behaviour ----------------------------------------------------------------------------------

TEST(Crypt, ResetStartsTheKeyStreamAgain) {
    const std::string text(1000, 'x');
    kxCrypt cipher(bytesOf("Key"));
    const std::string coded = code(cipher, text);
    EXPECT_NE(code(cipher, coded), text);
    cipher.reset();
    EXPECT_EQ(code(cipher, coded), text);
}

TEST(Crypt, KeepsItsOwnCopyOfTheKey) {
    Bytes key = bytesOf("Key");
    kxCrypt cipher(key);
    key.assign(3, 'x');
    cipher.reset();
    EXPECT_EQ(code(cipher, "Plaintext"), code(bytesOf("Key"), "Plaintext"));
}

TEST(Crypt, UsesTheFirst256BytesOfAKey) {
    const std::string text(1000, 'x');
    Bytes key;
    for (std::size_t n = 0; n < 256; ++n) key.push_back(static_cast<unsigned char>(n * 7 + 1));
    const std::string expected = code(key, text);
    Bytes longer = key;
    longer.push_back('x');
    EXPECT_EQ(code(longer, text), expected);
    longer[255] ^= 1;
    EXPECT_NE(code(longer, text), expected);
}

TEST(Crypt, EmptyKeyCodesAsOneZeroByte) {
    kxCrypt cipher(Bytes{});
    EXPECT_EQ(code(cipher, "Plaintext"), code(Bytes{0}, "Plaintext"));
    cipher.reset();
    EXPECT_EQ(code(cipher, "Plaintext"), code(Bytes{0}, "Plaintext"));
}

TEST(Crypt, CopiesGoOnIndependently) {
    kxCrypt original(bytesOf("Key"));
    code(original, "Plain");
    kxCrypt copy(original), assigned(bytesOf("x"));
    assigned = original;
    const std::string rest = code(original, "text");
    EXPECT_EQ(rest, "\x40\xAF\x0A\xD3");
    EXPECT_EQ(code(copy, "text"), rest);
    EXPECT_EQ(code(assigned, "text"), rest);
    assigned.reset();
    EXPECT_EQ(code(assigned, "Plain"), code(bytesOf("Key"), "Plain"));
}

// This is why it protects nothing: texts with one key give each other away, and anybody who knows
// where a byte is can change it unnoticed.
TEST(Crypt, HidesButDoesNotProtect) {
    const std::string known = "known text", secret = "secret one";
    const std::string codedKnown = code(bytesOf("Key"), known);
    std::string codedSecret = code(bytesOf("Key"), secret), found, expected = secret;
    for (std::size_t i = 0; i < known.size(); ++i)
        found += static_cast<char>(codedKnown[i] ^ known[i] ^ codedSecret[i]);
    EXPECT_EQ(found, secret);
    codedSecret[7] = static_cast<char>(codedSecret[7] ^ 'o' ^ 'n');
    expected[7] = 'n';
    EXPECT_EQ(code(bytesOf("Key"), codedSecret), expected);
}

// --- Layout -------------------------------------------------------------------------------------

static_assert(std::has_virtual_destructor_v<kxCrypt> && std::is_copy_constructible_v<kxCrypt> &&
              std::is_copy_assignable_v<kxCrypt>);
static_assert(sizeof(kxCrypt) == sizeof(void*) + sizeof(Bytes) + 256 + 4 + 4);

TEST(Crypt, FieldsStandInOrder) {
    const Bytes key = bytesOf("Key");
    kxCrypt cipher(key);
    cipher.code(0);
    cipher.code(0);

    const auto* at = reinterpret_cast<const unsigned char*>(&cipher) + sizeof(void*);

    const unsigned char* keyData = nullptr;  // a vector begins with its first pointer
    std::memcpy(&keyData, at, sizeof keyData);
    ASSERT_NE(keyData, nullptr);
    EXPECT_EQ(Bytes(keyData, keyData + 3), key);
    at += sizeof(Bytes);

    bool seen[256] = {};
    for (int n = 0; n < 256; ++n) seen[*at++] = true;
    for (const bool value : seen) EXPECT_TRUE(value);

    // The generator after two calls with this key, computed with an independent RC4.
    std::uint32_t i = 0, j = 0;
    std::memcpy(&i, at, sizeof i);
    std::memcpy(&j, at + 4, sizeof j);
    EXPECT_EQ(i, 2U);
    EXPECT_EQ(j, 183U);
}
