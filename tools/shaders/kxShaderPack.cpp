// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Enciphers a shader's text and prints the C++ source unit that embeds it in the library:
//
//     cd Common/Libs/Utils/shader
//     kxShaderPack ../../../../tools/shaders/defaultMaterial.fp > defaultMaterial.fp.cpp
//
// The sizes of the blocks are published (defaultMaterial.h): a text of another length does not
// compile.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "kxUtils.h"

namespace {

std::string littleEndian32(std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i, value >>= 8) bytes += static_cast<char>(value & 0xFF);
    return bytes;
}

std::string makeBlock(const std::string& text) {
    const std::string size = littleEndian32(static_cast<std::uint32_t>(text.size()));
    const std::string plain = size + text;
    // The cipher is its own inverse, so the library's key can stay inside the library.
    return size + kxUtils::decryptShader(reinterpret_cast<const unsigned char*>(plain.data()));
}

void printUnit(const std::string& file, const std::string& block) {
    std::string symbol = "__" + file;
    for (char& c : symbol)
        if (c == '.') c = '_';
    std::printf(
        "// Made by kxShaderPack of tools/shaders/%s; do not edit.\n"
        "#include \"defaultMaterial.h\"\n"
        "\n"
        "// clang-format off\n"
        "const unsigned char %s[%zu] = {",
        file.c_str(), symbol.c_str(), block.size());
    for (std::size_t i = 0; i < block.size(); ++i)
        std::printf("%s0x%02x,", i % 16 == 0 ? "\n    " : " ",
                    static_cast<unsigned int>(static_cast<unsigned char>(block[i])));
    std::printf("\n};\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: kxShaderPack shader-text > source-unit.cpp\n");
        return 2;
    }
    std::ifstream in(argv[1], std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (text.str().empty()) {
        std::fprintf(stderr, "kxShaderPack: cannot read '%s', or it is empty\n", argv[1]);
        return 1;
    }
    printUnit(std::filesystem::path(argv[1]).filename().string(), makeBlock(text.str()));
    if (std::fflush(stdout) != 0) {
        std::fprintf(stderr, "kxShaderPack: cannot write the result\n");
        return 1;
    }
    return 0;
}
