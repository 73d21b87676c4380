// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxBase64.h"

#include <gtest/gtest.h>

#include <memory>
#include <type_traits>

#include "base64_checks.h"
#include "rows.h"

static_assert(std::has_virtual_destructor_v<kxBase64> && sizeof(kxBase64) == sizeof(void*));

using namespace std::string_literals;
using kxtest::canary;
using kxtest::everyByte;
using kxtest::expectExactly;
using kxtest::randomBytes;
using kxtest::randomText;

namespace {

/// `out` is one byte larger than getEncodeSize() says, as every raw buffer must be.
std::string encodeRaw(const std::string& bytes) {
    std::string out(kxBase64::getEncodeSize(bytes.size()) + 1, canary);
    out.resize(kxBase64::encode(bytes.data(), bytes.size(), out.data()));
    return out;
}

std::string encodeString(const std::string& bytes) {
    std::string out;
    const unsigned long length = kxBase64::encode(bytes, out);
    EXPECT_EQ(length, out.size());
    return out;
}

std::string decodeRaw(const std::string& text) {
    std::string out(kxBase64::getDecodeSize(text.size()), canary);
    out.resize(kxBase64::decode(text.data(), text.size(), out.data()));
    return out;
}

std::string decodeString(const std::string& text) {
    std::string out;
    const unsigned long length = kxBase64::decode(text, out);
    EXPECT_EQ(length, out.size());
    return out;
}

}  // namespace

// --- Table of pairs: RFC 4648, section 10, and bytes above 0x7F ---------------------------------

struct Pair {
    const char* name;
    std::string bytes, text;
};
static void PrintTo(const Pair& pair, std::ostream* os) { *os << pair.name; }

class Base64Pair : public testing::TestWithParam<Pair> {};

TEST_P(Base64Pair, Encodes) {
    EXPECT_EQ(encodeRaw(GetParam().bytes), GetParam().text);
    EXPECT_EQ(encodeString(GetParam().bytes), GetParam().text);
}

TEST_P(Base64Pair, Decodes) {
    EXPECT_EQ(decodeRaw(GetParam().text), GetParam().bytes);
    EXPECT_EQ(decodeString(GetParam().text), GetParam().bytes);
}

TEST_P(Base64Pair, HasTheFormOfBase64) {
    EXPECT_EQ(kxBase64::isBase64String(GetParam().text), !GetParam().text.empty());
}

static const Pair pairs[] = {
    {"Empty", "", ""},
    {"One", "f", "Zg=="},
    {"Two", "fo", "Zm8="},
    {"Three", "foo", "Zm9v"},
    {"Four", "foob", "Zm9vYg=="},
    {"Five", "fooba", "Zm9vYmE="},
    {"Six", "foobar", "Zm9vYmFy"},
    {"HighBits", "\xff\xff\xff", "////"},
    {"HighBitsOne", "\xff", "/w=="},
    {"HighBitsTwo", "\xfb\xef", "++8="},
    {"Zeros", "\0\0\0"s, "AAAA"},
    {"WholeAlphabet",
     "\x00\x10\x83\x10\x51\x87\x20\x92\x8b\x30\xd3\x8f\x41\x14\x93\x51\x55\x97\x61\x96\x9b\x71\xd7"
     "\x9f\x82\x18\xa3\x92\x59\xa7\xa2\x9a\xab\xb2\xdb\xaf\xc3\x1c\xb3\xd3\x5d\xb7\xe3\x9e\xbb\xf3"
     "\xdf\xbf"s,
     "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"},
};
INSTANTIATE_TEST_SUITE_P(Table, Base64Pair, testing::ValuesIn(pairs), kxtest::nameOfRow);

// --- What decode() makes of other texts ---------------------------------------------------------

class Base64Forgiving : public testing::TestWithParam<Pair> {};

TEST_P(Base64Forgiving, Decodes) {
    EXPECT_EQ(decodeRaw(GetParam().text), GetParam().bytes);
    EXPECT_EQ(decodeString(GetParam().text), GetParam().bytes);
}

