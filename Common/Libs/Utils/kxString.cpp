// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxString.h"

#include <fast_float/fast_float.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include "detail/numbers/grouping.h"
#include "detail/numbers/read.h"
#include "detail/numbers/write.h"
#include "detail/text/ascii.h"
#include "detail/text/byte_search.h"
#include "detail/text/find.h"

using kx::detail::isDigit;

namespace {

constexpr std::size_t shortStringSize = 15;

// A string to write a number into. Inlined, because a call would take as long as the number.
[[gnu::flatten]] std::string shortString() {
    return std::string("000000000000000", shortStringSize);
}

// --- Reading of numbers --------------------------------------------------------------------------

// What a stream of the GNU library, imbued with the classic locale, extracts from the start of
// `text`, in a twentieth of the time.
template <typename Float>
Float readNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.empty()) return 0;
    const bool isNegative = text.front() == '-';
    if (isNegative || text.front() == '+') text.remove_prefix(1);
    // This is a second sign, "inf" or "nan": from_chars would accept some of them, but a stream
    // does not.
    if (text.empty() || (!isDigit(text.front()) && text.front() != '.')) return 0;

    Float value = 0;
    const char* const end = text.data() + text.size();
    const auto read = fast_float::from_chars(text.data(), end, value);
    if (read.ec == std::errc::invalid_argument) return 0;
    // from_chars stops before an exponent without digits; a stream consumes it and then fails.
    const bool stoppedAtE = read.ptr != end && (*read.ptr == 'e' || *read.ptr == 'E');
    const std::string_view number(text.data(), static_cast<std::size_t>(read.ptr - text.data()));
    if (stoppedAtE && number.find_first_of("eE") == std::string_view::npos) return 0;
    if (std::isinf(value)) value = std::numeric_limits<Float>::max();  // as a stream leaves it
    return isNegative ? -value : value;
}

// Returns what readNumber() returns, for most numbers without from_chars and in less time.
template <typename Float>
Float readFast(std::string_view text) {
    const char* const end = text.data() + text.size();
    kx::detail::Decimal decimal;
    Float value = 0;
    const char* at = kx::detail::readMantissa(text.data(), end, decimal);
    if (at != nullptr && at != end && (*at == 'e' || *at == 'E'))
        at = kx::detail::readExponent(at + 1, end, decimal);
    if (at != nullptr && kx::detail::toNearest(decimal, value)) return value;
    return readNumber<Float>(text);
}

// Goes through a list of numbers with exponents. Each number takes the characters up to its 'e' and
// four more: the sign of the exponent, two digits and a separator.
class ListCursor {
public:
    explicit ListCursor(std::string_view text) : _at(text.data()), _end(_at + text.size()) {}

    /// Returns false if there is no 'e' left.
    bool next(float& value) { return nextAsExpected(value) || nextOfAnyForm(value); }

private:
    // Most values look like the one before.
    bool nextAsExpected(float& value) {
        kx::detail::Decimal decimal;
        const char* const e = kx::detail::readScientific(_at, _end, _decimals, decimal);
        if (e == nullptr || !kx::detail::toNearest(decimal, value)) return false;
        _at = e + fromEToNext;
        return true;
    }

    bool nextOfAnyForm(float& value) {
        const char* const e = std::find(_at, _end, 'e');
        if (e == _end) return false;
        const std::ptrdiff_t decimals = e - std::find(_at, e, '.') - 1;  // -1 if there is no point
        if (decimals >= 1 && decimals <= 8) _decimals = static_cast<int>(decimals);
        const char* const next = e + std::min(fromEToNext, _end - e);
        value = readFast<float>({_at, static_cast<std::size_t>(next - _at)});
        _at = next;
        return true;
    }

    static constexpr std::ptrdiff_t fromEToNext = 5;

    const char* _at;
    const char* const _end;
    int _decimals = 6;  // expected in the next value
};

// --- Writing of numbers --------------------------------------------------------------------------

constexpr std::size_t longestFloat = 15;  // writeFloat() may overwrite this many characters

// The to_chars() of different standard libraries does not write every NaN alike.
char* writeNaN(bool isNegative, char* to) {
    const std::string_view text = isNegative ? "-nan" : "nan";
    return to + text.copy(to, text.size());
}

