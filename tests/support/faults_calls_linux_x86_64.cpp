// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// While a thread is watched, all of its system calls pass through here, whoever makes them,
// including those that the C library makes inside fclose or popen, which no replaced function would
// see. Linux 5.11 and later hands these calls back to the program as a signal ("syscall user
// dispatch", prctl(2)).
#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): the system's own types
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "faults.h"

// The only code whose own calls pass unhindered (this must include the instruction after a call).
// `kxtest_call` makes the call whose number and six arguments are in `call`. A call that starts a
// process gives the new process its own stack, on which it continues at `child`, with the registers
// that it had.
extern "C" {
extern const char kxtest_calls_begin, kxtest_calls_end;  // NOLINT(readability-identifier-naming)
long kxtest_call(const long* call, long child);
void kxtest_sigreturn();
}
asm(R"(
    .pushsection .text
    .globl kxtest_calls_begin, kxtest_calls_end, kxtest_call, kxtest_sigreturn
kxtest_calls_begin:
kxtest_call:
    push %r12
    mov %rsi, %r12
    mov 0(%rdi), %rax
    mov 16(%rdi), %rsi
    mov 24(%rdi), %rdx
    mov 32(%rdi), %r10
    mov 40(%rdi), %r8
    mov 48(%rdi), %r9
    mov 8(%rdi), %rdi
    syscall
    test %r12, %r12
    jz 1f
    test %rax, %rax
    jnz 1f
    jmp *%r12
1:  pop %r12
    ret
kxtest_sigreturn:
    mov $15, %eax
    syscall
    ud2
kxtest_calls_end:
    .popsection
)");

