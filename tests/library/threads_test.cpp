// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// What the headers allow any thread to call is called by eight threads at once, including the first
// call. The results must be right, and ThreadSanitizer, if the tests are built with it, must stay
// silent. (The log has its own tests.)
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <functional>
#include <sstream>
#include <thread>

#include "cached_ifstream.h"
#include "cached_ofstream.h"
#include "kxAlignedMemory.h"
#include "kxBase64.h"
#include "kxCPUInfo.h"
#include "kxCRC32.h"
#include "kxCrypt.h"
#include "kxFile.h"
#include "kxFileExtension.h"
#include "kxFont.h"
#include "kxLog.h"
#include "kxMessage.h"
#include "kxPlatform.h"
#include "kxString.h"
#include "kxUtils.h"
#include "kxtest.h"
#include "shader/defaultMaterial.h"

namespace {

constexpr int threadCount = 8;

/// Runs `work(thread)` in all threads, which start together.
void together(const std::function<void(int)>& work) {
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&, thread] {
            ++ready;
            while (ready < threadCount) std::this_thread::yield();
            work(thread);
        });
    for (auto& thread : threads) thread.join();
}

// --- Functions without state ---------------------------------------------------------------------

TEST(AnyThread, Base64) {
    // 3 * 400 bytes, long enough for every version of the functions.
    std::string bytes, text;
    for (int i = 0; i < 400; ++i) bytes += "foo", text += "Zm9v";
    together([&](int) {
        for (int i = 0; i < 50; ++i) {
            std::string out;
            EXPECT_EQ(kxBase64::encode(bytes, out), text.size());
            EXPECT_EQ(out, text);
            EXPECT_EQ(kxBase64::decode(text, out), bytes.size());
            EXPECT_EQ(out, bytes);
            EXPECT_TRUE(kxBase64::isBase64String(text));
        }
    });
}

TEST(AnyThread, Crc32) {
    const std::string digits = "123456789";
    const std::string block(4096, '\xa5');
    together([&](int) {
        for (const auto calc : {kxCRC32::calc, kxCRC32::calc_bitwise, kxCRC32::calc_halfbyte,
                                kxCRC32::calc_1byte, kxCRC32::calc_4bytes, kxCRC32::calc_8bytes}) {
            EXPECT_EQ(calc(digits.data(), digits.size(), 0), 0xCBF43926U);
            EXPECT_EQ(calc(block.data(), block.size(), 1),
                      kxCRC32::calc_bitwise(block.data(), block.size(), 1));
        }
        EXPECT_EQ(kxCRC32::calc_FNV1A_Jesteress(digits.data(), digits.size()), 0xBA2690B3U);
        EXPECT_EQ(kxFile::getID(digits.data(), 9), 0xCBF43926U);
    });
}

TEST(AnyThread, CpuInfo) {
    std::array<const kxCPUInfo*, threadCount> seen{};
    together([&](int thread) {
        kxCPUInfo& shared = kxCPUInfo::getCPUInfo();
        seen[static_cast<std::size_t>(thread)] = &shared;
        EXPECT_EQ(kxCPUInfo().hasSSE42Support(), shared.hasSSE42Support());
        EXPECT_EQ(shared.hasAVX2Support(), shared.fields().avx2);
    });
    for (const kxCPUInfo* info : seen) EXPECT_EQ(info, seen[0]);
}

TEST(AnyThread, Shaders) {
    together([](int) {
        const std::string fragment = kxUtils::decryptShader(__defaultMaterial_fp);
        EXPECT_EQ(fragment.size(), sizeof __defaultMaterial_fp - 4);
        EXPECT_NE(fragment.find("gl_FragColor"), std::string::npos);
        const std::string vertex = kxUtils::decryptShaderLF(__defaultMaterial_vp);
        EXPECT_EQ(vertex.size(), sizeof __defaultMaterial_vp - 4 + 1);
        EXPECT_NE(vertex.find("gl_Position"), std::string::npos);
    });
}

