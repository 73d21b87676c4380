// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxAnyConverter.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "kxUtils.h"
#include "kxtest.h"

static_assert(std::is_abstract_v<kxAnyConverter>);
static_assert(std::has_virtual_destructor_v<kxAnyConverter>);

namespace {

/// Serves values of type T with a text of its own: `tag` and, for an int, the number.
template <typename T>
class Converter : public kxAnyConverter {
public:
    explicit Converter(std::string tag) : kxAnyConverter(tag), _tag(std::move(tag)) {}

    bool convertToString(const boost::any& value, std::string& text,
                         std::string& typeName) override {
        ++asked;
        if (value.type() != typeid(T)) return false;
        text = _tag;
        typeName = "name of " + _tag;
        return true;
    }

    bool convertFromString(const std::string& typeName, const std::string& text,
                           boost::any& value) override {
        ++asked;
        if (typeName != typeid(T).name()) return false;
        value = _tag + " read " + text;
        return true;
    }

    int asked = 0;

private:
    std::string _tag;
};

struct Text {
    bool converted;
    std::string text = "old text", typeName = "old name";

    explicit Text(const boost::any& value) {
        converted = kxAnyConverter::toString(value, text, typeName);
    }
};

std::string read(const std::string& typeName, const std::string& text) {
    boost::any value = std::string("old value");
    const bool converted = kxAnyConverter::fromString(typeName, text, value);
    return (converted ? "" : "refused, ") + boost::any_cast<std::string>(value);
}

const std::string intName = typeid(int).name();

std::string unknownTypeLines(const std::string& name) {
    const std::string rule(52, '!');
    return rule + "\nTried to serialize unknown type ( " + name + " ), please register !!!\n" +
           rule + "\n";
}

// A type that only the following converter serves, which registers before main().
struct Early {};
Converter<Early> earlyConverter("early");

}  // namespace

// --- The class -----------------------------------------------------------------------------------

#if defined(__x86_64__)
// A pointer to a virtual function holds one plus the offset of its slot (Itanium C++ ABI, 2.3). The
// destructor has the slots 0 and 1. Plug-ins depend on this order.
TEST(ConverterClass, SlotsAreDestructorToStringFromString) {
    const auto toString = &kxAnyConverter::convertToString;
    const auto fromString = &kxAnyConverter::convertFromString;
    std::ptrdiff_t toSlot = 0, fromSlot = 0;
    std::memcpy(&toSlot, &toString, sizeof toSlot);
    std::memcpy(&fromSlot, &fromString, sizeof fromSlot);
    constexpr std::ptrdiff_t slotSize = sizeof(void*);
    EXPECT_EQ(toSlot, 1 + 2 * slotSize);
    EXPECT_EQ(fromSlot, 1 + 3 * slotSize);
}
#endif

namespace {

/// Uses the name that the base class keeps.
class NamedConverter : public Converter<int> {
public:
    using Converter::Converter;
    bool convertFromString(const std::string& typeName, const std::string& text,
                           boost::any& value) override {
        if (typeName != _name) return false;
        value = _name + " read " + text;
        return true;
    }
};

/// Adds nothing to the constructor of the base class.
class InheritingConverter : public kxAnyConverter {
public:
    using kxAnyConverter::kxAnyConverter;
    bool convertToString(const boost::any&, std::string&, std::string&) override { return false; }
    bool convertFromString(const std::string&, const std::string&, boost::any&) override {
        return false;
    }
};
static_assert(std::is_convertible_v<std::string, const InheritingConverter&>);

}  // namespace

TEST(ConverterClass, KeepsItsNameForTheDerivedClass) {
    const NamedConverter one("one"), two("two");
    EXPECT_EQ(read("one", "1"), "one read 1");
    EXPECT_EQ(read("two", "2"), "two read 2");
    EXPECT_EQ(read("three", "3"), "refused, old value");
}

TEST(ConverterRegistry, ServesConvertersMadeBeforeMain) {
    const Text text{Early()};
    EXPECT_TRUE(text.converted);
    EXPECT_EQ(text.text, "early");
}

// --- toString ------------------------------------------------------------------------------------

