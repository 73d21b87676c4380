// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Expansion of environment variables and home directories.
#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

#include <memory>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bytes.h"
#include "kxFile.h"
#include "kxLog.h"
#include "kxtest.h"
#include "reference/expand.h"
#include "rows.h"

extern char** environ;

using namespace std::string_literals;
using Texts = std::vector<std::string>;

static const std::string tooLongMessage =
    "kxFile::expandFilename: skipped expanding environment variable, path too long!\n";

static std::string syntax(const std::string& name) {
    return "expandFilename: syntax error in env.var " + name + "!";
}
static std::string unset(const std::string& name) {
    return "expandFilename: couldn't expand env.var " + name + "!";
}
// What the errors in the log leave on standard error.
static std::string inRed(const Texts& errors) {
    std::string all;
    for (const auto& error : errors) all += "\x1b[31m" + error + "\n\x1b[0m";
    return all;
}
static std::string letters(std::size_t count) { return std::string(count, 'x'); }

// --- Results and reports of an expansion ---------------------------------------------------------

static Texts loggedErrors;

struct Observed {
    std::string text, out, err, lastError;
    Texts errors;
};

static Observed observe(const std::string& path) {
    kxLog::_last_error = "before";
    loggedErrors.clear();
    kxLog::setErrorCB([](const char* text) { loggedErrors.push_back(text); });
    kxtest::Captured out(stdout), err(stderr);
    const std::string text = kxFile::expandFilename(path);
    kxLog::setErrorCB(nullptr);
    return {text, out.text(), err.text(), kxLog::getLastError(), loggedErrors};
}

static void expectExpansion(const std::string& path, const std::string& text, const Texts& errors) {
    const Observed got = observe(path);
    EXPECT_EQ(got.text, text);
    EXPECT_EQ(got.errors, errors);
    EXPECT_EQ(got.err, inRed(errors));
    EXPECT_EQ(got.lastError, errors.empty() ? "before" : errors.back());
    EXPECT_EQ(got.out, "");
}

// The message goes directly to standard error; the log does not know of it.
static void expectTooLong(const std::string& path) {
    const Observed got = observe(path);
    EXPECT_EQ(got.text, path);
    EXPECT_EQ(got.err, tooLongMessage);
    EXPECT_EQ(got.errors, Texts{});
    EXPECT_EQ(got.lastError, "before");
    EXPECT_EQ(got.out, "");
}

// Sets environment variables, which the destructor restores; a null value unsets one.
class Variables {
public:
    Variables(std::initializer_list<std::pair<std::string, const char*>> settings) {
        for (const auto& [name, value] : settings) set(name, value);
    }
    void set(const std::string& name, const char* value) {
        _variables.push_back(std::make_unique<kxtest::ScopedEnv>(name.c_str(), value));
    }

private:
    std::vector<std::unique_ptr<kxtest::ScopedEnv>> _variables;
};

struct ExpansionCase {
    const char* name;
    std::string path, text;
    Texts errors;
};
static void PrintTo(const ExpansionCase& c, std::ostream* os) { *os << c.name; }

// --- Variables -----------------------------------------------------------------------------------

class ExpandVariables : public testing::TestWithParam<ExpansionCase> {
    Variables _variables{{"ROOT", "/r"},
                         {"A1_b", "v"},
                         {"1A", "digit"},
                         {"a-b/c", "odd"},
                         {"ROOT)", "round"},
                         {"EMPTY", ""},
                         {"DOLLAR", "$ROOT${ROOT}"},
                         {"OPEN", "$("},
                         {"TILDE", "~"},
                         {"BLANK", "b "},
                         {"HIGH", "\xC3\xBC\xFF"},
                         {"root", nullptr},
                         {"ROOT/x", nullptr},
                         {"ROOT}", nullptr},
                         {"NOTSET", nullptr},
                         {"NOTSET2", nullptr}};
};
TEST_P(ExpandVariables, MatchesTable) {
    const ExpansionCase& c = GetParam();
    expectExpansion(c.path, c.text, c.errors);
}

