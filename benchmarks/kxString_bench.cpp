// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Numbers and texts in comparison with the standard library, Abseil, {fmt} and Boost.
#include "kxString.h"

#include <boost/algorithm/string.hpp>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <locale>
#include <memory>
#include <sstream>
#include <string_view>
#include <vector>

#include "kxbench.h"

#if KXBENCH_ABSEIL
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_join.h>
#include <absl/strings/str_replace.h>
#include <absl/strings/str_split.h>
#endif
#if KXBENCH_FMT
#include <fmt/format.h>
#endif

namespace {

using Strings = std::vector<std::string>;
using Floats = std::vector<float>;

// --- Input ---------------------------------------------------------------------------------------

struct Numbers {
    const char* name;
    Floats values;
};

/// Lengths and positions as an application writes them, and floats of any size.
const std::vector<Numbers>& numbers() {
    static const std::vector<Numbers> all = [] {
        constexpr std::size_t count = 10000;
        std::mt19937 random(7);
        std::uniform_real_distribution<float> within(-1000, 1000);
        Numbers coordinates{"coordinates", {}}, anything{"any bits", {}};
        while (coordinates.values.size() < count) coordinates.values.push_back(within(random));
        while (anything.values.size() < count) {
            const auto bits = static_cast<std::uint32_t>(random());
            float value;
            std::memcpy(&value, &bits, sizeof value);
            if (std::isfinite(value)) anything.values.push_back(value);
        }
        return std::vector<Numbers>{coordinates, anything};
    }();
    return all;
}

std::string printed(const char* format, double value) {
    char text[64];
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    std::snprintf(text, sizeof text, format, value);
#pragma GCC diagnostic pop
    return text;
}

Strings printed(const char* format, const Floats& values) {
    Strings texts;
    for (const float value : values) texts.push_back(printed(format, double{value}));
    return texts;
}

std::string joined(const Strings& texts, const char* separator) {
    std::string all;
    for (const std::string& text : texts) all.append(text).append(separator);
    return all;
}

/// Fields of 1 to `longest` characters.
Strings fields(std::size_t count, std::size_t longest) {
    std::mt19937 random(7);
    Strings all;
    while (all.size() < count) all.emplace_back(1 + random() % longest, 'f');
    return all;
}

/// Words and blanks; every sixteenth word is "needle".
std::string words(std::size_t size) {
    std::mt19937 random(7);
    std::string text;
    for (int n = 0; text.size() < size; ++n) {
        if (n % 16 == 15)
            text += "needle";
        else
            for (auto length = 2 + random() % 8; length > 0; --length)
                text += "etaoinshrdlucm"[random() % 14];
        text += ' ';
    }
    text.resize(size);
    return text;
}

std::string digits(std::size_t size) {
    std::string text;
    while (text.size() < size) text += static_cast<char>('1' + text.size() % 9);
    return text;
}

// --- One value per call --------------------------------------------------------------------------

/// A row in which each run calls `function` for the next of `inputs`, so that no branch predictor
/// can learn a single input by heart. `right` checks the result for an input.
template <class Input, class Function, class Right>
void addCalls(const std::string& operation, const char* name, std::size_t size,
              const std::vector<Input>& inputs, Function function, Right right) {
    kxbench::contender(
        "kxString::" + operation, name, size,
        [&inputs, function, at = std::size_t{0}]() mutable {
            benchmark::DoNotOptimize(function(inputs[at]));
            if (++at == inputs.size()) at = 0;
        },
        [&inputs, function, right] {
            for (const Input& input : inputs)
                if (!right(input, function(input))) return false;
            return true;
        });
}

float fromChars(const std::string& text) {
    float value = 0;
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

float fromStream(const std::string& text) {
    std::istringstream in(text);
    in.imbue(std::locale::classic());
    float value = 0;
    in >> value;
    return value;
}

std::string toChars(float value) {
    char text[32];
    const auto end =
        std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6).ptr;
    return {text, end};
}

std::string toStream(float value) {
    std::ostringstream out;
    out.imbue(std::locale::classic());
    out << value;
    return out.str();
}

void addToFloat() {
    for (const auto& [kind, values] : numbers())
        for (const char* format : {"%g", "%.9g"}) {
            static std::vector<std::unique_ptr<Strings>> kept;
            const Strings& texts =
                *kept.emplace_back(std::make_unique<Strings>(printed(format, values)));
            const std::size_t size = joined(texts, "").size() / texts.size();
            const std::string operation = std::string("toFloat of ") + kind + " (" + format + ")";
            const auto add = [&](const char* name, float (*function)(const std::string&)) {
                addCalls(operation, name, size, texts, function,
                         [](const std::string& text, float value) {
                             return value == std::strtof(text.c_str(), nullptr);
                         });
            };
            add("kxUtils", kxString::toFloat);
            add("std::from_chars", fromChars);
            add("std::strtof",
                [](const std::string& text) { return std::strtof(text.c_str(), nullptr); });
            add("std::istringstream", fromStream);
#if KXBENCH_ABSEIL
            add("absl::SimpleAtof", [](const std::string& text) {
                float value = 0;
                return absl::SimpleAtof(text, &value) ? value : NAN;
            });
#endif
        }
}

void addSetNum() {
    for (const auto& [kind, values] : numbers()) {
        const auto add = [&kind = kind, &values = values](const char* name,
                                                          std::string (*function)(float)) {
            addCalls(std::string("setNum of ") + kind, name, 8, values, function,
                     [](float value, const std::string& text) {
                         return text == printed("%g", double{value});
                     });
        };
        add("kxUtils", kxString::setNum);
        add("std::to_chars", toChars);
        add("std::snprintf", [](float value) { return printed("%g", double{value}); });
        add("std::ostringstream", toStream);
#if KXBENCH_ABSEIL
        add("absl::StrCat", [](float value) { return absl::StrCat(value); });
#endif
#if KXBENCH_FMT
        add("fmt::format", [](float value) { return fmt::format("{:g}", value); });
#endif
    }
}

void addGroupedNumber() {
    static const std::vector<std::uint32_t> values = [] {
        std::mt19937 random(7);
        std::vector<std::uint32_t> all;
        while (all.size() < 10000)
            all.push_back(static_cast<std::uint32_t>(random()) >> random() % 32);
        return all;
    }();
    static const std::string comma = ",";
    static const auto grouped = [](std::uint32_t value) {
        std::string text = std::to_string(value);
        for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, comma);
        return text;
    };
    struct ByThree : std::numpunct<char> {
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };
    static const std::locale locale(std::locale::classic(), new ByThree);
    const auto add = [](const char* name, std::string (*function)(std::uint32_t)) {
        addCalls(
            "beautifyDigits of a number", name, 9, values, function,
            [](std::uint32_t value, const std::string& text) { return text == grouped(value); });
    };
    add("kxUtils", [](std::uint32_t value) { return kxString::beautifyDigits(value, comma, 3); });
    add("plain inserts", grouped);
    add("std::ostringstream", [](std::uint32_t value) {
        std::ostringstream out;
        out.imbue(locale);
        out << value;
        return out.str();
    });
#if KXBENCH_FMT
    add("fmt::format {:L}", [](std::uint32_t value) { return fmt::format(locale, "{:L}", value); });
    add("fmt::group_digits",
        [](std::uint32_t value) { return fmt::format("{}", fmt::group_digits(value)); });
#endif
}

