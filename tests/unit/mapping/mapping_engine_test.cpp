#include "tests/unit/mapping/mapping_fixture.h"

#include <thread>

using std::string;
using std::vector;

/// Control 5 isn't in the command file, so its press fires a simulator event, by which the event worker can be held up.
class EngineCore : public MappingTest {
protected:
    /// Has the event worker wait at the gate with an event in hand, so that those after it stay queued.
    void holdEventWorker() {
        sim.setHook([this](SimCall call) {
            if (call == SimCall::TransmitClientEvent)
                gate.pass();
        });
        submit(button(5, 1));
        ASSERT_TRUE(gate.waitForArrival());
    }

    /// "action controlId value" of each event handled behind the one that was held up, in order.
    vector<string> handledBehindGate() {
        vector<string> result;
        for (const string& line : eventLines()) {
            const auto piece = [&line](const string& key) {
                const auto begin = line.find(key) + key.size();
                return line.substr(begin, line.find(' ', begin) - begin);
            };
            const bool hasAction = line.find(" action=") != string::npos;
            result.push_back((hasAction ? piece(" action=") : "NONE") + " " + piece(" controlId=") + " of " +
                             piece(" from ") + " " + piece(" index="));
        }
        if (!result.empty())
            result.erase(result.begin());
        return result;
    }

    bool waitForHandled(std::size_t count) {
        return waitUntil([&] { return eventLines().size() == count + 1; });
    }

    string startError(const AppConfig* someConfig = nullptr) {
        string error;
        EXPECT_FALSE(engine.start(someConfig, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, error));
        return error;
    }

    /// Starts the engine and has it take these events, none of which may make a line. False when they stay queued.
    bool takesFromTheQueue(const std::function<bool()>& start, const vector<HidProtocol::HidEvent>& events) {
        // The queue can't be watched, so the wait grows until what was queued doesn't come up again.
        constexpr int longestWaitMs = 32768;
        for (int waitMs = 1; waitMs <= longestWaitMs; waitMs *= 2) {
            log.clear();
            if (!start())
                return false;
            for (const HidProtocol::HidEvent& event : events)
                engine.submitEvent(event, "B", 0);
            std::this_thread::sleep_for(std::chrono::milliseconds(waitMs));
            engine.stop();
            EXPECT_EQ(linesOfTheEngine(), vector<string>{});
            if (queueIsEmpty())
                return true;
        }
        return false;
    }

    /// The MobiFlight client writes a command down before it logs it, so that its lines may come at any time.
    vector<string> linesOfTheEngine() {
        vector<string> lines = log.lines();
        std::erase_if(lines, [](const string& line) { return line.find("MobiFlight command: ") != string::npos; });
        return lines;
    }

    /// Of a stopped engine, which it has log its events, though without any effect on the simulator.
    bool queueIsEmpty() {
        AppConfig withoutModule = config;
        withoutModule.mobiflight.enabled = false;
        SimConnectClient withoutSession{sim.library(), simHost.record()};
        string error;
        EXPECT_TRUE(
            engine.start(&withoutModule, nullptr, &withoutSession, &mobiflight, &buttons, &eventMap, &simState, error));
        engine.submitEvent(button(2, 1), "B", 0);
        EXPECT_TRUE(waitUntil([this] { return lastEventLine().find("controlId=2 ") != string::npos; }));
        engine.stop();
        return eventLines().size() == 1;
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
using EnginePurge = EngineCore;

TEST_F(EngineStart, RefusesARunningEngineAndLeavesItAlone) {
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(startError(), "Mapping engine already running");
    EXPECT_EQ(startError(&config), "Mapping engine already running");
    handle(button(1, 1));
    EXPECT_EQ(workersEnded, 0);
}

TEST_F(EngineStart, LeavesNoThreadBehindWhenOneIsRefused) {
    for (const std::size_t allowed : {0U, 1U, 2U}) {
        workersEnded = 0;
        engineHost.refuseThreadsAfter(allowed);
        EXPECT_EQ(startError(), "Failed to start mapping workers: " + FakeHost::refusalText());
        EXPECT_EQ(workersEnded, static_cast<int>(allowed));
    }
}

TEST_F(EngineStart, SucceedsAfterARefusedThread) {
    engineHost.refuseThreadsAfter(1);
    EXPECT_NE(startError(), "");
    submit(button(1, 1));
    submitted = 0;
    engineHost.refuseThreadsAfter(100);
    ASSERT_TRUE(startEngine());
    handle(button(2, 1));
    EXPECT_NE(lastEventLine().find("controlId=2"), string::npos);
}

TEST_F(EngineStart, StartsThreeThreads) {
    ASSERT_TRUE(startEngine());
    EXPECT_EQ(engineHost.threadsStarted(), 3U);
}

TEST_F(EngineStart, CanFollowAStop) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_TRUE(startEngine());
        handle(button(1, 1));
        engine.stop();
    }
    EXPECT_EQ(workersEnded, 9);
}