static const Pair forgiving[] = {
    {"LineBreak", "foobar", "Zm9v\nYmFy"},
    {"BreakInsideAGroup", "foobar", "Zm\r\n9vY mF\ty"},
    {"OtherAlphabets", "foobar", "-_Zm9v,.YmFy!"},
    {"ZeroAndHighBytes", "foo",
     "\x00Z\xffm\x80"
     "9v"s},
    {"OnlyForeign", "", "\n\n\n\n"},
    {"OneCharacter", "", "Z"},
    {"TwoCharacters", "", "Zm"},
    {"ThreeCharacters", "", "Zm9"},
    {"IncompleteSecondGroup", "", "Zm9vY"},
    {"MissingPadding", "", "Zm9vYg"},
    {"IncompleteAfterPadding", "", "Zg==Zm9"},
    {"SurplusPaddingIsAGroupBegun", "", "Zm8=="},
    {"PaddingIsRememberedAcrossGroups", "ff", "Zg==Zm9v"},
    {"OnePaddingShortensAllLaterGroups", "fofofo", "Zm8=Zm9vZm9v"},
    {"SecondPaddingShortensFurther", "foff", "Zm8=Zm8=Zm9v"},
    {"GroupsBeforePaddingAreWhole", "foofof", "Zm9vZm8=Zg=="},
    {"PaddingInFront", "\x01\x99", "=Zm9"},
    {"PaddingInside", "d\x0f", "Z=9v"},
    {"OnlyPadding", "\0"s, "===="},
    {"AllowanceFarBelowZero", std::string(75, '\0'), std::string(300, '=')},
    {"ForeignBytesAmongPadding", "f", "Zg=\n=\n"},
};
INSTANTIATE_TEST_SUITE_P(Table, Base64Forgiving, testing::ValuesIn(forgiving), kxtest::nameOfRow);

// --- Against the model, and the limits of memory -------------------------------------------------

TEST(Base64Memory, EncodeWritesTextAndTerminatorOnly) {
    std::mt19937 random(1);
    for (std::size_t n = 1; n <= 300; ++n) {
        const std::string bytes = randomBytes(random, n), text = reference::encodeBase64(bytes);
        ASSERT_NO_FATAL_FAILURE(expectExactly(kxBase64::encode, bytes, text.size(), text + '\0'));
    }
}

class Base64Texts : public testing::TestWithParam<unsigned int> {};

TEST_P(Base64Texts, DecodeWritesBytesOfCompleteGroupsOnly) {
    std::mt19937 random(2);
    for (std::size_t n = 1; n <= 300; ++n) {
        const std::string text = randomText(random, n, GetParam());
        const reference::Decoded expected = reference::decodeBase64(text);
        ASSERT_NO_FATAL_FAILURE(expectExactly(kxBase64::decode, text,
                                              expected.complete ? expected.written.size() : 0,
                                              expected.written));
    }
}

TEST_P(Base64Texts, DecodeAgreesWithTheModel) {
    std::mt19937 random(3);
    for (int i = 0; i < 2000; ++i) {
        const std::string text = randomText(random, random() % 300, GetParam());
        const reference::Decoded expected = reference::decodeBase64(text);
        ASSERT_EQ(decodeString(text), expected.complete ? expected.written : "") << text;
    }
}

// From texts with one odd character in 3 to clean ones.
INSTANTIATE_TEST_SUITE_P(OddCharacterOneIn, Base64Texts, testing::Values(3U, 30U, 300U, 1000000U),
                         testing::PrintToStringParamName());

TEST(Base64Memory, DecodesInPlace) {
    for (const char* const text : {"Zm9vYmFy", "Zm9v\nYmFy", "Zg==", "Zg==Zm9v", "Zm9vY"}) {
        const reference::Decoded expected = reference::decodeBase64(text);
        std::string place = text;
        EXPECT_EQ(kxBase64::decode(place.data(), place.size(), place.data()),
                  expected.complete ? expected.written.size() : 0);
        EXPECT_EQ(place.substr(0, expected.written.size()), expected.written);
    }
}

