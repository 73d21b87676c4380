// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The functions for path names agree with their models for texts of every short length, whose
// memory ends exactly where they end.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "kxFile.h"
#include "reference/abs2rel.h"
#include "reference/path_names.h"
#include "rows.h"

namespace {

std::string answer(bool yes) { return yes ? "yes" : "no"; }

struct ModelCase {
    const char* name;
    std::string (*call)(const std::string&, const std::string&);
    std::string (*model)(const std::string&, const std::string&);
};
void PrintTo(const ModelCase& c, std::ostream* os) { *os << c.name; }

// Texts of every length below 80, a quarter of them without special characters.
class Texts {
public:
    std::string operator()() {
        const bool plain = _random() % 4 == 0;
        const std::string alphabet = plain ? "aB" : _special[_random() % 3];
        std::string text(_length++ % 80, 'x');
        for (char& c : text)
            if (_random() % 8 == 0) c = alphabet[_random() % alphabet.size()];
        if (!text.empty() && !plain && _random() % 2) text[0] = alphabet[0];
        return std::string(text.data(), text.size());
    }
    std::size_t below(std::size_t n) { return _random() % n; }

private:
    const std::string _special[3] = {"/.$a\\", "/\\", "$. ~:A\xC4"};
    std::mt19937 _random{20170301};
    std::size_t _length = 0;
};

class PathModel : public testing::TestWithParam<ModelCase> {};
TEST_P(PathModel, AgreesOnRandomTexts) {
    const ModelCase& c = GetParam();
    Texts text;
    std::size_t telling = 0;  // results that are neither the argument nor empty
    for (int i = 0; i < 20000; ++i) {
        const std::string first = text();
        std::string second = text().substr(0, text.below(40));
        if (text.below(3) == 0) second = first.substr(text.below(first.size() + 1));
        if (text.below(8) == 0) second = first.substr(0, text.below(first.size() + 1)) + second;
        const std::string expected = c.model(first, second);
        ASSERT_EQ(c.call(first, second), expected) << "'" << first << "', '" << second << "'";
        telling += !expected.empty() && expected != "no" && expected != first;
    }
    EXPECT_GT(telling, 1000u);
}

template <std::string (*function)(const std::string&)>
std::string ofFirst(const std::string& first, const std::string& /*second*/) {
    return function(first);
}

const ModelCase modelCases[] = {
    {"getFileName", ofFirst<kxFile::getFileName>, ofFirst<reference::getFileName>},
    {"getFilePath", ofFirst<kxFile::getFilePath>, ofFirst<reference::getFilePath>},
    {"getExtension", ofFirst<kxFile::getExtension>, ofFirst<reference::getExtension>},
    {"getBaseName", ofFirst<kxFile::getBaseName>, ofFirst<reference::getBaseName>},
    {"getExtensionFromFilter", ofFirst<kxFile::getExtensionFromFilter>,
     ofFirst<reference::getExtensionFromFilter>},
    {"convertToUnixSeparators", ofFirst<kxFile::convertToUnixSeparators>,
     ofFirst<reference::convertToUnixSeparators>},
    {"setExtension", kxFile::setExtension, reference::setExtension},
    {"hasExtension",
     [](const auto& path, const auto& end) { return answer(kxFile::hasExtension(path, end)); },
     [](const auto& path, const auto& end) { return answer(reference::hasExtension(path, end)); }},
    {"abs2Rel", kxFile::abs2Rel, reference::abs2Rel},
    {"rel2Abs", kxFile::rel2Abs, reference::rel2Abs},
};
INSTANTIATE_TEST_SUITE_P(All, PathModel, testing::ValuesIn(modelCases), kxtest::nameOfRow);

}  // namespace
