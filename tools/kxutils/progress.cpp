// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "progress.h"

#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdio>

#include "streams.h"

namespace {

constexpr auto delay = std::chrono::milliseconds(500), interval = std::chrono::milliseconds(100);

std::string sizeText(double bytes) {
    constexpr std::array<const char*, 5> units = {"B", "KiB", "MiB", "GiB", "TiB"};
    std::size_t unit = 0;
    for (; bytes >= 1024 && unit + 1 < units.size(); ++unit) bytes /= 1024;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), unit == 0 ? "%.0f %s" : "%.1f %s", bytes, units[unit]);
    return text.data();
}

}  // namespace

Progress::Progress() : _isTerminal(isatty(STDERR_FILENO) == 1), _next(_start + delay) {}

std::string Progress::line(double seconds) const {
    const auto done = static_cast<double>(_done), expected = static_cast<double>(_expected);
    const bool isEndKnown = done > 0 && done <= expected;
    const double rate = done / seconds;
    std::string text = sizeText(done);
    if (isEndKnown) text += " of " + sizeText(expected);
    text += ", " + sizeText(rate) + "/s";
    if (isEndKnown)
        text += ", " + std::to_string(std::lround((expected - done) / rate)) + " s left";
    return text;
}

void Progress::update() {
    if (!_isTerminal) return;
    const Clock::time_point now = Clock::now();
    if (now < _next) return;
    _next = now + interval;
    const std::chrono::duration<double> elapsed = now - _start;
    _isShown = writeAll(STDERR_FILENO, "\r\033[K" + line(elapsed.count()));
}

void Progress::hide() {
    if (_isShown) writeAll(STDERR_FILENO, "\r\033[K");
    _isShown = false;
}