TEST(Base64RoundTrip, EveryByteAtEveryPlaceOfAGroup) {
    for (const std::string& bytes : {everyByte(), "x" + everyByte(), "xy" + everyByte()}) {
        EXPECT_EQ(encodeString(bytes), reference::encodeBase64(bytes));
        EXPECT_EQ(decodeString(encodeString(bytes)), bytes);
    }
}

TEST(Base64RoundTrip, TextBrokenIntoLinesOfMail) {
    std::mt19937 random(4);
    const std::string bytes = randomBytes(random, 5000);
    std::string text = encodeString(bytes);
    for (std::size_t at = 76; at < text.size(); at += 78) text.insert(at, "\r\n");
    EXPECT_EQ(decodeString(text), bytes);
}

// --- Sizes --------------------------------------------------------------------------------------

TEST(Base64Size, Encode) {
    const unsigned long sizes[][2] = {{0, 4}, {1, 4}, {2, 4}, {3, 8}, {4, 8}, {5, 8}, {6, 12}};
    for (const auto& [n, size] : sizes) EXPECT_EQ(kxBase64::getEncodeSize(n), size) << n;
    EXPECT_EQ(kxBase64::getEncodeSize(3000000000UL), 4000000004UL);
}

TEST(Base64Size, Decode) {
    const unsigned long sizes[][2] = {{0, 3}, {1, 3}, {3, 3}, {4, 6}, {7, 6}, {8, 9}};
    for (const auto& [n, size] : sizes) EXPECT_EQ(kxBase64::getDecodeSize(n), size) << n;
    EXPECT_EQ(kxBase64::getDecodeSize(8000000000UL), 6000000003UL);
}

// Deliberate: there is room for the terminator only if n is divisible by 3.
TEST(Base64Size, EncodeLeavesNoRoomForTheTerminator) {
    for (std::size_t n = 1; n <= 30; ++n) {
        const std::size_t length = encodeString(std::string(n, 'x')).size();
        EXPECT_EQ(kxBase64::getEncodeSize(n), n % 3 == 0 ? length + 4 : length) << n;
    }
}

// --- Empty input --------------------------------------------------------------------------------

TEST(Base64Empty, RawFormsTouchNothing) {
    for (const kxtest::Convert convert :
         {kxtest::Convert{kxBase64::encode}, kxtest::Convert{kxBase64::decode}}) {
        char out[8] = "kept";
        EXPECT_EQ(convert(nullptr, 4, out), 0U);
        EXPECT_EQ(convert("Zm9v", 0, out), 0U);
        EXPECT_EQ(convert("Zm9v", 4, nullptr), 0U);
        EXPECT_STREQ(out, "kept");
    }
}

TEST(Base64Empty, StringFormsKeepTheirOutput) {
    std::string out = "kept";
    EXPECT_EQ(kxBase64::encode("", out), 0U);
    EXPECT_EQ(kxBase64::encode("foo", 0, out), 0U);
    EXPECT_EQ(kxBase64::encode(nullptr, 3, out), 0U);
    EXPECT_EQ(kxBase64::decode("", out), 0U);
    EXPECT_EQ(kxBase64::decode("Zm9v", 0, out), 0U);
    EXPECT_EQ(kxBase64::decode(nullptr, 4, out), 0U);
    EXPECT_EQ(out, "kept");
}

// --- String forms -------------------------------------------------------------------------------

TEST(Base64String, ReplacesEarlierContent) {
    std::string out(1000, 'x');
    EXPECT_EQ(kxBase64::encode("foob", 4, out), 8U);
    EXPECT_EQ(out, "Zm9vYg==");
    out.assign(1000, 'x');
    EXPECT_EQ(kxBase64::decode("Zm9vYg==", 8, out), 4U);
    EXPECT_EQ(out, "foob");
}

