// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "faults.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <new>

namespace kxtest {

namespace faults {

static thread_local Plan current;

}  // namespace faults

std::string whyNoSystemCalls() { return faults::whyNoSystemCalls(); }

void Attempt::begin() {
    faults::current = {};
    faults::current.fault = _fault;
    if (_fault.kind == Fault::systemCall) faults::watchSystemCalls(true);
    errno = 0;
    faults::plan = &faults::current;
}

void Attempt::end() {
    _errnoAfter = errno;
    faults::plan = nullptr;
    if (_fault.kind == Fault::systemCall) faults::watchSystemCalls(false);
    _failed = faults::current.failed;
    _hasMoreVariants = faults::current.hasMoreVariants;
    _call = faults::current.call.data();
    _error = faults::current.error;
    _unknownCall = faults::current.unknownCall;
    _inheritable = faults::current.inheritable;
}

void Attempt::run(const std::function<void()>& code) {
    Captured out(stdout), err(stderr);
    try {
        begin();
        code();
        end();
    } catch (const std::bad_alloc&) {
        end();
        _outOfMemory = true;
    } catch (...) {
        end();
        throw;
    }
    // The streams may have met the fault, and they are used again.
    std::cout.clear();
    std::clearerr(stdout);
    std::clearerr(stderr);
    _out = out.text();
    _err = err.text();
}

std::string Attempt::description() const {
    if (_fault.kind == Fault::none) return "no fault";
    std::string text = "step " + std::to_string(_fault.step) + ": " + _call;
    if (_fault.kind == Fault::allocation) return text + (_fault.onward ? " and all later" : "");
    text += ", variant " + std::to_string(_fault.variant);
    if (_fault.onward) text += " and all later";
    return text + (_error != 0 ? std::string(": ") + std::strerror(_error) : "");
}

}  // namespace kxtest
