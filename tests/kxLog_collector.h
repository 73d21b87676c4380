// Reads back what several threads and processes have logged: all there, whole, and in order.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kxLog_texts.h"

namespace kxtest {

/// Checks texts that `threads` threads of a process were to log `count` of each: all there, whole,
/// and each thread's in its order. Numbers count from 0 per process and thread.
class Collector {
public:
    /// `limit`: the length at which the texts were cut.
    void add(const std::string& text, std::size_t limit = std::string::npos) {
        int process = -1, thread = -1, i = -1;
        if (!readNumbers(text, process, thread, i) ||
            text != numberedText(process, thread, i).substr(0, limit) ||
            i != _next[{process, thread}]++) {
            if (_wrong.size() < 5) _wrong.push_back(text.substr(0, 100));
        }
    }
    void expect(int processes, int threads, int count) const {
        EXPECT_EQ(_wrong, std::vector<std::string>());
        std::map<std::pair<int, int>, int> all;
        for (int process = 0; process < processes; ++process)
            for (int thread = 0; thread < threads; ++thread) all[{process, thread}] = count;
        EXPECT_EQ(_next, all);
    }

private:
    std::map<std::pair<int, int>, int> _next;
    std::vector<std::string> _wrong;
};

inline std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

}  // namespace kxtest
