// SPDX-FileCopyrightText: 2026 The kxUtils authors
// SPDX-License-Identifier: MIT

// Checksum footers on the command line: verify, stamp, inspect; and selftest.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "kxFile.h"
#include "kxutils_tool.h"
#include "reference/checksum_footer.h"

using reference::checksumMark;

namespace {

const std::string data = "123456789", stamped = data + checksumMark + "CBF43926";
const std::string damaged = "123456780" + checksumMark + "CBF43926";

}  // namespace

// --- verify --------------------------------------------------------------------------------------

TEST_F(Tool, VerifyHasALineAFileAndASummary) {
    dir.write("good", stamped);
    dir.write("damaged", damaged);
    dir.write("plain", data);
    expectRun(run({"verify", "plain", "good", "missing", "damaged", "good"}), 1,
              "no checksum  plain\n"
              "ok           good\n"
              "unreadable   missing\n"
              "BAD          damaged\n"
              "ok           good\n"
              "5 files: 2 ok, 1 BAD, 1 no checksum, 1 unreadable\n",
              "kxutils: missing: No such file or directory\n");
    expectRun(run({"verify", "good"}), 0,
              "ok           good\n1 file: 1 ok, 0 BAD, 0 no checksum, 0 unreadable\n", "");
}

TEST_F(Tool, VerifyExitCodesFollowTheWorst) {
    dir.write("good", stamped);
    dir.write("damaged", damaged);
    dir.write("plain", data);
    const auto exitCode = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "verify");
        return run(arguments).exitCode;
    };
    EXPECT_EQ(exitCode({"good", "plain"}), 0);
    EXPECT_EQ(exitCode({"--strict", "good"}), 0);
    EXPECT_EQ(exitCode({"--strict", "good", "plain"}), 4);
    EXPECT_EQ(exitCode({"--strict", "plain", "missing"}), 3);
    EXPECT_EQ(exitCode({"--strict", "missing", "plain"}), 3);
    EXPECT_EQ(exitCode({"--strict", "damaged", "missing", "plain"}), 1);
    EXPECT_EQ(exitCode({"plain", "missing", "damaged"}), 1);
    EXPECT_EQ(exitCode({}), 2);
    EXPECT_EQ(exitCode({"good", "-j", "-1"}), 2);
}

TEST_F(Tool, VerifyQuietShowsFaultsOnly) {
    dir.write("good", stamped);
    dir.write("damaged", damaged);
    dir.write("plain", data);
    expectRun(run({"verify", "--quiet", "good", "plain", "damaged"}), 1, "BAD          damaged\n",
              "");
    expectRun(run({"verify", "--quiet", "--strict", "good", "plain"}), 4, "no checksum  plain\n",
              "");
    expectRun(run({"verify", "--quiet", "good"}), 0, "", "");
}

TEST_F(Tool, VerifyIsADocument) {
    dir.write("good", stamped);
    dir.write("damaged\xFF", damaged);
    const auto json = document({"verify", "good", "damaged\xFF", "missing"}, 1);
    EXPECT_EQ(json["command"], "verify");
    ASSERT_EQ(json["items"].size(), 3U);
    EXPECT_EQ(json["items"][0]["status"], "ok");
    EXPECT_EQ(json["items"][0]["stored"], "CBF43926");
    EXPECT_EQ(json["items"][1]["status"], "BAD");
    EXPECT_EQ(json["items"][1]["nameBase64"], "ZGFtYWdlZP8=");
    EXPECT_EQ(json["items"][1]["stored"], "CBF43926");
    EXPECT_EQ(json["items"][1]["computed"], "B2288182");  // zlib's crc32 of 123456780
    EXPECT_EQ(json["items"][2]["error"], "No such file or directory");
    EXPECT_EQ(json["summary"]["files"], 3);
    EXPECT_EQ(json["summary"]["BAD"], 1);
    EXPECT_EQ(json["summary"]["unreadable"], 1);
}

TEST_F(Tool, VerifyLeavesOutAnOffset) {
    dir.write("f", "HEAD" + stamped);
    EXPECT_EQ(run({"verify", "--offset", "4", "f"}).exitCode, 0);
    EXPECT_EQ(run({"verify", "f"}).exitCode, 1);
    EXPECT_EQ(run({"verify", "--strict", "--offset", "30", "f"}).exitCode, 4);
    EXPECT_EQ(run({"verify", "--offset", "4294967296", "f"}).exitCode, 2);
}

