// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The words of the command line, before and after CLI11.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// The arguments behind the program's name. "@FILE" stands for those in a file ("@-": standard
/// input), one a line, or each ended by a zero byte if the file holds one; "@@x" stands for "@x".
/// Throws Failure for a file that cannot be read.
std::vector<std::string> expandArguments(int argc, const char* const* argv);

/// CLI11 reads a meaning into some plain arguments: "[a,b]" (a list), "{}" (an empty list), "++"
/// (the end of a sub-command). Guarded, they reach the options declared by Arguments as they are.
std::string guarded(const std::string& argument);

/// An option or positional argument of a sub-command. It is a reference: copies mean the same one.
class Argument {
public:
    Argument required();
    /// What the help calls its value.
    Argument typeName(const std::string& name);
    /// Shows in the help the value that the variable has now.
    Argument showDefault();
    /// Not together with `other`.
    Argument excludes(Argument other);
    Argument oneOf(const std::vector<std::string>& values);
    /// The numbers may be given by these names.
    Argument named(const std::map<std::string, int>& names);
    Argument positive();
    /// `complaint` says what is wrong with a value; "": nothing.
    Argument check(const std::function<std::string(const std::string&)>& complaint);
    /// Takes that many values.
    Argument count(int least, int most);

private:
    friend class Arguments;
    explicit Argument(CLI::Option* option) : _option(option) {}

    CLI::Option* _option;
};

/// What one sub-command understands; to be declared before the command line is parsed. Names are as
/// in "-o,--output"; without a dash the argument is positional. A variable keeps its value where
/// the command line has none, and must outlive the parsing.
///
/// The parser is kept out of the sub-commands' sources, since it takes longer to compile than they.
class Arguments {
public:
    explicit Arguments(CLI::App& app) : _app(app) {}

    Argument flag(const std::string& name, bool& isGiven, const std::string& description);
    Argument number(const std::string& name, int& number, const std::string& description);
    Argument number(const std::string& name, std::uint32_t& number, const std::string& description);
    Argument number(const std::string& name, std::uint64_t& number, const std::string& description);
    /// A text of any bytes.
    Argument text(const std::string& name, std::string& text, const std::string& description);
    /// One or more texts of any bytes.
    Argument texts(const std::string& name, std::vector<std::string>& texts,
                   const std::string& description);

    /// What closes the help.
    void footer(const std::string& text);

private:
    CLI::App& _app;
};
