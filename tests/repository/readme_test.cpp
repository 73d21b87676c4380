// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The README: what its commands print, where its links lead, which classes and versions it names.
// tests/newcomer/check follows the parts that need their own machine, tests/consumer/check the
// small project in "Use it".
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <regex>
#include <sstream>

#include "kxtest.h"

namespace {

std::string readme() { return kxtest::slurp(KX_ROOT "/README.md"); }

// The text below "## `heading`", up to the next heading of that kind.
std::string section(const std::string& heading) {
    const std::string text = readme() + "\n## ", title = "\n## " + heading + '\n';
    const std::size_t begin = text.find(title);
    EXPECT_NE(begin, std::string::npos) << heading;
    if (begin == std::string::npos) return "";
    const std::size_t content = begin + title.size();
    return text.substr(content, text.find("\n## ", content) - content);
}

struct Step {
    std::string command, output;
};

struct Block {
    std::string language, file;
    std::string content;      // of a file
    std::vector<Step> steps;  // of sh and console
};

kxtest::Outcome readBlocks(const std::string& file, const std::string& heading) {
    return kxtest::run({KX_ROOT "/tests/newcomer/blocks", "-v", "only=" + heading, file},
                       {{"PATH", "/usr/bin:/bin"}});
}

// The blocks below "## `heading`"; all where it is empty. tests/newcomer/blocks finds them, also
// for those who follow the README from top to bottom.
std::vector<Block> blocks(const std::string& heading) {
    const kxtest::Outcome listed = readBlocks(KX_ROOT "/README.md", heading);
    EXPECT_EQ(listed.err, "");
    EXPECT_EQ(listed.exitCode, 0);
    std::vector<Block> found;
    std::istringstream lines(listed.out);
    for (std::string line; std::getline(lines, line);) {
        const std::string sign = line.substr(0, 2), text = line.substr(2);
        if (sign == "# ") {
            found.emplace_back();
            std::istringstream(text) >> found.back().language >> found.back().file;
        } else if (sign == "$ ") {
            found.back().steps.push_back({text, ""});
        } else {
            EXPECT_EQ(sign, "> ");
            Block& block = found.back();
            (block.steps.empty() ? block.content : block.steps.back().output) += text + '\n';
        }
    }
    return found;
}

std::vector<Block> blocksOf(const std::string& language, const std::string& heading = "") {
    std::vector<Block> found = blocks(heading);
    found.erase(std::remove_if(found.begin(), found.end(),
                               [&](const Block& block) { return block.language != language; }),
                found.end());
    return found;
}

// The commands of the console blocks below a heading, and what they print.
std::vector<Step> steps(const std::string& heading) {
    std::vector<Step> found;
    for (const Block& block : blocksOf("console", heading))
        found.insert(found.end(), block.steps.begin(), block.steps.end());
    return found;
}

void expectOutputs(const std::vector<Step>& toDo) {
    const kxtest::TempDir dir;
    for (const Step& step : toDo) {
        const auto outcome = kxtest::run(
            {"/bin/sh", "-c", step.command},
            {{"PATH", KX_TOOL_DIR ":/usr/bin:/bin"}, {"HOME", dir.path()}}, {"", dir.path()});
        EXPECT_EQ(outcome.out, step.output) << step.command;
        EXPECT_EQ(outcome.err, "") << step.command;
        EXPECT_EQ(outcome.exitCode, 0) << step.command;
    }
}

// The targets of all links "](target)".
std::vector<std::string> links(const std::string& text) {
    std::vector<std::string> targets;
    const std::regex link(R"(\]\(([^)\s]+)\))");
    for (std::sregex_iterator match(text.begin(), text.end(), link), end; match != end; ++match)
        targets.push_back((*match)[1]);
    return targets;
}

bool isHeader(const std::string& name) {
    return name.size() > 2 && name.compare(name.size() - 2, 2, ".h") == 0;
}

// The cell beside `name` in the table of versions.
std::string version(const std::string& name) {
    std::smatch cell;
    const std::string text = section("Systems and versions");
    return std::regex_search(text, cell, std::regex("\\| " + name + R"( \| (.*) \|\n)")) ? cell[1]
                                                                                         : name;
}

}  // namespace

// Each sign of tests/newcomer/blocks, and what it refuses.
TEST(Readme, BlocksAreReadAsTheyStand) {
    const kxtest::TempDir dir;
    const auto listed = [&dir](const std::string& text, const std::string& heading = "") {
        return readBlocks(dir.write("page.md", text), heading);
    };
    const std::string page =
        "## One\n```sh\nmake 'it'\n## no heading\n```\nPut this into `a`, then `b.c`\n\n```cpp\n"
        "\n$ x\n```\n## Two\n```console\n$ say > 'it'\nit\n\n$ # hush\n```\n";
    const std::string one = "# sh\n$ make 'it'\n$ ## no heading\n# cpp b.c\n> \n> $ x\n",
                      two = "# console\n$ say > 'it'\n> it\n> \n$ # hush\n";
    EXPECT_EQ(listed(page).out, one + two);
    EXPECT_EQ(listed(page, "One").out, one);
    EXPECT_EQ(listed(page, "One|Two").out, one + two);
    EXPECT_EQ(listed(page, "T").out, "");
    EXPECT_EQ(listed(page).err, "");
    const std::string file = "blocks: " + dir.file("page.md");
    const auto refuses = [&](const std::string& text, const std::string& complaint) {
        const kxtest::Outcome outcome = listed(text);
        EXPECT_EQ(outcome.err, file + complaint);
        EXPECT_EQ(outcome.exitCode, 1);
    };
    refuses("no name\n```cpp\nx\n```\n", ":2: no file is named above the block\n");
    refuses("```\nx\n```\n", ":1: a block without a language\n");
    refuses("```console\nx\n$ y\n```\n", ":2: output without a command\n");
    refuses("```sh\nx\n", ":2: the last block does not end\n");
}