static const ExpansionCase variableCases[] = {
    {"Empty", "", "", {}},
    {"NothingToExpand", "/a b/(c)/{d}.e", "/a b/(c)/{d}.e", {}},
    {"HighBytesPass", "/\xC3\xBC\xFF\x80", "/\xC3\xBC\xFF\x80", {}},
    {"ZeroBytePasses", "a\0b"s, "a\0b"s, {}},
    {"Round", "$(ROOT)/x", "/r/x", {}},
    {"Curly", "${ROOT}/x", "/r/x", {}},
    {"Bare", "$ROOT/x", "/r/x", {}},
    {"BareEndsAtDot", "$ROOT.x", "/r.x", {}},
    {"BareEndsAtBlank", "$ROOT x", "/r x", {}},
    {"BareEndsAtHighByte", "$ROOT\xC3\xBC", "/r\xC3\xBC", {}},
    {"BareEndsAtZeroByte", "$ROOT\0x"s, "/r\0x"s, {}},
    {"BareEndsAtBracket", "$ROOT(x){y}", "/r(x){y}", {}},
    {"BareAtTheEnd", "a$ROOT", "a/r", {}},
    {"BareLettersDigitsUnderscore", "$A1_b-", "v-", {}},
    {"BareBeginsWithDigit", "$1A", "digit", {}},
    {"BracketedNameOfAnyCharacters", "${a-b/c}$(a-b/c)", "oddodd", {}},
    {"RoundIsNoEndOfCurly", "${ROOT)}", "round", {}},
    {"CurlyIsNoEndOfRound", "$(ROOT})", "$(ROOT})", {unset("ROOT}")}},
    {"FirstBracketEndsName", "$(ROOT))", "/r)", {}},
    {"Several", "$ROOT$(ROOT)${ROOT}$ROOT", "/r/r/r/r", {}},
    {"EmptyValue", "a${EMPTY}b$EMPTY", "ab", {}},
    {"EmptyValueAlone", "$EMPTY", "", {}},
    {"HighBytesInValue", "$HIGH/x", "\xC3\xBC\xFF/x", {}},
    {"DollarInValueIsKept", "$DOLLAR/$ROOT", "$ROOT${ROOT}//r", {}},
    {"ValueAndTextMakeNoForm", "${OPEN}ROOT)", "$(ROOT)", {}},
    {"TildeInValueIsKept", "$TILDE/x $TILDE", "~/x ~", {}},
    {"TildeLooksAtTheInputBeforeIt", "$BLANK~/x", "b ~/x", {}},
    {"NamesAreCaseSensitive", "$root", "$root", {unset("root")}},

    {"NotSet", "$NOTSET/x", "$NOTSET/x", {unset("NOTSET")}},
    {"NotSetRound", "$(NOTSET)/x", "$(NOTSET)/x", {unset("NOTSET")}},
    {"NotSetCurly", "${NOTSET}/x", "${NOTSET}/x", {unset("NOTSET")}},
    {"AllOrNothingBefore", "$ROOT/$NOTSET", "$ROOT/$NOTSET", {unset("NOTSET")}},
    {"AllOrNothingBehind", "$NOTSET/$ROOT", "$NOTSET/$ROOT", {unset("NOTSET")}},
    {"FirstNotSetEndsTheScan",
     "$NOTSET/$NOTSET2/${ROOT",
     "$NOTSET/$NOTSET2/${ROOT",
     {unset("NOTSET")}},
    {"DollarAtTheEnd", "a$", "a$", {unset("")}},
    {"DollarBeforeSlash", "a$/b", "a$/b", {unset("")}},
    {"DollarBeforeDollar", "$$ROOT", "$$ROOT", {unset("")}},
    {"DollarBeforeTilde", "$~", "$~", {unset("")}},
    {"DollarBeforeHighByte", "$\xC3\xBC", "$\xC3\xBC", {unset("")}},
    {"DollarBeforeZeroByte", "$\0ROOT"s, "$\0ROOT"s, {unset("")}},
    {"EmptyRound", "$()x", "$()x", {unset("")}},
    {"EmptyCurly", "${}x", "${}x", {unset("")}},
    {"BlankEndsEmptyName", "$( ROOT)", "$( ROOT)", {syntax(""), unset("")}},
    {"RoundAtTheEnd", "$(", "$(", {syntax(""), unset("")}},
    {"CurlyAtTheEnd", "${", "${", {syntax(""), unset("")}},
    {"ZeroByteInName", "${ROOT\0x}"s, "${ROOT\0x}"s, {unset("ROOT")}},

    {"UnclosedAtTheEnd", "a${ROOT", "a/r", {syntax("ROOT")}},
    {"UnclosedRoundAtTheEnd", "$(ROOT", "/r", {syntax("ROOT")}},
    {"UnclosedSwallowsTheBlank", "$(ROOT x", "/rx", {syntax("ROOT")}},
    {"UnclosedCurlySwallowsTheBlank", "${ROOT x}", "/rx}", {syntax("ROOT")}},
    {"UnclosedThenVariable", "${ROOT $ROOT", "/r/r", {syntax("ROOT")}},
    {"UnclosedTwice", "$(ROOT ${ROOT ", "/r/r", {syntax("ROOT"), syntax("ROOT")}},
    {"UnclosedSwallowsThePath", "${ROOT/x", "${ROOT/x", {syntax("ROOT/x"), unset("ROOT/x")}},
    {"UnclosedNotSet", "${NOTSET x", "${NOTSET x", {syntax("NOTSET"), unset("NOTSET")}},
    {"UnclosedThenNotSet", "$(ROOT $NOTSET", "$(ROOT $NOTSET", {syntax("ROOT"), unset("NOTSET")}},
    {"PercentInName", "${%s%n}", "${%s%n}", {unset("%s%n")}},

    {"TildeInsideAWord", "x~/a", "x~/a", {}},
    {"TildeAfterSlash", "/~", "/~", {}},
    {"TildeAfterNewline", "a\n~", "a\n~", {}},
    {"TildeAfterAmpersand", "a&~", "a&~", {}},
    {"TildeAfterBrackets", "(~)[~]{~}", "(~)[~]{~}", {}},
    {"TildeAfterQuotes", "'~'\"~\"`~`", "'~'\"~\"`~`", {}},
    {"TildeAfterEqualSignAndColon", "a=~:~", "a=~:~", {}},
    {"TildeAfterHighByte", "\xA0~\xFF~", "\xA0~\xFF~", {}},
    {"TildeAfterZeroByte", "\0~"s, "\0~"s, {}},
    {"TildeAfterTilde", "x~~", "x~~", {}},
    {"TildeAfterVariable", "$ROOT~", "/r~", {}},
};
INSTANTIATE_TEST_SUITE_P(Table, ExpandVariables, testing::ValuesIn(variableCases),
                         kxtest::nameOfRow);

