// Reports that come faster than the bridge reads, as from a knob that is spun after a pause. Only Windows has a queue
// of pending reads in the bridge and a small one of its own.

#include "hid/hid_log_lines.h"
#include "tests/system/support/bridge_test.h"

#include <sstream>
#include <thread>

namespace {

/// Numbers of controls that have no other meaning.
constexpr std::uint16_t firstControl = 1000;
/// As many as Wine keeps for a reader that isn't waiting, and some to spare.
constexpr std::uint16_t burstSize = 25;

class WindowsBursts : public BridgeTest {
protected:
    void SetUp() override {
        extensions = R"("singlePendingRead": 1)";
        plugBoard(model(1)).setPace(nullptr);
        plugBoard(model(2)).setPace(nullptr);
        startBridge();
        ASSERT_TRUE(bridge->waitForLog("HID manager started"));
    }

    /// Long enough for the reads of both boards to have timed out.
    static void idle() { std::this_thread::sleep_for(std::chrono::milliseconds(1500)); }

    /// Presses of controls not used before, on both boards by turns.
    void burst(std::uint16_t size) {
        for (std::uint16_t i = 0; i < size; ++i) {
            sent.push_back(firstControl + static_cast<int>(sent.size()));
            for (const auto& board : boards) {
                board->panel.press(static_cast<std::uint16_t>(sent.back()));
            }
        }
    }

    /// The controls of the board's events that the bridge has logged, in order.
    std::vector<int> controlsOf(const UhidBoard& board) const {
        std::vector<int> controls;
        std::istringstream log(bridge->log());
        for (std::string line; std::getline(log, line);) {
            const auto event = readHidEventLine(line);
            if (event && event->device == nameOf(board)) {
                controls.push_back(event->event.controlId);
            }
        }
        return controls;
    }

    void expectAllInOrder() const {
        for (const auto& board : boards) {
            waitUntil([&] { return controlsOf(*board).size() >= sent.size(); }, ChildProcess::defaultLimit,
                      BridgeProcess::logPause);
            EXPECT_EQ(controlsOf(*board), sent) << nameOf(*board);
        }
    }

    std::vector<int> sent;
};

} // namespace

TEST_F(WindowsBursts, LoseNothingWithASinglePendingRead) {
    for (int round = 0; round < 4; ++round) {
        idle();
        burst(burstSize);
    }
    expectAllInOrder();

    idle();
    bridge->process().sendSignal(SIGSTOP);
    // More than Wine keeps by default, and fewer than the 64 that the kernel keeps for Wine.
    burst(2 * burstSize);
    bridge->process().sendSignal(SIGCONT);
    expectAllInOrder();
}
