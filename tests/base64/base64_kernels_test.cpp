// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <cstring>

#include "base64_checks.h"
#include "detail/base64/decoder.h"
#include "detail/base64/kernel.h"
#include "kernels.h"
#include "rows.h"

using kx::detail::Base64Decoder;
using kx::detail::Base64Kernel;
using kxtest::expectExactly;
using kxtest::randomBytes;
using kxtest::randomText;
using reference::decodeBase64;
using reference::Decoded;
using reference::encodeBase64;

namespace kx::detail {
static void PrintTo(const Base64Kernel& kernel, std::ostream* os) { *os << kernel.name; }
}  // namespace kx::detail

static const auto kernels = kx::detail::base64Kernels();

class Base64Kernels : public kxtest::KernelTest<Base64Kernel> {
protected:
    unsigned int pick(unsigned int below) {
        return std::uniform_int_distribution<unsigned int>(0, below - 1)(_random);
    }
    std::mt19937 _random{11};
};

TEST_P(Base64Kernels, EncodeEveryLengthInEveryPlace) {
    ASSERT_NO_FATAL_FAILURE(expectExactly(GetParam().encode, "", 0, std::string(1, '\0')));
    for (std::size_t n = 1; n <= 300; ++n) {
        const std::string bytes = randomBytes(_random, n), text = encodeBase64(bytes);
        ASSERT_NO_FATAL_FAILURE(expectExactly(GetParam().encode, bytes, text.size(), text + '\0'));
    }
}

TEST_P(Base64Kernels, EncodeLongInputs) {
    for (const std::size_t n : {1000UL, 1024UL, 4095UL, 30000UL}) {
        const std::string bytes = randomBytes(_random, n);
        std::string text(n / 3 * 4 + 5, 'x');
        text.resize(GetParam().encode(bytes.data(), n, text.data()));
        EXPECT_EQ(text, encodeBase64(bytes));
    }
}

class Base64KernelsDecode : public Base64Kernels {
protected:
    /// Input and output end at guard pages; the output has room only up to the last expected byte.
    static void expectDecoded(const std::string& text, const Decoded& expected) {
        static const kxtest::Guarded source(1 << 20), target(1 << 17);
        char* const out = target.end() - expected.written.size();
        out[-1] = kxtest::canary;
        ASSERT_EQ(GetParam().decode(source.atEnd(text), text.size(), out),
                  expected.complete ? expected.written.size() : 0)
            << text;
        ASSERT_EQ(std::string(out, target.end()), expected.written) << text;
        ASSERT_EQ(out[-1], kxtest::canary) << text;
    }
    static void expectDecoded(const std::string& text) { expectDecoded(text, decodeBase64(text)); }
};

TEST_P(Base64KernelsDecode, EveryLengthInEveryPlace) {
    for (const unsigned int oddOneIn : {5U, 100U, 1000000U})
        for (std::size_t n = 0; n <= 300; ++n) {
            const std::string text = randomText(_random, n, oddOneIn);
            const Decoded expected = decodeBase64(text);
            ASSERT_NO_FATAL_FAILURE(expectExactly(GetParam().decode, text,
                                                  expected.complete ? expected.written.size() : 0,
                                                  expected.written));
        }
}

TEST_P(Base64KernelsDecode, AnyByteAtEveryPosition) {
    for (const std::size_t n : {12UL, 64UL, 300UL, 700UL}) {
        const std::string clean = encodeBase64(randomBytes(_random, n / 4 * 3));
        for (std::size_t at = 0; at < n; ++at) {
            for (const char odd : {'=', '\n', '\0', '-', '\xBD', '\xFF', '\xC1'}) {
                std::string text = clean;
                text[at] = odd;
                ASSERT_NO_FATAL_FAILURE(expectDecoded(text));
            }
            // The byte is inserted, so the last group stays complete.
            ASSERT_NO_FATAL_FAILURE(expectDecoded(clean.substr(0, at) + '\n' + clean.substr(at)));
            ASSERT_NO_FATAL_FAILURE(
                expectDecoded(clean.substr(0, at) + "\r\n" + clean.substr(at, 5) + "===="));
        }
    }
}

TEST_P(Base64KernelsDecode, EachByteIsInTheAlphabetOrSkipped) {
    const std::string clean = encodeBase64(randomBytes(_random, 240));
    for (const char byte : kxtest::everyByte()) {
        std::string text = clean;
        text[100] = byte;
        ASSERT_NO_FATAL_FAILURE(expectDecoded(text));
        ASSERT_NO_FATAL_FAILURE(expectDecoded(std::string(32, byte) + clean));
    }
}

TEST_P(Base64KernelsDecode, LongTexts) {
    for (const unsigned int oddOneIn : {2U, 5U, 100U, 5000U, 1000000U})
        ASSERT_NO_FATAL_FAILURE(expectDecoded(randomText(_random, 30000, oddOneIn)));
    const std::string clean = encodeBase64(randomBytes(_random, 30001));
    for (const char* const lineBreak : {"\n", "\r\n", "\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n\n"})
        for (const std::size_t length : {1UL, 4UL, 63UL, 64UL, 76UL, 1000UL}) {
            std::string text;
            for (std::size_t at = 0; at < clean.size(); at += length)
                text += clean.substr(at, length) + lineBreak;
            ASSERT_NO_FATAL_FAILURE(expectDecoded(text, decodeBase64(clean)));
        }
}

