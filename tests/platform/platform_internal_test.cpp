// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "detail/platform/browser.h"
#include "detail/platform/entered_directory.h"
#include "detail/platform/executable_path.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "child.h"
#include "kxtest.h"

// --- Entering a directory -----------------------------------------------------------------------
// Compares what entering a directory would do with actually entering it, in processes that may go
// where they like.

namespace {

using kx::detail::directoryAfterEntering;

constexpr std::size_t maxLength = 2047;

/// An open directory to which the test returns.
class Place {
public:
    explicit Place(const std::string& path)
        : _descriptor(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
    ~Place() { close(_descriptor); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    bool enter() const { return fchdir(_descriptor) == 0; }
    bool isHere() const {
        struct stat here {
        }, there{};
        return stat(".", &here) == 0 && fstat(_descriptor, &there) == 0 &&
               here.st_dev == there.st_dev && here.st_ino == there.st_ino;
    }

private:
    int _descriptor;
};

std::string text(const std::optional<std::string>& answer) {
    return answer ? '"' + *answer + '"' : "not entered";
}

/// Enters the directory and reports what really happens.
std::optional<std::string> enter(const std::string& path) {
    if (chdir(path.c_str()) != 0) return std::nullopt;
    char buffer[maxLength + 1];
    return getcwd(buffer, sizeof buffer) ? buffer : "";
}

/// Whether the path of a directory can be found from its parts alone.
bool isNamed(const std::string& path) {
    char buffer[PATH_MAX];
    return realpath(path.c_str(), buffer) != nullptr;
}

/// Directories of all kinds: some closed in one way or another, links to them, a loop, and a chain
/// whose path has about the greatest length.
class Tree {
public:
    Tree() {
        chmod(_dir.path().c_str(), 0755);
        const std::vector<std::string> names = {"a", "b", "c", "d"};
        for (const std::string& one : names) {
            for (const std::string& two : names) {
                for (const std::string& three : names) makeDir(one + '/' + two + '/' + three);
            }
        }
        _dir.write("a/file", "");
        // Executable, but not a directory.
        chmod(_dir.write("b/c/file", "").c_str(), 0777);
        link("loop", "loop");
        link("..", "a/up");
        link("../b/c", "a/over");
        link("c/d", "b/down");
        link(_dir.file("d/a"), "c/absolute");
        link("missing", "c/dangling");
        link("a/up/b/down", "chain");
        std::string deep = "deep";
        while (_dir.file(deep).size() < maxLength - 10) {
            const std::size_t left = maxLength - 5 - _dir.file(deep).size();
            deep += '/' + std::string(std::min<std::size_t>(left - 1, 200), 'x');
        }
        for (const char* name : {"a", "b", "c", "abcdefghijkl"}) makeDir(deep + '/' + name);
        for (const char* name : {"", "a", "a/b", "b/c", "c", "d/a/b", "deep", "c/d"})
            _places.push_back(std::make_unique<Place>(_dir.file(name)));
        _places.push_back(std::make_unique<Place>(_dir.file(deep)));
        const std::string deleted = makeDir("deleted");
        _places.push_back(std::make_unique<Place>(deleted));
        rmdir(deleted.c_str());
        // From the inside to the outside, because a closed directory hides what is in it.
        const std::pair<const char*, mode_t> modes[] = {
            {"d/a/c", 0}, {"d/a", 0111}, {"d/b", 0444}, {"d", 0222},   {"c/d/a", 0},
            {"c/d", 0},   {"c/b", 0666}, {"b/a", 0111}, {"b/b", 0333}, {"a/b/d", 0444},
        };
        for (const auto& [name, mode] : modes) close(name, mode);
    }
    ~Tree() {
        for (auto name = _closed.rbegin(); name != _closed.rend(); ++name)
            chmod(name->c_str(), 0777);
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// Compares the answers with reality for `count` paths. Returns "" or a description of what was
    /// wrong; also fails if too few directories were entered or refused for the comparison to mean
    /// anything. If `byNameOnly`, "" is also right for a directory without a name.
    std::string compare(int count, bool byNameOnly = false) const {
        std::mt19937 random(1);
        std::string wrong;
        int entered = 0, refused = 0, here = 0;
        // In the last place, which is deleted, there is no way to tell whether a path leads
        // anywhere.
        const std::size_t places = _places.size() - (kxtest::exists(_dir.path()) ? 0 : 1);
        for (int i = 0; i < count; ++i) {
            const Place& place = *_places[random() % places];
            if (!place.enter()) continue;
            ++here;
            const std::string path = randomPath(random);
            const auto answer = directoryAfterEntering(path, maxLength);
            if (!place.isHere()) wrong += "moved by " + path + '\n';
            const bool mayBeNone = byNameOnly && !isNamed(path);
            const auto truth = path.empty() ? std::nullopt : enter(path);
            if (answer != truth && !(mayBeNone && truth && answer == ""))
                wrong += path + ": " + text(answer) + " != " + text(truth) + '\n';
            ++(truth ? entered : refused);
            if (wrong.size() > 2000) break;
        }
        if (here < count / 2 || entered < count / 20 || refused < count / 20)
            wrong += "entered " + std::to_string(entered) + ", refused " + std::to_string(refused) +
                     " of " + std::to_string(count) + '\n';
        return wrong;
    }

    const kxtest::TempDir& dir() const { return _dir; }

private:
    std::string makeDir(const std::string& name) {
        std::string path = _dir.path();
        for (std::size_t end = 0; end < name.size();) {
            const std::size_t begin = end;
            end = std::min(name.find('/', begin + 1), name.size());
            path.append(begin == 0 ? "/" : "").append(name, begin, end - begin);
            mkdir(path.c_str(), 0777);
            chmod(path.c_str(), 0777);
        }
        return path;
    }
    void link(const std::string& target, const std::string& name) {
        if (symlink(target.c_str(), _dir.file(name).c_str()) != 0) ADD_FAILURE() << name;
    }
    void close(const std::string& name, mode_t mode) {
        if (chmod(_dir.file(name).c_str(), mode) != 0) ADD_FAILURE() << name;
        _closed.push_back(_dir.file(name));
    }

    std::string randomPath(std::mt19937& random) const {
        static const char* const parts[] = {
            "a",     "b",     "c",     "d",        "a",        "b",       "c",
            "d",     "..",    "..",    "..",       ".",        "",        "up",
            "over",  "down",  "chain", "loop",     "file",     "none",    "deep",
            "a/b/c", "d/a/b", "../..", "absolute", "dangling", "deleted", "abcdefghijkl",
        };
        std::string path;
        switch (random() % 8) {
            case 0:
                path = _dir.path() + '/';
                break;
            case 1:
                path = random() % 4 == 0 ? "/" : _dir.file("chain/");
                break;
            case 2:
                path = _dir.file("d/a/");
                break;
            default:
                break;
        }
        for (auto n = random() % 6; n > 0; --n) {
            path += parts[random() % std::size(parts)];
            if (n > 1 || random() % 4 == 0) path += '/';
        }
        return path;
    }

    const kxtest::TempDir _dir;
    std::vector<std::unique_ptr<Place>> _places;
    std::vector<std::string> _closed;
};

constexpr int manyPaths = 20000;

}  // namespace

TEST(EnteredDirectory, IsWhereOneWouldBe) {
    const Tree tree;
    EXPECT_EQ(kxtest::inChild([&] { return tree.compare(manyPaths); }), "");
}

TEST(EnteredDirectory, IsWhereAnOrdinaryUserWouldBe) {
    const Tree tree;
    EXPECT_EQ(kxtest::asOrdinaryUser([&] { return tree.compare(manyPaths); }), "");
}

TEST(EnteredDirectory, IsFoundByNameWithoutDescriptors) {
    const Tree tree;
    const auto compare = [&]() -> std::string {
        const rlimit none{0, 0};
        if (setrlimit(RLIMIT_NOFILE, &none) != 0) return "cannot set the limit";
        return tree.compare(manyPaths, /*byNameOnly=*/true);
    };
    EXPECT_EQ(kxtest::inChild(compare), "");
    EXPECT_EQ(kxtest::asOrdinaryUser(compare), "");
}

TEST(EnteredDirectory, IsNoneForAnEmptyPath) {
    EXPECT_EQ(directoryAfterEntering("", maxLength), std::nullopt);
}

TEST(EnteredDirectory, HasAsManyCharactersAsAreAskedFor) {
    const kxtest::TempDir dir;
    const std::string path = dir.makeDir("some");
    EXPECT_EQ(directoryAfterEntering(path, path.size()), path);
    EXPECT_EQ(directoryAfterEntering(path, path.size() - 1), "");
    EXPECT_EQ(directoryAfterEntering(dir.file("none"), 1), std::nullopt);
}

// The chain of directories is longer than any path that the system takes or gives.
TEST(EnteredDirectory, MayHaveAPathThatNoCallTakes) {
    const kxtest::TempDir dir;
    EXPECT_EQ(kxtest::inChild([&]() -> std::string {
                  const std::string name(200, 'x');
                  if (chdir(dir.path().c_str()) != 0) return "cannot enter it";
                  for (int i = 0; i < 25; ++i) {
                      if (mkdir(name.c_str(), 0777) != 0 || chdir(name.c_str()) != 0)
                          return "cannot make it";
                  }
                  std::string up = "..";
                  for (int i = 1; i < 25; ++i) up += "/..";
                  return text(directoryAfterEntering(".", maxLength)) +
                         text(directoryAfterEntering("..", maxLength)) +
                         text(directoryAfterEntering(up, maxLength)) +
                         text(directoryAfterEntering("missing", maxLength));
              }),
              "\"\"\"\"\"" + dir.path() + "\"not entered");
}

// A name that looks like the mark with which the system shows a deleted directory's path.
TEST(EnteredDirectory, MayBeCalledDeleted) {
    const kxtest::TempDir dir;
    const std::string path = dir.makeDir("closed/some (deleted)/below (deleted)");
    const kxtest::ScopedCwd cwd(dir.file("closed/some (deleted)"));
    EXPECT_EQ(directoryAfterEntering(".", maxLength), dir.file("closed/some (deleted)"));
    ASSERT_EQ(chmod(path.c_str(), 0755), 0);
    ASSERT_EQ(chmod(dir.file("closed").c_str(), 0), 0);
    EXPECT_EQ(kxtest::asOrdinaryUser(
                  [] { return text(directoryAfterEntering("below (deleted)", maxLength)); }),
              '"' + path + '"');
    chmod(dir.file("closed").c_str(), 0755);
}

// --- Programs -----------------------------------------------------------------------------------

TEST(ExecutablePath, IsThatOfTheRunningProgram) {
    const std::filesystem::path path = kx::detail::executablePath();
    EXPECT_EQ(path.stem(), "platform_internal_test");  // an emulator's program has an extension
    // The link is read, not followed, since it would lead to the emulator.
    EXPECT_TRUE(std::filesystem::equivalent(path, std::filesystem::read_symlink("/proc/self/exe")));
}

// A shell that is started without PATH has its own default path, so the commands of the machine
// count.
TEST(Browser, IsWhatTheShellFindsWithoutPath) {
    const auto shell = kxtest::run({"/bin/sh", "-c",
                                    "o=$(command -v open) && "
                                    "! [ \"$o\" -ef \"$(command -v xdg-open)\" ] && "
                                    "! [ \"$o\" -ef \"$(command -v run-mailcap)\" ]"});
    const kxtest::ScopedEnv path("PATH", nullptr);
    EXPECT_EQ(kx::detail::browserCommand(), shell.exitCode == 0 ? "open -a Safari " : "xdg-open ");
}
