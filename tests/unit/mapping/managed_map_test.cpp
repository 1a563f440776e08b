#include "tests/unit/mapping/mapping_fixture.h"

#include <limits>

using std::string;
using std::vector;

namespace {

constexpr std::int64_t msNs = 1'000'000;

} // namespace

/// The four map buttons. The engine's clock stands still at 1 s unless a test moves it.
class ManagedMap : public MappingTest {
protected:
    void SetUp() override {
        addControl(30, "MAP_LEFT", R"("PRESS":{"":"LEFT","MFD":"MFD_LEFT"},"HOLD":{"":"LEFT_HELD"})");
        addControl(31, "MAP_UP", R"("PRESS":{"":"UP"})");
        addControl(32, "MAP_DOWN", R"("RELEASE":{"":"DOWN"})");
        addControl(33, " map_ Right", R"("CW":{"":"RIGHT"},"HOLD":{"":"RIGHT_HELD"})");
        engineHost.setNow(now);
    }

    void start() {
        connectModule();
        ASSERT_TRUE(startEngine());
    }

    void advance(std::int64_t nanoseconds) {
        now += nanoseconds;
        engineHost.setNow(now);
    }

    /// Lets the hold worker look at its table some more.
    void letHoldsPoll() { ASSERT_TRUE(waitForClockReads(HoldWorker, 200)); }

    /// The same with an empty table, when it looks once a period.
    void letIdleHoldsPoll() { ASSERT_TRUE(waitForClockReads(HoldWorker, 4)); }

    bool waitForCommands(std::size_t count) {
        return waitUntil([&] { return writtenCount() == 2 * count; });
    }

    /// Moves the clock on and expects just this one command more.
    void expectSendAfter(std::int64_t nanoseconds) {
        const std::size_t before = writtenCount();
        advance(nanoseconds - 1);
        letHoldsPoll();
        ASSERT_EQ(writtenCount(), before);
        advance(1);
        ASSERT_TRUE(waitUntil([&] { return writtenCount() >= before + 2; }));
        letHoldsPoll();
        ASSERT_EQ(writtenCount(), before + 2);
    }

    std::int64_t now = 1'000'000'000;
};

using ManagedPress = ManagedMap;
using ManagedHold = ManagedMap;
using ManagedRelease = ManagedMap;
using ManagedFailure = ManagedMap;

TEST_F(ManagedPress, SendsAtOncePastTheQueue) {
    config.mobiflight.rpnRateLimitMs = 100;
    mobiflightHost.setNow(1);
    addControl(20, "SWAP", R"("PRESS":{"":"SWAP"})");
    start();
    mobiflightHost.holdSleeps();
    handle(button(20, 1));
    ASSERT_EQ(mobiflightHost.waitForSleep(), 100);
    handle(button(31, 1));
    EXPECT_EQ(writtenCount(), 2U);
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(commandTexts(), sent({"UP", "SWAP"}));
}

TEST_F(ManagedPress, AllFourNamesTakeThisRouteInAnyCaseAndSpacing) {
    const vector<string> names = {"MAP_LEFT", "map_right", " Map_Up", "MAP_ DOWN"};
    for (std::size_t place = 0; place < names.size(); ++place)
        addControl(static_cast<std::int32_t>(40 + place), names[place], R"("PRESS":{"":")" + names[place] + R"("})");
    start();
    for (std::uint16_t id = 40; id < 44; ++id) {
        handle(button(id, 1));
        EXPECT_EQ(lastEventLine().find("rpn="), string::npos);
    }
    EXPECT_EQ(commandTexts(), sent({"MAP_LEFT", "map_right", " Map_Up", "MAP_ DOWN"}));
}

TEST_F(ManagedPress, SimilarNamesTakeTheQueue) {
    addControl(40, "MAP_LEFTT", R"("PRESS":{"":"X"})");
    addControl(41, "MAPLEFT", R"("PRESS":{"":"Y"})");
    addControl(42, "MAP_ZOOM", R"("PRESS":{"":"Z"})");
    start();
    for (std::uint16_t id = 40; id < 43; ++id) {
        handle(button(id, 1));
        EXPECT_NE(lastEventLine().find("rpn=queued"), string::npos);
    }
}

TEST_F(ManagedPress, RoleChoosesTheCommand) {
    start();
    handle(button(30, 1, 1));
    handle(button(30, 1, 0));
    EXPECT_EQ(commandTexts(), sent({"MFD_LEFT", "LEFT"}));
}

