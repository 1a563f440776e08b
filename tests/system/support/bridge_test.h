#pragma once

#include "tests/support/wait_until.h"
#include "tests/system/support/board_pool.h"
#include "tests/system/support/bridge_process.h"
#include "tests/system/support/simulator_process.h"
#include "tests/system/support/tested_system.h"

#include <gtest/gtest.h>

#include <csignal>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

/// The bytes given, then zeros up to a whole report.
std::vector<std::uint8_t> reportOf(std::initializer_list<int> bytes);

/// Board, simulator and bridge as processes and devices of the system. Each test plugs and starts what it needs. A
/// bridge that still runs at its end is ended, in order if it has a simulator.
class BridgeTest : public testing::Test {
protected:
    /// The simulator has an event of this control's name, and the configuration no command.
    static constexpr std::uint16_t eventButton = 5;
    /// Its press runs `buttonCommand`.
    static constexpr std::uint16_t commandButton = 20;
    static constexpr const char* buttonCommand = "1 (>H:BUTTON_PRESS)";

    void TearDown() override;

    /// A whole configuration, which the two members below change.
    BridgeFiles files() const;
    int scanIntervalMs = 100;
    /// Members of "extensions". By default, a report that comes just when a read times out, once a second, is lost on
    /// Windows, and a busy machine makes that moment long.
    std::string extensions = R"("singlePendingRead": 1)";

    /// Under Wine, the board sends its next report only when the bridge has logged an event of the last one: a board
    /// that the bridge doesn't hear needs another pace.
    UhidBoard& plugBoard(const VirtualBoardModel& boardModel);
    void startSimulator() { simulator = std::make_unique<SimulatorProcess>(); }
    void startBridge(const std::vector<std::string>& arguments = {"--console"});
    /// All three, with the session open and the handshake with the module done.
    void startSession(const std::vector<std::string>& arguments = {"--console"});

    /// Leaves only the scans that notifications cause: of two scans at once, the one with the older list may drop, for
    /// a moment, a board that the other has just found. The bridge is then killed at the end, because its own end would
    /// wait out the pause between scans. Wine's notification may come while its list still holds a board that goes, so
    /// a late scan remains there.
    void scanOnNotificationsOnly() { scanIntervalMs = endlessPause(); }

    static VirtualBoardModel model(std::uint8_t number = 1);
    static std::string nameOf(const UhidBoard& board);
    bool waitForConnection(const UhidBoard& board, int index) const;
    bool waitForDisconnection(const UhidBoard& board) const;

    /// All reports of one id that a board was sent, in order.
    static std::vector<std::vector<std::uint8_t>> reports(const UhidBoard& board, std::uint8_t reportId);
    /// Waits until the last report of its id is this one.
    static bool waitForReport(const UhidBoard& board, const std::vector<std::uint8_t>& report);

    /// Presses the button and waits for its command, which must be the `count`th in the simulator's present process.
    bool pressWorks(UhidBoard& board, std::size_t count = 1) const;

    std::unique_ptr<SimulatorProcess> simulator;
    std::unique_ptr<BridgeInstallation> installation;
    std::unique_ptr<BridgeProcess> bridge;
    PluggedBoards boards;

private:
    static int endlessPause() { return TestedSystem::isWindows() ? 5000 : 600000; }

    void endBridge();
    /// Sends an input report and waits until the bridge has logged an event.
    void sendPaced(const std::function<void()>& send) const;
};
