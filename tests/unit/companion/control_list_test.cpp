#include "companion/draft/control_list.h"

#include <gtest/gtest.h>

TEST(ControlList, HasTheNamedControlsWithTheirCommands) {
    ConfigurationTexts texts;
    texts[ConfigurationPart::EventMap] =
        R"({"event_types": {"B": 1}, "control_ids": {"Hdg": 91, "AP": 5, "CRS": 95, "CLR": 45}})";
    texts[ConfigurationPart::Commands] = R"({
 "buttons": [{"name": "ap", "commands": {"press": {"default": "a", "pfd": 1, "Mfd": "b"}}},
             {"name": "AP", "commands": {"PRESS": {"DEFAULT": "c"}, "HOLD": {"PFD": "d"}}},
             {"name": "CRS", "commands": {"CW_FAST": {"PFD": "e"}}}, 5, {"name": "UNKNOWN"}],
 "knobs": [{"name": "HDG"}]})";
    const std::vector<ListedControl> expected{
        {5, "AP", false, {{"PRESS", "DEFAULT", "c"}, {"PRESS", "MFD", "b"}, {"HOLD", "PFD", "d"}}},
        {45, "CLR", false, {}},
        {91, "Hdg", true, {}},
        {95, "CRS", true, {{"CW_FAST", "PFD", "e"}}},
    };
    EXPECT_TRUE(listControls(texts) == expected);
}

TEST(ControlList, IsEmptyWithoutUsableFiles) {
    EXPECT_TRUE(listControls({{"", "{", "["}}).empty());
}
