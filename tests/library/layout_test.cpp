// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The layouts and virtual operations against which plug-ins are compiled: none may ever move.
#include <dlfcn.h>
#include <elf.h>
#include <gtest/gtest.h>
#include <link.h>

#include <boost/any.hpp>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <istream>
#include <map>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxAnyConverter.h"
#include "kxBase64.h"
#include "kxCPUInfo.h"
#include "kxCRC32.h"
#include "kxCrypt.h"
#include "kxFileExtension.h"
#include "kxFont.h"
#include "kxMessage.h"
#include "kxtest.h"

namespace {

constexpr std::size_t pointer = sizeof(void*);

template <class T>
T read(const void* object, std::size_t offset) {
    T value;
    std::memcpy(&value, static_cast<const char*>(object) + offset, sizeof value);
    return value;
}

constexpr std::size_t roundedUp(std::size_t offset, std::size_t alignment) {
    return (offset + alignment - 1) / alignment * alignment;
}

/// The number of virtual operations in the exported table of a class, two of which are its
/// destructors; -1 if there is no such table. The table begins with the offset of the whole object
/// and the type.
long virtualOperations(const char* mangledClass) {
    const void* const table = dlsym(RTLD_DEFAULT, (std::string("_ZTV") + mangledClass).c_str());
    Dl_info info{};
    void* symbol = nullptr;
    if (!table || dladdr1(table, &info, &symbol, RTLD_DL_SYMENT) == 0 || !symbol) return -1;
    return static_cast<long>(static_cast<const ElfW(Sym)*>(symbol)->st_size / pointer) - 2;
}

class Converter : public kxAnyConverter {
public:
    explicit Converter(const std::string& name) : kxAnyConverter(name) {}
    bool convertToString(const boost::any& /*value*/, std::string& text,
                         std::string& typeName) override {
        text = "to";
        typeName = "String";
        return true;
    }
    bool convertFromString(const std::string& typeName, const std::string& text,
                           boost::any& value) override {
        value = typeName + text;
        return true;
    }
};

}  // namespace

TEST(Layout, ClassesWithoutVirtualOperations) {
    EXPECT_FALSE(std::is_polymorphic_v<kxMessage>);
    EXPECT_FALSE(std::is_polymorphic_v<kxFileExtension>);
    EXPECT_FALSE(std::is_polymorphic_v<kxCRC32>);
    EXPECT_TRUE(std::is_empty_v<kxCRC32>);
}

TEST(Layout, NumberOfVirtualOperations) {
    if (kxtest::underSanitizer()) GTEST_SKIP() << "AddressSanitizer pads the tables";
    for (const char* const name : {"8kxBase64", "7kxCrypt", "9kxCPUInfo", "6kxFont"})
        EXPECT_EQ(virtualOperations(name), 2) << name;    // destructors
    EXPECT_EQ(virtualOperations("14kxAnyConverter"), 4);  // destructors, to, from
}

TEST(Layout, MessageIsAttributesThenId) {
    kxMessage message;
    message.setId(0x01020304);
    message.set("n", 7, true);
    using Map = std::map<std::string, boost::any>;
    static_assert(sizeof(kxMessage) == roundedUp(sizeof(Map) + sizeof(std::uint32_t), pointer));
    const auto* map = reinterpret_cast<const Map*>(&message);
    ASSERT_EQ(map->size(), 1U);
    EXPECT_EQ(map->begin()->first, "n");
    EXPECT_EQ(read<std::uint32_t>(&message, sizeof(Map)), 0x01020304U);
}

TEST(Layout, ConverterIsItsNameBehindThreeSlots) {
    static_assert(sizeof(kxAnyConverter) == pointer + sizeof(std::string));
    Converter converter("mine");
    EXPECT_EQ(
        *reinterpret_cast<const std::string*>(reinterpret_cast<const char*>(&converter) + pointer),
        "mine");
    const auto* const slots = read<void* const*>(&converter, 0);
    using To = bool (*)(kxAnyConverter*, const boost::any&, std::string&, std::string&);
    using From = bool (*)(kxAnyConverter*, const std::string&, const std::string&, boost::any&);
    std::string text, type;
    EXPECT_TRUE(reinterpret_cast<To>(slots[2])(&converter, boost::any(), text, type));
    EXPECT_EQ(text + type, "toString");
    boost::any value;
    EXPECT_TRUE(reinterpret_cast<From>(slots[3])(&converter, "from", "text", value));
    EXPECT_EQ(boost::any_cast<std::string>(value), "fromtext");
}