// Writes the number as setNum() does and returns its end.
char* writeFloat(float value, char* to) {
    if (char* const end = kx::detail::writeSixDigits(value, to)) return end;
    if (std::isnan(value)) return writeNaN(std::signbit(value), to);
    return std::to_chars(to, to + longestFloat, value, std::chars_format::general, 6).ptr;
}

}  // namespace

std::string kxString::beautifyDigits(const std::string& text, const std::string& separator,
                                     std::uint32_t group) {
    if (group == 0 || separator.empty()) return text;
    return kx::detail::groupDigits(text, separator, group);
}

std::string kxString::beautifyDigits(std::uint32_t value, const std::string& separator,
                                     std::uint32_t group) {
    if (group == 0 || separator.size() != 1)
        return beautifyDigits(std::to_string(value), separator, group);
    return kx::detail::groupDigits(value, separator.front(), group);
}

float kxString::toFloat(const std::string& text) { return readFast<float>(text); }

std::string kxString::setNum(float value) {
    static_assert(longestFloat <= shortStringSize);
    std::string text = shortString();
    text.erase(static_cast<std::size_t>(writeFloat(value, text.data()) - text.data()));
    return text;
}

std::string kxString::createStringFromValues(const std::vector<float>& values) {
    std::string text(values.size() * (longestFloat + 1), '\0');
    char* to = text.data();
    for (const float value : values) {
        to = writeFloat(value, to);
        *to++ = ' ';
    }
    text.resize(static_cast<std::size_t>(to - text.data()));
    return text;
}

std::vector<float> kxString::getValuesFromString(const std::string& text) {
    if (text.find("TRUE") != std::string::npos) return {1.0F};
    if (text.find("FALSE") != std::string::npos) return {0.0F};

    std::vector<float> values;
    ListCursor cursor(text);
    for (float value = 0; cursor.next(value);) values.push_back(value);
    if (values.empty()) values.push_back(toFloat(text));
    return values;
}

double kxString::getDoubleOption(const std::string& option) {
    return readFast<double>(option);  // stops at a comma
}

std::string kxString::getStringOption(const std::string& option) {
    return option.substr(0, option.find(','));
}

bool kxString::getBoolOption(const std::string& option, const std::string& name) {
    return kx::detail::findText(option, name + "=true", 0) != std::string::npos;
}

void kxString::replace(std::string& text, const std::string& search,
                       const std::string& replacement) {
    if (search.empty()) return;
    std::size_t found = kx::detail::findText(text, search, 0);
    if (found == std::string::npos) return;
    // Not in place: the arguments may be the same string, and each cut would move the rest.
    std::string result;
    result.reserve(text.size());
    std::size_t at = 0;
    for (; found != std::string::npos; found = kx::detail::findText(text, search, at)) {
        result.append(text, at, found - at).append(replacement);
        at = found + search.size();
    }
    result.append(text, at, std::string::npos);
    text = std::move(result);
}

std::string kxString::capitalize(const std::string& text) {
    std::string result = text;
    char previous = ' ';
    for (char& c : result) {
        if (previous == ' ') c = kx::detail::toUpper(c);
        previous = c;
    }
    return result;
}

std::string kxString::hash(const std::string& text) {
    return std::to_string(std::hash<std::string>()(text));
}

bool kxString::startsWith(const std::string& text, const std::string& prefix) {
    return text.size() >= prefix.size() &&
           std::memcmp(text.data(), prefix.data(), prefix.size()) == 0;
}

bool kxString::endsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() && std::memcmp(text.data() + text.size() - suffix.size(),
                                                       suffix.data(), suffix.size()) == 0;
}

std::string kxString::getCommonLeadingString(std::string first, std::string second) {
    if (first.size() > second.size()) first.swap(second);
    const auto differs = std::mismatch(first.begin(), first.end(), second.begin()).first;
    first.erase(differs, first.end());
    return first;
}

std::vector<std::string> kxString::split(const std::string& text, char delimiter) {
    std::vector<std::string> fields;
    fields.reserve(kx::detail::countByte(text, delimiter) + 1);
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at < end;) {
        const char* const fieldEnd = kx::detail::findByte(at, end, delimiter);
        fields.emplace_back(at, fieldEnd);
        at = fieldEnd + 1;
    }
    return fields;
}
