// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// kxFile::expandFilename: for paths and environments of all kinds it returns what the model
// returns, with equal errors in the log. The environment of the process is put aside meanwhile.
#include <pwd.h>
#include <unistd.h>

#include <vector>

#include "input.h"
#include "kxFile.h"
#include "kxLog.h"
#include "reference/expand.h"
#include "support.h"

using kxfuzz::requireEqual;

extern char** environ;

namespace {

std::vector<std::string> errors;

// During its lifetime the environment is `variables` and nothing else.
class Environment {
public:
    explicit Environment(const std::map<std::string, std::string>& variables) {
        for (const auto& [name, value] : variables) _entries.push_back(name + '=' + value);
        for (std::string& entry : _entries) _pointers.push_back(entry.data());
        _pointers.push_back(nullptr);
        environ = _pointers.data();
    }
    ~Environment() { environ = _old; }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    char** const _old = environ;
    std::vector<std::string> _entries;
    std::vector<char*> _pointers;
};

// Like the user database: no user's name is empty or contains a zero byte.
std::optional<std::string> home(const std::string& user) {
    if (user.find('\0') != std::string::npos) return std::nullopt;
    const passwd* const entry = user.empty() ? getpwuid(geteuid()) : getpwnam(user.c_str());
    if (!entry) return std::nullopt;
    return entry->pw_dir;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + '\n';
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    kxfuzz::holdConsole();
    kxLog::setErrorCB([](const char* text) { errors.emplace_back(text); });
    kxfuzz::Input input(data, size);
    const std::string path = input.longText();
    reference::World world;
    world.home = home;
    while (!input.empty() && world.variables.size() < 16) {
        const std::string name = input.text(), value = input.longText();
        // Only what an environment can hold.
        if (!name.empty() && name.find('=') == std::string::npos &&
            name.find('\0') == std::string::npos)
            world.variables[name] = value.substr(0, value.find('\0'));
    }

    errors.clear();
    std::string got;
    {
        const Environment environment(world.variables);
        got = kxFile::expandFilename(path);
    }
    const reference::Expansion expected = reference::expand(path, world);
    requireEqual("expanded path", got, expected.text);
    requireEqual("errors", joined(errors), joined(expected.errors));
    std::string console;
    for (const std::string& error : expected.errors) console += "\033[31m" + error + "\n\033[0m";
    if (expected.tooLong)
        console +=
            "kxFile::expandFilename: skipped expanding environment variable, path too long!\n";
    requireEqual("standard error", kxfuzz::takeErr(), console);
    requireEqual("standard output", kxfuzz::takeOut(), std::string());
    return 0;
}
