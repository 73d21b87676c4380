// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils stamp: appends checksum footers.
#include <filesystem>
#include <memory>

#include "checksum.h"
#include "kxCRC32.h"
#include "session.h"

namespace {

struct Options {
    std::vector<std::string> files;
    bool isForced = false, isDryRun = false;
    std::uint32_t offset = 0;
};

std::uint32_t checksumBehind(const std::string& path, std::uint32_t offset, Session& session) {
    Input input(path);
    input.skip(offset);
    std::uint32_t crc = 0;
    session.readBlocks(input, [&](std::string_view block) {
        crc = kxCRC32::calc_8bytes(block.data(), block.size(), crc);
    });
    return crc;
}

// Appends all of the footer or nothing, since a part of one would stay in the way.
void append(const std::string& path, std::uint32_t checksum) {
    const std::uintmax_t size = std::filesystem::file_size(path);
    if (kxFile::appendChecksum(path, checksum)) return;
    const Failure failure = systemFailure(Status::unwritable);
    std::error_code ignored;
    std::filesystem::resize_file(path, size, ignored);
    throw failure;
}

void copyToOutput(const std::string& path, Session& session) {
    Input input(path);
    session.readBlocks(input, [&](std::string_view block) { session.out.write(block); });
}

void stamp(const std::string& name, const Options& options, Session& session, Item& item) {
    const NamedFile file(name);
    const auto info =
        findChecksum(file, options.offset, [&](std::uint64_t bytes) { session.advance(bytes); });
    if (hasFooter(info) && !options.isForced)
        throw Failure(Status::bad, "has a checksum footer already");
    const std::uint32_t checksum = checksumBehind(file.path(), options.offset, session);
    item.fields["checksum"] = checksumDigits(checksum);
    item.fields["written"] = !options.isDryRun;
    const std::string head =
        (options.isDryRun ? "would stamp  " : "stamped  ") + checksumDigits(checksum) + "  ";
    if (!options.isDryRun) append(file.path(), checksum);
    if (name == "-" && !options.isDryRun)
        copyToOutput(file.path(), session);
    else
        item.text = session.report.nameLine(head, name);
}

void run(const Options& options, Session& session) {
    const bool readsInput =
        std::find(options.files.begin(), options.files.end(), "-") != options.files.end();
    if (readsInput && !options.isDryRun && (options.files.size() > 1 || session.report.asJson))
        throw UsageError("- goes to standard output: it must be the only file, without --json");
    for (const std::string& file : options.files)
        session.report.add(file, [&](Item& item) { stamp(file, options, session, item); });
}

}  // namespace

Work addStamp(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments
        .texts("file", options->files,
               "Files; with - standard input is stamped and written to standard output")
        .required();
    arguments.number("--offset", options->offset, "Leave the first N bytes uncovered")
        .typeName("N");
    arguments.flag("--force", options->isForced,
                   "Append a footer even to a file that has one, and cover that, too");
    arguments.flag("--dry-run", options->isDryRun, "Write nothing");
    addZeroOption(arguments, session);
    arguments.footer("Example:\n  kxutils stamp scene.osb && kxutils verify scene.osb");
    return [options, &session] { run(*options, session); };
}
