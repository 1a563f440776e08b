#include "tests/unit/mobiflight/mobiflight_fixture.h"

// Queueing and sending.

class MobiFlightSending : public MobiFlightFixture {
protected:
    ~MobiFlightSending() override { stop(); }

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

TEST_F(MobiFlightSending, FailedCommandIsLoggedAndNotRepeated) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail, 0, simConnectFail});
    ASSERT_TRUE(queue("a"));
    ASSERT_TRUE(queue("b"));
    EXPECT_EQ(written(), (Lines{set("a"), set("b"), dummy}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{sendFailure, dummyFailure}));
}

TEST_F(MobiFlightSending, DetentsOfAFailedBurstAreGone) {
    becomeReady();
    sim.script(SimCall::SetClientData, {0, 0, simConnectFail, 0, simConnectFail});
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 5));
    ASSERT_TRUE(queue("b", RpnKind::Encoder, 5));
    EXPECT_EQ(written(), (Lines{set("a"), dummy, set("a"), set("b"), dummy}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{sendFailure, dummyFailure}));
}

TEST_F(MobiFlightSending, DetentsThatComeDuringABurstExtendIt) {
    becomeReady();
    holdAtGate("a", RpnKind::Encoder);
    ASSERT_TRUE(queue("b"));
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 2));
    gate.open();
    EXPECT_EQ(written(), pairs({"a", "a", "a", "b"}));
}

TEST_F(MobiFlightSending, DetentsLeftAfterAFailedBurstGoToTheBackOfTheQueue) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail});
    holdAtGate("a", RpnKind::Encoder, 5);
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 1));
    ASSERT_TRUE(queue("b"));
    gate.open();
    EXPECT_TRUE(waitUntil([this] { return sinceHandshake().size() == 5; }));
    Lines expected = pairs({"b", "a"});
    expected.insert(expected.begin(), set("a"));
    EXPECT_EQ(sinceHandshake(), expected);
}

TEST_F(MobiFlightSending, BurstStopsEarlyWhenTheClientStops) {
    becomeReady();
    holdAtGate("a", RpnKind::Encoder, 1000000);
    stopAtGate();
    EXPECT_EQ(sinceHandshake(), pairs({"a"}));
}

TEST_F(MobiFlightSending, WriteInASessionThatIsEndingFails) {
    becomeReady();
    sim.setHook([this](SimCall call) {
        if (call == SimCall::Close) {
            EXPECT_FALSE(sendNow("a"));
        }
    });
    error = "";
    endSession();
    EXPECT_EQ(error, "");
    EXPECT_TRUE(log.has("[WARN] MobiFlight send failed: SimConnect is not connected"));
    EXPECT_EQ(sinceHandshake(), Lines());
}

