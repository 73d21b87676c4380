// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Path names: every function for the text of a path, and the working directory.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "kxFile.h"
#include "kxLog.h"
#include "kxtest.h"
#include "reference/abs2rel.h"
#include "rows.h"

using namespace std::string_literals;

// --- Functions of one text -----------------------------------------------------------------------

static std::string validFileName(const std::string& name) {
    std::string cleaned = name;
    kxFile::makeValidFileName(cleaned);
    return cleaned;
}

struct TextCase {
    const char* name;
    std::string (*call)(const std::string&);
    std::string text, expected;
};
static void PrintTo(const TextCase& c, std::ostream* os) { *os << c.name; }

class PathText : public testing::TestWithParam<TextCase> {};
TEST_P(PathText, MatchesTable) {
    const TextCase& c = GetParam();
    const std::string argument = c.text;
    EXPECT_EQ(c.call(argument), c.expected);
    EXPECT_EQ(argument, c.text);
}

static constexpr auto fileName = kxFile::getFileName, filePath = kxFile::getFilePath,
                      extension = kxFile::getExtension, baseName = kxFile::getBaseName,
                      ofFilter = kxFile::getExtensionFromFilter, same = kxFile::convertSeparators,
                      toUnix = kxFile::convertToUnixSeparators;

static const TextCase textCases[] = {
    {"FileNameOfEmpty", fileName, "", ""},
    {"FileNameWithoutSlash", fileName, "b.txt", "b.txt"},
    {"FileNameAfterLastSlash", fileName, "/a/b/c.d", "c.d"},
    {"FileNameOfDirectory", fileName, "dir/", ""},
    {"FileNameOfRoot", fileName, "/", ""},
    {"FileNameAfterDoubleSlash", fileName, "a//b", "b"},
    {"FileNameIgnoresBackslash", fileName, "a\\b", "a\\b"},
    {"FileNameAfterSlashAndBackslash", fileName, "/a\\b", "a\\b"},
    {"FileNameHighBytes", fileName, "\xC3\xBC/\xFF\x80", "\xFF\x80"},
    {"FileNameZeroByteAfterSlash", fileName, "a/b\0c"s, "b\0c"s},
    {"FileNameZeroByteBeforeSlash", fileName, "a\0b/c"s, "c"},

    {"FilePathOfEmpty", filePath, "", ""},
    {"FilePathWithoutSlash", filePath, "file", "."},
    {"FilePathInRootIsEmpty", filePath, "/file", ""},
    {"FilePathOfRoot", filePath, "/", ""},
    {"FilePathBeforeLastSlash", filePath, "/a/b/c", "/a/b"},
    {"FilePathOfDirectory", filePath, "dir/", "dir"},
    {"FilePathKeepsFormerOfTwoSlashes", filePath, "a//b", "a/"},
    {"FilePathTwoLeadingSlashes", filePath, "//a", "/"},
    {"FilePathIgnoresBackslash", filePath, "a\\b", "."},
    {"FilePathHighBytes", filePath, "\xFF\xE9/x", "\xFF\xE9"},
    {"FilePathZeroByte", filePath, "a\0b/c"s, "a\0b"s},

    {"ExtensionOfEmpty", extension, "", ""},
    {"ExtensionWithoutDot", extension, "dir/Name", ""},
    {"ExtensionLowerCased", extension, "Archive.TAR.GZ", "gz"},
    {"ExtensionDotLast", extension, "name.", ""},
    {"ExtensionDotAlone", extension, ".", ""},
    {"ExtensionDotFirst", extension, ".Profile", "profile"},
    {"ExtensionDotBeforeSlash", extension, "a.b/c", "b/c"},
    {"ExtensionDotBeforeSlashLowerCased", extension, "dir.D/File", "d/file"},
    {"ExtensionTwoDots", extension, "a..B", "b"},
    {"ExtensionAsciiNeighboursKept", extension, "x.@AZ[`az{", "@az[`az{"},
    {"ExtensionHighBytesKept", extension, "x.\xC4\xD6\xDC\xC0\xFFZ", "\xC4\xD6\xDC\xC0\xFFz"},
    {"ExtensionZeroByteBehindDot", extension, "a.B\0C"s, "b\0c"s},
    {"ExtensionZeroByteBeforeDot", extension, "a\0.B"s, "b"},

    {"BaseNameOfEmpty", baseName, "", ""},
    {"BaseNameWithoutDot", baseName, "/x/Name", "Name"},
    {"BaseNameHidden", baseName, ".profile", ""},
    {"BaseNameHiddenInDirectory", baseName, "/a.b/.profile", ""},
    {"BaseNameUpToLastDot", baseName, "/x/a.b.c", "a.b"},
    {"BaseNameArchive", baseName, "a.tar.gz", "a.tar"},
    {"BaseNameDotInDirectoryOnly", baseName, "/x.d/file", "file"},
    {"BaseNameOfDirectory", baseName, "/x.d/", ""},
    {"BaseNameDotLast", baseName, "name.", "name"},
    {"BaseNameTwoLeadingDots", baseName, "..a", "."},
    {"BaseNameKeepsCase", baseName, "ReadMe.TXT", "ReadMe"},
    {"BaseNameHighBytes", baseName, "d/\xDC\xFF.\xFF", "\xDC\xFF"},
    {"BaseNameZeroByte", baseName, "d/a\0b.c"s, "a\0b"s},
    {"BaseNameIgnoresBackslash", baseName, "a.b\\c.d", "a.b\\c"},

    {"FilterEmpty", ofFilter, "", ""},
    {"FilterWithoutDot", ofFilter, "* All files", ""},
    {"FilterCutAtBlank", ofFilter, "*.OSB Scene files", ".osb"},
    {"FilterWithoutDescription", ofFilter, "*.oSb", ".osb"},
    {"FilterLastDot", ofFilter, "*.tar.GZ Archive", ".gz"},
    {"FilterEndsInDot", ofFilter, "*.", "."},
    {"FilterBlankAfterDot", ofFilter, "*. x", "."},
    {"FilterFirstBlankAfterDot", ofFilter, "a b.C d e", ".c"},
    {"FilterDotInDescription", ofFilter, "*.osb Version 2.0B final", ".0b"},
    {"FilterDotEndsDescription", ofFilter, "*.osb Scenes.", "."},
    {"FilterKeepsBracket", ofFilter, "Scenes (*.OSB)", ".osb)"},
    {"FilterTabIsNoBlank", ofFilter, "*.A\tB", ".a\tb"},
    {"FilterHighBytesKept", ofFilter, "*.\xC4Q \xC4", ".\xC4q"},
    {"FilterZeroByte", ofFilter, "*.A\0B c"s, ".a\0b"s},

    {"SeparatorsOfEmpty", same, "", ""},
    {"SeparatorsUnchanged", same, "C:\\a/b\\..//c", "C:\\a/b\\..//c"},
    {"SeparatorsZeroAndHighBytes", same, "\xFF\0\\x"s, "\xFF\0\\x"s},
    {"UnixSeparatorsOfEmpty", toUnix, "", ""},
    {"UnixSeparatorsEveryBackslash", toUnix, "\\\\a\\b/c\\", "//a/b/c/"},
    {"UnixSeparatorsNothingToDo", toUnix, "/a b.c", "/a b.c"},
    {"UnixSeparatorsZeroAndHighBytes", toUnix, "\xDC\0\\\xFF"s, "\xDC\0/\xFF"s},

    {"ValidNameOfEmpty", validFileName, "", ""},
    {"ValidNameUntouched", validFileName, "Read Me.txt", "Read Me.txt"},
    {"ValidNameOneTrailingDot", validFileName, "a..", "a."},
    {"ValidNameOneTrailingBlank", validFileName, "a  ", "a "},
    {"ValidNameTrailingDotThenBlank", validFileName, "a. ", "a."},
    {"ValidNameTrailingBlankThenDot", validFileName, "a .", "a "},
    {"ValidNameTrailingTabStays", validFileName, "a\t", "a\t"},
    {"ValidNameOneLeadingDot", validFileName, "..a", ".a"},
    {"ValidNameLeadingBlankStays", validFileName, " a", " a"},
    {"ValidNameDot", validFileName, ".", ""},
    {"ValidNameBlank", validFileName, " ", ""},
    {"ValidNameTwoDots", validFileName, "..", ""},
    {"ValidNameThreeDots", validFileName, "...", "."},
    {"ValidNameDotBlank", validFileName, ". ", ""},
    {"ValidNameReservedInside", validFileName, "a:b", "ab"},
    {"ValidNameEveryReserved", validFileName, "1<2>3:4\"5/6\\7|8?9*0", "1234567890"},
    {"ValidNameReservedRepeated", validFileName, "**a??b::", "ab"},
    {"ValidNameReservedOnly", validFileName, "<>:\"/\\|?*", ""},
    {"ValidNameEndsBeforeReserved", validFileName, ".a?b*. ", "ab."},
    {"ValidNameTrailingDotFreedLater", validFileName, "a.?", "a."},
    {"ValidNameTrailingBlankFreedLater", validFileName, "a *", "a "},
    {"ValidNameLeadingDotFreedLater", validFileName, "?.a", ".a"},
    {"ValidNameHighBytes", validFileName, ".\xC3\xBC:\xFF.", "\xC3\xBC\xFF"},
    {"ValidNameZeroByte", validFileName, "a\0:b\0"s, "a\0b\0"s},
};
INSTANTIATE_TEST_SUITE_P(Table, PathText, testing::ValuesIn(textCases), kxtest::nameOfRow);

