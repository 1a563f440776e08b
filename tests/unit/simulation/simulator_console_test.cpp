#include "simulation/simulator/simulator_console.h"

#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;
using Words = std::vector<std::uint32_t>;

class SimulatorConsole : public testing::Test {
protected:
    ConsoleOutcome run(std::string_view line) {
        error.clear();
        return runConsoleCommand(simulator, line, error);
    }

    RunningSimulator simulator;
    std::string error;
};

TEST_F(SimulatorConsole, SwitchesTheBattery) {
    SimulatorClient client(simulator);
    SimConnect_AddToDataDefinition(client.get(), 1, "ELECTRICAL MASTER BATTERY:2", "Bool", 1, 0, 0);
    SimConnect_RequestDataOnSimObject(client.get(), 1, 1, 0, 3, 1, 0, 0, 0);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(run("battery on"), ConsoleOutcome::Done);
    EXPECT_EQ(run("  battery\toff\r"), ConsoleOutcome::Done);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(1), (Words{0, 1, 0}));
}

TEST_F(SimulatorConsole, SetsVariablesAndTexts) {
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)");
    client.command("MF.SimVars.Add.(L:X)");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(run("light 1"), ConsoleOutcome::Done);
    EXPECT_EQ(run("lvar X -0.5"), ConsoleOutcome::Done);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(SimulatorClient::lvarsRequest, 0), (Words{0x3F800000, 0x3F800000}));
    EXPECT_EQ(client.wordsOf(SimulatorClient::lvarsRequest, 4), (Words{0, 0xBF000000}));
    EXPECT_EQ(run("text  two  words "), ConsoleOutcome::Done);
    EXPECT_EQ(run("respond MF.Clients.Add.X.Error"), ConsoleOutcome::Done);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.textsOf(SimulatorClient::lvarsRequest).back(), "two  words");
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest).back(), "MF.Clients.Add.X.Error");
}

TEST_F(SimulatorConsole, SetsVariablesOfTheAircraft) {
    SimulatorClient client(simulator);
    client.attach();
    client.command("MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)");
    client.command("MF.SimVars.Add.(A:TITLE)");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(run("avar  LIGHT POTENTIOMETER:3  1 "), ConsoleOutcome::Done);
    EXPECT_EQ(run("avar TITLE -0.5"), ConsoleOutcome::Done);
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.wordsOf(SimulatorClient::lvarsRequest, 0), (Words{0x3F800000, 0x3F800000}));
    EXPECT_EQ(client.wordsOf(SimulatorClient::lvarsRequest, 4), (Words{0, 0xBF000000}));
}

TEST_F(SimulatorConsole, PlaysAnotherProgram) {
    EXPECT_EQ(run("other-client MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3)"), ConsoleOutcome::Done);
    EXPECT_EQ(simulator.texts(Kind::Command), (std::vector<std::string>{"MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3)"}));
}

TEST_F(SimulatorConsole, StopsAndStartsTheModuleAndVariesItsAnswers) {
    EXPECT_EQ(run("module stop"), ConsoleOutcome::Done);
    EXPECT_FALSE(simulator.moduleRunning());
    EXPECT_EQ(run("module start"), ConsoleOutcome::Done);
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
    EXPECT_EQ(run("module answers different"), ConsoleOutcome::Done);
    EXPECT_EQ(pongs(), 1U);
    EXPECT_EQ(pongs(), 2U);
    EXPECT_EQ(run("module answers equal"), ConsoleOutcome::Done);
    EXPECT_EQ(pongs(), 3U);
    EXPECT_EQ(pongs(), 3U);
    EXPECT_EQ(run("module answers measured"), ConsoleOutcome::Done);
}

