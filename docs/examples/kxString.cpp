// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Numbers, option texts and words.
#include <iostream>

#include <kxString.h>

int main() {
    std::cout << kxString::beautifyDigits("1234567 of 12345.6789", ",", 3) << '\n'
              << kxString::toFloat(" 7.5mm") << ' ' << kxString::setNum(1234567.0F) << '\n';

    const char* const option = "0.5,smooth=true";
    std::cout << kxString::getDoubleOption(option) << ' '
              << kxString::getBoolOption(option, "smooth") << '\n';

    std::cout << kxString::capitalize("front view") << '\n';
    for (const std::string& field : kxString::split("a,,b,", ',')) std::cout << '[' << field << ']';
    std::cout << '\n';
}
// Prints:
// 1,234,567 of 12,345.6,789
// 7.5 1.23457e+06
// 0.5 1
// Front View
// [a][][b]
