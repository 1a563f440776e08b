#include "companion/report/report.h"

#include "tests/unit/companion/made_up_machine.h"

#include <gtest/gtest.h>
#include <minizip/unzip.h>

#include <algorithm>
#include <array>
#include <utility>

namespace {

using Contents = std::vector<std::pair<std::string, std::string>>;

/// The file that the reader is at. All files of these tests are of 1 January 2026.
std::pair<std::string, std::string> currentFile(unzFile archive) {
    std::array<char, 256> name{};
    unz_file_info info{};
    unzGetCurrentFileInfo(archive, &info, name.data(), name.size(), nullptr, 0, nullptr, 0);
    EXPECT_EQ(info.tmu_date.tm_year, 2026U);
    EXPECT_EQ(info.tmu_date.tm_mon, 0U);
    EXPECT_EQ(info.tmu_date.tm_mday, 1U);
    std::string content(info.uncompressed_size, '\0');
    unzOpenCurrentFile(archive);
    unzReadCurrentFile(archive, content.data(), static_cast<unsigned>(content.size()));
    EXPECT_EQ(unzCloseCurrentFile(archive), UNZ_OK) << "a wrong check sum";
    return {name.data(), content};
}

Contents contentsOf(const std::string& path) {
    Contents contents;
    unzFile archive = unzOpen(path.c_str());
    EXPECT_NE(archive, nullptr);
    for (int more = unzGoToFirstFile(archive); more == UNZ_OK; more = unzGoToNextFile(archive)) {
        contents.push_back(currentFile(archive));
    }
    unzClose(archive);
    return contents;
}

std::vector<std::string> namesOf(const Report& report) {
    std::vector<std::string> names;
    std::ranges::transform(report.files, std::back_inserter(names), &ZipEntry::name);
    return names;
}

std::string contentOf(const Report& report, const std::string& name) {
    const auto found = std::ranges::find(report.files, name, &ZipEntry::name);
    return found == report.files.end() ? "(absent)" : found->content;
}

Report reportOf(MadeUpMachine& pc) {
    return collectReport(pc.record(), pc.files.path("bridge/config/config.json"),
                         Anonymizer({pc.files.path("bridge"), "anna", {"cockpit"}}), "1.2.3");
}

} // namespace

TEST(ZipFile, HoldsWhatWasPutIn) {
    const TempFolder folder;
    const std::string path = folder.path("a.zip");
    std::string error;
    std::string all(300000, '\0');
    std::ranges::generate(all, [n = 0U]() mutable { return static_cast<char>((n++ * 2654435761U) >> 24U); });
    std::tm time{};
    time.tm_mday = 1;
    time.tm_year = 126;
    ASSERT_TRUE(writeZip(path, {{"a.txt", "text"}, {"b/c.bin", all}, {"empty", ""}}, time, error)) << error;
    EXPECT_EQ(contentsOf(path), (Contents{{"a.txt", "text"}, {"b/c.bin", all}, {"empty", ""}}));
}

TEST(ZipFile, SaysWhyItCannotBeWritten) {
    const TempFolder folder;
    std::string error;
    EXPECT_FALSE(writeZip(folder.path("none/a.zip"), {{"a", "b"}}, {}, error));
    EXPECT_EQ(error, std::generic_category().message(ENOENT));
    EXPECT_TRUE(FileSystem::namesIn(folder.path()).empty());
}

TEST(ZipFile, LeavesNothingBehindAFailure) {
    const TempFolder folder;
    std::string error;
    EXPECT_FALSE(writeZip(folder.path("a.zip"), {{"a", "b"}, {std::string(70000, 'n'), "too long a name"}}, {}, error));
    EXPECT_FALSE(error.empty());
    EXPECT_TRUE(FileSystem::namesIn(folder.path()).empty());
}

