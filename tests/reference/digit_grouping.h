// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Grouping of digits by the letter of its description, without any care for speed.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace reference {

/// Groups the first run of digits from `at` on and moves `at` to where scanning resumes.
inline void groupNextRun(std::string& text, std::size_t& at, const std::string& separator,
                         std::size_t group) {
    const auto isDigit = [&](std::size_t i) { return text[i] >= '0' && text[i] <= '9'; };
    while (at < text.size() && !isDigit(at)) ++at;
    std::size_t end = at;
    while (end < text.size() && isDigit(end)) ++end;
    if (at == end) return;
    const std::size_t length = end - at;
    const std::size_t n = (length - 1) / group;
    for (std::size_t i = 1; i <= n; ++i) text.insert(at + length - i * group, separator);
    at = end + n;
}

/// The text with all its runs grouped, or nothing if the rule never ends. (It may also just take
/// too long: keep runs below twenty digits and separators below ten characters. For one run of up
/// to 12 digits and a separator of up to 6 characters, grouping that ends takes 49 steps and 144
/// characters at most.)
inline std::optional<std::string> groupDigits(std::string text, const std::string& separator,
                                              std::size_t group, int mostSteps = 2000,
                                              std::size_t mostCharacters = 20000) {
    std::size_t at = 0;
    for (int steps = 0; at < text.size(); ++steps) {
        if (steps == mostSteps || text.size() > mostCharacters) return std::nullopt;
        groupNextRun(text, at, separator, group);
    }
    return text;
}

}  // namespace reference
