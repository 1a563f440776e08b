#include "tests/unit/mapping/mapping_fixture.h"

#include <thread>

using std::string;
using std::vector;

/// Start and stop. Control 5 isn't in the command file, so its press fires a simulator event,
/// by which the event worker can be held up.
class EngineCore : public MappingTest {
protected:
    /// Has the event worker wait at the gate with an event in flight, so that those after it stay queued.
    void holdEventWorker() {
        connectSimulator();
        ASSERT_TRUE(startEngine());
        sim.setHook([this](SimCall call) {
            if (call == SimCall::TransmitClientEvent) {
                gate.pass();
            }
        });
        submit(button(5, 1));
        ASSERT_TRUE(gate.waitForArrival());
    }

    /// Whether these and no others are the events handled so far, as "controlId value". Waits for them.
    bool handled(const vector<string>& expected) {
        waitUntil([&] { return eventLines().size() >= expected.size(); });
        vector<string> events;
        for (const string& line : eventLines()) {
            int control = 0;
            int value = 0;
            std::sscanf(line.substr(line.find(" controlId=")).c_str(), " controlId=%d value=%d", &control, &value);
            events.push_back(std::to_string(control) + " " + std::to_string(value));
        }
        EXPECT_EQ(events, expected);
        return events == expected;
    }

    string startError() {
        string error;
        EXPECT_FALSE(engine.start(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, error));
        return error;
    }

    /// Starts the engine without one reference, by number, and submits events of every effect. A complete engine would
    /// handle, and log, what this one has left in the queue. False if that is something: it had too little time.
    bool takesEventsSilentlyWithout(int missing, int timeMs) {
        string error;
        EXPECT_TRUE(engine.start(missing == 0 ? nullptr : &config, &hid, missing == 1 ? nullptr : &simConnect,
                                 missing == 2 ? nullptr : &mobiflight, missing == 3 ? nullptr : &buttons,
                                 missing == 4 ? nullptr : &eventMap, &simState, error));
        for (const auto& event : {button(9, 1), button(6, 1), notice()}) {
            engine.submitEvent(event, "B", 0);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(timeMs));
        engine.stop();
        EXPECT_EQ(log.lines(), vector<string>{});
        EXPECT_TRUE(startEngine());
        engine.submitEvent(button(2, 1), "B", 0);
        EXPECT_TRUE(waitUntil([this] { return lastEventLine().find("controlId=2 ") != string::npos; }));
        engine.stop();
        const bool leftNothing = eventLines().size() == 1;
        log.clear();
        return leftNothing;
    }

    // The gate has to outlive the engine's run.
    void TearDown() override {
        gate.open();
        engine.stop();
        sim.setHook(nullptr);
    }

    Gate gate;
};

using EngineStart = EngineCore;
using EngineStop = EngineCore;

TEST_F(EngineStart, RefusesARunningEngineAndLeavesItAlone) {
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(startError(), "Mapping engine already running");
    handle(button(1, 1), "B", -1);
    EXPECT_NE(lastEventLine().find(" index=-1 "), string::npos);
    EXPECT_EQ(workersEnded, 0);
}

TEST_F(EngineStart, LeavesNoThreadBehindWhenOneIsRefused) {
    for (const std::size_t allowed : {0U, 1U, 2U}) {
        workersEnded = 0;
        engineHost.refuseThreadsAfter(allowed);
        EXPECT_EQ(startError(), "Failed to start mapping workers: " + FakeHost::refusalText());
        EXPECT_EQ(workersEnded, static_cast<int>(allowed));
        engine.submitEvent(button(1, 1), "B", 0);
    }
    engineHost.refuseThreadsAfter(100);
    const std::size_t before = engineHost.threadsStarted();
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(engineHost.threadsStarted() - before, 3U);
    handle(button(2, 1));
    EXPECT_TRUE(handled({"2 1"}));
}

TEST_F(EngineStart, MissingReferenceDropsEachEventSilently) {
    addControl(9, "LISTED", R"("PRESS":{"":"X"})");
    for (int missing = 0; missing < 5; ++missing) {
        int timeMs = 1;
        while (timeMs <= 32768 && !takesEventsSilentlyWithout(missing, timeMs)) {
            timeMs *= 2;
        }
        EXPECT_LE(timeMs, 32768) << missing;
    }
}

TEST_F(EngineStart, WorksWithoutAHidManager) {
    string error;
    ASSERT_TRUE(engine.start(&config, nullptr, &simConnect, &mobiflight, &buttons, &eventMap, nullptr, error));
    handle(notice());
    engine.onBacklightPayload("0.5");
    EXPECT_TRUE(log.has("[DEBUG] State update: backlight LIGHTING_POTENTIOMETER_5=0.500000"));
}

TEST_F(EngineStop, IsHarmlessOnAStoppedEngineAndTwiceAndAllowsAStart) {
    engine.stop();
    for (int round = 1; round <= 100; ++round) {
        ASSERT_TRUE(startEngine());
        engine.submitEvent(button(1, 1), "B", 0);
        engine.stop();
        engine.stop();
        ASSERT_EQ(workersEnded, 3 * round);
    }
}

TEST_F(EngineStop, EndsAllThreadsAtOnceWhateverTheyWaitFor) {
    config.outputs.debounceMs = 3600 * 1000;
    config.mobiflight.mapHoldRepeatMs = 3600 * 1000;
    ASSERT_TRUE(startEngine());
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitUntil([this] { return clockReads(OutputWorker) > 0 && clockReads(HoldWorker) > 0; }));
    engine.stop();
    EXPECT_EQ(workersEnded, 3);
}

TEST_F(EngineStop, HandlesAtMostTheEventInFlightAndKeepsTheRest) {
    holdEventWorker();
    submit(button(1, 1));
    submit(button(2, 1));
    std::thread stopper([this] { engine.stop(); });
    // The other two have seen the stop.
    EXPECT_TRUE(waitUntil([this] { return workersEnded == 2; }));
    gate.open();
    stopper.join();
    EXPECT_TRUE(handled({"5 1"}));
    ASSERT_TRUE(startEngine());
    EXPECT_TRUE(drain());
    EXPECT_TRUE(handled({"5 1", "1 1", "2 1"}));
}

TEST_F(EngineStop, DestructorStops) {
    FakeHost host;
    {
        MappingEngine other(host.record());
        string error;
        ASSERT_TRUE(other.start(&config, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, error));
    }
    EXPECT_EQ(host.threadsEnded(), 3U);
}

TEST_F(EngineStop, EventsOfAStoppedEngineVanish) {
    engine.submitEvent(button(1, 1), "B", 0);
    ASSERT_TRUE(startEngine());
    handle(button(2, 1));
    engine.stop();
    engine.submitEvent(button(3, 1), "B", 0);
    ASSERT_TRUE(startEngine());
    handle(button(4, 1));
    EXPECT_TRUE(handled({"2 1", "4 1"}));
}
