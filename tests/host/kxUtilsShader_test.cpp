// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shader decryption and the built-in default material.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <thread>
#include <vector>

#include "guarded.h"
#include "kxCrypt.h"
#include "kxUtils.h"
#include "kxtest.h"
#include "rows.h"
#include "shader/defaultMaterial.h"

using namespace std::string_literals;

static_assert(sizeof __defaultMaterial_fp == 784 && sizeof __defaultMaterial_vp == 535);

namespace {

// The library's key. Blocks that have been enciphered for a deployment must stay readable.
const std::string key = "6FL#u92=d_j;M7gP";

std::string littleEndianBytes(std::size_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i, value >>= 8) bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

std::string blockOf(const std::string& text) {
    kxCrypt cipher({key.begin(), key.end()});
    std::string block = littleEndianBytes(text.size());
    for (const char c : text)
        block += static_cast<char>(cipher.code(static_cast<unsigned char>(c)));
    return block;
}

const unsigned char* bytesOf(const char* p) { return reinterpret_cast<const unsigned char*>(p); }

std::string decrypt(const std::string& block) {
    return kxUtils::decryptShader(bytesOf(block.data()));
}

}  // namespace

// --- Decryption ---------------------------------------------------------------------------------

struct Text {
    const char* name;
    std::string text;
};
static void PrintTo(const Text& text, std::ostream* os) { *os << text.name; }

class ShaderText : public testing::TestWithParam<Text> {};

TEST_P(ShaderText, ComesBack) {
    const std::string& text = GetParam().text;
    const std::string block = blockOf(text);
    const unsigned char* bytes = bytesOf(block.data());
    EXPECT_EQ(kxUtils::decryptShader(bytes), text);
    EXPECT_EQ(kxUtils::decryptShader(bytes, /*lineFeed=*/false), text);
    EXPECT_EQ(kxUtils::decryptShader(bytes, /*lineFeed=*/true), text + "\n");
    EXPECT_EQ(kxUtils::decryptShaderLF(bytes), text + "\n");
    EXPECT_EQ(kxUtils::decryptShader(bytes), text) << "again";
}

TEST_P(ShaderText, NothingButTheBlockIsRead) {
    const std::string& text = GetParam().text;
    const std::string block = blockOf(text);
    const kxtest::Guarded memory(block.size() + 8);
    EXPECT_EQ(kxUtils::decryptShader(bytesOf(memory.atEnd(block))), text);
    for (std::size_t offset = 0; offset < 8; ++offset)
        EXPECT_EQ(kxUtils::decryptShader(bytesOf(memory.atBegin(block, offset))), text);
}

static const Text texts[] = {
    {"Empty", ""},
    {"OneCharacter", "x"},
    {"EndsInALineFeed", "void main() {}\n"},
    {"AnyBytes", "\0\xff\0"s},
    {"LengthOfTwoBytes", std::string(0x0203, 'x')},
    {"LengthOfThreeBytes", std::string(0x010203, 'y')},
};
INSTANTIATE_TEST_SUITE_P(Table, ShaderText, testing::ValuesIn(texts), kxtest::nameOfRow);

TEST(Shader, BytesBehindTheBlockAreNotPartOfTheText) {
    EXPECT_EQ(decrypt(blockOf("text") + "more"), "text");
}

TEST(Shader, DecryptionIsItsOwnInverse) {
    const std::string plain = littleEndianBytes(4) + "text";
    EXPECT_EQ(decrypt(littleEndianBytes(4) + decrypt(plain)), "text");
    EXPECT_EQ(littleEndianBytes(4) + decrypt(plain), blockOf("text"));
}

TEST(Shader, FirstCallsOfSeveralThreads) {
    const std::string block = blockOf("text");
    std::vector<std::string> results(4);
    std::vector<std::thread> threads;
    threads.reserve(results.size());
    for (std::string& text : results)
        threads.emplace_back([&block, &text] { text = decrypt(block); });
    for (std::thread& thread : threads) thread.join();
    for (const std::string& text : results) EXPECT_EQ(text, "text");
}

TEST(Shader, KeyStandsNowhereInOnePiece) {
    const std::string library = kxtest::slurp(KX_LIBRARY);
    ASSERT_NE(library.find("__defaultMaterial_fp"), std::string::npos);
    for (const std::size_t half : {0UL, 8UL})
        EXPECT_EQ(library.find(key.substr(half, 8)), std::string::npos);
}

// --- Default material ---------------------------------------------------------------------------

struct Program {
    const char* name;
    const unsigned char* block;
    std::size_t size;
    const char* symbol;
    const char* text;
};
static void PrintTo(const Program& program, std::ostream* os) { *os << program.name; }

class DefaultMaterial : public testing::TestWithParam<Program> {};

TEST_P(DefaultMaterial, IsTheMaintainersText) {
    const std::string text = kxUtils::decryptShader(GetParam().block);
    EXPECT_EQ(text, kxtest::slurp(GetParam().text));
    EXPECT_EQ(text.size() + 4, GetParam().size);
}

TEST_P(DefaultMaterial, IsExportedUnderItsPlainName) {
    void* library = dlopen(KX_LIBRARY, RTLD_NOW);
    ASSERT_NE(library, nullptr) << dlerror();
    const void* symbol = dlsym(library, GetParam().symbol);
    ASSERT_NE(symbol, nullptr) << dlerror();
    EXPECT_EQ(std::memcmp(symbol, GetParam().block, GetParam().size), 0);
    dlclose(library);
}

static const Program programs[] = {
    {"Fragment", __defaultMaterial_fp, sizeof __defaultMaterial_fp, "__defaultMaterial_fp",
     KX_SHADERS "/defaultMaterial.fp"},
    {"Vertex", __defaultMaterial_vp, sizeof __defaultMaterial_vp, "__defaultMaterial_vp",
     KX_SHADERS "/defaultMaterial.vp"},
};
INSTANTIATE_TEST_SUITE_P(Table, DefaultMaterial, testing::ValuesIn(programs), kxtest::nameOfRow);

class GlslCompiler : public testing::Test {
protected:
    void SetUp() override {
        if (!kxtest::exists(KX_GLSLANG_VALIDATOR)) GTEST_SKIP() << "no glslangValidator";
    }
    kxtest::TempDir _dir;
    const std::string _vertex = _dir.write("v.vert", kxUtils::decryptShader(__defaultMaterial_vp));
    const std::string _fragment =
        _dir.write("f.frag", kxUtils::decryptShader(__defaultMaterial_fp));
};

TEST_F(GlslCompiler, AcceptsBothTexts) {
    for (const std::string& file : {_vertex, _fragment}) {
        const auto outcome = kxtest::run({KX_GLSLANG_VALIDATOR, file});
        EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
    }
}

TEST_F(GlslCompiler, LinksThemToOneProgram) {
    const auto outcome = kxtest::run({KX_GLSLANG_VALIDATOR, "-l", _vertex, _fragment});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.out << outcome.err;
}
