// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "program_faults_rows.h"

#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <utility>

#include "reference/checksum_footer.h"

using reference::crc32Digits;

namespace {

Row kxutils(const std::string& name, std::vector<std::string> arguments) {
    return {name, KXTEST_KXUTILS, std::move(arguments)};
}

Row talo(const std::string& name, std::vector<std::string> arguments) {
    return Row{name, KXTEST_TALO, std::move(arguments)}.failingWith({1});
}

// --- What is in the files ------------------------------------------------------------------------

// More than one block of what stdio reads and writes at once.
std::string bytes(std::size_t count) {
    std::string text;
    while (text.size() < count) text += static_cast<char>(text.size() * 7 + text.size() / 251);
    return text;
}

const std::string some = bytes(9000), few = "a few bytes\n";

std::string stamped(const std::string& content) {
    return content + reference::checksumFooter(content);
}

// A line of the log of today, in Greenwich.
std::string lineOfToday() {
    const std::time_t now = std::time(nullptr);
    std::tm today{};
    gmtime_r(&now, &today);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S ", &today);
    return stamp + std::string("INFO 100 earlier\n");
}

const std::string picture = "P6\n40 9\n255\n" + bytes(std::size_t{40} * 9 * 3);
const std::string logLines = "one\nWARN two\nERROR: three\n";
const std::string block = {5, 0, 0, 0, 'b', 'l', 'o', 'c', 'k'};

Row withTree(const Row& row) {
    return row.with("tree/a", stamped(some))
        .with("tree/b", few)
        .with("tree/below/c", stamped(few))
        .with("tree/below/d", stamped(some));
}

// Where the user database cannot be read, some systems make up a home for "nobody", which is not
// the one in the database.
const std::string homeOfKnownUser = geteuid() == 0 ? "~/x" : "~root/x";

}  // namespace

