// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale() and strtod_l() are POSIX's
#include <stdlib.h>  // NOLINT(modernize-deprecated-headers)

#include <cerrno>
#include <cmath>
#include <locale>  // brings those two along where a header of their own declares them (macOS)
#include <string>

#include "detail/ascii.h"
#include "detail/parse_float.h"

namespace kx::detail {

namespace {

const char* skipDigits(const char* at, const char* last) {
    while (at != last && isDigit(*at)) ++at;
    return at;
}

// The end of the decimal number that the text begins with, which strtod() would take for more: it
// knows hexadecimal numbers. `first` if there is none.
const char* endOfNumber(const char* first, const char* last) {
    const char* at = skipDigits(first, last);
    std::ptrdiff_t digits = at - first;
    if (at != last && *at == '.') {
        const char* const fraction = at + 1;
        at = skipDigits(fraction, last);
        digits += at - fraction;
    }
    if (digits == 0) return first;
    if (at == last || (*at != 'e' && *at != 'E')) return at;
    const char* exponent = at + 1;
    if (exponent != last && (*exponent == '+' || *exponent == '-')) ++exponent;
    const char* const end = skipDigits(exponent, last);
    return end == exponent ? at : end;
}

template <typename Float>
std::from_chars_result parse(const char* first, const char* last, Float& value,
                             Float (*convert)(const char*, char**, locale_t)) {
    static const locale_t classic = newlocale(LC_ALL_MASK, "C", nullptr);
    const char* const end = endOfNumber(first, last);
    if (end == first) return {first, std::errc::invalid_argument};
    const std::string number(first, end);  // with the terminator that the conversion needs
    const int before = errno;
    errno = 0;
    const Float converted = convert(number.c_str(), nullptr, classic);
    // A number near to 0 with less digits than usual is a range error too, but not here.
    const bool isOutside = errno == ERANGE && (converted == 0 || std::isinf(converted));
    errno = before;
    if (isOutside) return {end, std::errc::result_out_of_range};
    value = converted;
    return {end, std::errc()};
}

}  // namespace

std::from_chars_result parseFloat(const char* first, const char* last, float& value) {
    return parse(first, last, value, strtof_l);
}

std::from_chars_result parseFloat(const char* first, const char* last, double& value) {
    return parse(first, last, value, strtod_l);
}

}  // namespace kx::detail
