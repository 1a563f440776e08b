// Reports that come faster than the bridge takes them, as from a knob that is spun after a pause.

#include "tests/system/support/bridge_test.h"

#include <csignal>
#include <sstream>
#include <thread>

namespace {

/// Numbers of controls that nothing else has a meaning for.
constexpr std::uint16_t firstControl = 1000;
/// As many as Wine keeps for a reader that isn't waiting, and some to spare.
constexpr std::uint16_t burstSize = 25;

class Bursts : public BridgeTest {
protected:
    void SetUp() override {
        configuration.extensions = R"("singlePendingRead": 1)";
        plugBoard(model(1)).setNoPace();
        plugBoard(model(2)).setNoPace();
        startBridge();
        ASSERT_TRUE(bridge->waitForLog("HID manager started"));
    }

    /// Long enough for the reads of both boards to have timed out.
    static void idle() { std::this_thread::sleep_for(std::chrono::milliseconds(1500)); }

    /// Presses of controls not used before, on both boards by turns.
    void burst(std::uint16_t size) {
        for (std::uint16_t i = 0; i < size; ++i, ++nextControl) {
            for (const auto& board : boards) {
                board->panel.press(nextControl);
            }
        }
    }

    /// The controls of the board's events that the bridge has logged, in order.
    std::vector<int> controlsOf(const UhidBoard& board) {
        constexpr std::string_view key = " controlId=";
        std::vector<int> controls;
        std::istringstream log(bridge->log());
        for (std::string line; std::getline(log, line);) {
            const std::size_t place = line.find(key);
            if (line.find("HID event from " + nameOf(board) + " ") != std::string::npos && place != std::string::npos) {
                controls.push_back(std::atoi(line.c_str() + place + key.size()));
            }
        }
        return controls;
    }

    void expectAllInOrder() {
        std::vector<int> sent;
        for (int control = firstControl; control < nextControl; ++control) {
            sent.push_back(control);
        }
        for (const auto& board : boards) {
            waitUntil([&] { return controlsOf(*board).size() >= sent.size(); }, ChildProcess::defaultLimit,
                      BridgeProcess::logPause);
            EXPECT_EQ(controlsOf(*board), sent) << nameOf(*board);
        }
    }

    std::uint16_t nextControl = firstControl;
};

using WindowsBursts = Bursts;

} // namespace

TEST_F(Bursts, OnIdleBoardsLoseNothingWithASinglePendingRead) {
    for (int round = 0; round < 4; ++round) {
        idle();
        burst(burstSize);
    }
    expectAllInOrder();
    killBridge();
}

TEST_F(WindowsBursts, AreKeptBeyondTheSystemsDefaultWhileTheBridgeIsHeldUp) {
    idle();
    bridge->process().sendSignal(SIGSTOP);
    // More than Wine keeps for a reader that doesn't ask for more, and fewer than the 64 that the kernel keeps for
    // Wine.
    burst(2 * burstSize);
    bridge->process().sendSignal(SIGCONT);
    expectAllInOrder();
    killBridge();
}
