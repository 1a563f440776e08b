#include "tests/unit/mobiflight/mobiflight_fixture.h"

// Queueing and sending.

class MobiFlightSending : public MobiFlightFixture {
protected:
    static constexpr const char* sendFailure = "[WARN] MobiFlight send failed: SimConnect_SetClientData failed "
                                               "(0x80004005)";
    static constexpr const char* dummyFailure = "[WARN] MobiFlight dummy send failed: SimConnect_SetClientData failed "
                                                "(0x80004005)";
};

TEST_F(MobiFlightSending, RefusalsNameWhatIsMissingInOrder) {
    const auto refusals = [this] {
        std::string queueing = "accepted";
        std::string sending = "accepted";
        EXPECT_FALSE(client.queueRpn("", RpnKind::Encoder, 0, queueing));
        EXPECT_FALSE(client.sendRpnNow("", sending));
        return Lines{queueing, sending};
    };
    config.enabled = false;
    ASSERT_TRUE(start());
    EXPECT_EQ(refusals(), Lines(2, "MobiFlight disabled"));
    config.enabled = true;
    ASSERT_TRUE(start());
    client.stop();
    EXPECT_EQ(refusals(), Lines(2, "MobiFlight not running"));
    ASSERT_TRUE(start());
    EXPECT_EQ(refusals(), (Lines{"Empty RPN command", "SimConnect is not connected"}));
    openSession();
    EXPECT_EQ(refusals(), (Lines{"Empty RPN command", "MobiFlight not ready"}));
    confirm();
    EXPECT_EQ(refusals(), Lines(2, "Empty RPN command"));
    endSession();
    EXPECT_EQ(refusals(), (Lines{"Empty RPN command", "SimConnect is not connected"}));
}

TEST_F(MobiFlightSending, EveryCommandHasItsDummyBehindIt) {
    becomeReady();
    ASSERT_TRUE(queue("a", RpnKind::Normal, 5));
    ASSERT_TRUE(queue("b", RpnKind::Hold, 5));
    ASSERT_TRUE(queue("c", RpnKind::Encoder, 2));
    ASSERT_TRUE(queue("MF.DummyCmd"));
    ASSERT_TRUE(queue("d", RpnKind::Normal, 0));
    EXPECT_EQ(written(), pairs({"a", "b", "c", "c", "MF.DummyCmd"}));
    client.cancelRpn("");
}

TEST_F(MobiFlightSending, SlowWriteDoesntHoldUpTheQueue) {
    becomeReady();
    holdAtGate("first");
    ASSERT_TRUE(queue("a"));
    client.cancelRpn("a");
    client.cancelRpn("first");
    ASSERT_TRUE(queue("b", RpnKind::Encoder, 2));
    gate.open();
    EXPECT_EQ(written(), pairs({"first", "b", "b"}));
}

TEST_F(MobiFlightSending, FailedCommandsAndTheRestOfTheirBurstsAreLoggedAndNotRepeated) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail, 0, simConnectFail, 0, 0, simConnectFail, 0, simConnectFail});
    ASSERT_TRUE(queue("a"));
    ASSERT_TRUE(queue("b"));
    ASSERT_TRUE(queue("c", RpnKind::Encoder, 5));
    ASSERT_TRUE(queue("d", RpnKind::Encoder, 5));
    EXPECT_EQ(written(), (Lines{set("a"), set("b"), dummy, set("c"), dummy, set("c"), set("d"), dummy}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{sendFailure, dummyFailure, sendFailure, dummyFailure}));
}

TEST_F(MobiFlightSending, DetentsLeftAfterAFailedBurstGoToTheBackOfTheQueue) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail});
    holdAtGate("a", RpnKind::Encoder, 5);
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 1));
    ASSERT_TRUE(queue("b"));
    gate.open();
    EXPECT_TRUE(waitUntil([this] { return sinceHandshake().size() == 5; }));
    EXPECT_EQ(sinceHandshake(), (Lines{set("a"), set("b"), dummy, set("a"), dummy}));
}

TEST_F(MobiFlightSending, BurstStopsEarlyWhenTheClientStops) {
    becomeReady();
    holdAtGate("a", RpnKind::Encoder, 1000000);
    stopAtGate();
    EXPECT_EQ(sinceHandshake(), pairs({"a"}));
}

TEST_F(MobiFlightSending, SendNowWritesOnTheCallersThreadPastQueueAndRateLimit) {
    becomeReadyWithRateLimit();
    host.setNow(5'000'000'000);
    std::thread::id writer;
    sim.setHook([&](SimCall) { writer = std::this_thread::get_id(); });
    ASSERT_TRUE(sendNow("a"));
    sim.setHook(nullptr);
    EXPECT_EQ(writer, std::this_thread::get_id());
    host.setNow(5'040'000'000);
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 2));
    EXPECT_EQ(host.waitForSleep(), 60) << "what was sent at once counts for the limit";
    ASSERT_TRUE(sendNow("a"));
    EXPECT_EQ(sinceHandshake(), pairs({"a", "a"}));
    // The detents of the same command are still queued.
    host.letSleepsPass();
    EXPECT_EQ(written(), pairs({"a", "a", "a", "a"}));
}

