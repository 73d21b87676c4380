// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Each step of each operation fails once, alone and with all later ones: README.md says what must
// hold then, and how to repeat one failure.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <future>
#include <iostream>
#include <iterator>
#include <sstream>
#include <thread>

#include "child.h"
#include "descriptors.h"
#include "kxLog.h"
#include "operations.h"
#include "rows.h"

namespace {

using kxtest::Attempt;
using kxtest::Fault;

// Every entry point has its own lock.
void logThroughAll() {
    kxLog::info("%s", "still here");
    kxLog::warning("%s", "still here");
    kxLog::error("%s", "still here");
    kxLog::info(0, "%s", "still here");
    kxLog::warning(0, "%s", "still here");
    kxLog::error(0, "%s", "still here");
}

// A lock left held would block another thread for ever.
void expectFreeLog() {
    const kxtest::Captured out(stdout), err(stderr);
    std::packaged_task<void()> task(logThroughAll);
    const auto done = task.get_future();
    std::thread thread(std::move(task));
    if (done.wait_for(std::chrono::seconds(10)) == std::future_status::ready) {
        thread.join();
        logThroughAll();
    } else {
        thread.detach();
        ADD_FAILURE() << "the log is blocked";
    }
}

struct Trial {
    bool failed = false, hasMoreVariants = false;
    long blocksLeft = 0;
};

Trial tryHere(const Operation& operation, const Fault& fault) {
    Trial trial;
    const auto descriptors = kxtest::openDescriptors();
    const long blocks = kxtest::liveBlocks();
    {
        Attempt attempt(fault);
        operation.execute(attempt);
        if (testing::Test::HasFailure()) std::cout << attempt.description() << std::endl;
        trial.failed = attempt.failed();
        trial.hasMoreVariants = attempt.hasMoreVariants();
        if (kxtest::reachesMalloc()) {  // a sanitizer makes its own calls
            EXPECT_EQ(attempt.unknownCall(), -1) << "a system call that nothing makes fail";
            if (!operation.opensElsewhere) {
                EXPECT_EQ(attempt.inheritable(), "") << "started programs inherit what it opened";
            }
        }
    }
    std::string().swap(kxLog::_last_error);
    trial.blocksLeft = kxtest::liveBlocks() - blocks;
    EXPECT_EQ(kxtest::openDescriptors(), descriptors);
    EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD) << "a child was left";
    expectFreeLog();
    return trial;
}

// Like tryHere(), but in a separate process, which executes the operation a second time without a
// fault; static state has its final size by then.
Trial tryInChild(const Operation& operation, const Fault& fault) {
    Trial trial;
    std::istringstream answer(kxtest::inChild([&] {
        const Trial first = tryHere(operation, fault), second = tryHere(operation, {});
        std::ostringstream text;
        text << first.failed << ' ' << first.hasMoreVariants << ' '
             << first.blocksLeft + second.blocksLeft;
        return testing::Test::HasFailure() ? "failed" : text.str();
    }));
    answer >> trial.failed >> trial.hasMoreVariants >> trial.blocksLeft;
    EXPECT_TRUE(answer) << answer.str();
    return trial;
}

// Makes one step after another fail, beginning with that of `fault`; returns how many failed.
int failEach(const Operation& operation, Fault fault) {
    const auto tryOnce = operation.inOwnProcess ? tryInChild : tryHere;
    // Whatever libraries allocate once and for all is there afterwards.
    const long blocksLeft = tryOnce(operation, {}).blocksLeft;
    for (int failures = 0;; ++failures) {
        const Trial trial = tryOnce(operation, fault);
        EXPECT_LE(trial.blocksLeft, operation.inOwnProcess ? blocksLeft : 0);
        if (testing::Test::HasFailure())
            std::cout << "at step " << fault.step << ", variant " << fault.variant << std::endl;
        if (testing::Test::HasFailure() || !trial.failed) return failures;
        if (trial.hasMoreVariants) {
            ++fault.variant;
        } else {
            ++fault.step;
            fault.variant = 0;
        }
    }
}

class Allocations : public testing::TestWithParam<Operation> {};
TEST_P(Allocations, FailOneByOne) {
    Fault fault;
    fault.kind = Fault::allocation;
    int failures = failEach(GetParam(), fault);
    fault.onward = true;
    if (!HasFailure()) failures += failEach(GetParam(), fault);
    RecordProperty("failures", failures);
    if (failures == 0 && !kxtest::reachesMalloc())
        GTEST_SKIP() << "allocates in the C library only, where the sanitizer is";
    EXPECT_TRUE(failures > 0 || HasFailure()) << "allocates nothing";
}

class SystemCalls : public testing::TestWithParam<Operation> {};
TEST_P(SystemCalls, FailOneByOne) {
    const std::string reason = kxtest::whyNoSystemCalls();
    if (!reason.empty()) GTEST_SKIP() << reason;
    Fault fault;
    fault.kind = Fault::systemCall;
    int failures = failEach(GetParam(), fault);
    fault.onward = true;
    if (!HasFailure()) failures += failEach(GetParam(), fault);
    RecordProperty("failures", failures);
    if (failures == 0 && !kxtest::reachesMalloc())
        GTEST_SKIP() << "calls only what the sanitizer needs itself";
    EXPECT_TRUE(failures > 0 || HasFailure()) << "calls nothing";
}

class Stepless : public testing::TestWithParam<Operation> {};
TEST_P(Stepless, HasNothingThatCouldFail) {
    Fault fault;
    tryHere(GetParam(), fault);  // does what is done once and for all
    for (const Fault::Kind kind : {Fault::allocation, Fault::systemCall}) {
        if (kind == Fault::systemCall && !kxtest::whyNoSystemCalls().empty()) continue;
        fault.kind = kind;
        const Trial trial = tryHere(GetParam(), fault);
        EXPECT_FALSE(trial.failed);
        EXPECT_EQ(trial.blocksLeft, 0);
    }
}

std::vector<Operation> with(Steps steps) {
    std::vector<Operation> operations;
    for (const auto* list : {&valueOperations, &fileOperations, &serviceOperations, &logOperations,
                             &platformOperations})
        std::copy_if(list->begin(), list->end(), std::back_inserter(operations),
                     [&](const Operation& row) { return (row.steps & steps) != 0; });
    return operations;
}

INSTANTIATE_TEST_SUITE_P(Table, Allocations, testing::ValuesIn(with(allocations)),
                         kxtest::nameOfRow);
INSTANTIATE_TEST_SUITE_P(Table, Stepless, testing::ValuesIn(steplessOperations), kxtest::nameOfRow);
INSTANTIATE_TEST_SUITE_P(Table, SystemCalls, testing::ValuesIn(with(systemCalls)),
                         kxtest::nameOfRow);

}  // namespace
