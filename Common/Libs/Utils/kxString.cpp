#include "kxString.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <functional>
#include <limits>
#include <string_view>
#include <system_error>
#include <utility>

#include "detail/ascii.h"
#include "detail/decimal_float.h"

using kx::detail::isDigit;

namespace {

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

// Groups the first run of digits from `at` on and returns where scanning resumes.
std::size_t groupNextRun(std::string& text, std::size_t at, const Grouping& by) {
    const std::size_t first = skip(text, at, /*digits=*/false);
    const std::size_t last = skip(text, first, /*digits=*/true);
    if (first == last) return last;
    const std::size_t count = by.separatorsIn(last - first);
    const std::size_t added = count * by.separator.size();
    text.insert(last, added, '\0');
    char* from = text.data() + last;
    char* to = from + added;
    for (std::size_t i = 0; i < count; ++i) {
        from -= by.group;
        std::copy_backward(from, from + by.group, to);
        to = std::copy_backward(by.separator.begin(), by.separator.end(), to - by.group);
    }
    return last + count;
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
    const auto read = std::from_chars(text.data(), end, value);
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

// The same for a float, most of them without from_chars: half as fast again.
float readFloat(std::string_view text) {
    const char* const end = text.data() + text.size();
    kx::detail::Decimal decimal;
    float value = 0;
    const char* at = kx::detail::readMantissa(text.data(), end, decimal);
    if (at != nullptr && at != end && (*at == 'e' || *at == 'E'))
        at = kx::detail::readExponent(at + 1, end, decimal);
    if (at != nullptr && kx::detail::nearestFloat(decimal, value)) return value;
    return readNumber<float>(text);
}

// --- Writing of numbers --------------------------------------------------------------------------

constexpr std::size_t longestFloat = 15;  // the characters that writeFloat() may overwrite

// Writes the number as setNum() does and returns its end.
char* writeFloat(float value, char* to) {
    if (char* const end = kx::detail::writeSixDigits(value, to)) return end;
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
        result.append(text, at, last - at);
        at = last;
        if (first == last) break;

        // No run reaches beyond its own grouped form, so each is finished before the next is added.
        std::size_t next = result.size() - (last - first);
        const bool repeats = isRescanned && rescanEnds(last - first, by);
        do {
            next = groupNextRun(result, next, by);
        } while (repeats && next < result.size());
    }
    return result;
}

std::string kxString::beautifyDigits(std::uint32_t value, const std::string& separator,
                                     std::uint32_t group) {
    return beautifyDigits(std::to_string(value), separator, group);
}

float kxString::toFloat(const std::string& text) { return readFloat(text); }

std::string kxString::setNum(float value) {
    char written[longestFloat] = {};
    const char* const end = writeFloat(value, written);
    std::string text(written, longestFloat);  // a fixed size: copied without a call
    text.resize(static_cast<std::size_t>(end - written));
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
        if (e != nullptr && kx::detail::nearestFloat(expected, value)) {
            at = e + behindE;
        } else {
            e = std::find(at, end, 'e');
            if (e == end) break;
            const auto point = std::find(at, e, '.');
            if (e - point >= 2 && e - point <= 9) decimals = static_cast<int>(e - point) - 1;
            const char* const next = e + std::min(behindE, end - e);
            value = readFloat({at, static_cast<std::size_t>(next - at)});
            at = next;
        }
        values.push_back(value);
    }
    if (values.empty()) values.push_back(toFloat(text));
    return values;
}

double kxString::getDoubleOption(const std::string& option) {
    return readNumber<double>(std::string_view(option).substr(0, option.find(',')));
}

std::string kxString::getStringOption(const std::string& option) {
    return option.substr(0, option.find(','));
}

bool kxString::getBoolOption(const std::string& option, const std::string& name) {
    return option.find(name + "=true") != std::string::npos;
}

void kxString::replace(std::string& text, const std::string& search,
                       const std::string& replacement) {
    if (search.empty()) return;
    std::size_t found = text.find(search);
    if (found == std::string::npos) return;
    // Not in place: the arguments may be one and the same string, and each cut would move the rest.
    std::string result;
    std::size_t at = 0;
    for (; found != std::string::npos; found = text.find(search, at)) {
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
    return text.compare(0, prefix.size(), prefix) == 0;
}

bool kxString::endsWith(const std::string& text, const std::string& suffix) {
    return text.size() >= suffix.size() &&
           text.compare(text.size() - suffix.size(), suffix.size(), suffix) == 0;
}

std::string kxString::getCommonLeadingString(std::string first, std::string second) {
    if (first.size() > second.size()) first.swap(second);
    const auto differs = std::mismatch(first.begin(), first.end(), second.begin()).first;
    first.erase(differs, first.end());
    return first;
}

std::vector<std::string> kxString::split(const std::string& text, char delimiter) {
    std::vector<std::string> fields;
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t end = std::min(text.find(delimiter, at), text.size());
        fields.push_back(text.substr(at, end - at));
        at = end + 1;
    }
    return fields;
}
