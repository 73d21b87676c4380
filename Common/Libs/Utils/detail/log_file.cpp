#include "detail/log_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <ctime>
#include <memory>

namespace kx::detail {
namespace {

// localtime would share its result with other threads and look at the zone file at every call.
std::tm localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

// Fields as they are written, which is what they are compared and named by.
struct Stamp {
    int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

Stamp stampNow() {
    const std::tm now = localNow();
    return {now.tm_year + 1900, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec};
}

// Long enough for six integers of any value.
constexpr std::size_t stampSize = 96;

// Fields that cannot be read stay 0.
Stamp readFirstStamp(std::FILE* file, bool isCsv) {
    Stamp stamp;
    int fields = 0;
    if (isCsv) {
        char header[1024];
        if (std::fgets(header, sizeof header, file))
            fields = std::fscanf(file, "%02d.%02d.%d;%02d:%02d:%02d;", &stamp.day, &stamp.month,
                                 &stamp.year, &stamp.hour, &stamp.minute, &stamp.second);
    } else {
        fields = std::fscanf(file, "%d-%02d-%02d %02d:%02d:%02d ", &stamp.year, &stamp.month,
                             &stamp.day, &stamp.hour, &stamp.minute, &stamp.second);
    }
    static_cast<void>(fields);
    return stamp;
}

}  // namespace

std::string textStamp() {
    const Stamp now = stampNow();
    char text[stampSize];
    std::snprintf(text, sizeof text, "%d-%02d-%02d %02d:%02d:%02d ", now.year, now.month, now.day,
                  now.hour, now.minute, now.second);
    return text;
}

std::string csvStamp() {
    const Stamp now = stampNow();
    char text[stampSize];
    std::snprintf(text, sizeof text, "%02d.%02d.%d;%02d:%02d:%02d;", now.day, now.month, now.year,
                  now.hour, now.minute, now.second);
    return text;
}

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

std::string staleStamp(const std::string& path, bool isCsv) {
    // Not blocking, since the path may lead to a pipe; only a regular file is an old log.
    const int descriptor = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return {};
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(fdopen(descriptor, "r"),
                                                               std::fclose);
    if (!file) {
        close(descriptor);
        return {};
    }
    struct stat info {};
    if (fstat(descriptor, &info) != 0 || !S_ISREG(info.st_mode)) return {};

    const Stamp first = readFirstStamp(file.get(), isCsv), now = stampNow();
    if (first.year == now.year && first.month == now.month && first.day == now.day) return {};
    char text[stampSize];
    std::snprintf(text, sizeof text, "%d%02d%02d-%02d%02d%02d", first.year, first.month, first.day,
                  first.hour, first.minute, first.second);
    return text;
}

bool appendToFile(const std::string& path, const std::string& bytes) {
    const int descriptor =
        open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);  // less the umask
    if (descriptor < 0) return false;
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t n = write(descriptor, bytes.data() + done, bytes.size() - done);
        if (n > 0)
            done += static_cast<std::size_t>(n);
        else if (errno != EINTR)
            break;
    }
    close(descriptor);
    return true;
}

}  // namespace kx::detail
