// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils path: one result per line, for use in shells.
#include <map>
#include <memory>

#include "kxFile.h"
#include "session.h"

namespace {

struct Options {
    std::string operation, base;
    std::vector<std::string> arguments;
};

// A library function applied to one path; it may throw a Failure.
using Operation = std::function<std::string(const std::string&)>;

std::string expanded(const std::string& path) {
    LibraryMessages messages;
    // They alone tell that there is no such user or variable.
    if (!messages.areKept()) throw systemFailure(Status::unwritable);
    std::string result = kxFile::expandFilename(path);
    const std::string text = messages.text();
    if (!text.empty()) throw Failure(Status::bad, text);
    return result;
}

std::string validName(std::string name) {
    kxFile::makeValidFileName(name);
    return name;
}

// The library returns an empty text for what it refuses.
std::string notEmpty(const std::string& result) {
    if (result.empty()) throw Failure(Status::bad, "the base or the path does not allow it");
    return result;
}

// Takes the extension for setext out of the arguments.
Operation operationOf(Options& options) {
    const std::string base = options.base.empty() ? kxFile::getCurrentDir() : options.base;
    if (options.operation == "setext") {
        if (options.arguments.size() < 2) throw UsageError("setext takes an extension and paths");
        const std::string extension = options.arguments.front();
        options.arguments.erase(options.arguments.begin());
        return
            [extension](const std::string& path) { return kxFile::setExtension(path, extension); };
    }
    const std::map<std::string, Operation> operations = {
        {"name", kxFile::getFileName},
        {"dir", kxFile::getFilePath},
        {"base", kxFile::getBaseName},
        {"ext", kxFile::getExtension},
        {"rel", [base](const std::string& path) { return notEmpty(kxFile::abs2Rel(base, path)); }},
        {"abs", [base](const std::string& path) { return notEmpty(kxFile::rel2Abs(base, path)); }},
        {"valid", validName},
        {"expand", expanded},
    };
    return operations.at(options.operation);
}

void run(Options& options, Session& session) {
    const Operation operation = operationOf(options);
    for (const std::string& argument : options.arguments) {
        session.report.add(argument, [&](Item& item) {
            const std::string result = operation(argument);
            setBytes(item.fields, "result", result);
            item.text = session.report.shown(result);
        });
    }
}

}  // namespace

Work addPath(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments
        .text("operation", options->operation, R"(What to show of each path:
name    what follows the last slash
dir     what stands before it
base    the name without its extension
ext     the extension, in lower case
setext  the path with another extension: setext EXT PATH...
rel     the path as seen from the base
abs     the path below the base
valid   the text as a valid file name
expand  the path with ~ and environment variables replaced)")
        .required()
        .oneOf({"name", "dir", "base", "ext", "setext", "rel", "abs", "valid", "expand"});
    arguments.texts("path", options->arguments, "Paths; no file is touched").required();
    arguments.text("--base", options->base, "Directory that rel and abs start from (default: .)")
        .typeName("DIR");
    addZeroOption(arguments, session);
    arguments.footer("Example:\n  kxutils path setext png \"$scene\"");
    return [options, &session] { run(*options, session); };
}