TEST_F(ManagedPress, WithoutPressCommandNothingIsSent) {
    start();
    handle(button(33, 1));
    EXPECT_EQ(commandTexts(), vector<string>{});
    EXPECT_EQ(warnings(), vector<string>{});
}

TEST_F(ManagedPress, EndsARunningHoldOfItsButtonBeforeItSendsOnce) {
    start();
    handle(button(30, 2));
    Gate gate;
    sim.setHook([&gate](SimCall call) {
        if (call == SimCall::SetClientData)
            gate.pass();
    });
    submit(button(30, 1));
    EXPECT_TRUE(gate.waitForArrival());
    // The press is being sent. A hold that still ran would come due now and be sent behind it.
    advance(1000 * msNs);
    EXPECT_TRUE(waitForClockReads(HoldWorker, 4));
    gate.open();
    EXPECT_TRUE(drain());
    EXPECT_EQ(commandTexts(), sent({"LEFT"}));
    engine.stop();
    sim.setHook(nullptr);
}

TEST_F(ManagedPress, KnobOfAManagedNameTakesTheQueue) {
    start();
    handle(encoder(33, 2));
    EXPECT_EQ(commandTexts(), sent({"RIGHT", "RIGHT"}));
    EXPECT_NE(lastEventLine().find("rpn=queued"), string::npos);
}

TEST_F(ManagedHold, FirstSendComesOnePeriodAfterTheFirstHold) {
    start();
    handle(button(30, 2));
    letHoldsPoll();
    EXPECT_EQ(writtenCount(), 0U);
    expectSendAfter(10 * msNs);
    EXPECT_EQ(commandTexts(), sent({"LEFT_HELD"}));
}

TEST_F(ManagedHold, RepeatsEachPeriodUntilTheRelease) {
    config.mobiflight.mapHoldRepeatMs = 25;
    start();
    handle(button(30, 2));
    for (int period = 0; period < 4; ++period)
        expectSendAfter(25 * msNs);
    handle(button(30, 0));
    advance(1000 * msNs);
    letIdleHoldsPoll();
    EXPECT_EQ(commandTexts(), sent(vector<string>(4, "LEFT_HELD")));
}

TEST_F(ManagedHold, BoardsRepeatsDoNotChangeThePace) {
    start();
    handle(button(30, 2));
    advance(5 * msNs);
    handle(button(30, 3));
    expectSendAfter(5 * msNs);
    advance(5 * msNs);
    handle(button(30, 4));
    expectSendAfter(5 * msNs);
}

TEST_F(ManagedHold, LateWorkerSendsOnceAndCountsFromThen) {
    start();
    handle(button(30, 2));
    expectSendAfter(10 * msNs);
    advance(95 * msNs);
    ASSERT_TRUE(waitForCommands(2));
    letHoldsPoll();
    EXPECT_EQ(writtenCount(), 4U);
    expectSendAfter(10 * msNs);
}

TEST_F(ManagedHold, WithoutHoldCommandThePressCommandRepeats) {
    start();
    handle(button(31, 2));
    expectSendAfter(10 * msNs);
    expectSendAfter(10 * msNs);
    EXPECT_EQ(commandTexts(), sent({"UP", "UP"}));
}

TEST_F(ManagedHold, WithNeitherCommandNothingStarts) {
    start();
    handle(button(32, 2));
    advance(1000 * msNs);
    letIdleHoldsPoll();
    EXPECT_EQ(commandTexts(), vector<string>{});
}

TEST_F(ManagedHold, LaterHoldRefreshesTheCommandOfItsKeyButNotItsTime) {
    // One control of one role has one command as long as the engine runs. Only two boards whose texts add up to the
    // same key, since a serial number and a role may hold the separator, bring another command to a hold that is there.
    config.outputs.devices = {{"", 0, "X|1|31|PFD", ""}};
    start();
    handle(button(30, 2, 7), "B", 0);
    advance(6 * msNs);
    handle(button(31, 2, 0), "B|0|30|X", 1);
    expectSendAfter(4 * msNs);
    expectSendAfter(10 * msNs);
    EXPECT_EQ(commandTexts(), sent({"UP", "UP"}));
}

TEST_F(ManagedHold, PeriodBelowOneMillisecondCountsAsTen) {
    connectModule();
    for (const std::int32_t configured : {0, -5, std::numeric_limits<std::int32_t>::min()}) {
        config.mobiflight.mapHoldRepeatMs = configured;
        ASSERT_TRUE(startEngine());
        handle(button(30, 2));
        expectSendAfter(10 * msNs);
        engine.stop();
    }
}

