// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <atomic>
#include <cerrno>
#include <cstring>

#include "faults.h"

namespace kxtest {

namespace faults {

thread_local Plan* plan = nullptr;

static std::atomic<long> held{0};

// The plan of a program is shared by its threads. It is plain data, which std::atomic is not.
unsigned nextStep() { return __atomic_add_fetch(&plan->steps, 1U, __ATOMIC_RELAXED); }

void noteFailure(const char* call, int error) {
    plan->failed = true;
    std::strncpy(plan->call.data(), call, plan->call.size() - 1);
    plan->error = error;
}

bool mayAllocate() {
    if (!plan || plan->fault.kind != Fault::allocation) return true;
    const unsigned step = nextStep();
    if (plan->fault.onward ? step < plan->fault.step : step != plan->fault.step) return true;
    noteFailure("allocation", ENOMEM);
    return false;
}

void count(int blocks) { held += blocks; }

}  // namespace faults

long liveBlocks() { return faults::held; }

}  // namespace kxtest