// --- Whole texts ---------------------------------------------------------------------------------

/// A row in which each run must make `expected` from one and the same input.
template <class Result>
void addWhole(const std::string& operation, const char* name, std::size_t size, Result expected,
              std::function<Result()> function) {
    kxbench::contender(
        "kxString::" + operation, name, size, [=] { benchmark::DoNotOptimize(function()); },
        [=] { return function() == expected; });
}

void addLists() {
    for (const auto& [kind, list] : numbers()) {
        const Floats& values = list;
        const std::string text = joined(printed("%g", values), " ");
        const auto add = [&, &kind = kind](const char* name,
                                           std::function<std::string()> function) {
            addWhole<std::string>(std::string("createStringFromValues of ") + kind, name,
                                  text.size(), text, std::move(function));
        };
        add("kxUtils", [&] { return kxString::createStringFromValues(values); });
        add("std::to_chars", [&] {
            std::string out(values.size() * 13, '\0');
            char* to = out.data();
            for (const float value : values) {
                to = std::to_chars(to, to + 12, value, std::chars_format::general, 6).ptr;
                *to++ = ' ';
            }
            out.resize(static_cast<std::size_t>(to - out.data()));
            return out;
        });
        add("std::ostringstream", [&] {
            std::ostringstream out;
            out.imbue(std::locale::classic());
            for (const float value : values) out << value << ' ';
            return out.str();
        });
#if KXBENCH_ABSEIL
        add("absl::StrJoin", [&] {
            std::string out = absl::StrJoin(values, " ");
            out += ' ';
            return out;
        });
#endif
#if KXBENCH_FMT
        add("fmt::join", [&] {
            fmt::memory_buffer out;
            fmt::format_to(fmt::appender(out), "{:g} ", fmt::join(values, " "));
            return fmt::to_string(out);
        });
#endif

        static std::vector<std::unique_ptr<std::string>> kept;
        for (const char* format : {"%e", "%.8e"}) {
            const std::string& written = *kept.emplace_back(
                std::make_unique<std::string>(joined(printed(format, values), " ")));
            Floats expected;
            for (const std::string& one : printed(format, values))
                expected.push_back(std::strtof(one.c_str(), nullptr));
            const auto read = [&, &kind = kind](const char* name,
                                                std::function<Floats()> function) {
                addWhole<Floats>(
                    std::string("getValuesFromString of ") + kind + " (" + format + ")", name,
                    written.size(), expected, std::move(function));
            };
            read("kxUtils", [&] { return kxString::getValuesFromString(written); });
            read("std::from_chars", [&] {
                Floats out;
                const char* const end = written.data() + written.size();
                for (const char* at = written.data(); at < end; ++at) {
                    float value = 0;
                    at = std::from_chars(at, end, value).ptr;
                    out.push_back(value);
                }
                return out;
            });
            read("std::istringstream", [&] {
                Floats out;
                std::istringstream in(written);
                in.imbue(std::locale::classic());
                for (float value = 0; in >> value;) out.push_back(value);
                return out;
            });
#if KXBENCH_ABSEIL
            read("absl::StrSplit and SimpleAtof", [&] {
                Floats out;
                for (const absl::string_view piece :
                     absl::StrSplit(written, ' ', absl::SkipEmpty())) {
                    float value = 0;
                    if (absl::SimpleAtof(piece, &value)) out.push_back(value);
                }
                return out;
            });
#endif
        }
    }
}

