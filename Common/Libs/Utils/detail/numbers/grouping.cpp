// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/numbers/grouping.h"

#include <algorithm>

#include "detail/text/ascii.h"

namespace kx::detail {
namespace {

struct Grouping {
    std::string_view separator;
    std::size_t group;

    std::size_t separatorsIn(std::size_t runLength) const { return (runLength - 1) / group; }
};

// Skips digits from `at` on or, unless `digits`, everything else. Returns the position reached.
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

// Groups the first run of digits from `at` on, if there is one, and returns where scanning resumes.
std::size_t groupNextRun(std::string& text, std::size_t at, const Grouping& by) {
    const std::size_t first = skip(text, at, /*digits=*/false);
    const std::size_t last = skip(text, first, /*digits=*/true);
    std::string grouped;
    appendGrouped(grouped, std::string_view(text).substr(first, last - first), by);
    text.replace(first, last - first, grouped);
    return last + by.separatorsIn(last - first);
}

// Scanning sees some characters of a grouped run of `length` digits a second time. Returns the
// length of the longest run of digits among them.
std::size_t longestRunSeenAgain(std::size_t length, const Grouping& by) {
    const std::size_t separator = by.separator.size(), period = separator + by.group;
    const std::size_t count = by.separatorsIn(length), seen = count * (separator - 1);
    std::size_t run = 0, longest = 0;
    for (std::size_t i = count * period - seen; i < count * period; ++i) {
        const std::size_t place = i % period;  // within a separator and its group
        run = place >= separator || isDigit(by.separator[place]) ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

// If the separator is longer than one character, scanning resumes inside a grouped run and groups
// anew what it finds there. This function tells whether that ends for a run of `length` digits:
//
// 1. A grouped run is some digits followed by `count` times a separator and a group. Scanning
//    resumes `length + count` characters after its start, so it sees the last
//    `count * (separator length - 1)` characters again.
// 2. These characters depend on `count` alone, and those of a shorter run are an end of those of a
//    longer one. So if the grouping ends for a run, it ends for every shorter run.
// 3. Hence it ends exactly if the longest run of digits that is seen again becomes shorter each
//    time, until there is none.
//
// Example: with the separator "x9" and groups of 3, "1234567" becomes "1x9234x9567". Scanning
// resumes after 9 characters and sees "67", a run that is not grouped, so it ends.
bool rescanEnds(std::size_t length, const Grouping& by) {
    for (;;) {
        const std::size_t longest = longestRunSeenAgain(length, by);
        if (longest == 0) return true;
        if (longest >= length) return false;
        length = longest;
    }
}

}  // namespace

std::string groupDigits(std::string_view text, std::string_view separator, std::size_t group) {
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
        appendGrouped(result, text.substr(first, run), by);
        at = last;

        // No run reaches beyond its own grouped form, so each one is finished before the next is
        // added.
        if (!isRescanned || !rescanEnds(run, by)) continue;
        // The result ends with a digit.
        while (next < result.size()) next = groupNextRun(result, next, by);
    }
    return result;
}

std::string groupDigits(std::uint32_t value, char separator, std::size_t group) {
    char text[19];  // ten digits and the separators between them
    char *const end = text + sizeof text, *at = end;
    std::size_t inGroup = 0;
    do {
        if (inGroup++ == group) {
            *--at = separator;
            inGroup = 1;
        }
        *--at = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    return {at, end};
}

}  // namespace kx::detail