TEST_F(ManagedHold, LongestPeriodDoesNotOverflow) {
    config.mobiflight.mapHoldRepeatMs = std::numeric_limits<std::int32_t>::max();
    start();
    handle(button(30, 2));
    expectSendAfter(std::int64_t{std::numeric_limits<std::int32_t>::max()} * msNs);
}

TEST_F(ManagedHold, ButtonsBoardsAndModesHoldIndependently) {
    start();
    handle(button(30, 2, 0), "B", 0);
    handle(button(30, 2, 1), "B", 0);
    handle(button(30, 2, 0), "B", 1);
    handle(button(30, 2, 0), "C", 0);
    handle(button(31, 2, 0), "B", 0);
    advance(10 * msNs);
    ASSERT_TRUE(waitForCommands(5));
    // Each release ends its own hold alone.
    handle(button(30, 0, 1), "B", 0);
    handle(button(30, 0, 0), "B", 1);
    handle(button(31, 0, 0), "C", 0);
    advance(10 * msNs);
    ASSERT_TRUE(waitForCommands(8));
    letHoldsPoll();
    EXPECT_EQ(writtenCount(), 16U);
}

TEST_F(ManagedHold, ReleaseInAnotherModeDoesNotStopIt) {
    start();
    handle(button(30, 2, 0));
    handle(button(30, 0, 1));
    expectSendAfter(10 * msNs);
    handle(button(30, 0, 0));
    advance(100 * msNs);
    letIdleHoldsPoll();
    EXPECT_EQ(commandTexts(), sent({"LEFT_HELD"}));
}

TEST_F(ManagedHold, ReleaseWhileAnotherOfItsPassIsBeingSentSkipsIt) {
    start();
    handle(button(30, 2));
    handle(button(31, 2));
    Gate gate;
    sim.setHook([&gate](SimCall call) {
        if (call == SimCall::SetClientData)
            gate.pass();
    });
    advance(10 * msNs);
    EXPECT_TRUE(gate.waitForArrival());
    handle(button(30, 0));
    handle(button(31, 0));
    gate.open();
    // Lets the worker come to the end of its pass.
    engine.stop();
    EXPECT_EQ(writtenCount(), 2U);
    sim.setHook(nullptr);
}

TEST_F(ManagedHold, GoesPastTheRateLimit) {
    config.mobiflight.rpnRateLimitMs = 60'000;
    mobiflightHost.setNow(1);
    start();
    handle(button(30, 2));
    for (int period = 0; period < 3; ++period)
        expectSendAfter(10 * msNs);
}

