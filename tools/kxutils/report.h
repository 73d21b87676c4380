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

/// Sets a text that may contain any bytes. JSON can contain only Unicode. If the bytes are not
/// UTF-8, the document shows U+FFFD for the invalid parts, and the member KEY + "Base64" contains
/// the bytes.
void setBytes(Json& object, const std::string& key, const std::string& bytes);

/// The result for one argument, file or line.
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

    bool asJson = false;    ///< one document at the end instead of lines and messages
    bool zeroEnds = false;  ///< lines end with a zero byte instead of a newline

    // --- Results ---------------------------------------------------------------------------------

    void setCommand(const std::string& name) { _document["command"] = name; }

    /// Takes the next item: its line and its error are written or, for a document, kept.
    void add(const Item& item);
    void add(const std::string& name, const std::function<void(Item&)>& work) {
        add(makeItem(name, work));
    }

    /// Sets a member of the document beside the items.
    void set(const std::string& key, const Json& value) { _document[key] = value; }

    /// Writes a line of text beside the items; it does not appear in documents.
    void line(const std::string& text);

    /// Writes a message on standard error, even beside a document: nothing has failed. `names` are
    /// the names in it that may contain newlines, which must not look like the end of a line.
    /// Messages of the library have lost their colours (withoutColours).
    void note(std::string text, const std::vector<std::string>& names = {});

    /// Reports that the program ends before its work is done. If `error` starts with the name of a
    /// file, `name` is that name.
    void stop(ExitCode code, const std::string& error, const std::string& name = "");

    void raise(ExitCode code) { _exitCode = worse(_exitCode, code); }
    ExitCode exitCode() const { return _exitCode; }

    /// Writes the document, if there is one, and everything that has been kept.
    void finish();

    // --- Parts of lines --------------------------------------------------------------------------

    // If lines end with a zero byte, names are shown unchanged.

    /// A name for a line that only people read, or that programs take unchanged: quoted on a
    /// terminal (shellQuoted).
    std::string shown(const std::string& name) const;

    /// `head` and a file name, quoted on a terminal. Elsewhere a line must stay a line, so a name
    /// with newlines, carriage returns or backslashes is written with "\n", "\r" and "\\", and the
    /// line starts with a backslash (as sha256sum does it).
    std::string nameLine(const std::string& head, const std::string& name) const;

    /// The status word, coloured if standard output shows colours, and a file name.
    std::string statusLine(Status status, const std::string& name) const;

private:
    void writeMessage(const std::string& text);

    Writer& _out;
    Progress& _progress;
    const bool _isTerminal, _hasColour;  // of standard output
    const bool _isErrorTerminal;
    ExitCode _exitCode = ExitCode::ok;
    Json _document = Json::object();
    std::vector<Json> _items;
};

/// Restores the name that nameLine() has written after a backslash.
std::string unescapedName(const std::string& text);
