// The setup page of vantrel.exe, from no configuration to a bridge that runs with it.

#include "config/button_config.h"
#include "tests/windows/served_page.h"

TEST(SetupOnWindows, MakesAConfigurationAndRunsTheBridgeWithIt) {
    const TempFolder folder;
    const std::filesystem::path home = FileSystem::fromBytes(folder.path()) / worldWideName;
    std::filesystem::create_directory(home);
    const std::filesystem::path config = home / "new/config.json";
    ServedPage page(L"setup --virtual-boards 1 --config \"" + config.wstring() + L'"');
    ASSERT_TRUE(page.isUp()) << page.printed();
    // Each step with what is waited for before it.
    const std::vector<std::pair<std::string, std::string>> steps{
        {"virtual-1", R"({"do": "turn", "board": "virtual-1", "control": 91, "detents": 1})"},
        {"clockwise 1", R"({"do": "name", "control": 91, "name": "HDG"})"},
        {"", R"~({"do": "assign", "control": "HDG", "knob": true, "action": "CW", "role": "DEFAULT",
                  "command": "(>K:HEADING_BUG_INC)"})~"},
        {"is ready", R"~({"do": "try", "command": "(>K:HEADING_BUG_INC)"})~"},
        {"\"text\":\"1 (>K:HEADING_BUG_INC)\"", R"({"do": "save"})"},
        {"", R"({"do": "startBridge"})"},
        {"HID manager started", R"({"do": "endBridge"})"},
        {"Stop requested from console", ""},
    };
    std::size_t next = 0;
    page.listen([&](const std::string& received) {
        while (next < steps.size() && received.find(steps[next].first) != std::string::npos) {
            const std::string& action = steps[next].second;
            ++next;
            EXPECT_EQ(action.empty() ? "" : page.act(action), "") << action;
            if (action.empty()) {
                SurvivingControlC::press();
            }
        }
    });
    EXPECT_EQ(next, steps.size());
    EXPECT_EQ(page.exitCode(), 0U);
    std::filesystem::copy_file(home / "new/buttons.json", folder.path("buttons.json"));
    ButtonConfig buttons;
    std::string error;
    EXPECT_TRUE(buttons.load(folder.path("buttons.json"), error)) << error;
    EXPECT_EQ(buttons.lookup("HDG", "CW", "PFD"), "(>K:HEADING_BUG_INC)");
}
