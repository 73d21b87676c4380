// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>

#include "failure.h"
#include "streams.h"

namespace {

constexpr char guard = '\001';

std::string unguarded(const std::string& argument) {
    return !argument.empty() && argument[0] == guard ? argument.substr(1) : argument;
}

void appendFrom(const std::string& file, std::vector<std::string>& arguments) {
    std::string content;
    forFile('@' + file, [&] {
        Input input(file);
        std::array<char, 4096> block{};
        while (const std::size_t n = input.readSome(block.data(), block.size()))
            content.append(block.data(), n);
    });
    const char end = content.find('\0') == std::string::npos ? '\n' : '\0';
    for (std::size_t begin = 0; begin < content.size();) {
        const std::size_t stop = std::min(content.find(end, begin), content.size());
        arguments.push_back(content.substr(begin, stop - begin));
        begin = stop + 1;
    }
}

}  // namespace

std::vector<std::string> expandArguments(int argc, const char* const* argv) {
    std::vector<std::string> arguments;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument.size() < 2 || argument[0] != '@')
            arguments.push_back(argument);
        else if (argument[1] == '@')
            arguments.push_back(argument.substr(1));
        else
            appendFrom(argument.substr(1), arguments);
    }
    return arguments;
}

std::string guarded(const std::string& argument) {
    const bool isSpecial = !argument.empty() && (argument[0] == '[' || argument[0] == guard);
    return isSpecial || argument == "{}" || argument == "++" ? guard + argument : argument;
}

Argument Argument::required() { return Argument(_option->required()); }

Argument Argument::typeName(const std::string& name) { return Argument(_option->type_name(name)); }

Argument Argument::showDefault() { return Argument(_option->capture_default_str()); }

Argument Argument::excludes(Argument other) { return Argument(_option->excludes(other._option)); }

Argument Argument::oneOf(const std::vector<std::string>& values) {
    return Argument(_option->check(CLI::IsMember(values)));
}

Argument Argument::named(const std::map<std::string, int>& names) {
    return Argument(_option->transform(CLI::CheckedTransformer(names)));
}

Argument Argument::positive() { return Argument(_option->check(CLI::PositiveNumber)); }

Argument Argument::check(const std::function<std::string(const std::string&)>& complaint) {
    return Argument(_option->check(complaint));
}

Argument Argument::count(int least, int most) { return Argument(_option->expected(least, most)); }

Argument Arguments::flag(const std::string& name, bool& isGiven, const std::string& description) {
    return Argument(_app.add_flag(name, isGiven, description));
}

Argument Arguments::number(const std::string& name, int& number, const std::string& description) {
    return Argument(_app.add_option(name, number, description));
}

Argument Arguments::number(const std::string& name, std::uint32_t& number,
                           const std::string& description) {
    return Argument(_app.add_option(name, number, description));
}

Argument Arguments::number(const std::string& name, std::uint64_t& number,
                           const std::string& description) {
    return Argument(_app.add_option(name, number, description));
}

Argument Arguments::text(const std::string& name, std::string& text,
                         const std::string& description) {
    CLI::Option* const option = _app.add_option_function<std::string>(
        name, [&text](const std::string& result) { text = unguarded(result); }, description);
    return Argument(option->default_function([&text] { return text; }));
}

Argument Arguments::texts(const std::string& name, std::vector<std::string>& texts,
                          const std::string& description) {
    return Argument(_app.add_option_function<std::vector<std::string>>(
        name,
        [&texts](const std::vector<std::string>& results) {
            for (const std::string& result : results) texts.push_back(unguarded(result));
        },
        description));
}

void Arguments::footer(const std::string& text) { _app.footer(text); }
