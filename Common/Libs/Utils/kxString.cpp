// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxString.h"

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

#include "detail/ascii.h"
#include "detail/decimal_float.h"
#include "detail/find_text.h"
#include "detail/parse_float.h"

using kx::detail::isDigit;

namespace {

constexpr std::size_t shortStringSize = 15;

// A string to write a number into: made without a call, which would take as long as the number.
[[gnu::flatten]] std::string shortString() {
    return std::string("000000000000000", shortStringSize);
}

// --- Grouping of digits --------------------------------------------------------------------------

struct Grouping {
    std::string_view separator;
    std::size_t group;

    std::size_t separatorsIn(std::size_t runLength) const { return (runLength - 1) / group; }
};

// The first position from `at` on, or the text's end, where being a digit is no longer `digits`.
std::size_t skip(std::string_view text, std::size_t at, bool digits) {
    while (at < text.size() && isDigit(text[at]) == digits) ++at;
    return at;
}

// Appends the digits of one run with the separators between them.
void appendGrouped(std::string& text, std::string_view run, const Grouping& by) {
    const std::size_t count = by.separatorsIn(run.size()), old = text.size();
    text.resize(old + run.size() + count * by.separator.size());
    char* to = text.data() + old;
    std::size_t left = run.size() - count * by.group;  // until the next separator
    for (const char digit : run) {
        if (left == 0) {
            for (const char c : by.separator) *to++ = c;
            left = by.group;
        }
        --left;
        *to++ = digit;
    }
}

// Groups the first run of digits from `at` on, where there is one, and returns where scanning
// resumes.
std::size_t groupNextRun(std::string& text, std::size_t at, const Grouping& by) {
    const std::size_t first = skip(text, at, /*digits=*/false);
    const std::size_t last = skip(text, first, /*digits=*/true);
    std::string grouped;
    appendGrouped(grouped, std::string_view(text).substr(first, last - first), by);
    text.replace(first, last - first, grouped);
    return last + by.separatorsIn(last - first);
}

// The smallest number of one, two and more digits.
constexpr std::uint32_t smallestOf[] = {0,      10,      100,      1000,      10000,
                                        100000, 1000000, 10000000, 100000000, 1000000000};

// The usual grouping of a number, "4,294,967,295" at most: without a loop or a branch, for the
// length of numbers is hard to predict.
std::string groupByThree(std::uint32_t value, char separator) {
    // The characters of two groups: separator, hundreds, tens, ones in each half of the word.
    const auto written = [separator](std::uint64_t first, std::uint64_t second) {
        constexpr std::uint64_t halves = 0x1'00000001;
        const std::uint64_t groups = first | second << 32;
        const std::uint64_t hundreds = groups * 41 >> 12 & 15 * halves;
        const std::uint64_t rest = groups - 100 * hundreds;
        const std::uint64_t tens = rest * 103 >> 10 & 15 * halves, ones = rest - 10 * tens;
        return (static_cast<unsigned char>(separator) + 0x30303000) * halves + (hundreds << 8) +
               (tens << 16) + (ones << 24);
    };
    const std::uint64_t low = written(value / 1000000000, value / 1000000 % 1000);
    const std::uint64_t high = written(value / 1000 % 1000, value % 1000);
    // 1233 / 4096 is log10(2): the digits as the bits tell them, or one less.
    const int estimate = (32 - __builtin_clz(value | 1)) * 1233 >> 12;
    const std::size_t digits =
        static_cast<std::size_t>(estimate) + (value >= smallestOf[estimate] ? 1 : 0);
    const std::size_t size = digits + (digits - 1) / 3;
    const kx::detail::Uint128 text = (kx::detail::Uint128{high} << 64 | low) >> (8 * (16 - size));

    std::string grouped = shortString();
    kx::detail::storeLittleEndian64(grouped.data(), static_cast<std::uint64_t>(text));
    kx::detail::storeLittleEndian32(grouped.data() + 8, static_cast<std::uint32_t>(text >> 64));
    grouped[12] = static_cast<char>(text >> 96);
    grouped.erase(size);
    return grouped;
}

// Behind the place where scanning resumes lies the end of the grouped run: the last
// count * (separator length - 1) characters of count times "separator, group". A longer run leaves
// more of the same behind, so whatever ends for a run ends for all shorter ones; and the rule ends
// exactly if the longest run in what is left behind is shorter each time.
bool rescanEnds(std::size_t runLength, const Grouping& by) {
    const std::size_t period = by.separator.size() + by.group;
    for (;;) {
        const std::size_t count = by.separatorsIn(runLength);
        std::size_t run = 0, longest = 0;
        for (std::size_t i = count * (by.group + 1); i < count * period; ++i) {
            const std::size_t at = i % period;
            run = at >= by.separator.size() || isDigit(by.separator[at]) ? run + 1 : 0;
            longest = std::max(longest, run);
        }
        if (longest == 0) return true;
        if (longest >= runLength) return false;
        runLength = longest;
    }
}

// --- Reading of numbers --------------------------------------------------------------------------

// Whether a number outside the range of its type is too large rather than too close to 0. The power
// of ten of its first digit other than 0 tells; it is far from 0 then.
bool isTooLarge(std::string_view number) {
    const std::size_t mantissaEnd = std::min(number.find_first_of("eE"), number.size());
    const std::size_t point = std::min(number.find('.'), mantissaEnd);
    const std::size_t first = number.find_first_of("123456789");
    int exponent = 0;
    if (mantissaEnd < number.size()) {
        number.remove_prefix(mantissaEnd + 1);
        if (number.front() == '+') number.remove_prefix(1);
        const auto read = std::from_chars(number.data(), number.data() + number.size(), exponent);
        if (read.ec == std::errc::result_out_of_range) return number.front() != '-';
    }
    return static_cast<std::ptrdiff_t>(point - first) + exponent > 0;
}

// What a stream of the GNU library, imbued with the classic locale, extracts from the start of
// `text`, at a twentieth of the time.
template <typename Float>
Float readNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    if (text.empty()) return 0;
    const bool isNegative = text.front() == '-';
    if (isNegative || text.front() == '+') text.remove_prefix(1);
    // Another sign, "inf" or "nan": from_chars would accept some of them, a stream does not.
    if (text.empty() || (!isDigit(text.front()) && text.front() != '.')) return 0;