TEST(Layout, CipherIsKeyStateAndTwoIndices) {
    kxCrypt cipher(std::vector<unsigned char>{'K', 'e', 'y'});
    const std::size_t key = pointer, state = key + sizeof(std::vector<unsigned char>);
    static_assert(sizeof(kxCrypt) ==
                  roundedUp(pointer + sizeof(std::vector<unsigned char>) + 256 + 8, pointer));
    const auto* held = reinterpret_cast<const std::vector<unsigned char>*>(
        reinterpret_cast<const char*>(&cipher) + key);
    EXPECT_EQ(*held, (std::vector<unsigned char>{'K', 'e', 'y'}));
    bool seen[256] = {};
    for (std::size_t i = 0; i < 256; ++i) seen[read<unsigned char>(&cipher, state + i)] = true;
    for (const bool each : seen) EXPECT_TRUE(each);  // a permutation
    EXPECT_EQ(read<std::uint32_t>(&cipher, state + 256), 0U);
    EXPECT_EQ(read<std::uint32_t>(&cipher, state + 260), 0U);
    cipher.code(0);
    EXPECT_EQ(read<std::uint32_t>(&cipher, state + 256), 1U);
    EXPECT_LT(read<std::uint32_t>(&cipher, state + 260), 256U);
}

TEST(Layout, InputBufferIsBufferSizeFileAndFlag) {
    const kxtest::TempDir dir;
    const std::string name = dir.write("file", "content");
    cached_istreambuf buffer(4096, nullptr);
    const std::size_t own = sizeof(std::streambuf);
    static_assert(sizeof(cached_istreambuf) == sizeof(std::streambuf) + 4 * pointer);
    EXPECT_EQ(read<std::FILE*>(&buffer, own + 2 * pointer), nullptr);
    buffer.open(name.c_str());
    EXPECT_NE(read<char*>(&buffer, own), nullptr);
    EXPECT_EQ(read<std::int32_t>(&buffer, own + pointer), 4096);
    std::FILE* const file = read<std::FILE*>(&buffer, own + 2 * pointer);
    ASSERT_NE(file, nullptr);
    EXPECT_GE(fileno(file), 0);
    EXPECT_TRUE(read<bool>(&buffer, own + 3 * pointer));
    EXPECT_EQ(buffer.sgetc(), 'c');
    EXPECT_EQ(*read<char*>(&buffer, own), 'c');  // the get area is in the buffer
}

TEST(Layout, OutputBufferIsFileFlagCountAndMode) {
    const std::size_t own = sizeof(std::streambuf);
    static_assert(sizeof(cached_streambuf) == sizeof(std::streambuf) + 4 * pointer);
    cached_streambuf counting(16, nullptr);
    EXPECT_EQ(read<std::FILE*>(&counting, own), nullptr);
    EXPECT_TRUE(read<bool>(&counting, own + pointer));
    EXPECT_TRUE(read<bool>(&counting, own + 3 * pointer));
    counting.sputn("0123456789", 10);
    counting.pubsync();
    EXPECT_EQ(read<std::int64_t>(&counting, own + 2 * pointer), 10);

    cached_streambuf full(16, "/dev/full");
    EXPECT_NE(read<std::FILE*>(&full, own), nullptr);
    EXPECT_FALSE(read<bool>(&full, own + 3 * pointer));
    full.sputn("0123456789", 10);
    full.pubsync();
    EXPECT_FALSE(read<bool>(&full, own + pointer));
}

TEST(Layout, StreamsAddOnePointer) {
    // The virtual base std::ios comes after the class's own members.
    EXPECT_EQ(sizeof(cached_ifstream), sizeof(std::istream) + pointer);
    EXPECT_EQ(sizeof(cached_ofstream), sizeof(std::ostream) + pointer);
}
