// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxMessage.h"

#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "kxHost_plugin.h"
#include "kxLog.h"
#include "kxUtils.h"
#include "kxtest.h"
#include "rows.h"

// A plain record: the map, then the id, and nothing virtual.
static_assert(!std::is_polymorphic_v<kxMessage>);
static_assert(sizeof(kxMessage) == sizeof(std::map<std::string, boost::any>) + sizeof(void*));
// A number converts to a record with that id.
static_assert(std::is_convertible_v<unsigned, kxMessage>);

namespace {

const boost::any nothing;

int intOf(const boost::any& value) { return boost::any_cast<int>(value); }

/// Counts its living objects. While `failing` is set, copying a fragile object throws.
struct Counted {
    explicit Counted(bool isFragile = false) : fragile(isFragile) { ++alive; }
    Counted(const Counted& other) : fragile(other.fragile) {
        if (fragile && failing) throw std::runtime_error("copy refused");
        ++alive;
    }
    Counted& operator=(const Counted&) = delete;
    ~Counted() { --alive; }

    bool fragile;
    static int alive;
    static bool failing;
};
int Counted::alive = 0;
bool Counted::failing = false;

class FailingCopies {
public:
    FailingCopies() { Counted::failing = true; }
    ~FailingCopies() { Counted::failing = false; }
    FailingCopies(const FailingCopies&) = delete;
    FailingCopies& operator=(const FailingCopies&) = delete;
};

/// Records its copies.
struct Noted {
    Noted(char ownName, std::string& noted) : name(ownName), copies(&noted) {}
    Noted(const Noted& other) : name(other.name), copies(other.copies) { *copies += name; }
    Noted& operator=(const Noted&) = delete;
    ~Noted() = default;

    char name;
    std::string* copies;
};

std::vector<std::string> namesOf(const kxMessage& message) {
    std::vector<std::string> names;
    for (const auto& attribute : message.getMap()) names.push_back(attribute.first);
    return names;
}

}  // namespace

// --- Constructors --------------------------------------------------------------------------------

TEST(MessageConstruct, TakesIdAndPairsInOrder) {
    const kxMessage none, idOnly(4294967295U), one(7, "a", 1), two(7, "b", 2, "a", 1),
        three(7, "c", 3, "a", 1, "b", 2);
    EXPECT_EQ(none.id(), 0U);
    EXPECT_TRUE(none.getMap().empty());
    EXPECT_EQ(idOnly.id(), 4294967295U);
    EXPECT_TRUE(idOnly.getMap().empty());
    EXPECT_EQ(one.id(), 7U);
    EXPECT_EQ(intOf(one.get("a")), 1);
    EXPECT_EQ(one.getMap().size(), 1U);
    EXPECT_EQ(two.id(), 7U);
    EXPECT_EQ(intOf(two.get("a")), 1);
    EXPECT_EQ(intOf(two.get("b")), 2);
    EXPECT_EQ(two.getMap().size(), 2U);
    EXPECT_EQ(three.id(), 7U);
    EXPECT_EQ(intOf(three.get("a")), 1);
    EXPECT_EQ(intOf(three.get("b")), 2);
    EXPECT_EQ(intOf(three.get("c")), 3);
    EXPECT_EQ(three.getMap().size(), 3U);
}

TEST(MessageConstruct, ANameThatOccursTwiceKeepsTheLaterValue) {
    const kxMessage two(7, "a", 1, "a", 2);
    EXPECT_EQ(two.id(), 7U);
    EXPECT_EQ(intOf(two.get("a")), 2);
    EXPECT_EQ(two.getMap().size(), 1U);
    const kxMessage three(7, "a", 1, "b", 2, "a", 3);
    EXPECT_EQ(intOf(three.get("a")), 3);
    EXPECT_EQ(intOf(three.get("b")), 2);
    const kxMessage emptied(7, "a", 1, "a", nothing);
    EXPECT_TRUE(emptied.exists("a"));
    EXPECT_TRUE(emptied.get("a").empty());
}

