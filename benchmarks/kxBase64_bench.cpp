// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxBase64.h"

#include <cstring>
#include <memory>

#include "kxbench.h"
#include "plain_loops.h"

#if KXBENCH_ABSEIL
#include <absl/strings/escaping.h>
#endif

namespace {

/// The input and output of all contenders for one operation.
struct Task {
    std::string operation, input, expected;
    std::string output = std::string(input.size() / 3 * 4 + 8, 'x');
};
using TaskPointer = std::shared_ptr<Task>;

TaskPointer makeTask(std::string operation, std::string input, std::string expected) {
    return std::make_shared<Task>(
        Task{std::move(operation), std::move(input), std::move(expected)});
}

using Raw = unsigned long (*)(const char* in, unsigned long n, char* out);
void addRaw(const char* name, const TaskPointer& task, Raw convert) {
    const auto call = [=] {
        return convert(task->input.data(), task->input.size(), task->output.data());
    };
    kxbench::contender(
        task->operation, name, task->input.size(), [=] { benchmark::DoNotOptimize(call()); },
        [=] { return task->output.substr(0, call()) == task->expected; });
}

using Filling = void (*)(const std::string& in, std::string& out);
void addNew(const char* name, const TaskPointer& task, Filling fill) {
    const auto call = [=] {
        std::string out;
        fill(task->input, out);
        benchmark::DoNotOptimize(out.data());
        return out;
    };
    kxbench::contender(task->operation, name, task->input.size(), call,
                       [=] { return call() == task->expected; });
}

void addCopy(const TaskPointer& task) {
    kxbench::contender(
        task->operation, "limit memcpy", task->input.size(),
        [=] { std::memcpy(task->output.data(), task->input.data(), task->input.size()); },
        [=] { return task->output.compare(0, task->input.size(), task->input) == 0; });
}

#if KXBENCH_ABSEIL
void addReused(const char* name, const TaskPointer& task, Filling fill) {
    kxbench::contender(
        task->operation, name, task->input.size(), [=] { fill(task->input, task->output); },
        [=] { return task->output == task->expected; });
}

void abseilEncode(const std::string& in, std::string& out) { absl::Base64Escape(in, &out); }
void abseilDecode(const std::string& in, std::string& out) { absl::Base64Unescape(in, &out); }
#endif

void addEncoding(const std::string& bytes) {
    std::string text(bytes.size() / 3 * 4 + 5, '\0');
    text.resize(plain::base64Encode(bytes.data(), bytes.size(), text.data()));

    const TaskPointer raw = makeTask("kxBase64::encode", bytes, text);
    addRaw("kxUtils", raw, kxBase64::encode);
    addRaw("plain loop", raw, plain::base64Encode);
    const TaskPointer fresh = makeTask("kxBase64::encode, new string", bytes, text);
    addNew("kxUtils", fresh,
           [](const std::string& in, std::string& out) { kxBase64::encode(in, out); });
#if KXBENCH_ABSEIL
    addReused("abseil", makeTask("kxBase64::encode", bytes, text), abseilEncode);
    addNew("abseil", fresh, abseilEncode);
#endif
    addCopy(raw);
}

void addDecoding(const std::string& operation, const std::string& text) {
    std::string bytes(text.size(), '\0');
    bytes.resize(plain::base64Decode(text.data(), text.size(), bytes.data()));

    const TaskPointer raw = makeTask(operation, text, bytes);
    addRaw("kxUtils", raw, kxBase64::decode);
    addRaw("plain loop", raw, plain::base64Decode);
    const TaskPointer fresh = makeTask(operation + ", new string", text, bytes);
    addNew("kxUtils", fresh,
           [](const std::string& in, std::string& out) { kxBase64::decode(in, out); });
#if KXBENCH_ABSEIL
    addReused("abseil", makeTask(operation, text, bytes), abseilDecode);
    addNew("abseil", fresh, abseilDecode);
#endif
    addCopy(raw);
}

/// A text of `size` characters with a line break after every 76, and up to 3 more at the end to
/// complete the last group.
std::string lines(std::size_t size) {
    std::string text = kxbench::base64Text(size);
    for (std::size_t at = 76; at < size; at += 77) text[at] = '\n';
    const std::size_t characters = size - size / 77;
    for (std::size_t i = 0; i < characters % 4; ++i) text[size - 1 - i] = '\n';
    return text;
}

const bool registered = [] {
    for (const std::size_t size : kxbench::sizes) addEncoding(kxbench::randomBytes(size));
    for (const std::size_t size : kxbench::sizes)
        addDecoding("kxBase64::decode", kxbench::base64Text(size));
    for (const std::size_t size : kxbench::sizes)
        if (size > 76) addDecoding("kxBase64::decode, lines", lines(size));
    return true;
}();

}  // namespace
