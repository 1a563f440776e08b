#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "tests/support/config_samples.h"
#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <ostream>
#include <string>
#include <system_error>

namespace {

bool loadSettings(const std::string& path, std::string& error) {
    AppConfig config;
    return loadAppConfig(path, config, error);
}

template <typename Config>
bool load(const std::string& path, std::string& error) {
    return Config().load(path, error);
}

/// One of the three files: how it is loaded, its messages and a text that loads.
struct FileKind {
    const char* name;
    bool (*load)(const std::string& path, std::string& error);
    std::string notFound;
    std::string openFailed;
    std::string parseFailed;
    std::string rootNotObject;
    std::string sample;
};

const FileKind appConfigKind{"AppConfig",
                             loadSettings,
                             "Config file not found: ",
                             "Failed to open config file: ",
                             "Config parse error: ",
                             "Config root must be an object",
                             ConfigSamples::appConfig()};
const FileKind buttonConfigKind{"ButtonConfig",
                                load<ButtonConfig>,
                                "Button config not found: ",
                                "Failed to open button config: ",
                                "Button config parse error: ",
                                "Button config root must be an object",
                                ConfigSamples::buttons("A", "PRESS", "DEFAULT", "x")};
const FileKind eventMapKind{"HidEventMap",
                            load<HidEventMap>,
                            "Event map not found: ",
                            "Failed to open event map: ",
                            "Event map parse error: ",
                            "Event map root must be an object",
                            ConfigSamples::eventMap()};

/// Lets a failure name the file.
std::ostream& operator<<(std::ostream& out, const FileKind& kind) {
    return out << kind.name;
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

    std::string errorOfText(const std::string& text) const { return errorOf(folder.write("file.json", text)); }
};

} // namespace

TEST_P(ConfigFiles, LoadWithOrWithoutAByteOrderMarkAndLeaveTheErrorAlone) {
    std::string error = "kept";
    EXPECT_TRUE(GetParam().load(folder.write("file.json", GetParam().sample), error));
    EXPECT_EQ(error, "kept");
    EXPECT_EQ(errorOfText("\xEF\xBB\xBF" + GetParam().sample), "");
}

TEST_P(ConfigFiles, ReportAMissingFile) {
    for (const std::string& path : {folder.path("missing.json"), folder.path("nowhere/missing.json"), std::string()}) {
        EXPECT_EQ(errorOf(path), GetParam().notFound + path);
    }
}

TEST_P(ConfigFiles, ReportAFolderInAFilesPlace) {
    const std::string path = folder.makeFolder("file.json");
    EXPECT_EQ(errorOf(path), GetParam().openFailed + path);
}

TEST_P(ConfigFiles, ThrowWhereTheSystemCannotSayWhetherTheyExist) {
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

TEST_P(ConfigFiles, ReportTheParsersReasonAndARootThatIsNoObject) {
    EXPECT_EQ(errorOfText("{\"a\":1,}"), GetParam().parseFailed + "Expected string key");
    EXPECT_EQ(errorOfText(GetParam().sample + std::string(1, '\0')),
              GetParam().parseFailed + "Unexpected trailing characters");
    for (const char* text : {"[]", "null", "1", "\"{}\"", "true"}) {
        EXPECT_EQ(errorOfText(text), GetParam().rootNotObject) << text;
    }
}

INSTANTIATE_TEST_SUITE_P(All, ConfigFiles, testing::Values(appConfigKind, buttonConfigKind, eventMapKind),
                         [](const auto& kind) { return kind.param.name; });
