// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The links in the project's Markdown files: each leads to a file or folder of the project and, if
// it names a heading, to an existing one.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "kxtest.h"

namespace {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

// The text without code: leaves out the fences and content of code blocks, and the quotes of code
// within a line.
std::string proseOf(const std::string& markdown) {
    std::istringstream lines(markdown);
    std::string line, prose;
    bool isCode = false;
    while (std::getline(lines, line)) {
        const bool isFence = line.rfind("```", 0) == 0;
        if (isFence) isCode = !isCode;
        if (!isFence && !isCode && line.rfind("    ", 0) != 0) prose += line + '\n';
    }
    return std::regex_replace(prose, std::regex("`([^`\n\\[\\]]*)`|`[^`\n]*`"), "$1");
}

// The anchor of a heading on the usual hosts: lower-case letters, digits, "-", "_".
std::string anchorOf(const std::string& heading) {
    std::string anchor;
    for (const char c : heading) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == ' ' || c == '-')
            anchor += '-';
        else if (c == '_' || byte > 127 || std::isalnum(byte) != 0)
            anchor += static_cast<char>(std::tolower(byte));
    }
    return anchor;
}

Texts anchorsOf(const fs::path& file) {
    Texts anchors;
    const std::string prose = '\n' + proseOf(kxtest::slurp(file.string()));
    const std::regex heading("\n#+ ([^\n]*)");
    std::map<std::string, int> seen;  // hosts number headings with equal words
    for (std::sregex_iterator match(prose.begin(), prose.end(), heading), end; match != end;
         ++match) {
        const std::string anchor = anchorOf((*match)[1]);
        const int before = seen[anchor]++;
        anchors.push_back(before == 0 ? anchor : anchor + '-' + std::to_string(before));
    }
    return anchors;
}

bool leadsSomewhere(const fs::path& file, const std::string& link) {
    const std::string path = link.substr(0, link.find('#'));
    const fs::path target = path.empty() ? file : file.parent_path() / path;
    if (!fs::exists(target)) return false;
    if (link.size() == path.size()) return true;
    const Texts anchors = anchorsOf(target);
    return std::find(anchors.begin(), anchors.end(), link.substr(path.size() + 1)) != anchors.end();
}

struct Links {
    std::size_t count = 0;  // the links that stay within the project
    Texts dead;             // "file: link"
};

// All Markdown files below `root`, except in built or hidden folders.
Links linksBelow(const fs::path& root) {
    Links links;
    const std::regex link(R"(\]\(([^)\s]+)\))"), elsewhere("[a-z]+:.*");
    for (fs::recursive_directory_iterator entry(root), end; entry != end; ++entry) {
        const std::string name = entry->path().filename().string();
        if (entry->is_directory() && (name[0] == '.' || name == "build"))
            entry.disable_recursion_pending();
        if (!entry->is_regular_file() || entry->path().extension() != ".md") continue;
        const std::string prose = proseOf(kxtest::slurp(entry->path().string()));
        for (std::sregex_iterator match(prose.begin(), prose.end(), link), last; match != last;
             ++match) {
            const std::string target = (*match)[1];
            if (std::regex_match(target, elsewhere)) continue;
            ++links.count;
            if (!leadsSomewhere(entry->path(), target))
                links.dead.push_back(fs::relative(entry->path(), root).string() + ": " + target);
        }
    }
    std::sort(links.dead.begin(), links.dead.end());
    return links;
}

}  // namespace

TEST(MarkdownLinks, LeadSomewhere) {
    const Links links = linksBelow(KX_ROOT);
    EXPECT_GT(links.count, 50U);
    EXPECT_EQ(links.dead, Texts());
}

TEST(MarkdownLinks, DeadOnesAreFound) {
    const kxtest::TempDir dir;
    dir.write("sub/there.md",
              "# The `first` heading, of two\n\n```\n# no heading\n```\n[up](../top.md)\n");
    dir.write("build/out.md", "[not ours](gone.md)\n");
    dir.write(
        "top.md",
        "# Top\n[a](sub/there.md) [b](sub/there.md#the-first-heading-of-two) [c](#top) [d](sub)\n"
        "[e](https://kxutils.example/gone.md) `[f](gone.md)` [`g`](sub/there.md)\n"
        "```\n[h](gone.md)\n```\n    [i](gone.md)\n"
        "[wrapped over\ntwo lines](gone.md) ![picture](gone.png) [j](sub/there.md#no-heading)\n"
        "[k](#nowhere) [l](#added-1) [m](#added-2)\n## Added\n## Added\n");
    const Links links = linksBelow(dir.path());
    EXPECT_EQ(links.count, 12U);
    EXPECT_EQ(links.dead, (Texts{"top.md: #added-2", "top.md: #nowhere", "top.md: gone.md",
                                 "top.md: gone.png", "top.md: sub/there.md#no-heading"}));
}
