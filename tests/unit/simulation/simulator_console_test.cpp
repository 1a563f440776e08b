#include "simulation/simulator/simulator_console.h"

#include "simulation/simulator/simulator_controls.h"
#include "tests/unit/simulation/simulator_client.h"

namespace {

using Kind = SimulatorRecordKind;

} // namespace

TEST(SimulatorConsole, CarriesOutControlsAndLeavesHelpAndExitToTheProgram) {
    struct Case {
        const char* line;
        ConsoleOutcome outcome;
        const char* error;
    };
    const Case cases[] = {
        {"", ConsoleOutcome::Done, ""},
        {" \t\r", ConsoleOutcome::Done, ""},
        {" module\tstop\r", ConsoleOutcome::Done, ""},
        {"help", ConsoleOutcome::Help, ""},
        {" exit ", ConsoleOutcome::Exit, ""},
        {"batery on", ConsoleOutcome::BadCommand, "Unknown command: batery"},
        {"battery maybe", ConsoleOutcome::BadCommand, "Usage: battery on|off"},
        // Only a rig has a list of processes to change.
        {"vanish", ConsoleOutcome::BadCommand, "Unknown command: vanish"},
    };
    RunningSimulator simulator;
    for (const Case& one : cases) {
        std::string error;
        EXPECT_EQ(runConsoleCommand(simulator, one.line, error), one.outcome) << one.line;
        EXPECT_EQ(error, one.error);
    }
    EXPECT_FALSE(simulator.moduleRunning());
}

TEST(SimulatorConsole, HelpNamesEveryCommandOfThisProgram) {
    const std::string help = consoleHelp();
    const auto names = [&help](std::string_view word) {
        return help.find("  " + std::string(word) + " ") != std::string::npos;
    };
    for (const SimulatorControl& control : simulatorControls()) {
        EXPECT_EQ(names(control.word), control.word != "vanish") << control.word;
    }
    EXPECT_TRUE(names("help"));
    EXPECT_TRUE(names("exit"));
}

TEST(SimulatorJson, EachKindOfRecordHasItsNameAndMembers) {
    struct Case {
        Kind kind;
        const char* json;
    };
    const Case cases[] = {
        {Kind::Connected, R"({"kind":"connected","time":1.500000,"session":2})"},
        {Kind::Opened, R"({"kind":"opened","time":1.500000,"session":2,"text":"words","value":7})"},
        {Kind::Closed, R"({"kind":"closed","time":1.500000,"session":2})"},
        {Kind::Subscribed, R"({"kind":"subscribed","time":1.500000,"session":2,"text":"words","value":7})"},
        {Kind::ClientEvent, R"({"kind":"client-event","time":1.500000,"session":2,"text":"words","value":7})"},
        {Kind::Executed, R"({"kind":"executed","time":1.500000,"session":2,"text":"words"})"},
        {Kind::Dummy, R"({"kind":"dummy","time":1.500000,"session":2})"},
        {Kind::Command, R"({"kind":"command","time":1.500000,"session":2,"text":"words"})"},
        {Kind::Unchanged, R"({"kind":"unchanged","time":1.500000,"session":2,"text":"words"})"},
        {Kind::Exception, R"({"kind":"exception","time":1.500000,"session":2,"value":7,"sendId":8,"index":9})"},
    };
    const auto start = std::chrono::steady_clock::time_point{};
    for (const Case& one : cases) {
        EXPECT_EQ(recordAsJson({one.kind, start + std::chrono::milliseconds(1500), 2, "words", 7, 8, 9}, start),
                  one.json);
    }
}

TEST(SimulatorJson, TextIsEscaped) {
    EXPECT_EQ(noticeAsJson("error", "a\"b\\c\n\x01\xE9"), R"({"kind":"error","text":"a\"b\\c\u000a\u0001\u00e9"})");
}

TEST(SimulatorJson, ListeningNamesThePortOrThePipe) {
    EXPECT_EQ(listeningAsJson({"127.0.0.1", 500, AddressFamily::Ipv4}), R"({"kind":"listening","port":500})");
    EXPECT_EQ(listeningAsJson({".", 0, AddressFamily::Any, R"(Custom\Pipe)"}),
              R"({"kind":"listening","pipe":"Custom\\Pipe"})");
}
