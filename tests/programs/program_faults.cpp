// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Preloaded into a program: makes one step fail that the program takes from main() on, to its last
// system call. KXTEST_FAULT says which, and how, by the four numbers that tests/faults/README.md
// explains. KXTEST_PLAN names a file, which then shows the plan as it was left. A program that has
// not ended after half a minute is ended by SIGALRM.
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "faults.h"

namespace {

using kxtest::Fault;
using kxtest::faults::Plan;

using Main = int (*)(int argc, char** argv, char** environment);

Main programMain = nullptr;
Plan* programPlan = nullptr;  // of all threads

[[noreturn]] void refuse(const char* what) {
    std::perror(what);
    std::abort();
}

// The plan lies in the file, so that it is seen however the program ends.
Plan* openPlan() {
    static Plan own;
    const char* const path = std::getenv("KXTEST_PLAN");
    if (!path) return &own;
    const int file = open(path, O_RDWR | O_CLOEXEC);
    if (file < 0) refuse("KXTEST_PLAN");
    void* const memory = mmap(nullptr, sizeof(Plan), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (memory == MAP_FAILED) refuse("KXTEST_PLAN");
    close(file);
    return static_cast<Plan*>(memory);
}

void readFault(Fault& fault) {
    int kind = 0, onward = 0;
    const char* const text = std::getenv("KXTEST_FAULT");
    if (!text || std::sscanf(text, "%d %u %u %d", &kind, &fault.step, &fault.variant, &onward) != 4)
        refuse("KXTEST_FAULT");
    fault.kind = static_cast<Fault::Kind>(kind);
    fault.onward = onward != 0;
}

void follow(Plan* plan) {
    kxtest::faults::plan = plan;
    if (plan->fault.kind != Fault::allocation) kxtest::faults::watchSystemCalls(true);
}

int mainWithFault(int argc, char** argv, char** environment) {
    programPlan = openPlan();
    readFault(programPlan->fault);
    if (!kxtest::faults::whyNoSystemCalls().empty()) refuse("no system calls");
    alarm(30);
    follow(programPlan);
    return programMain(argc, argv, environment);
}

struct Thread {
    void* (*work)(void*);
    void* argument;
};

void* workWithFault(void* started) {
    const Thread thread = *static_cast<Thread*>(started);
    std::free(started);
    follow(programPlan);
    return thread.work(thread.argument);
}

template <typename Function>
Function original(Function /*ours*/, const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

// NOLINTNEXTLINE(bugprone-reserved-identifier): what starts a program, in the GNU C library.
int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loaderFini)(), void* stackEnd) {
    programMain = main;
    return original(&__libc_start_main, "__libc_start_main")(mainWithFault, argc, argv, init, fini,
                                                             loaderFini, stackEnd);
}

// The start of a thread counts as one step. The system calls that the C library makes for it are
// not watched, and the new thread is watched from its own work on: the system does not do that by
// itself.
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*work)(void*),
                   void* argument) {
    const auto create = original(&pthread_create, "pthread_create");
    if (!programPlan) return create(thread, attributes, work, argument);
    if (!kxtest::faults::mayStartThread()) return EAGAIN;
    kxtest::faults::plan = nullptr;
    kxtest::faults::watchSystemCalls(false);
    auto* const started = static_cast<Thread*>(std::malloc(sizeof(Thread)));
    *started = {work, argument};
    const int result = create(thread, attributes, workWithFault, started);
    follow(programPlan);
    return result;
}

}  // extern "C"