// After any other byte a tilde is copied. (The table of home directories has the six bytes that
// begin a word.)
TEST(ExpandFilename, CopiesATildeInsideAWord) {
    for (const char c : kxtest::everyByte()) {
        if ("\t ;<>|$~"s.find(c) != std::string::npos) continue;
        expectExpansion(c + "~"s, c + "~"s, {});
    }
}

TEST(ExpandFilename, ChangesNoVariable) {
    const Variables variables{{"ROOT", "/r"}, {"NOTSET", nullptr}};
    const auto environment = [] {
        Texts all;
        for (char** setting = environ; *setting; ++setting) all.push_back(*setting);
        return all;
    };
    const Texts before = environment();
    for (const char* path : {"$ROOT/x", "${ROOT", "$NOTSET", "~", "~root", "$"}) observe(path);
    EXPECT_EQ(environment(), before);
}

// --- Home directories ----------------------------------------------------------------------------

static kxtest::Outcome probe(const std::string& path, const char* home) {
    std::map<std::string, std::string> environment{{"HOME", "/elsewhere"}, {"ROOT", "/r"}};
    if (home) environment["PROBE_HOME"] = home;
    return kxtest::run({KX_EXPANSION_PROBE, path}, environment);
}

class ExpandHome : public testing::TestWithParam<ExpansionCase> {};
TEST_P(ExpandHome, MatchesTable) {
    const ExpansionCase& c = GetParam();
    const kxtest::Outcome got = probe(c.path, "/h");
    EXPECT_EQ(got.exitCode, 0);
    EXPECT_EQ(got.out, c.text);
    EXPECT_EQ(got.err, inRed(c.errors));
}