TEST(MessageConstruct, AThrowingSetDestroysWhatWasSetBefore) {
    ASSERT_EQ(Counted::alive, 0);
    {
        const boost::any sound = Counted(), fragile = Counted(/*isFragile=*/true);
        const FailingCopies failing;
        EXPECT_THROW(kxMessage(1, "a", fragile), std::runtime_error);
        EXPECT_THROW(kxMessage(1, "a", sound, "b", fragile), std::runtime_error);
        EXPECT_THROW(kxMessage(1, "a", sound, "b", sound, "c", fragile), std::runtime_error);
        EXPECT_EQ(Counted::alive, 2);  // the two objects above
    }
    EXPECT_EQ(Counted::alive, 0);
}

// --- set, get, exists, remove, clear -------------------------------------------------------------

TEST(MessageSet, OverwriteDecidesOnlyWhereTheNameExists) {
    kxMessage message;
    message.set("a", 1, false);
    EXPECT_EQ(intOf(message.get("a")), 1);
    message.set("a", 2, false);
    EXPECT_EQ(intOf(message.get("a")), 1);
    message.set("a", 2, true);
    EXPECT_EQ(intOf(message.get("a")), 2);
    message.set("b", 3, true);
    EXPECT_EQ(intOf(message.get("b")), 3);
    message.set("empty", nothing, true);  // an empty value is an existing value
    message.set("empty", 4, false);
    EXPECT_TRUE(message.get("empty").empty());
}

TEST(MessageSet, MayChangeTheTypeOfTheValue) {
    kxMessage message(1, "a", 1);
    message.set("a", std::string("one"), true);
    EXPECT_EQ(boost::any_cast<std::string>(message.get("a")), "one");
}

TEST(MessageSet, StoresACopy) {
    boost::any value = 1;
    kxMessage message;
    message.set("a", value, true);
    value = 2;
    EXPECT_EQ(intOf(message.get("a")), 1);
}

TEST(MessageSet, TakesAValueOfItsOwn) {
    kxMessage message(1, "a", 1, "b", 2);
    message.set("a", message.get("a"), true);
    message.set("b", message.get("a"), true);
    EXPECT_EQ(intOf(message.get("a")), 1);
    EXPECT_EQ(intOf(message.get("b")), 1);
}

TEST(MessageSet, DestroysTheReplacedValue) {
    kxMessage message;
    message.set("a", Counted(), true);
    EXPECT_EQ(Counted::alive, 1);
    message.set("a", Counted(), false);
    EXPECT_EQ(Counted::alive, 1);
    message.set("a", Counted(), true);
    EXPECT_EQ(Counted::alive, 1);
    message.set("a", 5, true);
    EXPECT_EQ(Counted::alive, 0);
}

TEST(MessageSet, AFailingCopyLeavesTheRecordAsItWas) {
    kxMessage message(1, "a", 1);
    const boost::any fragile = Counted(/*isFragile=*/true);
    const FailingCopies failing;
    EXPECT_THROW(message.set("a", fragile, true), std::runtime_error);
    EXPECT_THROW(message.set("b", fragile, true), std::runtime_error);
    EXPECT_NO_THROW(message.set("a", fragile, false));
    EXPECT_EQ(namesOf(message), std::vector<std::string>{"a"});
    EXPECT_EQ(intOf(message.get("a")), 1);
}

TEST(MessageGet, OneEmptyValueStandsForAllAbsentNames) {
    kxMessage message(1, "held", nothing);
    const kxMessage other;
    const boost::any& absent = message.get("absent");
    EXPECT_TRUE(absent.empty());
    EXPECT_EQ(&absent, &message.get("another"));
    EXPECT_EQ(&absent, &other.get("absent"));
    EXPECT_TRUE(message.get("held").empty());
    EXPECT_NE(&absent, &message.get("held"));
    message.set("absent", 1, true);
    EXPECT_TRUE(absent.empty());
}

