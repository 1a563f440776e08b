#include "tests/unit/mobiflight/mobiflight_fixture.h"

/// What a session's end leaves behind, in the client and in the worker's hand.
class SessionChange : public MobiFlightFixture {
protected:
    ~SessionChange() override { stop(); }

    std::string refusalOfSendNow() {
        EXPECT_FALSE(client.sendRpnNow("a", error));
        return error;
    }

    /// The worker sleeps for the rate limit over this command of a session that is ready.
    void holdInRateLimit(RpnKind kind, std::uint32_t amount = 1) {
        config.rpnRateLimitMs = 100;
        host.letSleepsPass();
        becomeReady();
        host.holdSleeps();
        ASSERT_TRUE(queue("a", kind, amount));
        ASSERT_EQ(host.waitForSleep(), 100);
    }

    /// The worker sleeps over this command until the module confirms the registration, which was sent.
    void holdInReadyWait(RpnKind kind, std::uint32_t amount = 1) {
        ASSERT_TRUE(start());
        openSession();
        ASSERT_TRUE(waitForCommands({registration}));
        ASSERT_TRUE(queue("a", kind, amount));
        ASSERT_EQ(host.waitForSleep(), 50);
    }

    void changeSession() {
        endSession();
        openSession();
    }

    /// The worker wakes in the new session, which registers.
    void wakeAndRegister() {
        host.letSleepsPass();
        ASSERT_TRUE(waitUntil([this] { return sim.commands().size() > 3 && sim.commands().back() == registration; }));
        registerClient();
    }

    std::ptrdiff_t sentCount(const std::string& rpn) {
        const Lines all = sim.commands();
        return std::count(all.begin(), all.end(), set(rpn));
    }

    void expectOldCommandIsDropped(RpnKind kind) {
        holdInRateLimit(kind);
        changeSession();
        wakeAndRegister();
        ASSERT_TRUE(queue("b"));
        EXPECT_EQ(written(2), pairs({"b"}));
        EXPECT_EQ(sentCount("a"), 0);
        EXPECT_EQ(log.linesWith("send failed"), Lines());
    }

    void expectUnconfirmedCommandIsDropped(RpnKind kind, std::uint32_t amount = 1) {
        holdInReadyWait(kind, amount);
        changeSession();
        host.letSleepsPass();
        ASSERT_TRUE(waitForCommands({registration, registration}));
        EXPECT_TRUE(idle());
        registerClient();
        ASSERT_TRUE(queue("b"));
        EXPECT_EQ(written(2), pairs({"b"}));
        EXPECT_EQ(sentCount("a"), 0);
    }

    void expectFailureWhileTheSessionStaysLost(RpnKind kind) {
        holdInRateLimit(kind);
        endSession();
        host.endSleep();
        const Lines expected{"[WARN] MobiFlight send failed: SimConnect is not connected"};
        EXPECT_TRUE(waitUntil([&] { return log.linesWith("send failed") == expected; }));
        EXPECT_EQ(sentCount("a"), 0);
    }
};

TEST_F(SessionChange, LostSessionIsNamedBeforeTheMissingRegistration) {
    becomeReady();
    endSession();
    EXPECT_EQ(refusalOfSendNow(), "SimConnect is not connected");
}

TEST_F(SessionChange, AfterALostSessionTheWorkerLooksEveryHundredMilliseconds) {
    becomeReady();
    endSession();
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 100);
}

TEST_F(SessionChange, RestartedClientIsWithoutASessionUntilToldOfOne) {
    becomeReady();
    client.stop();
    ASSERT_TRUE(start());
    EXPECT_EQ(refusalOfSendNow(), "SimConnect is not connected");
}

TEST_F(SessionChange, RestartedClientsWorkerLooksEveryHundredMilliseconds) {
    becomeReady();
    client.stop();
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 100);
}

