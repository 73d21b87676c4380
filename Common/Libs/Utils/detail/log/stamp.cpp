// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/log/stamp.h"

#include <charconv>

namespace kx::detail {
namespace {

// Writes any field but the year.
char* putTwoDigits(char* out, int value) {
    *out++ = static_cast<char>('0' + value / 10);
    *out++ = static_cast<char>('0' + value % 10);
    return out;
}

char* putYear(char* out, int year) { return std::to_chars(out, out + 11, year).ptr; }

char* putTime(char* out, const Stamp& stamp, char end) {
    out = putTwoDigits(out, stamp.hour);
    *out++ = ':';
    out = putTwoDigits(out, stamp.minute);
    *out++ = ':';
    out = putTwoDigits(out, stamp.second);
    *out++ = end;
    return out;
}

}  // namespace

std::tm localNow() {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return local;
}

Stamp stampNow() {
    const std::tm now = localNow();
    return {now.tm_year + 1900, now.tm_mon + 1, now.tm_mday, now.tm_hour, now.tm_min, now.tm_sec};
}

char* putTextStamp(const Stamp& stamp, char* out) {
    out = putYear(out, stamp.year);
    *out++ = '-';
    out = putTwoDigits(out, stamp.month);
    *out++ = '-';
    out = putTwoDigits(out, stamp.day);
    *out++ = ' ';
    return putTime(out, stamp, ' ');
}

char* putCsvStamp(const Stamp& stamp, char* out) {
    out = putTwoDigits(out, stamp.day);
    *out++ = '.';
    out = putTwoDigits(out, stamp.month);
    *out++ = '.';
    out = putYear(out, stamp.year);
    *out++ = ';';
    return putTime(out, stamp, ';');
}

}  // namespace kx::detail
