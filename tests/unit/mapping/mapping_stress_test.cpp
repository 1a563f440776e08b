#include "tests/unit/mapping/mapping_fixture.h"

#include <thread>

using std::string;

/// All threads of the bridge at once, wired as the program wires them, while boards and sessions come and go.
class MappingStress : public MappingTest {
protected:
    void SetUp() override {
        // Files written line by line would be all that this test does.
        Logger::instance().setDebugEnabled(false);
        config.outputs.debounceMs = 1;
        config.mobiflight.mapHoldRepeatMs = 1;
        addControl(20, "SWAP", R"("PRESS":{"":"SWAP"},"HOLD":{"":"SWAP_LONG"},"RELEASE":{"":"LET_GO"})");
        addControl(21, "HDG", R"("CW":{"":"INC"},"CCW":{"":"DEC"})");
        addControl(30, "MAP_LEFT", R"("PRESS":{"":"LEFT"},"HOLD":{"":"LEFT_HELD"})");
        bus.setRecording(false);
    }

    void startAll() {
        mobiflight.setLVarHandler([this](const string& text) { engine.onBacklightPayload(text); });
        simConnect.setBatteryCallback([this](bool on) {
            {
                const std::lock_guard lock(simState.mutex);
                simState.batteryOn = on;
                simState.batteryKnown = true;
            }
            engine.requestOutputUpdate();
        });
        ASSERT_TRUE(startEngine());
        startHid();
        string error;
        ASSERT_TRUE(mobiflight.start(&simConnect, config.mobiflight, error));
        simHost.setProcesses({"FlightSimulator.exe"});
        const auto onConnection = [this](bool connected) {
            hid.sendSimStatus(connected);
            mobiflight.onSimConnectState(connected);
            engine.simConnected = connected;
            engine.requestOutputUpdate();
        };
        ASSERT_TRUE(simConnect.start(
            "", onConnection, [this] { return hid.hasDevices(); }, error));
    }

    static void play(VirtualBoard& board) {
        board.press(20);
        board.hold(20);
        board.turn(21, 2);
        board.release(20);
        board.hold(30);
        board.press(5);
        board.release(30);
        board.notice();
    }
};

TEST_F(MappingStress, BoardsSessionsAndTheEngineComeAndGo) {
    startAll();
    auto steadyBoard = plugBoard(1);
    auto loose = plugBoard(2);
    hid.scanDevices();
    std::atomic<bool> playing{true};
    std::thread player([&] {
        while (playing) {
            play(*steadyBoard);
            play(*loose);
            engine.requestOutputUpdate();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    });
    for (int round = 0; round < 60; ++round) {
        ASSERT_TRUE(waitUntil([this] { return simConnect.isConnected(); })) << round;
        sim.deliverText(0x1200, "MF.Clients.Add.VantrelBridgeHID.Finished", 256);
        sim.deliverBattery(round % 2);
        sim.deliverText(0x1201, "(L:LIGHTING_POTENTIOMETER_5)=0." + std::to_string(round) + ";", 4096);
        if (round % 4 == 0) {
            bus.unplug(loose);
            hid.scanDevices();
        }
        ASSERT_TRUE(waitUntil([this] { return sim.allDelivered(); })) << round;
        if (round % 4 == 2) {
            bus.plug(loose, "port2");
            hid.scanDevices();
        }
        if (round % 5 == 1) {
            // Nothing may reach the engine while it starts, so what was delivered must have been handled, too.
            const std::size_t polls = sim.count(SimCall::CallDispatch);
            ASSERT_TRUE(waitUntil([&] { return sim.count(SimCall::CallDispatch) > polls; })) << round;
            engine.stop();
            ASSERT_TRUE(startEngine());
        }
        if (round % 3 == 0) {
            sim.script(SimCall::CallDispatch, {simConnectFail});
        }
    }
    playing = false;
    player.join();
    // Whatever came between, each worker still does its work.
    Logger::instance().setDebugEnabled(true);
    engine.submitEvent(button(999, 1), "LAST", 0);
    EXPECT_TRUE(waitUntil([this] { return !log.linesWith("HID event from LAST ").empty(); }));
    auto fresh = plugBoard(3);
    hid.scanDevices();
    engine.requestOutputUpdate();
    EXPECT_TRUE(waitUntil([&] { return fresh->led().has_value(); }));
    engine.submitEvent(button(30, 2), "LAST", 0);
    EXPECT_TRUE(waitForClockReads(HoldWorker, 10));
}
