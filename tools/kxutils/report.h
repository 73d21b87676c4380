// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The results of a sub-command, item by item, as text or as one JSON document.
#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "progress.h"
#include "streams.h"

using Json = nlohmann::ordered_json;

/// Sets a text that may hold any bytes. JSON holds Unicode only: where the bytes are not UTF-8 the
/// document shows U+FFFD in place of what is not, and the member KEY + "Base64" has the bytes.
void setBytes(Json& object, const std::string& key, const std::string& bytes);

/// What is said about one argument, file or line.
struct Item {
    std::string name;
    Status status = Status::ok;
    std::optional<std::string> text;  ///< the result line without its end
    std::string error;                ///< "" if all went well
    Json fields = Json::object();
};

/// Does the work on one item; a Failure becomes the item's status and error. Any thread may call
/// it.
Item makeItem(const std::string& name, const std::function<void(Item&)>& work);

/// Results go to standard output, everything else to standard error.
class Report {
public:
    Report(Writer& out, Progress& progress);

    // --- Options ---------------------------------------------------------------------------------

    bool asJson = false;    ///< one document at the end, in place of lines and messages
    bool zeroEnds = false;  ///< lines end with a zero byte in place of a newline

    // --- Results ---------------------------------------------------------------------------------

    void setCommand(const std::string& name) { _document["command"] = name; }

    /// Takes the next item: its line and its error are written, or kept for the document.
    void add(const Item& item);
    void add(const std::string& name, const std::function<void(Item&)>& work) {
        add(makeItem(name, work));
    }

    /// A member of the document beside the items.
    void set(const std::string& key, const Json& value) { _document[key] = value; }

    /// A line of text beside the items; not for documents.
    void line(const std::string& text);

    /// A message on standard error, also beside a document: nothing has failed. `names` are those
    /// in it that may hold newlines, which must not look like the end of a line; the library's
    /// messages have lost the colours in them (withoutColours).
    void note(std::string text, const std::vector<std::string>& names = {});

    /// The program ends before its work is done. `name` is the file's with which `error` starts, if
    /// there is one.
    void stop(ExitCode code, const std::string& error, const std::string& name = "");

    void raise(ExitCode code) { _exitCode = worse(_exitCode, code); }
    ExitCode exitCode() const { return _exitCode; }

    /// Writes the document, if there is one, and all that is still kept back.
    void finish();

    // --- Parts of lines --------------------------------------------------------------------------

    // Where lines end with a zero byte names are as they are.

    /// A name for a line that is read by people only, or taken as it is by programs: quoted on a
    /// terminal (shellQuoted).
    std::string shown(const std::string& name) const;

    /// `head` and a file name, quoted on a terminal. Elsewhere, so that a line stays a line, a name
    /// with newlines, carriage returns or backslashes is written with "\n", "\r" and "\\" and the
    /// line starts with a backslash (as sha256sum does it).
    std::string nameLine(const std::string& head, const std::string& name) const;

    /// The status word, in its colour if standard output shows colours, and a file name.
    std::string statusLine(Status status, const std::string& name) const;

private:
    void writeMessage(const std::string& text);

    Writer& _out;
    Progress& _progress;
    const bool _isTerminal, _hasColour;  // standard output's
    const bool _isErrorTerminal;
    ExitCode _exitCode = ExitCode::ok;
    Json _document = Json::object();
    std::vector<Json> _items;
};

/// The name that nameLine() has written behind a backslash.
std::string unescapedName(const std::string& text);
