#include "tests/unit/mobiflight/mobiflight_fixture.h"

// Start, stop, and what the module sends.

class MobiFlightStart : public MobiFlightFixture {
protected:
    MobiFlightStart() {
        client.setLVarHandler([](const std::string& text) { logInfo("variable " + text); });
    }

    static constexpr const char* variableLine = "[INFO] variable 7";
};

TEST_F(MobiFlightStart, DisabledClientStartsWithoutRunningAnything) {
    config.enabled = false;
    EXPECT_TRUE(start());
    EXPECT_EQ(host.threadsStarted(), 0U);
    client.onSimConnectState(true);
    client.onSimConnectState(false);
    confirm();
    respondVariable();
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightStart, RunningClientRefusesButTakesTheNewSettings) {
    becomeReady();
    config.rpnRateLimitMs = 40;
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "MobiFlight client already running");
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 40);
    config.enabled = false;
    EXPECT_TRUE(start());
    EXPECT_FALSE(queue("a"));
    EXPECT_EQ(error, "MobiFlight disabled");
}

TEST_F(MobiFlightStart, RefusedThreadIsReportedAndLeavesTheCallbackSet) {
    host.refuseThreadsAfter(0);
    EXPECT_FALSE(start());
    EXPECT_EQ(error, "Failed to start MobiFlight worker: " + FakeHost::refusalText());
    openSession();
    deliver(0x1201, "7");
    EXPECT_TRUE(log.has(variableLine));
}

TEST_F(MobiFlightStart, StoppedClientIgnoresSessions) {
    client.stop();
    ASSERT_TRUE(start());
    client.stop();
    client.onSimConnectState(true);
    client.onSimConnectState(false);
    EXPECT_EQ(sim.calls(), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightStart, StopEmptiesTheQueueAndDropsTheCallbacks) {
    becomeReady();
    holdAtGate("first");
    for (const RpnKind kind : allKinds) {
        ASSERT_TRUE(queue("a", kind));
    }
    stopAtGate();
    EXPECT_EQ(sinceHandshake(), pairs({"first"}));
    EXPECT_FALSE(client.isReady());
    respondVariable();
    deliver(0x1200, "MF.Clients.Add.bridge.Finished");
    EXPECT_FALSE(client.isReady());
    EXPECT_FALSE(log.has(variableLine));
}

TEST_F(MobiFlightStart, RestartedClientHasNoSessionUntilTheNextOneOpens) {
    becomeReady();
    client.stop();
    ASSERT_TRUE(start());
    EXPECT_FALSE(sendNow("a"));
    EXPECT_EQ(error, "SimConnect is not connected");
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 100);
    host.letSleepsPass();
    client.onSimConnectState(true);
    ASSERT_TRUE(waitUntil([this] { return sim.commands().back() == registration; }));
    registerClient();
    EXPECT_EQ(written(), Lines());
    EXPECT_EQ(sentCount("a"), 0);
}

TEST_F(MobiFlightStart, StopNeverMissesAWorkerThatIsAboutToWait) {
    for (int time = 0; time < 200; ++time) {
        ASSERT_TRUE(start());
        client.stop();
    }
}

TEST_F(MobiFlightStart, DestructorStopsAndDropsTheCallback) {
    {
        MobiFlightClient shortLived(sim.library(), host.record());
        shortLived.setLVarHandler([](const std::string&) { logInfo("destroyed"); });
        ASSERT_TRUE(shortLived.start(&simConnect, config, error));
    }
    openSession();
    deliver(0x1201, "7");
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected"}));
}

TEST_F(MobiFlightStart, WithoutASimConnectClientNothingCanBeAttachedOrSent) {
    ASSERT_TRUE(client.start(nullptr, config, error));
    client.onSimConnectState(true);
    confirm();
    const std::string unavailable = "SimConnect client unavailable";
    const std::string sendFailed = "[WARN] MobiFlight send failed: " + unavailable;
    EXPECT_TRUE(waitUntil([&] { return log.linesWith("send failed") == Lines(2, sendFailed); }));
    EXPECT_EQ(log.lines().front(), "[WARN] MobiFlight channel initialization failed: " + unavailable);
}

TEST_F(MobiFlightStart, VariablesGoToTheHandlerAndThenToTheDebugLog) {
    // The client starts after the session, so that no line about a registration comes in between.
    openSession();
    ASSERT_TRUE(start());
    log.clear();
    deliver(0x1201, "7");
    // An infinity is no value.
    respondVariable({0, 0, 0x80, 0x7F});
    Logger::instance().setDebugEnabled(false);
    respondVariable();
    EXPECT_EQ(log.lines(), (Lines{variableLine, "[DEBUG] MobiFlight LVars: 7", variableLine}));
}

TEST_F(MobiFlightStart, HandlerMayRemoveItself) {
    ASSERT_TRUE(start());
    client.setLVarHandler([this](const std::string&) { client.setLVarHandler(nullptr); });
    respondVariable();
    respondVariable();
    EXPECT_EQ(log.linesWith("LVars").size(), 2U);
}