namespace kxtest::faults {
namespace {

#ifndef PR_SET_SYSCALL_USER_DISPATCH
constexpr int PR_SET_SYSCALL_USER_DISPATCH = 59;
#endif
constexpr unsigned long dispatchOff = 0, dispatchOn = 1;
constexpr char letPass = 0, handOver = 1;
thread_local volatile char selector = letPass;

// Values that may stand in place of an error number:
enum OtherFailure {
    half = -1,          // half of the bytes are read or written
    halfThenNone = -2,  // half of the bytes are written, and no more to that file: the disk is full
    killed = -3,        // the process waited for was ended by a signal
};

struct Call {
    long number;
    const char* name;
    std::array<int, 4> failures;  // 0 ends the list
};
constexpr Call calls[] = {
    {SYS_access, "access", {EIO}},
    {SYS_chdir, "chdir", {EACCES}},
    {SYS_clone, "clone", {EAGAIN}},
    {SYS_clone3, "clone", {EAGAIN}},
    {SYS_close, "close", {EIO, EINTR}},
    {SYS_connect, "connect", {ECONNREFUSED}},
    {SYS_dup, "dup", {EMFILE}},
    {SYS_dup2, "dup", {EBUSY, EINTR}},
    {SYS_dup3, "dup", {EBUSY, EINTR}},
    {SYS_faccessat, "access", {EIO}},
    {SYS_faccessat2, "access", {EIO}},
    {SYS_fchdir, "chdir", {EACCES}},
    {SYS_fchmod, "chmod", {EPERM}},
    {SYS_fchown, "chown", {EPERM}},
    {SYS_fcntl, "fcntl", {EIO}},
    {SYS_fdatasync, "fsync", {EIO, ENOSPC}},
    {SYS_fork, "clone", {EAGAIN}},
    {SYS_fstat, "fstat", {EIO}},
    {SYS_fsync, "fsync", {EIO, ENOSPC}},
    {SYS_ftruncate, "ftruncate", {EIO, EINTR}},
    {SYS_getcwd, "getcwd", {ENOENT}},
    {SYS_getdents64, "readdir", {EIO}},
    {SYS_ioctl, "ioctl", {EIO}},
    {SYS_linkat, "link", {EACCES}},
    {SYS_lseek, "lseek", {EIO}},
    {SYS_lstat, "stat", {EACCES}},
    {SYS_mkdir, "mkdir", {ENOSPC}},
    {SYS_mkdirat, "mkdir", {ENOSPC}},
    {SYS_mmap, "mmap", {ENOMEM}},
    {SYS_mprotect, "mprotect", {ENOMEM}},
    {SYS_newfstatat, "stat", {EACCES}},
    {SYS_open, "open", {EMFILE, EINTR}},
    {SYS_openat, "open", {EMFILE, EINTR}},
    {SYS_pipe, "pipe", {EMFILE}},
    {SYS_pipe2, "pipe", {EMFILE}},
    {SYS_pread64, "read", {EIO, EINTR, half}},
    {SYS_preadv, "read", {EIO, EINTR, half}},
    {SYS_poll, "poll", {EIO}},
    {SYS_prlimit64, "getrlimit", {EPERM}},
    {SYS_pwrite64, "write", {ENOSPC, EINTR, half, halfThenNone}},
    {SYS_pwritev, "write", {ENOSPC, EINTR, half, halfThenNone}},
    {SYS_read, "read", {EIO, EINTR, half}},
    {SYS_readlink, "readlink", {EIO}},
    {SYS_readlinkat, "readlink", {EIO}},
    {SYS_readv, "read", {EIO, EINTR, half}},
    {SYS_recvmsg, "receive", {EIO}},
    {SYS_rename, "rename", {EACCES}},
    {SYS_renameat, "rename", {EACCES}},
    {SYS_renameat2, "rename", {EACCES}},
    {SYS_rmdir, "unlink", {EBUSY}},
    {SYS_sendto, "send", {EPIPE}},
    {SYS_socket, "socket", {EMFILE}},
    {SYS_stat, "stat", {EACCES}},
    {SYS_statx, "stat", {EACCES}},
    {SYS_truncate, "ftruncate", {EIO, EINTR}},
    {SYS_unlink, "unlink", {EBUSY}},
    {SYS_unlinkat, "unlink", {EBUSY}},
    {SYS_vfork, "clone", {EAGAIN}},
    {SYS_wait4, "wait", {EINTR, ECHILD, killed}},
    {SYS_write, "write", {ENOSPC, EINTR, half, halfThenNone}},
    {SYS_writev, "write", {ENOSPC, EINTR, half, halfThenNone}},
};

// Calls that cannot fail, or for which another call is used if they do (`brk`).
constexpr long sureCalls[] = {
    SYS_brk,         SYS_clock_gettime, SYS_exit,          SYS_exit_group,     SYS_futex,
    SYS_getegid,     SYS_geteuid,       SYS_getgid,        SYS_getpid,         SYS_getrandom,
    SYS_gettid,      SYS_gettimeofday,  SYS_getuid,        SYS_madvise,        SYS_munmap,
    SYS_prctl,       SYS_rt_sigaction,  SYS_rt_sigpending, SYS_rt_sigprocmask, SYS_rt_sigtimedwait,
    SYS_sched_yield, SYS_time};

using Registers = std::remove_reference_t<decltype(ucontext_t{}.uc_mcontext.gregs)>;

long perform(long number, const Registers& r) {
    const long call[] = {number,     r[REG_RDI], r[REG_RSI], r[REG_RDX],
                         r[REG_R10], r[REG_R8],  r[REG_R9]};
    const bool startsProcess =
        number == SYS_clone || number == SYS_clone3 || number == SYS_fork || number == SYS_vfork;
    return kxtest_call(call, startsProcess ? r[REG_RIP] : 0);
}

// The mask in force is the one to which the handler returns. The signal that hands over calls must
// not be blocked, although posix_spawn blocks all signals.
long changeMask(const Registers& r, sigset_t& mask) {
    std::uint64_t bits = 0, set = 0;
    std::memcpy(&bits, &mask, sizeof bits);
    if (r[REG_RDX] != 0) std::memcpy(reinterpret_cast<void*>(r[REG_RDX]), &bits, sizeof bits);
    if (r[REG_RSI] == 0) return 0;
    std::memcpy(&set, reinterpret_cast<const void*>(r[REG_RSI]), sizeof set);
    if (r[REG_RDI] == SIG_BLOCK) bits |= set;
    if (r[REG_RDI] == SIG_UNBLOCK) bits &= ~set;
    if (r[REG_RDI] == SIG_SETMASK) bits = set;
    bits &= ~(std::uint64_t{1} << (SIGSYS - 1));
    std::memcpy(&mask, &bits, sizeof bits);
    return 0;
}

long failWith(int error) {
    plan->error = error;
    return -error;
}

long fail(const Call& call, const Registers& r, int error) {
    // close() closes the descriptor whatever it answers. ECHILD means that the child is gone, so it
    // is taken away first.
    if (call.number == SYS_close || error == ECHILD) perform(call.number, r);
    return failWith(error);
}

// An error that lasts. A call that a signal has interrupted would be made again.
int lastingFailure(const Call& call) {
    return call.failures[0] == EINTR ? call.failures[1] : call.failures[0];
}

// Lets the call work, and has it report that a signal ended the process waited for.
long waitForKilled(const Registers& r) {
    const long process = perform(SYS_wait4, r);
    if (process > 0 && r[REG_RSI] != 0) *reinterpret_cast<int*>(r[REG_RSI]) = SIGKILL;
    return process;
}

bool failsAgain(const char* name) {
    return plan->fault.onward && plan->failed && std::strcmp(name, plan->call.data()) == 0;
}

[[noreturn]] void killProcess(const char* call) {
    noteFailure(call, 0);
    const long identify[7] = {SYS_getpid}, kill[7] = {SYS_kill, kxtest_call(identify, 0), SIGKILL};
    for (;;) kxtest_call(kill, 0);
}

// The result of the call if it is the one to fail, in place of its work.
long perhapsFail(const Call& call, Registers& r) {
    if (!plan) return perform(call.number, r);
    if (plan->fullFile == r[REG_RDI] && std::strcmp(call.name, "write") == 0)
        return failWith(ENOSPC);
    if (failsAgain(call.name)) return fail(call, r, plan->error);
    if (nextStep() != plan->fault.step) return perform(call.number, r);
    if (plan->fault.kind == Fault::kill) killProcess(call.name);
    const bool canHalve = r[REG_RDX] > 1;  // bytes, or buffers
    const auto canFailBy = [&](unsigned variant) {
        const int failure = variant < call.failures.size() ? call.failures[variant] : 0;
        return failure != 0 && (canHalve || (failure != half && failure != halfThenNone));
    };
    const unsigned variant = plan->fault.variant;
    if (!canFailBy(variant)) return perform(call.number, r);
    noteFailure(call.name, 0);
    plan->argument = r[REG_RDI];
    if (plan->fault.onward) return fail(call, r, lastingFailure(call));
    plan->hasMoreVariants = canFailBy(variant + 1);

    const int failure = call.failures[variant];
    if (failure == killed) return waitForKilled(r);
    if (failure == half || failure == halfThenNone) {
        if (failure == halfThenNone) plan->fullFile = r[REG_RDI];
        r[REG_RDX] /= 2;
        return perform(call.number, r);
    }
    return fail(call, r, failure);
}

// Whether a call gives the process a descriptor that is inherited by started programs.
bool makesInheritable(long number, const Registers& r) {
    switch (number) {
        case SYS_open:
            return (r[REG_RSI] & O_CLOEXEC) == 0;
        case SYS_openat:
            return (r[REG_RDX] & O_CLOEXEC) == 0;
        case SYS_pipe2:
            return (r[REG_RSI] & O_CLOEXEC) == 0;
        case SYS_socket:
            return (r[REG_RSI] & SOCK_CLOEXEC) == 0;
        case SYS_fcntl:
            return r[REG_RSI] == F_DUPFD ||
                   (r[REG_RSI] == F_SETFD && (r[REG_RDX] & FD_CLOEXEC) == 0);
        case SYS_creat:
        case SYS_dup:
        case SYS_pipe:
            return true;
        default:
            return false;
    }
}

void handle(int /*signal*/, siginfo_t* info, void* context) {
    auto& interrupted = *static_cast<ucontext_t*>(context);
    Registers& r = interrupted.uc_mcontext.gregs;
    const long number = info->si_syscall;
    Registers asked;  // a copy, as a call that starts a process or fails changes them
    std::memcpy(asked, r, sizeof asked);
    // A sanitizer does not survive when its own memory runs out.
    const auto* const call = std::find_if(std::begin(calls), std::end(calls),
                                          [&](const Call& c) { return c.number == number; });
    if (number == SYS_rt_sigprocmask)
        r[REG_RAX] = changeMask(r, interrupted.uc_sigmask);
    else if (call != std::end(calls) &&
             ((number != SYS_mmap && number != SYS_mprotect) || reachesMalloc()))
        r[REG_RAX] = perhapsFail(*call, r);
    else
        r[REG_RAX] = perform(number, r);
    const bool isKnown =
        call != std::end(calls) ||
        std::find(std::begin(sureCalls), std::end(sureCalls), number) != std::end(sureCalls);
    if (plan && !isKnown) plan->unknownCall = number;
    if (plan && call != std::end(calls) && makesInheritable(number, asked))
        plan->inheritable = call->name;
}

// Installed without the C library, because its return from the handler would in turn be handed
// over.
bool installHandler() {
    struct {
        void (*handler)(int, siginfo_t*, void*);
        unsigned long flags;
        void (*restorer)();
        std::uint64_t mask;
    } const action = {handle, SA_SIGINFO | 0x04000000UL /* SA_RESTORER */, kxtest_sigreturn, 0};
    return syscall(SYS_rt_sigaction, SIGSYS, &action, nullptr, sizeof action.mask) == 0;
}

bool dispatch(unsigned long mode) {
    const auto begin = reinterpret_cast<unsigned long>(&kxtest_calls_begin);
    const auto end = reinterpret_cast<unsigned long>(&kxtest_calls_end);
    return mode == dispatchOn
               ? prctl(PR_SET_SYSCALL_USER_DISPATCH, mode, begin, end - begin, &selector) == 0
               : prctl(PR_SET_SYSCALL_USER_DISPATCH, mode, 0, 0, 0) == 0;
}

}  // namespace

std::string whyNoSystemCalls() {
    static const bool can = installHandler() && dispatch(dispatchOn) && dispatch(dispatchOff);
    return can ? "" : "the kernel does not hand system calls to the program (Linux 5.11 does)";
}

bool mayStartThread() {
    if (!plan || plan->fault.kind == Fault::allocation) return true;
    if (failsAgain("thread")) return false;
    if (nextStep() != plan->fault.step || plan->fault.variant > 0) return true;
    if (plan->fault.kind == Fault::kill) killProcess("thread");
    noteFailure("thread", EAGAIN);
    return false;
}

void watchSystemCalls(bool on) {
    if (on) dispatch(dispatchOn);
    selector = on ? handOver : letPass;
    if (!on) dispatch(dispatchOff);
}

}  // namespace kxtest::faults