TEST(Base64String, FailedDecodeLeavesOutputEmpty) {
    std::string out = "old";
    EXPECT_EQ(kxBase64::decode("Zm9vY", out), 0U);
    EXPECT_EQ(out, "");
    out = "old";
    EXPECT_EQ(kxBase64::decode("\n", out), 0U);
    EXPECT_EQ(out, "");
}

TEST(Base64String, InputMayLieInTheOutput) {
    // These fit into the string object, fit on the heap, and are too long to be converted at once.
    for (const std::size_t n : {3UL, 5UL, 100UL, 20000UL}) {
        const std::string bytes(n, 'x'), text = reference::encodeBase64(bytes);
        std::string s = bytes;
        EXPECT_EQ(kxBase64::encode(s, s), text.size());
        EXPECT_EQ(s, text);
        EXPECT_EQ(kxBase64::decode(s, s), n);
        EXPECT_EQ(s, bytes);
        s = "ab" + text;
        EXPECT_EQ(kxBase64::decode(s.data() + 2, text.size(), s), n);
        EXPECT_EQ(s, bytes);
    }
}

TEST(Base64String, LongInputsOfAnyLength) {
    std::mt19937 random(6);
    std::string encoded, decoded;  // used again, both larger and smaller than needed
    for (const std::size_t n :
         {6142UL, 6143UL, 6144UL, 6145UL, 12288UL, 12289UL, 30000UL, 9000UL}) {
        const std::string bytes = randomBytes(random, n), text = reference::encodeBase64(bytes);
        EXPECT_EQ(kxBase64::encode(bytes, encoded), text.size());
        EXPECT_EQ(encoded, text);
        EXPECT_EQ(kxBase64::decode(text, decoded), n);
        EXPECT_EQ(decoded, bytes);
    }
    for (const std::size_t n : {8191UL, 8192UL, 8193UL, 20000UL})
        for (const unsigned int oddOneIn : {10U, 1000U, 100000U}) {
            const std::string text = randomText(random, n, oddOneIn);
            const reference::Decoded expected = reference::decodeBase64(text);
            EXPECT_EQ(decodeString(text), expected.complete ? expected.written : "");
        }
}

// --- Tests of text ------------------------------------------------------------------------------

TEST(Base64Char, AlphabetAndPadding) {
    for (const char c : everyByte()) {
        const bool expected = c == '=' || reference::base64Alphabet.find(c) != std::string::npos;
        EXPECT_EQ(kxBase64::isBase64Char(c), expected) << static_cast<int>(c);
    }
}

TEST(Base64Char, MapGivesIndexPaddingOrForeign) {
    for (const char c : everyByte()) {
        const std::size_t index = reference::base64Alphabet.find(c);
        const std::size_t expected = c == '=' ? 254 : index == std::string::npos ? 255 : index;
        EXPECT_EQ(kxBase64::_map[static_cast<unsigned char>(c)], expected) << static_cast<int>(c);
    }
}

TEST(Base64String, Form) {
    for (const char* text : {"Zm9v", "====", "=Zm9", "Zg==Zm9v", "++//"})
        EXPECT_TRUE(kxBase64::isBase64String(text)) << text;
    for (const char* text :
         {"", "Z", "Zm9", "Zm9vY", "Zm 9", "Zm9v\n", "Zm9v\nYmF", "Zm9\xff", "-_--"})
        EXPECT_FALSE(kxBase64::isBase64String(text)) << text;
    EXPECT_FALSE(kxBase64::isBase64String("Zm9\0"s));
}

TEST(Base64Object, IsDestroyedThroughItsBase) {
    struct Derived : kxBase64 {
        explicit Derived(bool& flag) : gone(flag) {}
        ~Derived() override { gone = true; }
        bool& gone;
    };
    bool gone = false;
    std::unique_ptr<kxBase64> object = std::make_unique<Derived>(gone);
    object.reset();
    EXPECT_TRUE(gone);
}
