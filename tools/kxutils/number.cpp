// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxutils number: digits in groups, lists of values.
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <sstream>

#include "kxString.h"
#include "session.h"

namespace {

struct Options {
    std::string operation;
    std::vector<std::string> arguments;
    std::string separator = ",";
    std::uint32_t size = 3;
    bool isReading = false;
};

// Calls `use` with each argument or, for "-", with each line of standard input.
void forEachText(const Options& options, const std::function<void(const std::string&)>& use) {
    for (const std::string& argument : options.arguments) {
        if (argument != "-") {
            use(argument);
            continue;
        }
        forFile("-", [&] {
            Input input("-");
            LineReader lines(input);
            for (std::string line; lines.next(line);) use(line);
        });
    }
}

void group(const Options& options, Report& report) {
    forEachText(options, [&](const std::string& text) {
        report.add(text, [&](Item& item) {
            item.text = kxString::beautifyDigits(text, options.separator, options.size);
            setBytes(item.fields, "result", *item.text);
        });
    });
}

void readLists(const Options& options, Report& report) {
    forEachText(options, [&](const std::string& text) {
        report.add(text, [&](Item& item) {
            const std::vector<float> values = kxString::getValuesFromString(text);
            item.fields["values"] = values;
            item.text.emplace();
            for (const float value : values)
                *item.text += (item.text->empty() ? "" : "\n") + kxString::setNum(value);
        });
    });
}

// Not every standard library's from_chars() reads floats. The locale of the program is the classic
// one.
float valueOf(const std::string& text) {
    char* end = nullptr;
    errno = 0;
    const float value = std::strtof(text.c_str(), &end);
    const bool isOutside = errno == ERANGE && (value == 0 || std::isinf(value));
    const bool isHexadecimal = text.find_first_of("xX") != std::string::npos;
    if (text.empty() || end != text.data() + text.size() || isOutside || isHexadecimal)
        throw Failure(Status::bad, "'" + text + "' is not a number");
    return value;
}

void writeList(const Options& options, Report& report) {
    std::vector<std::string> words;
    forEachText(options, [&](const std::string& text) {
        std::istringstream stream(text);
        for (std::string word; stream >> word;) words.push_back(word);
    });
    report.add("list", [&](Item& item) {
        std::vector<float> values(words.size());
        std::transform(words.begin(), words.end(), values.begin(), valueOf);
        item.text = kxString::createStringFromValues(values);
        item.fields["result"] = *item.text;
    });
}

}  // namespace

Work addNumber(Arguments& arguments, Session& session) {
    const auto options = std::make_shared<Options>();
    arguments
        .text("operation", options->operation, R"(What to do:
group  put separators between groups of digits in each text
list   write the values as one text; with --read, write each value of a text on a line of its own)")
        .required()
        .oneOf({"group", "list"});
    arguments
        .texts("text", options->arguments, "Texts or values; - for the lines of standard input")
        .required();
    arguments.text("--separator", options->separator, "What group puts in (default: a comma)")
        .typeName("TEXT");
    arguments.number("--size", options->size, "Digits of a group").positive().showDefault();
    arguments.flag("--read", options->isReading, "Let list read texts");
    arguments.footer("Example:\n  kxutils number group 1234567");
    return [options, &session] {
        if (options->operation == "group")
            group(*options, session.report);
        else if (options->isReading)
            readLists(*options, session.report);
        else
            writeList(*options, session.report);
    };
}