void addSplit() {
    struct Case {
        const char* operation;
        std::size_t count, longest;
    };
    static const Case cases[] = {{"split into 8 fields", 8, 12},
                                 {"split into 10000 fields", 10000, 12},
                                 {"split into 1000 lines", 1000, 400}};
    for (const Case& c : cases) {
        const Strings expected = fields(c.count, c.longest);
        std::string text = joined(expected, ",");
        text.pop_back();
        const auto add = [&](const char* name, Strings (*function)(const std::string&)) {
            addWhole<Strings>(c.operation, name, text.size(), expected,
                              [text, function] { return function(text); });
        };
        add("kxUtils", [](const std::string& all) { return kxString::split(all, ','); });
        add("std::getline", [](const std::string& all) {
            Strings out;
            std::istringstream in(all);
            for (std::string field; std::getline(in, field, ',');) out.push_back(field);
            return out;
        });
        add("boost::split", [](const std::string& all) {
            Strings out;
            boost::split(out, all, [](char each) { return each == ','; });
            return out;
        });
#if KXBENCH_ABSEIL
        add("absl::StrSplit",
            [](const std::string& all) { return Strings(absl::StrSplit(all, ',')); });
#endif
    }
}

/// Each run gets a fresh copy of the text in the same string, unless nothing is found.
void addReplace() {
    struct Case {
        const char *name, *search, *replacement;
    };
    static const Case cases[] = {{"by longer", "needle", "replacement"},
                                 {"by equal", "needle", "thread"},
                                 {"by shorter", "needle", "pin"},
                                 {"absent", "nettle", "thread"},
                                 {"each blank", " ", "&nbsp;"}};
    for (const Case& c : cases)
        for (const std::size_t size : {std::size_t{1024}, std::size_t{65536}}) {
            const std::string text = words(size);
            const std::string search = c.search, replacement = c.replacement;
            std::string expected = text;
            boost::replace_all(expected, search, replacement);
            const bool isFound = expected != text;
            using Replace =
                std::function<void(std::string&, const std::string&, const std::string&)>;
            const auto add = [&](const char* name, const Replace& replace) {
                const auto work = std::make_shared<std::string>(text);
                kxbench::contender(
                    std::string("kxString::replace ") + c.name, name, size,
                    [=] {
                        if (isFound) *work = text;
                        replace(*work, search, replacement);
                        benchmark::DoNotOptimize(*work);
                    },
                    [=] { return *work == expected; });
            };
            add("kxUtils", kxString::replace);
            add("boost::replace_all",
                [](std::string& all, const std::string& from, const std::string& to) {
                    boost::replace_all(all, from, to);
                });
#if KXBENCH_ABSEIL
            add("absl::StrReplaceAll",
                [](std::string& all, const std::string& from, const std::string& to) {
                    absl::StrReplaceAll({{from, to}}, &all);
                });
#endif
        }
}

