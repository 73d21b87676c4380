// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Base64, CRC-32 and shader blocks on the command line.
#include "kxUtils.h"
#include "kxutils_tool.h"
#include "reference/base64_reference.h"
#include "reference/checksum_footer.h"

namespace {

// More than three of the blocks that the program reads, and not a whole number of them.
std::string manyBytes() {
    std::string bytes;
    for (unsigned i = 0; bytes.size() < 300001; ++i) bytes += static_cast<char>(i * i >> 3 & 0xFF);
    return bytes;
}

std::string wrapped(const std::string& text, std::size_t width) {
    std::string lines;
    for (std::size_t at = 0; at < text.size(); at += width) lines += text.substr(at, width) + '\n';
    return lines;
}

}  // namespace

// --- base64 --------------------------------------------------------------------------------------

TEST_F(Tool, Base64EncodesAndDecodes) {
    const std::pair<const char*, const char*> vectors[] = {
        {"f", "Zg=="},        {"fo", "Zm8="},        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}};  // RFC 4648
    for (const auto& [bytes, text] : vectors) {
        expectRun(runWith(bytes, {"base64"}), 0, std::string(text) + '\n', "");
        expectRun(runWith(text, {"base64", "-d", "-"}), 0, bytes, "");
    }
    expectRun(runWith("", {"base64"}), 0, "", "");
    expectRun(runWith("", {"base64", "-d"}), 0, "", "");
}

TEST_F(Tool, Base64StreamsFilesOfManyBlocks) {
    const std::string bytes = manyBytes(), text = reference::encodeBase64(bytes);
    dir.write("in", bytes);
    EXPECT_EQ(run({"base64", "in"}).out, text + '\n');
    expectRun(run({"base64", "in", "-o", "out"}), 0, "", "");
    EXPECT_EQ(kxtest::slurp(dir.file("out")), text + '\n');
    expectRun(run({"base64", "-d", "out", "-o", "back"}), 0, "", "");
    EXPECT_EQ(kxtest::slurp(dir.file("back")), bytes);
    for (const std::size_t width : {1U, 76U, 131072U, 1000000U}) {
        const auto outcome = run({"base64", "--wrap", std::to_string(width), "in"});
        EXPECT_TRUE(outcome.out == wrapped(text, width)) << width;
        EXPECT_TRUE(runWith(outcome.out, {"base64", "-d"}).out == bytes) << width;
    }
}

TEST_F(Tool, Base64SkipsForeignBytesWhenItDecodes) {
    expectRun(runWith("Z m9\nv\xFFYmFy\r\n", {"base64", "-d"}), 0, "foobar", "");
}

TEST_F(Tool, Base64RefusesTextThatTheLibraryWouldDropOrCut) {
    expectRun(runWith("Zm9vY", {"base64", "-d"}), 1, "foo", "kxutils: -: the text is cut off\n");
    expectRun(runWith("Zg==Zm9v", {"base64", "-d"}), 1, "",
              "kxutils: -: there is text after the padding\n");
    // The padding ends one block; the text after it begins the next.
    const std::string block = std::string(98300, 'A') + "Zg==";
    EXPECT_EQ(runWith(block, {"base64", "-d"}).exitCode, 0);
    EXPECT_EQ(runWith(block + "Zm9v", {"base64", "-d"}).exitCode, 1);
}

TEST_F(Tool, Base64ChecksTheForm) {
    const std::string fault = "kxutils: -: not Base64 text\n";
    for (const std::string text : {"Zm9v", "Zm9v\n", "Zm\r\n9v\r\n", "===="})
        expectRun(runWith(text, {"base64", "--check"}), 0, "", "");
    for (const std::string text : {"", "\n", "Zm9", "Zm 9", "Zm9vY", "Zm9-"})
        expectRun(runWith(text, {"base64", "--check"}), 1, "", fault);
    EXPECT_EQ(runWith(wrapped(std::string(400000, 'A'), 76), {"base64", "--check"}).exitCode, 0);
    EXPECT_EQ(runWith(std::string(400001, 'A'), {"base64", "--check"}).exitCode, 1);
    options.input = "Zm9-";
    EXPECT_EQ(document({"base64", "--check"}, 1)["items"][0]["error"], "not Base64 text");
}

