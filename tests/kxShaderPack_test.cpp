// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// The tool that enciphers shader texts, and what it has made for the library.
#include <gtest/gtest.h>

#include "kxtest.h"

TEST(ShaderPack, MadeTheStoredBlocks) {
    for (const std::string name : {"defaultMaterial.fp", "defaultMaterial.vp"}) {
        const auto outcome = kxtest::run({KX_SHADER_PACK, KX_SHADERS "/" + name});
        EXPECT_EQ(outcome.exitCode, 0);
        EXPECT_EQ(outcome.err, "");
        EXPECT_EQ(outcome.out, kxtest::slurp(KX_SHADER_UNITS "/" + name + ".cpp"));
    }
}

TEST(ShaderPack, RefusesOtherUse) {
    const auto none = kxtest::run({KX_SHADER_PACK});
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_EQ(none.out, "");
    EXPECT_NE(none.err, "");
    EXPECT_EQ(kxtest::run({KX_SHADER_PACK, "a", "b"}).exitCode, 2);
}

TEST(ShaderPack, ReportsATextThatCannotBeRead) {
    const kxtest::TempDir dir;
    dir.write("empty.fp", "");
    for (const std::string& file : {dir.file("missing.fp"), dir.file("empty.fp"), dir.path()}) {
        const auto outcome = kxtest::run({KX_SHADER_PACK, file});
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err.find(file), std::string::npos);
    }
}
