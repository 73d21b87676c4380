// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "report.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "kxBase64.h"
#include "quoting.h"

namespace {

bool isUtf8(const std::string& bytes) {
    try {
        static_cast<void>(Json(bytes).dump());
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

ExitCode exitCodeOf(Status status) {
    switch (status) {
        case Status::ok:
        case Status::noChecksum:
            return ExitCode::ok;
        case Status::bad:
            return ExitCode::failedCheck;
        case Status::unreadable:
        case Status::unwritable:
            return ExitCode::inputOutput;
    }
    return ExitCode::internal;
}

// A line as nameLine() makes it for programs.
std::string escapedLine(const std::string& head, const std::string& name) {
    if (name.find_first_of("\n\r\\") == std::string::npos) return head + name;
    std::string line = '\\' + head;
    for (const char c : name) {
        if (c == '\n')
            line += "\\n";
        else if (c == '\r')
            line += "\\r";
        else if (c == '\\')
            line += "\\\\";
        else
            line += c;
    }
    return line;
}

void replaceAll(std::string& text, const std::string& part, const std::string& replacement) {
    if (part == replacement) return;
    for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos;
         at += replacement.size())
        text.replace(at, part.size(), replacement);
}

bool mayColour() {
    const char* const noColour = std::getenv("NO_COLOR");
    return !noColour || !*noColour;
}

}  // namespace

void setBytes(Json& object, const std::string& key, const std::string& bytes) {
    object[key] = bytes;
    if (isUtf8(bytes)) return;
    std::string text;
    kxBase64::encode(bytes, text);
    object[key + "Base64"] = text;
}

Item makeItem(const std::string& name, const std::function<void(Item&)>& work) {
    Item item;
    item.name = name;
    try {
        work(item);
    } catch (const Failure& failure) {
        item.status = failure.status;
        item.error = failure.what();
    }
    return item;
}

Report::Report(Writer& out, Progress& progress)
    : _out(out),
      _progress(progress),
      _isTerminal(out.isTerminal()),
      _hasColour(_isTerminal && mayColour()),
      _isErrorTerminal(isatty(STDERR_FILENO) == 1) {}

void Report::add(const Item& item) {
    raise(exitCodeOf(item.status));
    if (asJson) {
        Json entry = Json::object();
        setBytes(entry, "name", item.name);
        entry["status"] = word(item.status);
        entry.update(item.fields);
        if (!item.error.empty()) entry["error"] = item.error;
        _items.push_back(std::move(entry));
        return;
    }
    if (item.text) line(*item.text);
    if (item.error.empty()) return;
    if (_isErrorTerminal)
        writeMessage(shellQuoted(item.name) + ": " +
                     printable(item.error, /*keepsNewlines=*/false));
    else
        writeMessage((zeroEnds ? item.name : escapedLine("", item.name)) + ": " + item.error);
}

void Report::line(const std::string& text) {
    if (asJson) return;
    _progress.hide();
    _out.write(text + (zeroEnds ? '\0' : '\n'));
    if (_isTerminal) _out.flush();
}

void Report::writeMessage(const std::string& text) {
    _progress.hide();
    _out.flush();  // on a terminal both streams go to one place
    if (!writeAll(STDERR_FILENO, "kxutils: " + text + '\n')) raise(ExitCode::inputOutput);
}

void Report::note(std::string text, const std::vector<std::string>& names) {
    if (!_isErrorTerminal) return writeMessage(text);
    for (const std::string& name : names)
        for (const std::string& given : {name, withoutColours(name)})
            replaceAll(text, given, printable(given, /*keepsNewlines=*/false));
    writeMessage(printable(text, /*keepsNewlines=*/true));
}

void Report::stop(ExitCode code, const std::string& error, const std::string& name) {
    raise(code);
    if (asJson)
        _document["error"] = error;
    else if (_isErrorTerminal)
        writeMessage((name.empty() ? "" : shellQuoted(name)) +
                     printable(error.substr(name.size()), /*keepsNewlines=*/false));
    else
        writeMessage(error);
}

void Report::finish() {
    _progress.hide();
    if (asJson) {
        _document["exitCode"] = static_cast<int>(_exitCode);
        _document["items"] = _items;
        _out.write(_document.dump(2, ' ', /*ensure_ascii=*/false, Json::error_handler_t::replace) +
                   '\n');
    }
    _out.close();
}

std::string Report::shown(const std::string& name) const {
    return _isTerminal && !zeroEnds ? shellQuoted(name) : name;
}

std::string Report::nameLine(const std::string& head, const std::string& name) const {
    return _isTerminal || zeroEnds ? head + shown(name) : escapedLine(head, name);
}

std::string Report::statusLine(Status status, const std::string& name) const {
    std::string column = word(status);
    column.resize(std::max(column.size(), std::strlen(word(Status::noChecksum)) + 2), ' ');
    if (!_hasColour) return nameLine(column, name);
    const char* const colour = status == Status::ok           ? "\033[32m"
                               : status == Status::noChecksum ? "\033[33m"
                                                              : "\033[31m";
    return nameLine(colour + column + "\033[0m", name);
}

std::string unescapedName(const std::string& text) {
    std::string name;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            name += text[i];
            continue;
        }
        ++i;
        name += text[i] == 'n' ? '\n' : text[i] == 'r' ? '\r' : text[i];
    }
    return name;
}
