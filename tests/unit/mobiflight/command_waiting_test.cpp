#include "tests/unit/mobiflight/mobiflight_fixture.h"

/// Commands that can't be sent yet, and the pace of those that can.
class CommandWaiting : public MobiFlightFixture {
protected:
    ~CommandWaiting() override { stop(); }

    Lines queued() { return Access::queued(client); }

    /// A session whose registration was sent and not yet answered.
    void registering() {
        ASSERT_TRUE(start());
        openSession();
        ASSERT_TRUE(waitForCommands({registration}));
        skipped = 1;
    }

    /// The module confirms, with the worker asleep over a command.
    void confirmAndWake() {
        confirm();
        host.letSleepsPass();
    }

    /// These commands, each with its dummy, and then what the confirmation brings about.
    static Lines thenHandshake(const Lines& rpns) {
        Lines result = pairs(rpns);
        result.emplace_back(clearText);
        result.emplace_back(addText);
        return result;
    }
};

TEST_F(CommandWaiting, WithoutASessionTheWorkerLooksEveryHundredMilliseconds) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(sim.commands(), Lines());
}

TEST_F(CommandWaiting, BeforeTheConfirmationTheWorkerLooksEveryFiftyMilliseconds) {
    registering();
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(host.waitForSleep(), 50);
    EXPECT_EQ(host.nextSleep(), 50);
    EXPECT_EQ(sinceHandshake(), Lines());
}

TEST_F(CommandWaiting, CommandKeepsItsPlaceAtTheHeadUntilTheConfirmation) {
    registering();
    ASSERT_TRUE(queue("a"));
    ASSERT_EQ(host.waitForSleep(), 50);
    ASSERT_TRUE(queue("b", RpnKind::Hold));
    ASSERT_TRUE(queue("c", RpnKind::Encoder, 2));
    ASSERT_EQ(host.nextSleep(), 50);
    EXPECT_EQ(queued(), (Lines{set("b"), set("c")}));
    confirmAndWake();
    EXPECT_EQ(written(10), thenHandshake({"a", "b", "c", "c"}));
}

TEST_F(CommandWaiting, HoldThatIsPutBackAbsorbsRepeats) {
    registering();
    ASSERT_TRUE(queue("other"));
    ASSERT_EQ(host.waitForSleep(), 50);
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    client.cancelRpn("other");
    ASSERT_EQ(host.nextSleep(), 50);
    EXPECT_EQ(queued(), (Lines{set("a")}));
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(queued(), (Lines{set("a")}));
}

TEST_F(CommandWaiting, HoldInHandIsDroppedWhenANewerCopyWaits) {
    registering();
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    ASSERT_EQ(host.waitForSleep(), 50);
    ASSERT_TRUE(queue("b"));
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(queued(), (Lines{set("b"), set("a")}));
    ASSERT_EQ(host.nextSleep(), 50);
    // The worker holds "b" now; of the two copies the newer is left.
    EXPECT_EQ(queued(), (Lines{set("a")}));
    EXPECT_FALSE(Access::isInFlightHold(client, set("a")));
    confirmAndWake();
    EXPECT_EQ(written(6), thenHandshake({"b", "a"}));
}

TEST_F(CommandWaiting, DetentsGatherWhileTheirEntryIsPutBack) {
    registering();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 1));
    ASSERT_EQ(host.waitForSleep(), 50);
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 2));
    EXPECT_EQ(queued(), Lines());
    const auto inHand = Access::detents(client, set("a"));
    EXPECT_TRUE(inHand->inFlight && !inHand->queued);
    EXPECT_EQ(inHand->pendingCount, 3);
    ASSERT_EQ(host.nextSleep(), 50);
    confirmAndWake();
    EXPECT_EQ(written(8), thenHandshake({"a", "a", "a"}));
}

TEST_F(CommandWaiting, EncoderCancelledInHandIsPutBackWithNothingToSend) {
    registering();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 3));
    ASSERT_EQ(host.waitForSleep(), 50);
    client.cancelRpn("a");
    EXPECT_EQ(Access::detents(client, set("a"))->pendingCount, 0);
    confirmAndWake();
    EXPECT_EQ(written(2), (Lines{clearText, addText}));
}

TEST_F(CommandWaiting, HoldCancelledInHandIsStillSent) {
    registering();
    ASSERT_TRUE(queue("a", RpnKind::Hold));
    ASSERT_EQ(host.waitForSleep(), 50);
    client.cancelRpn("a");
    confirmAndWake();
    EXPECT_EQ(written(4), thenHandshake({"a"}));
}