TEST(AnyThread, Strings) {
    together([](int) {
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(kxString::beautifyDigits("1234567", ",", 3), "1,234,567");
            EXPECT_EQ(kxString::toFloat("2.5x"), 2.5F);
            EXPECT_EQ(kxString::setNum(1e-7F), "1e-07");
            EXPECT_EQ(kxString::getValuesFromString("1.000000e+00 2.500000e+00 "),
                      (std::vector<float>{1.0F, 2.5F}));
            EXPECT_EQ(kxString::createStringFromValues({1.0F, 2.5F}), "1 2.5 ");
            EXPECT_EQ(kxString::getDoubleOption("0.5,smooth=true"), 0.5);
            EXPECT_TRUE(kxString::getBoolOption("0.5,smooth=true", "smooth"));
            EXPECT_EQ(kxString::capitalize("ab cd"), "Ab Cd");
            EXPECT_EQ(kxString::hash("a"), std::to_string(std::hash<std::string>()("a")));
            EXPECT_EQ(kxString::split("a,,b", ','), (std::vector<std::string>{"a", "", "b"}));
        }
    });
}

TEST(AnyThread, PathNames) {
    together([](int) {
        for (int i = 0; i < 100; ++i) {
            EXPECT_EQ(kxFile::getFileName("/a/b.txt"), "b.txt");
            EXPECT_EQ(kxFile::getExtension("Archive.TAR.GZ"), "gz");
            EXPECT_EQ(kxFile::setExtension("a.txt", "png"), "a.png");
            EXPECT_EQ(kxFile::abs2Rel("/usr/local/lib", "/usr/src/sys"), "../../src/sys");
            EXPECT_EQ(kxFile::rel2Abs("/a/b", "../c"), "/a/b/../c");
            std::string name = "a:b";
            kxFile::makeValidFileName(name);
            EXPECT_EQ(name, "ab");
        }
    });
}

TEST(AnyThread, HtmlText) {
    together([](int) { EXPECT_EQ(kxLog::convertToHtml("a<b>\n"), "a&#60;b&#62;"); });
}

// --- State that is made once or only read --------------------------------------------------------

TEST(AnyThread, FileInstance) {
    std::array<kxFile*, threadCount> seen{};
    together([&](int thread) {
        kxFile::init();
        seen[static_cast<std::size_t>(thread)] = kxFile::_me;
    });
    EXPECT_NE(seen[0], nullptr);
    for (const kxFile* me : seen) EXPECT_EQ(me, seen[0]);
}

TEST(AnyThread, ConstFileExtensions) {
    kxFileExtension formats;
    formats.addFormat("Scene", {".osb", ".osg"});
    const kxFileExtension& shared = formats;
    together([&](int) {
        EXPECT_TRUE(shared.checkFilename("MODEL.OSB"));
        EXPECT_EQ(shared.getName(".osg"), "Scene");
        EXPECT_EQ(shared.getExtensionsString(";"), ".osb;.osg");
        EXPECT_EQ(kxFileExtension(shared).getNames(), std::set<std::string>{"Scene"});
    });
}

TEST(AnyThread, PlatformOnceItIsSetUp) {
    const kxtest::TempDir root;
    root.makeDir("bin/MAC");
    kxPlatform::init(root.path().c_str(), "probe");
    kxPlatform::setFullAppName("Full Name");
    together([&](int) {
        EXPECT_EQ(kxPlatform::getBaseDir(), root.path());
        EXPECT_EQ(kxPlatform::getDataDir(), root.file("data"));
        EXPECT_EQ(kxPlatform::getExamplesDir(), root.file("examples"));
        EXPECT_EQ(kxPlatform::getCommonDir("x"), root.file("x"));
        EXPECT_STREQ(kxPlatform::getAppName(), "probe");
        EXPECT_STREQ(kxPlatform::getAppVersionName(), "Full Name");
        EXPECT_STREQ(kxPlatform::getPreferencesDir(), "");
        EXPECT_FALSE(kxPlatform::getAnalysisMode());
        EXPECT_EQ(kxPlatform::getTreeViewIconSizeX(), kxPlatform::getSmallIconSizeX() + 4);
        EXPECT_EQ(kxPlatform::getDpiScaleY(), kxPlatform::getDpiScaleX());
    });
    kxPlatform::setAppName("");
    kxPlatform::setFullAppName("");
}