TEST(MakeValidFileName, RemovesNineCharactersAndNoOther) {
    const std::string reserved = "<>:\"/\\|?*";
    for (int value = 0; value < 256; ++value) {
        const char c = static_cast<char>(value);
        const bool removed = reserved.find(c) != std::string::npos;
        EXPECT_EQ(validFileName("x"s + c + "y"), removed ? "xy" : "x"s + c + "y") << value;
    }
}

TEST(CaseFolding, TouchesTheLettersAToZOnly) {
    for (int value = 0; value < 256; ++value) {
        const char c = static_cast<char>(value);
        if (c == '.' || c == ' ') continue;
        const bool upper = value >= 'A' && value <= 'Z';
        const std::string folded(1, static_cast<char>(upper ? value + 32 : value));
        EXPECT_EQ(kxFile::getExtension("n."s + c), folded) << value;
        EXPECT_EQ(kxFile::getExtensionFromFilter("*."s + c), "." + folded) << value;
        for (int other = 0; other < 256; ++other) {
            const bool otherUpper = other >= 'A' && other <= 'Z';
            const bool equal = folded[0] == static_cast<char>(otherUpper ? other + 32 : other);
            const std::string suffix(1, static_cast<char>(other));
            EXPECT_EQ(kxFile::hasExtension("n."s + c, suffix), equal) << value << ' ' << other;
        }
    }
}

