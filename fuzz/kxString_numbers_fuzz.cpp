// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxString's numbers: reading agrees with a standard stream in the classic locale, and lists are
// split and digits grouped as in the models, always within bounded time and space.
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>
#include <set>
#include <vector>

#include "input.h"
#include "kxString.h"
#include "reference/digit_grouping.h"
#include "support.h"

using kxfuzz::require;
using kxfuzz::requireEqual;

namespace {

// The library reads alike with every standard library, but the stream of libc++ is no model for it:
// there "9x" is 0, and 1e39 is infinite.
#ifdef _LIBCPP_VERSION
constexpr bool streamIsModel = false;
#else
constexpr bool streamIsModel = true;
#endif

template <class Float>
Float extracted(const std::string& text) {
    std::istringstream stream(text);
    stream.imbue(std::locale::classic());
    Float value = 0;
    stream >> value;
    return value;
}

// Compares the bits, so that 0 and -0 differ and a NaN equals itself.
template <class Float>
void requireSame(const char* what, Float got, Float expected) {
    if (std::memcmp(&got, &expected, sizeof got) != 0) kxfuzz::failDifferent(what, got, expected);
}

std::vector<float> readValues(const std::string& text) {
    if (text.size() >= 4 && text.find("TRUE") != std::string::npos) return {1.0F};
    if (text.size() >= 5 && text.find("FALSE") != std::string::npos) return {0.0F};
    if (text.find('e') == std::string::npos) return {extracted<float>(text)};
    std::vector<float> values;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t e = text.find('e', start);
        if (e == std::string::npos) break;
        values.push_back(extracted<float>(text.substr(start, e + 5 - start)));
        start = e + 5;
    }
    return values;
}

std::string written(float value) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream << value;
    return stream.str();
}

void checkReading(const std::string& text) {
    requireSame("toFloat", kxString::toFloat(text), extracted<float>(text));
    requireSame("getDoubleOption", kxString::getDoubleOption(text),
                extracted<double>(text.substr(0, text.find(','))));
    const std::vector<float> got = kxString::getValuesFromString(text), expected = readValues(text);
    requireEqual("number of values", got.size(), expected.size());
    for (std::size_t i = 0; i < got.size(); ++i) requireSame("value", got[i], expected[i]);
}

void checkWriting(const std::vector<float>& values) {
    std::string expected;
    for (const float value : values) {
        requireEqual("setNum", kxString::setNum(value), written(value));
        expected += written(value) + ' ';
    }
    requireEqual("createStringFromValues", kxString::createStringFromValues(values), expected);
}

// Groups each run separately, since no run reaches beyond its own grouped form. A run for which the
// rule never ends is grouped once.
std::string grouped(const std::string& text, const std::string& separator, std::size_t group) {
    std::string result;
    std::set<std::size_t> endless;  // lengths of runs; the digits themselves make no difference
    for (std::size_t at = 0; at < text.size();) {
        std::size_t end = at;
        while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
        if (end == at) {
            result += text[at++];
            continue;
        }
        const std::string run = text.substr(at, end - at);
        std::optional<std::string> ruled;
        if (endless.count(run.size()) == 0)
            ruled = reference::groupDigits(run, separator, group, 50, 200);
        if (!ruled) {
            endless.insert(run.size());
            std::size_t ignored = 0;
            ruled = run;
            reference::groupNextRun(*ruled, ignored, separator, group);
        }
        result += *ruled;
        at = end;
    }
    return result;
}

// Shortened so that the model can tell it from a run for which the rule never ends.
std::string withShortRuns(const std::string& text) {
    std::string result;
    int run = 0;
    for (const char c : text) {
        run = c >= '0' && c <= '9' ? run + 1 : 0;
        if (run <= 12) result += c;
    }
    return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::Input input(data, size);
    const std::uint32_t group = input.upTo(30);
    const std::uint32_t number = input.upTo(0xFFFFFFFF);
    const std::string separator = input.text();
    const std::string text = input.text();
    const std::string binary = input.rest();

    if (streamIsModel) checkReading(text);
    std::vector<float> values(binary.size() / sizeof(float));
    if (!values.empty()) std::memcpy(values.data(), binary.data(), values.size() * sizeof(float));
    checkWriting(values);

    // Not compared, but bounded, because such separators make a result grow with the square of a
    // run.
    const std::string few = text.substr(0, 100);
    require(kxString::beautifyDigits(few, separator, group).size() <=
                (few.size() + 1) * (few.size() + 1) * (separator.size() + 1),
            "the grouped text is longer than it may be");
    if (group == 0) {
        requireEqual("ungrouped text", kxString::beautifyDigits(text, separator, 0), text);
        return 0;
    }
    const std::string shortSeparator = separator.substr(0, 6), shortRuns = withShortRuns(text);
    requireEqual("grouped text", kxString::beautifyDigits(shortRuns, shortSeparator, group),
                 grouped(shortRuns, shortSeparator, group));
    requireEqual("grouped number", kxString::beautifyDigits(number, shortSeparator, group),
                 grouped(std::to_string(number), shortSeparator, group));
    return 0;
}
