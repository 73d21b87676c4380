// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kxPlatform.h"
#include "kxtest.h"

namespace {

/// Starts like a fresh process: no names, no year, no flags.
class Identity : public testing::Test {
protected:
    Identity() { reset(); }
    ~Identity() override { reset(); }

private:
    static void reset() {
        kxPlatform::setAnalysisMode(false);
        kxPlatform::setTaloCompact(false);
        kxPlatform::setTaloStudio(false);
        kxPlatform::setTaloPlayer(false);
        kxPlatform::setAppName("");
        kxPlatform::setFullAppName("");
        kxPlatform::setDisplayVersionYearString("");
    }
};

}  // namespace

TEST(IdentityProcess, StartsEmptyAndWithoutFlags) {
    const auto outcome = kxtest::run(
        {KX_PLATFORM_PROBE, "getAppName", "getAppVersionName", "isTaloCompact", "isTaloStudio",
         "isTaloPlayer", "getAnalysisMode", "name", "talo", "getAppVersionName", "rebuilt"});
    EXPECT_EQ(outcome.out,
              "getAppName=\ngetAppVersionName=\nisTaloCompact=false\nisTaloStudio=false\n"
              "isTaloPlayer=false\ngetAnalysisMode=false\ngetAppVersionName=talo\nrebuilt=talo\n");
    EXPECT_EQ(outcome.err, "");
}

TEST_F(Identity, TheMakerIsFixed) { EXPECT_STREQ(kxPlatform::getCompName(), "Pelloran"); }

TEST_F(Identity, TheNameAloneIsTheVersionName) {
    kxPlatform::setAppName("talo");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "talo");
    kxPlatform::setAppName("other");  // nothing had been built that could be stale
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "other");
}

TEST_F(Identity, TheFullNameComesBeforeTheName) {
    kxPlatform::setAppName("talo");
    kxPlatform::setFullAppName("Talo Pro");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "Talo Pro");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    kxPlatform::setFullAppName("");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "talo");
}

// The trailing blank is deliberate.
TEST_F(Identity, TheYearIsAppendedBetweenBlanks) {
    kxPlatform::setAppName("talo");
    kxPlatform::setDisplayVersionYearString("2018");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "talo 2018 ");
    kxPlatform::setFullAppName("TALO Studio");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALO Studio 2018 ");
    kxPlatform::setDisplayVersionYearString("2019");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALO Studio 2019 ");
    kxPlatform::setDisplayVersionYearString("");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALO Studio");
}

TEST_F(Identity, AnalysisModeReplacesTheNames) {
    kxPlatform::setAppName("talo");
    kxPlatform::setFullAppName("Talo Pro");
    kxPlatform::setAnalysisMode(true);
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "Talo Pro");  // stale until it is rebuilt
    kxPlatform::setDisplayVersionYearString("2018");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALOAnalysis 2018 ");
    kxPlatform::setDisplayVersionYearString("");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALOAnalysis");
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    kxPlatform::setAnalysisMode(false);
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALOAnalysis");
    kxPlatform::updateAppVersionName();
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "Talo Pro");
}

// Deliberate: the long text belongs to the name, not to the mode.
TEST_F(Identity, TheNameOfTheAnalysisApplicationHasALongText) {
    kxPlatform::setAppName("TALOAnalysis");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALO NURBS Analysis");
    kxPlatform::setFullAppName("Talo Pro");
    kxPlatform::setDisplayVersionYearString("2018");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "TALO NURBS Analysis");
    kxPlatform::setAppName("taloanalysis");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "Talo Pro 2018 ");
}

TEST_F(Identity, ANewNameLeavesTheVersionNameStale) {
    const kxtest::TempDir dir;
    kxPlatform::setAppName("talo");
    kxPlatform::updateAppVersionName();
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "talo");
    kxPlatform::setAppName("other");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "talo");
    kxPlatform::init(dir.path().c_str(), "hesper");
    EXPECT_STREQ(kxPlatform::getAppName(), "hesper");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "talo");
    kxPlatform::updateAppVersionName();
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "hesper");
}

TEST_F(Identity, NullIsIgnoredAndRebuildsNothing) {
    kxPlatform::setAppName("talo");
    kxPlatform::setFullAppName("Talo Pro");
    kxPlatform::setDisplayVersionYearString("2018");
    kxPlatform::setAnalysisMode(true);  // rebuilding would now be noticed
    kxPlatform::setAppName(nullptr);
    kxPlatform::setFullAppName(nullptr);
    kxPlatform::setDisplayVersionYearString(nullptr);
    EXPECT_STREQ(kxPlatform::getAppName(), "talo");
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "Talo Pro 2018 ");
    kxPlatform::setAnalysisMode(false);
    kxPlatform::updateAppVersionName();
    EXPECT_STREQ(kxPlatform::getAppVersionName(), "Talo Pro 2018 ");
}

TEST_F(Identity, FlagsAreIndependent) {
    using Set = void (*)(bool);
    using Is = bool (*)();
    const std::pair<Set, Is> flags[] = {
        {kxPlatform::setTaloCompact, kxPlatform::isTaloCompact},
        {kxPlatform::setTaloStudio, kxPlatform::isTaloStudio},
        {kxPlatform::setTaloPlayer, kxPlatform::isTaloPlayer},
        {kxPlatform::setAnalysisMode, kxPlatform::getAnalysisMode},
    };
    // Every combination, reached from the one before it.
    for (unsigned bits = 0; bits < 16; ++bits) {
        for (unsigned i = 0; i < 4; ++i) flags[i].first((bits >> i & 1U) != 0);
        for (unsigned i = 0; i < 4; ++i)
            EXPECT_EQ(flags[i].second(), (bits >> i & 1U) != 0) << bits << " flag " << i;
    }
}

TEST_F(Identity, NothingIsWrittenOnTheConsole) {
    kxtest::Captured out(stdout), err(stderr);
    kxPlatform::setAppName("talo");
    kxPlatform::setFullAppName("Talo Pro");
    kxPlatform::setDisplayVersionYearString("2018");
    kxPlatform::getAppVersionName();
    EXPECT_EQ(out.text() + err.text(), "");
}
