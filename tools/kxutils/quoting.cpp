// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "quoting.h"

#include <clocale>
#include <cwchar>
#include <cwctype>
#include <string_view>
#include <vector>

// Some systems declare the POSIX functions for locales here.
#if __has_include(<xlocale.h>)
#include <xlocale.h>
#else
#include <locale.h>  // NOLINT(modernize-deprecated-headers)
#endif

namespace {

// Uses the user's locale in the calling thread during its lifetime. The locale of the program stays
// the classic one.
class UserLocale {
public:
    UserLocale() : _before(uselocale(user())) {}
    ~UserLocale() { uselocale(_before); }
    UserLocale(const UserLocale&) = delete;
    UserLocale& operator=(const UserLocale&) = delete;

private:
    static locale_t user() {
        static const locale_t chosen = newlocale(LC_CTYPE_MASK, "", nullptr);
        static const locale_t classic = newlocale(LC_CTYPE_MASK, "C", nullptr);
        return chosen ? chosen : classic;
    }

    const locale_t _before;
};

// A character, or bytes that do not form one.
struct Piece {
    std::string_view bytes;
    bool isPrintable;

    bool is(char c) const { return bytes.size() == 1 && bytes[0] == c; }
    bool isOneOf(std::string_view characters) const {
        return bytes.size() == 1 && characters.find(bytes[0]) != std::string_view::npos;
    }
};

std::vector<Piece> piecesOf(std::string_view text) {
    const UserLocale locale;
    std::vector<Piece> pieces;
    while (!text.empty()) {
        wchar_t c = L'\0';
        std::mbstate_t state{};
        std::size_t size = std::mbrtowc(&c, text.data(), text.size(), &state);
        const bool isCut = size == static_cast<std::size_t>(-2);
        const bool isCharacter = size != 0 && size != static_cast<std::size_t>(-1) && !isCut;
        if (!isCharacter) size = isCut ? text.size() : 1;
        pieces.push_back(
            {text.substr(0, size), isCharacter && std::iswprint(static_cast<std::wint_t>(c)) != 0});
        text.remove_prefix(size);
    }
    return pieces;
}

// The escape sequence for a byte between $' and '.
std::string escaped(char byte) {
    constexpr std::string_view named = "\a\b\f\n\r\t\v", letters = "abfnrtv";
    const std::size_t at = named.find(byte);
    if (at != std::string_view::npos) return {'\\', letters[at]};
    const auto value = static_cast<unsigned char>(byte);
    std::string digits = "\\";
    for (const int shift : {6, 3, 0}) digits += static_cast<char>('0' + (value >> shift & 7));
    return digits;
}

// Continues a text that stands between single quotes.
class QuotedText {
public:
    void addPlain(std::string_view bytes) {
        if (_isEscaping) text += "''";
        _isEscaping = false;
        text += bytes;
    }
    void addQuote() {  // ends the quotes, and an escape sequence, too
        _isEscaping = false;
        text += "'\\''";
    }
    void addEscaped(std::string_view bytes) {
        if (!_isEscaping) text += "'$'";
        _isEscaping = true;
        for (const char byte : bytes) text += escaped(byte);
    }
    bool isEscaping() const { return _isEscaping; }

    std::string text;

private:
    bool _isEscaping = false;
};

// True for a name that a shell would read differently without quotes.
bool needsQuotes(const std::vector<Piece>& pieces) {
    if (pieces.empty() || pieces.front().isOneOf("#~")) return true;
    if (pieces.size() == 1 && pieces.front().isOneOf("{}")) return true;
    for (const Piece& piece : pieces)
        if (!piece.isPrintable || piece.isOneOf(" !\"$&'()*;<=>?[\\^`|")) return true;
    return false;
}

// True for a name with an apostrophe that reads the same in double quotes.
bool suitsDoubleQuotes(const std::vector<Piece>& pieces) {
    bool hasApostrophe = false;
    for (const Piece& piece : pieces) {
        const bool isFirst = &piece == &pieces.front();
        if (!piece.isPrintable || piece.isOneOf("!\"$&()*;<=>?[\\^`{|}") ||
            (!isFirst && piece.isOneOf("#~")))
            return false;
        hasApostrophe = hasApostrophe || piece.is('\'');
    }
    return hasApostrophe;
}

}  // namespace

std::string shellQuoted(const std::string& name) {
    const std::vector<Piece> pieces = piecesOf(name);
    if (!needsQuotes(pieces)) return name;
    if (suitsDoubleQuotes(pieces)) return '"' + name + '"';
    QuotedText quoted;
    quoted.text = '\'';
    for (const Piece& piece : pieces) {
        if (piece.is('\''))
            quoted.addQuote();
        else if (piece.isPrintable)
            quoted.addPlain(piece.bytes);
        else
            quoted.addEscaped(piece.bytes);
    }
    return quoted.text + '\'';
}

std::string printable(const std::string& text, bool keepsNewlines) {
    QuotedText result;
    for (const Piece& piece : piecesOf(text)) {
        if (piece.isPrintable || (keepsNewlines && piece.is('\n')))
            result.addPlain(piece.bytes);
        else
            result.addEscaped(piece.bytes);
    }
    return result.text + (result.isEscaping() ? "''" : "");
}
