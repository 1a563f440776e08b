#pragma once

#include "companion/check/configuration_check.h"
#include "tests/support/temp_folder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The three files of a configuration. A '@' marks the place of each mistake.
struct PlantedConfiguration {
    std::string config = R"({"hid": {"vid": "16C0", "pid": "27DB"}, "mappings": {"buttonConfigPath": "buttons.json"}})";
    std::string map = R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 22, "HDG": 21}})";
    std::string buttons = R"~({"buttons": [{"name": "AP", "commands": {"PRESS": {"DEFAULT": "(>K:AP_MASTER)"}}}],
 "knobs": [{"name": "HDG", "commands": {"CW": {"DEFAULT": "(>K:HEADING_BUG_INC)"}}}]})~";
};

/// With this text as config.json.
inline PlantedConfiguration withConfig(std::string text) {
    PlantedConfiguration planted;
    planted.config = std::move(text);
    return planted;
}

/// With these members of config.json besides the required ones.
inline PlantedConfiguration withMembers(const std::string& members) {
    return withConfig("{\"hid\": {\"vid\": \"16C0\", \"pid\": \"27DB\"},\n"
                      " \"mappings\": {\"buttonConfigPath\": \"buttons.json\"},\n " +
                      members + "}");
}

/// With these members of one light profile.
inline PlantedConfiguration withProfile(const std::string& members) {
    return withMembers(R"("outputs": {"defaultProfile": "A", "profiles": {"A": {)" + members + "}}}");
}

/// With these control ids besides those that have commands.
inline PlantedConfiguration withControls(const std::string& controls) {
    PlantedConfiguration planted;
    planted.map = R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 22, "HDG": 21, )" + controls + "}}";
    return planted;
}

/// With this text as buttons.json.
inline PlantedConfiguration withButtons(std::string text) {
    PlantedConfiguration planted;
    planted.buttons = std::move(text);
    return planted;
}

/// With these commands of the control AP.
inline PlantedConfiguration withCommands(const std::string& commands) {
    return withButtons(R"({"buttons": [{"name": "AP", "commands": )" + commands +
                       R"(}, {"name": "HDG", "commands": {}}]})");
}

/// With this command of the control AP.
inline PlantedConfiguration withCommand(const std::string& command) {
    return withCommands(R"({"PRESS": {"DEFAULT": ")" + command + "\"}}");
}

inline std::string withoutMarks(std::string text) {
    std::erase(text, '@');
    return text;
}

/// The files without their marks in a folder of their own.
class WrittenConfiguration {
public:
    explicit WrittenConfiguration(const PlantedConfiguration& planted) {
        folder.write("config.json", withoutMarks(planted.config));
        folder.write("hid_event_map.json", withoutMarks(planted.map));
        folder.write("buttons.json", withoutMarks(planted.buttons));
    }

    ConfigurationVerdict verdict() const { return checkConfiguration(folder.path("config.json")); }

    /// The findings as "FILE:LINE:COLUMN SEVERITY CODE: HINT".
    std::vector<std::string> findings() const {
        std::vector<std::string> texts;
        for (const Finding& finding : verdict().findings) {
            texts.push_back(FileSystem::fileName(finding.file) + ':' + std::to_string(finding.line) + ':' +
                            std::to_string(finding.column) + ' ' + severityName(finding.severity) + ' ' + finding.code +
                            ": " + finding.hint);
        }
        return texts;
    }

private:
    TempFolder folder;
};

/// Adds "NAME:LINE:COLUMN" for each mark of a text.
inline void addMarks(const std::string& name, std::string_view text, std::vector<std::string>& places) {
    std::size_t line = 1;
    std::size_t column = 1;
    for (const char letter : text) {
        if (letter == '@') {
            places.push_back(name + ':' + std::to_string(line) + ':' + std::to_string(column));
        } else if (letter == '\n') {
            ++line;
            column = 1;
        } else {
            ++column;
        }
    }
}

/// The findings that belong to the marks: each is "SEVERITY CODE: HINT", in the order of config.json, event map and
/// buttons.json.
inline std::vector<std::string> expectedFindings(const PlantedConfiguration& planted,
                                                 const std::vector<std::string>& kinds) {
    std::vector<std::string> expected;
    addMarks("config.json", planted.config, expected);
    addMarks("hid_event_map.json", planted.map, expected);
    addMarks("buttons.json", planted.buttons, expected);
    for (std::size_t i = 0; i < std::min(expected.size(), kinds.size()); ++i) {
        expected[i] += ' ' + kinds[i];
    }
    return expected;
}
