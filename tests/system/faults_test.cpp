// Boards pulled in the middle of a hold, nodes that come late.

#include "tests/system/support/bridge_test.h"

#include <algorithm>
#include <filesystem>

namespace {

class Faults : public BridgeTest {
protected:
    UhidBoard& board() { return *boards[0]; }

    std::size_t mapRepeats() {
        const std::vector<std::string> executed = simulator->texts(SimulatorRecordKind::Executed);
        return static_cast<std::size_t>(std::count(executed.begin(), executed.end(), "1 (>H:MAP_HOLD)"));
    }
};

/// Only the kernel's own nodes can be renamed.
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
