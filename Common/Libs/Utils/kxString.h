// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Text helpers: numbers and lists of numbers, option texts, replacement, splitting.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kxExport.h"

/// Static functions without state: any thread may call any of them. They compare bytes and know
/// only the letters and digits of ASCII. No locale changes their answers, neither that of the
/// process nor that of C++. Nothing is logged. Nothing is thrown but std::bad_alloc and
/// std::length_error, for results that memory cannot hold; replace() then leaves its text as it
/// was.
///
/// An option text is a comma-separated list such as "0.5,smooth=true". The first field is the
/// option's value; switches follow, as name=true. There are no escapes, blanks are not trimmed, and
/// case is not folded.
class KXUTILS_API kxString {
public:
    // --- Numbers and lists of numbers ------------------------------------------------------------

    /// Inserts `separator` into every run of decimal digits, between groups of `group` digits that
    /// are counted from the right.
    ///
    ///     "1234567",    ",",  3  ->  "1,234,567"
    ///     "12345.6789", ",",  3  ->  "12,345.6,789"  (deliberate: each run for itself)
    ///     "1234567",    "--", 3  ->  "1--234--567"
    ///
    /// A `group` of 0 is not allowed; the text then comes back unchanged. So it does for an empty
    /// separator.
    ///
    /// Deliberate: after a run into which n separators were inserted, scanning goes on n characters
    /// after the place where the run ended before. If the separator has several characters, this
    /// place is inside the grouped run; if the separator also holds digits, the rest of the run is
    /// then grouped again:
    ///
    ///     "12345", "00", 2  ->  "100230045"  (resumed before "45": nothing left to group)
    ///     "123",   "00", 1  ->  "100200003"  (resumed before "03", which became "0003")
    ///
    /// With such separators the result can grow with the square of a run's length, or without end.
    /// A run for which the rule has no end is grouped once, and scanning goes on after it ("12",
    /// "000", 1 -> "10002").
    ///
    /// Time is in proportion to the result, unless the separator has several characters and holds a
    /// digit.
    static std::string beautifyDigits(const std::string& text, const std::string& separator,
                                      std::uint32_t group);
    /// As above, for the decimal digits of `value`: 1234567, ".", 3 -> "1.234.567".
    static std::string beautifyDigits(std::uint32_t value, const std::string& separator,
                                      std::uint32_t group);

    /// The number at the start of `text`, as a standard stream reads it in the classic locale:
    /// white space is skipped, a sign is accepted, and reading stops at the first character that
    /// cannot continue a decimal number. The rest of the text is ignored.
    ///
    ///     "7abc", "+7", "\t7."          ->  7
    ///     "", " ", "abc", ".", "+-1"    ->  0     (no number)
    ///     "1e", "1e+", "1ex"            ->  0     (an exponent without digits spoils the number)
    ///     "0x10", "inf", "nan"          ->  0     (decimal notation only)
    ///     "1e99", "-1e99"               ->  the largest finite value, with the number's sign
    ///     "1e-99", "-1e-99"             ->  0, -0
    static float toFloat(const std::string& text);

    /// The number as text: at most six significant digits and no trailing zeros, in exponent
    /// notation if the decimal exponent is below -4 or at least 6 (the format "%g" of the classic
    /// locale): "1.5", "1.23457e+06", "1e-07", "-0", "inf", "-nan".
    static std::string setNum(float value);

    /// setNum() of each value, each followed by one blank, even the last: {1, 2.5} -> "1 2.5 ".
    static std::string createStringFromValues(const std::vector<float>& values);

    /// Reads values that were written in exponent notation with a two-digit exponent.
    ///
    ///     "TRUE" anywhere in the text          ->  {1}
    ///     otherwise "FALSE" anywhere           ->  {0}
    ///     no 'e'                               ->  {toFloat(text)}, so "1 2.5 3" gives {1}
    ///     "1.000000e+00 2.500000e+00 "         ->  {1, 2.5}
    ///     "1.5e+00 7"                          ->  {1.5}
    ///
    /// In the last two rows each value ends with the fourth character after its 'e' (sign, two
    /// digits, separator) or with the text, and a rest without 'e' is dropped. Deliberate: a list
    /// that createStringFromValues() wrote is read as a list only if each value was written with a
    /// two-digit exponent. The result is never empty.
    static std::vector<float> getValuesFromString(const std::string& text);

    // --- Option texts ----------------------------------------------------------------------------

    /// The first field as a number, read by the rules of toFloat() in double precision; 0 if it
    /// does not start with a number.
    static double getDoubleOption(const std::string& option);

    /// The characters before the first ',' (all if there is none).
    static std::string getStringOption(const std::string& option);

    /// True if `option` contains `name` immediately followed by "=true". Deliberate: it may stand
    /// anywhere, so "smooth" is found in "nosmooth=true", and an empty name finds any "=true".
    static bool getBoolOption(const std::string& option, const std::string& name);

    // --- Text ------------------------------------------------------------------------------------

    /// Replaces every occurrence of `search` in `text`, from left to right. The replacement is not
    /// searched again ("aba", "a", "aa" -> "aabaa"). An empty `search` leaves the text unchanged.
    /// `search` and `replacement` may be `text` itself. Time is in proportion to the lengths of the
    /// text, the search text and the result, whatever they hold.
    static void replace(std::string& text, const std::string& search,
                        const std::string& replacement);

    /// A copy in which the first character and every character right after a blank are in upper
    /// case; only a to z change. Deliberate: other white space does not start a word, and nothing
    /// becomes lower case.
    static std::string capitalize(const std::string& text);

    /// std::hash<std::string> of the text as an unsigned decimal number. The value belongs to the
    /// standard library in use: do not store it or send it to another program.
    static std::string hash(const std::string& text);

    /// True for an empty prefix; false for one longer than the text.
    static bool startsWith(const std::string& text, const std::string& prefix);
    /// True for an empty suffix; false for one longer than the text.
    static bool endsWith(const std::string& text, const std::string& suffix);

    /// The longest text with which both begin, compared byte by byte.
    static std::string getCommonLeadingString(std::string first, std::string second);

    /// The fields between the delimiters, as std::getline reads them: empty fields count, except
    /// one after the last delimiter ("a,,b," -> {"a", "", "b"}; "," -> {""}; "" -> {}).
    static std::vector<std::string> split(const std::string& text, char delimiter);
};