static const ExpansionCase homeCases[] = {
    {"Alone", "~", "/h", {}},
    {"BeforeSlash", "~/a", "/h/a", {}},
    {"BeforeBlank", "~ a", "/h a", {}},
    {"InsideAWord", "x~/a", "x~/a", {}},
    {"SecondInPath", "~/~", "/h/~", {}},
    {"AfterTab", "a\t~/c", "a\t/h/c", {}},
    {"AfterBlank", "a b ~/c", "a b /h/c", {}},
    {"AfterSemicolon", "a;~/c", "a;/h/c", {}},
    {"AfterLess", "a<~/c", "a</h/c", {}},
    {"AfterGreater", "a>~/c", "a>/h/c", {}},
    {"AfterBar", "a|~/c", "a|/h/c", {}},
    {"Several", "~ ~/a;~", "/h /h/a;/h", {}},
    {"AfterVariable", "$ROOT ~/x", "/r /h/x", {}},
    {"AfterSwallowedBlank", "${ROOT ~/x", "/r/h/x", {syntax("ROOT")}},
    {"User", "~ann", "/ann", {}},
    {"UserBeforeSlash", "~ann/x", "/ann/x", {}},
    {"UserBeforeBlank", "~ann ~ann/$ROOT", "/ann /ann//r", {}},
    {"UserAfterBar", "a|~ann/c", "a|/ann/c", {}},
    {"UserNameEndsAtSlashOrBlankOnly", "~ann;x", "~ann;x", {unset("ann;x")}},
    {"TabBelongsToUserName", "~\tx", "~\tx", {unset("\tx")}},
    {"DollarBelongsToUserName", "~$ROOT/x", "~$ROOT/x", {unset("$ROOT")}},
    {"TildeBelongsToUserName", "~~", "~~", {unset("~")}},
    {"UnknownUser", "$ROOT ~bob/x", "$ROOT ~bob/x", {unset("bob")}},
    {"UserNamesAreCaseSensitive", "~Ann", "~Ann", {unset("Ann")}},
};
INSTANTIATE_TEST_SUITE_P(Table, ExpandHome, testing::ValuesIn(homeCases), kxtest::nameOfRow);

TEST(ExpandFilename, LeavesAHomeDirectoryAsItIs) {
    EXPECT_EQ(probe("~/a", "").out, "/a");
    EXPECT_EQ(probe("~/$ROOT", "/$ROOT ~").out, "/$ROOT ~//r");
}

TEST(ExpandFilename, ReportsAMissingEntryOfTheEffectiveUser) {
    const kxtest::Outcome got = probe("$ROOT ~/a", nullptr);
    EXPECT_EQ(got.exitCode, 0);
    EXPECT_EQ(got.out, "$ROOT ~/a");
    EXPECT_EQ(got.err, inRed({unset("")}));
}

TEST(ExpandFilename, RefusesALongHomeDirectory) {
    const std::string home = "/" + letters(2044);
    EXPECT_EQ(probe("~/a", home.c_str()).out, home + "/a");
    const kxtest::Outcome got = probe("~/ab", home.c_str());
    EXPECT_EQ(got.out, "~/ab");
    EXPECT_EQ(got.err, tooLongMessage);
}

// Looks in the system's own database; ROOT and root are a variable and a user.
static std::optional<std::string> homeInDatabase(const std::string& name) {
    if (name.find('\0') != std::string::npos) return std::nullopt;
    const passwd* const entry = name.empty() ? getpwuid(geteuid()) : getpwnam(name.c_str());
    if (!entry) return std::nullopt;
    return entry->pw_dir;
}

