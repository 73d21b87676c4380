// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/text/byte_search.h"
#include "detail/text/find.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "guarded.h"
#include "rows.h"

using Find = std::size_t (*)(std::string_view, std::string_view, std::size_t);

namespace {

struct Search {
    const char* name;
    Find find;
};
void PrintTo(const Search& search, std::ostream* os) { *os << search.name; }

/// All texts of `length` letters "a" and "b".
std::vector<std::string> allTexts(std::size_t length) {
    std::vector<std::string> all;
    for (unsigned letters = 0; letters < 1U << length; ++letters) {
        std::string& text = all.emplace_back(length, 'a');
        for (std::size_t i = 0; i < length; ++i)
            if ((letters >> i & 1U) != 0) text[i] = 'b';
    }
    return all;
}

std::string repeated(const std::string& part, std::size_t length) {
    std::string text;
    while (text.size() < length) text += part;
    text.resize(length);
    return text;
}

/// a, ab, aba, abaab, abaababa, ... of the given length: each is made of the two before it, so that
/// everything in it nearly repeats.
std::string fibonacciWord(std::size_t length) {
    std::string word = "a", next = "ab";
    while (word.size() < length) {
        next.swap(word);
        next.insert(0, word);
    }
    word.resize(length);
    return word;
}

}  // namespace

class FindText : public testing::TestWithParam<Search> {
protected:
    /// Compares all places from `at` on with those found by the standard library.
    static void expectAllPlaces(const std::string& text, const std::string& search,
                                std::size_t at = 0) {
        for (std::size_t found = 0; found != std::string::npos && at <= text.size();
             at = found + 1) {
            found = text.find(search, at);
            ASSERT_EQ(GetParam().find(text, search, at), found)
                << text << '|' << search << '|' << at;
        }
    }
};

TEST_P(FindText, FindsAllShortTextsInAllShortTexts) {
    for (std::size_t searchLength = 1; searchLength <= 7; ++searchLength)
        for (const std::string& search : allTexts(searchLength))
            for (std::size_t length = 0; length <= 9; ++length)
                for (const std::string& text : allTexts(length))
                    ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search));
}

// The texts are too long to be searched entirely in the way for the last few places.
TEST_P(FindText, FindsAllShortTextsInLongOnes) {
    std::mt19937 random(7);
    for (std::size_t searchLength = 1; searchLength <= 10; ++searchLength)
        for (const std::string& search : allTexts(searchLength)) {
            std::string text(100, 'a');
            for (char& c : text)
                if (random() % 3 == 0) c = 'b';
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search));
        }
}

TEST_P(FindText, FindsEveryLengthInEveryPlace) {
    std::mt19937 random(7);
    for (std::size_t length = 1; length <= 64; ++length)
        for (std::size_t before = 0; before <= 40; ++before) {
            std::string search(length, '\0');
            for (char& c : search) c = static_cast<char>(random());
            const std::string text = std::string(before, 'x') + search + search + "x";
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search));
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text.substr(0, before + length), search));
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text.substr(0, before + length - 1), search));
        }
}

TEST_P(FindText, EqualsTheStandardLibrarysInRandomTexts) {
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        const auto letters = 1 + random() % 4;
        const auto randomText = [&](std::size_t length) {
            std::string text(length, 'a');
            for (char& c : text) c = "a\xff\0z"[random() % letters];
            return text;
        };
        const std::string text = randomText(random() % 300);
        std::string search = randomText(1 + random() % 64);
        if (random() % 2 == 0 && !text.empty())  // a part of the text, perhaps changed
            search = text.substr(random() % text.size(), 1 + random() % 100);
        if (random() % 4 == 0) search[random() % search.size()] = 'y';
        ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search));
    }
}

TEST_P(FindText, EqualsTheStandardLibrarysWhereTextsRepeat) {
    for (const std::size_t period : {1U, 2U, 3U, 5U, 8U, 13U})
        for (const std::string& part : {fibonacciWord(period), "b" + std::string(period, 'a')})
            for (std::size_t length = 1; length <= 64; ++length) {
                const std::string text = repeated(part, 400), search = repeated(part, length);
                ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search));
                ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, "b" + search));
                ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search + "b"));
                ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search + "b" + search));
                ASSERT_NO_FATAL_FAILURE(
                    expectAllPlaces(text + search + "b" + search + text, search + "b" + search));
                ASSERT_NO_FATAL_FAILURE(expectAllPlaces(fibonacciWord(500), search));
            }
}

