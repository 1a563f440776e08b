#include "companion/draft/configuration_files.h"

#include "tests/support/temp_folder.h"

#include <gtest/gtest.h>

namespace {

const std::string smallSettings = R"({"hid": {}, "mappings": {"buttonConfigPath": "my buttons.json"}})";

/// A folder with a configuration whose event map is missing.
class WrittenFiles {
public:
    WrittenFiles() {
        folder.write("config.json", smallSettings);
        folder.write("my buttons.json", "{}");
    }

    std::string path(const std::string& name) const { return folder.path(name); }

    std::string text(const std::string& name) const {
        std::string content = "none";
        FileSystem::readFile(folder.path(name), content);
        return content;
    }

    /// Text by name of everything in the folder.
    std::map<std::string, std::string> all() const {
        std::map<std::string, std::string> files;
        for (const std::string& name : FileSystem::namesIn(folder.path())) {
            files[name] = text(name);
        }
        return files;
    }

    TempFolder folder;
};

/// Changes of all three files.
ConfigurationTexts changedTexts() {
    return {{smallSettings + " ", R"({"control_ids": {}})", R"({"buttons": []})"}};
}

/// Operations of which the nth fails, as on a full disk or in a folder that may not be written to.
FileOperations failingAt(int number) {
    const auto left = std::make_shared<int>(number);
    const auto fails = [left] { return --*left == 0 ? "No space left on device" : ""; };
    const FileOperations real = systemFileOperations();
    return {[=](const std::string& path, const std::string& text) {
                const std::string reason = fails();
                // A disk that fills up keeps the beginning.
                return real.write(path, reason.empty() ? text : text.substr(0, 1)) + reason;
            },
            [=](const std::string& from, const std::string& to) {
                const std::string reason = fails();
                return reason.empty() ? real.copy(from, to) : reason;
            },
            [=](const std::string& from, const std::string& to) {
                const std::string reason = fails();
                return reason.empty() ? real.rename(from, to) : reason;
            },
            [=](const std::string& path) {
                const std::string reason = fails();
                return reason.empty() ? real.flush(path) : reason;
            }};
}

/// The system's operations, which note the names of what is flushed and renamed.
FileOperations noting(std::vector<std::string>& steps) {
    FileOperations operations = systemFileOperations();
    operations.flush = [&steps, flush = operations.flush](const std::string& path) {
        steps.push_back("flush " + FileSystem::fileName(path));
        return flush(path);
    };
    operations.rename = [&steps, rename = operations.rename](const std::string& from, const std::string& to) {
        steps.push_back("rename " + FileSystem::fileName(from));
        return rename(from, to);
    };
    return operations;
}

} // namespace

TEST(ConfigurationFiles, AreFoundThroughTheSettings) {
    const WrittenFiles written;
    ConfigurationFiles files(written.path("config.json"));
    std::string error;
    ASSERT_TRUE(files.read(error)) << error;
    EXPECT_TRUE(files.exist());
    EXPECT_EQ(files.paths()[ConfigurationPart::Commands], written.path("my buttons.json"));
    EXPECT_EQ(files.paths()[ConfigurationPart::EventMap], written.path("hid_event_map.json"));
    EXPECT_EQ(files.texts()[ConfigurationPart::Settings], smallSettings);
    EXPECT_EQ(files.texts()[ConfigurationPart::EventMap], emptyTexts()[ConfigurationPart::EventMap]);
}

TEST(ConfigurationFiles, ThatCanNotBeUsedAreNamed) {
    const TempFolder folder;
    const std::string path = folder.path("config.json");
    for (const auto& [settings, reason] : std::vector<std::pair<std::string, std::string>>{
             {"{", "isn't JSON"}, {"{}", "names no command file"}, {R"({"mappings": []})", "names no command file"}}) {
        folder.write("config.json", settings);
        std::string error;
        EXPECT_FALSE(ConfigurationFiles(path).read(error));
        EXPECT_NE(error.find(reason), std::string::npos) << error;
    }
    folder.write("config.json", smallSettings);
    folder.makeFolder("my buttons.json");
    std::string error;
    EXPECT_FALSE(ConfigurationFiles(path).read(error));
    EXPECT_NE(error.find("can't be read"), std::string::npos) << error;
}

TEST(ConfigurationFiles, AreSavedWithBackups) {
    const WrittenFiles written;
    ConfigurationFiles files(written.path("config.json"));
    std::string error;
    ASSERT_TRUE(files.read(error));
    ConfigurationTexts texts = files.texts();
    texts[ConfigurationPart::Commands] = R"({"buttons": []})";
    EXPECT_FALSE(files.wouldWrite(ConfigurationPart::Settings, texts));
    EXPECT_TRUE(files.wouldWrite(ConfigurationPart::EventMap, texts));
    ASSERT_TRUE(files.save(texts, error)) << error;
    const std::map<std::string, std::string> expected{
        {"config.json", smallSettings},
        {"hid_event_map.json", texts[ConfigurationPart::EventMap]},
        {"my buttons.json", R"({"buttons": []})"},
        {"my buttons.json.bak", "{}"},
    };
    EXPECT_EQ(written.all(), expected);
    EXPECT_TRUE(files.save(texts, error)) << error;
    EXPECT_EQ(written.all(), expected);
}