// In this locale the byte 0xDD is an upper-case letter, and "I" is not the upper case of "i".
TEST(CaseFolding, NoLocaleChangesIt) {
    const kxtest::ScopedLocale turkish("tr_TR", "ISO-8859-9");
    if (!turkish.isSet()) GTEST_SKIP() << "no Turkish locale, and none can be compiled";
    EXPECT_NE(std::tolower(0xDD), 0xDD);  // otherwise the locale would show nothing
    EXPECT_EQ(kxFile::getExtension("x.I\xC4\xDD"), "i\xC4\xDD");
    EXPECT_EQ(kxFile::getExtensionFromFilter("*.I\xC4\xDD"), ".i\xC4\xDD");
    EXPECT_TRUE(kxFile::hasExtension("x.I", "i"));
    EXPECT_FALSE(kxFile::hasExtension("x.\xC4", "\xE4"));
}

// --- Predicates ----------------------------------------------------------------------------------

struct SuffixCase {
    const char* name;
    std::string path, extension;
    bool expected;
};
static void PrintTo(const SuffixCase& c, std::ostream* os) { *os << c.name; }

class HasExtension : public testing::TestWithParam<SuffixCase> {};
TEST_P(HasExtension, MatchesTable) {
    const SuffixCase& c = GetParam();
    EXPECT_EQ(kxFile::hasExtension(c.path, c.extension), c.expected);
}

static const SuffixCase suffixCases[] = {
    {"EmptyPath", "", "a", false},
    {"EmptyExtension", "a.osb", "", false},
    {"BothEmpty", "", "", false},
    {"PathInCapitals", "MODEL.OSB", "osb", true},
    {"ExtensionInCapitals", "model.osb", "OSB", true},
    {"MixedCase", "model.oSb", "OsB", true},
    {"NoDotRequired", "foobar", "bar", true},
    {"OwnDot", "a.tar.gz", ".gz", true},
    {"OwnDotMissingInPath", "agz", ".gz", false},
    {"SeveralDots", "a.TAR.gz", "tar.GZ", true},
    {"PathShorter", "ab", "xab", false},
    {"PathShorterByItsEnd", "ab", "abx", false},
    {"WholePath", "ab", "AB", true},
    {"WholePathDiffers", "ab", "cb", false},
    {"NotAtTheEnd", "a.osb.bak", "osb", false},
    {"TrailingBlank", "a.osb ", "osb", false},
    {"AcrossSlash", "d.x/f", "X/F", true},
    {"HighBytesEqual", "a.\xC3\xBC", "\xC3\xBC", true},
    {"HighBytesNotFolded", "a.\xC3\x9C", "\xC3\xBC", false},
    {"ZeroByteInBoth", "a.b\0C"s, "B\0c"s, true},
    {"ZeroByteDoesNotEndPath", "a.osb\0x"s, "osb", false},
    {"ZeroByteDoesNotEndExtension", "a.osb", "osb\0"s, false},
};
INSTANTIATE_TEST_SUITE_P(Table, HasExtension, testing::ValuesIn(suffixCases), kxtest::nameOfRow);

