// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Shared by all benchmarks: contenders for one operation, timed in the same run.
#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <string_view>

namespace kxbench {

/// From a short call, through one that fits into the first cache, to one that exceeds the second.
inline constexpr std::size_t sizes[] = {16, 1024, 65536, 16 << 20};

/// Random bytes, which are the same for all contenders of a size.
inline const std::string& randomBytes(std::size_t size) {
    static std::map<std::size_t, std::string> all;
    std::string& bytes = all[size];
    std::mt19937_64 random(7);
    while (bytes.size() < size) {
        const std::uint64_t eight = random();
        bytes.append(reinterpret_cast<const char*>(&eight), std::min(size - bytes.size(), 8UL));
    }
    return bytes;
}

/// A Base64 text of `size` characters, a multiple of 4, which is also the same for all contenders.
inline const std::string& base64Text(std::size_t size) {
    static std::map<std::size_t, std::string> all;
    std::string& text = all[size];
    if (!text.empty()) return text;
    text = randomBytes(size);
    constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (char& c : text) c = alphabet[static_cast<unsigned char>(c) % 64];
    return text;
}

/// Registers "OPERATION/NAME/SIZE", in the form that scripts/bench reads. The names of the
/// library's own contenders begin with "kxUtils", those of limits with "limit" (a limit is what the
/// operation must at least do, such as a plain copy). `run` performs the operation once on `bytes`
/// bytes, and `right` tells whether the result was right. A contender with a wrong result is
/// reported and not timed.
template <class Run, class Right>
void contender(const std::string& operation, const std::string& name, std::size_t bytes, Run run,
               Right right) {
    const auto measure = [=, checked = false](benchmark::State& state) mutable {
        if (!checked) {
            run();
            checked = right();
        }
        if (!checked) state.SkipWithError("wrong result");
        for ([[maybe_unused]] auto _ : state) {
            run();
            benchmark::ClobberMemory();
        }
        state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * state.iterations());
    };
    const std::string title = operation + "/" + name + "/" + std::to_string(bytes);
    benchmark::RegisterBenchmark(title.c_str(), measure);
}

/// Registers "OPERATION/NAME/0/manual_time" for a contender that measures its own time. `seconds`
/// performs the operation once and returns the time it took, or a negative number if it failed.
template <class Seconds>
void timed(const std::string& operation, const std::string& name, Seconds seconds) {
    const auto measure = [=](benchmark::State& state) {
        for ([[maybe_unused]] auto _ : state) {
            const double time = seconds();
            if (time < 0) state.SkipWithError("failed");
            state.SetIterationTime(time);
        }
    };
    benchmark::RegisterBenchmark((operation + "/" + name + "/0").c_str(), measure)->UseManualTime();
}

}  // namespace kxbench
