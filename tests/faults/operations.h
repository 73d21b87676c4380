// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The operations whose steps are made to fail, one row each. README.md says how to add one.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "faults.h"

enum Steps { noSteps = 0, allocations = 1, systemCalls = 2, allSteps = allocations | systemCalls };

struct Operation {
    const char* name;
    /// Prepares, executes one piece of code with attempt.run(), checks the outcome, and leaves
    /// nothing behind.
    std::function<void(kxtest::Attempt& attempt)> execute;
    /// The kinds of steps it takes.
    Steps steps = allocations;
    /// It does something once in the life of a process, or leaves something in static state, so
    /// each execution gets its own process.
    bool inOwnProcess = false;
    /// Another library opens files in it, which started programs may inherit.
    bool opensElsewhere = false;
};
inline void PrintTo(const Operation& operation, std::ostream* os) { *os << operation.name; }

// Each list is in the source file named after it.
extern const std::vector<Operation> valueOperations, fileOperations, serviceOperations,
    logOperations, platformOperations, steplessOperations;

// Longer than a string can hold without allocating memory.
inline const std::string part(60, 'x');

inline bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

/// For a function that only answers: std::bad_alloc if any allocation fails, otherwise the right
/// answer.
template <typename Function, typename Result>
Operation answers(const char* name, const Function& function, const Result& expected) {
    return {name, [=](kxtest::Attempt& attempt) {
                std::optional<Result> answer;
                attempt.run([&] { answer = function(); });
                EXPECT_EQ(attempt.outOfMemory(), attempt.failed());
                EXPECT_EQ(answer.has_value(), !attempt.failed());
                if (answer) {
                    EXPECT_EQ(*answer, expected);
                }
            }};
}

/// The given operation, with a separate process for each execution.
inline Operation inOwnProcess(Operation operation) {
    operation.inOwnProcess = true;
    return operation;
}
