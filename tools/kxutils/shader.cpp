// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils shader: makes and reads enciphered shader blocks.
#include <array>
#include <cstdio>
#include <memory>

#include "kxUtils.h"
#include "output.h"
#include "session.h"

namespace {

struct Options {
    std::string operation, input, output = "-", array, header;
};

// The library takes a block in one piece, so all of it is in memory; no shader is nearly this long.
constexpr std::size_t maxText = 1 << 24;
constexpr std::size_t headSize = 4;  // the text's size, the least significant byte first

std::string readWhole(const std::string& name) {
    Input input(name);
    std::string bytes(headSize + maxText + 1, '\0');
    bytes.resize(input.fill(bytes.data(), bytes.size()));
    return bytes;
}

std::string headOf(std::size_t size) {
    std::string head;
    for (std::size_t i = 0; i < headSize; ++i) head += static_cast<char>(size >> 8 * i & 0xFF);
    return head;
}

std::string coded(const std::string& block) {
    return kxUtils::decryptShader(reinterpret_cast<const unsigned char*>(block.data()));
}

std::string packed(const std::string& text) {
    if (text.size() > maxText) throw Failure(Status::bad, "the text is longer than 16 MiB");
    const std::string head = headOf(text.size());
    return head + coded(head + text);  // the cipher is its own inverse
}

std::string unpacked(const std::string& block) {
    if (block.size() < headSize) throw Failure(Status::bad, "not an enciphered block");
    // The library trusts the size, so it is checked here.
    if (block.compare(0, headSize, headOf(block.size() - headSize)) != 0)
        throw Failure(Status::bad, "not an enciphered block: its size does not fit");
    return coded(block);
}

std::string sourceUnit(const Options& options, const std::string& block) {
    const std::string array =
        "const unsigned char " + options.array + '[' + std::to_string(block.size()) + ']';
    // It is declared first, because a constant would otherwise have internal linkage.
    const std::string declaration =
        options.header.empty() ? "extern " + array + ";" : "#include \"" + options.header + '"';
    std::string unit = "// Made by kxutils shader pack; do not edit.\n" + declaration +
                       "\n\n// clang-format off\n" + array + " = {";
    for (std::size_t i = 0; i < block.size(); ++i) {
        std::array<char, 8> byte{};
        std::snprintf(byte.data(), byte.size(), " 0x%02x,", static_cast<unsigned char>(block[i]));
        unit += (i % 16 == 0 ? "\n   " : "") + std::string(byte.data());
    }
    return unit + "\n};\n";
}

std::string checkName(const std::string& text) {
    const auto isLetter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    };
    const bool isName = !text.empty() && isLetter(text[0]) &&
                        std::all_of(text.begin(), text.end(),
                                    [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); });
    return isName ? "" : "'" + text + "' is not a C++ name";
}

void run(const Options& options, Session& session) {
    const bool isPacking = options.operation == "pack";
    if (!isPacking && !options.array.empty()) throw UsageError("--array is for pack");
    if (options.array.empty() && !options.header.empty())
        throw UsageError("--header needs --array");
    if (session.report.asJson && isStandardOutput(options.output))
        throw UsageError("--json needs --output");
    requireDifferentFiles(options.input, options.output);
    session.report.add(options.input, [&](Item&) {
        const std::string content = readWhole(options.input);
        std::string result = isPacking ? packed(content) : unpacked(content);
        if (!options.array.empty()) result = sourceUnit(options, result);
        Output output(options.output, session.out);
        output.writer().write(result);
        output.close();
    });
}

}  // namespace

Work addShader(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments
        .text("operation", options->operation, R"(What to do:
pack    make an enciphered block of a text
unpack  show the text of a block)")
        .required()
        .oneOf({"pack", "unpack"});
    arguments.text("file", options->input, "File to read, at most 16 MiB; - for standard input")
        .required();
    arguments
        .text("--array", options->array,
              "Let pack write a C++ source unit that defines an array of this name")
        .typeName("NAME")
        .check(checkName);
    arguments
        .text("--header", options->header,
              "Let the source unit include this header, which declares the array, instead of "
              "declaring it")
        .typeName("FILE");
    arguments.text("-o,--output", options->output, "File to write (default: standard output)")
        .typeName("FILE");
    arguments.footer("Example:\n  kxutils shader pack --array __glass_fp glass.fp -o glass.fp.cpp");
    return [options, &session] { run(*options, session); };
}
