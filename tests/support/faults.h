// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Makes one step of an operation fail: an allocation, or a call of the operating system.
#pragma once

#include <array>
#include <functional>
#include <string>

#include "kxtest.h"

namespace kxtest {

/// Which step fails, and how.
struct Fault {
    /// `kill` ends the process before the step, a system call, is made.
    enum Kind { none, allocation, systemCall, kill } kind = none;
    unsigned step = 1;  ///< counted from 1
    /// All later allocations fail as well; or all later system calls of that name fail, with the
    /// first error number that is not EINTR.
    bool onward = false;
    unsigned variant = 0;  ///< for a system call: the way in which it fails
};

/// One execution of an operation, with one fault or none. Only the thread that executes it meets
/// the fault.
class Attempt {
public:
    explicit Attempt(const Fault& fault) : _fault(fault) {}

    /// Executes `code` once only, catches std::bad_alloc and keeps what `code` prints.
    void run(const std::function<void()>& code);

    /// Whether the fault has happened: false if `code` takes fewer steps.
    bool failed() const { return _failed; }
    /// Whether all later steps of the same kind fail as well.
    bool failsOnward() const { return _fault.onward; }
    /// Whether the fault happened in the system call of that name.
    bool failedAt(const std::string& call) const { return _failed && call == _call; }
    /// The error number of the fault. It is 0 for a system call that was allowed to do half of its
    /// work, or that answered that a signal had ended the process it waited for.
    int error() const { return _error; }
    /// Whether the failing call can fail in more ways than this one.
    bool hasMoreVariants() const { return _hasMoreVariants; }

    /// The number of a system call that was made and cannot be made to fail; -1 if there is none.
    long unknownCall() const { return _unknownCall; }

    /// The name of a system call that made a descriptor which started programs inherit; "" if there
    /// is none. It is known where system calls can be made to fail.
    std::string inheritable() const { return _inheritable; }

    /// Whether `code` ended with a std::bad_alloc.
    bool outOfMemory() const { return _outOfMemory; }
    /// The value of errno after `code`; it was 0 before.
    int errnoAfter() const { return _errnoAfter; }
    const std::string& out() const { return _out; }
    const std::string& err() const { return _err; }

    /// A description of the fault for messages.
    std::string description() const;

private:
    void begin();
    void end();

    Fault _fault;
    bool _failed = false, _hasMoreVariants = false, _outOfMemory = false;
    std::string _call;
    const char* _inheritable = "";
    int _error = 0, _errnoAfter = 0;
    long _unknownCall = -1;
    std::string _out, _err;
};

/// The number of memory blocks that the program holds.
long liveBlocks();

/// Whether the C library's own allocations can also fail, not only those by operator new.
bool reachesMalloc();

/// Why no system call can be made to fail here; "" if they can.
std::string whyNoSystemCalls();

namespace faults {

// Shared by the units that make steps fail; each thread has its own, or all threads of a program
// share one. It holds no pointers, since another process may look at it.
struct Plan {
    Fault fault;
    unsigned steps = 0;  // so far
    bool failed = false, hasMoreVariants = false;
    std::array<char, 16> call = {};  // that failed
    long argument = -1;              // its first: the descriptor, if it has one
    int error = 0;
    long fullFile = -1;            // a descriptor to which nothing more can be written
    long unknownCall = -1;         // a call that cannot be made to fail
    const char* inheritable = "";  // the call that made a descriptor without close-on-exec
};
extern thread_local Plan* plan;  // if null, nothing fails

/// Counts a step of the plan and returns its number.
unsigned nextStep();
/// Notes that this step fails.
void noteFailure(const char* call, int error);

/// Counts an allocation. Returns false if it must fail.
bool mayAllocate();
/// Adds to the number of blocks held.
void count(int blocks);

// From the unit that stands between the program and the system.
std::string whyNoSystemCalls();
void watchSystemCalls(bool on);
/// Counts the start of a thread as a system call. False if it must fail.
bool mayStartThread();

}  // namespace faults

}  // namespace kxtest
