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

/// The arguments after the program's name. "@FILE" stands for the arguments in a file ("@-" for
/// those in standard input): one per line, or each ended by a zero byte if the file contains any.
/// "@@x" stands for "@x". Throws Failure for a file that cannot be read.
std::vector<std::string> expandArguments(int argc, const char* const* argv);

/// CLI11 treats some plain arguments specially: "[a,b]" (a list), "{}" (an empty list), "++" (the
/// end of a sub-command). Guarded, they reach the options declared by Arguments unchanged.
std::string guarded(const std::string& argument);

/// An option or positional argument of a sub-command. It is a reference: copies refer to the same
/// one.
class Argument {
public:
    Argument required();
    /// Sets the name of its value in the help.
    Argument typeName(const std::string& name);
    /// Shows the variable's current value in the help.
    Argument showDefault();
    /// Refuses it together with `other`.
    Argument excludes(Argument other);
    Argument oneOf(const std::vector<std::string>& values);
    /// Lets the numbers be given by these names.
    Argument named(const std::map<std::string, int>& names);
    Argument positive();
    /// `complaint` returns what is wrong with a value, or "" if nothing is.
    Argument check(const std::function<std::string(const std::string&)>& complaint);
    /// Takes between `least` and `most` values.
    Argument count(int least, int most);

private:
    friend class Arguments;
    explicit Argument(CLI::Option* option) : _option(option) {}

    CLI::Option* _option;
};

/// The options of one sub-command, to be declared before the command line is parsed. Names have the
/// form "-o,--output"; a name without a dash is a positional argument. A variable keeps its value
/// if the command line has none for it, and must outlive the parsing.
///
/// The parser is kept out of the sub-commands' sources, since it takes longer to compile than they
/// do.
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

    /// Sets the text at the end of the help.
    void footer(const std::string& text);

private:
    CLI::App& _app;
};
