// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxUtils.h"

#include <gtest/gtest.h>

#include <climits>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "kxFile.h"
#include "kxtest.h"

// --- Host bridge ---------------------------------------------------------------------------------

namespace {

/// What the host below was last asked, and what it answers.
struct Host {
    int calls = 0;
    const char* request = nullptr;
    kxMessage* message = nullptr;
    unsigned id = 99;
    std::map<std::string, boost::any> attributes;
    int flags = 0;
    bool answer = true;
};
Host host;

bool callback(const char* request, kxMessage& message, int flags) {
    ++host.calls;
    host.request = request;
    host.message = &message;
    host.id = message.id();
    host.attributes = message.getMap();
    host.flags = flags;
    message.set("reply", 1, true);
    return host.answer;
}

bool otherCallback(const char*, kxMessage& message, int) {
    message.set("other", 1, true);
    return true;
}

class HostBridge : public testing::Test {
protected:
    HostBridge() { host = Host(); }
    ~HostBridge() override { kxUtils::init(nullptr); }
};

}  // namespace

TEST_F(HostBridge, RefusesQuietlyWithoutCallback) {  // also before init
    kxMessage message(7, "text", std::string("hello"), "number", 1);
    kxtest::Captured out(stdout), err(stderr);
    EXPECT_FALSE(kxUtils::call("showMainWarning", message, 0));
    EXPECT_FALSE(kxUtils::call("showMainWarning", 0));
    EXPECT_EQ(message.id(), 7U);
    EXPECT_EQ(message.getMap().size(), 2U);
    EXPECT_EQ(boost::any_cast<std::string>(message.get("text")), "hello");
    EXPECT_EQ(boost::any_cast<int>(message.get("number")), 1);
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST_F(HostBridge, PassesAllArgumentsUnchanged) {
    kxUtils::init(callback);
    const std::string request = "any request";
    for (const int flags : {0, 1, -1, INT_MAX, INT_MIN}) {
        kxMessage message(7, "number", 1);
        EXPECT_TRUE(kxUtils::call(request.c_str(), message, flags));
        EXPECT_EQ(host.request, request.c_str());
        EXPECT_EQ(host.message, &message);
        EXPECT_EQ(host.id, 7U);
        EXPECT_EQ(host.attributes.size(), 1U);
        EXPECT_EQ(host.flags, flags);
        EXPECT_TRUE(message.exists("reply"));  // the host writes into the caller's record
    }
    EXPECT_EQ(host.calls, 5);
    kxMessage message;
    EXPECT_TRUE(kxUtils::call(nullptr, message, 0));
    EXPECT_EQ(host.request, nullptr);
}

TEST_F(HostBridge, PassesAnEmptyRecordWhereTheCallerHasNone) {
    kxUtils::init(callback);
    for (const int flags : {3, INT_MIN}) {
        EXPECT_TRUE(kxUtils::call("name", flags));
        EXPECT_STREQ(host.request, "name");
        EXPECT_EQ(host.id, 0U);
        EXPECT_TRUE(host.attributes.empty());  // also the second time, since the reply is discarded
        EXPECT_EQ(host.flags, flags);
    }
}

TEST_F(HostBridge, FlagsAreZeroUnlessGiven) {
    kxUtils::init(callback);
    kxMessage message;
    host.flags = 5;
    kxUtils::call("name", message);
    EXPECT_EQ(host.flags, 0);
    host.flags = 5;
    kxUtils::call("name");
    EXPECT_EQ(host.flags, 0);
}

TEST_F(HostBridge, TheAnswerIsTheHosts) {
    kxUtils::init(callback);
    kxMessage message;
    host.answer = false;
    EXPECT_FALSE(kxUtils::call("name", message, 0));
    EXPECT_FALSE(kxUtils::call("name", 0));
    EXPECT_EQ(host.calls, 2);
    EXPECT_TRUE(message.exists("reply"));
    host.answer = true;
    EXPECT_TRUE(kxUtils::call("name", message, 0));
    EXPECT_TRUE(kxUtils::call("name", 0));
}

TEST_F(HostBridge, InitReplacesTheCallbackAndNullRemovesIt) {
    kxUtils::init(callback);
    kxUtils::init(otherCallback);
    kxMessage message;
    EXPECT_TRUE(kxUtils::call("name", message, 0));
    EXPECT_EQ(host.calls, 0);
    EXPECT_TRUE(message.exists("other"));
    kxUtils::init(nullptr);
    message.clear();
    EXPECT_FALSE(kxUtils::call("name", message, 0));
    EXPECT_TRUE(message.getMap().empty());
}

TEST_F(HostBridge, AQuestionWithoutAnAnswerCountsAsTheFirstButton) {
    kxMessage question;
    question.set("text", std::string("Overwrite?"), true);
    question.set("button0", std::string("&Yes"), true);
    kxtest::Captured err(stderr);
    int answer = 0;
    kxUtils::call("showMainWarning", question, 0);  // no callback
    EXPECT_FALSE(getFromMessage(question, "button", answer));
    EXPECT_EQ(answer, 0);
    kxUtils::init(callback);  // a host that does not show dialogs
    kxUtils::call("showMainWarning", question, 0);
    EXPECT_FALSE(getFromMessage(question, "button", answer));
    EXPECT_EQ(answer, 0);
    EXPECT_EQ(err.text(), "");
    question.set("button", std::string("2"), true);  // a reply of the wrong type
    EXPECT_FALSE(getFromMessage(question, "button", answer));
    EXPECT_EQ(answer, 0);
}

TEST_F(HostBridge, TheLibraryAsksInRecordZeroWithFlagsZero) {
    const kxtest::TempDir dir;
    const std::string file = dir.write("file", "old");
    kxUtils::init(callback);
    host.flags = 5;
    EXPECT_TRUE(kxFile::checkWrite(file, /*ask=*/true, /*log=*/false));
    EXPECT_EQ(host.calls, 1);
    EXPECT_STREQ(host.request, "showMainWarning");
    EXPECT_EQ(host.id, 0U);
    EXPECT_EQ(host.flags, 0);
    const auto textOf = [](const char* name) {
        return boost::any_cast<std::string>(host.attributes.at(name));
    };
    EXPECT_EQ(host.attributes.size(), 6U);
    EXPECT_EQ(textOf("text"), "File '" + file + "' already exists!\nOverwrite file?");
    EXPECT_EQ(textOf("button0"), "&Yes");
    EXPECT_EQ(textOf("button1"), "&No");
    EXPECT_EQ(textOf("button2"), "Cancel");
    EXPECT_EQ(boost::any_cast<int>(host.attributes.at("default button")), 0);
    EXPECT_EQ(boost::any_cast<int>(host.attributes.at("escape button")), 2);
}

TEST_F(HostBridge, TheLibrarysNoticeIsATextAlone) {
    const kxtest::TempDir dir;
    const std::string file = dir.file("missing");
    kxUtils::init(callback);
    host.flags = 5;
    host.answer = false;  // nothing looks at it
    EXPECT_FALSE(kxFile::checkRead(file, /*ask=*/true, /*log=*/false));
    EXPECT_EQ(host.calls, 1);
    EXPECT_STREQ(host.request, "showMainWarning");
    EXPECT_EQ(host.id, 0U);
    EXPECT_EQ(host.flags, 0);
    ASSERT_EQ(host.attributes.size(), 1U);
    EXPECT_EQ(boost::any_cast<std::string>(host.attributes.at("text")),
              "File '" + file + "' doesn't exist!");
}

// --- Environment ---------------------------------------------------------------------------------

TEST(UtilsEnvironment, IsSetReplacedAndRemoved) {
    const kxtest::ScopedEnv restored("KXTEST_A", nullptr);
    EXPECT_EQ(kxUtils::setenv("KXTEST_A", "1"), 0);
    EXPECT_STREQ(getenv("KXTEST_A"), "1");
    EXPECT_EQ(kxUtils::setenv("KXTEST_A", "2"), 0);
    EXPECT_STREQ(getenv("KXTEST_A"), "2");
    EXPECT_EQ(kxUtils::setenv("KXTEST_A", ""), 0);
    EXPECT_STREQ(getenv("KXTEST_A"), "");
    EXPECT_EQ(kxUtils::unsetenv("KXTEST_A"), 0);
    EXPECT_EQ(getenv("KXTEST_A"), nullptr);
    EXPECT_EQ(kxUtils::unsetenv("KXTEST_A"), 0);  // removing a variable that is not set is no error
}

TEST(UtilsEnvironment, NullIsRefusedAndChangesNothing) {
    const kxtest::ScopedEnv restored("KXTEST_A", "kept");
    EXPECT_EQ(kxUtils::setenv(nullptr, "x"), -1);
    EXPECT_EQ(kxUtils::setenv("KXTEST_A", nullptr), -1);
    EXPECT_EQ(kxUtils::setenv(nullptr, nullptr), -1);
    EXPECT_EQ(kxUtils::unsetenv(nullptr), -1);
    EXPECT_STREQ(getenv("KXTEST_A"), "kept");
}

TEST(UtilsEnvironment, ANameThatTheSystemRefusesIsAFailure) {
    for (const char* name : {"", "KXTEST_A=B"}) {
        EXPECT_EQ(kxUtils::setenv(name, "x"), -1) << name;
        EXPECT_EQ(kxUtils::unsetenv(name), -1) << name;
    }
    EXPECT_EQ(getenv("KXTEST_A"), nullptr);
}

// --- Shared libraries ----------------------------------------------------------------------------

namespace {

using Function = int (*)();

/// A library that is loaded during the object's lifetime.
class Library {
public:
    Library(const char* path, bool lazy) : handle(kxUtils::loadSharedLibrary(path, lazy)) {}
    ~Library() { kxUtils::unloadSharedLibrary(handle); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    Function function(const char* name) const {
        return reinterpret_cast<Function>(kxUtils::resolveSymbol(handle, name));
    }

    void* const handle;
};

class UtilsLibrary : public testing::Test {
protected:
    UtilsLibrary() { kxUtils::getLastError(); }
};

}  // namespace

TEST_F(UtilsLibrary, IsLoadedResolvedAndUnloaded) {
    for (const bool lazy : {false, true}) {
        void* const handle = kxUtils::loadSharedLibrary(KX_PROVIDER_PLUGIN, lazy);
        ASSERT_NE(handle, nullptr) << kxUtils::getLastError();
        void* const symbol = kxUtils::resolveSymbol(handle, "kxProvidedValue");
        ASSERT_NE(symbol, nullptr);
        EXPECT_EQ(reinterpret_cast<Function>(symbol)(), 41);
        EXPECT_EQ(kxUtils::getLastError(), "");
        EXPECT_TRUE(kxUtils::unloadSharedLibrary(handle));
        // It is gone: nothing that is loaded has the symbol any more.
        EXPECT_EQ(kxUtils::resolveSymbol(nullptr, "kxProvidedValue"), nullptr);
        kxUtils::getLastError();
    }
}

TEST_F(UtilsLibrary, LazyLoadingLeavesMissingFunctionsForTheirFirstCall) {
    {
        const Library atOnce(KX_CONSUMER_PLUGIN, /*lazy=*/false);
        EXPECT_EQ(atOnce.handle, nullptr);
        EXPECT_NE(kxUtils::getLastError().find("kxProvidedValue"), std::string::npos);
    }
    const Library lazy(KX_CONSUMER_PLUGIN, /*lazy=*/true);
    ASSERT_NE(lazy.handle, nullptr) << kxUtils::getLastError();
    EXPECT_EQ(lazy.function("kxOwnValue")(), 7);
}

TEST_F(UtilsLibrary, SymbolsAreVisibleToLaterLibraries) {
    for (const bool lazy : {false, true}) {
        const Library provider(KX_PROVIDER_PLUGIN, lazy);
        ASSERT_NE(provider.handle, nullptr) << kxUtils::getLastError();
        const Library consumer(KX_CONSUMER_PLUGIN, /*lazy=*/false);
        ASSERT_NE(consumer.handle, nullptr) << kxUtils::getLastError();
        EXPECT_EQ(consumer.function("kxConsumedValue")(), 42);
    }
}

TEST_F(UtilsLibrary, TheErrorTextIsReadOnce) {
    const kxtest::TempDir dir;
    kxtest::Captured out(stdout), err(stderr);
    for (const bool lazy : {false, true}) {
        const std::string path = dir.file("missing.so");
        EXPECT_EQ(kxUtils::loadSharedLibrary(path, lazy), nullptr);
        EXPECT_NE(kxUtils::getLastError().find(path), std::string::npos);
        EXPECT_EQ(kxUtils::getLastError(), "");
    }
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST_F(UtilsLibrary, AnEmptyPathDoesNotReachTheLoader) {
    EXPECT_EQ(kxUtils::loadSharedLibrary("", true), nullptr);
    EXPECT_EQ(kxUtils::loadSharedLibrary("", false), nullptr);
    EXPECT_EQ(kxUtils::getLastError(), "");
    const kxtest::TempDir dir;
    kxUtils::loadSharedLibrary(dir.file("missing.so"), true);
    kxUtils::loadSharedLibrary("", true);
    EXPECT_NE(kxUtils::getLastError(), "");  // the pending error is left alone
}

TEST_F(UtilsLibrary, AnAbsentSymbolIsNull) {
    const Library provider(KX_PROVIDER_PLUGIN, /*lazy=*/true);
    EXPECT_EQ(kxUtils::resolveSymbol(provider.handle, "kxAbsentValue"), nullptr);
    EXPECT_NE(kxUtils::getLastError().find("kxAbsentValue"), std::string::npos);
}

TEST_F(UtilsLibrary, UnloadingTellsFailureFromSuccess) {
    EXPECT_FALSE(kxUtils::unloadSharedLibrary(nullptr));
    EXPECT_EQ(kxUtils::getLastError(), "");
    // A library that this program links stays loaded, so its handle may be closed once too often.
    void* const handle = kxUtils::loadSharedLibrary(KX_LIBRARY, /*lazy=*/true);
    ASSERT_NE(handle, nullptr) << kxUtils::getLastError();
    EXPECT_TRUE(kxUtils::unloadSharedLibrary(handle));
    EXPECT_FALSE(kxUtils::unloadSharedLibrary(handle));
    EXPECT_NE(kxUtils::getLastError(), "");
}

// --- Browser -------------------------------------------------------------------------------------

namespace {

/// Programs in place of the platform's, the only ones on PATH, which record their name and
/// arguments.
class UtilsBrowser : public testing::Test {
protected:
    std::string install(const std::string& name) {
        const std::string script = _programs.write(
            name, "#!/bin/sh\nprintf '<%s>' " + name + " \"$@\" >>'" + _record + "'\nexit 7\n");
        std::filesystem::permissions(script, std::filesystem::perms::owner_all);
        return script;
    }

    std::string opened(const std::string& url) {
        kxtest::Captured out(stdout), err(stderr);
        kxUtils::openBrowser(url);
        EXPECT_EQ(out.text() + err.text(), "");
        return kxtest::exists(_record) ? kxtest::slurp(_record) : "";
    }

    const kxtest::TempDir _programs;
    const std::string _record = _programs.file("record");
    const kxtest::ScopedEnv _path{"PATH", _programs.path().c_str()};
    const kxtest::ScopedCwd _cwd{_programs.path()};
};

}  // namespace

TEST_F(UtilsBrowser, IsThePlatformsWhereItHasOne) {
    install("open");
    install("xdg-open");
    EXPECT_EQ(opened("http://host/a?b=1"), "<open><-a><Safari><http://host/a?b=1>");
}

TEST_F(UtilsBrowser, IsTheDesktopsElsewhere) {
    install("xdg-open");
    EXPECT_EQ(opened("http://host/a?b=1"), "<xdg-open><http://host/a?b=1>");
}

// The children of such a process leave no status to wait for.
TEST_F(UtilsBrowser, IsTheSameInAProcessThatIgnoresItsChildren) {
    auto* const old = std::signal(SIGCHLD, SIG_IGN);
    install("xdg-open");
    EXPECT_EQ(opened("one"), "<xdg-open><one>");
    install("open");
    EXPECT_EQ(opened("two"), "<xdg-open><one><open><-a><Safari><two>");
    std::signal(SIGCHLD, old);
}

// The entries of PATH are searched in order; an empty one is the working directory.
TEST_F(UtilsBrowser, IsTheCommandThatTheShellRuns) {
    install("xdg-open");
    install("open");
    install("first/open");
    install("second/open");
    _programs.makeDir("empty");
    const auto in = [&](const std::string& name) { return _programs.file(name); };
    const std::pair<std::string, std::string> paths[] = {
        {in("empty") + ':' + in("first") + ':' + in("second"), "first/open"},
        {in("second") + ':' + in("first"), "second/open"},
        {"second:first", "second/open"},
        {in("empty") + ':' + in(""), "open"},
        {in("empty") + ':', "open"},
        {':' + in("first"), "open"},
        {in("empty") + "::" + in("first"), "open"},
        {in("first") + ':', "first/open"},
        {"", "open"},
    };
    for (const auto& [path, command] : paths) {
        const kxtest::ScopedEnv variable("PATH", path.c_str());
        EXPECT_EQ(opened("url"), '<' + command + "><-a><Safari><url>") << path;
        unlink(_record.c_str());
    }
}

TEST_F(UtilsBrowser, IsNotWhatCannotBeRun) {
    install("xdg-open");
    install("second/open");
    const std::string path =
        _programs.file("first:") + _programs.file("second:") + _programs.file("");
    const kxtest::ScopedEnv variable("PATH", path.c_str());
    std::filesystem::permissions(_programs.write("first/open", "#!/bin/sh\n"),
                                 std::filesystem::perms::owner_read);
    EXPECT_EQ(opened("one"), "<second/open><-a><Safari><one>");
    unlink(_record.c_str());
    unlink(_programs.file("second/open").c_str());
    EXPECT_EQ(opened("two"), "<xdg-open><two>");
    unlink(_record.c_str());
    unlink(_programs.file("first/open").c_str());
    _programs.makeDir("first/open");
    EXPECT_EQ(opened("three"), "<xdg-open><three>");
}

// As installed by desktop distributions; the opener itself does not know "-a".
TEST_F(UtilsBrowser, IsTheDesktopsWhereOpenIsOnlyAnotherNameOfAnOpener) {
    for (const std::string opener : {"xdg-open", "run-mailcap"}) {
        install("xdg-open");
        install(opener);
        const std::string link = _programs.file("open");
        ASSERT_EQ(symlink(_programs.file(opener).c_str(), link.c_str()), 0);
        EXPECT_EQ(opened(opener), "<xdg-open><" + opener + ">");
        unlink(link.c_str());
        unlink(_record.c_str());
    }
}

TEST_F(UtilsBrowser, TheChoiceIsMadeAtEveryCall) {
    install("xdg-open");
    opened("one");
    install("open");
    EXPECT_EQ(opened("two"), "<xdg-open><one><open><-a><Safari><two>");
}

// Deliberate: the caller must pass a URL that is safe in a shell command.
TEST_F(UtilsBrowser, TheUrlIsNotQuoted) {
    install("open");
    EXPECT_EQ(opened("one 'two three' $KXTEST_NONE; echo >shell"),
              "<open><-a><Safari><one><two three>");
    EXPECT_TRUE(kxtest::exists(_programs.file("shell")));
}

// --- The rest ------------------------------------------------------------------------------------

TEST(UtilsFindProcess, FindsNothing) {
    for (const char* name : {"", "sh", "init", "kxUtils_test"})
        EXPECT_FALSE(kxUtils::findProcess(name)) << name;
}

namespace {

class CountingBuffer : public std::stringbuf {
public:
    int flushes = 0;

protected:
    int sync() override {
        ++flushes;
        return 0;
    }
};

}  // namespace

TEST(UtilsBeep, WritesToTheStreamWithoutFlushing) {
    CountingBuffer buffer;
    std::streambuf* const old = std::cout.rdbuf(&buffer);
    kxUtils::beep();
    std::cout.rdbuf(old);
    EXPECT_EQ(buffer.str(), "\a\n");
    EXPECT_EQ(buffer.flushes, 0);
}

TEST(UtilsPrintBT, DoesNothing) {
    kxtest::Captured out(stdout), err(stderr);
    kxUtils::printBT();
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST(UtilsCalcMips, CountsTwoHundredMillionOperations) {
    int mips = -1, sink = -1;
    const std::clock_t start = std::clock();
    kxUtils::calcMips(mips, sink);
    const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_EQ(sink, 695412096);
    EXPECT_GT(mips, 0);
    // The whole call takes little longer than the loop.
    EXPECT_GE(mips, static_cast<int>(200.0 / seconds));
    EXPECT_LE(mips, 1.5 * 200.0 / seconds);
}
