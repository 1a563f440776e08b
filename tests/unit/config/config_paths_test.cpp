#include "config/app_config.h"
#include "tests/support/config_samples.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

/// Path texts as the system joins them.
std::string inFolder(const std::string& folder, const std::string& name) {
    return FileSystem::toBytes(FileSystem::fromBytes(folder) / FileSystem::fromBytes(name));
}

/// The two paths of a configuration with that `hidEventMapPath`, a JSON value.
MappingsConfig mappingsOf(const TempFolder& folder, const std::string& eventMapPath) {
    AppConfig config;
    std::string error;
    const std::string text =
        R"({"hid":{"vid":"1","pid":"2"},"mappings":{"buttonConfigPath":"sub/b.json","hidEventMapPath":)" +
        eventMapPath + "}}";
    EXPECT_TRUE(loadAppConfig(folder.write("config.json", text), config, error)) << error;
    return config.mappings;
}

} // namespace

TEST(ResolveConfigPath, StartsARelativePathFromTheFolderOfTheConfiguration) {
    const std::string absolute = TempFolder().path("x/../b.json");
    const std::string highBytes = FileSystem::toBytes(FileSystem::fromBytes("E\xE9ro"));
    const struct {
        std::string configPath;
        std::string value;
        std::string resolved;
    } cases[] = {
        {"folder/config.json", "b.json", inFolder("folder", "b.json")},
        {"/etc/bridge/config.json", "sub/b.json", inFolder("/etc/bridge", "sub/b.json")},
        {"/config.json", "b.json", inFolder("/", "b.json")},
        {highBytes + "/config.json", "b.json", inFolder(highBytes, "b.json")},
        // Dots stay.
        {"folder/config.json", "../x/./b.json", inFolder("folder", "../x/./b.json")},
        {"./config.json", "b.json", inFolder(".", "b.json")},
        {"config.json", "sub/b.json", "sub/b.json"},
        {"", "b.json", "b.json"},
        {"folder/config.json", "", ""},
        {"folder/config.json", absolute, absolute},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(resolveConfigPath(each.configPath, each.value), each.resolved) << each.configPath;
    }
}

TEST(FindSiblingFile, GivesTheJoinedPathOfAFileThatExists) {
    const TempFolder folder;
    const std::string map = folder.write("map.json", "");
    EXPECT_EQ(findSiblingFile(folder.path("config.json"), "map.json"), map);
    EXPECT_EQ(findSiblingFile(folder.path("nowhere/config.json"), "map.json"), "");
    // The system fails to answer for a name of that length.
    EXPECT_EQ(findSiblingFile(folder.path("config.json"), std::string(5000, 'x')), "");
    // Without a folder to search there is no search, although this name alone, an absolute path, exists.
    EXPECT_EQ(findSiblingFile("config.json", map), "");
}

TEST(AppConfigPaths, StartFromTheFolderOfTheConfiguration) {
    const TempFolder folder;
    const std::string found = folder.write("hid_event_map.json", ConfigSamples::eventMap());
    const MappingsConfig mappings = mappingsOf(folder, "\"missing.json\"");
    EXPECT_EQ(mappings.buttonConfigPath, inFolder(folder.path(), "sub/b.json"));
    // A path of the file is never replaced by the search.
    EXPECT_EQ(mappings.hidEventMapPath, inFolder(folder.path(), "missing.json"));
    for (const char* notGiven : {"\"\"", "null"}) {
        EXPECT_EQ(mappingsOf(folder, notGiven).hidEventMapPath, found) << notGiven;
    }
}

TEST(AppConfigPaths, NoEventMapAnywhereIsNoError) {
    const TempFolder folder;
    EXPECT_EQ(mappingsOf(folder, "\"\"").hidEventMapPath, "");
}
