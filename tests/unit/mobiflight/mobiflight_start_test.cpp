#include "tests/unit/mobiflight/mobiflight_fixture.h"

using MobiFlightStart = MobiFlightFixture;

TEST_F(MobiFlightStart, DisabledClientStartsWithoutRunningAnything) {
    config.enabled = false;
    EXPECT_TRUE(start());
    EXPECT_EQ(host.threadsStarted(), 0U);
    openSession();
    sim.takeCalls();
    client.onSimConnectState(true);
    client.onSimConnectState(false);
    confirm();
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
}

TEST_F(MobiFlightStart, DisabledClientHandsOnNoVariables) {
    config.enabled = false;
    ASSERT_TRUE(start());
    bool called = false;
    client.setLVarHandler([&](const std::string&) { called = true; });
    const std::uint8_t text[] = {'1', 0};
    client.onClientData(0x1201, text, 2);
    EXPECT_FALSE(called);
}

TEST_F(MobiFlightStart, RunningClientRefuses) {
    ASSERT_TRUE(start());
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "MobiFlight client already running");
    EXPECT_EQ(host.threadsStarted(), 1U);
}

TEST_F(MobiFlightStart, RefusedStartOfARunningClientTakesTheNewSettingsAllTheSame) {
    becomeReady();
    config.rpnRateLimitMs = 40;
    EXPECT_FALSE(start());
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 40);
}

TEST_F(MobiFlightStart, RunningClientCanBeDisabledByAnotherStart) {
    becomeReady();
    config.enabled = false;
    EXPECT_TRUE(start());
    EXPECT_FALSE(queue("a"));
    EXPECT_EQ(error, "MobiFlight disabled");
}

TEST_F(MobiFlightStart, RefusedThreadIsReportedAndLeavesTheCallbackSet) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "Failed to start MobiFlight worker: " + FakeHost::refusalText());
    EXPECT_FALSE(queue("a"));
    EXPECT_EQ(error, "MobiFlight not running");
    std::string seen;
    client.setLVarHandler([&](const std::string& text) { seen = text; });
    auto message = FakeSimConnect::dataMessage(simConnectRecvClientData, 0x1201, {'7', 0});
    SimConnectClientAccess::dispatch(reinterpret_cast<SimConnectRecv*>(message.data()),
                                     static_cast<std::uint32_t>(message.size()), &simConnect);
    EXPECT_EQ(seen, "7");
    simConnect.setClientDataCallback(nullptr);
}

TEST_F(MobiFlightStart, ClientStartsAfterARefusedThread) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    host.refuseThreadsAfter(1);
    becomeReady();
}

TEST_F(MobiFlightStart, StopWithoutStartDoesNothing) {
    client.stop();
    client.stop();
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightStart, StopClearsReadinessAndTheCallback) {
    becomeReady();
    stop();
    EXPECT_FALSE(client.isReady());
    std::string reason;
    EXPECT_FALSE(client.sendRpnNow("a", reason));
    EXPECT_EQ(reason, "MobiFlight not running");
    auto message = FakeSimConnect::dataMessage(simConnectRecvClientData, 0x1200, {});
    const std::string text = "MF.Clients.Add.bridge.Finished";
    message.insert(message.end(), text.begin(), text.end());
    SimConnectClientAccess::dispatch(reinterpret_cast<SimConnectRecv*>(message.data()),
                                     static_cast<std::uint32_t>(message.size()), &simConnect);
    EXPECT_FALSE(client.isReady());
}

TEST_F(MobiFlightStart, StopDropsTheHandler) {
    bool called = false;
    client.setLVarHandler([&](const std::string&) { called = true; });
    ASSERT_TRUE(start());
    client.stop();
    const std::uint8_t text[] = {'1', 0};
    client.onClientData(0x1201, text, 2);
    EXPECT_FALSE(called);
}

TEST_F(MobiFlightStart, StopEmptiesTheQueue) {
    becomeReady();
    holdWorkerAtGate();
    ASSERT_TRUE(queue("a"));
    ASSERT_TRUE(queue("b", RpnKind::Hold));
    ASSERT_TRUE(queue("c", RpnKind::Encoder, 3));
    std::thread stopper([this] { client.stop(); });
    EXPECT_TRUE(waitUntil([this] { return !client.queueRpn("probe", RpnKind::Normal, 0, error); }));
    gate.open();
    stopper.join();
    EXPECT_EQ(sinceHandshake(), pairs({"first"}));
    EXPECT_TRUE(idle());
}

TEST_F(MobiFlightStart, StopWaitsForARetrysSleep) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a"));
    ASSERT_EQ(host.waitForSleep(), 100);
    stop();
    EXPECT_TRUE(idle());
}

TEST_F(MobiFlightStart, StoppedClientStartsAgain) {
    becomeReady();
    stop();
    ASSERT_TRUE(start());
    client.onSimConnectState(true);
    ASSERT_TRUE(waitUntil([this] { return sim.commands().back() == registration; }));
    registerClient();
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(written(2), pairs({"a"}));
}

TEST_F(MobiFlightStart, StopNeverMissesAWorkerThatIsAboutToWait) {
    host.letSleepsPass();
    for (int time = 0; time < 200; ++time) {
        ASSERT_TRUE(start());
        client.stop();
    }
}

TEST_F(MobiFlightStart, DestructorStops) {
    {
        MobiFlightClient shortLived(sim.library(), host.record());
        ASSERT_TRUE(shortLived.start(&simConnect, config, error));
    }
    // The callback has gone with it: nothing is called on what was destroyed.
    auto message = FakeSimConnect::dataMessage(simConnectRecvClientData, 0x1201, {'7', 0});
    SimConnectClientAccess::dispatch(reinterpret_cast<SimConnectRecv*>(message.data()),
                                     static_cast<std::uint32_t>(message.size()), &simConnect);
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightStart, SessionNewsOfAClientThatDoesNotRunAreIgnored) {
    client.onSimConnectState(true);
    client.onSimConnectState(false);
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightStart, WithoutASimConnectClientTheChannelsAreUnavailable) {
    ASSERT_TRUE(client.start(nullptr, config, error));
    client.onSimConnectState(true);
    EXPECT_EQ(log.lines(), (Lines{"[WARN] MobiFlight channel initialization failed: SimConnect client unavailable"}));
    EXPECT_FALSE(Access::write(client, "a", error));
    EXPECT_EQ(error, "SimConnect client unavailable");
}