TEST(MessageGet, ShowsTheStoredValueItself) {
    kxMessage message(1, "a", 1);
    const boost::any& value = message.get("a");
    message.set("a", 2, true);
    EXPECT_EQ(intOf(value), 2);
    EXPECT_EQ(&value, &message.getMap().at("a"));
}

TEST(MessageExists, IsTrueForEmptyValuesToo) {
    kxMessage message(1, "a", 1, "empty", nothing);
    EXPECT_TRUE(message.exists("a"));
    EXPECT_TRUE(message.exists("empty"));
    EXPECT_FALSE(message.exists("A"));
    EXPECT_FALSE(message.exists(""));
    message.set("", 2, true);
    EXPECT_TRUE(message.exists(""));
}

TEST(MessageRemove, ErasesOneAttributeAndItsValue) {
    kxMessage message(1, "a", Counted(), "b", Counted());
    ASSERT_EQ(Counted::alive, 2);
    message.remove("absent");
    EXPECT_EQ(namesOf(message), (std::vector<std::string>{"a", "b"}));
    message.remove("a");
    EXPECT_EQ(namesOf(message), std::vector<std::string>{"b"});
    EXPECT_EQ(Counted::alive, 1);
}

TEST(MessageClear, KeepsTheId) {
    kxMessage message(7, "a", Counted(), "b", 1);
    message.clear();
    EXPECT_TRUE(message.getMap().empty());
    EXPECT_FALSE(message.exists("a"));
    EXPECT_EQ(Counted::alive, 0);
    EXPECT_EQ(message.id(), 7U);
}

TEST(MessageId, IsReadAsWritten) {
    kxMessage message(7, "a", 1);
    message.setId(4294967295U);
    EXPECT_EQ(message.id(), 4294967295U);
    EXPECT_EQ(intOf(message.get("a")), 1);
}

TEST(MessageMap, IsOrderedByTheBytesOfTheNames) {
    kxMessage message;
    for (const char* name : {"b", "\xff", "a", "B", "aa", ""}) message.set(name, 1, false);
    EXPECT_EQ(namesOf(message), (std::vector<std::string>{"", "B", "a", "aa", "b", "\xff"}));
    const auto& map = message.getMap();
    message.set("c", 1, false);
    EXPECT_EQ(map.count("c"), 1U);  // a reference to the map, not a copy
}

TEST(MessageDestructor, DestroysTheValues) {
    { const kxMessage message(1, "a", Counted(), "b", Counted(), "c", Counted()); }
    EXPECT_EQ(Counted::alive, 0);
}

// --- Copy and assignment -------------------------------------------------------------------------

