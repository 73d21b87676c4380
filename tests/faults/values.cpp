// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Functions and values without files: if an allocation fails, std::bad_alloc is thrown and every
// object is left as it was.
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxAnyConverter.h"
#include "kxBase64.h"
#include "kxCrypt.h"
#include "kxFile.h"
#include "kxFileExtension.h"
#include "kxMessage.h"
#include "kxString.h"
#include "kxUtils.h"
#include "operations.h"

namespace {

using kxtest::Attempt;

const std::string a = 'a' + part, b = 'b' + part, c = 'c' + part, absolute = "/home/" + part;
const boost::any textA = a, textB = b, textC = c;

// --- Message record ------------------------------------------------------------------------------

std::map<std::string, std::string> textsOf(const kxMessage& message) {
    std::map<std::string, std::string> texts;
    for (const auto& [name, value] : message.getMap())
        texts[name] = boost::any_cast<std::string>(value);
    return texts;
}
using Texts = std::map<std::string, std::string>;

void messageCopy(Attempt& attempt) {
    const kxMessage original(7, a, textA, b, textB);
    std::unique_ptr<kxMessage> copy;
    attempt.run([&] { copy = std::make_unique<kxMessage>(original); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(textsOf(original), (Texts{{a, a}, {b, b}}));
    if (copy) {
        EXPECT_EQ(textsOf(*copy), textsOf(original));
    }
}

// Some of the attributes may have been added, but only whole ones.
void messageAssign(Attempt& attempt) {
    const kxMessage other(7, a, textA, b, textB, c, textC);
    kxMessage message(8, b, textA);
    attempt.run([&] { message = other; });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    const Texts all{{a, a}, {b, a}, {c, c}};
    for (const auto& [name, text] : textsOf(message)) EXPECT_EQ(text, all.at(name));
    EXPECT_TRUE(message.exists(b));
    EXPECT_EQ(message.id(), 8u);
    message = other;
    EXPECT_EQ(textsOf(message), all);
}

void messageAdd(Attempt& attempt) {
    kxMessage message(7, a, textA);
    attempt.run([&] { message.set(b, textB, false); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(textsOf(message), attempt.failed() ? (Texts{{a, a}}) : (Texts{{a, a}, {b, b}}));
    message.set(b, textB, false);
    EXPECT_EQ(textsOf(message), (Texts{{a, a}, {b, b}}));
}

void messageReplace(Attempt& attempt) {
    kxMessage message(7, a, textA);
    attempt.run([&] { message.set(a, textB, true); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(textsOf(message), (Texts{{a, attempt.failed() ? a : b}}));
    message.set(a, textB, true);
    EXPECT_EQ(textsOf(message), (Texts{{a, b}}));
}

// The fault is reported on standard error; the place for the result keeps its value.
void messageReadWrongType(Attempt& attempt) {
    const kxMessage message(7, a, textA);
    int result = 5;
    bool done = true;
    attempt.run([&] { done = getFromMessage(message, a, result); });
    EXPECT_FALSE(done);
    EXPECT_EQ(result, 5);
    EXPECT_TRUE(startsWith(attempt.err(), "getFromMessage : Attribute '" + a) || attempt.failed());
}

void messageRead(Attempt& attempt) {
    const kxMessage message(7, a, textA);
    std::string result = "old";
    attempt.run([&] { getFromMessage(message, a, result); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(result, attempt.failed() ? "old" : a);
    EXPECT_TRUE(getFromMessage(message, a, result));
    EXPECT_EQ(result, a);
}

// --- Converters ----------------------------------------------------------------------------------

class TextConverter : public kxAnyConverter {
public:
    explicit TextConverter(const std::string& name) : kxAnyConverter(name) {}
    bool convertToString(const boost::any& value, std::string& text,
                         std::string& typeName) override {
        if (value.type() != typeid(std::string)) return false;
        text = boost::any_cast<std::string>(value);
        typeName = "text";
        return true;
    }
    bool convertFromString(const std::string& typeName, const std::string& text,
                           boost::any& value) override {
        if (typeName == "text") value = text;
        return typeName == "text";
    }
};

// Registered completely or not at all.
void converterRegister(Attempt& attempt) {
    std::unique_ptr<TextConverter> converter;
    attempt.run([&] { converter = std::make_unique<TextConverter>(part); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    boost::any value;
    EXPECT_EQ(kxAnyConverter::fromString("text", a, value), !attempt.failed());
    converter.reset();
    EXPECT_FALSE(kxAnyConverter::fromString("text", a, value));
    const TextConverter another(part);
    EXPECT_TRUE(kxAnyConverter::fromString("text", a, value));
}

void converterToString(Attempt& attempt) {
    const TextConverter converter(part);
    std::string text, typeName;
    attempt.run([&] { kxAnyConverter::toString(textA, text, typeName); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(text, attempt.failed() ? "" : a);
    EXPECT_TRUE(kxAnyConverter::toString(textA, text, typeName));
    EXPECT_EQ(text, a);
}

void converterFromString(Attempt& attempt) {
    const TextConverter converter(part);
    boost::any value = b;
    attempt.run([&] { kxAnyConverter::fromString("text", a, value); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(boost::any_cast<std::string>(value), attempt.failed() ? b : a);
    EXPECT_TRUE(kxAnyConverter::fromString("text", a, value));
    EXPECT_EQ(boost::any_cast<std::string>(value), a);
}

// --- Formats -------------------------------------------------------------------------------------

using Formats = std::map<std::string, std::set<std::string>>;
const Formats oneFormat{{a, {a, b}}}, twoFormats{{a, {a, b}}, {b, {b, c}}};

kxFileExtension registryOf(const Formats& formats) {
    kxFileExtension registry;
    for (const auto& [name, extensions] : formats) registry.addFormat(name, extensions);
    return registry;
}

// Changes a registry of one format or leaves it as it was.
template <typename Change>
void changeRegistry(Attempt& attempt, const Change& change, const Formats& changed) {
    kxFileExtension registry = registryOf(oneFormat);
    attempt.run([&] { change(registry); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(registry.getExtensionMap(), attempt.failed() ? oneFormat : changed);
    change(registry);
    EXPECT_EQ(registry.getExtensionMap(), changed);
}

const auto addB = [](kxFileExtension& registry) { registry.addFormat(b, {b, c}); };
const auto replaceA = [](kxFileExtension& registry) { registry.replaceFormat(a, {c}); };
const auto replaceB = [](kxFileExtension& registry) { registry.replaceFormat(b, {b, c}); };
const auto replaceAByOwn = [](kxFileExtension& registry) {
    registry.replaceFormat(a, registry.getExtensionMap().at(a));
};
const kxFileExtension registered = registryOf(twoFormats);

// The old formats may be lost.
void formatsAssign(Attempt& attempt) {
    kxFileExtension registry = registryOf(oneFormat);
    attempt.run([&] { registry = registered; });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    registry = registered;
    EXPECT_EQ(registry.getExtensionMap(), twoFormats);
}

// Some of the formats may have been added, but only whole ones.
void formatsAddAll(Attempt& attempt) {
    const Formats all{{a, {a, b}}, {b, {b, c}}, {c, {a, b}}};
    const kxFileExtension other = registryOf(all);
    kxFileExtension registry = registryOf({{b, {b, c}}});
    attempt.run([&] { registry.addFormats(other); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    for (const auto& [name, extensions] : registry.getExtensionMap())
        EXPECT_EQ(extensions, all.at(name));
    registry.addFormats(other);
    EXPECT_EQ(registry.getExtensionMap(), all);
}

// --- Codecs --------------------------------------------------------------------------------------

using ToText = unsigned long (*)(const std::string&, std::string&);

// The place for the result keeps its value.
void convertText(Attempt& attempt, ToText convert, const std::string& in, const std::string& out) {
    std::string result = "old";
    attempt.run([&] { convert(in, result); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(result, attempt.failed() ? "old" : out);
    convert(in, result);
    EXPECT_EQ(result, out);
}
void convertInPlace(Attempt& attempt, ToText convert, const std::string& in,
                    const std::string& out) {
    std::string text = in;
    attempt.run([&] { convert(text, text); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(text, attempt.failed() ? in : out);
    text = in;
    convert(text, text);
    EXPECT_EQ(text, out);
}
const std::string plain = "foobarfoobarfoobarfoobar", encoded = "Zm9vYmFyZm9vYmFyZm9vYmFyZm9vYmFy";

// Converted piece by piece.
std::string repeated(const std::string& text, int times) {
    std::string all;
    while (times-- > 0) all += text;
    return all;
}
const std::string longPlain = repeated(plain, 1000), longEncoded = repeated(encoded, 1000);

unsigned long encodeBytes(const std::string& in, std::string& out) {
    return kxBase64::encode(in.data(), in.size(), out);
}
unsigned long decodeCharacters(const std::string& in, std::string& out) {
    return kxBase64::decode(in.data(), in.size(), out);
}

const std::vector<unsigned char> key{'K', 'e', 'y'}, otherKey(300, 'W');

const kxCrypt cipherOfKey(key);

std::string code(kxCrypt& cipher) {
    std::string text(8, '\0');
    for (char& byte : text) byte = static_cast<char>(cipher.code(static_cast<unsigned char>(byte)));
    return text;
}
std::string keyStream(const std::vector<unsigned char>& of) {
    kxCrypt cipher(of);
    return code(cipher);
}

void cipherAssign(Attempt& attempt) {
    kxCrypt cipher(key);
    const kxCrypt other(otherKey);
    attempt.run([&] { cipher = other; });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    const std::string expected = keyStream(attempt.failed() ? key : otherKey);
    EXPECT_EQ(code(cipher), expected);
    cipher.reset();
    EXPECT_EQ(code(cipher), expected);
}

std::vector<unsigned char> shaderOf(const std::string& text) {
    const std::string secret = "6FL#u92=d_j;M7gP";
    kxCrypt cipher({secret.begin(), secret.end()});
    std::vector<unsigned char> block{static_cast<unsigned char>(text.size()), 0, 0, 0};
    for (const char letter : text) block.push_back(cipher.code(static_cast<unsigned char>(letter)));
    return block;
}
const std::vector<unsigned char> shader = shaderOf(part);

// --- Text ----------------------------------------------------------------------------------------

void replaceText(Attempt& attempt) {
    std::string text = "1,2," + part;
    attempt.run([&] { kxString::replace(text, ",", part); });
    EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
    EXPECT_EQ(text, attempt.failed() ? "1,2," + part : '1' + part + '2' + part + part);
    kxString::replace(text, ",", part);
    EXPECT_EQ(text, '1' + part + '2' + part + part);
}

// Its twenty digits need no memory if a string can hold them itself.
Operation hashed() {
    const std::string digits = std::to_string(std::hash<std::string>()(part));
    Operation operation = answers(
        "Hash", [] { return kxString::hash(part); }, digits);
    if (digits.size() <= std::string().capacity()) operation.steps = noSteps;
    return operation;
}

const std::string options = a + ',' + b + "=true", file = absolute + '/' + b + '.' + c;

using Strings = std::vector<std::string>;
using Floats = std::vector<float>;
using Names = std::set<std::string>;

}  // namespace

const std::vector<Operation> valueOperations = {
    answers(
        "MessageOfThree", [] { return textsOf(kxMessage(7, a, textA, b, textB, c, textC)); },
        Texts{{a, a}, {b, b}, {c, c}}),
    answers(
        "MessageOfTwo", [] { return textsOf(kxMessage(7, a, textA, b, textB)); },
        Texts{{a, a}, {b, b}}),
    answers(
        "MessageOfOne", [] { return textsOf(kxMessage(7, a, textA)); }, Texts{{a, a}}),
    {"MessageCopy", messageCopy},
    {"MessageAssign", messageAssign},
    {"MessageAdd", messageAdd},
    {"MessageReplace", messageReplace},
    {"MessageRead", messageRead},
    {"MessageReadWrongType", messageReadWrongType, systemCalls},

    {"ConverterRegister", converterRegister},
    {"ConverterToString", converterToString},
    {"ConverterFromString", converterFromString},

    {"FormatsAdd", [](Attempt& attempt) { changeRegistry(attempt, addB, twoFormats); }},
    {"FormatsReplace",
     [](Attempt& attempt) {
         changeRegistry(attempt, replaceA, {{a, {c}}});
     }},
    {"FormatsReplaceByOwn",
     [](Attempt& attempt) { changeRegistry(attempt, replaceAByOwn, oneFormat); }},
    {"FormatsReplaceNew", [](Attempt& attempt) { changeRegistry(attempt, replaceB, twoFormats); }},
    {"FormatsAddAll", formatsAddAll},
    answers(
        "FormatsCopy", [] { return kxFileExtension(registered).getExtensionMap(); }, twoFormats),
    {"FormatsAssign", formatsAssign},
    answers(
        "FormatsName", [] { return registered.getName(c); }, b),
    answers(
        "FormatsExtensionsOfOne", [] { return registered.getExtensions(b); }, Names{b, c}),
    answers(
        "FormatsExtensions", [] { return registered.getExtensions(); }, Names{a, b, c}),
    answers(
        "FormatsExtensionsString", [] { return registered.getExtensionsString(part); },
        a + part + b + part + c),
    answers(
        "FormatsNames", [] { return registered.getNames(); }, Names{a, b}),

    {"Base64Encode",
     [](Attempt& attempt) { convertText(attempt, kxBase64::encode, plain, encoded); }},
    {"Base64EncodeInPlace",
     [](Attempt& attempt) { convertInPlace(attempt, kxBase64::encode, plain, encoded); }},
    {"Base64Decode",
     [](Attempt& attempt) { convertText(attempt, kxBase64::decode, encoded, plain); }},
    {"Base64EncodeBytes",
     [](Attempt& attempt) { convertText(attempt, encodeBytes, plain, encoded); }},
    {"Base64EncodeLong",
     [](Attempt& attempt) { convertText(attempt, kxBase64::encode, longPlain, longEncoded); }},
    {"Base64EncodeLongInPlace",
     [](Attempt& attempt) { convertInPlace(attempt, kxBase64::encode, longPlain, longEncoded); }},
    {"Base64DecodeCharacters",
     [](Attempt& attempt) { convertText(attempt, decodeCharacters, encoded, plain); }},
    {"Base64DecodeLong",
     [](Attempt& attempt) { convertText(attempt, kxBase64::decode, longEncoded, longPlain); }},
    {"Base64DecodeLongInPlace",
     [](Attempt& attempt) { convertInPlace(attempt, kxBase64::decode, longEncoded, longPlain); }},
    answers(
        "CipherCopy", [] { return kxCrypt(cipherOfKey).code(0); }, kxCrypt(key).code(0)),
    answers(
        "Cipher", [] { return kxCrypt(key).code(0); }, kxCrypt(key).code(0)),
    {"CipherAssign", cipherAssign},
    inOwnProcess(answers(
        "Shader", [] { return kxUtils::decryptShader(shader.data()); }, part)),
    answers(
        "ShaderLF", [] { return kxUtils::decryptShaderLF(shader.data()); }, part + '\n'),

    answers(
        "BeautifyDigits", [] { return kxString::beautifyDigits("1234" + part, "''", 3); },
        "1''234" + part),
    answers(
        "BeautifyNumber", [] { return kxString::beautifyDigits(1234567, part, 3); },
        '1' + part + "234" + part + "567"),
    answers(
        "TextFromValues",
        [] {
            return kxString::createStringFromValues({1, 2.5F, 1e30F, 1e-30F, 3});
        },
        std::string("1 2.5 1e+30 1e-30 3 ")),
    answers(
        "ValuesFromText", [] { return kxString::getValuesFromString("1e+00 2e+00 3e+00 "); },
        Floats{1, 2, 3}),
    answers(
        "ValueFromText", [] { return kxString::getValuesFromString("7"); }, Floats{7}),
    answers(
        "StringOption", [] { return kxString::getStringOption(options); }, a),
    answers(
        "BoolOption", [] { return kxString::getBoolOption(options, b); }, true),
    {"Replace", replaceText},
    answers(
        "Capitalize", [] { return kxString::capitalize(a); }, 'A' + part),
    hashed(),
    answers(
        "CommonLeadingString", [] { return kxString::getCommonLeadingString(part + a, part + b); },
        part),
    answers(
        "Split", [] { return kxString::split(options, ','); }, Strings{a, b + "=true"}),

    answers(
        "FileName", [] { return kxFile::getFileName(file); }, b + '.' + c),
    answers(
        "FilePath", [] { return kxFile::getFilePath(file); }, absolute),
    answers(
        "Extension", [] { return kxFile::getExtension(file); }, c),
    answers(
        "BaseName", [] { return kxFile::getBaseName(file); }, b),
    answers(
        "SetExtension", [] { return kxFile::setExtension(b, a); }, b + '.' + a),
    answers(
        "Filter", [] { return kxFile::getExtensionFromFilter("*." + a); }, '.' + a),
    answers(
        "Separators", [] { return kxFile::convertSeparators(file); }, file),
    answers(
        "UnixSeparators", [] { return kxFile::convertToUnixSeparators(a + '\\'); }, a + '/'),
    answers(
        "RelativePath", [] { return kxFile::abs2Rel(absolute, file); }, b + '.' + c),
    answers(
        "RelativePathOfNone", [] { return kxFile::abs2Rel(absolute, a); }, a),
    answers(
        "AbsolutePath", [] { return kxFile::rel2Abs(absolute, b + '.' + c); }, file),
};