TEST(IsRelative, LooksAtTheFirstCharacterOnly) {
    EXPECT_FALSE(kxFile::isRelative(""));
    EXPECT_FALSE(kxFile::isRelative("/"));
    EXPECT_FALSE(kxFile::isRelative("/a/b"));
    EXPECT_FALSE(kxFile::isRelative("$"));
    EXPECT_FALSE(kxFile::isRelative("$ROOT/x"));
    EXPECT_TRUE(kxFile::isRelative("C:/x"));
    EXPECT_TRUE(kxFile::isRelative("a/$b"));
    for (int value = 0; value < 256; ++value) {
        const char c = static_cast<char>(value);
        EXPECT_EQ(kxFile::isRelative(c + "/x"s), c != '/' && c != '$') << value;
    }
}

TEST(IsUmlaut, IsTrueFromByte161On) {
    EXPECT_FALSE(kxFile::isumlaut(""));
    EXPECT_FALSE(kxFile::isumlaut("plain text\n\x7F\0"s));
    EXPECT_FALSE(kxFile::isumlaut("\x80\x9F\xA0"));
    EXPECT_TRUE(kxFile::isumlaut("\xC3\xBC"));
    EXPECT_TRUE(kxFile::isumlaut("a\0\xA1"s));  // a zero byte does not end the text
    for (int value = 0; value < 256; ++value) {
        const std::string byte(1, static_cast<char>(value));
        EXPECT_EQ(kxFile::isumlaut(byte), value >= 161) << value;
        EXPECT_EQ(kxFile::isumlaut("a" + byte + "b"), value >= 161) << value;
    }
}

// --- Functions of two texts ----------------------------------------------------------------------

struct PairCase {
    const char* name;
    std::string (*call)(const std::string&, const std::string&);
    std::string first, second, expected;
};
static void PrintTo(const PairCase& c, std::ostream* os) { *os << c.name; }

class PathPair : public testing::TestWithParam<PairCase> {};
TEST_P(PathPair, MatchesTable) {
    const PairCase& c = GetParam();
    EXPECT_EQ(c.call(c.first, c.second), c.expected);
}

static constexpr auto setExtension = kxFile::setExtension, abs2Rel = kxFile::abs2Rel,
                      rel2Abs = kxFile::rel2Abs;

