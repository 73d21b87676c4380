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

    /// A message on standard error, also beside a document: nothing has failed.
    void note(const std::string& text);

    /// The program ends before its work is done.
    void stop(ExitCode code, const std::string& error);

    void raise(ExitCode code) { _exitCode = worse(_exitCode, code); }
    ExitCode exitCode() const { return _exitCode; }

    /// Writes the document, if there is one, and all that is still kept back.
    void finish();

    // --- Parts of lines --------------------------------------------------------------------------

    /// `head` and a file name. So that a line stays a line, a name with newlines, carriage returns
    /// or backslashes is written with "\n", "\r" and "\\" and the line starts with a backslash (as
    /// sha256sum does it), unless lines end with a zero byte.
    std::string nameLine(const std::string& head, const std::string& name) const;

    /// The status word, in its colour if standard output shows colours, and a file name.
    std::string statusLine(Status status, const std::string& name) const;

private:
    Writer& _out;
    Progress& _progress;
    const bool _isTerminal, _hasColour;  // standard output's
    ExitCode _exitCode = ExitCode::ok;
    Json _document = Json::object();
    std::vector<Json> _items;
};

/// The name that nameLine() has written behind a backslash.
std::string unescapedName(const std::string& text);
