// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The tour in the README: its commands are run as they stand there, and must print what stands
// there.
#include <gtest/gtest.h>

#include <sstream>

#include "kxtest.h"

namespace {

struct Step {
    std::string command, output;
};

// The lines between the mark and the end of the block; "$ " begins a command.
std::vector<Step> tour() {
    std::istringstream readme(kxtest::slurp(KX_README));
    std::string line;
    while (std::getline(readme, line) && line != "<!-- tour -->") {
    }
    std::getline(readme, line);  // the fence
    std::vector<Step> steps;
    while (std::getline(readme, line) && line != "```") {
        if (line.rfind("$ ", 0) == 0)
            steps.push_back({line.substr(2), ""});
        else if (!steps.empty())
            steps.back().output += line + '\n';
    }
    return steps;
}

}  // namespace

TEST(ReadmeTour, PrintsWhatItSays) {
    const kxtest::TempDir dir;
    const std::vector<Step> steps = tour();
    EXPECT_EQ(steps.size(), 6U);
    for (const Step& step : steps) {
        const auto outcome = kxtest::run(
            {"/bin/sh", "-c", step.command},
            {{"PATH", KX_TOOL_DIR ":/usr/bin:/bin"}, {"HOME", dir.path()}}, {"", dir.path()});
        EXPECT_EQ(outcome.out, step.output) << step.command;
        EXPECT_EQ(outcome.err, "") << step.command;
        EXPECT_EQ(outcome.exitCode, 0) << step.command;
    }
}
