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

TEST_F(ConfigSearch, PerMachineFolderIsTheFallbackWhetherTheFileExistsOrNot) {
    EXPECT_EQ(defaultConfigPath(fake.record()), inData());
}

TEST_F(ConfigSearch, WithoutPerMachineFolderTheFirstCandidateIsGivenThoughMissing) {
    fake.dataFolder.clear();
    EXPECT_EQ(defaultConfigPath(fake.record()), beside());
}

TEST_F(ConfigSearch, UnknownExecutableLeavesThePerMachineFolder) {
    fake.executable.clear();
    EXPECT_EQ(defaultConfigPath(fake.record()), inData());
}

TEST_F(ConfigSearch, WithNothingKnownThePathIsRelative) {
    fake.executable.clear();
    fake.dataFolder.clear();
    EXPECT_EQ(defaultConfigPath(fake.record()), FileSystem::join("config", "config.json"));
    EXPECT_TRUE(configCandidates(fake.record()).empty());
}

TEST_F(ConfigSearch, CandidatesAreGivenInTheOrderOfTheSearch) {
    EXPECT_EQ(configCandidates(fake.record()), (std::vector<std::string>{beside(), inData()}));
    fake.executable.clear();
    EXPECT_EQ(configCandidates(fake.record()), std::vector<std::string>{inData()});
}

TEST(LogDirectory, IsThePerMachineFolderWithoutConsole) {
    EXPECT_EQ(logDirectory(false, "data", "exe"), joined("data", "VantrelBridge", "logs"));
}

TEST(LogDirectory, IsTheExecutablesInConsoleModeAndWithoutPerMachineFolder) {
    EXPECT_EQ(logDirectory(true, "data", "exe"), "exe");
    EXPECT_EQ(logDirectory(false, "", "exe"), "exe");
    EXPECT_EQ(logDirectory(true, "", ""), "");
}

TEST(ExeDirectory, IsTheFolderOfTheExecutableOrEmpty) {
    FakeHost fake;
    EXPECT_EQ(exeDirectory(fake.record()), "");
    fake.executable = FileSystem::join("folder", "program.exe");
    EXPECT_EQ(exeDirectory(fake.record()), "folder");
}

} // namespace
