// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils: the library's work on the command line. What all sub-commands have in common is decided
// here: standard streams, arguments, exit codes.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <sstream>

#include "session.h"

namespace {

struct SubCommand {
    const char* name;
    const char* description;
    Work (*add)(Arguments& arguments, Session& session);
};

constexpr SubCommand subCommands[] = {
    {"base64", "Encode to Base64, decode and check", addBase64},
    {"cpu", "Show what the processor says about itself", addCpu},
    {"crc", "Compute CRC-32 checksums of files and check them", addCrc},
    {"dirs", "Show the installation layout", addDirs},
    {"inspect", "Show where the footers of files stand and what they hold", addInspect},
    {"label", "Write a label into a picture", addLabel},
    {"log", "Write lines through the log", addLog},
    {"number", "Group digits, write and read lists of values", addNumber},
    {"path", "Take path names apart and put them together", addPath},
    {"selftest", "Test the library's codecs, checksums and ciphers", addSelftest},
    {"shader", "Make and read enciphered shader blocks", addShader},
    {"stamp", "Append checksum footers to files", addStamp},
    {"tmp", "Show the temporary directory, creating it if it is missing", addTmp},
    {"verify", "Check the checksum footers of files", addVerify},
};

constexpr const char* exitCodes =
    "An argument @FILE stands for the arguments in a file, each on a line of its own (or each\n"
    "ended by a zero byte); @@x stands for @x. A file named - is standard input.\n\n"
    "Exit codes: 0 all good, 1 an item failed its check, 2 wrong usage, 3 an input could not be\n"
    "read or an output not written, 4 no footer under --strict, 5 internal fault. If several\n"
    "apply, the first of 5, 1, 3, 4 counts.\n\n"
    "Example:\n  kxutils verify -r --ext osb scenes";

// Even a command line that cannot be parsed may have asked for a document.
bool wantsJson(const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    return std::find(arguments.begin(), end, "--json") != end;
}

// Parses the command line and does what it says. Help and version are results like any other.
void runCommandLine(Session& session, int argc, char** argv) {
    CLI::App app("kxutils: checksums, codecs, paths and more from the shell", "kxutils");
    app.set_version_flag("--version", "kxutils " KXUTILS_VERSION);
    app.require_subcommand(1);
    app.footer(exitCodes);
    std::vector<Work> works;
    for (const SubCommand& subCommand : subCommands) {
        CLI::App& sub = *app.add_subcommand(subCommand.name, subCommand.description);
        Arguments declared(sub);
        works.push_back(subCommand.add(declared, session));
        sub.add_flag("--json", "Write one JSON document");
    }

    std::vector<std::string> arguments = expandArguments(argc, argv);
    session.report.asJson = wantsJson(arguments);
    std::transform(arguments.begin(), arguments.end(), arguments.begin(), guarded);
    std::reverse(arguments.begin(), arguments.end());  // the parser takes them in reverse
    try {
        app.parse(std::move(arguments));
    } catch (const CLI::Success& request) {
        std::ostringstream text;
        app.exit(request, text, text);
        session.out.write(text.str());
        if (text.str().back() != '\n') session.out.write("\n");
        session.report.asJson = false;
        return;
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    const CLI::App& sub = *app.get_subcommands().front();
    const std::string name = sub.get_name();
    session.report.setCommand(name);
    session.report.asJson = sub.count("--json") > 0;
    const auto* const chosen =
        std::find_if(std::begin(subCommands), std::end(subCommands),
                     [&](const SubCommand& subCommand) { return subCommand.name == name; });
    works[static_cast<std::size_t>(chosen - subCommands)]();
}

ExitCode run(int argc, char** argv) {
    Session session(claimStandardStreams());
    Report& report = session.report;
    if (argc > 1) report.asJson = wantsJson({argv + 1, argv + argc});
    try {
        try {
            runCommandLine(session, argc, argv);
        } catch (const UsageError& error) {
            report.stop(ExitCode::usage, error.what());
        } catch (const Failure& failure) {
            report.stop(ExitCode::inputOutput, failure.what(), failure.name);
        } catch (const OutputLost&) {
            throw;
        } catch (const std::exception& error) {
            report.stop(ExitCode::internal, std::string("internal fault: ") + error.what());
        }
        report.finish();
    } catch (const OutputLost& lost) {
        report.asJson = false;  // there is nowhere to write the document to
        report.stop(ExitCode::inputOutput, lost.what());
    }
    return report.exitCode();
}

constexpr std::string_view internalFault = "kxutils: internal fault\n";

[[noreturn]] void endAtFault() {
    writeAll(STDERR_FILENO, internalFault);
    std::_Exit(static_cast<int>(ExitCode::internal));
}

}  // namespace

void Session::readBlocks(Input& input, const std::function<void(std::string_view)>& use) {
    progress.expect(input.remaining().value_or(0));
    std::vector<char> block(blockSize);
    while (const std::size_t n = input.fill(block.data(), block.size())) {
        use({block.data(), n});
        advance(n);
    }
}

void addZeroOption(Arguments& arguments, Session& session) {
    arguments.flag("-z,--zero", session.report.zeroEnds,
                   "End lines with a zero byte and write names as they are");
}

int main(int argc, char** argv) {
    // Destructors of the JSON library and look-ups of the parser allocate, and may not throw.
    std::set_terminate(endAtFault);
    try {
        return static_cast<int>(run(argc, argv));
    } catch (...) {  // there was not even memory for a report
        writeAll(STDERR_FILENO, internalFault);
        return static_cast<int>(ExitCode::internal);
    }
}
