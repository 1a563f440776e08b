#include "tests/unit/mapping/mapping_fixture.h"

using std::string;
using std::vector;

/// The hold worker. The engine's clock stays at 1 s unless a test moves it.
class HoldRepeaterTest : public MappingTest {
protected:
    void SetUp() override {
        addControl(30, "MAP_LEFT", R"("PRESS":{"":"LEFT"},"HOLD":{"":"LEFT_HELD"})");
        addControl(31, "MAP_UP", R"("PRESS":{"":"UP"})");
        addControl(32, "MAP_DOWN", R"("RELEASE":{"":"DOWN"})");
        engineHost.setNow(now);
    }

    void advance(std::int64_t nanoseconds) {
        now += nanoseconds;
        engineHost.setNow(now);
    }

    /// Lets the hold worker look at its table some more. With an empty table it looks once a period.
    void letHoldsPoll(std::size_t times = 200) { ASSERT_TRUE(waitForClockReads(HoldWorker, times)); }

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

TEST_F(HoldRepeaterTest, RepeatsEachPeriodPastTheRateLimitUntilTheRelease) {
    config.mobiflight.mapHoldRepeatMs = 25;
    config.mobiflight.rpnRateLimitMs = 60'000;
    connectModuleAndStartEngine();
    // A hold without any command is not entered.
    handle(button(32, 2));
    handle(button(30, 2));
    letHoldsPoll();
    EXPECT_EQ(writtenCount(), 0U);
    for (int period = 0; period < 3; ++period) {
        expectSendAfter(25 * msNs);
    }
    // The same button in another mode is another hold.
    handle(button(30, 0, 1));
    expectSendAfter(25 * msNs);
    handle(button(30, 0));
    advance(1000 * msNs);
    letHoldsPoll(4);
    EXPECT_EQ(writtenCount(), 8U);
    EXPECT_EQ(sim.commands().back(), "MF.DummyCmd");
}

TEST_F(HoldRepeaterTest, PressEndsARunningHoldOfItsButtonBeforeItIsSent) {
    connectModuleAndStartEngine();
    handle(button(30, 2));
    holdUp(SimCall::SetClientData);
    submit(button(30, 1));
    EXPECT_TRUE(gate.waitForArrival());
    // The press is being sent. A hold that still ran would come due now and be sent behind it.
    advance(1000 * msNs);
    EXPECT_TRUE(waitForClockReads(HoldWorker, 4));
    gate.open();
    EXPECT_TRUE(drain());
    EXPECT_EQ(rpnSent(), vector<string>{"LEFT"});
}

TEST_F(HoldRepeaterTest, HoldReleasedDuringTheSendBeforeItsOwnIsSkipped) {
    connectModuleAndStartEngine();
    handle(button(30, 2));
    handle(button(31, 2));
    holdUp(SimCall::SetClientData);
    advance(10 * msNs);
    EXPECT_TRUE(gate.waitForArrival());
    // The worker holds no mutex while it sends, or these would wait for it.
    handle(button(30, 0));
    handle(button(31, 0));
    gate.open();
    // Lets the worker come to the end of its pass.
    engine.stop();
    EXPECT_EQ(writtenCount(), 2U);
}

TEST_F(HoldRepeaterTest, PollsWithoutAnySleepWhileAHoldIsActive) {
    config.mobiflight.mapHoldRepeatMs = 1'000'000;
    connectModuleAndStartEngine();
    handle(button(30, 2));
    // A worker that sleeps one millisecond a turn would need most of a minute.
    EXPECT_TRUE(waitForClockReads(HoldWorker, 100'000));
    EXPECT_EQ(writtenCount(), 0U);
}

TEST_F(HoldRepeaterTest, WaitsWhileNoHoldIsActive) {
    config.mobiflight.mapHoldRepeatMs = 1'000'000;
    connectModuleAndStartEngine();
    ASSERT_TRUE(waitUntil([this] { return clockReads(HoldWorker) >= 2; }));
    const std::size_t before = clockReads(HoldWorker);
    for (int count = 0; count < 50; ++count) {
        handle(button(31, 1));
    }
    // Woken by each press, which ends a hold that isn't there, it goes back to its wait.
    EXPECT_LE(clockReads(HoldWorker) - before, 200U);
}

TEST_F(HoldRepeaterTest, LetsEventsThroughWhileItPolls) {
    connectModuleAndStartEngine();
    for (int count = 0; count < 300; ++count) {
        submit(button(30, 2));
        submit(button(31, 2));
        submit(button(30, 1));
    }
    ASSERT_TRUE(drain());
    EXPECT_EQ(writtenCount(), 600U);
}

TEST_F(HoldRepeaterTest, StopOfTheEngineForgetsTheHolds) {
    connectModuleAndStartEngine();
    handle(button(30, 2));
    expectSendAfter(10 * msNs);
    engine.stop();
    ASSERT_TRUE(startEngine());
    advance(100 * msNs);
    letHoldsPoll(4);
    EXPECT_EQ(rpnSent(), vector<string>{"LEFT_HELD"});
}

TEST_F(HoldRepeaterTest, FailedSendsAreWarningsAndTheHoldGoesOn) {
    connectSimulator();
    ASSERT_TRUE(startEngine());
    handle(button(31, 1));
    handle(button(30, 2));
    for (std::size_t period = 1; period <= 2; ++period) {
        advance(10 * msNs);
        ASSERT_TRUE(waitUntil([&] { return warnings().size() == 1 + period; }));
    }
    EXPECT_EQ(warnings(), (vector<string>{"[WARN] Managed map press send failed for MAP_UP: MobiFlight not ready",
                                          "[WARN] Managed map hold send failed: MobiFlight not ready",
                                          "[WARN] Managed map hold send failed: MobiFlight not ready"}));
}
