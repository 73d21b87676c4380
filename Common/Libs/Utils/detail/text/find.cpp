// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/text/find.h"

#include <algorithm>
#include <functional>

namespace kx::detail {
namespace {

// Where a text is cut into a left and a right part, and the period of the right part.
struct Cut {
    std::size_t leftSize, period;
};

// Cuts `text` so that its right part is its greatest suffix in the order `before`.
template <class Before>
Cut greatestSuffix(std::string_view text, Before before) {
    std::size_t suffix = 0, period = 1;
    // Compares the suffix at `other` with the greatest one so far. They are known to agree in their
    // first `same` characters.
    for (std::size_t other = 1, same = 0; other + same < text.size();) {
        const auto theirs = static_cast<unsigned char>(text[other + same]);
        const auto ours = static_cast<unsigned char>(text[suffix + same]);
        if (theirs == ours) {
            if (++same < period) continue;
            other += period;  // past one more repetition
            same = 0;
        } else if (before(theirs, ours)) {
            other += same + 1;
            same = 0;
            period = other - suffix;
        } else {
            suffix = other++;
            same = 0;
            period = 1;
        }
    }
    return {suffix, period};
}

// A critical cut: nothing shorter than a period of the whole text repeats around it. It is where
// the later of the two greatest suffixes, for opposite orders, begins (theorem 3.1 of the paper).
Cut criticalCut(std::string_view text) {
    const Cut up = greatestSuffix(text, std::less<>()),
              down = greatestSuffix(text, std::greater<>());
    return up.leftSize >= down.leftSize ? up : down;
}

}  // namespace

std::size_t findTwoWay(std::string_view text, std::string_view search, std::size_t at) {
    Cut cut = criticalCut(search);
    // Whether the period is also that of the whole search text. If it is not, the period of the
    // whole is longer than either part.
    const bool isPeriodic = search.compare(0, cut.leftSize, search, cut.period, cut.leftSize) == 0;
    if (!isPeriodic) cut.period = std::max(cut.leftSize, search.size() - cut.leftSize) + 1;
    while (text.size() - at >= search.size()) {
        std::size_t right = cut.leftSize;
        while (right < search.size() && search[right] == text[at + right]) ++right;
        if (right < search.size()) {
            at += right - cut.leftSize + 1;
            continue;
        }
        std::size_t left = cut.leftSize;
        while (left > 0 && search[left - 1] == text[at + left - 1]) --left;
        if (left == 0) return at;
        // All but a period of what is compared next is known to be equal, and the paper does not
        // look at it again. But this search wants only the first place, so it looks at these
        // characters once more at most: either the place is found, or it differs after the known
        // part and is left far behind.
        at += cut.period;
    }
    return std::string_view::npos;
}

}  // namespace kx::detail