TEST_F(ManagedHold, WorkerPollsWithoutAnySleepWhileAHoldIsActive) {
    config.mobiflight.mapHoldRepeatMs = 1'000'000;
    start();
    handle(button(30, 2));
    // A worker that sleeps one millisecond a turn would need most of a minute.
    EXPECT_TRUE(waitForClockReads(HoldWorker, 100'000));
    EXPECT_EQ(writtenCount(), 0U);
}

TEST_F(ManagedHold, WorkerPausesWhileNoHoldIsActive) {
    config.mobiflight.mapHoldRepeatMs = 1'000'000;
    start();
    ASSERT_TRUE(waitUntil([this] { return clockReads(HoldWorker) >= 2; }));
    const std::size_t before = clockReads(HoldWorker);
    for (int count = 0; count < 50; ++count)
        handle(button(31, 1));
    // Woken by each press, which ends a hold that isn't there, it goes back to its wait.
    EXPECT_LE(clockReads(HoldWorker) - before, 200U);
}

TEST_F(ManagedHold, EventsGetThroughWhileTheWorkerPolls) {
    start();
    for (int count = 0; count < 300; ++count) {
        submit(button(30, 2));
        submit(button(31, 2));
        submit(button(30, 1));
    }
    ASSERT_TRUE(drain());
    EXPECT_EQ(writtenCount(), 600U);
}

TEST_F(ManagedHold, StopOfTheEngineEndsIt) {
    start();
    handle(button(30, 2));
    expectSendAfter(10 * msNs);
    engine.stop();
    advance(100 * msNs);
    ASSERT_TRUE(startEngine());
    advance(100 * msNs);
    letIdleHoldsPoll();
    EXPECT_EQ(commandTexts(), sent({"LEFT_HELD"}));
}

TEST_F(ManagedHold, RunsOnWhenItsBoardGoesAway) {
    start();
    startHid();
    auto board = plugBoard(1);
    hid.scanDevices();
    board->hold(30);
    ++submitted;
    ASSERT_TRUE(drain());
    bus.unplug(board);
    hid.scanDevices();
    expectSendAfter(10 * msNs);
    expectSendAfter(10 * msNs);
}

TEST_F(ManagedRelease, TakesQueuedCopiesOfItsCommandsOutOfTheQueue) {
    config.mobiflight.rpnRateLimitMs = 100;
    mobiflightHost.setNow(1);
    addControl(20, "SWAP", R"("PRESS":{"":"SWAP"})");
    start();
    mobiflightHost.holdSleeps();
    handle(button(20, 1));
    ASSERT_EQ(mobiflightHost.waitForSleep(), 100);
    string error;
    for (const char* command : {"LEFT", "LEFT_HELD", "LEFT", "UP"})
        ASSERT_TRUE(mobiflight.queueRpn(command, RpnKind::Normal, 1, error));
    handle(button(30, 0));
    mobiflightHost.letSleepsPass();
    EXPECT_EQ(commandTexts(), sent({"SWAP", "UP"}));
}

TEST_F(ManagedRelease, SendsNoReleaseCommand) {
    start();
    handle(button(32, 0));
    EXPECT_EQ(commandTexts(), vector<string>{});
}

TEST_F(ManagedRelease, WithoutAHoldIsHarmless) {
    start();
    handle(button(30, 0));
    handle(button(30, 0));
    EXPECT_EQ(commandTexts(), vector<string>{});
    EXPECT_EQ(warnings(), vector<string>{});
}

TEST_F(ManagedFailure, PressWithoutASessionIsAWarning) {
    string error;
    ASSERT_TRUE(mobiflight.start(&simConnect, config.mobiflight, error));
    ASSERT_TRUE(startEngine());
    handle(button(30, 1));
    EXPECT_EQ(warnings(),
              vector<string>{"[WARN] Managed map press send failed for MAP_LEFT: SimConnect is not connected"});
}

TEST_F(ManagedFailure, PressOfAStoppedClientIsAWarning) {
    string error;
    ASSERT_TRUE(mobiflight.start(&simConnect, config.mobiflight, error));
    mobiflight.stop();
    ASSERT_TRUE(startEngine());
    handle(button(30, 1));
    EXPECT_EQ(warnings(), vector<string>{"[WARN] Managed map press send failed for MAP_LEFT: MobiFlight not running"});
}

TEST_F(ManagedFailure, PressBeforeTheRegistrationIsAWarningAndIsLost) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(33, 1));
    handle(button(30, 1));
    EXPECT_EQ(warnings(), vector<string>{"[WARN] Managed map press send failed for MAP_LEFT: MobiFlight not ready"});
    EXPECT_EQ(writtenCount(), 0U);
}

TEST_F(ManagedFailure, FailedWriteLeavesTheReasonToTheClient) {
    start();
    sim.script(SimCall::SetClientData, {simConnectFail});
    handle(button(30, 1));
    EXPECT_EQ(warnings(), (vector<string>{"[WARN] MobiFlight send failed: SimConnect_SetClientData failed (0x80004005)",
                                          "[WARN] Managed map press send failed for MAP_LEFT: "}));
}

TEST_F(ManagedFailure, FailedPressStartsNoHold) {
    start();
    sim.script(SimCall::SetClientData, {simConnectFail});
    handle(button(30, 1));
    const std::size_t before = writtenCount();
    advance(100 * msNs);
    letIdleHoldsPoll();
    EXPECT_EQ(writtenCount(), before);
}

TEST_F(ManagedFailure, HoldWarnsEachPeriodAndGoesOn) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(30, 2));
    for (std::size_t period = 1; period <= 3; ++period) {
        advance(10 * msNs);
        ASSERT_TRUE(waitUntil([&] { return warnings().size() == period; }));
    }
    EXPECT_EQ(warnings(), vector<string>(3, "[WARN] Managed map hold send failed: MobiFlight not ready"));
    sim.deliverText(0x1200, "MF.Clients.Add.VantrelBridgeHID.Finished", 256);
    ASSERT_TRUE(waitUntil([this] { return writtenCount() == 2; }));
    advance(10 * msNs);
    ASSERT_TRUE(waitUntil([this] { return writtenCount() == 4; }));
    EXPECT_EQ(warnings().size(), 3U);
}