TEST_F(Tool, VerifyReadsStandardInput) {
    expectRun(runWith(stamped, {"verify", "--quiet", "-"}), 0, "", "");
    EXPECT_EQ(run({"verify", "-"}).out.substr(0, 15), "ok           -\n");
    EXPECT_EQ(runWith(damaged, {"verify", "-"}).exitCode, 1);
    options.input.clear();
    EXPECT_EQ(shell("printf '\\000TALOCRC00000000' | \"$K\" verify --strict -").exitCode, 0);
    expectRun(shell("\"$K\" verify --quiet - <."), 3, "unreadable   -\n",
              "kxutils: -: Is a directory\n");
}

// In each directory, files come in the order of their names. Links to files count, links to
// directories do not.
TEST_F(Tool, VerifyWalksDirectories) {
    dir.write("tree/b/x.osb", stamped);
    dir.write("tree/b/new\nline", stamped);
    dir.write("tree/b.osb", damaged);
    dir.write("tree/a/deep/y.OSB", data);
    dir.write("tree/a/bytes\xFF.obj", stamped);
    dir.write("outside.osb", stamped);
    dir.makeDir("tree/empty");
    ASSERT_EQ(symlink("../../outside.osb", dir.file("tree/a/link.osb").c_str()), 0);
    ASSERT_EQ(symlink("nowhere", dir.file("tree/z").c_str()), 0);
    ASSERT_EQ(symlink("..", dir.file("tree/a/up").c_str()), 0);
    ASSERT_EQ(mkfifo(dir.file("tree/pipe").c_str(), 0600), 0);
    const std::string lines =
        "ok           tree/a/bytes\xFF.obj\n"
        "no checksum  tree/a/deep/y.OSB\n"
        "ok           tree/a/link.osb\n"
        "\\ok           tree/b/new\\nline\n"
        "ok           tree/b/x.osb\n"
        "BAD          tree/b.osb\n"
        "unreadable   tree/z\n"
        "7 files: 4 ok, 1 BAD, 1 no checksum, 1 unreadable\n";
    for (const char* threads : {"0", "1", "2", "7", "100"})
        expectRun(run({"verify", "-r", "-j", threads, "tree"}), 1, lines,
                  "kxutils: tree/z: No such file or directory\n");
    expectRun(run({"verify", "-r", "--ext", "OBJ,.osb,", "--quiet", "tree", "outside.osb"}), 1,
              "BAD          tree/b.osb\n", "");
    expectRun(run({"verify", "-r", "--ext", "obj", "tree/", "tree/b/new\nline"}), 0,
              "ok           tree/a/bytes\xFF.obj\n"
              "\\ok           tree/b/new\\nline\n"
              "2 files: 2 ok, 0 BAD, 0 no checksum, 0 unreadable\n",
              "");
    expectRun(run({"verify", "-r", "tree/empty"}), 0,
              "0 files: 0 ok, 0 BAD, 0 no checksum, 0 unreadable\n", "");
}

TEST_F(Tool, VerifyRefusesWhatIsNoFile) {
    ASSERT_EQ(mkfifo(dir.file("pipe").c_str(), 0600), 0);
    expectRun(run({"verify", "--quiet", ".", "pipe", ""}), 3,
              "unreadable   .\nunreadable   pipe\nunreadable   \n",
              "kxutils: .: Is a directory\nkxutils: pipe: not a regular file\n"
              "kxutils: : No such file or directory\n");
}

TEST_F(Tool, VerifyReportsADirectoryThatCannotBeRead) {
    if (kxtest::isRoot()) GTEST_SKIP() << "the super-user may read everything";
    dir.makeDir("tree/closed");
    dir.write("tree/f", stamped);
    chmod(dir.file("tree/closed").c_str(), 0);
    expectRun(run({"verify", "-r", "--quiet", "tree"}), 3, "unreadable   tree/closed\n",
              "kxutils: tree/closed: Permission denied\n");
    chmod(dir.file("tree/closed").c_str(), 0700);
}