static const PairCase pairCases[] = {
    {"SetExtensionOfEmpty", setExtension, "", "png", ".png"},
    {"SetExtensionBothEmpty", setExtension, "", "", "."},
    {"SetExtensionReplaces", setExtension, "a.txt", "png", "a.png"},
    {"SetExtensionReplacesLastOnly", setExtension, "a.b.c", "png", "a.b.png"},
    {"SetExtensionAppends", setExtension, "a", "png", "a.png"},
    {"SetExtensionDotLast", setExtension, "a.", "png", "a.png"},
    {"SetExtensionDotFirst", setExtension, ".a", "png", ".png"},
    {"SetExtensionEmptyReplaces", setExtension, "a.txt", "", "a."},
    {"SetExtensionEmptyAppends", setExtension, "a", "", "a."},
    {"SetExtensionDotBeforeSlash", setExtension, "x.d/file", "png", "x.png"},
    {"SetExtensionOwnDotIsDoubled", setExtension, "a.txt", ".PNG", "a..PNG"},
    {"SetExtensionHighBytes", setExtension, "\xFF.\xC3", "\xBC", "\xFF.\xBC"},
    {"SetExtensionZeroBytes", setExtension, "a\0b.c"s, "\0d"s, "a\0b.\0d"s},

    {"RelativePathComesBack", abs2Rel, "/a", "b/c", "b/c"},
    {"RelativePathKeepsBackslashes", abs2Rel, "/a", "x\\y", "x\\y"},
    {"RelativePathBeginsWithBackslash", abs2Rel, "/a", "\\a\\b", "\\a\\b"},
    {"RelativePathBeforeEmptyBase", abs2Rel, "", "b", "b"},
    {"RelativePathBeforeRelativeBase", abs2Rel, "rel", "C:\\x", "C:\\x"},
    {"RelativeOfEmptyBase", abs2Rel, "", "/a", ""},
    {"RelativeOfEmptyPath", abs2Rel, "/a", "", ""},
    {"RelativeOfEmptyBoth", abs2Rel, "", "", ""},
    {"RelativeDollar", abs2Rel, "/a", "$ROOT/x", "$ROOT/x"},
    {"RelativeDollarConverted", abs2Rel, "/a", "$ROOT\\x", "$ROOT/x"},
    {"RelativeDollarBeforeRelativeBase", abs2Rel, "rel", "$ROOT\\x", "$ROOT/x"},
    {"RelativeDollarEmptyBase", abs2Rel, "", "$ROOT/x", ""},
    {"RelativeOfRelativeBase", abs2Rel, "rel", "/a", ""},
    {"RelativeOfDollarBase", abs2Rel, "$ROOT", "/a", ""},
    {"RelativeOfDriveBase", abs2Rel, "C:/a", "/a", ""},
    {"RelativeOfBackslashBase", abs2Rel, "\\usr\\local", "/usr\\src", "../src"},
    {"RelativeSibling", abs2Rel, "/usr/local/lib", "/usr/src/sys", "../../src/sys"},
    {"RelativeBelow", abs2Rel, "/usr", "/usr/src/sys", "src/sys"},
    {"RelativeBelowBaseWithSlash", abs2Rel, "/usr/", "/usr/src/sys", "src/sys"},
    {"RelativeAbove", abs2Rel, "/usr/src/sys", "/usr", "../.."},
    {"RelativeAboveBaseWithSlash", abs2Rel, "/usr/src/sys/", "/usr", "../.."},
    {"RelativeAbovePathWithSlash", abs2Rel, "/usr/src/sys", "/usr/", "../../"},
    {"RelativeEqual", abs2Rel, "/a/b", "/a/b", "."},
    {"RelativeEqualBothSlashes", abs2Rel, "/a/b/", "/a/b/", "./"},
    {"RelativeEqualPathWithSlash", abs2Rel, "/a/b", "/a/b/", "./"},
    {"RelativeEqualBaseWithSlash", abs2Rel, "/a/b/", "/a/b", "."},
    {"RelativeRoots", abs2Rel, "/", "/", "/"},
    {"RelativeFromRoot", abs2Rel, "/", "/a/b", "a/b"},
    {"RelativeRootFromBelow", abs2Rel, "/a", "/", "/"},
    {"RelativeNamePrefixIsNoDirectory", abs2Rel, "/x/ab", "/x/abc", "../abc"},
    {"RelativeNamePrefixOfBase", abs2Rel, "/x/abc", "/x/ab", "../ab"},
    {"RelativeContainsWholePath", abs2Rel, "/a/c", "/b", "/b"},
    {"RelativeContainsWholePathDeep", abs2Rel, "/a/b/c", "/d/e", "/d/e"},
    {"RelativeIsCaseSensitive", abs2Rel, "/p/A", "/p/a", "../a"},
    {"RelativeKeepsDots", abs2Rel, "/p/../q", "/p/./r", "../.././r"},
    {"RelativeDoubleSlashInBase", abs2Rel, "/p//q", "/p/r", "../../r"},
    {"RelativeTwoSlashesEndBase", abs2Rel, "/p//", "/p", ".."},
    {"RelativeTwoSlashesEndPath", abs2Rel, "/p", "/p//", "/"},
    {"RelativeHighBytes", abs2Rel, "/\xC3\xBC/x", "/\xC3\xBC/\xFF", "../\xFF"},
    {"RelativeZeroBytes", abs2Rel, "/p\0q/x"s, "/p\0q/\0y"s, "../\0y"s},
    {"RelativeZeroByteDiffers", abs2Rel, "/p/a\0x"s, "/p/a\0y"s, "../a\0y"s},

    {"AbsoluteOfEmptyBase", rel2Abs, "", "b", ""},
    {"AbsoluteOfEmptyBaseAbsolutePath", rel2Abs, "", "/b", ""},
    {"AbsoluteOfEmptyPath", rel2Abs, "/a", "", ""},
    {"AbsoluteJoin", rel2Abs, "/a", "b", "/a/b"},
    {"AbsoluteJoinDoublesSlash", rel2Abs, "/a/", "b", "/a//b"},
    {"AbsoluteJoinAtRoot", rel2Abs, "/", "b", "//b"},
    {"AbsoluteJoinKeepsDots", rel2Abs, "/a/b", "../c", "/a/b/../c"},
    {"AbsoluteJoinKeepsDot", rel2Abs, "/a/.", "./c//d", "/a/././c//d"},
    {"AbsolutePathComesBack", rel2Abs, "/a", "/x/../y", "/x/../y"},
    {"AbsolutePathConverted", rel2Abs, "/a", "/x\\y", "/x/y"},
    {"AbsolutePathFromBackslash", rel2Abs, "/a", "\\x", "/x"},
    {"AbsolutePathBeforeRelativeBase", rel2Abs, "rel", "/x", "/x"},
    {"AbsoluteDollar", rel2Abs, "/a", "$V\\x", "$V/x"},
    {"AbsoluteDollarBeforeRelativeBase", rel2Abs, "rel", "$V", "$V"},
    {"AbsoluteRelativeBase", rel2Abs, "proj", "b", ""},
    {"AbsoluteDollarBase", rel2Abs, "$V", "b", ""},
    {"AbsoluteOneCharacterBase", rel2Abs, "a", "b", ""},
    {"AbsoluteColonAloneBase", rel2Abs, ":", "b", ""},
    {"AbsoluteColonThirdBase", rel2Abs, "ab:", "b", ""},
    {"AbsoluteDriveBase", rel2Abs, "C:\\p", "x\\y", "C:/p/x/y"},
    {"AbsoluteBareDriveBase", rel2Abs, "C:", "x", "C:/x"},
    {"AbsoluteDrivePathCountsAsRelative", rel2Abs, "/a", "C:\\x", "/a/C:/x"},
    {"AbsoluteBackslashBase", rel2Abs, "\\a", "b", "/a/b"},
    {"AbsoluteHighBytes", rel2Abs, "/\xFF", "\xC3\xBC", "/\xFF/\xC3\xBC"},
    {"AbsoluteZeroBytes", rel2Abs, "/a\0"s, "\0b"s, "/a\0/\0b"s},
};
INSTANTIATE_TEST_SUITE_P(Table, PathPair, testing::ValuesIn(pairCases), kxtest::nameOfRow);