TEST_F(CommandWaiting, CommandsOfALostSessionAreNotSentToTheNext) {
    becomeReady();
    holdWorkerAtGate();
    ASSERT_TRUE(queue("a"));
    ASSERT_TRUE(queue("b", RpnKind::Hold));
    ASSERT_TRUE(queue("c", RpnKind::Encoder, 3));
    endSession();
    EXPECT_TRUE(idle());
    gate.open();
    openSession();
    ASSERT_TRUE(waitUntil([this] { return sim.commands().back() == registration; }));
    registerClient();
    EXPECT_EQ(sinceHandshake(), Lines());
    for (const char* rpn : {"a", "b", "c"}) {
        const Lines all = sim.commands();
        EXPECT_EQ(std::count(all.begin(), all.end(), set(rpn)), 0);
    }
}

TEST_F(CommandWaiting, CommandInHandIsDroppedWhenTheSessionChanges) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a"));
    ASSERT_EQ(host.waitForSleep(), 100);
    openSession();
    host.endSleep();
    ASSERT_TRUE(waitForCommands({registration}));
    registerClient();
    EXPECT_EQ(sim.commands(), (Lines{registration, clearText, addText}));
}

TEST_F(CommandWaiting, EncoderInHandIsDroppedWhenTheSessionChanges) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 3));
    ASSERT_EQ(host.waitForSleep(), 100);
    openSession();
    host.endSleep();
    ASSERT_TRUE(waitUntil([this] { return sim.commands() == Lines{registration} && idle(); }));
    registerClient();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 1));
    EXPECT_EQ(written(2), pairs({"a"}));
}

TEST_F(CommandWaiting, CommandThatCameDuringTheAttachmentLetsTheRegistrationPass) {
    sim.setHook([this](SimCall call) {
        std::string reason;
        if (call == SimCall::MapClientDataNameToId) {
            sim.setHook(nullptr);
            EXPECT_TRUE(client.queueRpn("a", RpnKind::Normal, 1, reason));
        }
    });
    ASSERT_TRUE(start());
    openSession();
    host.letSleepsPass();
    ASSERT_TRUE(waitForCommands({registration}));
    confirm();
    ASSERT_TRUE(waitUntil([this] { return sim.commands().size() == 5 && idle(); }));
    EXPECT_TRUE(log.has("[DEBUG] MobiFlight command: " + set("a")));
}

TEST_F(CommandWaiting, WithoutARateLimitNothingWaits) {
    becomeReady();
    for (const char* rpn : {"a", "b", "c"})
        ASSERT_TRUE(queue(rpn));
    EXPECT_EQ(written(6), pairs({"a", "b", "c"}));
    EXPECT_EQ(host.sleeps(), std::vector<std::int64_t>());
}

TEST_F(CommandWaiting, NegativeRateLimitIsNone) {
    config.rpnRateLimitMs = -5;
    becomeReady();
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(written(2), pairs({"a"}));
    EXPECT_EQ(host.sleeps(), std::vector<std::int64_t>());
}

TEST_F(CommandWaiting, FirstCommandEverIsNotDelayed) {
    config.rpnRateLimitMs = 100;
    registering();
    EXPECT_EQ(host.sleeps(), std::vector<std::int64_t>());
}

TEST_F(CommandWaiting, RateLimitWaitsForWhatIsLeftOfIt) {
    config.rpnRateLimitMs = 100;
    registering();
    host.setNow(1'000'000'000 + 30'999'999);
    confirm();
    EXPECT_EQ(host.waitForSleep(), 70);
    EXPECT_EQ(sinceHandshake(), Lines());
    host.setNow(2'000'000'000);
    EXPECT_EQ(host.nextSleep(), 100);
    EXPECT_EQ(sinceHandshake(), (Lines{clearText}));
}

TEST_F(CommandWaiting, RateLimitThatHasPassedDoesntDelay) {
    config.rpnRateLimitMs = 100;
    registering();
    host.setNow(1'100'000'000);
    confirm();
    ASSERT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(sinceHandshake(), (Lines{clearText}));
    EXPECT_EQ(host.sleeps(), (std::vector<std::int64_t>{100}));
}

TEST_F(CommandWaiting, BurstIsNotPacedWithin) {
    config.rpnRateLimitMs = 20;
    host.letSleepsPass();
    becomeReady();
    host.setNow(1'500'000'000);
    const auto before = host.sleeps().size();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 4));
    EXPECT_EQ(written(8), pairs({"a", "a", "a", "a"}));
    EXPECT_EQ(host.sleeps().size(), before);
}

TEST_F(CommandWaiting, RateLimitSpansSessions) {
    config.rpnRateLimitMs = 100;
    registering();
    endSession();
    openSession();
    EXPECT_EQ(host.waitForSleep(), 100);
}

TEST_F(CommandWaiting, FailedWriteDoesntCountForTheRateLimit) {
    config.rpnRateLimitMs = 100;
    sim.script(SimCall::SetClientData, {simConnectFail});
    ASSERT_TRUE(start());
    openSession();
    ASSERT_TRUE(waitForCommands({registration}));
    confirm();
    ASSERT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(sim.commands(), (Lines{registration, clearText}));
}
