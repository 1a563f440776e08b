#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "tests/support/config_samples.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>

namespace {

/// One of the three files: how it is loaded, the words of its messages and a text that loads.
struct FileKind {
    const char* name;
    std::function<bool(const std::string&, std::string&)> load;
    std::string notFound;
    std::string openFailed;
    std::string parseFailed;
    std::string rootNotObject;
    std::string sample;
};

/// Lets a failure name the file.
std::ostream& operator<<(std::ostream& out, const FileKind& kind) {
    return out << kind.name;
}

FileKind appConfigKind() {
    const auto load = [](const std::string& path, std::string& error) {
        AppConfig config;
        return loadAppConfig(path, config, error);
    };
    return {"AppConfig",
            load,
            "Config file not found: ",
            "Failed to open config file: ",
            "Config parse error: ",
            "Config root must be an object",
            ConfigSamples::appConfig()};
}

FileKind buttonConfigKind() {
    const auto load = [](const std::string& path, std::string& error) { return ButtonConfig().load(path, error); };
    return {"ButtonConfig",
            load,
            "Button config not found: ",
            "Failed to open button config: ",
            "Button config parse error: ",
            "Button config root must be an object",
            ConfigSamples::buttons("A", "PRESS", "DEFAULT", "x")};
}

FileKind eventMapKind() {
    const auto load = [](const std::string& path, std::string& error) { return HidEventMap().load(path, error); };
    return {"HidEventMap",
            load,
            "Event map not found: ",
            "Failed to open event map: ",
            "Event map parse error: ",
            "Event map root must be an object",
            ConfigSamples::eventMap()};
}

class ConfigFiles : public testing::TestWithParam<FileKind> {
protected:
    const TempFolder folder;

    std::string errorOf(const std::string& path) const {
        std::string error;
        const bool loaded = GetParam().load(path, error);
        EXPECT_EQ(loaded, error.empty());
        return error;
    }

    std::string errorOfText(std::string_view text) const { return errorOf(folder.write("file.json", text)); }
};

} // namespace

TEST_P(ConfigFiles, LoadFromDisk) {
    EXPECT_EQ(errorOfText(GetParam().sample), "");
}

TEST_P(ConfigFiles, MayBeginWithAByteOrderMark) {
    EXPECT_EQ(errorOfText("\xEF\xBB\xBF" + GetParam().sample), "");
}

TEST_P(ConfigFiles, TellAMissingFile) {
    const std::string path = folder.path("missing.json");
    EXPECT_EQ(errorOf(path), GetParam().notFound + path);
}

TEST_P(ConfigFiles, TellAFileInAMissingFolder) {
    const std::string path = folder.path("nowhere/missing.json");
    EXPECT_EQ(errorOf(path), GetParam().notFound + path);
}

TEST_P(ConfigFiles, CountAnEmptyPathAsAMissingFile) {
    EXPECT_EQ(errorOf(""), GetParam().notFound);
}

TEST_P(ConfigFiles, CannotOpenAFolderInAFilesPlace) {
    const std::string path = folder.makeFolder("file.json");
    EXPECT_EQ(errorOf(path), GetParam().openFailed + path);
}

TEST_P(ConfigFiles, TellAFileThatMayNotBeRead) {
    const std::string path = folder.write("locked.json", GetParam().sample);
    std::filesystem::permissions(FileSystem::fromBytes(path), std::filesystem::perms::none);
    // Some users and systems may read it all the same.
    const bool readable = std::ifstream(FileSystem::fromBytes(path)).is_open();
    EXPECT_EQ(errorOf(path), readable ? "" : GetParam().openFailed + path);
    std::filesystem::permissions(FileSystem::fromBytes(path), std::filesystem::perms::owner_all);
}

TEST_P(ConfigFiles, LetTheFailureOfTheQuestionWhetherTheyExistPass) {
    const std::string path = folder.path(std::string(5000, 'x'));
    std::error_code failure;
    ASSERT_FALSE(std::filesystem::exists(FileSystem::fromBytes(path), failure));
    // Not every system finds such a name a failure of its own.
    if (failure) {
        std::string error;
        EXPECT_THROW(GetParam().load(path, error), std::filesystem::filesystem_error);
        EXPECT_EQ(error, "");
    } else {
        EXPECT_EQ(errorOf(path), GetParam().notFound + path);
    }
}

TEST_P(ConfigFiles, TellTheParsersReason) {
    EXPECT_EQ(errorOfText(""), GetParam().parseFailed + "Unexpected end of input");
    EXPECT_EQ(errorOfText("{\"a\":1,}"), GetParam().parseFailed + "Expected string key");
    EXPECT_EQ(errorOfText(GetParam().sample + "}"), GetParam().parseFailed + "Unexpected trailing characters");
    EXPECT_EQ(errorOfText(std::string(1001, '[')), GetParam().parseFailed + "Nesting too deep");
}

TEST_P(ConfigFiles, ReadZeroBytesAsBytes) {
    EXPECT_EQ(errorOfText(GetParam().sample + std::string(1, '\0')),
              GetParam().parseFailed + "Unexpected trailing characters");
}

TEST_P(ConfigFiles, KeepEveryLineEndAndTheControlZByte) {
    EXPECT_EQ(errorOfText("\r\n" + GetParam().sample + "\r\n"), "");
    EXPECT_EQ(errorOfText(GetParam().sample + "\x1A"), GetParam().parseFailed + "Unexpected trailing characters");
}

TEST_P(ConfigFiles, NeedAnObjectAtTheRoot) {
    for (const char* text : {"[]", "null", "1", "\"{}\"", "true"}) {
        EXPECT_EQ(errorOfText(text), GetParam().rootNotObject) << text;
    }
}

TEST_P(ConfigFiles, LeaveTheErrorAloneOnSuccess) {
    std::string error = "kept";
    EXPECT_TRUE(GetParam().load(folder.write("file.json", GetParam().sample), error));
    EXPECT_EQ(error, "kept");
}

TEST_P(ConfigFiles, LoadFromAFolderWhoseNameIsNotAscii) {
    const std::string path = folder.write("E\xC3\xA9ro \xC3\xA4/file.json", GetParam().sample);
    EXPECT_EQ(errorOf(path), "");
}

INSTANTIATE_TEST_SUITE_P(All, ConfigFiles, testing::Values(appConfigKind(), buttonConfigKind(), eventMapKind()),
                         [](const auto& kind) { return kind.param.name; });
