#include "companion/doctor/check_result_text.h"
#include "companion/doctor/log_check.h"
#include "companion/doctor/module_files.h"
#include "companion/doctor/program_check.h"
#include "companion/doctor/steam_prefixes.h"
#include "companion/doctor/user_cfg.h"
#include "companion/doctor/xml_blocks.h"

#include <gtest/gtest.h>

TEST(UserCfg, NamesThePackagesFolder) {
    const std::vector<std::pair<std::string, std::optional<std::string>>> rows{
        {R"(InstalledPackagesPath "D:\MSFS")", R"(D:\MSFS)"},
        {"{Video\n\tVSync 1\n}\n  InstalledPackagesPath \"D:\\My Sim\\P\xC3\xA4\" \r\nX 1\n", "D:\\My Sim\\P\xC3\xA4"},
        {"InstalledPackagesPath\t\"E:\\\"", "E:\\"},
        {"InstalledPackagesPath D:\\MSFS", std::nullopt},
        {"InstalledPackagesPath \"D:\\MSFS", std::nullopt},
        {"InstalledPackagesPath \"\"", std::nullopt},
        {"Path \"InstalledPackagesPath\"", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(installedPackagesPath(text), expected) << text;
    }
}

TEST(SteamLibraries, AreTheValuesOfPath) {
    EXPECT_EQ(steamLibraries("\"0\"\n{\n\t\"path\"\t\t\"/mnt/my games\"\r\n\"label\" \"/x\"\n\"path\" \"\"\n\"path\""),
              std::vector<std::string>{"/mnt/my games"});
}

TEST(PackageVersion, IsReadAsText) {
    EXPECT_EQ(packageVersion(R"({"title": "x", "package_version": "1.0.1"})"), "1.0.1");
    EXPECT_EQ(packageVersion("\xEF\xBB\xBF{\"package_version\": \"2\"}"), "2");
    for (const char* text : {"", "[]", "{", R"({"package_version": 1})", R"({"version": "1"})"}) {
        EXPECT_EQ(packageVersion(text), std::nullopt) << text;
    }
}

TEST(PackageFiles, PassOverEntriesOfAnotherForm) {
    const auto files =
        packageFiles(R"({"content": [{"path": "a", "size": 1}, {"path": 1, "size": 1}, {"path": "b"}, 7]})");
    ASSERT_TRUE(files);
    ASSERT_EQ(files->size(), 1U);
    EXPECT_EQ(files->front().path, "a");
    EXPECT_EQ(packageFiles(R"({"content": {}})").has_value(), false);
}

TEST(PackageVersion, IsComparedNumberByNumber) {
    EXPECT_TRUE(isOlder("0.4.9", "0.5.0"));
    EXPECT_TRUE(isOlder("0.5", "0.5.1"));
    EXPECT_TRUE(isOlder("", "0.5.0"));
    EXPECT_FALSE(isOlder("0.5.0", "0.5.0"));
    EXPECT_FALSE(isOlder("0.10.0", "0.5.0"));
    EXPECT_FALSE(isOlder("1", "0.5.0"));
}

TEST(XmlBlocks, ReadMembersInAnyCaseWithEntities) {
    const auto blocks = xmlBlocks("<A><NAME> x &amp;lt; </name><b>1<c>2</c></b><Name>y</Name></a><a></A>", "A");
    ASSERT_EQ(blocks.size(), 2U);
    EXPECT_EQ(blocks[0].member("name"), "x &lt;");
    EXPECT_EQ(blocks[0].member("c"), "2");
    EXPECT_EQ(blocks[0].member("b"), "");
    EXPECT_TRUE(blocks[0].isClosed && blocks[1].isClosed);
}

TEST(XmlBlocks, NoticeWhatIsNotClosedOrInAComment) {
    const auto blocks = xmlBlocks("<A><A></A><!-- <A></A> --><A></A><!--<A>", "A");
    ASSERT_EQ(blocks.size(), 5U);
    const auto state = [](const XmlBlock& block) { return std::pair(block.isClosed, block.isInComment); };
    EXPECT_EQ(state(blocks[0]), std::pair(false, false));
    EXPECT_EQ(state(blocks[1]), std::pair(true, false));
    EXPECT_EQ(state(blocks[2]), std::pair(true, true));
    EXPECT_EQ(state(blocks[3]), std::pair(true, false));
    EXPECT_EQ(state(blocks[4]), std::pair(false, true));
}

TEST(DownloadMark, DependsOnTheZone) {
    const std::vector<std::pair<std::string, bool>> rows{{"[ZoneTransfer]\r\nZoneId=3\r\n", true},
                                                         {"[ZoneTransfer]\nReferrerUrl=x\n zoneid = 4 ", true},
                                                         {"[ZoneTransfer]\r\nZoneId=2\r\n", false},
                                                         {"ZoneId=", false},
                                                         {"ZoneId", false},
                                                         {"", false}};
    for (const auto& [text, expected] : rows) {
        EXPECT_EQ(marksDownload(text), expected) << text;
    }
}

namespace {

/// The messages of the troubles in a log, whose lines here lack their time.
std::vector<std::string> troublesIn(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += "2026-01-02 10:00:00 " + line + "\r\n";
    }
    std::vector<std::string> messages;
    for (const LogLine& line : lastTroubles(parseLog(text + "cut"))) {
        messages.push_back(line.message);
    }
    return messages;
}

} // namespace

