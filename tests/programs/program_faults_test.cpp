// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Each step of each command line of program_faults_rows.cpp fails once, and the program is killed
// before each system call: tests/faults/README.md says what must hold then, and how to repeat one
// run. program_faults.cpp, preloaded into the program, makes that happen.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "kxtest.h"
#include "program_faults_rows.h"
#include "rows.h"
#include "support/faults.h"

namespace {

namespace fs = std::filesystem;
using kxtest::Fault;
using kxtest::faults::Plan;

// --- Runs ----------------------------------------------------------------------------------------

// What a run has left behind.
struct Result {
    kxtest::Outcome outcome;
    Files files;
    Plan plan;
};

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

std::string quoted(const std::string& text) {
    std::ostringstream out;
    for (const char c : text.substr(0, 1000)) {
        if (c == '\n' || (c >= ' ' && c <= '~'))
            out << c;
        else
            out << "\\x" << std::hex << static_cast<int>(static_cast<unsigned char>(c));
    }
    return out.str();
}

// With every digit replaced, where a row shows the time.
std::string comparable(std::string text, const Row& row) {
    if (row.showsTime)
        std::replace_if(
            text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; }, '0');
    return text;
}

std::string read(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

std::string describe(const Fault& fault) {
    std::ostringstream out;
    out << fault.kind << ' ' << fault.step << ' ' << fault.variant << ' ' << fault.onward;
    return out.str();
}

// A folder in which a row is run again and again, from the same files.
class Workplace {
public:
    explicit Workplace(const Row& row) : _row(row) {}

    Result run(const Fault& fault) const {
        reset();
        Result result;
        std::map<std::string, std::string> variables = _row.variables;
        variables["HOME"] = _dir.file("home");
        variables["TALO_TMP_DIR"] = _dir.file("tmp");
        variables["TZ"] = "UTC0";
        if (fault.kind != Fault::none || fault.step == 0) {
            const Plan none;
            std::ofstream(_plan, std::ios::binary)
                .write(reinterpret_cast<const char*>(&none), sizeof none);
            variables["LD_PRELOAD"] = KXTEST_FAULTS;
            variables["KXTEST_PLAN"] = _plan;
            variables["KXTEST_FAULT"] = describe(fault);
        }
        std::vector<std::string> command = _row.arguments;
        command.insert(command.begin(), _row.program);
        kxtest::RunOptions options;
        options.directory = _dir.path();
        options.input = _row.input;
        result.outcome = kxtest::run(command, variables, options);
        if (variables.count("KXTEST_PLAN") != 0) {
            const std::string plan = read(_plan);
            std::memcpy(&result.plan, plan.data(), std::min(plan.size(), sizeof result.plan));
        }
        result.files = look();
        return result;
    }

private:
    void reset() const {
        for (const auto& entry : fs::directory_iterator(_dir.path())) fs::remove_all(entry);
        for (const char* name : {"home", "tmp"}) fs::create_directory(_dir.file(name));
        for (const auto& [name, content] : _row.files) _dir.write(name, content);
    }

    Files look() const {
        Files files;
        for (const auto& entry : fs::recursive_directory_iterator(_dir.path())) {
            const std::string name = fs::relative(entry.path(), _dir.path()).string();
            if (startsWith(name, "home")) continue;  // nothing is made for preferences
            if (entry.is_directory())
                files[name + '/'] = "";
            else
                files[comparable(name, _row)] = comparable(read(entry.path()), _row);
        }
        return files;
    }

    const Row& _row;
    const kxtest::TempDir _dir, _planDir;
    const std::string _plan = _planDir.file("plan");
};

// --- What a run must have left behind ------------------------------------------------------------

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

// What the example host says on standard output when it ends with exit code 1.
const std::string failedInTalo = "Some files failed.";

// A line that says how an item has fared, or how many.
bool ownsUp(const std::string& line) {
    return startsWith(line, "unreadable") || startsWith(line, "unwritable") ||
           line.find("unreadable") != std::string::npos || line == "  readable   no" ||
           line == "  copied     no" || line == failedInTalo;
}

// Results of a run that failed: those of the clean run, as far as they go.
std::string judgeOutput(const Row& row, const std::string& out, const std::string& cleanOut) {
    if (startsWith(cleanOut, out)) return "";
    if (row.isJson()) {
        const auto document = nlohmann::json::parse(out, nullptr, /*allow_exceptions=*/false);
        return document.is_discarded() ? "no document" : "";
    }
    const std::vector<std::string> lines = linesOf(out), clean = linesOf(cleanOut);
    for (const std::string& line : lines) {
        const bool isCut = &line == &lines.back() && out.back() != '\n';
        const bool isRight = std::any_of(clean.begin(), clean.end(), [&](const std::string& c) {
            return isCut ? startsWith(c, line) : c == line;
        });
        if (!isRight && !ownsUp(line)) return "a wrong line: " + line;
    }
    return "";
}

std::string contentOf(const Files& files, const std::string& name) {
    const auto found = files.find(name);
    return found == files.end() ? "(none)" : found->second;
}

// The files that a row names, old or new.
std::string judgeWhole(const Row& row, const Files& files, const Files& cleanFiles) {
    for (const std::string& name : row.whole) {
        const std::string content = contentOf(files, name);
        if (content != contentOf(row.files, name) && content != contentOf(cleanFiles, name))
            return name + " is neither old nor new: " + std::to_string(content.size()) + " bytes";
    }
    return "";
}

bool isLog(const Row& row, const std::string& name) {
    return std::any_of(row.logs.begin(), row.logs.end(), [&](const std::string& log) {
        return startsWith(name, comparable(log, row));  // or one that was moved aside
    });
}

// The lines of all log files, each once: only the lines of a head come more than once, and how many
// heads there are depends on which files could be looked at.
std::set<std::string> logLines(const Row& row, const Files& files) {
    std::set<std::string> all;
    for (const auto& [name, content] : files)
        if (isLog(row, name))
            for (const std::string& line : linesOf(comparable(content, row))) all.insert(line);
    return all;
}

// Whatever is lost, it is none of the earlier lines.
std::string judgeLostLines(const Row& row, const Files& files) {
    const std::set<std::string> now = logLines(row, files);
    for (const std::string& line : logLines(row, row.files))
        if (now.count(line) == 0) return "an earlier line is lost: " + line;
    return "";
}

// Log files have whole lines only, none but the clean run's, and all earlier ones.
std::string judgeLogs(const Row& row, const Files& files, const Files& cleanFiles) {
    const std::string lost = judgeLostLines(row, files);
    if (!lost.empty()) return lost;
    const std::set<std::string> now = logLines(row, files), clean = logLines(row, cleanFiles);
    for (const std::string& line : now)
        if (clean.count(line) == 0) return "not a line of the log: " + line;
    for (const auto& [name, content] : files)
        if (isLog(row, name) && !content.empty() && content.back() != '\n')
            return "a line is cut in " + name;
    return "";
}

// A log that is complete begins as the clean one does, or with what was there before, and has all
// lines.
std::string judgeCompleteLogs(const Row& row, const Files& files, const Files& cleanFiles) {
    if (logLines(row, files) != logLines(row, cleanFiles)) return "exit code 0, and not all lines";
    for (const std::string& log : row.logs) {
        if (files.count(log) == 0) return "exit code 0, and no log";
        const std::string head = linesOf(files.at(log)).front();
        const auto old = row.files.find(log);
        const bool isOld =
            old != row.files.end() && head == linesOf(comparable(old->second, row)).front();
        if (!isOld && head != linesOf(cleanFiles.at(log)).front())
            return "exit code 0, and no head in the log";
    }
    return "";
}

std::string judgeKilled(const Row& row, const Result& result, const Result& clean) {
    if (result.outcome.signal != SIGKILL) return "the process was not killed";
    std::string problem = judgeWhole(row, result.files, clean.files);
    if (problem.empty()) problem = judgeLogs(row, result.files, clean.files);
    return problem;
}

std::string judge(const Row& row, const Result& result, const Result& clean) {
    const kxtest::Outcome& outcome = result.outcome;
    if (outcome.signal == SIGALRM) return "it hangs";
    if (outcome.signal != 0) return "it crashes";
    if (outcome.exitCode == clean.outcome.exitCode) {
        const std::string out = comparable(outcome.out, row);
        const bool isSame = out == comparable(clean.outcome.out, row);
        if (isSame && result.files == clean.files) return "";
        if (outcome.exitCode == 0) {
            if (!isSame) return "exit code 0, and other output";
            if (row.logs.empty()) return "exit code 0, and other files";
            return row.losesLines ? judgeLostLines(row, result.files)
                                  : judgeCompleteLogs(row, result.files, clean.files);
        }
    }
    if (row.failures.count(outcome.exitCode) == 0 && outcome.exitCode != clean.outcome.exitCode)
        return "a wrong exit code";
    // What leads to standard error may itself be what fails.
    const std::string call = result.plan.call.data();
    const bool canSpeak = !(call == "write" && result.plan.argument == STDERR_FILENO) &&
                          !(result.plan.fault.onward && (call == "write" || call == "dup"));
    const bool speaks =
        !outcome.err.empty() || row.isJson() || outcome.out.find(failedInTalo) != std::string::npos;
    if (!speaks && canSpeak) return "not a word on standard error";
    std::string problem =
        judgeOutput(row, comparable(outcome.out, row), comparable(clean.outcome.out, row));
    if (problem.empty()) problem = judgeWhole(row, result.files, clean.files);
    // What the system does not remove stays; but the program must say that something is wrong.
    const std::string failedCall = result.plan.call.data();
    if (failedCall == "unlink" && outcome.exitCode != 0) return problem;
    for (const auto& [name, content] : result.files)
        if (row.files.count(name) == 0 && clean.files.count(name) == 0 && !isLog(row, name))
            return "a file is left behind: " + name;
    return problem;
}

// --- Loops ---------------------------------------------------------------------------------------

bool isFull() {
    const char* const full = std::getenv("KX_FAULTS_FULL");
    return full && *full == '1';
}

class Program : public testing::TestWithParam<Row> {
protected:
    const Row& row = GetParam();
    const Workplace place = Workplace(row);
    const Result clean = place.run({});

    void SetUp() override {
        const std::string reason = kxtest::faults::whyNoSystemCalls();
        if (!reason.empty()) GTEST_SKIP() << reason;
        ASSERT_EQ(clean.outcome.exitCode, row.exitCode) << clean.outcome.out << clean.outcome.err;
    }

    // A run in which nothing fails; says how many steps it takes.
    unsigned countSteps(Fault::Kind kind) const {
        Fault none;
        none.kind = kind;
        none.step = 0;
        const Result counted = place.run(none);
        EXPECT_EQ(judge(row, counted, clean), "");
        EXPECT_EQ(counted.outcome.err, clean.outcome.err);
        EXPECT_FALSE(counted.plan.failed);
        EXPECT_EQ(counted.plan.unknownCall, -1) << "a system call that nothing makes fail";
        EXPECT_GT(counted.plan.steps, 0U);
        return counted.plan.steps;
    }

    // Tries one fault; false if the program does not take as many steps.
    bool tryOne(const Fault& fault, Plan& plan) {
        const Result result = place.run(fault);
        plan = result.plan;
        const std::string problem = fault.kind == Fault::kill && plan.failed
                                        ? judgeKilled(row, result, clean)
                                        : judge(row, result, clean);
        ++_runs;
        if (problem.empty()) return plan.failed;
        std::ostringstream text;
        text << "KX_FAULTS_ONLY='" << describe(fault) << "' (" << plan.call.data();
        if (plan.error != 0) text << ": " << std::strerror(plan.error);
        text << "): " << problem << "; exit code " << result.outcome.exitCode << '\n';
        _problems.push_back(text.str());
        if (_problems.size() == 1 || std::getenv("KX_FAULTS_ONLY"))
            _problems.back() += "--- output:\n" + quoted(result.outcome.out) + "\n--- errors:\n" +
                                quoted(result.outcome.err) + "\n---\n";
        return plan.failed;
    }

    // Every system call from the first on, in every way: of those that are made again and again,
    // every third, where no log is written: a lost line shows at one call only. And from the first
    // call of each name on, all of that name.
    void tryCalls(Fault fault) {
        const bool isSampled = fault.kind != Fault::kill && row.logs.empty() && !isFull();
        Plan plan;
        std::map<std::string, std::pair<unsigned, unsigned>> calls;  // the first, how many
        while (tryOne(fault, plan)) {
            auto& [first, count] = calls[plan.call.data()];
            if (fault.variant == 0 && count++ == 0) first = fault.step;
            if (plan.hasMoreVariants) {
                ++fault.variant;
            } else {
                fault.step += count > 6 && isSampled ? 3 : 1;
                fault.variant = 0;
            }
        }
        if (fault.kind == Fault::kill) return;
        fault.onward = true;
        calls.erase("dup");  // what stands in its way (EBUSY, EINTR) does not stay
        for (const auto& [call, steps] : calls) {
            fault.step = steps.first;
            tryOne(fault, plan);
        }
    }

    void tryAllocations(Fault fault, unsigned steps) {
        // What comes first, declaring the sub-commands and parsing, is the same for all.
        const unsigned common = isFull() ? 0 : steps / 2, often = isFull() ? 1 : 1 + steps / 50;
        Plan plan;
        for (fault.step = 1; fault.step <= steps;
             fault.step += fault.step < common ? 2 * often : often)
            tryOne(fault, plan);
    }

    bool tryOnly() {
        const char* const only = std::getenv("KX_FAULTS_ONLY");
        if (!only) return false;
        Fault fault;
        int kind = 0;
        std::istringstream(only) >> kind >> fault.step >> fault.variant >> fault.onward;
        fault.kind = static_cast<Fault::Kind>(kind);
        const Result result = place.run(fault);
        std::cout << "exit code " << result.outcome.exitCode << ", signal " << result.outcome.signal
                  << "\n--- output:\n"
                  << quoted(result.outcome.out) << "\n--- errors:\n"
                  << quoted(result.outcome.err) << '\n';
        for (const auto& [name, content] : result.files)
            std::cout << "--- " << name << ":\n" << quoted(content.substr(0, 200)) << '\n';
        Plan plan;
        tryOne(fault, plan);
        return true;
    }

    void conclude() {
        RecordProperty("runs", static_cast<int>(_runs));
        std::string all;
        for (std::size_t i = 0; i < _problems.size() && i < 10; ++i) all += _problems[i];
        if (_problems.size() > 10) all += std::to_string(_problems.size()) + " in all\n";
        EXPECT_TRUE(_problems.empty()) << all;
    }

private:
    std::size_t _runs = 0;
    std::vector<std::string> _problems;
};

class Allocations : public Program {};
TEST_P(Allocations, FailOneByOne) {
    Fault fault;
    fault.kind = Fault::allocation;
    if (!tryOnly()) {
        const unsigned steps = countSteps(fault.kind);
        tryAllocations(fault, steps);
        fault.onward = true;
        tryAllocations(fault, steps);
    }
    conclude();
}

class SystemCalls : public Program {};
TEST_P(SystemCalls, FailOneByOne) {
    Fault fault;
    fault.kind = Fault::systemCall;
    if (!tryOnly()) {
        countSteps(fault.kind);
        tryCalls(fault);
    }
    conclude();
}

class Kills : public Program {};
TEST_P(Kills, LeaveFilesWhole) {
    Fault fault;
    fault.kind = Fault::kill;
    if (!tryOnly()) {
        countSteps(fault.kind);
        tryCalls(fault);
    }
    conclude();
}

std::vector<Row> writingRows() {
    std::vector<Row> found;
    std::copy_if(rows.begin(), rows.end(), std::back_inserter(found),
                 [](const Row& row) { return !row.whole.empty() || !row.logs.empty(); });
    return found;
}

INSTANTIATE_TEST_SUITE_P(Table, Allocations, testing::ValuesIn(rows), kxtest::nameOfRow);
INSTANTIATE_TEST_SUITE_P(Table, SystemCalls, testing::ValuesIn(rows), kxtest::nameOfRow);
INSTANTIATE_TEST_SUITE_P(Table, Kills, testing::ValuesIn(writingRows()), kxtest::nameOfRow);

}  // namespace