TEST_F(SimulatorConsole, EndsTheSimulatorAndStartsItAgain) {
    for (const char* line : {"quit", "die"}) {
        SimulatorClient client(simulator);
        ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
        EXPECT_EQ(run(line), ConsoleOutcome::Done);
        EXPECT_TRUE(client.waitForLoss());
        EXPECT_EQ(client.messagesOf(simConnectRecvQuit).size(), std::string_view(line) == "quit" ? 1U : 0U);
        EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
        EXPECT_EQ(run(std::string_view(line) == "quit" ? "refuse off" : "start"), ConsoleOutcome::Done);
    }
    SimulatorClient client(simulator);
    EXPECT_TRUE(client.waitFor(simConnectRecvOpen));
}

TEST_F(SimulatorConsole, DropsAndCutsSessions) {
    for (const char* line : {"drop", "cut"}) {
        SimulatorClient client(simulator);
        ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
        EXPECT_EQ(run(line), ConsoleOutcome::Done);
        EXPECT_TRUE(client.waitForLoss());
    }
    EXPECT_EQ(run("refuse on"), ConsoleOutcome::Done);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
}

TEST_F(SimulatorConsole, ChoosesWhoseSessionsItTakes) {
    EXPECT_EQ(run("protocols 2 3"), ConsoleOutcome::Done);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    EXPECT_EQ(run("protocols 6 6"), ConsoleOutcome::Done);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectOk);
    EXPECT_EQ(run("hangup on"), ConsoleOutcome::Done);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectFail);
    EXPECT_EQ(run("hangup off"), ConsoleOutcome::Done);
    EXPECT_EQ(SimulatorClient(simulator).openResult(), simConnectOk);
}

TEST_F(SimulatorConsole, ChangesHowTheSimulatorTreatsItsClients) {
    EXPECT_EQ(run("late 100"), ConsoleOutcome::Done);
    const auto begin = std::chrono::steady_clock::now();
    SimulatorClient client(simulator);
    client.attach();
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
    EXPECT_EQ(run("error on"), ConsoleOutcome::Done);
    client.command("MF.Clients.Add.X");
    ASSERT_TRUE(client.waitFor(simConnectRecvClientData));
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest).back(), "MF.Clients.Add.X.Error");
    EXPECT_EQ(run("silent on"), ConsoleOutcome::Done);
    client.command("MF.Ping");
    ASSERT_TRUE(client.settle());
    EXPECT_EQ(client.textsOf(SimulatorClient::responseRequest).size(), 1U);
    EXPECT_EQ(run("stall on"), ConsoleOutcome::Done);
    client.command("MF.DummyCmd");
    EXPECT_FALSE(simulator.waitForKind(Kind::Dummy, 1, std::chrono::milliseconds(20)));
    EXPECT_EQ(run("stall off"), ConsoleOutcome::Done);
    EXPECT_TRUE(simulator.waitForKind(Kind::Dummy));
}

TEST_F(SimulatorConsole, EmptyLineDoesNothing) {
    EXPECT_EQ(run(""), ConsoleOutcome::Done);
    EXPECT_EQ(run(" \t\r"), ConsoleOutcome::Done);
}

TEST_F(SimulatorConsole, HelpAndExitAreTheProgramsAffair) {
    EXPECT_EQ(run("help"), ConsoleOutcome::Help);
    EXPECT_EQ(run(" exit "), ConsoleOutcome::Exit);
}

TEST_F(SimulatorConsole, UnknownCommandIsTold) {
    EXPECT_EQ(run("batery on"), ConsoleOutcome::BadCommand);
    EXPECT_EQ(error, "Unknown command: batery");
}

TEST_F(SimulatorConsole, ControlOfAListOfProcessesIsUnknown) {
    EXPECT_EQ(run("vanish"), ConsoleOutcome::BadCommand);
    EXPECT_EQ(error, "Unknown command: vanish");
    EXPECT_EQ(consoleHelp().find("vanish"), std::string::npos);
}