TEST(Readme, TourPrintsWhatItSays) {
    const std::vector<Step> tour = steps("A tour");
    EXPECT_EQ(tour.size(), 6U);
    expectOutputs(tour);
}

TEST(Readme, ReportHasTheVersionOfTheProgram) {
    const std::vector<Step> report = steps("Report a problem");
    EXPECT_EQ(report.size(), 1U);
    expectOutputs(report);
    EXPECT_NE(section("Report a problem").find("kxutils " KX_VERSION "`"), std::string::npos);
}

TEST(Readme, CommandsAreThere) {
    std::size_t commands = 0;
    for (const Block& block : blocksOf("sh"))
        for (const Step& step : block.steps) {
            const std::string program = step.command.substr(0, step.command.find(' '));
            if (program.rfind("scripts/", 0) != 0) continue;
            EXPECT_TRUE(kxtest::exists(KX_ROOT "/" + program)) << program;
            ++commands;
        }
    EXPECT_EQ(commands, 3U);
    EXPECT_TRUE(kxtest::exists(KX_ROOT "/scripts/docs"));
}

TEST(Readme, LinksLeadSomewhere) {
    const std::vector<std::string> targets = links(readme());
    EXPECT_GT(targets.size(), 30U);
    for (const std::string& target : targets)
        EXPECT_TRUE(kxtest::exists(KX_ROOT "/" + target)) << target;
}

TEST(Readme, HasARowForEachPublicHeader) {
    const std::string library = "Common/Libs/Utils/", table = section("Classes");
    std::vector<std::string> headers, rows;
    for (const std::string& folder : {library, library + "shader/"})
        for (const std::string& name : kxtest::list(KX_ROOT "/" + folder))
            if (isHeader(name)) headers.push_back(folder + name);
    for (const std::string& target : links(table))
        if (isHeader(target)) rows.push_back(target);
    std::sort(headers.begin(), headers.end());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    EXPECT_EQ(rows, headers);
}

// The text of a link is a name that the linked header declares.
TEST(Readme, NamesOfClassesAreThoseOfTheHeaders) {
    const std::string table = section("Classes");
    const std::regex link(R"(\[`([^`]+)`\]\(([^)]+\.h)\))");
    int names = 0;
    for (std::sregex_iterator match(table.begin(), table.end(), link), end; match != end; ++match) {
        const std::string header = kxtest::slurp(KX_ROOT "/" + (*match)[2].str());
        EXPECT_NE(header.find((*match)[1]), std::string::npos) << (*match)[0];
        ++names;
    }
    EXPECT_GE(names, 18);
}

TEST(Readme, VersionsAreThoseOfTheBuild) {
    const std::string ours = version("kxUtils");
    EXPECT_EQ(ours.substr(0, ours.find(';')), KX_VERSION);
    EXPECT_NE(ours.find("`libkxUtils.so." KX_MAJOR "`"), std::string::npos);
    EXPECT_EQ("cxx_std_" + version("Language").substr(3), KX_LANGUAGE);
    EXPECT_EQ(version("CMake"), KX_MINIMUM_CMAKE);
    const auto projects = blocksOf("cmake");
    ASSERT_EQ(projects.size(), 1U);
    EXPECT_EQ(projects[0].file, "CMakeLists.txt");
    EXPECT_EQ(
        projects[0].content.rfind("cmake_minimum_required(VERSION " KX_MINIMUM_CMAKE ")\n", 0), 0U);
}

TEST(Readme, MaintainersAreReachedInOneWay) {
    for (const char* file : {"SECURITY.md", ".reuse/dep5", "cmake/Packages.cmake",
                             "packaging/debian/changelog", "packaging/debian/copyright"}) {
        const std::string text = std::regex_replace(kxtest::slurp(KX_ROOT "/" + std::string(file)),
                                                    std::regex("\\s+"), " ");
        EXPECT_NE(text.find("kxUtils maintainers <maintainers@kxutils.example>"), std::string::npos)
            << file;
    }
}

// Without it no thread can be started.
TEST(Readme, LibraryStartsNoThreads) {
    EXPECT_EQ(kxtest::slurp(KX_LIBRARY).find("pthread_create"), std::string::npos);
}

namespace {

// The words between the brackets of "NAME=(...)" in .ci/run.
std::vector<std::string> stagesOfCi(const std::string& name) {
    const std::string script = kxtest::slurp(KX_ROOT "/.ci/run");
    std::smatch list;
    if (!std::regex_search(script, list, std::regex("\n" + name + R"(=\(([^)]*)\)\n)"))) return {};
    std::istringstream words(list[1]);
    return {std::istream_iterator<std::string>(words), {}};
}

}  // namespace

// One table has the stages of .ci/run, another one the longer ones, in the order in which they run.
TEST(Contributing, TablesHaveTheStagesOfCi) {
    const std::string page = kxtest::slurp(KX_ROOT "/CONTRIBUTING.md");
    std::vector<std::string> rows, stages = stagesOfCi("stages");
    const std::regex row("\n\\| `([a-z0-9-]+)` \\|");
    for (std::sregex_iterator match(page.begin(), page.end(), row), end; match != end; ++match)
        rows.push_back((*match)[1]);
    EXPECT_GT(stages.size(), 10U);
    for (const std::string& stage : stagesOfCi("longer")) stages.push_back(stage);
    EXPECT_EQ(rows, stages);
}