TEST_F(Tool, Base64NamesFilesThatItCannotUse) {
    dir.write("in", "x");
    expectRun(run({"base64", "missing"}), 3, "", "kxutils: missing: No such file or directory\n");
    expectRun(run({"base64", "."}), 3, "", "kxutils: .: Is a directory\n");
    expectRun(run({"base64", "in", "-o", "."}), 3, "",
              "kxutils: in: cannot write '.': Is a directory\n");
    expectRun(run({"base64", "in", "-o", "./in"}), 2, "",
              "kxutils: './in' is the file that is read\n");
    EXPECT_EQ(kxtest::slurp(dir.file("in")), "x");
    EXPECT_EQ(run({"base64", "-d", "--check"}).exitCode, 2);
    EXPECT_EQ(run({"base64", "-d", "--wrap", "3"}).exitCode, 2);
}

// --- crc -----------------------------------------------------------------------------------------

TEST_F(Tool, CrcWritesALinePerFileInTheirOrder) {
    dir.write("b", "123456789");
    dir.write("a b\xFF", "");
    expectRun(runWith("a", {"crc", "b", "a b\xFF", "-"}), 0,
              "CBF43926  b\n00000000  a b\xFF\nE8B7BE43  -\n", "");
    expectRun(runWith("a", {"crc"}), 0, "E8B7BE43  -\n", "");
    expectRun(run({"crc", "missing", "b", "."}), 3, "CBF43926  b\n",
              "kxutils: missing: No such file or directory\nkxutils: .: Is a directory\n");
}

TEST_F(Tool, CrcMethodsAgreeOnManyBlocks) {
    const std::string bytes = manyBytes();
    dir.write("f", bytes);
    const std::string line = reference::crc32Digits(bytes) + "  f\n";
    for (const char* method : {"bitwise", "halfbyte", "1byte", "4bytes", "8bytes", "all"})
        expectRun(run({"crc", "--method", method, "f"}), 0, line, "");
    EXPECT_EQ(document({"crc", "--method", "all", "f"}, 0)["items"][0]["methods"].size(), 5U);
    EXPECT_EQ(run({"crc", "--method", "2bytes", "f"}).exitCode, 2);
}

TEST_F(Tool, CrcLeavesOutTheFirstBytes) {
    dir.write("f", "HEAD123456789");
    expectRun(run({"crc", "--skip", "4", "f"}), 0, "CBF43926  f\n", "");
    expectRun(run({"crc", "--skip", "13", "f"}), 0, "00000000  f\n", "");
    const std::string fault = "there are fewer than 14 bytes\n";
    expectRun(run({"crc", "--skip", "14", "f"}), 3, "", "kxutils: f: " + fault);
    expectRun(shell("printf HEAD123456789 | \"$K\" crc --skip 4"), 0, "CBF43926  -\n", "");
    expectRun(shell("printf HEAD123456789 | \"$K\" crc --skip 14"), 3, "", "kxutils: -: " + fault);
}

TEST_F(Tool, CrcReadsBackWhatItWrites) {
    const std::vector<std::string> names = {
        "plain", "with  two blanks", "new\nline\r", "back\\n", "bytes\xFF", "ok", "[x]", " "};
    for (const std::string& name : names) dir.write(name, name);
    for (const std::string ends : {"", "-z"}) {
        std::vector<std::string> arguments = {"crc"}, check = {"crc", "-c", "-"};
        if (!ends.empty()) {
            arguments.push_back(ends);
            check.push_back(ends);
        }
        arguments.insert(arguments.end(), names.begin(), names.end());
        const std::string list = run(arguments).out;
        options.input = list;
        const auto json = document(check, 0);
        ASSERT_EQ(json["items"].size(), names.size());
        for (const auto& item : json["items"]) EXPECT_EQ(item["status"], "ok");
        dir.write("plain", "changed");
        EXPECT_EQ(run(check).exitCode, 1);
        dir.write("plain", "plain");
    }
}