TEST(Report, KeepsTwoFilesOfOneName) {
    MadeUpMachine pc(Installation::Steam2020);
    pc.files.write("bridge/config/config.json",
                   R"({"hid": {"vid": "1234", "pid": "ABCD"}, "mappings": {"buttonConfigPath": "more/config.json"}})");
    pc.files.write("bridge/config/more/config.json", "{}");
    const std::vector<std::string> names = namesOf(reportOf(pc));
    EXPECT_EQ(std::ranges::count(names, "config/config.json"), 1);
    EXPECT_EQ(std::ranges::count(names, "config/config.json-2"), 1);
}

TEST(Report, HoldsAnswerVersionsConfigurationAndLogs) {
    MadeUpMachine pc(Installation::Store2024);
    pc.putLog("");
    pc.files.write("Data/VantrelBridge/logs/VantrelBridgeHID.log.1", "old");
    pc.files.write("Data/VantrelBridge/logs/VantrelBridgeHID.crash.log", "crashed");
    pc.files.write("Data/VantrelBridge/logs/vantrel.crash.log", "crashed");
    pc.files.write("bridge/VantrelBridgeHID.log", "console");
    const Report report = reportOf(pc);
    EXPECT_EQ(namesOf(report),
              (std::vector<std::string>{"doctor.txt", "versions.txt", "config/config.json", "config/hid_event_map.json",
                                        "config/buttons.json", "logs/VantrelBridgeHID.log",
                                        "logs/VantrelBridgeHID.log.1", "logs/VantrelBridgeHID.crash.log",
                                        "logs/vantrel.crash.log", "logs-with-console/VantrelBridgeHID.log"}));
    EXPECT_TRUE(contentOf(report, "versions.txt").starts_with("vantrel 1.2.3\n"));
    EXPECT_EQ(contentOf(report, "logs-with-console/VantrelBridgeHID.log"), "console");
}

TEST(Report, ReplacesPrivateNamesInEveryFile) {
    MadeUpMachine pc(Installation::Steam2020);
    pc.putLog("in " + pc.files.path("bridge"));
    for (const ZipEntry& file : reportOf(pc).files) {
        EXPECT_EQ(file.content.find(pc.files.path("bridge")), std::string::npos) << file.name;
    }
    EXPECT_NE(contentOf(reportOf(pc), "logs/VantrelBridgeHID.log").find("in <home>"), std::string::npos);
}

TEST(Report, ReplacesPrivateNamesInTheNamesOfFiles) {
    MadeUpMachine pc(Installation::Steam2020);
    pc.files.write(
        "bridge/config/config.json",
        R"({"hid": {"vid": "1234", "pid": "ABCD"}, "mappings": {"buttonConfigPath": "anna on cockpit.json"}})");
    pc.files.write("bridge/config/anna on cockpit.json", "{}");
    const std::vector<std::string> names = namesOf(reportOf(pc));
    EXPECT_EQ(std::ranges::count(names, "config/user on computer.json"), 1);
}

TEST(Report, HoldsOnlyTheEndOfALongLog) {
    MadeUpMachine pc(Installation::Steam2020);
    pc.putLog(std::string(3000000, 'x') + "\nlast line\n");
    EXPECT_EQ(contentOf(reportOf(pc), "logs/VantrelBridgeHID.log"), "(the beginning is left out)\nlast line\n");
}

TEST(Report, IsMadeWithoutAConfigurationToo) {
    MadeUpMachine pc(Installation::Steam2020);
    FileSystem::remove(pc.files.path("bridge/config/config.json"));
    EXPECT_EQ(namesOf(reportOf(pc)), (std::vector<std::string>{"doctor.txt", "versions.txt"}));
}

TEST(ReportListing, NamesFilesAndBoards) {
    EXPECT_EQ(
        reportListing({{{"a.txt", std::string(1025, 'x')}, {"b", ""}}, {"00A1", "S1"}}),
        "The report holds:\n  a.txt, 2 KiB\n  b, 0 KiB\n"
        "Home folder, user names in paths and the computer's name are replaced. Serial numbers and identities of\n"
        "boards are kept: 00A1, S1.\n");
}
