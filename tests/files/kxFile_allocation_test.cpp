// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The functions for path names allocate no more memory than their result takes. This program
// replaces operator new, which the library then calls as well.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>

#include "kxFile.h"
#include "kxtest.h"
#include "rows.h"

namespace {

bool counting = false;
std::size_t allocations = 0, bytes = 0;

}  // namespace

void* operator new(std::size_t size) {
    if (counting) {
        ++allocations;
        bytes += size;
    }
    if (void* const memory = std::malloc(std::max<std::size_t>(size, 1))) return memory;
    throw std::bad_alloc();
}
// Not inlined, because GCC would then take free() for the wrong partner of operator new.
[[gnu::noinline]] void operator delete(void* memory) noexcept { std::free(memory); }
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

// The bytes that a call allocates, including its result.
template <typename Function>
static auto counted(const Function& function) {
    allocations = bytes = 0;
    counting = true;
    auto result = function();
    counting = false;
    return result;
}

namespace {

// Longer than a string can hold without allocating memory.
const std::string part(60, 'X');
const std::string base = "/home/" + part, backslashed = "\\home\\" + part;

struct AllocationCase {
    const char* name;
    std::string (*call)();
    std::size_t most;
};
void PrintTo(const AllocationCase& c, std::ostream* os) { *os << c.name; }

class Allocations : public testing::TestWithParam<AllocationCase> {
    const kxtest::ScopedEnv _root{"KX_ROOT", "/a/root/of/more/than/15/characters"};
};
TEST_P(Allocations, AreNoMoreThanTheResultNeeds) {
    const std::string result = counted(GetParam().call);
    EXPECT_LE(allocations, GetParam().most);
    EXPECT_GE(allocations, GetParam().most == 0 ? 0u : 1u);  // otherwise nothing is counted here
    const std::size_t taken = bytes;
    EXPECT_EQ(counted([&] { return std::string(result); }), result);
    // A string that grows first allocates room for 30 characters.
    EXPECT_LE(taken, GetParam().most * std::max<std::size_t>(bytes, 31));
}

std::string answer(bool yes) { return yes ? "yes" : "no"; }

const std::string file = base + "/" + part + ".b." + part, shortFile = base + "/a";
const std::string shortBaseName = base + "/a.b." + part, hidden = base + part + "/." + part;
const std::string shortExtension = base + part + ".C++", extended = "a." + part;
const std::string filter = "*." + part + " " + part, shortFilter = part + "*.osb " + part;
const std::string below = base + "/" + part, sibling = "/home/" + part + "x", above = "/home";
const std::string dollar = "$KX_ROOT\\" + part, variable = "${KX_ROOT}/" + part;

const AllocationCase cases[] = {
    {"FileName", [] { return kxFile::getFileName(file); }, 1},
    {"FileNameWithoutSlash", [] { return kxFile::getFileName(part); }, 1},
    {"FileNameShort", [] { return kxFile::getFileName(shortFile); }, 0},
    {"FilePath", [] { return kxFile::getFilePath(file); }, 1},
    {"FilePathShort", [] { return kxFile::getFilePath(part); }, 0},
    {"Extension", [] { return kxFile::getExtension(file); }, 1},
    {"ExtensionShort", [] { return kxFile::getExtension(shortExtension); }, 0},
    {"BaseName", [] { return kxFile::getBaseName(file); }, 1},
    {"BaseNameShort", [] { return kxFile::getBaseName(shortBaseName); }, 0},
    {"BaseNameHidden", [] { return kxFile::getBaseName(hidden); }, 0},
    {"SetExtension", [] { return kxFile::setExtension(file, part); }, 1},
    {"SetExtensionShort", [] { return kxFile::setExtension(extended, "b"); }, 0},
    {"HasExtension", [] { return answer(kxFile::hasExtension(file, part)); }, 0},
    {"HasNotExtension", [] { return answer(kxFile::hasExtension(file, below)); }, 0},
    {"Filter", [] { return kxFile::getExtensionFromFilter(filter); }, 1},
    {"FilterShort", [] { return kxFile::getExtensionFromFilter(shortFilter); }, 0},
    {"Separators", [] { return kxFile::convertSeparators(file); }, 1},
    {"UnixSeparators", [] { return kxFile::convertToUnixSeparators(backslashed); }, 1},
    {"IsRelative", [] { return answer(kxFile::isRelative(file)); }, 0},
    {"IsUmlaut", [] { return answer(kxFile::isumlaut(file)); }, 0},
    {"RelativeBelow", [] { return kxFile::abs2Rel(base, below); }, 1},
    {"RelativeSibling", [] { return kxFile::abs2Rel(base, sibling); }, 1},
    {"RelativeAbove", [] { return kxFile::abs2Rel(below, above); }, 0},
    {"RelativeEqual", [] { return kxFile::abs2Rel(base, base); }, 0},
    {"RelativeRelative", [] { return kxFile::abs2Rel(base, part); }, 1},
    {"RelativeDollar", [] { return kxFile::abs2Rel(base, dollar); }, 1},
    {"RelativeOfRelativeBase", [] { return kxFile::abs2Rel(part, below); }, 0},
    {"AbsoluteJoin", [] { return kxFile::rel2Abs(backslashed, part); }, 1},
    {"AbsoluteAbsolute", [] { return kxFile::rel2Abs(base, below); }, 1},
    {"AbsoluteOfRelativeBase", [] { return kxFile::rel2Abs(part, part); }, 0},
    {"ExpandNothing", [] { return kxFile::expandFilename(file); }, 1},
    {"ExpandVariable", [] { return kxFile::expandFilename(variable); }, 1},
};
INSTANTIATE_TEST_SUITE_P(Table, Allocations, testing::ValuesIn(cases), kxtest::nameOfRow);

TEST(MakeValidFileName, AllocatesNothing) {
    std::string name = "." + part + "?*. ";
    counted([&] { return kxFile::makeValidFileName(name), true; });
    EXPECT_EQ(allocations, 0u);
    EXPECT_EQ(name, part + ".");
}

}  // namespace
