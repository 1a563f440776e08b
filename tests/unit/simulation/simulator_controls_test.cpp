#include "simulation/simulator/simulator_controls.h"

#include "platform/file_system.h"
#include "tests/unit/simulation/simulator_client.h"

#include <cctype>
#include <set>

namespace {

using Kind = SimulatorRecordKind;
using Texts = std::vector<std::string>;

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

class SimulatorControlsTest : public testing::Test {
protected:
    void control(std::string_view line) {
        std::string error;
        const auto request = readSimulatorRequest(line, error);
        ASSERT_TRUE(request) << error;
        request->action(simulator);
    }

    RunningSimulator simulator;
};

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

TEST(SimulatorControls, WrongArgumentsAreAnsweredWithTheUsage) {
    struct Case {
        const char* word;
        Texts arguments;
    };
    const Case cases[] = {
        {"battery", {"", "maybe", "on off"}},
        {"refuse", {"1"}},
        {"quit", {"now"}},
        {"text", {"", " "}},
        {"light", {"", "1x"}},
        {"lvar", {"", "X", "X y", "X 1 2"}},
        {"avar", {"", "1", "X y"}},
        {"late", {"-1", "nan", "1e99"}},
        {"protocols", {"", "5", "6 5", "1 4", "4 7", "4 5.5"}},
        {"module", {"", "begin", "start now", "answers", "answers same"}},
        {"raw", {"", "0", "0 0"}},
    };
    for (const Case& one : cases) {
        for (const std::string& argument : one.arguments) {
            std::string error;
            EXPECT_FALSE(readSimulatorRequest(std::string(one.word) + ' ' + argument, error)) << one.word << argument;
            EXPECT_EQ(error, "Usage: " + findSimulatorControl(one.word)->usage());
        }
    }
}

TEST(SimulatorControls, ScenariosPageHasTheTable) {
    std::string page;
    ASSERT_TRUE(FileSystem::readFile(SCENARIOS_PAGE, page));
    std::erase(page, '\r');
    EXPECT_NE(page.find("\n" + documentedRows() + "\n"), std::string::npos) << "docs/scenarios.md needs this table:\n"
                                                                            << documentedRows();
}

// The scenarios show the other controls at work.
TEST_F(SimulatorControlsTest, CarryOutWhatNoScenarioShows) {
    control("late 100");
    const auto begin = std::chrono::steady_clock::now();
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
    control("stall on");
    client.command("MF.DummyCmd");
    EXPECT_FALSE(simulator.waitForKind(Kind::Dummy, 1, std::chrono::milliseconds(20)));
    control("stall off");
    EXPECT_TRUE(simulator.waitForKind(Kind::Dummy));
    control("raw 0c000000 04 00 00 00 03000000");
    EXPECT_TRUE(client.waitFor(simConnectRecvQuit));
    control("module stop");
    EXPECT_FALSE(simulator.moduleRunning());
}
