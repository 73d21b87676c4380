// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Runs the command-line program as a process, in its own working directory and with its own home
// directory.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "kxtest.h"

class Tool : public testing::Test {
protected:
    kxtest::Outcome run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), KXTEST_KXUTILS);
        return kxtest::run(arguments, environment, options);
    }

    /// Like run(), with standard input.
    kxtest::Outcome runWith(const std::string& input, const std::vector<std::string>& arguments) {
        options.input = input;
        return run(arguments);
    }

    /// Runs a shell command in which "$K" is the program.
    kxtest::Outcome shell(const std::string& command) {
        auto variables = environment;
        variables["K"] = KXTEST_KXUTILS;
        variables["PATH"] = "/usr/bin:/bin";
        // A build that counts coverage writes its counts at exit, which the limits of the command
        // do not allow.
        variables["LLVM_PROFILE_FILE"] = "/dev/null";
        return kxtest::run({"/bin/sh", "-c", command}, variables, options);
    }

    /// Runs with --json. The running test fails unless the output is exactly one document whose
    /// exit code is that of the program.
    nlohmann::json document(std::vector<std::string> arguments, int exitCode) {
        arguments.emplace_back("--json");
        const kxtest::Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode) << outcome.out << outcome.err;
        EXPECT_EQ(outcome.err, "");
        auto parsed = nlohmann::json::parse(outcome.out, nullptr, /*allow_exceptions=*/false);
        EXPECT_FALSE(parsed.is_discarded()) << outcome.out;
        if (parsed.is_discarded()) return nlohmann::json::object();
        EXPECT_EQ(parsed["exitCode"], exitCode);
        return parsed;
    }

    kxtest::TempDir dir;
    // Without TALO_TMP_DIR, a run that asks for the temporary directory would make "/tmp/talo".
    std::map<std::string, std::string> environment = {{"HOME", dir.makeDir("home")},
                                                      {"TALO_TMP_DIR", dir.file("tmp")}};
    kxtest::RunOptions options = inDirectory(dir.path());

private:
    static kxtest::RunOptions inDirectory(const std::string& path) {
        kxtest::RunOptions result;
        result.directory = path;
        return result;
    }
};

/// Expects exactly this outcome of a run.
inline void expectRun(const kxtest::Outcome& outcome, int exitCode, const std::string& out,
                      const std::string& err) {
    EXPECT_EQ(outcome.out, out);
    EXPECT_EQ(outcome.err, err);
    EXPECT_EQ(outcome.exitCode, exitCode);
}
