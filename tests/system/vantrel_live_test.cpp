// The companion program's commands that follow boards and try things out, beside a bridge that runs.

#include "platform/file_system.h"
#include "tests/system/support/bridge_test.h"

#include <algorithm>
#include <csignal>

namespace {

class VantrelLive : public BridgeTest {
protected:
    /// Starts the program beside the bridge's executable and its configuration.
    std::unique_ptr<ChildProcess> start(const std::vector<std::string>& arguments) const {
        const std::string program = installation->path(TestedSystem::isWindows() ? "vantrel.exe" : "vantrel");
        if (!FileSystem::existsOrFalse(program)) {
            installProgram(TestedSystem::vantrel(), program);
        }
        return std::make_unique<ChildProcess>(
            ChildProcessSettings{.command = TestedSystem::command(program, arguments),
                                 .environment = {"HOME=" + installation->path("home")}});
    }

    /// Runs it to its end and gives what it has printed.
    std::string run(const std::vector<std::string>& arguments) const {
        const auto vantrel = start(arguments);
        EXPECT_EQ(vantrel->waitForExit(), 0) << vantrel->errorOutput();
        std::string output = vantrel->output();
        std::erase(output, '\r');
        return output;
    }

    static bool shows(ChildProcess& vantrel, const std::string& text, std::size_t count = 1) {
        return vantrel.waitForOutput([&](const std::string& output) { return countOf(output, text) >= count; });
    }

    static bool received(const UhidBoard& board, const std::vector<std::uint8_t>& report) {
        const auto all = reports(board, report.front());
        return std::ranges::find(all, report) != all.end();
    }
};

class LinuxVantrelLive : public VantrelLive {};

class WindowsVantrelLive : public VantrelLive {};

const std::string pressLine = "PFD  BUTTON (20) press: sends (>H:BUTTON_PRESS)";

} // namespace

TEST_F(VantrelLive, WatchAndTheBridgeBothSeeEveryPress) {
    constexpr std::size_t presses = 30;
    startSession();
    UhidBoard& board = *boards.front();
    const auto watch = start({"watch", "--raw"});
    ASSERT_TRUE(shows(*watch, "board " + nameOf(board) + " is there")) << watch->errorOutput();
    for (std::size_t i = 0; i < presses; ++i) {
        board.panel.press(commandButton);
    }
    EXPECT_TRUE(shows(*watch, nameOf(board) + "  " + pressLine, presses)) << watch->output();
    EXPECT_TRUE(shows(*watch, "0100010014000100", presses));
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, buttonCommand, presses));
    EXPECT_EQ(countOf(watch->output(), pressLine), presses);

    board.unplug();
    EXPECT_TRUE(shows(*watch, "board " + nameOf(board) + " has gone"));
    board.plug();
    EXPECT_TRUE(shows(*watch, "board " + nameOf(board) + " is there", 2));
    ASSERT_TRUE(waitForConnection(board, 1));
    board.panel.press(commandButton);
    EXPECT_TRUE(shows(*watch, pressLine, presses + 1));
}

TEST_F(VantrelLive, LightReachesTheBoardBesideTheBridge) {
    startSession();
    const UhidBoard& board = *boards.front();
    run({"light", nameOf(board), "steady", "33"});
    EXPECT_TRUE(waitUntil([&] { return received(board, reportOf({0x10, 1, 33})); }));
}

TEST_F(VantrelLive, SendAndValueLeaveTheBridgesLightAlone) {
    extensions = R"("lvarNumbers": 1)";
    startSession();
    simulator->command("lvar FUEL 5.5");
    EXPECT_EQ(run({"value", "(L:FUEL)", "--timeout", "60"}), "5.5\n");
    EXPECT_EQ(run({"send", "7 (>L:FUEL)", "--timeout", "60"}), "Sent, and taken by the module: 7 (>L:FUEL)\n");
    EXPECT_TRUE(simulator->waitFor(SimulatorRecordKind::Executed, "1 7 (>L:FUEL)"));
    // The shared variables are still the bridge's own.
    simulator->command("battery on");
    simulator->command("light 0.4");
    EXPECT_TRUE(waitForReport(*boards.front(), reportOf({0x10, 1, 40})));
    EXPECT_TRUE(pressWorks(*boards.front()));
}

TEST_F(LinuxVantrelLive, RecordEndsInOrderAndIsReplayed) {
    plugBoard(model());
    startBridge();
    ASSERT_TRUE(waitForConnection(*boards.front(), 0));
    const std::string file = installation->path("a.scenario");
    const auto record = start({"record", file});
    std::string text;
    const auto holds = [&](const std::string& part) {
        return waitUntil([&] { return FileSystem::readFile(file, text) && text.find(part) != std::string::npos; });
    };
    ASSERT_TRUE(holds("> plug board1\n")) << record->errorOutput();
    boards.front()->panel.press(commandButton);
    boards.front()->panel.release(commandButton);
    EXPECT_TRUE(holds("> board1 press BUTTON\n")) << text;
    EXPECT_TRUE(holds("> board1 release BUTTON\n")) << text;
    record->sendSignal(SIGINT);
    EXPECT_EQ(record->waitForExit(), 0);
    EXPECT_EQ(record->output(), file + ": 2 reports\n");
    const std::string replayed = run({"replay", file});
    EXPECT_NE(replayed.find(nameOf(*boards.front()) + "  " + pressLine), std::string::npos) << replayed;
}

TEST_F(LinuxVantrelLive, WatchSaysThatNoBoardIsThereAndEndsInOrder) {
    startBridge();
    const auto watch = start({"watch"});
    EXPECT_TRUE(waitUntil([&] { return countOf(watch->errorOutput(), "No board with the ids 0x1234:ABCD") == 1; }));
    plugBoard(model());
    EXPECT_TRUE(shows(*watch, "is there"));
    watch->sendSignal(SIGTERM);
    EXPECT_EQ(watch->waitForExit(), 0);
}

TEST_F(WindowsVantrelLive, BoardsAndDoctorHearTheBoard) {
    installation = std::make_unique<BridgeInstallation>(files(), std::nullopt);
    const std::string board = nameOf(plugBoard(model()));
    EXPECT_EQ(countOf(run({"boards"}), "1234:ABCD  board " + board + '\n'), 1U);
    const auto doctor = start({"doctor"});
    EXPECT_EQ(doctor->waitForExit(), 1) << doctor->errorOutput();
    EXPECT_EQ(countOf(doctor->output(), "Boards: " + board + " answers"), 1U) << doctor->output();
}
