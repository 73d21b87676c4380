// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils crc: CRC-32 of files, as lines that can be checked later.
#include <algorithm>
#include <array>
#include <memory>

#include "checksum.h"
#include "kxCRC32.h"
#include "session.h"

namespace {

using Function = std::uint32_t (*)(const void* data, unsigned long length, std::uint32_t previous);

struct Method {
    const char* name;
    Function function;
};

constexpr std::array<Method, 5> methods = {{{"bitwise", kxCRC32::calc_bitwise},
                                            {"halfbyte", kxCRC32::calc_halfbyte},
                                            {"1byte", kxCRC32::calc_1byte},
                                            {"4bytes", kxCRC32::calc_4bytes},
                                            {"8bytes", kxCRC32::calc_8bytes}}};

struct Options {
    std::vector<std::string> files;
    std::string method = "8bytes", list;
    std::uint64_t skip = 0;
};

constexpr std::size_t digitCount = 8;

// The methods with that name: one, or all of them.
std::vector<Method> chosenMethods(const std::string& name) {
    std::vector<Method> chosen;
    std::copy_if(methods.begin(), methods.end(), std::back_inserter(chosen),
                 [&](const Method& method) { return name == "all" || name == method.name; });
    return chosen;
}

// The checksum of a file after its first bytes. The item's fields show the checksums of all
// methods; it is a failure if they differ.
std::string checksumOf(const std::string& file, const Options& options, Session& session,
                       Item& item) {
    const std::vector<Method> chosen = chosenMethods(options.method);
    std::vector<std::uint32_t> results(chosen.size(), 0);
    Input input(file);
    input.skip(options.skip);
    session.readBlocks(input, [&](std::string_view block) {
        for (std::size_t i = 0; i < chosen.size(); ++i)
            results[i] = chosen[i].function(block.data(), block.size(), results[i]);
    });
    item.fields["crc"] = checksumDigits(results[0]);
    if (options.method == "all")
        for (std::size_t i = 0; i < chosen.size(); ++i)
            item.fields["methods"][chosen[i].name] = checksumDigits(results[i]);
    if (std::count(results.begin(), results.end(), results[0]) != std::ptrdiff_t(results.size()))
        throw Failure(Status::bad, "the methods disagree");
    return checksumDigits(results[0]);
}

void write(const Options& options, Session& session) {
    for (const std::string& file : options.files)
        session.report.add(file, [&](Item& item) {
            const std::string digits = checksumOf(file, options, session, item);
            item.text = session.report.nameLine(digits + "  ", file);
        });
}

struct Entry {
    std::string digits, file;
};

// The parts of a line as write() makes it; nothing if it is not such a line.
std::optional<Entry> entryOf(std::string line) {
    const bool isEscaped = !line.empty() && line[0] == '\\';
    if (isEscaped) line.erase(0, 1);
    if (line.size() <= digitCount + 2 || line.compare(digitCount, 2, "  ") != 0) return {};
    Entry entry = {line.substr(0, digitCount), line.substr(digitCount + 2)};
    if (entry.digits.find_first_not_of("0123456789ABCDEF") != std::string::npos) return {};
    if (isEscaped) entry.file = unescapedName(entry.file);
    return entry;
}

// Ends the check of a file that is not a list, which may be a device or a pipe without an end.
void requireList(const std::string& line) {
    if (line.size() >= LineReader::maxLine)
        throw Failure(Status::unreadable, "not a list of checksums: a line of 1 MiB or more");
    if (line.find('\0') != std::string::npos)
        throw Failure(Status::unreadable, "a zero byte in a line: was the list written with -z?");
}

// If a file starts with this many lines that do not belong to a list, the rest is not looked at.
constexpr std::uint64_t maxForeignLines = 100;

void check(const Options& options, Session& session) {
    Report& report = session.report;
    Input input(options.list);
    LineReader lines(input, report.zeroEnds ? '\0' : '\n');
    std::uint64_t number = 0;
    bool hasEntry = false;
    for (std::string line; lines.next(line);) {
        requireList(line);
        if (!hasEntry && number == maxForeignLines)
            throw Failure(Status::unreadable, "not a list of checksums");
        ++number;
        const std::optional<Entry> entry = entryOf(line);
        hasEntry = hasEntry || entry;
        if (!entry) {
            report.add(options.list + ':' + std::to_string(number), [](Item&) {
                throw Failure(Status::bad, "not a line of a checksum and a name");
            });
            continue;
        }
        Item item = makeItem(entry->file, [&](Item& checked) {
            checked.fields["expected"] = entry->digits;
            if (checksumOf(entry->file, options, session, checked) != entry->digits)
                checked.status = Status::bad;
        });
        item.text = report.statusLine(item.status, item.name);
        report.add(item);
    }
}

}  // namespace

Work addCrc(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    const Argument files =
        arguments.texts("file", options->files, "Files; - for standard input (the default)");
    arguments
        .text("-c,--check", options->list,
              "Check the files named in LIST, which holds lines as this sub-command writes them")
        .typeName("LIST")
        .excludes(files);
    std::vector<std::string> names = {"all"};
    for (const Method& method : methods) names.emplace_back(method.name);
    arguments
        .text("--method", options->method,
              "How to compute; all: in every way, failing if the results differ")
        .oneOf(names)
        .showDefault();
    arguments.number("--skip", options->skip, "Leave out the first N bytes").typeName("N");
    addZeroOption(arguments, session);
    arguments.footer("Example:\n  kxutils crc *.osb > list && kxutils crc -c list");
    return [options, &session] {
        if (options->files.empty()) options->files.emplace_back("-");
        if (options->list.empty())
            write(*options, session);
        else
            forFile(options->list, [&] { check(*options, session); });
    };
}
