// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Runs the examples of the API documentation, each in its own directory. A program must print
// exactly what its last lines say.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "kxtest.h"

namespace {

// The names of the files in `directory` that end in `ending`, without that ending, sorted.
std::vector<std::string> namesOf(const std::string& directory, const std::string& ending) {
    std::vector<std::string> names;
    for (const std::string& file : kxtest::list(directory))
        if (file.size() > ending.size() &&
            file.compare(file.size() - ending.size(), ending.size(), ending) == 0)
            names.push_back(file.substr(0, file.size() - ending.size()));
    return names;
}

std::vector<std::string> examples() { return namesOf(DOCUMENTATION_EXAMPLES, ".cpp"); }

// The text after "// Prints:", without the comment signs; "" if there is no such line.
std::string promisedOutput(const std::string& source) {
    std::istringstream lines(source);
    std::string line, output;
    while (std::getline(lines, line) && line != "// Prints:") {
    }
    while (std::getline(lines, line)) {
        EXPECT_EQ(line.rfind("//", 0), 0U) << "the output comes last: " << line;
        output += line.substr(std::min<std::size_t>(3, line.size())) + '\n';
    }
    return output;
}

class DocumentationExample : public testing::TestWithParam<std::string> {};

}  // namespace

TEST_P(DocumentationExample, PrintsWhatItSays) {
    const kxtest::TempDir dir;
    const std::string promised =
        promisedOutput(kxtest::slurp(DOCUMENTATION_EXAMPLES "/" + GetParam() + ".cpp"));
    ASSERT_NE(promised, "");
    const kxtest::Outcome outcome = kxtest::run({DOCUMENTATION_PROGRAMS "/" + GetParam()},
                                                {{"HOME", dir.path()}}, {"", dir.path()});
    EXPECT_EQ(outcome.out, promised) << outcome.err;
    EXPECT_EQ(outcome.exitCode, 0);
}

INSTANTIATE_TEST_SUITE_P(Classes, DocumentationExample, testing::ValuesIn(examples()),
                         [](const auto& test) {
                             std::string name = test.param;
                             name.erase(std::remove(name.begin(), name.end(), '_'), name.end());
                             return name;
                         });

TEST(Documentation, HasAnExampleForEachHeader) {
    std::vector<std::string> headers = namesOf(PUBLIC_HEADERS, ".h");
    headers.erase(std::find(headers.begin(), headers.end(), "kxExport"));
    for (const std::string& shader : namesOf(PUBLIC_HEADERS "/shader", ".h"))
        headers.push_back(shader);
    std::sort(headers.begin(), headers.end());
    EXPECT_EQ(headers, examples());
}

// A page of a class shows each program.
TEST(Documentation, ShowsEachExample) {
    std::vector<std::string> shown;
    const std::string pages = DOCUMENTATION_EXAMPLES "/../classes";
    for (const std::string& page : namesOf(pages, ".dox")) {
        std::istringstream lines(kxtest::slurp(pages + "/" + page + ".dox"));
        const std::string command = "\\include ";
        for (std::string line; std::getline(lines, line);)
            if (line.rfind(command, 0) == 0) shown.push_back(line.substr(command.size()));
    }
    std::vector<std::string> programs;
    for (const std::string& name : examples()) programs.push_back(name + ".cpp");
    std::sort(shown.begin(), shown.end());
    shown.erase(std::unique(shown.begin(), shown.end()), shown.end());
    EXPECT_EQ(shown, programs);
}
