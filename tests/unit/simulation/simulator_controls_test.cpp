#include "simulation/simulator/simulator_controls.h"

#include "platform/file_system.h"

#include <gtest/gtest.h>

#include <cctype>
#include <set>

namespace {

/// The rows of docs/scenarios.md that the table makes.
std::string documentedRows() {
    std::string rows = "| Control | What it does |\n|---|---|\n";
    for (const SimulatorControl& control : simulatorControls()) {
        rows += "| `> sim ";
        for (const char letter : control.usage()) {
            rows += letter == '|' ? "\\|" : std::string(1, letter);
        }
        std::string help(control.help);
        help[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(help[0])));
        rows += "` | " + help + " |\n";
    }
    return rows;
}

} // namespace

TEST(SimulatorControls, EachWordIsThereOnce) {
    std::set<std::string_view> words;
    for (const SimulatorControl& control : simulatorControls()) {
        EXPECT_TRUE(words.insert(control.word).second) << control.word;
        EXPECT_EQ(findSimulatorControl(control.word), &control);
    }
    EXPECT_EQ(findSimulatorControl("batery"), nullptr);
    EXPECT_EQ(findSimulatorControl(""), nullptr);
}

TEST(SimulatorControls, LineIsReadWithItsBlanks) {
    std::string error;
    const auto request = readSimulatorRequest("  avar \t LIGHT POTENTIOMETER:3  1 \r", error);
    ASSERT_TRUE(request) << error;
    EXPECT_EQ(request->control->word, "avar");
    EXPECT_EQ(request->argument, "LIGHT POTENTIOMETER:3  1");
    EXPECT_FALSE(readSimulatorRequest("", error));
    EXPECT_EQ(error, "Unknown command: ");
}

TEST(SimulatorControls, ScenariosPageHasTheTable) {
    std::string page;
    ASSERT_TRUE(FileSystem::readFile(SCENARIOS_PAGE, page));
    std::erase(page, '\r');
    EXPECT_NE(page.find("\n" + documentedRows() + "\n"), std::string::npos) << "docs/scenarios.md needs this table:\n"
                                                                            << documentedRows();
}