TEST_P(FindText, BeginsAtAnyPlace) {
    const std::string text = repeated("abcab", 120);
    for (const char* const search : {"a", "ab", "abcab", "cabab", "abcababcababcababcab"})
        for (std::size_t at = 0; at <= text.size(); ++at)
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search, at));
    EXPECT_EQ(GetParam().find("", "a", 0), std::string::npos);
}

// The first places nearly fit, and a later one fits. Whichever search takes over has to find it,
// even if it is the very next place.
TEST_P(FindText, FindsBehindPlacesThatNearlyFit) {
    for (const std::size_t half : {20U, 100U, 1000U})
        for (std::size_t before = 0; before < 60; ++before) {
            const std::string search = std::string(half, 'a') + 'b' + std::string(half, 'a');
            const std::string text = std::string(before, 'a') + search + std::string(20, 'a');
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(text, search));
            ASSERT_NO_FATAL_FAILURE(expectAllPlaces(std::string(20 * half, 'a') + text, search));
        }
}

TEST_P(FindText, ReadsNothingOutsideTheTexts) {
    const kxtest::Guarded textPlace(4096), searchPlace(4096);
    for (std::size_t length = 1; length <= 40; ++length) {
        const std::string search = fibonacciWord(length);
        for (const std::string& before : {std::string(), std::string("b"), std::string(30, 'b')}) {
            const std::string text = before + search;
            const std::string_view end(textPlace.atEnd(text), text.size());
            const std::string_view wanted(searchPlace.atEnd(search), search.size());
            EXPECT_EQ(GetParam().find(end, wanted, 0), text.find(search));
            const std::string_view start(textPlace.atBegin(text), text.size());
            EXPECT_EQ(GetParam().find(start, wanted, 0), text.find(search));
        }
    }
}

// Each of these would take minutes if the places that nearly fit were compared one by one, or the
// suffixes of the search text.
TEST_P(FindText, TakesTimeInProportionToTheTexts) {
    constexpr std::size_t size = 8 << 20;
    const auto letters = [](std::size_t part, char letter) {
        return std::string(size / part, letter);
    };
    const std::string text = letters(1, 'a'), nearly = letters(4, 'a') + 'b' + letters(4, 'a');
    for (const std::string& search : {letters(2, 'a') + 'b', 'b' + letters(2, 'a'), nearly,
                                      nearly + "ba", letters(4, 'a') + 'b' + letters(8, 'a') + 'b'})
        EXPECT_EQ(GetParam().find(text, search, 0), std::string::npos);
    EXPECT_EQ(GetParam().find(text + nearly, nearly, 0), size);
    EXPECT_EQ(GetParam().find(letters(1, 'b'), letters(4, 'b') + 'a' + letters(8, 'b') + 'a', 0),
              std::string::npos);
    const std::string word = fibonacciWord(size);
    EXPECT_EQ(GetParam().find(word, word.substr(0, size / 2) + "bbb", 0), std::string::npos);
    EXPECT_EQ(GetParam().find(repeated("ab", size), repeated("ab", size / 2) + "bab", 0),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Ways, FindText,
                         testing::Values(Search{"Text", kx::detail::findText},
                                         Search{"TwoWay", kx::detail::findTwoWay}),
                         kxtest::nameOfRow);

// --- Counting -----------------------------------------------------------------------------------

// It works in blocks of sixteen; each place of a block has its own counter, which holds up to 127.
TEST(CountByte, EqualsTheStandardLibrary) {
    std::string text;
    for (const std::size_t size :
         {0UL, 1UL, 15UL, 16UL, 17UL, 33UL, 2031UL, 2032UL, 2033UL, 2048UL, 5000UL}) {
        for (const char value : {'a', '\0', '\xFF'}) {
            text.assign(size, value);
            EXPECT_EQ(kx::detail::countByte(text, value), size);
            for (std::size_t i = 0; i < size; i += 3) text[i] = 'b';
            EXPECT_EQ(kx::detail::countByte(text, value),
                      static_cast<std::size_t>(std::count(text.begin(), text.end(), value)))
                << size;
        }
    }
}
