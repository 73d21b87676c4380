// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Path names and their expansion in comparison with std::filesystem, Abseil, GLib and wordexp.
#include <pwd.h>
#include <unistd.h>
#include <wordexp.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "kxFile.h"
#include "kxbench.h"

#if KXBENCH_ABSEIL
#include <absl/strings/match.h>
#endif
#if KXBENCH_GLIB
#include <glib.h>
#endif

namespace {

using std::filesystem::path;

const std::string root = "/usr/share/engine/talo";

// A path below `root` of exactly `size` characters. In a long path the name is also long: it does
// not fit into the string object, so extracting it allocates.
std::string samplePath(std::size_t size) {
    const std::string name =
        size < 100 ? "/part_0042.obj" : "/engine_block_left_rear_mounting_bracket_0042.obj";
    std::string text = root;
    while (text.size() + name.size() < size) text += "/models/engine";
    text.resize(size - name.size());
    if (text.back() == '/') text.back() = 's';
    return text + name;
}

// The home directory that the user database has for the effective user. "~" stands for it, and
// expanding "~" spends nearly all of its time in this one call.
std::string home() {
    char buffer[4096];
    passwd entry;
    passwd* found = nullptr;
    return getpwuid_r(geteuid(), &entry, buffer, sizeof buffer, &found) == 0 && found
               ? found->pw_dir
               : "";
}

// How an application would do it if it needed only variables.
std::string replaceVariables(std::string text) {
    for (std::size_t dollar = 0; (dollar = text.find('$', dollar)) != std::string::npos;) {
        const std::size_t end = std::min(text.find('/', dollar), text.size());
        const char* const value = std::getenv(text.substr(dollar + 1, end - dollar - 1).c_str());
        if (!value) return text;
        text.replace(dollar, end - dollar, value);
    }
    return text;
}

std::string byWordexp(const std::string& text) {
    wordexp_t words;
    if (wordexp(text.c_str(), &words, WRDE_NOCMD) != 0) return {};
    std::string result = words.we_wordc == 1 ? words.we_wordv[0] : "";
    wordfree(&words);
    return result;
}

// One contender, which must return `expected`.
template <class Expected, class Run>
void compare(const std::string& operation, const std::string& name, std::size_t size,
             const Expected& expected, Run run) {
    kxbench::contender(
        "kxFile::" + operation, name, size,
        [run] {
            auto result = run();
            benchmark::DoNotOptimize(result);
        },
        [run, expected] { return run() == expected; });
}

void compareWithCopy(const std::string& operation, std::size_t size, const std::string& expected) {
    compare(operation, "limit copying the result", size, expected, [expected] { return expected; });
}

void registerParts(std::size_t size) {
    const std::string file = samplePath(size), extension = "obj", other = "vrml";
    const std::size_t slash = file.rfind('/'), dot = file.rfind('.');

    const std::string name = file.substr(slash + 1);
    compare("getFileName", "kxUtils", size, name, [=] { return kxFile::getFileName(file); });
    compare("getFileName", "std::filesystem", size, name,
            [=] { return path(file).filename().string(); });
    compareWithCopy("getFileName", size, name);

    const std::string directory = file.substr(0, slash);
    compare("getFilePath", "kxUtils", size, directory, [=] { return kxFile::getFilePath(file); });
    compare("getFilePath", "std::filesystem", size, directory,
            [=] { return path(file).parent_path().string(); });
    compareWithCopy("getFilePath", size, directory);

#if KXBENCH_GLIB
    const auto owned = [](char* text) {
        std::string result = text;
        g_free(text);
        return result;
    };
    compare("getFileName", "GLib", size, name,
            [=] { return owned(g_path_get_basename(file.c_str())); });
    compare("getFilePath", "GLib", size, directory,
            [=] { return owned(g_path_get_dirname(file.c_str())); });
#endif

    compare("getExtension", "kxUtils", size, extension, [=] { return kxFile::getExtension(file); });
    compare("getExtension", "std::filesystem", size, "." + extension,
            [=] { return path(file).extension().string(); });
    compareWithCopy("getExtension", size, extension);

    const std::string base = file.substr(slash + 1, dot - slash - 1);
    compare("getBaseName", "kxUtils", size, base, [=] { return kxFile::getBaseName(file); });
    compare("getBaseName", "std::filesystem", size, base,
            [=] { return path(file).stem().string(); });
    compareWithCopy("getBaseName", size, base);

    const std::string replaced = file.substr(0, dot + 1) + other;
    compare("setExtension", "kxUtils", size, replaced,
            [=] { return kxFile::setExtension(file, other); });
    compare("setExtension", "std::filesystem", size, replaced,
            [=] { return path(file).replace_extension(other).string(); });
    compareWithCopy("setExtension", size, replaced);

    compare("hasExtension", "kxUtils", size, true,
            [=] { return kxFile::hasExtension(file, extension); });
    compare("hasExtension", "std::filesystem", size, true,
            [=] { return path(file).extension() == ".obj"; });
#if KXBENCH_ABSEIL
    compare("hasExtension", "Abseil", size, true,
            [=] { return absl::EndsWithIgnoreCase(file, extension); });
#endif
}

void registerJoins(std::size_t size) {
    const std::string file = samplePath(size), below = file.substr(root.size() + 1);

    const std::string plugins = root + "/plugins/render", relative = "../../" + below;
    compare("abs2Rel", "kxUtils", size, relative, [=] { return kxFile::abs2Rel(plugins, file); });
    compare("abs2Rel", "std::filesystem", size, relative,
            [=] { return path(file).lexically_relative(plugins).string(); });
    compareWithCopy("abs2Rel", size, relative);

    compare("rel2Abs", "kxUtils", size, file, [=] { return kxFile::rel2Abs(root, below); });
    compare("rel2Abs", "std::filesystem normal", size, file,
            [=] { return (path(root) / below).lexically_normal().string(); });
    compare("rel2Abs", "std::filesystem", size, file,
            [=] { return (path(root) / below).string(); });
    compareWithCopy("rel2Abs", size, file);
}

void registerExpansions(std::size_t size) {
    const std::string file = samplePath(size), below = file.substr(root.size());

    compare("expandFilename(name)", "kxUtils", size, file,
            [=] { return kxFile::expandFilename(file); });
    compare("expandFilename(name)", "wordexp", size, file, [=] { return byWordexp(file); });
    compare("expandFilename(name)", "getenv loop", size, file,
            [=] { return replaceVariables(file); });
    compareWithCopy("expandFilename(name)", size, file);

    const std::string variable = "$KXBENCH_ROOT" + below;
    compare("expandFilename($)", "kxUtils", size, file,
            [=] { return kxFile::expandFilename(variable); });
    compare("expandFilename($)", "wordexp", size, file, [=] { return byWordexp(variable); });
    compare("expandFilename($)", "getenv loop", size, file,
            [=] { return replaceVariables(variable); });
    compare("expandFilename($)", "limit getenv and copying the result", size, file, [=] {
        benchmark::DoNotOptimize(std::getenv("KXBENCH_ROOT"));
        return file;
    });

    if (home().empty()) return;  // the user database does not know the effective user
    const std::string tilde = "~" + below, owned = home() + below;
    compare("expandFilename(~)", "kxUtils", size, owned,
            [=] { return kxFile::expandFilename(tilde); });
    compare("expandFilename(~)", "wordexp", size, owned, [=] { return byWordexp(tilde); });
    compare("expandFilename(~)", "limit getpwuid_r", size, home(), [] { return home(); });
}

const bool registered = [] {
    setenv("KXBENCH_ROOT", root.c_str(), /*overwrite=*/1);
    unsetenv("HOME");  // otherwise wordexp takes "~" from there without the database
    for (const std::size_t size : {45u, 200u, 1024u}) {
        registerParts(size);
        registerJoins(size);
        registerExpansions(size);
    }
    return true;
}();

}  // namespace