TEST_F(Tool, CrcCheckSaysWhatIsWrong) {
    dir.write("a", "a");
    dir.write("b", "123456789");
    dir.write("list", "E8B7BE43  b\nE8B7BE43  a\n00000000  missing\nnonsense\ne8b7be43  a\n\n");
    const std::string improper = ": not a line of a checksum and a name\n";
    expectRun(run({"crc", "-c", "list"}), 1,
              "BAD          b\nok           a\nunreadable   missing\n",
              "kxutils: missing: No such file or directory\nkxutils: list:4" + improper +
                  "kxutils: list:5" + improper + "kxutils: list:6" + improper);
    const auto json = document({"crc", "-c", "list"}, 1);
    EXPECT_EQ(json["items"][0]["status"], "BAD");
    EXPECT_EQ(json["items"][0]["expected"], "E8B7BE43");
    EXPECT_EQ(json["items"][0]["crc"], "CBF43926");
    expectRun(run({"crc", "-c", "none"}), 3, "", "kxutils: none: No such file or directory\n");
    EXPECT_EQ(run({"crc", "-c", "list", "a"}).exitCode, 2);
}

// A line without an end ends the check, and memory does not grow with it.
TEST_F(Tool, CrcCheckEndsWithWhatIsNoList) {
    const std::string head = "kxutils: ", limits = "ulimit -v 2000000; ulimit -t 20; ";
    const std::string tooLong = "not a list of checksums: a line of 1 MiB or more\n";
    const bool isLimited = !kxtest::underSanitizer();  // sanitizers take all addresses there are
    const auto check = [&](const std::string& command) {
        return shell((isLimited ? limits : "") + command);
    };
    dir.write("long", std::string(1 << 20, 'x') + "\n00000000  missing\n");
    expectRun(check("\"$K\" crc -c long"), 3, "", head + "long: " + tooLong);
    expectRun(check("\"$K\" crc -c /dev/zero"), 3, "", head + "/dev/zero: " + tooLong);
    expectRun(check("yes | tr -d '\\n' | \"$K\" crc -c -"), 3, "", head + "-: " + tooLong);
    dir.write("zero", std::string("E8B7BE43  a\0E8B7BE43  b\0", 24));
    expectRun(check("\"$K\" crc -c zero"), 3, "",
              head + "zero: a zero byte in a line: was the list written with -z?\n");
    // Lines without an end that do not belong to a list.
    std::string improper;
    for (int i = 1; i <= 100; ++i)
        improper += head + "-:" + std::to_string(i) + ": not a line of a checksum and a name\n";
    expectRun(check("yes | \"$K\" crc -c -"), 1, "",
              improper + head + "-: not a list of checksums\n");
    EXPECT_EQ(check("\"$K\" crc -z -c /dev/zero").exitCode, 1);
    // If there is one line of a list, all lines are looked at.
    dir.write("a", "a");
    std::string list = "E8B7BE43  a\n";
    for (int i = 0; i < 200; ++i) list += "x\n";
    dir.write("list", list + "E8B7BE43  a\n");
    EXPECT_EQ(run({"crc", "-c", "list"}).out, "ok           a\nok           a\n");
}

// --- shader --------------------------------------------------------------------------------------

TEST_F(Tool, ShaderPacksWhatTheLibraryReads) {
    const std::string text = "void main() {}\n" + std::string("\0\xFF", 2);
    dir.write("text", text);
    const auto packed = run({"shader", "pack", "text"});
    EXPECT_EQ(packed.err, "");
    ASSERT_EQ(packed.out.substr(0, 4), std::string("\x11\0\0\0", 4));
    ASSERT_EQ(packed.out.size(), 4 + text.size());
    EXPECT_NE(packed.out.substr(4), text);
    EXPECT_EQ(kxUtils::decryptShader(reinterpret_cast<const unsigned char*>(packed.out.data())),
              text);
    expectRun(runWith(packed.out, {"shader", "unpack", "-"}), 0, text, "");
    expectRun(run({"shader", "pack", "text", "-o", "block"}), 0, "", "");
    EXPECT_EQ(kxtest::slurp(dir.file("block")), packed.out);
}

