// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/log/file.h"

#include <fcntl.h>
#include <signal.h>  // NOLINT(modernize-deprecated-headers): sigpending, sigwait
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <ctime>

#include "detail/log/stamp.h"

namespace kx::detail {
namespace {

// Opening a pipe that nobody reads would wait for a reader; this open fails instead (ENXIO).
int openToAppend(const char* path) {
    const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
    const mode_t mode = 0666;  // less the umask
    const int descriptor = open(path, flags | O_NONBLOCK, mode);
    // A program that holds a lease on the file is given time to release it.
    if (descriptor < 0 && errno == EWOULDBLOCK) return open(path, flags, mode);
    return descriptor;
}

// Asking the system takes a twentieth of the time that a line takes, so its answer is kept for a
// second.
bool isRegular(const char* path, int descriptor) {
    static struct {
        char path[PATH_MAX];
        std::time_t time;
        bool isRegular;
    } last;
    const std::time_t now = std::time(nullptr);
    if (last.time == now && std::strcmp(last.path, path) == 0) return last.isRegular;
    struct stat info {};
    last.isRegular = fstat(descriptor, &info) == 0 && S_ISREG(info.st_mode);
    last.time = now;
    std::memcpy(last.path, path, std::strlen(path) + 1);  // it fits: the system opened it
    return last.isRegular;
}

// Protects the application from the SIGPIPE that a write to a pipe without a reader raises, since
// the application may not survive it. A signal that was pending before stays pending.
class NoBrokenPipeSignal {
public:
    NoBrokenPipeSignal() : _wasPending(isPending()) {
        sigset_t set = onlySigpipe();
        pthread_sigmask(SIG_BLOCK, &set, &_before);
    }
    ~NoBrokenPipeSignal() {
        const sigset_t set = onlySigpipe();
        int signal = 0;
        if (!_wasPending && isPending()) sigwait(&set, &signal);
        pthread_sigmask(SIG_SETMASK, &_before, nullptr);
    }
    NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
    NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;

private:
    static sigset_t onlySigpipe() {
        sigset_t set{};
        sigemptyset(&set);
        sigaddset(&set, SIGPIPE);
        return set;
    }
    static bool isPending() {
        sigset_t set{};
        sigpending(&set);
        return sigismember(&set, SIGPIPE) == 1;
    }

    const bool _wasPending;
    sigset_t _before{};
};

// Returns how many of the bytes could be written.
std::size_t writeAll(int descriptor, std::string_view bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (n > 0)
            done += static_cast<std::size_t>(n);
        else if (errno != EINTR)
            break;
    }
    return done;
}

// Removes what has just been appended, unless another process has appended something since.
void takeBack(int descriptor, std::size_t size) {
    const off_t end = lseek(descriptor, 0, SEEK_CUR);
    if (lseek(descriptor, 0, SEEK_END) != end) return;
    const int failed = ftruncate(descriptor, end - static_cast<off_t>(size));
    static_cast<void>(failed);
}

}  // namespace

std::string htmlHead() {
    const std::string rule =
        "<font color=\"#b40000\">----------------------------------------------------</font><br>";
    const std::tm now = localNow();
    char date[32];
    std::strftime(date, sizeof date, "%d.%m.%Y %H:%M:%S", &now);
    return "<head><style type=\"text/css\">span { white-space: pre-wrap;}</style></head>"
           "<br>"
           "<p align=\"middle\">" +
           rule + "<font color=\"#b40000\">Log file from " + date + "</font><br>" + rule + "</p>\n";
}

bool appendToFile(const char* path, std::string_view bytes) {
    const int descriptor = openToAppend(path);
    if (descriptor < 0) return false;
    std::size_t done = 0;
    if (isRegular(path, descriptor)) {
        done = writeAll(descriptor, bytes);
    } else {
        const NoBrokenPipeSignal keepAway;
        fcntl(descriptor, F_SETFL, O_APPEND);  // O_NONBLOCK is no longer wanted
        done = writeAll(descriptor, bytes);
    }
    // When the disk has space again, the next line must not continue the fragment of this one.
    if (done > 0 && done < bytes.size()) takeBack(descriptor, done);
    close(descriptor);
    return true;
}

}  // namespace kx::detail
