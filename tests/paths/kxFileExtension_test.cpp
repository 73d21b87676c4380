// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include "kxFileExtension.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <type_traits>
#include <utility>

namespace {

using Set = std::set<std::string>;
using Map = std::map<std::string, Set>;

kxFileExtension registryOf(const Map& formats) {
    kxFileExtension registry;
    for (const auto& [name, extensions] : formats)
        EXPECT_TRUE(registry.addFormat(name, extensions));
    return registry;
}

}  // namespace

TEST(FileExtension, StartsEmpty) {
    const kxFileExtension registry;
    EXPECT_EQ(registry.getExtensionMap(), Map{});
    EXPECT_FALSE(registry.hasExtension(""));
    EXPECT_EQ(registry.getName(""), "");
    EXPECT_EQ(registry.getExtensions(), Set{});
    EXPECT_EQ(registry.getExtensions("x"), Set{});
    EXPECT_EQ(registry.getExtensionsString(";"), "");
    EXPECT_EQ(registry.getNames(), Set{});
    EXPECT_FALSE(registry.checkFilename("a.osb"));
    EXPECT_FALSE(registry.checkFilename(""));
    static_assert(!std::is_polymorphic_v<kxFileExtension>);
}

TEST(FileExtension, AddFormatKeepsWhatIsThere) {
    kxFileExtension registry;
    EXPECT_TRUE(registry.addFormat("Scene", {".osb", "OSG", " x "}));
    EXPECT_FALSE(registry.addFormat("Scene", {".other"}));
    EXPECT_TRUE(registry.addFormat("scene", {})) << "names differ by case";
    EXPECT_TRUE(registry.addFormat("", {""}));
    EXPECT_EQ(registry.getExtensionMap(),
              (Map{{"Scene", {".osb", "OSG", " x "}}, {"scene", {}}, {"", {""}}}))
        << "names and extensions stay as they were passed";
}

TEST(FileExtension, AddFormatCopiesTheSet) {
    kxFileExtension registry;
    Set extensions{".a"};
    registry.addFormat("A", extensions);
    extensions.insert(".b");
    EXPECT_EQ(registry.getExtensions("A"), Set{".a"});
}

TEST(FileExtension, SubFormatRemovesOneFormat) {
    kxFileExtension registry = registryOf({{"A", {".x"}}, {"B", {".x", ".y"}}});
    EXPECT_FALSE(registry.subFormat("a"));
    EXPECT_TRUE(registry.subFormat("B"));
    EXPECT_FALSE(registry.subFormat("B"));
    EXPECT_EQ(registry.getExtensionMap(), (Map{{"A", {".x"}}}));
}

TEST(FileExtension, ReplaceFormatEndsWithExactlyTheGivenSet) {
    kxFileExtension registry = registryOf({{"A", {".x", ".y"}}});
    EXPECT_TRUE(registry.replaceFormat("A", {".y", ".z"}));
    EXPECT_TRUE(registry.replaceFormat("B", {".b"})) << "an unknown name is registered";
    EXPECT_TRUE(registry.replaceFormat("C", {}));
    EXPECT_EQ(registry.getExtensionMap(), (Map{{"A", {".y", ".z"}}, {"B", {".b"}}, {"C", {}}}));
}

// Uses names and sets that the registry itself holds. The texts are too long for a string's own
// buffer, so that a read of freed memory is noticed.
TEST(FileExtension, ArgumentsMayBePartsOfTheRegistry) {
    const std::string one = ".an extension of format one", two = ".an extension of format two";
    const std::string first = "the first format of them all",
                      second = "the second format of them all";
    const Map formats{{first, {one}}, {second, {two}}};
    kxFileExtension registry = registryOf(formats);
    const Map& held = registry.getExtensionMap();

    EXPECT_TRUE(registry.replaceFormat(first, held.at(first)));
    EXPECT_EQ(held, formats);
    EXPECT_TRUE(registry.replaceFormat(held.begin()->first, held.begin()->second));
    EXPECT_EQ(held, formats);
    EXPECT_TRUE(registry.replaceFormat(first, held.at(second)));
    EXPECT_EQ(held, (Map{{first, {two}}, {second, {two}}}));
    EXPECT_TRUE(registry.replaceFormat("new", held.at(second)));
    EXPECT_TRUE(registry.addFormat("newer", held.at("new")));
    EXPECT_EQ(registry.getExtensions("newer"), Set{two});
    EXPECT_TRUE(registry.subFormat(held.rbegin()->first));
    EXPECT_EQ(held, (Map{{first, {two}}, {"new", {two}}, {"newer", {two}}}));
}

TEST(FileExtension, AddFormatsAddsWhatIsMissing) {
    kxFileExtension registry = registryOf({{"A", {".a"}}, {"B", {".b"}}});
    const kxFileExtension other = registryOf({{"B", {".other"}}, {"C", {".c"}}});
    registry.addFormats(other);
    EXPECT_EQ(registry.getExtensionMap(), (Map{{"A", {".a"}}, {"B", {".b"}}, {"C", {".c"}}}));
    EXPECT_EQ(other.getExtensionMap(), (Map{{"B", {".other"}}, {"C", {".c"}}}));
}

TEST(FileExtension, AddFormatsOfItselfChangesNothing) {
    const Map formats{{"A", {".a"}}, {"B", {".b"}}};
    kxFileExtension registry = registryOf(formats);
    registry.addFormats(registry);
    EXPECT_EQ(registry.getExtensionMap(), formats);
}