TEST(MessageCopy, ClonesTheAttributesAndNotTheId) {
    kxMessage original(7, "a", 1, "b", Counted());
    kxMessage copy(original);
    EXPECT_EQ(copy.id(), 0U);
    EXPECT_EQ(original.id(), 7U);
    EXPECT_EQ(namesOf(copy), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(Counted::alive, 2);
    copy.set("a", 2, true);
    copy.remove("b");
    EXPECT_EQ(intOf(original.get("a")), 1);
    EXPECT_TRUE(original.exists("b"));
    EXPECT_EQ(Counted::alive, 1);
}

// Enough names for a tree of several levels, which has a different order of its own.
TEST(MessageCopy, ClonesInTheOrderOfTheNames) {
    std::string copies;
    kxMessage original;
    for (const char name : std::string("gcaebdfihj"))
        original.set(std::string(1, name), Noted(name, copies), true);
    copies.clear();
    const kxMessage copy(original);
    EXPECT_EQ(copies, "abcdefghij");
    EXPECT_EQ(namesOf(copy), namesOf(original));
    copies.clear();
    kxMessage target(1, "c", 1, "h", 1);
    target = original;
    EXPECT_EQ(copies, "abdefgij");  // existing attributes are not even copied
}

TEST(MessageConstruct, ANumberStandsForARecordWithThatId) {
    kxMessage message = 7U;
    EXPECT_EQ(message.id(), 7U);
    EXPECT_TRUE(message.getMap().empty());
    message = 8U;  // an assignment merges: there is nothing to add, and the id stays
    EXPECT_EQ(message.id(), 7U);
}

TEST(MessageAssign, AddsWhatIsMissingAndKeepsWhatIsThere) {
    kxMessage target(1, "both", 10, "own", 11), source(2, "both", 20, "new", 21);
    kxMessage& result = target = source;
    EXPECT_EQ(&result, &target);
    EXPECT_EQ(target.id(), 1U);
    EXPECT_EQ(namesOf(target), (std::vector<std::string>{"both", "new", "own"}));
    EXPECT_EQ(intOf(target.get("both")), 10);
    EXPECT_EQ(intOf(target.get("new")), 21);
    EXPECT_EQ(intOf(target.get("own")), 11);
    EXPECT_EQ(source.id(), 2U);
    EXPECT_EQ(namesOf(source), (std::vector<std::string>{"both", "new"}));
    source.set("new", 22, true);
    EXPECT_EQ(intOf(target.get("new")), 21);
}

TEST(MessageAssign, KeepsAnAttributeThatIsThereWithoutAValue) {
    kxMessage target(1, "a", nothing);
    target = kxMessage(2, "a", 1);
    EXPECT_TRUE(target.get("a").empty());
}

TEST(MessageAssign, ToItselfChangesNothing) {
    kxMessage message(7, "a", 1, "b", Counted());
    const kxMessage& same = message;
    message = same;
    EXPECT_EQ(message.id(), 7U);
    EXPECT_EQ(namesOf(message), (std::vector<std::string>{"a", "b"}));
    EXPECT_EQ(intOf(message.get("a")), 1);
    EXPECT_EQ(Counted::alive, 1);
}

// --- Reading by type -----------------------------------------------------------------------------

TEST(GetFromMessage, ReadsAValueOfTheExactType) {
    const kxMessage message(1, "number", 42, "text", std::string("hello"), "list",
                            std::vector<int>{1, 2});
    kxtest::Captured err(stderr);
    int number = 0;
    std::string text = "old";
    std::vector<int> list;
    EXPECT_TRUE(getFromMessage(message, "number", number));
    EXPECT_TRUE(getFromMessage(message, "text", text));
    EXPECT_TRUE(getFromMessage(message, "list", list));
    EXPECT_EQ(number, 42);
    EXPECT_EQ(text, "hello");
    EXPECT_EQ(list, (std::vector<int>{1, 2}));
    EXPECT_EQ(err.text(), "");
    EXPECT_EQ(intOf(message.get("number")), 42);  // read, but not removed
}

TEST(GetFromMessage, IsSilentAboutAbsentAndEmptyValues) {
    const kxMessage message(1, "empty", nothing);
    kxtest::Captured out(stdout), err(stderr);
    int number = 5;
    EXPECT_FALSE(getFromMessage(message, "absent", number));
    EXPECT_FALSE(getFromMessage(message, "empty", number));
    EXPECT_EQ(number, 5);
    EXPECT_EQ(out.text() + err.text(), "");
}

namespace {

struct WrongType {
    const char* name;
    boost::any value;
    std::string held;  // the platform's name of the held type
};
void PrintTo(const WrongType& c, std::ostream* os) { *os << c.name; }

class GetFromMessageWrongType : public testing::TestWithParam<WrongType> {};

const WrongType wrongTypes[] = {
    {"String", std::string("1"), typeid(std::string).name()},
    {"Literal", "1", "PKc"},  // a text that is no std::string either
    {"Unsigned", 1U, "j"},    // no conversions
    {"Long", 1L, "l"},
    {"Bool", true, "b"},
    {"Double", 1.0, "d"},
};

}  // namespace

TEST_P(GetFromMessageWrongType, IsReportedOnStandardErrorOnly) {
    const WrongType& c = GetParam();
    const kxMessage message(1, "a %s b", c.value);
    int number = 5;
    std::string logged;
    kxLog::clearLastError();
    kxLog::enableOutputBuffer(logged);
    kxtest::Captured out(stdout), err(stderr);
    EXPECT_FALSE(getFromMessage(message, "a %s b", number));
    kxLog::disableOutputBuffer();
    EXPECT_EQ(number, 5);
    EXPECT_EQ(err.text(), "getFromMessage : Attribute 'a %s b' has wrong type (is:'" + c.held +
                              "' != req:'i')!\n");
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(logged, "");
    EXPECT_STREQ(kxLog::getLastError(), "");
}

INSTANTIATE_TEST_SUITE_P(Table, GetFromMessageWrongType, testing::ValuesIn(wrongTypes),
                         kxtest::nameOfRow);

TEST(GetFromMessage, NamesTheRequiredType) {
    const kxMessage message(1, "a", 1);
    std::string text = "old";
    kxtest::Captured err(stderr);
    EXPECT_FALSE(getFromMessage(message, "a", text));
    EXPECT_EQ(text, "old");
    EXPECT_EQ(err.text(), std::string("getFromMessage : Attribute 'a' has wrong type (is:'i' != "
                                      "req:'") +
                              typeid(std::string).name() + "')!\n");
}

TEST(MessagePrintBT, PrintsNothing) {
    kxtest::Captured out(stdout), err(stderr);
    kxMessage().printBT();
    EXPECT_EQ(out.text() + err.text(), "");
}

// --- Values of plug-ins --------------------------------------------------------------------------

namespace {

// A type of the plug-in has this name, too. The names are equal but the type objects are not: they
// differ like the copies of a hidden type's information on other platforms.
struct LocalValue {
    int value;
};

class PluginMessage : public testing::Test {
protected:
    void SetUp() override {
        _plugin = kxUtils::loadSharedLibrary(KX_HOST_PLUGIN, /*lazy=*/false);
        ASSERT_NE(_plugin, nullptr) << kxUtils::getLastError();
    }
    ~PluginMessage() override { kxUtils::unloadSharedLibrary(_plugin); }

    template <typename Function>
    Function resolve(const char* name) const {
        return reinterpret_cast<Function>(kxUtils::resolveSymbol(_plugin, name));
    }

    void* _plugin = nullptr;
};

}  // namespace

TEST_F(PluginMessage, IsReadByTheProgram) {
    kxMessage message;
    resolve<FillMessage>("fillMessage")(message);
    kxtest::Captured err(stderr);
    int number = 0;
    std::string text;
    SharedPoint point{};
    EXPECT_TRUE(getFromMessage(message, "number", number));
    EXPECT_TRUE(getFromMessage(message, "text", text));
    EXPECT_TRUE(getFromMessage(message, "point", point));
    EXPECT_EQ(number, 42);
    EXPECT_EQ(text, "from the plug-in");
    EXPECT_EQ(point.x, 3);
    EXPECT_EQ(point.y, 4);
    EXPECT_EQ(err.text(), "");
}

TEST_F(PluginMessage, IsAcceptedByTheNameOfItsType) {
    kxMessage message;
    resolve<FillMessage>("fillMessage")(message);
    LocalValue local{};
    EXPECT_TRUE(getFromMessage(message, "local", local));
    EXPECT_EQ(local.value, 5);
}

TEST_F(PluginMessage, OfTheProgramIsReadByThePlugin) {
    const kxMessage message(1, "number", 1, "point", SharedPoint{20, 300});
    EXPECT_EQ(resolve<SumMessage>("sumMessage")(message), 321);
    EXPECT_EQ(resolve<SumMessage>("sumMessage")(kxMessage()), -1);
}
