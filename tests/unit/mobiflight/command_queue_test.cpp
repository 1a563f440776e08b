#include "tests/unit/mobiflight/mobiflight_fixture.h"

#include <limits>

class CommandQueue : public MobiFlightFixture {
protected:
    ~CommandQueue() override { stop(); }

    Lines queued() { return Access::queued(client); }
    std::int32_t detents(const std::string& rpn) {
        const auto entry = Access::detents(client, set(rpn));
        return entry ? entry->pendingCount : -1;
    }
};

TEST_F(CommandQueue, RefusesAClientThatNeverStarted) {
    config.enabled = false;
    ASSERT_TRUE(start());
    EXPECT_FALSE(queue(""));
    EXPECT_EQ(error, "MobiFlight disabled");
}

TEST_F(CommandQueue, RefusesAStoppedClient) {
    ASSERT_TRUE(start());
    client.stop();
    EXPECT_FALSE(queue(""));
    EXPECT_EQ(error, "MobiFlight not running");
}

TEST_F(CommandQueue, RefusesAnEmptyCommandWhateverTheAmount) {
    ASSERT_TRUE(start());
    EXPECT_FALSE(queue(""));
    EXPECT_EQ(error, "Empty RPN command");
    EXPECT_FALSE(queue("", RpnKind::Encoder, 0));
}

TEST_F(CommandQueue, AmountZeroQueuesNothing) {
    becomeReady();
    holdWorkerAtGate();
    for (const RpnKind kind : {RpnKind::Normal, RpnKind::Hold, RpnKind::Encoder})
        EXPECT_TRUE(queue("a", kind, 0));
    EXPECT_EQ(queued(), Lines());
    EXPECT_TRUE(Access::tablesEmpty(client));
}

TEST_F(CommandQueue, NormalCommandsAreNeverMerged) {
    becomeReady();
    holdWorkerAtGate();
    for (int time = 0; time < 3; ++time)
        EXPECT_TRUE(queue("a"));
    gate.open();
    EXPECT_EQ(written(8), pairs({"first", "a", "a", "a"}));
}

TEST_F(CommandQueue, AmountCountsForEncodersAlone) {
    becomeReady();
    EXPECT_TRUE(queue("a", RpnKind::Normal, 5));
    EXPECT_TRUE(queue("b", RpnKind::Hold, 5));
    EXPECT_TRUE(queue("c", RpnKind::Encoder, 2));
    EXPECT_EQ(written(8), pairs({"a", "b", "c", "c"}));
}

TEST_F(CommandQueue, WaitingHoldAbsorbsItsRepeats) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(queued(), (Lines{set("a")}));
    gate.open();
    EXPECT_EQ(written(4), pairs({"first", "a"}));
}

TEST_F(CommandQueue, HoldIsQueuedAnewOnceTheWorkerHasTheFirst) {
    becomeReady();
    gateWrites();
    gate.close();
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    ASSERT_TRUE(gate.waitForSomebody());
    EXPECT_TRUE(Access::isInFlightHold(client, set("a")));
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(queued(), (Lines{set("a")}));
    gate.open();
    EXPECT_EQ(written(4), pairs({"a", "a"}));
}

TEST_F(CommandQueue, DetentsOfOneTextAreCountedBesideOneEntry) {
    becomeReady();
    holdWorkerAtGate();
    for (const std::uint32_t amount : {1U, 2U, 3U})
        EXPECT_TRUE(queue("a", RpnKind::Encoder, amount));
    EXPECT_EQ(queued(), (Lines{set("a")}));
    EXPECT_EQ(detents("a"), 6);
    gate.open();
    EXPECT_EQ(written(14), pairs({"first", "a", "a", "a", "a", "a", "a"}));
}

TEST_F(CommandQueue, KindsOfOneTextDontMergeWithEachOther) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 2));
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_TRUE(queue("a"));
    EXPECT_EQ(queued(), Lines(3, set("a")));
    gate.open();
    EXPECT_EQ(written(10), pairs({"first", "a", "a", "a", "a"}));
}

TEST_F(CommandQueue, CountOfDetentsStaysAtItsLimit) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a", RpnKind::Encoder, std::numeric_limits<std::uint32_t>::max()));
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 1));
    EXPECT_EQ(detents("a"), std::numeric_limits<std::int32_t>::max());
    client.cancelRpn("a");
    EXPECT_EQ(detents("a"), -1);
}

TEST_F(CommandQueue, FirstQueuedTimeIsThatOfTheFirstDetent) {
    becomeReady();
    holdWorkerAtGate();
    host.setNow(5);
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 1));
    host.setNow(9);
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 1));
    EXPECT_EQ(Access::detents(client, set("a"))->firstQueuedAt, 5);
}

