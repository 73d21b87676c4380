// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The cached streams: any sequence of operations on an input or output stream does what the models
// do, which work on strings in place of files.
#include <unistd.h>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "input.h"
#include "reference/cached_input_model.h"
#include "reference/cached_output_model.h"
#include "support.h"

using kxfuzz::require;
using kxfuzz::requireEqual;

namespace {

constexpr std::ios_base::openmode modes[] = {std::ios_base::in, std::ios_base::out,
                                             std::ios_base::in | std::ios_base::out,
                                             std::ios_base::openmode{}};
constexpr std::ios_base::seekdir directions[] = {std::ios_base::beg, std::ios_base::cur,
                                                 std::ios_base::end};

// Mostly within the file, sometimes far beyond its end or before its start.
long randomOffset(kxfuzz::Input& input) {
    const long offset = static_cast<signed char>(input.byte());
    return input.flag() ? offset : offset * (1L << 24);
}

void checkInput(kxfuzz::Input& input) {
    const std::size_t bufferSize = 1 + input.upTo(63);
    const std::string content = input.text();
    const std::string path = kxfuzz::privateFolder() + "/in";
    kxfuzz::writeFile(path, content);

    cached_ifstream in(path.c_str(), bufferSize);
    auto& buffer = static_cast<cached_istreambuf&>(*in.rdbuf());
    reference::CachedInput model(content, bufferSize);
    require(in.good(), "a file that is there is not open");
    const auto isEnd = [](int c) { return c == reference::CachedInput::endOfFile; };
    while (!input.empty()) {
        in.clear();
        switch (input.upTo(15)) {
            case 0: {
                const int expected = model.get();
                requireEqual("get", in.get(), expected);
                requireEqual("state after get", in.fail(), isEnd(expected));
                break;
            }
            case 1:
                requireEqual("peek", in.peek(), model.peek());
                break;
            case 2: {
                std::string expected, got(input.upTo(150), '\0');
                for (int c = 0; expected.size() < got.size() && !isEnd(c = model.get());)
                    expected += static_cast<char>(c);
                in.read(got.data(), static_cast<std::streamsize>(got.size()));
                requireEqual("state after read", in.fail(), expected.size() < got.size());
                got.resize(static_cast<std::size_t>(in.gcount()));
                requireEqual("bytes of read", got, expected);
                break;
            }
            case 3: {
                const int expected = model.putBack();
                in.unget();
                requireEqual("state after unget", in.bad(), isEnd(expected));
                break;
            }
            case 4: {
                const char c = static_cast<char>(input.byte());
                const int expected = model.putBack(c);
                in.putback(c);
                requireEqual("state after putback", in.bad(), isEnd(expected));
                break;
            }
            case 5: {  // the character there, as far as the model knows it
                const int expected = model.putBack();
                requireEqual("sungetc", buffer.sungetc(), expected);
                if (!isEnd(expected)) {
                    model.get();
                    requireEqual("sbumpc", buffer.sbumpc(), expected);
                    model.putBack(static_cast<char>(expected));
                    requireEqual("sputbackc", buffer.sputbackc(static_cast<char>(expected)),
                                 expected);
                }
                break;
            }
            case 6:
                requireEqual("tellg", static_cast<long>(in.tellg()),
                             model.seekOffset(0, std::ios_base::cur, std::ios_base::in));
                break;
            case 7: {
                const long position = randomOffset(input);
                const long expected = model.seekPosition(position, std::ios_base::in);
                in.seekg(position);
                requireEqual("state after seekg", in.fail(), expected == -1);
                break;
            }
            case 8: {
                const long offset = randomOffset(input);
                const auto direction = directions[input.upTo(2)];
                const long expected = model.seekOffset(offset, direction, std::ios_base::in);
                in.seekg(offset, direction);
                requireEqual("state after relative seekg", in.fail(), expected == -1);
                break;
            }
            case 9: {
                const long position = randomOffset(input);
                const auto which = modes[input.upTo(3)];
                requireEqual("pubseekpos", static_cast<long>(buffer.pubseekpos(position, which)),
                             model.seekPosition(position, which));
                break;
            }
            case 10: {
                const long offset = randomOffset(input);
                const auto direction = directions[input.upTo(2)];
                const auto which = modes[input.upTo(3)];
                requireEqual("pubseekoff",
                             static_cast<long>(buffer.pubseekoff(offset, direction, which)),
                             model.seekOffset(offset, direction, which));
                break;
            }
            case 11:
                requireEqual("in_avail", static_cast<long>(buffer.in_avail()), model.available());
                break;
            case 12: {  // the character after the current one
                const int expected = isEnd(model.get()) ? -1 : model.peek();
                requireEqual("snextc", buffer.snextc(), expected);
                break;
            }
            case 13: {
                const bool isOpen = model.isOpen();
                in.close();
                model.close();
                requireEqual("state after close", in.bad(), !isOpen);
                break;
            }
            case 14:  // only for a closed stream: the file of an open one would be lost
                if (!model.isOpen()) {
                    buffer.open(path.c_str());
                    model.open();
                }
                break;
            default:
                requireEqual("pubsync", buffer.pubsync(), 0);
                break;
        }
        requireEqual("is_valid", buffer.is_valid(), model.isOpen());
        if (model.isOpen())
            requireEqual("position", static_cast<long>(buffer.pubseekoff(0, std::ios_base::cur)),
                         model.filePosition());
    }
}

void checkOutput(kxfuzz::Input& input) {
    const std::uint32_t kind = input.upTo(7);
    const std::size_t bufferSize = input.upTo(63);
    const bool isCounting = kind < 2;
    const std::string path = kxfuzz::privateFolder() + "/out";
    const std::string fullDevice = "/dev/full";
    const bool isFull = kind == 2 && access(fullDevice.c_str(), W_OK) == 0;
    unlink(path.c_str());
    reference::CachedOutput model(kind == 0 ? 0 : bufferSize, isCounting, isFull);
    {
        cached_ofstream counting,
            named(isCounting ? nullptr : (isFull ? fullDevice : path).c_str(), bufferSize);
        cached_ofstream& out = kind == 0 ? counting : named;
        auto& buffer = static_cast<cached_streambuf&>(*out.rdbuf());
        require(out.good(), "a stream cannot be opened");
        while (!input.empty()) {
            out.clear();
            switch (input.upTo(8)) {
                case 0: {
                    const char c = static_cast<char>(input.byte());
                    out.put(c);
                    model.put(c);
                    break;
                }
                case 1: {
                    const std::string bytes(input.upTo(150), static_cast<char>(input.byte()));
                    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
                    for (const char c : bytes) model.put(c);
                    break;
                }
                case 2: {
                    const std::string bytes = input.text();
                    requireEqual(
                        "sputn",
                        buffer.sputn(bytes.data(), static_cast<std::streamsize>(bytes.size())),
                        static_cast<std::streamsize>(bytes.size()));
                    for (const char c : bytes) model.put(c);
                    break;
                }
                case 3: {
                    const unsigned char c = static_cast<unsigned char>(input.byte());
                    const int expected = model.hasRoom() ? c : 0;
                    model.put(static_cast<char>(c));
                    requireEqual("sputc", buffer.sputc(static_cast<char>(c)), expected);
                    break;
                }
                case 4:
                    out.flush();
                    model.flush();
                    break;
                case 5: {
                    const std::string bytes = input.text();
                    buffer.write_buffer(bytes.data(), bytes.size());
                    model.write(bytes);
                    break;
                }
                case 6: {
                    const bool isValid = model.isValid();
                    out.close();
                    model.close();
                    requireEqual("state after close", out.bad(), !isValid);
                    out.clear();
                    break;
                }
                case 7:  // only for a closed stream: the file of an open one would be lost
                    if (!model.isOpen()) {
                        buffer.open(path.c_str());
                        model.open();
                    }
                    break;
                default:
                    requireEqual("tellp", static_cast<long>(out.tellp()), -1L);
                    out.seekp(0);
                    require(out.fail(), "an output stream can be positioned");
                    out.clear();
                    break;
            }
            require(out.good(), "an operation has failed");
            requireEqual("is_valid", buffer.is_valid(), model.isValid());
            requireEqual("size", static_cast<long>(out.size()), model.count());
            requireEqual("file", kxfuzz::readFile(path), model.file());
        }
    }
    model.close();
    requireEqual("file in the end", kxfuzz::readFile(path), model.file());
    requireEqual("standard error", kxfuzz::takeErr(),
                 std::string(model.hasFailed() ? "cached_streambuf::write_buffer: failed!\n" : ""));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::holdConsole();
    kxfuzz::Input input(data, size);
    if (input.flag())
        checkOutput(input);
    else
        checkInput(input);
    return 0;
}