TEST(AnyThread, RequestsToTheHost) {
    kxUtils::init([](const char* request, kxMessage& message, int) {
        message.set("button", static_cast<int>(message.id()) + static_cast<int>(request[0]), true);
        return true;
    });
    together([](int thread) {
        kxMessage message(static_cast<unsigned>(thread));
        int button = -1;
        EXPECT_FALSE(getFromMessage(message, "button", button));
        EXPECT_TRUE(kxUtils::call("A", message));
        EXPECT_TRUE(getFromMessage(message, "button", button));
        EXPECT_EQ(button, 65 + thread);
        EXPECT_TRUE(kxUtils::call("A"));
    });
    kxUtils::init(nullptr);
}

// --- One object per thread -----------------------------------------------------------------------

TEST(OneThreadAtATime, Ciphers) {
    const kxCrypt original({'K', 'e', 'y'});
    together([&](int) {
        kxCrypt cipher = original;
        std::string coded;
        for (const char c : std::string("Plaintext"))
            coded += static_cast<char>(cipher.code(static_cast<unsigned char>(c)));
        EXPECT_EQ(coded, "\xBB\xF3\x16\xE8\xD9\x40\xAF\x0A\xD3");
    });
}

TEST(OneThreadAtATime, Images) {
    std::array<std::string, threadCount> images;
    together([&](int thread) {
        std::string& image = images[static_cast<std::size_t>(thread)];
        image.assign(3 * 7 * 13, '\0');
        kxFont::drawText(reinterpret_cast<unsigned char*>(image.data()), "ab", 13, 0xFFFFFF);
    });
    for (const std::string& image : images) EXPECT_EQ(image, images[0]);
    EXPECT_NE(images[0].find('\xff'), std::string::npos);
}

// A block goes to the next thread, which frees it.
TEST(AnyThread, AlignedMemory) {
    if (kxtest::underSanitizer())
        GTEST_SKIP() << "the allocator's own locks are hidden from the sanitizer";
    constexpr int rounds = 200;
    std::array<std::atomic<void*>, threadCount> blocks{};
    together([&](int thread) {
        auto& mine = blocks[static_cast<std::size_t>(thread)];
        auto& next = blocks[static_cast<std::size_t>((thread + 1) % threadCount)];
        for (int round = 0; round < rounds; ++round) {
            void* const block = aligned_realloc(aligned_malloc(100, 64), 1000, 64);
            std::memset(block, thread, 1000);
            aligned_free(next.exchange(block));
            void* const received = mine.exchange(nullptr);
            EXPECT_TRUE(!received || *static_cast<char*>(received) != thread);
            aligned_free(received);
        }
    });
    for (auto& block : blocks) aligned_free(block);
}

TEST(OneThreadAtATime, CachedStreams) {
    const kxtest::TempDir dir;
    together([&](int thread) {
        const std::string path = dir.file(std::to_string(thread));
        const std::string bytes(100000, static_cast<char>('a' + thread));
        cached_ofstream out(path.c_str(), 1000);
        out << bytes;
        out.close();
        EXPECT_FALSE(out.bad());
        cached_ifstream in(path.c_str(), 1000);
        std::ostringstream read;
        read << in.rdbuf();
        EXPECT_EQ(read.str(), bytes);
    });
}

// --- Files ---------------------------------------------------------------------------------------

TEST(AnyThread, DirectoriesThatOthersMakeToo) {
    const kxtest::TempDir dir;
    for (int round = 0; round < 200; ++round) {
        const std::string path = dir.file(std::to_string(round) + "/a/b/c");
        together([&](int) { EXPECT_TRUE(kxFile::createPath(path)); });
        ASSERT_TRUE(kxFile::exists(path));
    }
}