// --- abs2Rel and rel2Abs at their limits ---------------------------------------------------------

static std::string repeated(const std::string& text, int count) {
    std::string result;
    while (count-- > 0) result += text;
    return result;
}
static std::string letters(std::size_t count) { return std::string(count, 'x'); }

TEST(Abs2RelLimit, WayDownOf2046CharactersIsTheLast) {
    for (const std::size_t length : {2045u, 2046u})
        EXPECT_EQ(kxFile::abs2Rel("/a", "/a/" + letters(length)), letters(length));
    for (const std::size_t length : {2047u, 2048u, 5000u}) {
        const std::string path = "/a/" + letters(length - 2) + "\\y";  // comes back unconverted
        EXPECT_EQ(kxFile::abs2Rel("/a", path), path);
    }
}

TEST(Abs2RelLimit, WaysUpCount) {
    const std::string base = "/a/b/c";
    for (const std::size_t length : {2045u, 2046u})
        EXPECT_EQ(kxFile::abs2Rel(base, "/a/" + letters(length - 6)),
                  "../../" + letters(length - 6));
    for (const std::size_t length : {2047u, 2048u}) {
        const std::string path = "/a/" + letters(length - 8) + "\\y";
        EXPECT_EQ(kxFile::abs2Rel(base, path), path);
    }
}

// 682 steps up take 2046 characters; the last slash is dropped only after the limit has been
// tested.
TEST(Abs2RelLimit, IsTestedBeforeTheLastSlashIsDropped) {
    const std::string all = repeated("../", 682);
    EXPECT_EQ(kxFile::abs2Rel("/a" + repeated("/b", 682), "/a"), all.substr(0, 2045));
    EXPECT_EQ(kxFile::abs2Rel("/a" + repeated("/b", 682), "/a/"), all);
    EXPECT_EQ(kxFile::abs2Rel("/a" + repeated("/b", 683), "/a"), "/a");
}