TEST_F(EngineStart, MissingReferenceEndsEachEventWithoutAWordOrAnEffect) {
    addControl(9, "LISTED", R"("PRESS":{"":"X"})");
    connectModule();
    for (int missing = 0; missing < 5; ++missing) {
        SCOPED_TRACE(missing);
        const auto startWithout = [&] {
            string error;
            return engine.start(missing == 0 ? nullptr : &config, &hid, missing == 1 ? nullptr : &simConnect,
                                missing == 2 ? nullptr : &mobiflight, missing == 3 ? nullptr : &buttons,
                                missing == 4 ? nullptr : &eventMap, &simState, error);
        };
        // A command, a simulator event, a pause of the lights: with all references each has its effect.
        EXPECT_TRUE(takesFromTheQueue(startWithout, {button(9, 1), button(5, 1), {.type = 4}}));
    }
    EXPECT_EQ(commandTexts(), vector<string>{});
    EXPECT_EQ(simEvents(), vector<string>{});
}

TEST_F(EngineStart, WorksWithoutAHidManager) {
    string error;
    ASSERT_TRUE(engine.start(&config, nullptr, &simConnect, &mobiflight, &buttons, &eventMap, nullptr, error));
    handle({.type = 4, .mode = 7});
    engine.onBacklightPayload("0.5");
    EXPECT_EQ(lastEventLine(), "[DEBUG] HID event from B index=0 type=4 controlId=0 value=0 speed=0 mode=7");
}

TEST_F(EngineStop, IsHarmlessOnAStoppedEngineAndTwice) {
    engine.stop();
    ASSERT_TRUE(startEngine());
    engine.stop();
    engine.stop();
    EXPECT_EQ(workersEnded, 3);
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

TEST_F(EngineStop, ManyStartsAndStopsNeverHang) {
    for (int round = 0; round < 200; ++round) {
        ASSERT_TRUE(startEngine());
        engine.submitEvent(button(1, 1), "B", 0);
        engine.stop();
    }
    EXPECT_EQ(workersEnded, 600);
}

TEST_F(EngineStop, HandlesAtMostTheEventInHandAndKeepsTheRest) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(button(1, 1));
    submit(button(2, 1));
    std::thread stopper([this] { engine.stop(); });
    // The other two have seen the stop.
    EXPECT_TRUE(waitUntil([this] { return workersEnded == 2; }));
    gate.open();
    stopper.join();
    EXPECT_EQ(handledBehindGate(), vector<string>{});

    ASSERT_TRUE(startEngine());
    EXPECT_TRUE(waitForHandled(2));
    EXPECT_EQ(handledBehindGate(), (vector<string>{"BUTTON_PRESS 1 of B 0", "BUTTON_PRESS 2 of B 0"}));
}

TEST_F(EngineStop, DestructorStops) {
    FakeHost host;
    std::atomic<int> ended{0};
    Host record = host.record();
    record.startThread = [&ended](std::function<void()> body) {
        return std::thread([&ended, body = std::move(body)] {
            body();
            ++ended;
        });
    };
    {
        MappingEngine other(record);
        string error;
        ASSERT_TRUE(other.start(&config, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, error));
    }
    EXPECT_EQ(ended, 3);
}

TEST_F(EngineQueue, EventsOfAStoppedEngineVanish) {
    engine.submitEvent(button(1, 1), "B", 0);
    ASSERT_TRUE(startEngine());
    handle(button(2, 1));
    engine.stop();
    engine.submitEvent(button(3, 1), "B", 0);
    ASSERT_TRUE(startEngine());
    handle(button(4, 1));
    const auto lines = eventLines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_NE(lines[0].find("controlId=2 "), string::npos);
    EXPECT_NE(lines[1].find("controlId=4 "), string::npos);
}

TEST_F(EngineQueue, EventsAreHandledInTheOrderOfTheirSubmission) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    vector<string> expected;
    for (std::uint16_t id = 100; id < 400; ++id) {
        submit(encoder(id, id % 2 == 0 ? 1 : -1), id % 3 == 0 ? "A" : "B", id % 5);
        expected.push_back((id % 2 == 0 ? "ENC_CW " : "ENC_CCW ") + std::to_string(id) +
                           (id % 3 == 0 ? " of A " : " of B ") + std::to_string(id % 5));
    }
    gate.open();
    ASSERT_TRUE(drain());
    EXPECT_EQ(handledBehindGate(), expected);
}

TEST_F(EngineQueue, EventsOfEachThreadKeepTheirOrder) {
    ASSERT_TRUE(startEngine());
    constexpr std::uint16_t perThread = 200;
    vector<std::thread> readers;
    for (std::uint16_t reader = 0; reader < 4; ++reader) {
        readers.emplace_back([this, reader] {
            const string name{'R', static_cast<char>('0' + reader)};
            for (std::uint16_t number = 0; number < perThread; ++number)
                engine.submitEvent(button(number, 1), name, reader);
        });
    }
    for (std::thread& reader : readers)
        reader.join();
    submitted = std::size_t{4} * perThread;
    ASSERT_TRUE(drain());
    for (int reader = 0; reader < 4; ++reader) {
        const auto lines = log.linesWith("from R" + std::to_string(reader) + " ");
        ASSERT_EQ(lines.size(), perThread);
        for (std::size_t number = 0; number < perThread; ++number)
            ASSERT_NE(lines[number].find("controlId=" + std::to_string(number) + " "), string::npos) << lines[number];
    }
}