TEST(AnyThread, Files) {
    const kxtest::TempDir dir;
    together([&](int thread) {
        const std::string name = std::to_string(thread), path = dir.file(name);
        const std::string bytes(10000, static_cast<char>('a' + thread));
        for (int round = 0; round < 10; ++round) {
            std::string content;
            std::vector<char> buffer(2 * bytes.size());
            EXPECT_TRUE(kxFile::checkWrite(path, false, true));
            EXPECT_TRUE(kxFile::write(path, bytes));
            EXPECT_TRUE(kxFile::append(path, bytes));
            EXPECT_TRUE(kxFile::checkRead(path, false, true));
            EXPECT_TRUE(kxFile::copy(path, path + ".copy"));
            EXPECT_TRUE(kxFile::read(path + ".copy", content));
            EXPECT_EQ(content, bytes + bytes);
            EXPECT_TRUE(kxFile::read(path, buffer.data()));
            EXPECT_EQ(kxFile::getFileSize(path), buffer.size());
            EXPECT_TRUE(kxFile::rename(dir.path(), name, name + ".moved"));
            EXPECT_TRUE(kxFile::remove(path + ".moved"));
            EXPECT_FALSE(kxFile::exists(path));
            EXPECT_FALSE(kxFile::read(path, content));
            EXPECT_EQ(errno, ENOENT);
        }
    });
}

TEST(AnyThread, Reports) {
    const kxtest::TempDir dir;
    kxtest::Captured out(stdout), err(stderr);
    std::string lines;
    kxLog::_log_format = 1;
    kxLog::enableOutputBuffer(lines);
    together([&](int thread) {
        const std::string missing = dir.file(std::to_string(thread));
        EXPECT_FALSE(kxFile::checkRead(missing, false, true));
        errno = EEXIST;
        kxFile::perror(missing);
        EXPECT_EQ(kxFile::expandFilename("$KXTEST_UNSET/x"), "$KXTEST_UNSET/x");
        EXPECT_EQ(kxFile::pathfind("a", "b", ""), "");
        kxLog::colorOutput(1, "to the console");
    });
    kxLog::disableOutputBuffer();
    kxLog::_log_format = 2;
    for (int thread = 0; thread < threadCount; ++thread) {
        const std::string missing = dir.file(std::to_string(thread));
        EXPECT_NE(lines.find("checkRead:: File '" + missing + "' doesn't exist!\n"),
                  std::string::npos);
        EXPECT_NE(lines.find(missing + ": File exists\n"), std::string::npos);
    }
    std::string yellow;
    for (int thread = 0; thread < threadCount; ++thread)
        yellow += "\x1b[33mto the console\n\x1b[0m";
    EXPECT_EQ(out.text(), yellow);
}

TEST(AnyThread, Expansion) {
    const kxtest::ScopedEnv variable("KXTEST_VARIABLE", "/value");
    together([](int) {
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(kxFile::expandFilename("${KXTEST_VARIABLE}/x"), "/value/x");
    });
}

TEST(AnyThread, Checksums) {
    const kxtest::TempDir dir;
    const std::string shared = dir.write("shared", "123456789");
    kxtest::Captured out(stdout);
    together([&](int thread) {
        const std::string path = dir.write(std::to_string(thread), "123456789");
        EXPECT_EQ(kxFile::getChecksum(shared), 0xCBF43926U);
        EXPECT_TRUE(kxFile::appendChecksum(path, kxFile::getChecksum(path)));
        std::uint32_t checksum = 0;
        EXPECT_TRUE(kxFile::checkChecksum(path, checksum));
        EXPECT_EQ(checksum, 0xCBF43926U);
        EXPECT_EQ(kxFile::findChecksum(path).stored, "CBF43926");
        EXPECT_EQ(kxFile::getFileID(shared), "93421780262");
    });
    std::string found;
    for (int thread = 0; thread < threadCount; ++thread)
        found += "Found correct file checksum CBF43926.\n";
    EXPECT_EQ(out.text(), found);
}

TEST(AnyThread, Commands) {
    const kxtest::Captured out(stdout);
    together([](int) {
        for (int i = 0; i < 3; ++i) {
            EXPECT_TRUE(kxFile::execute("exit 0", true));
            EXPECT_FALSE(kxFile::executeW("exit 3", true));
            EXPECT_EQ(kxFile::execute_no_output("exit 3"), 3 << 8);
        }
    });
}

}  // namespace
