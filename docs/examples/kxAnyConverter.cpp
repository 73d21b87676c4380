// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// A converter for one type of value.
#include <iostream>
#include <string>

#include <kxAnyConverter.h>

class IntConverter : public kxAnyConverter {
public:
    IntConverter() : kxAnyConverter("int") {}
    bool convertToString(const boost::any& value, std::string& text, std::string& type) override {
        const int* const number = boost::any_cast<int>(&value);
        if (!number) return false;
        text = std::to_string(*number);
        type = "int";
        return true;
    }
    bool convertFromString(const std::string& type, const std::string& text,
                           boost::any& value) override {
        if (type != "int") return false;
        value = std::stoi(text);
        return true;
    }
};

int main() {
    const IntConverter converter;  // serves as long as it lives
    std::string text, type;
    boost::any value;
    if (kxAnyConverter::toString(42, text, type)) std::cout << type << ' ' << text << '\n';
    if (kxAnyConverter::fromString(type, text, value))
        std::cout << boost::any_cast<int>(value) + 1 << '\n';
    std::cout << kxAnyConverter::fromString("float", "0.5", value) << '\n';  // no converter
}
// Prints:
// int 42
// 43
// 0
