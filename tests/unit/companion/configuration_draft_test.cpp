#include "companion/draft/configuration_draft.h"

#include "config/app_config.h"

#include <gtest/gtest.h>

namespace {

const ConfigurationPaths draftPaths{{"c/config.json", resolveConfigPath("c/config.json", "hid_event_map.json"),
                                     resolveConfigPath("c/config.json", "buttons.json")}};

const ConfigurationTexts smallTexts{{
    R"({"hid": {"vid": "16C0", "pid": "27DB"}, "mappings": {"buttonConfigPath": "buttons.json", "hidEventMapPath": "hid_event_map.json"},
 "devices": [{"boardId": "0xE66138", "role": "PFD", "mine": 1}]})",
    R"({"event_types": {"BUTTON": 1}, "control_ids": {"AP": 22}})",
    R"~({"buttons": [
  {"name": "ap", "commands": {"Press": {"DEFAULT": "(>K:AP_MASTER)"}}}
 ]})~",
}};

using Step = std::function<bool(ConfigurationDraft& draft, std::string& error)>;

struct StepRow {
    Step step;
    ConfigurationPart part;
    /// What becomes of `from`; an empty `to` for a step that is refused.
    std::string from;
    std::string to;
};

std::string replaced(std::string text, const std::string& from, const std::string& to) {
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return text.replace(at, from.size(), to);
}

void expectSteps(const std::vector<StepRow>& rows) {
    for (const StepRow& row : rows) {
        ConfigurationDraft draft(draftPaths, smallTexts);
        std::string error;
        EXPECT_EQ(row.step(draft, error), !row.to.empty()) << error;
        EXPECT_EQ(error.empty(), !row.to.empty());
        ConfigurationTexts expected = smallTexts;
        if (!row.to.empty()) {
            expected[row.part] = replaced(expected[row.part], row.from, row.to);
        }
        EXPECT_EQ(draft.texts().values, expected.values) << row.from;
    }
}

Step nameStep(int number, std::string name) {
    return [=](ConfigurationDraft& draft, std::string& error) { return draft.nameControl(number, name, error); };
}

Step commandStep(const CommandPlace& place, std::string command) {
    return [=](ConfigurationDraft& draft, std::string& error) { return draft.setCommand(place, command, error); };
}

Step clearStep(const CommandPlace& place) {
    return [=](ConfigurationDraft& draft, std::string& error) { return draft.clearCommand(place, error); };
}

Step roleStep(std::string board, std::string role) {
    return [=](ConfigurationDraft& draft, std::string& error) { return draft.setRole(board, role, error); };
}

} // namespace

TEST(ConfigurationDraft, NamesControls) {
    expectSteps({
        {nameStep(7, "HDG"), ConfigurationPart::EventMap, R"("AP": 22)", R"("AP": 22, "HDG": 7)"},
        {nameStep(7, " a p"), ConfigurationPart::EventMap, "", ""},
        {nameStep(7, " "), ConfigurationPart::EventMap, "", ""},
        {nameStep(22, "AP"), ConfigurationPart::Commands, "\"ap\"", "\"AP\""},
    });
}

TEST(ConfigurationDraft, RenamesAControlWhereItHasCommandsToo) {
    ConfigurationDraft draft(draftPaths, smallTexts);
    std::string error;
    EXPECT_TRUE(draft.nameControl(22, "MASTER", error));
    EXPECT_EQ(draft.texts()[ConfigurationPart::EventMap],
              replaced(smallTexts[ConfigurationPart::EventMap], "\"AP\"", "\"MASTER\""));
    EXPECT_EQ(draft.texts()[ConfigurationPart::Commands],
              replaced(smallTexts[ConfigurationPart::Commands], "\"ap\"", "\"MASTER\""));
}

TEST(ConfigurationDraft, WritesCommands) {
    const std::string entry = R"~({"name": "ap", "commands": {"Press": {"DEFAULT": "(>K:AP_MASTER)"}}})~";
    const auto part = ConfigurationPart::Commands;
    expectSteps({
        {commandStep({"A P", false, "press", "default"}, "x"), part, "(>K:AP_MASTER)", "x"},
        {commandStep({"AP", false, "PRESS", "PFD"}, "x"), part, "_MASTER)\"", R"~(_MASTER)", "PFD": "x")~"},
        {commandStep({"AP", true, "HOLD", "PFD"}, "x"), part, "\"}}", R"~("}, "HOLD": {"PFD": "x"}})~"},
        {commandStep({"HDG", false, "press", "pfd"}, "\""), part, entry,
         entry + ",\n  {\"name\": \"HDG\", \"commands\": {\"PRESS\": {\"PFD\": \"\\\"\"}}}"},
        {commandStep({"CRS", true, "CW", "DEFAULT"}, "x"), part, "\n ]",
         "\n ], "
         R"("knobs": [{"name": "CRS", "commands": {"CW": {"DEFAULT": "x"}}}])"},
    });
}

TEST(ConfigurationDraft, ChangesTheCommandThatCountsOfSeveral) {
    ConfigurationTexts texts = smallTexts;
    texts[ConfigurationPart::Commands] = R"({"buttons": [{"name": "AP", "commands": {"PRESS": {"PFD": "a"}}},
 {"name": "AP", "commands": {"PRESS": {"PFD": "b"}}}, {"name": "AP", "commands": {"HOLD": {"PFD": "c"}}}]})";
    ConfigurationDraft draft(draftPaths, texts);
    std::string error;
    EXPECT_TRUE(draft.setCommand({"AP", false, "PRESS", "PFD"}, "x", error));
    EXPECT_EQ(draft.texts()[ConfigurationPart::Commands],
              replaced(texts[ConfigurationPart::Commands], "\"b\"", "\"x\""));
}