TEST_F(SessionChange, NormalCommandInTheRateLimitsWaitIsNotSentToTheNextSession) {
    expectOldCommandIsDropped(RpnKind::Normal);
}

TEST_F(SessionChange, HoldInTheRateLimitsWaitIsNotSentToTheNextSession) {
    expectOldCommandIsDropped(RpnKind::Hold);
}

TEST_F(SessionChange, EncoderInTheRateLimitsWaitIsNotSentToTheNextSession) {
    expectOldCommandIsDropped(RpnKind::Encoder);
}

TEST_F(SessionChange, NormalCommandInTheWaitForReadinessIsNotSentToTheNextSession) {
    expectUnconfirmedCommandIsDropped(RpnKind::Normal);
}

TEST_F(SessionChange, HoldInTheWaitForReadinessIsNotSentToTheNextSession) {
    expectUnconfirmedCommandIsDropped(RpnKind::Hold);
}

TEST_F(SessionChange, EncoderInTheWaitForReadinessIsNotSentToTheNextSession) {
    expectUnconfirmedCommandIsDropped(RpnKind::Encoder, 3);
}

TEST_F(SessionChange, CommandInTheWaitForReadinessIsGoneWhenTheSessionIsLost) {
    holdInReadyWait(RpnKind::Normal);
    endSession();
    ASSERT_TRUE(queue("b"));
    // The worker has dropped the first and waits for a session with the second.
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(Access::queued(client), Lines());
}

TEST_F(SessionChange, HoldOfTheNextSessionIsUntouchedByTheOneDropped) {
    holdInRateLimit(RpnKind::Hold);
    changeSession();
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(Access::queued(client), (Lines{set("a")}));
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(Access::queued(client), (Lines{set("a")}));
    wakeAndRegister();
    EXPECT_TRUE(waitUntil([this] { return idle(); }));
    EXPECT_EQ(sentCount("a"), 1);
}

TEST_F(SessionChange, DetentsOfTheNextSessionAreUntouchedByTheEntryDropped) {
    holdInRateLimit(RpnKind::Encoder, 3);
    changeSession();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 2));
    // The worker has dropped the old entry and holds the registration.
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(Access::queued(client), (Lines{set("a")}));
    const auto waiting = Access::detents(client, set("a"));
    ASSERT_TRUE(waiting);
    EXPECT_EQ(waiting->pendingCount, 2);
    EXPECT_TRUE(waiting->queued && !waiting->inFlight);
    wakeAndRegister();
    EXPECT_TRUE(waitUntil([this] { return idle(); }));
    EXPECT_EQ(sentCount("a"), 2);
}

TEST_F(SessionChange, DetentsAfterTheDropAreQueuedAnew) {
    holdInRateLimit(RpnKind::Encoder, 3);
    changeSession();
    EXPECT_EQ(host.nextSleep(), 100);
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 1));
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 1));
    EXPECT_EQ(Access::queued(client), (Lines{set("a")}));
    wakeAndRegister();
    EXPECT_TRUE(waitUntil([this] { return idle(); }));
    EXPECT_EQ(sentCount("a"), 2);
}

TEST_F(SessionChange, NormalCommandInTheRateLimitsWaitFailsWhileTheSessionStaysLost) {
    expectFailureWhileTheSessionStaysLost(RpnKind::Normal);
}

TEST_F(SessionChange, HoldInTheRateLimitsWaitFailsWhileTheSessionStaysLost) {
    expectFailureWhileTheSessionStaysLost(RpnKind::Hold);
}

TEST_F(SessionChange, EncoderInTheRateLimitsWaitHasNothingToSendOnceTheSessionIsLost) {
    holdInRateLimit(RpnKind::Encoder, 3);
    endSession();
    // A second command marks that the worker is done with the first.
    ASSERT_TRUE(queue("b"));
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(log.linesWith("send failed"), Lines());
    EXPECT_TRUE(Access::tablesEmpty(client));
}