TEST_F(EngineQueue, NameIsCopiedAtTheSubmission) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    auto name = std::make_unique<string>("E66138A1B2C3D4E5");
    submit(button(1, 1), *name, 7);
    name.reset();
    gate.open();
    ASSERT_TRUE(drain());
    EXPECT_EQ(handledBehindGate(), vector<string>{"BUTTON_PRESS 1 of E66138A1B2C3D4E5 7"});
}

TEST_F(EngineQueue, NegativeIndexComesThroughAsItIs) {
    ASSERT_TRUE(startEngine());
    handle(button(1, 1), "B", -1);
    EXPECT_NE(lastEventLine().find(" index=-1 "), string::npos);
}

TEST_F(EnginePurge, ReleaseTakesTheQueuedHoldsOfItsButton) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(button(7, 1));
    for (const int value : {2, 3, 4})
        submit(button(7, value));
    submit(button(7, 0));
    gate.open();
    ASSERT_TRUE(waitForHandled(2));
    EXPECT_EQ(handledBehindGate(), (vector<string>{"BUTTON_PRESS 7 of B 0", "BUTTON_RELEASE 7 of B 0"}));
}

TEST_F(EnginePurge, HoldsOfOtherButtonsAndBoardsStayInTheirOrder) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(button(8, 2));
    submit(button(7, 2));
    submit(button(7, 2), "B", 1);
    submit(button(7, 3));
    submit(button(7, 2), "C", 0);
    submit(button(7, 2), "b", 0);
    submit(button(7, 2), "", 0);
    submit(button(7, 0));
    gate.open();
    ASSERT_TRUE(waitForHandled(6));
    EXPECT_EQ(handledBehindGate(), (vector<string>{"HOLD 8 of B 0", "HOLD 7 of B 1", "HOLD 7 of C 0", "HOLD 7 of b 0",
                                                   "HOLD 7 of  0", "BUTTON_RELEASE 7 of B 0"}));
}

TEST_F(EnginePurge, PressesAndReleasesOfTheSameButtonStay) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(button(7, 1));
    submit(button(7, 0));
    submit(button(7, 1));
    submit(button(7, 4));
    submit(button(7, 0));
    gate.open();
    ASSERT_TRUE(waitForHandled(4));
    EXPECT_EQ(handledBehindGate(), (vector<string>{"BUTTON_PRESS 7 of B 0", "BUTTON_RELEASE 7 of B 0",
                                                   "BUTTON_PRESS 7 of B 0", "BUTTON_RELEASE 7 of B 0"}));
}

TEST_F(EnginePurge, ButtonValuesOutsideTheHoldClassStay) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    for (const int value : {5, 127, -128, -1})
        submit(button(7, value));
    submit(button(7, 0));
    gate.open();
    ASSERT_TRUE(drain());
    EXPECT_EQ(handledBehindGate(), (vector<string>{"NONE 7 of B 0", "NONE 7 of B 0", "NONE 7 of B 0", "NONE 7 of B 0",
                                                   "BUTTON_RELEASE 7 of B 0"}));
}

TEST_F(EnginePurge, EncoderEventsOfTheSameNumberStay) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(encoder(7, 2));
    submit(encoder(7, 3));
    submit(button(7, 0));
    gate.open();
    ASSERT_TRUE(drain());
    EXPECT_EQ(handledBehindGate(), (vector<string>{"ENC_CW 7 of B 0", "ENC_CW 7 of B 0", "BUTTON_RELEASE 7 of B 0"}));
}

TEST_F(EnginePurge, OnlyAButtonsReleasePurges) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(button(7, 2));
    submit(button(7, 1));
    submit(encoder(7, 0));
    submit({.type = 4, .controlId = 7});
    submit({.type = 3, .controlId = 7});
    gate.open();
    ASSERT_TRUE(drain());
    EXPECT_EQ(handledBehindGate(), (vector<string>{"HOLD 7 of B 0", "BUTTON_PRESS 7 of B 0", "NONE 7 of B 0",
                                                   "NONE 7 of B 0", "NONE 7 of B 0"}));
}

TEST_F(EnginePurge, HoldsBehindTheReleaseStay) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit(button(7, 2));
    submit(button(7, 0));
    submit(button(7, 2));
    gate.open();
    ASSERT_TRUE(waitForHandled(2));
    EXPECT_EQ(handledBehindGate(), (vector<string>{"BUTTON_RELEASE 7 of B 0", "HOLD 7 of B 0"}));
}

TEST_F(EnginePurge, ModeAndSpeedOfAHoldDoNotProtectIt) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    holdEventWorker();
    submit({.headerByte = 9, .type = 1, .controlId = 7, .value = 2, .speed = 3, .mode = 1, .trailerWord = 4});
    submit(button(7, 0, 0));
    gate.open();
    ASSERT_TRUE(waitForHandled(1));
    EXPECT_EQ(handledBehindGate(), vector<string>{"BUTTON_RELEASE 7 of B 0"});
}