TEST(LastTroubles, AreThoseOfTheLastRunEachOnce) {
    EXPECT_EQ(troublesIn(
                  {"[ERROR] old", "[INFO] Initializing application", "[WARN] a", "[DEBUG] x", "[ERROR] b", "[WARN] a"}),
              (std::vector<std::string>{"b", "a"}));
}

TEST(LastTroubles, NameACauseOnce) {
    EXPECT_EQ(troublesIn({"[ERROR] Missing 'hid' section", "[ERROR] Failed to initialize: Missing 'hid' section"}),
              std::vector<std::string>{"Missing 'hid' section"});
}

TEST(LastTroubles, AreAtMostFive) {
    EXPECT_EQ(troublesIn({"[WARN] 1", "[WARN] 2", "[WARN] 3", "[WARN] 4", "[WARN] 5", "[WARN] 6"}),
              (std::vector<std::string>{"2", "3", "4", "5", "6"}));
}

TEST(LastTroubles, LeaveOutWhatIsOver) {
    EXPECT_EQ(troublesIn({"[WARN] Waiting for SimConnect connection: x", "[INFO] SimConnect connected"}),
              std::vector<std::string>());
    EXPECT_EQ(troublesIn({"[INFO] SimConnect connected", "[WARN] Waiting for SimConnect connection: x"}),
              std::vector<std::string>{"Waiting for SimConnect connection: x"});
}

TEST(JudgeLog, ExplainsAMessageAndPassesOverOneThatNeedsNothing) {
    CheckResults results;
    judgeLog({"the.log",
              {{"T", "WARN", "SimConnect disconnected: shutdown"}, {"T", "ERROR", "Config root must be an object"}}},
             results);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].found, "Config root must be an object (the.log)");
    EXPECT_EQ(results[0].remedy, "The file doesn't begin with {.");
}

TEST(CheckResultsText, ShowsMarksAsTheTerminalCan) {
    const CheckResults results{{Mark::Good, "a", "A", "fine"},
                               {Mark::Warning, "b", "B", "odd\x1B", "Look"},
                               {Mark::Fault, "c", "C", "bad", "Do"}};
    EXPECT_EQ(checkResultsText(results, {.unicode = true}),
              "✓ A: fine\n! B: odd?\n    Look\n✗ C: bad\n    Do\n\n1 fault, 1 warning.\n");
    EXPECT_EQ(checkResultsText(results, {}),
              "[ok] A: fine\n[!]  B: odd?\n       Look\n[x]  C: bad\n       Do\n\n1 fault, 1 warning.\n");
    EXPECT_EQ(checkResultsText({results[0]}, {.colour = true}),
              "\033[1;32m[ok]\033[0m A: fine\n\nEverything looks good.\n");
}
