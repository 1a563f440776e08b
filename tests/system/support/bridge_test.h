#pragma once

#include "tests/support/wait_until.h"
#include "tests/system/support/board_pool.h"
#include "tests/system/support/bridge_process.h"
#include "tests/system/support/simulator_process.h"
#include "tests/system/support/tested_system.h"

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// The numbers of the controls in the tests' event map.
namespace Controls {
constexpr std::uint16_t listedNowhere = 5;
constexpr std::uint16_t namedOnly = 7;
constexpr std::uint16_t button = 20;
constexpr std::uint16_t knob = 21;
constexpr std::uint16_t roleButton = 23;
constexpr std::uint16_t mapLeft = 30;
} // namespace Controls

/// The texts of the configuration, with places to change.
struct TestConfiguration {
    int scanIntervalMs = 100;
    /// Members of "extensions".
    std::string extensions;

    BridgeFiles files() const;
};

/// A whole report: the bytes given, then zeros.
std::vector<std::uint8_t> reportOf(std::initializer_list<int> bytes);

/// Board, simulator and bridge as processes and devices of the system. Each test plugs and starts what it needs; what
/// still runs at its end is asked to stop and has to do so in order.
class BridgeTest : public testing::Test {
protected:
    void TearDown() override;

    SimulatorProcess& startSimulator(const std::vector<std::string>& options = {});
    BridgeProcess& startBridge(const std::vector<std::string>& arguments = {"--console"});
    /// For a bridge whose orderly end would take seconds, since it waits for the simulator.
    void killBridge();
    /// All three, with the session open and the handshake with the module done.
    void startSession();

    /// All reports of one id that a board was sent, in order.
    static std::vector<std::vector<std::uint8_t>> reports(const UhidBoard& board, std::uint8_t reportId);
    static bool waitForReport(const UhidBoard& board, const std::vector<std::uint8_t>& report);
    /// Waits until the last report of its id is this one.
    static bool waitForLastReport(const UhidBoard& board, const std::vector<std::uint8_t>& report);

    /// For tests that plug boards into a running bridge: leaves only the scans on news of boards. Of two scans at once
    /// the one with the older list may drop, for a moment, a board that the other has just found. The bridge is then
    /// killed at the end, for its own end would wait out the pause between scans.
    /// Wine's news of a board that goes may come while its list still holds the board, so a late scan stays there.
    void scanOnNewsOnly() { configuration.scanIntervalMs = pauseWithoutEnd(); }

    static VirtualBoardModel model(std::uint8_t number = 1);
    static std::string nameOf(const UhidBoard& board);

    /// Waits until the module was told to run `rpn` that often.
    bool waitForRpn(const std::string& rpn, std::size_t count = 1);
    /// All that the module was told to run, once all that the board has sent until now is dealt with.
    std::vector<std::string> commandsUntilNow(UhidBoard& board);
    /// The client events fired until now.
    std::vector<std::string> events() { return simulator->texts(SimulatorRecordKind::ClientEvent); }

    TestConfiguration configuration;
    std::unique_ptr<SimulatorProcess> simulator;
    std::unique_ptr<BridgeInstallation> installation;
    std::unique_ptr<BridgeProcess> bridge;
    bool consoleRun = false;

    UhidBoard& plugBoard(const VirtualBoardModel& boardModel);
    PluggedBoards boards;

private:
    /// Sends an input report, and under Wine waits until the bridge has dealt with it.
    void sendPaced(const std::function<void()>& send);

    static int pauseWithoutEnd() { return TestedSystem::isWindows() ? 5000 : 600000; }

    void endBridge();

    std::size_t drains = 0;
};
