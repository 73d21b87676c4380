// Several processes that log to one file, whatever happens to them and to the disk.
#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>

#include "kxLog_collector.h"
#include "kxLog_fixture.h"

namespace {

/// The text of an info line; a line that is none comes back as it is.
std::string fromHtml(const std::string& line) {
    const std::string before = "<span style=\"color:#008c00;\">", after = "</span><br>",
                      less = "&#60;";
    if (line.size() < before.size() + after.size() || line.compare(0, before.size(), before) != 0 ||
        line.compare(line.size() - after.size(), after.size(), after) != 0)
        return line;
    std::string text = line.substr(before.size(), line.size() - before.size() - after.size());
    for (std::size_t at = 0; (at = text.find(less, at)) != std::string::npos; ++at)
        text.replace(at, less.size(), "<");
    return text;
}

struct ProcessCase {
    const char* name;
    int format;
    int processes, threads, count;
};
void PrintTo(const ProcessCase& c, std::ostream* os) { *os << c.name; }

// With the variable KX_LOG_FULL set: twice the threads, five times the lines of each.
class LogProcesses : public kxtest::LogTest, public testing::WithParamInterface<ProcessCase> {};
TEST_P(LogProcesses, ShareAFileLineByLine) {
    ProcessCase c = GetParam();
    if (std::getenv("KX_LOG_FULL")) {
        c.threads *= 2;
        c.count *= 5;
    }
    const kxtest::TempDir dir;
    const std::string path = dir.file("log");
    std::vector<std::thread> processes;
    for (int process = 0; process < c.processes; ++process)
        processes.emplace_back([&, process] {
            const kxtest::Outcome outcome = kxtest::run(
                {KX_LOG_PROBE, "write", std::to_string(c.format), path, std::to_string(process),
                 std::to_string(c.threads), std::to_string(c.count)});
            EXPECT_EQ(outcome.exitCode, 0) << outcome.err;
        });
    for (auto& process : processes) process.join();
    kxtest::Collector collector;
    for (const std::string& line : kxtest::splitLines(kxtest::slurp(path)))
        collector.add(c.format == 2 ? fromHtml(line) : line);
    collector.expect(c.processes, c.threads, c.count);
}
const ProcessCase processCases[] = {
    {"Text", 1, 8, 2, 2000},
    {"Html", 2, 8, 2, 500},
};
INSTANTIATE_TEST_SUITE_P(Format, LogProcesses, testing::ValuesIn(processCases),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