TEST_F(MobiFlightSending, SendNowThatFailsLeavesTheErrorEmpty) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail, 0, simConnectFail});
    EXPECT_FALSE(sendNow("a"));
    EXPECT_FALSE(sendNow("b"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(log.linesWith("WARN"), (Lines{sendFailure, dummyFailure}));
}

TEST_F(MobiFlightSending, SendNowComesBehindTheWholeOfABurstHoweverOftenThatIsExtended) {
    constexpr int detents = 100;
    becomeReady();
    Logger::instance().setDebugEnabled(false);
    holdAtGate("a", RpnKind::Encoder);
    // Each dummy adds the next detent, so that the burst looks for more after each.
    std::atomic<int> writes{0};
    sim.setHook([&](SimCall) {
        const int write = writes++;
        std::string reason;
        if (write % 2 == 0 && write < 2 * (detents - 1)) {
            client.queueRpn("a", RpnKind::Encoder, 1, reason);
        }
    });
    std::atomic<bool> calling{false};
    std::thread sender([&] {
        calling = true;
        std::string reason;
        EXPECT_TRUE(client.sendRpnNow("now", reason));
    });
    EXPECT_TRUE(waitUntil([&] { return calling.load(); }));
    gate.open();
    sender.join();
    sim.setHook(nullptr);
    Lines expected(detents, "a");
    expected.emplace_back("now");
    EXPECT_EQ(sinceHandshake(), pairs(expected));
}

// Waiting: for a session, for the confirmation, for the rate limit.

class MobiFlightWaiting : public MobiFlightFixture {
protected:
    /// Has this command in flight: the worker sleeps for the rate limit.
    void holdInRateLimit(RpnKind kind) {
        becomeReadyWithRateLimit();
        ASSERT_TRUE(queue("a", kind));
        ASSERT_EQ(host.waitForSleep(), 100);
    }

    /// Wakes the worker in a new session, which registers, and returns what that session is sent.
    Lines wakeInNewSession() {
        const std::size_t before = sim.commands().size();
        host.letSleepsPass();
        EXPECT_TRUE(waitUntil([&] { return sim.commands().size() > before && sim.commands().back() == registration; }));
        registerClient();
        return written();
    }
};

TEST_F(MobiFlightWaiting, WithoutASessionTheWorkerLooksEveryHundredMilliseconds) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(sim.commands(), Lines());
}

TEST_F(MobiFlightWaiting, BeforeTheConfirmationTheWorkerLooksEveryFiftyMilliseconds) {
    registering();
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 50);
    ASSERT_TRUE(queue("b", RpnKind::Hold));
    ASSERT_TRUE(queue("c", RpnKind::Encoder, 2));
    EXPECT_EQ(host.nextSleep(), 50);
    EXPECT_EQ(sim.commands(), (Lines{registration}));
    confirm();
    host.letSleepsPass();
    EXPECT_TRUE(waitForCommands(
        {registration, set("a"), dummy, set("b"), dummy, set("c"), dummy, set("c"), dummy, clearText, addText}));
}

TEST_F(MobiFlightWaiting, CommandThatCameDuringTheAttachmentLetsTheRegistrationPass) {
    ASSERT_TRUE(start());
    onNext(SimCall::MapClientDataNameToId, [this] {
        std::string reason;
        EXPECT_TRUE(client.queueRpn("a", RpnKind::Normal, 1, reason));
        EXPECT_EQ(host.waitForSleep(), 50);
    });
    openSession();
    host.letSleepsPass();
    EXPECT_TRUE(waitForCommands({registration}));
}

TEST_F(MobiFlightWaiting, RateLimitDelaysEachCommandButTheFirstAndNoDetentOfABurst) {
    config.rpnRateLimitMs = 100;
    registering();
    EXPECT_EQ(host.sleeps(), std::vector<std::int64_t>());
    confirm();
    EXPECT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(host.nextSleep(), 100);
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 2));
    EXPECT_EQ(host.nextSleep(), 100);
    host.endSleep();
    EXPECT_TRUE(waitForCommands({registration, clearText, addText, set("a"), dummy, set("a"), dummy}));
    EXPECT_EQ(host.sleeps().size(), 3U);
    // The limit spans sessions.
    changeSession();
    EXPECT_EQ(host.waitForSleep(), 100);
}

TEST_F(MobiFlightWaiting, FailedWriteDoesntCountForTheRateLimit) {
    config.rpnRateLimitMs = 100;
    sim.script(SimCall::SetClientData, {simConnectFail});
    registering();
    confirm();
    ASSERT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(sim.commands(), (Lines{registration, clearText}));
}

// The end of a session.

class MobiFlightRateLimitedKind : public MobiFlightWaiting, public testing::WithParamInterface<RpnKind> {};

TEST_P(MobiFlightRateLimitedKind, IsNotSentToTheNextSession) {
    holdInRateLimit(GetParam());
    ASSERT_TRUE(queue("waits", GetParam()));
    changeSession();
    ASSERT_TRUE(queue("a", GetParam()));
    EXPECT_EQ(wakeInNewSession(), Lines());
    EXPECT_EQ(sentCount("waits"), 0);
    // The new session's own, queued before its confirmation, was sent once.
    EXPECT_EQ(sentCount("a"), 1);
    EXPECT_EQ(log.linesWith("send failed"), Lines());
}

TEST_P(MobiFlightRateLimitedKind, FailsWhileTheSessionStaysLostUnlessItHasNothingLeftToSend) {
    holdInRateLimit(GetParam());
    endSession();
    ASSERT_TRUE(queue("b"));
    // The worker has finished "a" and waits for a session with "b".
    EXPECT_EQ(host.nextSleep(), 100);
    const Lines failure{"[WARN] MobiFlight send failed: SimConnect is not connected"};
    EXPECT_EQ(log.linesWith("send failed"), GetParam() == RpnKind::Encoder ? Lines() : failure);
    EXPECT_EQ(sentCount("a"), 0);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, MobiFlightRateLimitedKind,
                         testing::Values(RpnKind::Normal, RpnKind::Hold, RpnKind::Encoder));