TEST(Abs2RelLimit, FallbackIsNotTakenForALongInputWithAShortResult) {
    const std::string common = "/" + letters(4000);
    EXPECT_EQ(kxFile::abs2Rel(common + "/a", common + "/b"), "../b");
    EXPECT_EQ(kxFile::abs2Rel(common, common), ".");
}

TEST(Abs2RelLimit, PathReplacesResultUnderTheLimitOnly) {
    // The result is "../" followed by the path without its first slash, so it contains the whole
    // path.
    const std::string fits = "/" + letters(2042) + "\\", over = "/" + letters(2043) + "\\";
    EXPECT_EQ(kxFile::abs2Rel("/a", fits), "/" + letters(2042) + "/");
    EXPECT_EQ(kxFile::abs2Rel("/a", over), over);
}

TEST(Abs2RelLimit, DollarPathIsConvertedUpTo2046Characters) {
    for (const std::size_t length : {2045u, 2046u})
        EXPECT_EQ(kxFile::abs2Rel("/a", "$\\" + letters(length - 2)), "$/" + letters(length - 2));
    for (const std::size_t length : {2047u, 2048u}) {
        const std::string path = "$\\" + letters(length - 2);
        EXPECT_EQ(kxFile::abs2Rel("/a", path), path);
    }
}

TEST(Abs2RelLimit, RelativePathHasNone) {
    const std::string path = "a\\" + letters(5000);
    EXPECT_EQ(kxFile::abs2Rel("/a", path), path);
}

TEST(Rel2AbsLimit, AbsolutePathIsCutAt2047Characters) {
    for (const std::string first : {"/", "$", "\\"}) {
        const std::string converted = first == "$" ? "$" : "/";
        for (const std::size_t length : {2046u, 2047u})
            EXPECT_EQ(kxFile::rel2Abs("/a", first + letters(length - 1)),
                      converted + letters(length - 1));
        for (const std::size_t length : {2048u, 5000u})
            EXPECT_EQ(kxFile::rel2Abs("/a", first + letters(length - 1)),
                      converted + letters(2046));
    }
}

TEST(Rel2AbsLimit, JoinOf2048CharactersIsRefused) {
    const std::string base = "/" + letters(999);
    for (const std::size_t length : {2046u, 2047u})
        EXPECT_EQ(kxFile::rel2Abs(base, letters(length - 1001)),
                  base + "/" + letters(length - 1001));
    for (const std::size_t length : {2048u, 2049u, 9000u})
        EXPECT_EQ(kxFile::rel2Abs(base, letters(length - 1001)), "");
    EXPECT_EQ(kxFile::rel2Abs("/" + letters(2046), "y"), "");
    EXPECT_EQ(kxFile::rel2Abs("/" + letters(2044), "y"), "/" + letters(2044) + "/y");
}

// --- abs2Rel against its model -------------------------------------------------------------------

static bool agree(const std::string& base, const std::string& path) {
    const std::string got = kxFile::abs2Rel(base, path);
    const std::string expected = reference::abs2Rel(base, path);
    if (got == expected) return true;
    ADD_FAILURE() << "base '" << base << "', path '" << path << "': got '" << got << "', expected '"
                  << expected << "'";
    return false;
}

// All texts of the alphabet's characters up to the given length.
static std::vector<std::string> allTexts(const std::string& alphabet, std::size_t length) {
    std::vector<std::string> texts{""};
    for (std::size_t i = 0; i < texts.size(); ++i)
        if (const std::string text = texts[i]; text.size() < length)
            for (const char c : alphabet) texts.push_back(text + c);
    return texts;
}

TEST(Abs2RelModel, AgreesOnAllShortTexts) {
    for (const auto& texts : {allTexts("/ab.\\$", 3), allTexts("/a", 6)})
        for (const auto& base : texts)
            for (const auto& path : texts)
                if (!agree(base, path)) return;
}

TEST(Abs2RelModel, AgreesOnRandomTexts) {
    std::mt19937 random(20170301);
    const auto below = [&](std::size_t n) { return random() % n; };
    const auto text = [&] {
        static const std::string alphabet = "/ab.\\$";
        std::string result(below(13), '/');
        for (std::size_t i = below(4) ? 1 : 0; i < result.size(); ++i)
            result[i] = alphabet[below(alphabet.size())];
        return result;
    };
    for (int i = 0; i < 200000; ++i) {
        const std::string base = text();
        std::string path = text();
        if (below(2)) path = base.substr(0, below(base.size() + 1)) + path;
        if (!agree(base, path.substr(0, 12))) return;
    }
}

