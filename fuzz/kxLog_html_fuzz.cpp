// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// HTML lines of the log: whatever a message contains, only the log's own elements come out, and the
// text can be read back.
#include "input.h"
#include "kxLog.h"
#include "support.h"

using kxfuzz::require;
using kxfuzz::requireEqual;

namespace {

struct Level {
    void (*log)(const char*, int, bool);
    const char* color[2];  // normal and alternate
};
constexpr Level levels[] = {{kxLog::infoI, {"008c00", "008c8c"}},
                            {kxLog::warningI, {"b4b400", "b4b48c"}},
                            {kxLog::errorI, {"b40000", "b4008c"}}};

// `html` must contain only text, no element and no end of an attribute. Returns it with its
// character references replaced, which are of the four kinds that the log writes.
std::string readBack(const std::string& html) {
    std::string text;
    for (std::size_t at = 0; at < html.size();) {
        require(html[at] != '<' && html[at] != '>' && html[at] != '"', "an element comes through");
        if (html[at] != '&') {
            text += html[at++];
            continue;
        }
        const std::string reference = html.substr(at, 5);
        if (reference == "&#34;")
            text += '"';
        else if (reference == "&#38;")
            text += '&';
        else if (reference == "&#60;")
            text += '<';
        else if (reference == "&#62;")
            text += '>';
        else
            kxfuzz::fail("an unknown character reference: " + kxfuzz::shown(reference));
        at += 5;
    }
    return text;
}

std::string withoutNewline(const std::string& text) {
    return !text.empty() && text.back() == '\n' ? text.substr(0, text.size() - 1) : text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::holdConsole();
    kxfuzz::Input input(data, size);
    const Level& level = levels[input.upTo(2)];
    const bool alternate = input.flag();
    const std::string text = input.rest();
    const std::string html = kxLog::convertToHtml(text);
    requireEqual("text read back", readBack(html), withoutNewline(text));

    // A whole line; a zero byte ends a message.
    std::string lines;
    kxLog::_log_format = 2;
    kxLog::enableOutputBuffer(lines);
    level.log(text.c_str(), /*flags=*/4, alternate);
    kxLog::disableOutputBuffer();
    kxfuzz::takeOut();
    kxfuzz::takeErr();

    const std::string head = std::string("<span style=\"color:#") + level.color[alternate] + ";\">";
    const std::string tail = "</span><br>\n";
    require(lines.size() >= head.size() + tail.size(), "the line is too short");
    const std::size_t length = lines.size() - head.size() - tail.size();
    requireEqual("start of the line", lines.substr(0, head.size()), head);
    requireEqual("end of the line", lines.substr(head.size() + length), tail);
    requireEqual("message read back", readBack(lines.substr(head.size(), length)),
                 withoutNewline(text.c_str()));
    return 0;
}
