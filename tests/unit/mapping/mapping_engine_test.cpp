#include "tests/unit/mapping/mapping_fixture.h"

#include <thread>

using std::string;
using std::vector;

/// Start, stop and the event queue's thread. Control 5 isn't in the command file, so its press fires a simulator event,
/// by which the event worker can be held up.
class EngineCore : public MappingTest {
protected:
    /// Has the event worker wait at the gate with an event in hand, so that those after it stay queued.
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

    /// Starts the engine without one reference, by number, and submits events of every effect. The queue can't be
    /// watched, so the wait grows until an engine that has all references finds nothing left in it.
    bool takesEventsSilentlyWithout(int missing) {
        const vector<HidProtocol::HidEvent> events = {button(9, 1), button(6, 1), notice()};
        for (int waitMs = 1; waitMs <= 32768; waitMs *= 2) {
            string error;
            EXPECT_TRUE(engine.start(missing == 0 ? nullptr : &config, &hid, missing == 1 ? nullptr : &simConnect,
                                     missing == 2 ? nullptr : &mobiflight, missing == 3 ? nullptr : &buttons,
                                     missing == 4 ? nullptr : &eventMap, &simState, error));
            for (const auto& event : events) {
                engine.submitEvent(event, "B", 0);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(waitMs));
            engine.stop();
            EXPECT_EQ(log.lines(), vector<string>{});
            EXPECT_TRUE(startEngine());
            engine.submitEvent(button(2, 1), "B", 0);
            EXPECT_TRUE(waitUntil([this] { return lastEventLine().find("controlId=2 ") != string::npos; }));
            engine.stop();
            const bool wasEmpty = eventLines().size() == 1;
            log.clear();
            if (wasEmpty) {
                return true;
            }
        }
        return false;
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
using EngineQueue = EngineCore;

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

TEST_F(EngineStart, MissingReferenceEndsEachEventWithoutAWordOrAnEffect) {
    addControl(9, "LISTED", R"("PRESS":{"":"X"})");
    for (int missing = 0; missing < 5; ++missing) {
        EXPECT_TRUE(takesEventsSilentlyWithout(missing)) << missing;
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

TEST_F(EngineStop, HandlesAtMostTheEventInHandAndKeepsTheRest) {
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

TEST_F(EngineQueue, EventsOfAStoppedEngineVanish) {
    engine.submitEvent(button(1, 1), "B", 0);
    ASSERT_TRUE(startEngine());
    handle(button(2, 1));
    engine.stop();
    engine.submitEvent(button(3, 1), "B", 0);
    ASSERT_TRUE(startEngine());
    handle(button(4, 1));
    EXPECT_TRUE(handled({"2 1", "4 1"}));
}

TEST_F(EngineQueue, EventsOfEachThreadKeepTheirOrder) {
    ASSERT_TRUE(startEngine());
    constexpr std::uint16_t perThread = 200;
    vector<std::thread> readers;
    for (std::uint16_t reader = 0; reader < 4; ++reader) {
        readers.emplace_back([this, reader] {
            const string name{'R', static_cast<char>('0' + reader)};
            for (std::uint16_t number = 0; number < perThread; ++number) {
                engine.submitEvent(button(number, 1), name, reader);
            }
        });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
    submitted = std::size_t{4} * perThread;
    ASSERT_TRUE(drain());
    for (int reader = 0; reader < 4; ++reader) {
        const auto lines = log.linesWith("from R" + std::to_string(reader) + " ");
        ASSERT_EQ(lines.size(), perThread);
        for (std::size_t number = 0; number < perThread; ++number) {
            ASSERT_NE(lines[number].find("controlId=" + std::to_string(number) + " "), string::npos) << lines[number];
        }
    }
}

TEST_F(EngineQueue, ReleaseRemovesTheQueuedHoldsOfItsButton) {
    holdEventWorker();
    for (const int value : {1, 2, 3, 0}) {
        submit(button(7, value));
    }
    submitted -= 2;
    gate.open();
    ASSERT_TRUE(drain());
    EXPECT_TRUE(handled({"5 1", "7 1", "7 0"}));
}