TEST(FileExtension, IsAValue) {
    const Map formats{{"A", {".a"}}, {"B", {".b"}}};
    kxFileExtension original = registryOf(formats);

    kxFileExtension copy(original);
    EXPECT_TRUE(original.subFormat("A"));
    EXPECT_EQ(copy.getExtensionMap(), formats) << "a copy goes its own way";

    kxFileExtension assigned = registryOf({{"Z", {".z"}}});
    assigned = copy;
    EXPECT_TRUE(copy.subFormat("B"));
    EXPECT_EQ(assigned.getExtensionMap(), formats) << "assignment replaces everything";

    const kxFileExtension& same = assigned;
    assigned = same;
    EXPECT_EQ(assigned.getExtensionMap(), formats);

    const Set* const set = &assigned.getExtensionMap().at("A");
    kxFileExtension moved(std::move(assigned));
    EXPECT_EQ(moved.getExtensionMap(), formats);
    EXPECT_EQ(&moved.getExtensionMap().at("A"), set) << "moved, not copied";
    kxFileExtension target = registryOf({{"Z", {".z"}}});
    target = std::move(moved);
    EXPECT_EQ(target.getExtensionMap(), formats);
    EXPECT_EQ(&target.getExtensionMap().at("A"), set) << "moved, not copied";
}

TEST(FileExtension, HasExtensionIsExact) {
    const kxFileExtension registry = registryOf({{"A", {".osb"}}, {"B", {".dat", "txt"}}});
    EXPECT_TRUE(registry.hasExtension(".osb"));
    EXPECT_TRUE(registry.hasExtension(".dat"));
    EXPECT_TRUE(registry.hasExtension("txt"));
    for (const char* other : {".OSB", "osb", ".os", ".osbx", ".txt", "A", ""})
        EXPECT_FALSE(registry.hasExtension(other)) << other;
}

TEST(FileExtension, GetNameTakesTheFirstFormatInByteOrder) {
    kxFileExtension registry =
        registryOf({{"beta", {".dat", ".b"}}, {"Alpha", {".dat"}}, {"\xc3\xa4", {".dat", ".u"}}});
    EXPECT_EQ(registry.getName(".dat"), "Alpha");
    EXPECT_TRUE(registry.addFormat("alpha", {".b", ".dat"}));
    EXPECT_EQ(registry.getName(".dat"), "Alpha") << "capitals come first";
    EXPECT_EQ(registry.getName(".b"), "alpha");
    EXPECT_TRUE(registry.subFormat("Alpha"));
    EXPECT_TRUE(registry.subFormat("alpha"));
    EXPECT_EQ(registry.getName(".dat"), "beta");
    EXPECT_TRUE(registry.subFormat("beta"));
    EXPECT_EQ(registry.getName(".dat"), "\xc3\xa4") << "bytes above 127 come last";
    EXPECT_EQ(registry.getName(".DAT"), "");
    EXPECT_EQ(registry.getName(""), "") << "only a registered empty extension matches";
    EXPECT_TRUE(registry.addFormat("None", {""}));
    EXPECT_EQ(registry.getName(""), "None");
}

TEST(FileExtension, ListsExtensionsAndNames) {
    const kxFileExtension registry = registryOf({{"B", {"y", "z", "Z"}}, {"A", {"x", "y"}}});
    EXPECT_EQ(registry.getExtensions("A"), (Set{"x", "y"}));
    EXPECT_EQ(registry.getExtensions("a"), Set{});
    EXPECT_EQ(registry.getExtensions(), (Set{"Z", "x", "y", "z"}));
    EXPECT_EQ(registry.getNames(), (Set{"A", "B"}));
}

TEST(FileExtension, GetExtensionsStringJoinsInOrder) {
    EXPECT_EQ(registryOf({{"A", {"x", "y"}}, {"B", {"y", "z"}}}).getExtensionsString(";"), "x;y;z");
    EXPECT_EQ(registryOf({{"A", {"z"}}, {"B", {"x"}}}).getExtensionsString(" | "), "x | z");
    EXPECT_EQ(registryOf({{"A", {"x", "y"}}}).getExtensionsString(""), "xy");
    EXPECT_EQ(registryOf({{"A", {".x"}}}).getExtensionsString(";"), ".x");
    EXPECT_EQ(registryOf({{"A", {}}}).getExtensionsString(";"), "");
    EXPECT_EQ(registryOf({{"A", {"", "x"}}}).getExtensionsString(";"), ";x");
}

TEST(FileExtension, CheckFilenameIgnoresCase) {
    const kxFileExtension registry = registryOf({{"A", {".osb"}}, {"B", {".Dat", "raw"}}});
    for (const char* name : {"MODEL.OSB", "model.osb", ".osb", "/a.b/c.dAT", "x.raw", "x.RAW"})
        EXPECT_TRUE(registry.checkFilename(name)) << name;
    EXPECT_TRUE(registry.checkFilename("straw")) << "deliberate: without a dot, any such ending";
    for (const char* name : {"modelosb", "model.osb.gz", "model.os", "osb", "aw", ""})
        EXPECT_FALSE(registry.checkFilename(name)) << name;
    EXPECT_FALSE(registryOf({{"A", {""}}}).checkFilename("x")) << "an empty extension";
}