// clang-format off
const std::vector<Row> rows = {
    kxutils("Version", {"--version"}),
    kxutils("Help", {"crc", "--help"}),
    kxutils("Usage", {"crc", "--wrong"}).endingWith(2),
    kxutils("ArgumentFile", {"@list"}).with("list", "path\nname\n/a/b\n"),

    kxutils("Base64Output", {"base64", "--wrap", "76"}).reading(some),
    kxutils("Base64Encode", {"base64", "in", "-o", "out"}).with("in", some).with("out", "old")
        .keepingWhole("out"),
    kxutils("Base64Decode", {"base64", "-d", "in", "-o", "out"}).with("in", "Zm9vYmFy").with("out", "old")
        .keepingWhole("out"),
    kxutils("Base64Refused", {"base64", "-d", "in", "-o", "out"}).with("in", "Zm9vYmF").with("out", "old")
        .endingWith(1).keepingWhole("out"),
    kxutils("Base64Check", {"base64", "--check", "in"}).with("in", "Zm9vYmFy\n"),
    kxutils("Base64Json", {"base64", "in", "-o", "new", "--json"}).with("in", some)
        .keepingWhole("new"),

    kxutils("Cpu", {"cpu"}).showingTime(),

    kxutils("Crc", {"crc", "in", "few"}).with("in", some).with("few", few),
    kxutils("CrcInput", {"crc"}).reading(some),
    kxutils("CrcAllJson", {"crc", "--method", "all", "--skip", "5", "in", "--json"}).with("in", some),
    kxutils("CrcCheck", {"crc", "-c", "list"}).with("in", some).with("few", few)
        .with("list", crc32Digits(some) + "  in\n" + crc32Digits(few) + "  few\n"),

    kxutils("Dirs", {"dirs"}),
    kxutils("DirsJson", {"dirs", "--json"}),

    kxutils("Inspect", {"inspect", "in", "few"}).with("in", stamped(some)).with("few", few),
    kxutils("InspectInput", {"inspect", "-"}).reading(stamped(some)),
    kxutils("InspectJson", {"inspect", "in", "--json"}).with("in", stamped(some)),

    kxutils("Label", {"label", "Front", "out"}).with("out", "old").keepingWhole("out"),
    kxutils("LabelPicture", {"label", "Front", "in", "out"}).with("in", picture).with("out", "old")
        .keepingWhole("out"),

    kxutils("LogOutput", {"log"}).reading(logLines).showingTime(),
    kxutils("LogText", {"log", "--file", "app.log"}).with("app.log", lineOfToday()).reading(logLines)
        .logging("app.log"),
    kxutils("LogHtml", {"log", "--file", "app.log", "--format", "html"}).reading(logLines)
        .logging("app.log"),
    kxutils("LogCsv", {"log", "--file", "app.log", "--format", "csv"}).reading(logLines)
        .logging("app.log"),
    kxutils("LogMovesOld", {"log", "--file", "app.log"})
        .with("app.log", "2020-02-29 12:00:00 INFO 100 earlier\n").reading(logLines)
        .logging("app.log"),
    kxutils("LogJson", {"log", "--file", "app.log", "--json"}).with("app.log", lineOfToday())
        .reading(logLines).logging("app.log"),
    kxutils("LogDirectory", {"log", "--file", "app.log"}).reading(logLines)
        .setting("KXUTILS_LOG_DIR", "logs/here").logging("logs/here/app.log"),

    kxutils("NumberGroup", {"number", "group", "1234567", "-"}).reading("1000\n100\n"),
    kxutils("NumberList", {"number", "list", "1.5", "-2"}),
    kxutils("NumberRead", {"number", "list", "--read", "1.5 -2"}),

    kxutils("PathName", {"path", "name", "/a/b.obj", "c"}),
    kxutils("PathRelative", {"path", "rel", "/a/b.obj"}).failingWith({1, 3, 5}),
    kxutils("PathExpand", {"path", "expand", homeOfKnownUser, "$HOME/y"}).failingWith({1, 3, 5}),

    kxutils("Selftest", {"selftest"}),

    kxutils("ShaderPack", {"shader", "pack", "in", "-o", "out"}).with("in", few).with("out", "old")
        .keepingWhole("out"),
    kxutils("ShaderArray", {"shader", "pack", "--array", "fp", "in", "-o", "out"})
        .with("in", few).with("out", "old").keepingWhole("out"),
    kxutils("ShaderUnpack", {"shader", "unpack", "in"}).with("in", block),

    kxutils("Stamp", {"stamp", "in"}).with("in", some).keepingWhole("in"),
    kxutils("StampTwo", {"stamp", "in", "few"}).with("in", some).with("few", few)
        .keepingWhole("in").keepingWhole("few"),
    kxutils("StampForced", {"stamp", "--force", "in"}).with("in", stamped(few)).keepingWhole("in"),
    kxutils("StampRefused", {"stamp", "in"}).with("in", stamped(few)).endingWith(1)
        .keepingWhole("in"),
    kxutils("StampDry", {"stamp", "--dry-run", "in"}).with("in", some).keepingWhole("in"),
    kxutils("StampInput", {"stamp", "-"}).reading(some),
    kxutils("StampJson", {"stamp", "in", "--json"}).with("in", some).keepingWhole("in"),

    kxutils("Tmp", {"tmp"}).failingWith({1, 3, 5}),

    withTree(kxutils("Verify", {"verify", "-r", "tree"})),
    withTree(kxutils("VerifyThreads", {"verify", "-r", "-j2", "tree"})),
    withTree(kxutils("VerifyJson", {"verify", "-r", "-j2", "tree", "--json"})),
    kxutils("VerifyInput", {"verify", "-"}).reading(stamped(some)),
    kxutils("VerifyStrict", {"verify", "--strict", "few"}).with("few", few).endingWith(4),
    kxutils("VerifyDamaged", {"verify", "in"}).with("in", "x" + stamped(some)).endingWith(1),

    talo("Talo", {"folder"}).with("folder/cube.obj", some).with("folder/below/table.csv", few),
    talo("TaloCopies", {"--copy-to", "out/copies", "--answer", "yes", "folder"}).with("folder/cube.obj", some)
        .with("out/copies/cube.obj", "old").keepingWhole("out/copies/cube.obj"),
    talo("TaloAsks", {"--copy-to", "out", "folder"}).with("folder/cube.obj", some)
        .with("out/cube.obj", "old")
        .reading("no\n").keepingWhole("out/cube.obj"),
    talo("TaloLogs", {"--log", "app.log", "--log-format", "text", "folder"}).with("folder/cube.obj", some)
        .with("app.log", lineOfToday()).logging("app.log").losingLines(),
    talo("TaloBanner", {"--banner", "banner.ppm", "few"}).with("few", few)
        .with("banner.ppm", "old").keepingWhole("banner.ppm"),
    talo("TaloUsage", {"--wrong"}).endingWith(2),
};
// clang-format on

// --- Row -----------------------------------------------------------------------------------------

Row Row::with(const std::string& file, const std::string& content) const {
    Row row = *this;
    row.files[file] = content;
    return row;
}

Row Row::reading(const std::string& text) const {
    Row row = *this;
    row.input = text;
    return row;
}

Row Row::endingWith(int code) const {
    Row row = *this;
    row.exitCode = code;
    return row;
}

Row Row::failingWith(std::set<int> codes) const {
    Row row = *this;
    row.failures = std::move(codes);
    return row;
}

Row Row::setting(const std::string& variable, const std::string& value) const {
    Row row = *this;
    row.variables[variable] = value;
    return row;
}

Row Row::keepingWhole(const std::string& file) const {
    Row row = *this;
    row.whole.push_back(file);
    return row;
}

Row Row::logging(const std::string& file) const {
    Row row = *this;
    row.logs.push_back(file);
    row.showsTime = true;
    return row;
}

Row Row::showingTime() const {
    Row row = *this;
    row.showsTime = true;
    return row;
}

Row Row::losingLines() const {
    Row row = *this;
    row.losesLines = true;
    return row;
}

bool Row::isJson() const {
    return std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
}

void PrintTo(const Row& row, std::ostream* os) { *os << row.name; }