    Float value = 0;
    const char* const end = text.data() + text.size();
    const auto read = kx::detail::parseFloat(text.data(), end, value);
    const std::string_view number =
        text.substr(0, static_cast<std::size_t>(read.ptr - text.data()));
    // from_chars stops before an exponent without digits; a stream takes it in and then fails.
    const bool stoppedAtE = read.ptr != end && (*read.ptr == 'e' || *read.ptr == 'E');
    if (stoppedAtE && number.find_first_of("eE") == std::string_view::npos) return 0;
    if (read.ec == std::errc::invalid_argument) return 0;
    if (read.ec == std::errc::result_out_of_range)
        value = isTooLarge(number) ? std::numeric_limits<Float>::max() : 0;
    return isNegative ? -value : value;
}

// The same, for most numbers without from_chars and in less time.
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

// --- Writing of numbers --------------------------------------------------------------------------

constexpr std::size_t longestFloat = 15;  // the characters that writeFloat() may overwrite

// Not every standard library's to_chars() writes all of them alike.
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
    const Grouping by{separator, group};
    const bool isRescanned = separator.size() > 1 && skip(separator, 0, false) < separator.size();

    std::string result;
    result.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t first = skip(text, at, /*digits=*/false);
        const std::size_t last = skip(text, first, /*digits=*/true);
        result.append(text, at, first - at);
        if (first == last) break;
        const std::size_t run = last - first;
        std::size_t next = result.size() + run + by.separatorsIn(run);  // where scanning resumes
        appendGrouped(result, std::string_view(text).substr(first, run), by);
        at = last;

        // No run reaches beyond its own grouped form, so each is finished before the next is added.
        if (!isRescanned || !rescanEnds(run, by)) continue;
        // The result ends with a digit.
        while (next < result.size()) next = groupNextRun(result, next, by);
    }
    return result;
}

std::string kxString::beautifyDigits(std::uint32_t value, const std::string& separator,
                                     std::uint32_t group) {
    if (group == 3 && separator.size() == 1) return groupByThree(value, separator.front());
    return beautifyDigits(std::to_string(value), separator, group);
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

    constexpr std::ptrdiff_t behindE = 5;  // the 'e', the sign, two digits, a separator
    std::vector<float> values;
    int decimals = 6;  // what the next value is expected to have, as many as the last
    const char* const end = text.data() + text.size();
    for (const char* at = text.data(); at != end;) {
        float value = 0;
        kx::detail::Decimal expected;
        const char* e = kx::detail::readScientific(at, end, decimals, expected);
        if (e != nullptr && kx::detail::toNearest(expected, value)) {
            at = e + behindE;
        } else {
            e = std::find(at, end, 'e');
            if (e == end) break;
            const auto point = std::find(at, e, '.');
            if (e - point >= 2 && e - point <= 9) decimals = static_cast<int>(e - point) - 1;
            const char* const next = e + std::min(behindE, end - e);
            value = readFast<float>({at, static_cast<std::size_t>(next - at)});
            at = next;
        }
        values.push_back(value);
    }
    if (values.empty()) values.push_back(toFloat(text));
    return values;
}

double kxString::getDoubleOption(const std::string& option) {
    return readFast<double>(option);  // a comma ends a number
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
    // Not in place: the arguments may be one and the same string, and each cut would move the rest.
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
