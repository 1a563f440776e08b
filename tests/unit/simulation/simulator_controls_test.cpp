#include "simulation/simulator/simulator_controls.h"

#include "platform/file_system.h"
#include "tests/unit/simulation/simulator_client.h"

#include <cctype>
#include <set>

namespace {

using Kind = SimulatorRecordKind;
using Texts = std::vector<std::string>;
using Words = std::vector<std::uint32_t>;

constexpr std::uint32_t plusOne = 0x3F800000;
constexpr std::uint32_t minusOneHalf = 0xBF000000;

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
    bool accepts() { return SimulatorClient(simulator).openResult() == simConnectOk; }

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
    for (const char* line : {"battery", "battery maybe", "battery on off", "refuse 1", "hangup", "trickle"}) {
        std::string error;
        EXPECT_FALSE(readSimulatorRequest(line, error)) << line;
        EXPECT_TRUE(error.starts_with("Usage: ") && error.ends_with(" on|off")) << error;
    }
    for (const char* line : {"lvar",
                             "lvar X",
                             "lvar X y",
                             "lvar X 1 2",
                             "light",
                             "light 1x",
                             "late -1",
                             "late nan",
                             "late 1e99",
                             "protocols",
                             "protocols 5",
                             "protocols 6 5",
                             "protocols 1 4",
                             "protocols 4 7",
                             "protocols 4 5.5",
                             "text",
                             "respond ",
                             "quit now",
                             "drop 1",
                             "avar",
                             "avar 1",
                             "avar X y",
                             "other-client",
                             "module",
                             "module begin",
                             "module start now",
                             "module answers",
                             "module answers same",
                             "raw",
                             "raw 0",
                             "raw 0 0",
                             "start now"}) {
        std::string error;
        EXPECT_FALSE(readSimulatorRequest(line, error)) << line;
        EXPECT_TRUE(error.starts_with("Usage: ")) << error;
    }
}

TEST(SimulatorControls, ScenariosPageHasTheTable) {
    std::string page;
    ASSERT_TRUE(FileSystem::readFile(SCENARIOS_PAGE, page));
    std::erase(page, '\r');
    EXPECT_NE(page.find("\n" + documentedRows() + "\n"), std::string::npos) << "docs/scenarios.md needs this table:\n"
                                                                            << documentedRows();
}

TEST_F(SimulatorControlsTest, SetVariablesAndTexts) {
    SimulatorClient client(simulator);
    client.attach();
    SimConnect_AddToDataDefinition(client.get(), 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 0, 3, 1, 0, 0, 0);
    Texts commands;
    for (const char* variable :
         {"(L:LIGHTING_POTENTIOMETER_5)", "(L:X)", "(A:LIGHT POTENTIOMETER:3, percent over 100)", "(A:TITLE)"}) {
        commands.push_back(std::string("MF.SimVars.Add.").append(variable));
        control("other-client " + commands.back());
    }
    EXPECT_EQ(simulator.texts(Kind::Command), commands);
    ASSERT_TRUE(client.settle());
    for (const char* line : {"battery on", "battery off", "light 1", "lvar X -0.5", "avar  LIGHT POTENTIOMETER:3  1 ",
                             "avar TITLE -0.5"}) {
        control(line);
    }
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(1), (Words{0, 1, 0}));
    Words values;
    for (std::size_t offset = 0; offset < 16; offset += 4) {
        values.push_back(client.wordsOf(SimulatorClient::lvarsRequest, offset).back());
    }
    EXPECT_EQ(values, (Words{plusOne, minusOneHalf, plusOne, minusOneHalf}));
    control("text  two  words ");
    control("respond MF.Clients.Add.X.Error");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.textsOf(SimulatorClient::lvarsRequest).back(), "two  words");
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest).back(), "MF.Clients.Add.X.Error");
}

TEST_F(SimulatorControlsTest, StopStartAndVaryTheModule) {
    control("module stop");
    EXPECT_FALSE(simulator.moduleRunning());
    control("module start");
    EXPECT_TRUE(simulator.moduleRunning());
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.settle());
    const auto pongs = [&] {
        simulator.pingModule();
        simulator.sendAsOtherClient("MF.DummyCmd");
        EXPECT_TRUE(client.settle());
        return client.textsOf(SimulatorClient::responseRequest).size();
    };
    control("module answers different");
    EXPECT_EQ(pongs(), 1U);
    EXPECT_EQ(pongs(), 2U);
    control("module answers equal");
    EXPECT_EQ(pongs(), 3U);
    EXPECT_EQ(pongs(), 3U);
    control("module answers measured");
}

TEST_F(SimulatorControlsTest, EndSessionsAndStartTheSimulatorAgain) {
    struct Case {
        const char* line;
        bool saysQuit;
        bool keepsRunning;
    };
    for (const Case& one :
         {Case{"quit", true, false}, Case{"die", false, false}, Case{"drop", false, true}, Case{"cut", false, true}}) {
        SCOPED_TRACE(one.line);
        SimulatorClient client(simulator);
        ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
        control(one.line);
        EXPECT_TRUE(client.waitForLoss());
        EXPECT_EQ(client.messagesOf(simConnectRecvQuit).size(), one.saysQuit ? 1U : 0U);
        EXPECT_EQ(accepts(), one.keepsRunning);
        control("start");
        EXPECT_TRUE(accepts());
    }
}

TEST_F(SimulatorControlsTest, DecideWhoseSessionsAreAccepted) {
    struct Case {
        const char* line;
        bool accepted;
    };
    for (const Case& one : {Case{"protocols 2 3", false}, Case{"protocols 6 6", true}, Case{"hangup on", false},
                            Case{"hangup off", true}, Case{"refuse on", false}, Case{"refuse off", true}}) {
        control(one.line);
        EXPECT_EQ(accepts(), one.accepted) << one.line;
    }
}

TEST_F(SimulatorControlsTest, ChangeHowClientsAreTreated) {
    control("trickle on");
    control("late 100");
    const auto begin = std::chrono::steady_clock::now();
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
    control("error on");
    client.command("MF.Clients.Add.X");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest).back(), "MF.Clients.Add.X.Error");
    control("silent on");
    client.command("MF.Ping");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest).size(), 1U);
    control("stall on");
    client.command("MF.DummyCmd");
    EXPECT_FALSE(simulator.waitForKind(Kind::Dummy, 1, std::chrono::milliseconds(20)));
    control("stall off");
    EXPECT_TRUE(simulator.waitForKind(Kind::Dummy));
    control("raw 0c000000 04 00 00 00 03000000");
    EXPECT_TRUE(client.waitFor(simConnectRecvQuit));
}