TEST(ConfigurationDraft, RemovesCommandsWithWhatIsEmptyThen) {
    const std::string entry = "\n  {\"name\": \"ap\", \"commands\": {\"Press\": {\"DEFAULT\": \"(>K:AP_MASTER)\"}}}";
    const auto part = ConfigurationPart::Commands;
    expectSteps({
        {clearStep({"AP", false, "PRESS", "DEFAULT"}), part, entry + "\n ", "\n "},
        {clearStep({"AP", false, "PRESS", "PFD"}), part, entry, entry},
        {clearStep({"HDG", false, "PRESS", "PFD"}), part, entry, entry},
    });
}

TEST(ConfigurationDraft, KeepsAnEntryWithKeysOfItsOwn) {
    ConfigurationTexts texts = smallTexts;
    texts[ConfigurationPart::Commands] =
        R"({"buttons": [{"name": "AP", "note": "x", "commands": {"PRESS": {"PFD": "a"}, "HOLD": {}}}]})";
    ConfigurationDraft draft(draftPaths, texts);
    std::string error;
    EXPECT_TRUE(draft.clearCommand({"AP", false, "PRESS", "PFD"}, error));
    EXPECT_EQ(draft.texts()[ConfigurationPart::Commands],
              R"({"buttons": [{"name": "AP", "note": "x", "commands": {"HOLD": {}}}]})");
}

TEST(ConfigurationDraft, ChangesSettings) {
    const auto part = ConfigurationPart::Settings;
    expectSteps({
        {roleStep("e66138", "MFD"), part, "\"PFD\"", "\"MFD\""},
        {roleStep("E66138", ""), part, R"("role": "PFD", "mine")", "\"mine\""},
        {roleStep("E7", "MFD"), part, "\"mine\": 1}", R"("mine": 1}, {"boardId": "E7", "role": "MFD"})"},
        {roleStep("E7", ""), part, "\"mine\": 1}", "\"mine\": 1}"},
        {[](ConfigurationDraft& draft, std::string& error) { return draft.setUsbIds("1234", "27DB", error); }, part,
         "16C0", "1234"},
        {[](ConfigurationDraft& draft, std::string& error) {
             return draft.setProfileValue("dim", "backlight", "max", "40", error);
         },
         part, "\"mine\": 1}]",
         "\"mine\": 1}],\n \"outputs\": {\"profiles\": {\"DIM\": {\"backlight\": {\"max\": 40}}}}"},
    });
}

TEST(ConfigurationDraft, RefusesToChangeWhatIsInTheWay) {
    ConfigurationTexts texts = smallTexts;
    texts[ConfigurationPart::Commands] = R"({"buttons": 5})";
    ConfigurationDraft draft(draftPaths, texts);
    std::string error;
    EXPECT_FALSE(draft.setCommand({"AP", false, "PRESS", "PFD"}, "x", error));
    EXPECT_NE(error.find(draftPaths[ConfigurationPart::Commands] + " can't take this change"), std::string::npos);
    EXPECT_FALSE(draft.canUndo());
    texts[ConfigurationPart::Commands] = "[";
    ConfigurationDraft broken(draftPaths, texts);
    EXPECT_FALSE(broken.nameControl(22, "MASTER", error));
    EXPECT_EQ(broken.texts().values, texts.values);
    EXPECT_FALSE(broken.canUndo());
}

TEST(ConfigurationDraft, TakesStepsBack) {
    ConfigurationDraft draft(draftPaths, smallTexts);
    std::string error;
    draft.nameControl(7, "HDG", error);
    const ConfigurationTexts afterFirst = draft.texts();
    draft.setUsbIds("1", "2", error);
    draft.setUsbIds("1", "2", error);
    draft.undo();
    EXPECT_EQ(draft.texts().values, afterFirst.values);
    draft.undo();
    EXPECT_EQ(draft.texts().values, smallTexts.values);
    EXPECT_FALSE(draft.canUndo());
    draft.undo();
    EXPECT_EQ(draft.texts().values, smallTexts.values);
}

TEST(ConfigurationDraft, IsJudgedWithoutFiles) {
    ConfigurationDraft draft(draftPaths, smallTexts);
    EXPECT_TRUE(draft.verdict().bridgeStarts);
    EXPECT_EQ(draft.verdict().findings.size(), 1U); // The key "mine".
    std::string error;
    draft.setUsbIds("xyz", "1", error);
    EXPECT_FALSE(draft.verdict().bridgeStarts);
}

TEST(ConfigurationDraft, OfANewConfigurationStartsTheBridgeOnceAControlHasACommand) {
    for (const ConfigurationTexts& begin : {sampleTexts(), emptyTexts()}) {
        ConfigurationDraft draft(draftPaths, begin);
        std::string error;
        EXPECT_TRUE(draft.nameControl(203, "MY_BUTTON", error)) << error;
        EXPECT_TRUE(draft.setCommand({"MY_BUTTON", false, "PRESS", "DEFAULT"}, "(>K:AP_MASTER)", error)) << error;
        EXPECT_TRUE(draft.verdict().bridgeStarts) << draft.verdict().refusal;
        EXPECT_EQ(draft.verdict().findings.size(), 0U);
    }
    EXPECT_EQ(sampleControlNames().at(91), "HDG");
}