/// A search text that nearly fits everywhere; only the search takes time.
void addHostileReplace() {
    for (const std::size_t size : {std::size_t{65536}, std::size_t{1} << 20}) {
        const std::string text(size, 'a'), quarter(size / 4, 'a'), search = quarter + 'b' + quarter;
        const auto add = [&](const char* name, auto find) {
            const auto work = std::make_shared<std::string>(text);
            kxbench::contender(
                "kxString::replace nearly found everywhere", name, size,
                [=] {
                    find(*work, search);
                    benchmark::DoNotOptimize(*work);
                },
                [=] { return *work == text; });
        };
        add("kxUtils", [](std::string& in, const std::string& what) {
            kxString::replace(in, what, std::string());
        });
        add("memmem", [](const std::string& in, const std::string& what) {
            benchmark::DoNotOptimize(memmem(in.data(), in.size(), what.data(), what.size()));
        });
    }
}

// The plain loop. Any grouping must at least write the result once.
std::string groupedByALoop(const std::string& run) {
    std::string out(run.size() + (run.size() - 1) / 3, '\0');
    std::size_t untilSeparator = (run.size() - 1) % 3 + 1;
    char* to = out.data();
    for (const char c : run) {
        if (untilSeparator-- == 0) {
            *to++ = ',';
            untilSeparator = 2;
        }
        *to++ = c;
    }
    return out;
}

void addGroupedText() {
    static const std::string comma = ",", commaAndBlank = ", ";
    for (const std::size_t size : {std::size_t{1024}, std::size_t{65536}, std::size_t{1} << 20}) {
        const std::string run = digits(size), expected = groupedByALoop(run);
        const auto add = [&](const char* name, std::string (*function)(const std::string&)) {
            addWhole<std::string>("beautifyDigits of a run of digits", name, size, expected,
                                  [run, function] { return function(run); });
        };
        add("kxUtils",
            [](const std::string& text) { return kxString::beautifyDigits(text, comma, 3); });
        add("limit one loop", groupedByALoop);
    }
    const std::string text = joined(printed("%f", numbers()[0].values), " ");
    std::string expected, run;
    for (const char c : text) {
        if (c >= '0' && c <= '9') {
            run += c;
            continue;
        }
        if (!run.empty()) expected += groupedByALoop(run);
        expected += c;
        run.clear();
    }
    addWhole<std::string>("beautifyDigits of numbers in a text", "kxUtils", text.size(), expected,
                          [text] { return kxString::beautifyDigits(text, comma, 3); });
    addWhole<std::string>("beautifyDigits of numbers in a text", "limit copy", text.size(), text,
                          [text] { return text; });
}