TEST(ConfigurationFiles, OfAFirstStartAreMadeWithTheirFolder) {
    const TempFolder folder;
    ConfigurationFiles files(folder.path("new/folder/config.json"));
    std::string error;
    ASSERT_TRUE(files.read(error));
    EXPECT_FALSE(files.exist());
    ASSERT_TRUE(files.save(emptyTexts(), error)) << error;
    EXPECT_EQ(FileSystem::namesIn(folder.path("new/folder")).size(), 3U);
    ConfigurationFiles again(folder.path("new/folder/config.json"));
    ASSERT_TRUE(again.read(error)) << error;
    EXPECT_EQ(again.texts().values, emptyTexts().values);
}

TEST(ConfigurationFiles, ThatChangedMeanwhileAreNotOverwritten) {
    for (const std::string name : {"config.json", "hid_event_map.json", "my buttons.json"}) {
        const WrittenFiles written;
        ConfigurationFiles files(written.path("config.json"));
        std::string error;
        ASSERT_TRUE(files.read(error));
        written.folder.write(name, "someone else's");
        const auto before = written.all();
        EXPECT_FALSE(files.save(changedTexts(), error));
        EXPECT_NE(error.find(name + " was changed by another program"), std::string::npos) << error;
        EXPECT_EQ(written.all(), before);
    }
}

TEST(ConfigurationFiles, OfWhichOneHasVanishedAreNotMadeAnew) {
    const WrittenFiles written;
    ConfigurationFiles files(written.path("config.json"));
    std::string error;
    ASSERT_TRUE(files.read(error));
    FileSystem::remove(written.path("my buttons.json"));
    const auto before = written.all();
    EXPECT_FALSE(files.save(changedTexts(), error));
    EXPECT_EQ(written.all(), before);
}

TEST(ConfigurationFiles, StayAsTheyWereWhateverFails) {
    // Two files with a copy, a text and its flush each, and one without a copy.
    constexpr int preparations = 2 * 3 + 2;
    // Two files with a backup in three steps, then the folder.
    constexpr int operationCount = preparations + 2 * 4 + 1 + 1;
    for (int failing = 1; failing <= operationCount + 1; ++failing) {
        const WrittenFiles written;
        written.folder.write("config.json.bak", "of an earlier save");
        ConfigurationFiles files(written.path("config.json"), failingAt(failing));
        std::string error;
        ASSERT_TRUE(files.read(error));
        auto before = written.all();
        const bool saved = files.save(changedTexts(), error);
        EXPECT_EQ(saved, failing > operationCount);
        auto after = written.all();
        if (!saved) {
            EXPECT_NE(error.find("No space left on device. Nothing was changed"), std::string::npos) << error;
            if (failing > preparations) {
                const auto isBackup = [](const auto& file) { return file.first.ends_with(".bak"); };
                std::erase_if(before, isBackup);
                std::erase_if(after, isBackup);
            }
            EXPECT_EQ(after, before) << failing;
        }
    }
}

TEST(ConfigurationFiles, AreOnTheDiskBeforeTheyTakeAnothersPlaceAndAtTheEnd) {
    const WrittenFiles written;
    std::vector<std::string> steps;
    ConfigurationFiles files(written.path("config.json"), noting(steps));
    std::string error;
    ASSERT_TRUE(files.read(error));
    ASSERT_TRUE(files.save({{smallSettings + " ", files.texts()[ConfigurationPart::EventMap], "{}"}}, error)) << error;
    EXPECT_EQ(steps, (std::vector<std::string>{"flush config.json.new", "flush hid_event_map.json.new",
                                               "flush config.json.bak.new", "rename config.json.bak.new",
                                               "rename config.json.new", "rename hid_event_map.json.new",
                                               "flush " + FileSystem::fileName(written.folder.path())}));
}

TEST(ConfigurationFiles, AreFlushedWithTheFoldersThatAreMadeForThem) {
    const TempFolder folder;
    std::vector<std::string> steps;
    ConfigurationFiles files(folder.path("outer/inner/config.json"), noting(steps));
    std::string error;
    ASSERT_TRUE(files.read(error) && files.save(emptyTexts(), error)) << error;
    steps.erase(steps.begin(), steps.end() - 3);
    EXPECT_EQ(steps,
              (std::vector<std::string>{"flush " + FileSystem::fileName(folder.path()), "flush outer", "flush inner"}));
}

TEST(ConfigurationFiles, InAPlaceThatIsNoFolderAreNotSaved) {
    const TempFolder folder;
    const std::string path = FileSystem::join(folder.write("file", ""), "config.json");
    ConfigurationFiles files(path);
    std::string error;
    ASSERT_TRUE(files.read(error));
    EXPECT_FALSE(files.save(emptyTexts(), error));
    EXPECT_NE(error.find("config.json can't be written: "), std::string::npos) << error;
}