TEST_F(Tool, ShaderPackWritesASourceUnit) {
    options.input = std::string(18, 'x');
    const auto unit = run({"shader", "pack", "-", "--array", "__glass_fp"});
    EXPECT_EQ(unit.exitCode, 0);
    const std::string head =
        "// Made by kxutils shader pack; do not edit.\n"
        "extern const unsigned char __glass_fp[22];\n"
        "\n"
        "// clang-format off\n"
        "const unsigned char __glass_fp[22] = {\n"
        "    0x12, 0x00, 0x00, 0x00, 0x";
    EXPECT_EQ(unit.out.substr(0, head.size()), head);
    // The bytes in the unit are those of the block.
    const std::string block = run({"shader", "pack", "-"}).out;
    std::string bytes;
    for (std::size_t at = 0; (at = unit.out.find("0x", at)) != std::string::npos; at += 2)
        bytes += static_cast<char>(std::stoi(unit.out.substr(at, 4), nullptr, 16));
    EXPECT_EQ(bytes, block);
    EXPECT_EQ(unit.out.substr(unit.out.size() - 5), ",\n};\n");
    EXPECT_EQ(run({"shader", "pack", "-", "--array", "9x"}).exitCode, 2);
    EXPECT_EQ(run({"shader", "pack", "-", "--array", "a-b"}).exitCode, 2);
    EXPECT_EQ(run({"shader", "unpack", "-", "--array", "x"}).exitCode, 2);
}

TEST_F(Tool, ShaderPackLeavesTheDeclarationToAHeader) {
    options.input = "x";
    const auto unit = run({"shader", "pack", "-", "--array", "__glass_fp", "--header", "glass.h"});
    EXPECT_EQ(unit.exitCode, 0);
    const std::string head =
        "// Made by kxutils shader pack; do not edit.\n"
        "#include \"glass.h\"\n"
        "\n"
        "// clang-format off\n"
        "const unsigned char __glass_fp[5] = {\n";
    EXPECT_EQ(unit.out.substr(0, head.size()), head);
    EXPECT_EQ(run({"shader", "pack", "-", "--header", "glass.h"}).exitCode, 2);
}

TEST_F(Tool, ShaderPackMadeTheBuiltInBlocks) {
    for (const std::string name : {"fp", "vp"}) {
        const auto unit =
            run({"shader", "pack", KXTEST_SHADERS "/defaultMaterial." + name, "--array",
                 "__defaultMaterial_" + name, "--header", "defaultMaterial.h"});
        expectRun(unit, 0, kxtest::slurp(KXTEST_SHADER_UNITS "/defaultMaterial." + name + ".cpp"),
                  "");
    }
}

TEST_F(Tool, ShaderUnpackRefusesWhatIsNoBlock) {
    expectRun(runWith("abc", {"shader", "unpack", "-"}), 1, "",
              "kxutils: -: not an enciphered block\n");
    const std::string wrongSize = "kxutils: -: not an enciphered block: its size does not fit\n";
    expectRun(runWith(std::string("\2\0\0\0x", 5), {"shader", "unpack", "-"}), 1, "", wrongSize);
    expectRun(runWith(std::string("\0\0\0\0x", 5), {"shader", "unpack", "-"}), 1, "", wrongSize);
    expectRun(runWith(std::string(4, '\0'), {"shader", "unpack", "-"}), 0, "", "");
    expectRun(run({"shader", "pack", "missing"}), 3, "",
              "kxutils: missing: No such file or directory\n");
}

TEST_F(Tool, ShaderTextsHaveALimit) {
    const std::string most(1 << 24, 'x');
    dir.write("most", most);
    dir.write("more", most + 'x');
    EXPECT_EQ(run({"shader", "pack", "most", "-o", "block"}).exitCode, 0);
    EXPECT_TRUE(run({"shader", "unpack", "block"}).out == most);
    expectRun(run({"shader", "pack", "more"}), 1, "",
              "kxutils: more: the text is longer than 16 MiB\n");
}