TEST_F(Tool, VerifyKeepsTheOrderOfManyFilesOnManyThreads) {
    std::vector<std::string> arguments = {"verify", "-j", "8"};
    std::string lines;
    for (int i = 0; i < 300; ++i) {
        const std::string name = std::to_string(i * 7919 % 300);
        // Large and small files, so that later ones are finished before earlier ones.
        dir.write(name, i % 50 == 0 ? std::string(2000000, 'x') : i % 3 == 0 ? damaged : stamped);
        arguments.push_back(name);
        lines += (i % 50 == 0  ? "no checksum  "
                  : i % 3 == 0 ? "BAD          "
                               : "ok           ") +
                 name + '\n';
    }
    EXPECT_EQ(run(arguments).out,
              lines + "300 files: 196 ok, 98 BAD, 6 no checksum, 0 unreadable\n");
}

// --- stamp ---------------------------------------------------------------------------------------

TEST_F(Tool, StampAppendsAFooter) {
    dir.write("f", data);
    dir.write("a\nb", "");
    expectRun(run({"stamp", "f", "a\nb"}), 0, "stamped  CBF43926  f\n\\stamped  00000000  a\\nb\n",
              "");
    EXPECT_EQ(kxtest::slurp(dir.file("f")), stamped);
    EXPECT_EQ(kxtest::slurp(dir.file("a\nb")), checksumMark + "00000000");
    EXPECT_EQ(run({"verify", "--strict", "f", "a\nb"}).exitCode, 0);
}

TEST_F(Tool, StampRefusesAFileThatHasAFooterUnlessForced) {
    for (const std::string& bytes : {stamped, damaged, stamped + "xyTALOMETA00000012"}) {
        dir.write("f", bytes);
        expectRun(run({"stamp", "f"}), 1, "", "kxutils: f: has a checksum footer already\n");
        EXPECT_EQ(kxtest::slurp(dir.file("f")), bytes);
    }
    dir.write("f", damaged);
    EXPECT_EQ(run({"stamp", "--force", "f"}).exitCode, 0);
    EXPECT_EQ(kxtest::slurp(dir.file("f")).substr(0, damaged.size()), damaged);
    EXPECT_EQ(kxtest::slurp(dir.file("f")).size(), damaged.size() + 16);
    EXPECT_EQ(run({"verify", "--strict", "f"}).exitCode, 0);
}

TEST_F(Tool, StampLeavesOutAnOffset) {
    dir.write("f", "HEAD" + data);
    EXPECT_EQ(run({"stamp", "--offset", "4", "f"}).out, "stamped  CBF43926  f\n");
    EXPECT_EQ(kxtest::slurp(dir.file("f")), "HEAD" + stamped);
    dir.write("short", "HEA");
    expectRun(run({"stamp", "--offset", "4", "short"}), 3, "",
              "kxutils: short: there are fewer than 4 bytes\n");
    EXPECT_EQ(kxtest::slurp(dir.file("short")), "HEA");
}

TEST_F(Tool, StampDryRunWritesNothing) {
    dir.write("f", data);
    dir.write("g", stamped);
    expectRun(run({"stamp", "--dry-run", "f", "g"}), 1, "would stamp  CBF43926  f\n",
              "kxutils: g: has a checksum footer already\n");
    EXPECT_EQ(kxtest::slurp(dir.file("f")), data);
    const auto json = document({"stamp", "--dry-run", "f"}, 0);
    EXPECT_EQ(json["items"][0]["checksum"], "CBF43926");
    EXPECT_EQ(json["items"][0]["written"], false);
    EXPECT_EQ(document({"stamp", "f"}, 0)["items"][0]["written"], true);
    EXPECT_EQ(kxtest::slurp(dir.file("f")), stamped);
}

TEST_F(Tool, StampPassesStandardInputOn) {
    expectRun(runWith(data, {"stamp", "-"}), 0, stamped, "");
    expectRun(runWith(stamped, {"stamp", "-"}), 1, "",
              "kxutils: -: has a checksum footer already\n");
    expectRun(runWith(data, {"stamp", "--dry-run", "-"}), 0, "would stamp  CBF43926  -\n", "");
    EXPECT_EQ(run({"stamp", "-", "f"}).exitCode, 2);
    EXPECT_EQ(document({"stamp", "-"}, 2)["error"],
              "- goes to standard output: it must be the only file, without --json");
}