TEST(ExpandFilename, AsksTheSystemsUserDatabase) {
    const Variables variables{{"HOME", "/elsewhere"}};
    const auto root = homeInDatabase("root"), own = homeInDatabase("");
    if (root) expectExpansion("~root/x", *root + "/x", {});
    if (own) expectExpansion("~/x", *own + "/x", {});
    expectExpansion("~no.such.user/x", "~no.such.user/x", {unset("no.such.user")});
    expectExpansion("~root\0/x"s, "~root\0/x"s, {unset("root")});
    if (!root || !own) GTEST_SKIP() << "no entry for root or the effective user";
}

// --- Limits --------------------------------------------------------------------------------------

TEST(ExpandFilenameLimit, InputOf2048CharactersIsNotExpanded) {
    const Variables variables{{"ROOT", "/r"}, {"EMPTY", ""}, {"NOTSET", nullptr}};
    for (const std::size_t length : {2046u, 2047u}) {
        expectExpansion(letters(length), letters(length), {});
        expectExpansion("$ROOT/" + letters(length - 6), "/r/" + letters(length - 6), {});
        expectExpansion("${EMPTY}" + letters(length - 8), letters(length - 8), {});
    }
    for (const std::size_t length : {2048u, 2049u, 200000u})
        for (const std::string start : {"", "$ROOT/", "${EMPTY}", "$NOTSET/", "${ROOT /", "~/"})
            expectTooLong(start + letters(length - start.size()));
}

TEST(ExpandFilenameLimit, ResultOf2048CharactersIsRefused) {
    for (const std::size_t length : {1u, 2046u, 2047u}) {
        const std::string value = letters(length - 1) + "/";
        const Variables variables{{"BIG", value.c_str()}};
        expectExpansion("$BIG", value, {});
    }
    for (const std::size_t length : {2048u, 2049u, 131072u}) {
        const std::string value = letters(length);
        const Variables variables{{"BIG", value.c_str()}};
        expectTooLong("$BIG");
    }
}

TEST(ExpandFilenameLimit, EveryPartOfTheResultCounts) {
    const std::string value = letters(2000);
    const Variables variables{{"BIG", value.c_str()}, {"TEN", "0123456789"}};
    for (const std::string form : {"$BIG", "${BIG}", "$(BIG)"}) {
        expectExpansion(form + "/" + letters(46), value + "/" + letters(46), {});
        expectTooLong(form + "/" + letters(47));
        expectExpansion(letters(46) + "/" + form, letters(46) + "/" + value, {});
        expectTooLong(letters(47) + "/" + form);
    }
    expectExpansion("$TEN$BIG/${TEN}$(TEN)/aaaaa$TEN",
                    "0123456789" + value + "/01234567890123456789/aaaaa0123456789", {});
    expectTooLong("$TEN$BIG/${TEN}$(TEN)/aaaaaa$TEN");
}

// A long name takes no room in a buffer: only its value counts.
TEST(ExpandFilenameLimit, NamesDoNotCount) {
    const std::string name = letters(2040), value = letters(1500);
    const Variables variables{{name, "v"}, {letters(500), "w"}, {"BIG", value.c_str()}};
    expectExpansion("a/${" + name + "}", "a/v", {});
    expectExpansion("$BIG$" + letters(500), value + "w", {});
}

TEST(ExpandFilenameLimit, LongNamesAreCutInTheLogOnly) {
    const std::string path = "$" + letters(2040);
    expectExpansion(path, path, {unset(letters(2040)).substr(0, 2047)});
}

TEST(ExpandFilenameLimit, TheFirstFaultIsReported) {
    const std::string most = letters(2047), over = letters(2048);
    const Variables variables{{"MOST", most.c_str()}, {"OVER", over.c_str()}, {"NOTSET", nullptr}};
    expectTooLong("$OVER$NOTSET");
    expectTooLong("$MOST/$NOTSET");
    expectExpansion("$MOST$NOTSET", "$MOST$NOTSET", {unset("NOTSET")});
    expectExpansion("$NOTSET$OVER", "$NOTSET$OVER", {unset("NOTSET")});
    const Observed got = observe("${MOST x");
    EXPECT_EQ(got.text, "${MOST x");
    EXPECT_EQ(got.err, inRed({syntax("MOST")}) + tooLongMessage);
}