TEST_F(CommandQueue, DetentsThatComeDuringABurstExtendIt) {
    becomeReady();
    std::atomic<int> writes{0};
    sim.setHook([&](SimCall call) {
        std::string reason;
        if (call == SimCall::SetClientData && ++writes == 1) {
            EXPECT_TRUE(client.queueRpn("b", RpnKind::Normal, 1, reason));
            EXPECT_TRUE(client.queueRpn("a", RpnKind::Encoder, 2, reason));
        }
    });
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 1));
    EXPECT_EQ(written(8), pairs({"a", "a", "a", "b"}));
}

TEST_F(CommandQueue, DetentsLeftAfterAFailedBurstGoToTheBackOfTheLine) {
    becomeReady();
    std::atomic<int> writes{0};
    sim.setHook([&](SimCall call) {
        std::string reason;
        if (call == SimCall::SetClientData && ++writes == 1) {
            EXPECT_TRUE(client.queueRpn("a", RpnKind::Encoder, 1, reason));
            EXPECT_TRUE(client.queueRpn("b", RpnKind::Normal, 1, reason));
        }
    });
    sim.script(SimCall::SetClientData, {simConnectFail});
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 5));
    Lines expected{set("a")};
    for (const std::string& text : pairs({"b", "a"}))
        expected.push_back(text);
    EXPECT_EQ(written(5), expected);
}

TEST_F(CommandQueue, DetentsOfAFailedBurstAreGone) {
    becomeReady();
    sim.script(SimCall::SetClientData, {0, 0, simConnectFail});
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 5));
    EXPECT_EQ(written(3), (Lines{set("a"), dummy, set("a")}));
    EXPECT_TRUE(queue("b"));
    EXPECT_EQ(written(5), (Lines{set("a"), dummy, set("a"), set("b"), dummy}));
}

TEST_F(CommandQueue, BurstStopsEarlyWhenTheClientStops) {
    becomeReady();
    gateWrites();
    gate.close();
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 1000000));
    ASSERT_TRUE(gate.waitForSomebody());
    std::thread stopper([this] { client.stop(); });
    EXPECT_TRUE(waitUntil([this] { return !client.queueRpn("probe", RpnKind::Normal, 0, error); }));
    gate.open();
    stopper.join();
    EXPECT_EQ(sinceHandshake(), pairs({"a"}));
}

TEST_F(CommandQueue, CancelTakesOutEveryKindOfTheTextAndNothingElse) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a"));
    EXPECT_TRUE(queue("b"));
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_TRUE(queue("c", RpnKind::Hold));
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 3));
    EXPECT_TRUE(queue("aa"));
    client.cancelRpn("a");
    EXPECT_EQ(queued(), (Lines{set("b"), set("c"), set("aa")}));
    EXPECT_EQ(detents("a"), -1);
    gate.open();
    EXPECT_EQ(written(8), pairs({"first", "b", "c", "aa"}));
}

TEST_F(CommandQueue, CancelOfNothingDoesNothing) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a"));
    client.cancelRpn("");
    client.cancelRpn("b");
    EXPECT_EQ(queued(), (Lines{set("a")}));
}

TEST_F(CommandQueue, CancelledHoldCanBeQueuedAgain) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    client.cancelRpn("a");
    EXPECT_TRUE(queue("a", RpnKind::Hold));
    EXPECT_EQ(queued(), (Lines{set("a")}));
}

TEST_F(CommandQueue, CancelledEncoderCountsFromZeroAgain) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 7));
    client.cancelRpn("a");
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 1));
    EXPECT_EQ(detents("a"), 1);
    EXPECT_EQ(queued(), (Lines{set("a")}));
}

TEST_F(CommandQueue, CancelDoesntStopWhatIsInTheWorkersHand) {
    becomeReady();
    holdWorkerAtGate();
    client.cancelRpn("first");
    gate.open();
    EXPECT_EQ(written(2), pairs({"first"}));
}

TEST_F(CommandQueue, CancelDuringABurstForgetsOnlyTheDetentsThatCameSince) {
    becomeReady();
    gateWrites();
    gate.close();
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 2));
    ASSERT_TRUE(gate.waitForSomebody());
    EXPECT_TRUE(queue("a", RpnKind::Encoder, 9));
    client.cancelRpn("a");
    EXPECT_EQ(detents("a"), 0);
    gate.open();
    EXPECT_EQ(written(4), pairs({"a", "a"}));
}