TEST_F(Tool, StampNamesFilesThatItCannotUse) {
    dir.write("f", data);
    expectRun(run({"stamp", "missing", ".", "f"}), 3, "stamped  CBF43926  f\n",
              "kxutils: missing: No such file or directory\nkxutils: .: Is a directory\n");
    EXPECT_FALSE(kxtest::exists(dir.file("missing")));
}

// A partial footer would keep the file from ever being stamped.
TEST_F(Tool, StampLeavesNoPartOfAFooter) {
    const std::string bytes(1020, 'x');
    dir.write("f", bytes);
    expectRun(shell("ulimit -f 2; \"$K\" stamp f"), 3, "", "kxutils: f: File too large\n");
    EXPECT_EQ(kxtest::slurp(dir.file("f")), bytes);
}

// --- inspect -------------------------------------------------------------------------------------

TEST_F(Tool, InspectShowsWhereTheFootersStand) {
    dir.write("meta", "HEAD" + data + checksumMark + "CBF43926xyTALOMETA00000012");
    dir.write("plain", data);
    const std::string id = kxFile::getFileID(dir.file("meta"));
    expectRun(run({"inspect", "--offset", "4", "meta", "plain"}), 0,
              "meta\n"
              "  size             47\n"
              "  checksum footer  at 13\n"
              "  meta footer      at 31\n"
              "  meta data        2 bytes\n"
              "  stored           CBF43926\n"
              "  computed         CBF43926\n"
              "  identifier       " +
                  id +
                  "\n"
                  "  result           ok\n"
                  "plain\n"
                  "  size             9\n"
                  "  checksum footer  none\n"
                  "  meta footer      none\n"
                  "  identifier       93421780262\n"
                  "  result           no checksum\n",
              "");
}

TEST_F(Tool, InspectIsADocument) {
    dir.write("meta", stamped + "xyTALOMETA00000012");
    dir.write("lost", "12345TALOMETA--------");
    const auto json = document({"inspect", "meta", "lost", "missing"}, 3);
    const auto& meta = json["items"][0];
    EXPECT_EQ(meta["footerAt"], 9);
    EXPECT_EQ(meta["metaFooterAt"], 27);
    EXPECT_EQ(meta["metaSize"], 2);
    EXPECT_EQ(meta["stored"], "CBF43926");
    EXPECT_EQ(meta["computed"], "CBF43926");
    EXPECT_EQ(meta["size"], 43);
    const auto& lost = json["items"][1];
    EXPECT_EQ(lost["status"], "no checksum");
    EXPECT_EQ(lost["metaFooterAt"], 5);
    EXPECT_EQ(lost.count("footerAt"), 0U);
    EXPECT_EQ(lost.count("stored"), 0U);
    EXPECT_EQ(json["items"][2]["status"], "unreadable");
}

TEST_F(Tool, InspectFailsForADamagedFileAndReadsStandardInput) {
    dir.write("f", damaged);
    const auto outcome = run({"inspect", "f"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_NE(outcome.out.find("  stored           CBF43926\n  computed         B2288182\n"),
              std::string::npos);
    EXPECT_NE(outcome.out.find("  result           BAD\n"), std::string::npos);
    EXPECT_NE(runWith(stamped, {"inspect", "-"}).out.find("-\n  size             25\n"),
              std::string::npos);
    EXPECT_EQ(run({"inspect", "."}).exitCode, 3);
}

// --- selftest ------------------------------------------------------------------------------------

TEST_F(Tool, SelftestPasses) {
    expectRun(run({"selftest"}), 0,
              "ok           Base64 encoding\n"
              "ok           Base64 decoding\n"
              "ok           CRC-32 bitwise\n"
              "ok           CRC-32 halfbyte\n"
              "ok           CRC-32 1byte\n"
              "ok           CRC-32 4bytes\n"
              "ok           CRC-32 8bytes\n"
              "ok           CRC-32 of files\n"
              "ok           FNV-1a Jesteress\n"
              "ok           RC4\n"
              "ok           shader blocks\n",
              "");
    EXPECT_EQ(document({"selftest"}, 0)["items"].size(), 11U);
}