TEST_P(Base64KernelsDecode, ManyForeignBytesInsideAGroup) {
    for (const std::size_t n : {70UL, 3000UL, 10000UL}) {
        const std::string gap(n, ' ');
        for (const std::string& text :
             {"Zm" + gap + "9v", "Zm9vZ" + gap, gap, "Zm9v" + gap + "Zg=="})
            ASSERT_NO_FATAL_FAILURE(expectDecoded(text));
    }
}

// A decoded byte is never written ahead of the characters that it comes from, not even by a kernel
// that takes many at a time.
TEST_P(Base64KernelsDecode, InPlace) {
    static const kxtest::Guarded little(4096), much(1 << 17);
    const auto expectInPlace = [](const kxtest::Guarded& memory, const std::string& text,
                                  char* at) {
        const Decoded expected = decodeBase64(text);
        memory.fill(kxtest::canary);
        std::memcpy(at, text.data(), text.size());
        ASSERT_EQ(GetParam().decode(at, text.size(), at),
                  expected.complete ? expected.written.size() : 0)
            << text;
        ASSERT_EQ(std::string(at, expected.written.size()), expected.written) << text;
        const std::size_t rest = text.size() - expected.written.size();
        ASSERT_EQ(std::string(at + expected.written.size(), rest),
                  text.substr(expected.written.size()))
            << "what is behind the bytes stays: " << text;
        ASSERT_TRUE(memory.filledOutside(at, text.size(), kxtest::canary)) << text;
    };
    for (const unsigned int oddOneIn : {3U, 5U, 30U, 100U, 1000000U})
        for (std::size_t n = 0; n <= 300; ++n)
            for (int i = 0; i < 2; ++i) {
                const std::string text = randomText(_random, n, oddOneIn);
                ASSERT_NO_FATAL_FAILURE(expectInPlace(little, text, little.begin() + pick(64)));
                ASSERT_NO_FATAL_FAILURE(expectInPlace(little, text, little.end() - n));
            }
    const std::string clean = encodeBase64(randomBytes(_random, 30000));
    ASSERT_NO_FATAL_FAILURE(expectInPlace(much, clean, much.begin()));
    for (const std::size_t length : {4UL, 63UL, 64UL, 76UL, 1000UL, 5000UL}) {
        std::string text;
        for (std::size_t at = 0; at < clean.size(); at += length)
            text += clean.substr(at, length) + "\r\n";
        ASSERT_NO_FATAL_FAILURE(expectInPlace(much, text, much.end() - text.size()));
    }
    for (const unsigned int oddOneIn : {2U, 5U, 100U, 5000U})
        ASSERT_NO_FATAL_FAILURE(
            expectInPlace(much, randomText(_random, 30000, oddOneIn), much.begin() + pick(64)));
}

TEST_P(Base64KernelsDecode, GroupsEndBetweenGroupsAndBeforePadding) {
    for (int i = 0; i < 3000; ++i) {
        const std::string text = randomText(_random, pick(800), 3U + pick(500));
        std::string out(text.size() + 8, kxtest::canary);
        const auto [read, written] = GetParam().decodeGroups(text.data(), text.size(), out.data());
        ASSERT_LE(read, text.size());
        const Decoded expected = decodeBase64(text.substr(0, read));
        ASSERT_TRUE(expected.complete) << text;
        ASSERT_EQ(text.substr(0, read).find('='), std::string::npos) << text;
        ASSERT_EQ(out, expected.written + std::string(out.size() - written, kxtest::canary));
    }
}

TEST_P(Base64KernelsDecode, PiecesGiveTheWhole) {
    for (int i = 0; i < 500; ++i) {
        const std::string text = randomText(_random, 200, 3U + pick(300));
        const Decoded expected = decodeBase64(text);
        const std::size_t size = 1 + pick(100);
        std::string bytes;
        Base64Decoder decoder(GetParam().decodeGroups);
        for (std::size_t at = 0; at < text.size(); at += size) {
            const std::string piece = text.substr(at, size);
            std::string out(piece.size() + 3, kxtest::canary);
            out.resize(decoder.decode(piece.data(), piece.size(), out.data()));
            bytes += out;
        }
        ASSERT_EQ(bytes, expected.written) << text;
        ASSERT_EQ(decoder.isComplete(), expected.complete) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Kernel, Base64Kernels, testing::ValuesIn(kernels.begin(), kernels.end()),
                         kxtest::nameOfRow);
INSTANTIATE_TEST_SUITE_P(Kernel, Base64KernelsDecode,
                         testing::ValuesIn(kernels.begin(), kernels.end()), kxtest::nameOfRow);

TEST(Base64KernelTable, EndsWithThePortableOneAndChoosesTheFirstUsable) {
    kxtest::expectPortableOneLastAndFirstUsableChosen(kernels);
}