TEST_F(MobiFlightSending, SendNowWritesOnTheCallersThreadPastQueueAndRateLimit) {
    config.rpnRateLimitMs = 100;
    host.letSleepsPass();
    becomeReady();
    host.holdSleeps();
    host.setNow(5'000'000'000);
    std::thread::id writer;
    sim.setHook([&](SimCall) { writer = std::this_thread::get_id(); });
    ASSERT_TRUE(sendNow("a"));
    host.setNow(5'040'000'000);
    ASSERT_TRUE(queue("waits"));
    EXPECT_EQ(host.waitForSleep(), 60) << "what was sent at once counts for the limit";
    ASSERT_TRUE(sendNow("b"));
    sim.setHook(nullptr);
    EXPECT_EQ(writer, std::this_thread::get_id());
    EXPECT_EQ(sinceHandshake(), pairs({"a", "b"}));
}

TEST_F(MobiFlightSending, SendNowEntersNoTable) {
    becomeReady();
    gateWrites();
    std::thread sender([this] {
        std::string reason;
        EXPECT_TRUE(client.sendRpnNow("a", reason));
    });
    ASSERT_TRUE(gate.waitForSomebody());
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    gate.open();
    sender.join();
    EXPECT_EQ(written(), pairs({"a", "a"}));
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
    std::atomic<int> left{2 * detents};
    gate.close();
    // Each write of the command adds the next detent, so that the burst looks for more after each.
    sim.setHook([&](SimCall call) {
        gate.pass();
        const int turn = --left;
        std::string reason;
        if (call == SimCall::SetClientData && turn > 1 && turn % 2 == 1) {
            client.queueRpn("a", RpnKind::Encoder, 1, reason);
        }
    });
    ASSERT_TRUE(queue("a", RpnKind::Encoder));
    ASSERT_TRUE(gate.waitForSomebody());
    std::atomic<bool> calling{false};
    std::thread sender([&] {
        std::string reason;
        calling = true;
        EXPECT_TRUE(client.sendRpnNow("now", reason));
    });
    EXPECT_TRUE(waitUntil([&] { return calling.load(); }));
    gate.open();
    sender.join();
    sim.setHook(nullptr);
    const Lines all = sinceHandshake();
    EXPECT_EQ(std::count(all.begin(), all.end(), set("a")), std::ptrdiff_t{detents});
    EXPECT_EQ(std::find(all.begin(), all.end(), set("now")) - all.begin(), 2 * std::ptrdiff_t{detents});
}

// Waiting: for a session, for the confirmation, for the rate limit.

class MobiFlightWaiting : public MobiFlightFixture {
protected:
    ~MobiFlightWaiting() override { stop(); }

    /// Has the worker asleep for the rate limit over this command of a session that is ready.
    void holdInRateLimit(RpnKind kind) {
        config.rpnRateLimitMs = 100;
        host.letSleepsPass();
        becomeReady();
        host.holdSleeps();
        ASSERT_TRUE(queue("a", kind));
        ASSERT_EQ(host.waitForSleep(), 100);
    }

    /// The worker wakes in a new session, which registers; gives what that one is sent.
    Lines wakeInNewSession() {
        const std::size_t before = sim.commands().size();
        gate.open();
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
    Lines expected = pairs({"a", "b", "c", "c"});
    expected.insert(expected.begin(), registration);
    expected.insert(expected.end(), {clearText, addText});
    EXPECT_TRUE(waitForCommands(expected));
}

TEST_F(MobiFlightWaiting, CommandThatCameDuringTheAttachmentLetsTheRegistrationPass) {
    ASSERT_TRUE(start());
    sim.setHook([this](SimCall call) {
        if (call != SimCall::MapClientDataNameToId) {
            return;
        }
        sim.setHook(nullptr);
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
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 4));
    EXPECT_EQ(host.nextSleep(), 100);
    host.endSleep();
    Lines expected = pairs({"a", "a", "a", "a"});
    expected.insert(expected.begin(), {registration, clearText, addText});
    EXPECT_TRUE(waitForCommands(expected));
    EXPECT_EQ(host.sleeps().size(), 3U);
    // The limit spans sessions.
    changeSession();
    EXPECT_EQ(host.waitForSleep(), 100);
}

TEST_F(MobiFlightWaiting, WithoutARateLimitNothingWaits) {
    config.rpnRateLimitMs = 0;
    becomeReady();
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(written(), pairs({"a"}));
    EXPECT_EQ(host.sleeps(), std::vector<std::int64_t>());
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

TEST_F(MobiFlightWaiting, CommandsThatWaitAreNotSentToTheNextSession) {
    becomeReady();
    holdAtGate("first");
    for (const RpnKind kind : allKinds) {
        ASSERT_TRUE(queue("a", kind));
    }
    changeSession();
    EXPECT_EQ(wakeInNewSession(), Lines());
    EXPECT_EQ(sentCount("a"), 0);
}

TEST_F(MobiFlightWaiting, CommandHeldUntilTheSessionOpensIsNotSentToIt) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a"));
    ASSERT_EQ(host.waitForSleep(), 100);
    openSession();
    EXPECT_EQ(wakeInNewSession(), Lines());
    EXPECT_EQ(sentCount("a"), 0);
}

TEST_F(MobiFlightWaiting, CommandHeldForTheConfirmationIsNotSentToTheNextSession) {
    registering();
    ASSERT_TRUE(queue("a"));
    ASSERT_EQ(host.waitForSleep(), 50);
    changeSession();
    EXPECT_EQ(wakeInNewSession(), Lines());
    EXPECT_EQ(sentCount("a"), 0);
}

class MobiFlightRateLimitedKind : public MobiFlightWaiting, public testing::WithParamInterface<RpnKind> {
protected:
    ~MobiFlightRateLimitedKind() override { stop(); }
};

TEST_P(MobiFlightRateLimitedKind, IsNotSentToTheNextSession) {
    holdInRateLimit(GetParam());
    changeSession();
    ASSERT_TRUE(queue("a", GetParam()));
    EXPECT_EQ(wakeInNewSession(), Lines());
    // That of the new session came before its confirmation, and was sent once.
    EXPECT_EQ(sentCount("a"), 1);
    EXPECT_EQ(log.linesWith("send failed"), Lines());
}

TEST_P(MobiFlightRateLimitedKind, FailsWhileTheSessionStaysLostUnlessItHasNothingLeftToSend) {
    holdInRateLimit(GetParam());
    endSession();
    ASSERT_TRUE(queue("b"));
    // The worker is done with "a" and waits for a session with "b".
    EXPECT_EQ(host.nextSleep(), 100);
    const Lines failure{"[WARN] MobiFlight send failed: SimConnect is not connected"};
    EXPECT_EQ(log.linesWith("send failed"), GetParam() == RpnKind::Encoder ? Lines() : failure);
    EXPECT_EQ(sentCount("a"), 0);
}

INSTANTIATE_TEST_SUITE_P(AllKinds, MobiFlightRateLimitedKind,
                         testing::Values(RpnKind::Normal, RpnKind::Hold, RpnKind::Encoder));