// Paths up, paths down and both, with lengths around the limit.
TEST(Abs2RelModel, AgreesOnRandomTextsAroundTheLimit) {
    std::mt19937 random(1);
    for (int i = 0; i < 300; ++i) {
        const int ups = static_cast<int>(random() % 690);
        const std::size_t room = static_cast<std::size_t>(std::max(0, 2040 - 3 * ups));
        const std::string down = letters(room + random() % 12);
        const std::string base = "/c" + repeated("/b", ups) + (random() % 2 ? "/" : "");
        if (!agree(base, "/c/" + down) || !agree(base, "/c") || !agree(base, "/" + down)) return;
    }
}

// --- Threads -------------------------------------------------------------------------------------

TEST(PathNames, RunOnSeveralThreads) {
    int wrong[4] = {};
    std::vector<std::thread> threads;
    for (int& mine : wrong)
        threads.emplace_back([&mine] {
            for (int i = 0; i < 20; ++i) {
                for (const TextCase& c : textCases) mine += c.call(c.text) != c.expected;
                for (const PairCase& c : pairCases) mine += c.call(c.first, c.second) != c.expected;
            }
        });
    for (auto& thread : threads) thread.join();
    for (const int mine : wrong) EXPECT_EQ(mine, 0);
}

// --- Working directory ---------------------------------------------------------------------------

// Descends from the working directory until its path has exactly this length.
static void descend(std::size_t here, std::size_t length) {
    while (here < length) {
        std::size_t name = std::min<std::size_t>(length - here - 1, 200);
        if (length - here - 1 - name == 1) --name;  // a rest of one character would leave no name
        const std::string directory = letters(name);
        ASSERT_EQ(mkdir(directory.c_str(), 0777), 0);
        ASSERT_EQ(chdir(directory.c_str()), 0);
        here += 1 + name;
    }
}

TEST(GetCurrentDir, IsTheWorkingDirectory) {
    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd(dir.makeDir("a b\xC3\xBC"));
    EXPECT_EQ(kxFile::getCurrentDir(), dir.file("a b\xC3\xBC"));
}

TEST(GetCurrentDir, Takes2047CharactersAndNoMore) {
    for (const std::size_t length : {2046u, 2047u, 2048u, 2049u}) {
        const kxtest::TempDir dir;
        const kxtest::ScopedCwd cwd(dir.path());
        ASSERT_NO_FATAL_FAILURE(descend(dir.path().size(), length));
        const std::string got = kxFile::getCurrentDir();
        if (length <= 2047) {
            EXPECT_EQ(got.size(), length);
            EXPECT_EQ(got.compare(0, dir.path().size() + 1, dir.path() + "/"), 0);
        } else {
            EXPECT_EQ(got, "");
        }
    }
}

TEST(GetCurrentDir, IsEmptyInARemovedDirectory) {
    const kxtest::TempDir dir;
    const std::string gone = dir.makeDir("gone");
    const kxtest::ScopedCwd cwd(gone);
    ASSERT_EQ(rmdir(gone.c_str()), 0);
    EXPECT_EQ(kxFile::getCurrentDir(), "");
}

TEST(SetCurrentDir, ChangesTheWorkingDirectory) {
    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd(dir.path());
    dir.makeDir("a/b");
    kxFile::setCurrentDir("a/b");
    EXPECT_EQ(kxFile::getCurrentDir(), dir.file("a/b"));
    kxFile::setCurrentDir("..");
    EXPECT_EQ(kxFile::getCurrentDir(), dir.file("a"));
    kxFile::setCurrentDir(dir.path());
    EXPECT_EQ(kxFile::getCurrentDir(), dir.path());
}

TEST(SetCurrentDir, FailsSilentlyAndIgnoresAnEmptyPath) {
    const kxtest::TempDir dir;
    const kxtest::ScopedCwd cwd(dir.path());
    const std::string file = dir.write("file", "x");
    kxLog::clearLastError();
    kxtest::Captured out(stdout), err(stderr);
    for (const std::string& path : {""s, dir.file("missing"), file, "$HOME"s, "~"s}) {
        kxFile::setCurrentDir(path);
        EXPECT_EQ(kxFile::getCurrentDir(), dir.path()) << path;
    }
    EXPECT_EQ(out.text() + err.text(), "");
    EXPECT_STREQ(kxLog::getLastError(), "");
    errno = 0;
    kxFile::setCurrentDir("");
    EXPECT_EQ(errno, 0);  // the system was not even asked
}
