#include "config/app_config.h"
#include "tests/support/config_samples.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

/// Path texts as the system joins them.
std::string joined(const std::string& folder, const std::string& name) {
    return FileSystem::toBytes(FileSystem::fromBytes(folder) / FileSystem::fromBytes(name));
}

AppConfig loaded(const std::string& path) {
    AppConfig config;
    std::string error;
    EXPECT_TRUE(loadAppConfig(path, config, error)) << error;
    return config;
}

std::string withEventMapPath(const std::string& value) {
    return R"({"hid":{"vid":"1","pid":"2"},"mappings":{"buttonConfigPath":"sub/b.json","hidEventMapPath":")" + value +
           R"("}})";
}

/// As it stands in a JSON string.
std::string escaped(const std::string& path) {
    std::string text;
    for (const char byte : path) {
        text += byte == '\\' ? "\\\\" : std::string(1, byte);
    }
    return text;
}

} // namespace

TEST(ResolveConfigPath, AnEmptyValueStaysEmpty) {
    EXPECT_EQ(resolveConfigPath("folder/config.json", ""), "");
}

TEST(ResolveConfigPath, AnAbsoluteValueStaysAsItIs) {
    const TempFolder folder;
    EXPECT_EQ(resolveConfigPath("folder/config.json", folder.path("x/../b.json")), folder.path("x/../b.json"));
}

TEST(ResolveConfigPath, ARelativeValueStartsFromTheFolderOfTheConfiguration) {
    EXPECT_EQ(resolveConfigPath("folder/config.json", "b.json"), joined("folder", "b.json"));
    EXPECT_EQ(resolveConfigPath("/etc/bridge/config.json", "sub/b.json"), joined("/etc/bridge", "sub/b.json"));
}

TEST(ResolveConfigPath, DoesNotCleanUpDots) {
    EXPECT_EQ(resolveConfigPath("folder/config.json", "../x/./b.json"), joined("folder", "../x/./b.json"));
    EXPECT_EQ(resolveConfigPath("./config.json", "b.json"), joined(".", "b.json"));
}

TEST(ResolveConfigPath, ABareConfigurationNameLeavesTheValueRelative) {
    EXPECT_EQ(resolveConfigPath("config.json", "sub/b.json"), "sub/b.json");
    EXPECT_EQ(resolveConfigPath("", "b.json"), "b.json");
}

TEST(ResolveConfigPath, TheRootFolderIsAFolder) {
    EXPECT_EQ(resolveConfigPath("/config.json", "b.json"), joined("/", "b.json"));
}

TEST(ResolveConfigPath, KeepsHighBytes) {
    const std::string folder = FileSystem::toBytes(FileSystem::fromBytes("E\xE9ro"));
    EXPECT_EQ(resolveConfigPath(folder + "/config.json", "b.json"), joined(folder, "b.json"));
}

TEST(FindSiblingFile, GivesTheJoinedPathOfAFileThatExists) {
    const TempFolder folder;
    const std::string map = folder.write("map.json", "");
    EXPECT_EQ(findSiblingFile(folder.path("config.json"), "map.json"), map);
}

TEST(FindSiblingFile, IsEmptyWhenThereIsNoSuchFile) {
    const TempFolder folder;
    EXPECT_EQ(findSiblingFile(folder.path("config.json"), "map.json"), "");
    EXPECT_EQ(findSiblingFile(folder.path("nowhere/config.json"), "map.json"), "");
}

TEST(FindSiblingFile, IsEmptyForAConfigurationPathWithoutAFolder) {
    const TempFolder folder;
    const std::string map = folder.write("map.json", "");
    // The name alone would be found: it is absolute.
    EXPECT_EQ(findSiblingFile("config.json", map), "");
}

TEST(FindSiblingFile, CountsAnErrorOfTheFileSystemAsAbsent) {
    const TempFolder folder;
    EXPECT_EQ(findSiblingFile(folder.path("config.json"), std::string(5000, 'x')), "");
}

TEST(AppConfigPaths, ARelativeButtonConfigPathIsJoinedWithTheFolder) {
    const TempFolder folder;
    const AppConfig config = loaded(folder.write("config.json", ConfigSamples::appConfig()));
    EXPECT_EQ(config.mappings.buttonConfigPath, joined(folder.path(), "buttons.json"));
}

TEST(AppConfigPaths, AnAbsoluteEventMapPathStaysAsItIs) {
    const TempFolder folder;
    const std::string map = folder.path("elsewhere/map.json");
    const AppConfig config = loaded(folder.write("config.json", withEventMapPath(escaped(map))));
    EXPECT_EQ(config.mappings.hidEventMapPath, map);
}

TEST(AppConfigPaths, AnEventMapPathOfTheFileIsNeverReplacedByTheSearch) {
    const TempFolder folder;
    folder.write("hid_event_map.json", ConfigSamples::eventMap());
    const AppConfig config = loaded(folder.write("config.json", withEventMapPath("missing.json")));
    EXPECT_EQ(config.mappings.hidEventMapPath, joined(folder.path(), "missing.json"));
}

TEST(AppConfigPaths, FindsTheEventMapBesideTheConfiguration) {
    const TempFolder folder;
    const std::string map = folder.write("hid_event_map.json", ConfigSamples::eventMap());
    EXPECT_EQ(loaded(folder.write("config.json", ConfigSamples::appConfig())).mappings.hidEventMapPath, map);
    EXPECT_EQ(loaded(folder.write("config.json", withEventMapPath(""))).mappings.hidEventMapPath, map);
}

TEST(AppConfigPaths, SearchesWhenTheEventMapPathIsNoString) {
    const TempFolder folder;
    const std::string map = folder.write("hid_event_map.json", ConfigSamples::eventMap());
    const std::string path = folder.write(
        "config.json", R"({"hid":{"vid":"1","pid":"2"},"mappings":{"buttonConfigPath":"b","hidEventMapPath":null}})");
    EXPECT_EQ(loaded(path).mappings.hidEventMapPath, map);
}

TEST(AppConfigPaths, NoEventMapAnywhereIsNoError) {
    const TempFolder folder;
    EXPECT_EQ(loaded(folder.write("config.json", ConfigSamples::appConfig())).mappings.hidEventMapPath, "");
}
