// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The README: what its commands print, where its links lead, which classes and versions it names.
// What takes a machine of its own is followed by tests/newcomer/check, the small project of "Use
// it" by tests/consumer/check.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "kxtest.h"

namespace {

std::string readme() { return kxtest::slurp(KX_ROOT "/README.md"); }

// What stands below "## `heading`", up to the next heading of that kind.
std::string section(const std::string& heading) {
    const std::string text = readme() + "\n## ", title = "\n## " + heading + '\n';
    const std::size_t begin = text.find(title);
    EXPECT_NE(begin, std::string::npos) << heading;
    if (begin == std::string::npos) return "";
    const std::size_t content = begin + title.size();
    return text.substr(content, text.find("\n## ", content) - content);
}

// The contents of the blocks of `language`.
std::vector<std::string> blocks(const std::string& text, const std::string& language) {
    std::vector<std::string> found;
    const std::string fence = "\n```" + language + '\n';
    for (std::size_t at = text.find(fence); at != std::string::npos; at = text.find(fence, at)) {
        at += fence.size();
        found.push_back(text.substr(at, text.find("```", at) - at));
    }
    return found;
}

struct Step {
    std::string command, output;
};

// "$ " begins a command; what it prints follows.
std::vector<Step> steps(const std::string& heading) {
    std::vector<Step> found;
    for (const std::string& block : blocks(section(heading), "console")) {
        std::istringstream lines(block);
        std::string line;
        while (std::getline(lines, line)) {
            if (line.rfind("$ ", 0) == 0)
                found.push_back({line.substr(2), ""});
            else if (!found.empty())
                found.back().output += line + '\n';
        }
    }
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
    for (const std::string& block : blocks(readme(), "sh")) {
        const std::string program = block.substr(0, block.find_first_of(" \n"));
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

// A link's text is a name that its header declares.
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
    const auto projects = blocks(readme(), "cmake");
    ASSERT_EQ(projects.size(), 1U);
    EXPECT_EQ(projects[0].rfind("cmake_minimum_required(VERSION " KX_MINIMUM_CMAKE ")\n", 0), 0U);
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

// No thread can be started without it.
TEST(Readme, LibraryStartsNoThreads) {
    EXPECT_EQ(kxtest::slurp(KX_LIBRARY).find("pthread_create"), std::string::npos);
}