TEST_F(SimulatorConsole, SendsBytesAsTheyAreGiven) {
    SimulatorClient client(simulator);
    ASSERT_TRUE(client.waitFor(simConnectRecvOpen));
    EXPECT_EQ(run("trickle on"), ConsoleOutcome::Done);
    EXPECT_EQ(run("raw 0c000000 04 00 00 00 03000000"), ConsoleOutcome::Done);
    EXPECT_TRUE(client.waitFor(simConnectRecvQuit));
}

TEST_F(SimulatorConsole, WrongArgumentsTellTheUsage) {
    for (const char* line : {"battery", "battery maybe", "battery on off", "refuse 1"}) {
        EXPECT_EQ(run(line), ConsoleOutcome::BadCommand) << line;
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
                             "hangup",
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
                             "trickle",
                             "start now"}) {
        EXPECT_EQ(run(line), ConsoleOutcome::BadCommand) << line;
        EXPECT_TRUE(error.starts_with("Usage: ")) << error;
    }
}

TEST_F(SimulatorConsole, HelpNamesEveryCommand) {
    const std::string help = consoleHelp();
    for (const char* name : {"battery",   "lvar",   "light", "avar",  "text",    "respond", "other-client", "start",
                             "quit",      "die",    "drop",  "cut",   "refuse",  "hangup",  "late",         "module",
                             "protocols", "silent", "error", "stall", "trickle", "raw",     "help",         "exit"}) {
        EXPECT_NE(help.find("  " + std::string(name) + " "), std::string::npos) << name;
    }
}

TEST(SimulatorJson, RecordHasWhatItsKindHas) {
    const auto start = std::chrono::steady_clock::time_point{};
    const auto time = start + std::chrono::milliseconds(1500);
    EXPECT_EQ(recordAsJson({Kind::Opened, time, 2, "Vantrel", 4, 0, 0}, start),
              R"({"kind":"opened","time":1.500000,"session":2,"text":"Vantrel","value":4})");
    EXPECT_EQ(recordAsJson({Kind::Closed, time, 2, "", 0, 0, 0}, start),
              R"({"kind":"closed","time":1.500000,"session":2})");
    EXPECT_EQ(recordAsJson({Kind::Exception, time, 2, "", 7, 8, 9}, start),
              R"({"kind":"exception","time":1.500000,"session":2,"value":7,"sendId":8,"index":9})");
    EXPECT_EQ(recordAsJson({Kind::Executed, time, 2, "1 (>K:X) 2", 0, 0, 0}, start),
              R"({"kind":"executed","time":1.500000,"session":2,"text":"1 (>K:X) 2"})");
    EXPECT_EQ(recordAsJson({Kind::Dummy, time, 2, "MF.DummyCmd", 0, 0, 0}, start),
              R"({"kind":"dummy","time":1.500000,"session":2})");
    EXPECT_EQ(recordAsJson({Kind::ClientEvent, time, 2, "BEACON", 3, 0, 0}, start),
              R"({"kind":"client-event","time":1.500000,"session":2,"text":"BEACON","value":3})");
}

TEST(SimulatorJson, TextIsEscaped) {
    EXPECT_EQ(noticeAsJson("error", "a\"b\\c\n\x01\xE9"), R"({"kind":"error","text":"a\"b\\c\u000a\u0001\u00e9"})");
}

TEST(SimulatorJson, EveryKindHasAName) {
    std::vector<std::string_view> names;
    for (const Kind kind : {Kind::Connected, Kind::Opened, Kind::Closed, Kind::Subscribed, Kind::ClientEvent,
                            Kind::Executed, Kind::Dummy, Kind::Command, Kind::Unchanged, Kind::Exception}) {
        names.push_back(simulatorRecordKindName(kind));
    }
    EXPECT_EQ(names, (std::vector<std::string_view>{"connected", "opened", "closed", "subscribed", "client-event",
                                                    "executed", "dummy", "command", "unchanged", "exception"}));
}

} // namespace
