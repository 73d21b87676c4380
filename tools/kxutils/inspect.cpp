// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils inspect: where the footers of a file are and what they contain.
#include <array>
#include <memory>

#include "checksum.h"
#include "session.h"

namespace {

struct Options {
    std::vector<std::string> files;
    std::uint32_t offset = 0;
};

constexpr std::uint64_t footerSize = 16;

std::string position(bool isThere, std::uint64_t at) {
    return isThere ? "at " + std::to_string(at) : "none";
}

// Makes the result of kxFile::getFileID(), which cannot report that it could not read the file.
std::string identifierOf(Input& input, std::uint64_t size) {
    std::array<char, 8192> start{};
    const std::size_t n = input.fill(start.data(), start.size());
    return std::to_string(size) +
           std::to_string(kxFile::getID(start.data(), static_cast<std::uint32_t>(n)));
}

void inspect(const std::string& name, const Options& options, Session& session, Item& item) {
    const NamedFile file(name);
    Input input(file.path());
    if (!input.remaining()) throw Failure(Status::unreadable, "its size cannot be found out");
    const std::uint64_t size = *input.remaining();
    session.progress.expect(size);
    const auto info =
        findChecksum(file, options.offset, [&](std::uint64_t bytes) { session.advance(bytes); });
    const std::string identifier = identifierOf(input, size);
    item.status = statusOf(info);

    std::string& text = item.text.emplace(session.report.nameLine("", name));
    const auto add = [&](const char* label, const std::string& value) {
        std::string column = label;
        column.resize(17, ' ');
        text += "\n  " + column + value;
    };
    item.fields["size"] = size;
    add("size", std::to_string(size));
    if (hasFooter(info)) item.fields["footerAt"] = info.footerAt;
    add("checksum footer", position(hasFooter(info), info.footerAt));
    if (info.hasMetaFooter) item.fields["metaFooterAt"] = info.metaFooterAt;
    add("meta footer", position(info.hasMetaFooter, info.metaFooterAt));
    if (hasFooter(info) && info.hasMetaFooter) {
        const std::uint64_t metaSize = info.metaFooterAt - info.footerAt - footerSize;
        item.fields["metaSize"] = metaSize;
        add("meta data", std::to_string(metaSize) + " bytes");
    }
    setValues(item.fields, info);
    if (hasFooter(info)) {
        add("stored", session.report.shown(info.stored));  // may be any bytes of the file
        add("computed", checksumDigits(info.computed));
    }
    item.fields["identifier"] = identifier;
    add("identifier", identifier);
    add("result", word(item.status));
}

}  // namespace

Work addInspect(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments.texts("file", options->files, "Files; - for standard input").required();
    arguments.number("--offset", options->offset, "The first N bytes are not covered")
        .typeName("N");
    addZeroOption(arguments, session);
    arguments.footer("Example:\n  kxutils inspect scene.osb");
    return [options, &session] {
        for (const std::string& file : options->files)
            session.report.add(file, [&](Item& item) { inspect(file, *options, session, item); });
    };
}
