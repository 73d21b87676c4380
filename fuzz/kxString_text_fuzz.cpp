// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxString's option texts, replacement, splitting and comparisons agree with models that follow the
// rules character by character.
#include "kxString.h"

#include <functional>
#include <sstream>
#include <vector>

#include "input.h"
#include "support.h"

using kxfuzz::requireEqual;

namespace {

bool isAt(const std::string& text, std::size_t at, const std::string& piece) {
    for (std::size_t i = 0; i < piece.size(); ++i)
        if (at + i >= text.size() || text[at + i] != piece[i]) return false;
    return true;
}

bool contains(const std::string& text, const std::string& piece) {
    for (std::size_t at = 0; at <= text.size(); ++at)
        if (isAt(text, at, piece)) return true;
    return false;
}

std::string firstField(const std::string& option) {
    std::string field;
    for (std::size_t i = 0; i < option.size() && option[i] != ','; ++i) field += option[i];
    return field;
}

std::string replaced(const std::string& text, const std::string& search,
                     const std::string& replacement) {
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        if (!search.empty() && isAt(text, at, search)) {
            result += replacement;
            at += search.size();
        } else {
            result += text[at++];
        }
    }
    return result;
}

std::string capitalized(const std::string& text) {
    const std::string small = "abcdefghijklmnopqrstuvwxyz", capital = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const std::size_t letter = small.find(text[i]);
        const bool beginsWord = i == 0 || text[i - 1] == ' ';
        result += beginsWord && letter != std::string::npos ? capital[letter] : text[i];
    }
    return result;
}

std::string commonStart(const std::string& first, const std::string& second) {
    std::size_t i = 0;
    while (i < first.size() && i < second.size() && first[i] == second[i]) ++i;
    return first.substr(0, i);
}

std::vector<std::string> fields(const std::string& text, char delimiter) {
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string field; std::getline(stream, field, delimiter);) result.push_back(field);
    return result;
}

void checkPair(const std::string& text, const std::string& piece) {
    const std::size_t tail = text.size() - piece.size();
    requireEqual("startsWith", kxString::startsWith(text, piece), isAt(text, 0, piece));
    requireEqual("endsWith", kxString::endsWith(text, piece),
                 piece.size() <= text.size() && isAt(text, tail, piece));
    requireEqual("getCommonLeadingString", kxString::getCommonLeadingString(text, piece),
                 commonStart(text, piece));
    requireEqual("getBoolOption", kxString::getBoolOption(text, piece),
                 contains(text, piece + "=true"));
}

void checkReplace(std::string text, const std::string& search, const std::string& replacement) {
    const std::string whole = text, expected = replaced(text, search, replacement);
    kxString::replace(text, search, replacement);
    requireEqual("replace", text, expected);
    text = whole;
    kxString::replace(text, search, text);
    requireEqual("replace by the text itself", text, replaced(whole, search, whole));
    text = whole;
    kxString::replace(text, text, replacement);
    requireEqual("replace of the text itself", text, whole.empty() ? "" : replacement);
    text = whole;
    kxString::replace(text, text, text);
    requireEqual("replace of the text by itself", text, whole);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::Input input(data, size);
    const char delimiter = static_cast<char>(input.byte());
    const std::string piece = input.text(), replacement = input.text(), text = input.text();

    requireEqual("getStringOption", kxString::getStringOption(text), firstField(text));
    checkPair(text, piece);
    checkPair(text, text);
    checkPair(text, text.substr(0, piece.size()));
    checkPair(piece + text, piece);
    checkPair(text + piece, piece);
    checkReplace(text, piece, replacement);
    requireEqual("capitalize", kxString::capitalize(text), capitalized(text));
    requireEqual("hash", kxString::hash(text), std::to_string(std::hash<std::string>()(text)));

    const std::vector<std::string> got = kxString::split(text, delimiter);
    const std::vector<std::string> expected = fields(text, delimiter);
    requireEqual("number of fields", got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) requireEqual("field", got[i], expected[i]);
    return 0;
}
