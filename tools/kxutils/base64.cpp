// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils base64: encodes, decodes and checks inputs of any size.
#include <algorithm>
#include <memory>

#include "kxBase64.h"
#include "output.h"
#include "session.h"

namespace {

struct Options {
    std::string input = "-", output = "-";
    bool isDecoding = false, isChecking = false;
    std::uint64_t wrap = 0;
};

// Writes text with a newline after every `width` characters, unless that is 0, and one at the end.
class Wrapper {
public:
    Wrapper(Writer& out, std::size_t width) : _out(out), _width(width) {}

    void write(std::string_view text) {
        while (!text.empty()) {
            if (_width != 0 && _column == _width) {
                _out.write("\n");
                _column = 0;
            }
            const std::size_t room = _width == 0 ? text.size() : _width - _column;
            const std::size_t n = std::min(room, text.size());
            _out.write(text.substr(0, n));
            _column += n;
            text.remove_prefix(n);
        }
    }
    void finish() {
        if (_column > 0) _out.write("\n");
    }

private:
    Writer& _out;
    const std::size_t _width;
    std::size_t _column = 0;
};

void encode(Input& input, std::size_t wrap, Writer& out, Session& session) {
    Wrapper wrapper(out, wrap);
    std::string text;
    // Blocks are whole groups of three, so the pieces join into the text of the whole.
    session.readBlocks(input, [&](std::string_view bytes) {
        kxBase64::encode(bytes.data(), bytes.size(), text);
        wrapper.write(text);
    });
    wrapper.finish();
}

// Passes on the characters that `isKept` accepts, in whole groups of four.
class Groups {
public:
    explicit Groups(std::function<void(const std::string&)> use) : _use(std::move(use)) {}

    template <typename Predicate>
    void add(std::string_view text, Predicate isKept) {
        std::copy_if(text.begin(), text.end(), std::back_inserter(_text), isKept);
        const std::string rest = _text.substr(_text.size() / 4 * 4);
        _text.resize(_text.size() - rest.size());
        if (!_text.empty()) _use(_text);
        _text = rest;
    }
    bool isIncomplete() const { return !_text.empty(); }

private:
    std::function<void(const std::string&)> _use;
    std::string _text;
};

// The library's decoder remembers padding up to the end of a text and drops what comes after it.
// Here such text is an error, wherever the blocks end.
void decode(Input& input, Writer& out, Session& session) {
    bool isPadded = false;
    std::string bytes;
    Groups groups([&](const std::string& text) {
        const std::size_t padding = std::min(text.find('='), text.size());
        if (isPadded || padding / 4 + 1 < text.size() / 4)
            throw Failure(Status::bad, "there is text after the padding");
        isPadded = padding < text.size();
        kxBase64::decode(text, bytes);
        out.write(bytes);
    });
    session.readBlocks(input,
                       [&](std::string_view text) { groups.add(text, kxBase64::isBase64Char); });
    if (groups.isIncomplete()) throw Failure(Status::bad, "the text is cut off");
}

void check(Input& input, Session& session) {
    const char* const fault = "not Base64 text";
    bool hasText = false;
    Groups groups([&](const std::string& text) {
        hasText = true;
        if (!kxBase64::isBase64String(text)) throw Failure(Status::bad, fault);
    });
    session.readBlocks(input, [&](std::string_view text) {
        groups.add(text, [](char c) { return c != '\n' && c != '\r'; });
    });
    if (!hasText || groups.isIncomplete()) throw Failure(Status::bad, fault);
}

void run(const Options& options, Session& session) {
    requireDifferentFiles(options.input, options.output);
    if (session.report.asJson && isStandardOutput(options.output) && !options.isChecking)
        throw UsageError("--json needs --output");
    session.report.add(options.input, [&](Item&) {
        Input input(options.input);
        if (options.isChecking) {
            check(input, session);
            return;
        }
        Output output(options.output, session.out);
        if (options.isDecoding)
            decode(input, output.writer(), session);
        else
            encode(input, options.wrap, output.writer(), session);
        output.close();
    });
}

}  // namespace

Work addBase64(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments.text("file", options->input, "File to read (default: standard input)");
    const Argument decodes = arguments.flag("-d,--decode", options->isDecoding,
                                            "Decode; bytes outside the alphabet are skipped");
    arguments
        .flag("--check", options->isChecking,
              "Write nothing; fail unless the file is Base64 text, with or without line ends")
        .excludes(decodes);
    arguments
        .number("--wrap", options->wrap, "Start a new line after N characters (default: never)")
        .typeName("N")
        .excludes(decodes);
    arguments.text("-o,--output", options->output, "File to write (default: standard output)")
        .typeName("FILE");
    arguments.footer(
        "Example:\n  kxutils base64 --wrap 76 scene.osb | kxutils base64 -d | cmp - scene.osb");
    return [options, &session] { run(*options, session); };
}
