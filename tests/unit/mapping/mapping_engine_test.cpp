#include "tests/unit/mapping/mapping_fixture.h"

#include <thread>

using std::string;
using std::vector;

/// Start and stop. Control 5 isn't in the command file, so its press fires a simulator event, by which a test can hold
/// up the event worker.
class EngineCore : public MappingTest {
protected:
    /// Has the event worker wait at the gate with an event in flight, so that those after it stay queued.
    void holdEventWorker() {
        connectSimulator();
        ASSERT_TRUE(startEngine());
        holdUp(SimCall::TransmitClientEvent);
        submit(button(5, 1));
        ASSERT_TRUE(gate.waitForArrival());
    }

    /// Waits for events and expects these and no others, by control number, since the test began.
    void expectHandled(const vector<string>& expected) {
        waitUntil([&] { return eventLines().size() >= expected.size(); });
        vector<string> controls;
        for (const string& line : eventLines()) {
            const std::size_t begin = line.find("controlId=") + 10;
            controls.push_back(line.substr(begin, line.find(' ', begin) - begin));
        }
        EXPECT_EQ(controls, expected);
    }

    string startError() {
        string error;
        EXPECT_FALSE(engine.start(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, error));
        return error;
    }
};

using EngineStart = EngineCore;
using EngineStop = EngineCore;

TEST_F(EngineStart, RefusesARunningEngineAndLeavesItAlone) {
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(startError(), "Mapping engine already running");
    handle(button(1, 1), "B", -1);
    EXPECT_NE(lastEventLine().find(" index=-1 "), string::npos);
    EXPECT_EQ(engineHost.threadsEnded(), 0U);
}

TEST_F(EngineStart, LeavesNoThreadBehindWhenOneIsRefused) {
    for (const std::size_t allowed : {0U, 1U, 2U}) {
        const std::size_t before = engineHost.threadsEnded();
        engineHost.refuseThreadsAfter(allowed);
        EXPECT_EQ(startError(), "Failed to start mapping workers: " + FakeHost::refusalText());
        EXPECT_EQ(engineHost.threadsEnded(), before + allowed);
        engine.submitEvent(button(1, 1), "B", 0);
    }
    engineHost.refuseThreadsAfter(100);
    ASSERT_TRUE(startEngine());
    handle(button(2, 1));
    expectHandled({"2"});
}

TEST_F(EngineStart, MissingReferenceDropsEachEventSilently) {
    addControl(9, "LISTED", R"("PRESS":{"":"X"})");
    for (int missing = 0; missing < 5; ++missing) {
        string error;
        ASSERT_TRUE(engine.start(missing == 0 ? nullptr : &config, &hid, missing == 1 ? nullptr : &simConnect,
                                 missing == 2 ? nullptr : &mobiflight, missing == 3 ? nullptr : &buttons,
                                 missing == 4 ? nullptr : &eventMap, &simState, error));
        for (const auto& event : {button(9, 1), button(6, 1), notice()}) {
            engine.submitEvent(event, "B", 0);
        }
        // Time to handle them; nothing shows that they have been.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        engine.stop();
        EXPECT_EQ(log.lines(), vector<string>{}) << missing;
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
    for (std::size_t round = 1; round <= 100; ++round) {
        ASSERT_TRUE(startEngine());
        engine.submitEvent(button(1, 1), "B", 0);
        engine.stop();
        engine.stop();
        ASSERT_EQ(engineHost.threadsEnded(), 3 * round);
    }
}

TEST_F(EngineStop, EndsAllThreadsAtOnceWhateverTheyWaitFor) {
    config.outputs.debounceMs = 3600 * 1000;
    config.mobiflight.mapHoldRepeatMs = 3600 * 1000;
    ASSERT_TRUE(startEngine());
    engine.requestOutputUpdate();
    ASSERT_TRUE(waitUntil([this] { return clockReads(OutputWorker) > 0 && clockReads(HoldWorker) > 0; }));
    engine.stop();
    EXPECT_EQ(engineHost.threadsEnded(), 3U);
}

TEST_F(EngineStop, HandlesAtMostTheEventInFlightAndKeepsTheRest) {
    holdEventWorker();
    submit(button(1, 1));
    submit(button(2, 1));
    std::thread stopper([this] { engine.stop(); });
    // The other two have seen the stop.
    EXPECT_TRUE(waitUntil([this] { return engineHost.threadsEnded() == 2; }));
    gate.open();
    stopper.join();
    expectHandled({"5"});
    ASSERT_TRUE(startEngine());
    EXPECT_TRUE(drain());
    expectHandled({"5", "1", "2"});
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
    expectHandled({"2", "4"});
}
