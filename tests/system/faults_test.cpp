// What goes on while something is amiss: boards pulled in the middle, nodes that come late, streams that don't end.

#include "tests/system/support/bridge_test.h"

#include <algorithm>
#include <filesystem>
#include <thread>

namespace {

class Faults : public BridgeTest {
protected:
    UhidBoard& board() { return *boards[0]; }

    std::size_t mapRepeats() {
        const std::vector<std::string> executed = simulator->texts(SimulatorRecordKind::Executed);
        return static_cast<std::size_t>(std::count(executed.begin(), executed.end(), "1 (>H:MAP_HOLD)"));
    }
};

/// What only the kernel's own nodes can show.
class LinuxFaults : public Faults {};

} // namespace

TEST_F(Faults, BoardPulledDuringAHoldLeavesItRunningAndTheBridgeStopsInOrder) {
    ASSERT_NO_FATAL_FAILURE(startSession());
    board().panel.press(Controls::mapLeft);
    board().panel.hold(Controls::mapLeft);
    ASSERT_TRUE(waitForRpn("(>H:MAP_HOLD)", 5));
    board().unplug();
    ASSERT_TRUE(bridge->waitForLog("HID device disconnected: " + nameOf(board()) + "\n"));
    // There is no time-out: only a release or the end of the bridge ends a hold.
    const std::size_t afterPull = mapRepeats();
    EXPECT_TRUE(waitUntil([&] { return mapRepeats() >= afterPull + 5; }, ChildProcess::defaultLimit));
}

TEST_F(Faults, StreamOfLightChangesReachesTheBoardOnceItIsQuiet) {
    configuration.outputs = R"("debounceMs": 1500)";
    ASSERT_NO_FATAL_FAILURE(startSession());
    simulator->command("battery on");
    ASSERT_TRUE(waitForLastReport(board(), reportOf({0x10, 1, 80})));
    const std::size_t before = reports(board(), 0x10).size();
    // Sixty-fourths: the first byte of such a single is zero, by which it is known as a number.
    for (int part = 8; part <= 32; ++part) {
        simulator->command("lvar LIGHTING_POTENTIOMETER_5 " + std::to_string(part / 64.0));
        std::this_thread::sleep_for(std::chrono::milliseconds(80));
    }
    // Two seconds of changes, in which two refreshes would have gone out.
    EXPECT_TRUE(waitForLastReport(board(), reportOf({0x10, 1, 50})));
    EXPECT_EQ(reports(board(), 0x10).size(), before + 1);
}

TEST_F(LinuxFaults, NodeThatComesLateIsFoundByALaterPass) {
    UhidBoard& late = plugBoard(model());
    const std::string node = late.device().node();
    std::filesystem::rename(node, node + ".away");
    startBridge();
    ASSERT_TRUE(bridge->waitForLog("Waiting for HID device to connect"));
    std::filesystem::rename(node + ".away", node);
    EXPECT_TRUE(bridge->waitForLog("HID device connected: " + nameOf(late) + " index=0\n"));
    killBridge();
}

TEST_F(LinuxFaults, BoardThatArrivesInASessionIsToldOfItWithinATenthOfASecond) {
    scanOnNewsOnly();
    ASSERT_NO_FATAL_FAILURE(startSession());
    std::vector<std::chrono::steady_clock::duration> delays;
    for (std::uint8_t number = 2; number < 9; ++number) {
        UhidBoard& late = plugBoard(model(number));
        const auto plugged = std::chrono::steady_clock::now();
        ASSERT_TRUE(waitUntil([&] { return !late.panel.outputs().empty(); }, ChildProcess::defaultLimit));
        delays.push_back(std::chrono::steady_clock::now() - plugged);
    }
    // The middle one: a single delay may be the machine's own.
    std::nth_element(delays.begin(), delays.begin() + 3, delays.end());
    EXPECT_LT(delays[3], std::chrono::milliseconds(100));
    killBridge();
}