TEST(ConverterToString, AnswersWithWhatTheConverterWrote) {
    const Converter<int> converter("number");
    kxtest::Captured out(stdout), err(stderr);
    const Text text(1);
    EXPECT_TRUE(text.converted);
    EXPECT_EQ(text.text, "number");
    EXPECT_EQ(text.typeName, "name of number");
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST(ConverterToString, PrintsThreeLinesAboutAnUnknownType) {
    kxtest::Captured out(stdout), err(stderr);
    const Text text(1);
    EXPECT_FALSE(text.converted);
    EXPECT_EQ(text.text, "");
    EXPECT_EQ(text.typeName, "unknown");
    EXPECT_EQ(out.text(), unknownTypeLines("i"));
    EXPECT_EQ(err.text(), "");
}

TEST(ConverterToString, AsksEveryConverterBeforeItGivesUp) {
    Converter<long> first("long");
    Converter<double> second("double");
    kxtest::Captured out(stdout);
    EXPECT_FALSE(Text(1).converted);
    EXPECT_EQ(first.asked, 1);
    EXPECT_EQ(second.asked, 1);
    EXPECT_EQ(out.text(), unknownTypeLines("i"));
}

TEST(ConverterToString, NamesVoidForAnEmptyValue) {
    const Converter<int> converter("number");
    kxtest::Captured out(stdout);
    const Text text{boost::any()};
    EXPECT_FALSE(text.converted);
    EXPECT_EQ(text.typeName, "unknown");
    EXPECT_EQ(out.text(), unknownTypeLines("v"));
}

TEST(ConverterToString, AnEarlierConverterHidesALaterOne) {
    std::optional<Converter<int>> first("first");
    Converter<int> second("second");
    EXPECT_EQ(Text(1).text, "first");
    EXPECT_EQ(second.asked, 0);  // the search ends at the first one that accepts
    first.reset();
    EXPECT_EQ(Text(1).text, "second");
    first.emplace("first again");  // now it is the later one
    EXPECT_EQ(Text(1).text, "second");
}

// --- fromString ----------------------------------------------------------------------------------

TEST(ConverterFromString, AnswersWithWhatTheConverterRead) {
    const Converter<int> converter("number");
    EXPECT_EQ(read(intName, "12"), "number read 12");
}

TEST(ConverterFromString, RefusesSilently) {
    kxtest::Captured out(stdout), err(stderr);
    EXPECT_EQ(read(intName, "12"), "refused, old value");
    Converter<long> other("long");
    EXPECT_EQ(read(intName, "12"), "refused, old value");
    EXPECT_EQ(other.asked, 1);
    EXPECT_EQ(out.text() + err.text(), "");
}

TEST(ConverterFromString, AnEarlierConverterHidesALaterOne) {
    std::optional<Converter<int>> first("first");
    Converter<int> second("second");
    EXPECT_EQ(read(intName, "1"), "first read 1");
    EXPECT_EQ(second.asked, 0);
    first.reset();
    EXPECT_EQ(read(intName, "1"), "second read 1");
}

// --- Lifetime ------------------------------------------------------------------------------------

TEST(ConverterLifetime, EndsTheRegistration) {
    std::unique_ptr<kxAnyConverter> first = std::make_unique<Converter<int>>("first"),
                                    middle = std::make_unique<Converter<long>>("middle"),
                                    last = std::make_unique<Converter<char>>("last");
    middle.reset();  // destroyed through the base class
    kxtest::Captured out(stdout);
    EXPECT_FALSE(Text(1L).converted);
    EXPECT_EQ(read(typeid(long).name(), ""), "refused, old value");
    EXPECT_EQ(Text(1).text, "first");
    EXPECT_EQ(Text('c').text, "last");
}

TEST(ConverterLifetime, EndsWithThePluginThatOwnsTheConverter) {
    kxtest::Captured out(stdout);
    ASSERT_FALSE(Text('c').converted);
    void* const plugin = kxUtils::loadSharedLibrary(KX_HOST_PLUGIN, /*lazy=*/false);
    ASSERT_NE(plugin, nullptr) << kxUtils::getLastError();
    {
        const Text text('c');
        EXPECT_TRUE(text.converted);
        EXPECT_EQ(text.text, "converted by the plug-in");
    }
    EXPECT_TRUE(kxUtils::unloadSharedLibrary(plugin));
    EXPECT_FALSE(Text('c').converted);
}

// --- Converters that use the registry ------------------------------------------------------------

namespace {

/// Serves a list of values: the texts of its elements, as the registry makes them.
class ListConverter : public kxAnyConverter {
public:
    ListConverter() : kxAnyConverter("list") {}

    bool convertToString(const boost::any& value, std::string& text,
                         std::string& typeName) override {
        const auto* const list = boost::any_cast<std::vector<boost::any>>(&value);
        if (!list) return false;
        text.clear();
        for (const boost::any& element : *list) {
            std::string elementText, elementType;
            toString(element, elementText, elementType);
            text += '[' + elementText + ']';
        }
        typeName = "list";
        return true;
    }

    bool convertFromString(const std::string& typeName, const std::string& text,
                           boost::any& value) override {
        if (typeName != "list") return false;
        // Made in the middle of a search and destroyed before it ends.
        const Converter<int> temporary("temporary");
        return fromString(intName, text, value);
    }
};

}  // namespace

TEST(ConverterReentrancy, AConverterMayAskTheRegistry) {
    const ListConverter lists;
    const Converter<int> numbers("number");
    const std::vector<boost::any> inner{1};
    EXPECT_EQ(Text(std::vector<boost::any>{1, inner, 2}).text, "[number][[number]][number]");
}

TEST(ConverterReentrancy, AConverterMayRegisterAnother) {
    const ListConverter lists;
    EXPECT_EQ(read("list", "7"), "temporary read 7");
    EXPECT_EQ(read(intName, "7"), "refused, old value");
}