// --- Against the model ---------------------------------------------------------------------------

TEST(ExpandFilenameModel, AgreesOnRandomPathsAndEnvironments) {
    const Texts names{"a", "B", "aB", "_0", "0", "a/", "B;", "(a", "a)", "{B", "B}", "$a", "~"};
    const Texts values{"",
                       "v",
                       "/x y",
                       "$a",
                       "~/",
                       "${B}",
                       "\xFF\x80",
                       letters(683),
                       letters(1023),
                       letters(2046),
                       letters(2047),
                       letters(2048),
                       letters(131072)};
    const Texts tokens{"$",    "$",           "$",    "(",   ")",     "{",  "}",   "~",
                       "/",    " ",           ";",    "a",   "B",     "_",  "0",   "\0"s,
                       "\t",   "|",           "<",    ">",   "\xE4",  "$a", "$B",  "$aB ",
                       "${a}", letters(1024), "$(B)", "${B", "~root", "~/", "$_0/"};
    std::mt19937 random(4096);
    const auto pick = [&](const Texts& from) { return from[random() % from.size()]; };

    std::map<std::string, std::optional<std::string>> homes;  // looking in the database is slow
    reference::World world;
    world.home = [&](const std::string& user) {
        if (homes.count(user) == 0) homes[user] = homeInDatabase(user);
        return homes[user];
    };

    kxLog::setErrorCB([](const char* text) { loggedErrors.push_back(text); });
    kxtest::Captured err(stderr);
    std::string expectedErr, wrong;
    std::size_t expanded = 0, refused = 0, tooLong = 0;
    for (int round = 0; round < 100 && wrong.empty(); ++round) {
        Variables variables{};
        for (const auto& name : names) {
            const std::string& value = values[random() % (round % 2 ? 7 : values.size())];
            variables.set(name, random() % 4 ? value.c_str() : nullptr);
        }
        world.variables.clear();
        for (char** setting = environ; *setting; ++setting) {
            const std::string text = *setting;
            const std::size_t sign = text.find('=');
            world.variables.emplace(text.substr(0, sign), text.substr(sign + 1));
        }
        for (int i = 0; i < 200 && wrong.empty(); ++i) {
            std::string path;
            for (auto count = random() % 12; count > 0; --count) path += pick(tokens);
            const std::string exact(path.data(),
                                    path.size());  // its memory ends exactly where the text ends
            loggedErrors.clear();
            const std::string got = kxFile::expandFilename(exact);
            const reference::Expansion expected = reference::expand(path, world);
            expectedErr += inRed(expected.errors) + (expected.tooLong ? tooLongMessage : "");
            if (got != expected.text || loggedErrors != expected.errors) wrong = path;
            ++(expected.tooLong ? tooLong : got == path ? refused : expanded);
        }
    }
    kxLog::setErrorCB(nullptr);
    EXPECT_EQ(wrong, "");
    EXPECT_TRUE(err.text() == expectedErr);
    // The paths reach every kind of result.
    EXPECT_GT(expanded, 1000u);
    EXPECT_GT(refused, 1000u);
    EXPECT_GT(tooLong, 1000u);
}

// --- Threads -------------------------------------------------------------------------------------

TEST(ExpandFilename, RunsOnSeveralThreads) {
    const Variables variables{{"ROOT", "/r"}, {"EMPTY", ""}};
    bool right[4] = {true, true, true, true};
    std::vector<std::thread> threads;
    for (bool& mine : right)
        threads.emplace_back([&mine] {
            for (int i = 0; i < 500; ++i)
                mine = mine && kxFile::expandFilename("$ROOT/${ROOT}$(EMPTY)/x") == "/r//r/x";
        });
    for (auto& thread : threads) thread.join();
    for (const bool mine : right) EXPECT_TRUE(mine);
}