// --- The rest ------------------------------------------------------------------------------------

void addOthers() {
    for (const std::size_t size : {std::size_t{16}, std::size_t{1024}}) {
        const std::string text = words(size);
        std::string other = text;
        other.back() = '.';

        std::string raised = text;
        for (std::size_t i = 0; i < size; ++i)
            if (i == 0 || text[i - 1] == ' ')
                raised[i] = static_cast<char>(std::toupper(text[i], std::locale::classic()));
        addWhole<std::string>("capitalize", "kxUtils", size, raised,
                              [=] { return kxString::capitalize(text); });
        addWhole<std::string>("capitalize", "plain loop", size, raised, [=] {
            std::string out = text;
            for (std::size_t i = 0; i < out.size(); ++i)
                if (i == 0 || out[i - 1] == ' ')
                    out[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(out[i])));
            return out;
        });

        const std::string hashed = std::to_string(std::hash<std::string>()(text));
        addWhole<std::string>("hash", "kxUtils", size, hashed,
                              [=] { return kxString::hash(text); });
        addWhole<std::string>("hash", "std::hash and to_string", size, hashed,
                              [=] { return std::to_string(std::hash<std::string>()(text)); });

        const std::string common = text.substr(0, size - 1);
        addWhole<std::string>("getCommonLeadingString", "kxUtils", size, common,
                              [=] { return kxString::getCommonLeadingString(text, other); });
        addWhole<std::string>("getCommonLeadingString", "std::mismatch", size, common, [=] {
            return std::string(
                text.begin(),
                std::mismatch(text.begin(), text.end(), other.begin(), other.end()).first);
        });

        addWhole<bool>("startsWith", "kxUtils", size, true,
                       [=] { return kxString::startsWith(text, common); });
        addWhole<bool>("endsWith", "kxUtils", size, false,
                       [=] { return kxString::endsWith(text, common); });
#if KXBENCH_ABSEIL
        addWhole<bool>("startsWith", "absl::StartsWith", size, true,
                       [=] { return absl::StartsWith(text, common); });
        addWhole<bool>("endsWith", "absl::EndsWith", size, false,
                       [=] { return absl::EndsWith(text, common); });
#endif
    }

    static const Strings options = [] {
        Strings all = printed("%.9g", numbers()[0].values);
        for (std::string& option : all) option += ",smooth=true";
        return all;
    }();
    const auto add = [](const char* name, double (*function)(const std::string&)) {
        addCalls("getDoubleOption", name, 22, options, function,
                 [](const std::string& text, double value) {
                     return value == std::strtod(text.c_str(), nullptr);
                 });
    };
    add("kxUtils", kxString::getDoubleOption);
    add("std::from_chars", [](const std::string& text) {
        double value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    });
#if KXBENCH_ABSEIL
    add("absl::SimpleAtod", [](const std::string& text) {
        double value = 0;
        const std::vector<absl::string_view> first = absl::StrSplit(text, absl::MaxSplits(',', 1));
        return absl::SimpleAtod(first[0], &value) ? value : NAN;
    });
#endif

    static const std::string smooth = "smooth";
    const auto addBool = [](const char* name, bool (*function)(const std::string&)) {
        addCalls("getBoolOption", name, 22, options, function,
                 [](const std::string&, bool value) { return value; });
    };
    addBool("kxUtils",
            [](const std::string& text) { return kxString::getBoolOption(text, smooth); });
    addBool("std::string::find", [](const std::string& text) {
        return text.find(smooth + "=true") != std::string::npos;
    });
#if KXBENCH_ABSEIL
    addBool("absl::StrContains", [](const std::string& text) {
        return absl::StrContains(text, absl::StrCat(smooth, "=true"));
    });
#endif
}

const bool registered = [] {
    addToFloat();
    addSetNum();
    addLists();
    addGroupedNumber();
    addGroupedText();
    addSplit();
    addReplace();
    addHostileReplace();
    addOthers();
    return true;
}();

}  // namespace
