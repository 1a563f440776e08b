#include "app/app_paths.h"

#include "tests/support/fake_host.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace {

std::string joined(const std::string& a, const std::string& b, const std::string& c) {
    return FileSystem::join(FileSystem::join(a, b), c);
}

class ConfigSearch : public testing::Test {
protected:
    TempFolder folder;
    FakeHost fake;

    void SetUp() override {
        fake.executable = folder.path("VantrelBridgeHID.exe");
        fake.dataFolder = folder.path("data");
    }
    std::string beside() const { return joined(folder.path(), "config", "config.json"); }
    std::string inData() const { return joined(folder.path("data"), "VantrelBridge", "config.json"); }
};

TEST_F(ConfigSearch, FileBesideTheExecutableWins) {
    folder.write("config/config.json", "{}");
    folder.write("data/VantrelBridge/config.json", "{}");
    EXPECT_EQ(defaultConfigPath(fake.record()), beside());
}

TEST_F(ConfigSearch, WithoutAnyFileTheKnownFoldersDecide) {
    const struct {
        bool executable;
        bool data;
        std::string path;
        std::vector<std::string> candidates;
    } cases[] = {
        {true, true, inData(), {beside(), inData()}},
        {true, false, beside(), {beside()}},
        {false, true, inData(), {inData()}},
        {false, false, FileSystem::join("config", "config.json"), {}},
    };
    for (const auto& each : cases) {
        fake.executable = each.executable ? folder.path("VantrelBridgeHID.exe") : "";
        fake.dataFolder = each.data ? folder.path("data") : "";
        EXPECT_EQ(defaultConfigPath(fake.record()), each.path);
        EXPECT_EQ(configCandidates(fake.record()), each.candidates);
    }
}

TEST(LogDirectory, IsTheExecutablesInConsoleModeAndWithoutPerMachineFolder) {
    EXPECT_EQ(logDirectory(false, "data", "exe"), joined("data", "VantrelBridge", "logs"));
    EXPECT_EQ(logDirectory(true, "data", "exe"), "exe");
    EXPECT_EQ(logDirectory(false, "", "exe"), "exe");
    EXPECT_EQ(logDirectory(true, "", ""), "");
}

TEST(CrashLine, IsInAFileBesideTheLog) {
    FakeHost fake;
    fake.executable = FileSystem::join("exe", "Program");
    fake.dataFolder = "data";
    EXPECT_EQ(crashLinePath(fake.record(), false, "Program"),
              FileSystem::join(joined("data", "VantrelBridge", "logs"), "Program.crash.log"));
    EXPECT_EQ(crashLinePath(fake.record(), true, "Program"), FileSystem::join("exe", "Program.crash.log"));
}

TEST(ExeDirectory, IsTheFolderOfTheExecutableOrEmpty) {
    FakeHost fake;
    EXPECT_EQ(exeDirectory(fake.record()), "");
    fake.executable = FileSystem::join("folder", "program.exe");
    EXPECT_EQ(exeDirectory(fake.record()), "folder");
}

} // namespace
