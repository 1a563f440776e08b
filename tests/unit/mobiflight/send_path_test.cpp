#include "tests/unit/mobiflight/mobiflight_fixture.h"

class SendPath : public MobiFlightFixture {
protected:
    ~SendPath() override { stop(); }

    bool sendNow(const std::string& rpn) { return client.sendRpnNow(rpn, error); }

    /// An RPN text whose command has this many bytes.
    static std::string rpnOfTotal(std::size_t bytes) { return std::string(bytes - set("").size(), 'x'); }

    static std::string writeCall(const std::string& text) {
        return "SetClientData(h1, 0x1000, 0x1100, 0, 0, 256, \"" + text + "\")";
    }
};

TEST_F(SendPath, CommandIsWrittenAsAZeroPaddedBlockWithItsDummyBehindIt) {
    becomeReady();
    sim.takeCalls();
    log.clear();
    ASSERT_TRUE(queue("1 (>L:X)"));
    written(2);
    EXPECT_EQ(sim.calls(), (Lines{writeCall("MF.SimVars.Set.1 1 (>L:X)"), writeCall("MF.DummyCmd")}));
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] MobiFlight command: MF.SimVars.Set.1 1 (>L:X)",
                                  "[DEBUG] MobiFlight command: MF.DummyCmd"}));
}

TEST_F(SendPath, NothingIsLoggedWhileDebugLinesAreOff) {
    becomeReady();
    log.clear();
    Logger::instance().setDebugEnabled(false);
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(written(2), pairs({"a"}));
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(SendPath, EvenADummyOfTheCallersHasADummyBehindIt) {
    becomeReady();
    ASSERT_TRUE(queue("MF.DummyCmd"));
    EXPECT_EQ(written(2), pairs({"MF.DummyCmd"}));
}

TEST_F(SendPath, TextOf255BytesGoesWhole) {
    becomeReady();
    const std::string rpn = rpnOfTotal(255);
    ASSERT_TRUE(sendNow(rpn));
    EXPECT_EQ(sinceHandshake(), pairs({rpn}));
    EXPECT_EQ(log.linesWith("WARN"), Lines());
}

TEST_F(SendPath, TextOf256BytesLosesItsLastWithAWarning) {
    becomeReady();
    const std::string rpn = rpnOfTotal(256);
    ASSERT_TRUE(sendNow(rpn));
    EXPECT_EQ(sinceHandshake(), pairs({rpnOfTotal(255)}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{"[WARN] MobiFlight command truncated to 256 bytes"}));
    EXPECT_TRUE(log.has("[DEBUG] MobiFlight command: " + set(rpn)));
}

TEST_F(SendPath, FarTooLongTextIsCutAlike) {
    becomeReady();
    ASSERT_TRUE(sendNow(std::string(100000, 'x')));
    EXPECT_EQ(sinceHandshake(), pairs({rpnOfTotal(255)}));
}

TEST_F(SendPath, LongEncoderTextWarnsAtEachRepeat) {
    becomeReady();
    ASSERT_TRUE(queue(rpnOfTotal(300), RpnKind::Encoder, 3));
    EXPECT_EQ(written(6).size(), 6U);
    EXPECT_EQ(log.linesWith("truncated").size(), 3U);
}

TEST_F(SendPath, FailedWriteIsLoggedAndNotRepeated) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail});
    ASSERT_TRUE(queue("a"));
    ASSERT_TRUE(queue("b"));
    EXPECT_EQ(written(3), (Lines{set("a"), set("b"), dummy}));
    EXPECT_EQ(log.linesWith("WARN"),
              (Lines{"[WARN] MobiFlight send failed: SimConnect_SetClientData failed (0x80004005)"}));
}

TEST_F(SendPath, FailedDummyIsLogged) {
    becomeReady();
    sim.script(SimCall::SetClientData, {0, -1});
    ASSERT_TRUE(queue("a"));
    EXPECT_EQ(written(2), pairs({"a"}));
    ASSERT_TRUE(waitUntil([this] { return !log.linesWith("WARN").empty(); }));
    EXPECT_EQ(log.linesWith("WARN"),
              (Lines{"[WARN] MobiFlight dummy send failed: SimConnect_SetClientData failed (0xFFFFFFFF)"}));
}

TEST_F(SendPath, FailedDummyEndsABurst) {
    becomeReady();
    sim.script(SimCall::SetClientData, {0, -1});
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 3));
    EXPECT_EQ(written(2), pairs({"a"}));
    EXPECT_EQ(log.linesWith("dummy send failed").size(), 1U);
}

TEST_F(SendPath, SessionThatIsGoneFailsTheWrite) {
    becomeReady();
    SimConnectClientAccess::disconnect(simConnect);
    EXPECT_FALSE(sendNow("a"));
    EXPECT_EQ(error, "");
    EXPECT_TRUE(log.has("[WARN] MobiFlight send failed: SimConnect is not connected"));
    EXPECT_EQ(sinceHandshake(), Lines());
}

TEST_F(SendPath, EmptyTextIsNoCommand) {
    ASSERT_TRUE(start());
    EXPECT_FALSE(Access::write(client, "", error));
    EXPECT_EQ(error, "Empty command");
}

TEST_F(SendPath, SendNowNamesWhatIsMissingInOrder) {
    config.enabled = false;
    ASSERT_TRUE(start());
    EXPECT_FALSE(sendNow(""));
    EXPECT_EQ(error, "MobiFlight disabled");
    config.enabled = true;
    ASSERT_TRUE(start());
    client.stop();
    EXPECT_FALSE(sendNow(""));
    EXPECT_EQ(error, "MobiFlight not running");
    ASSERT_TRUE(start());
    EXPECT_FALSE(sendNow(""));
    EXPECT_EQ(error, "SimConnect is not connected");
    openSession();
    EXPECT_FALSE(sendNow(""));
    EXPECT_EQ(error, "MobiFlight not ready");
    confirm();
    EXPECT_FALSE(sendNow(""));
    EXPECT_EQ(error, "Empty RPN command");
}

TEST_F(SendPath, SendNowBeforeTheConfirmationWritesNothing) {
    ASSERT_TRUE(start());
    openSession();
    ASSERT_TRUE(waitForCommands({registration}));
    EXPECT_FALSE(sendNow("a"));
    EXPECT_EQ(error, "MobiFlight not ready");
    EXPECT_EQ(sim.commands(), (Lines{registration}));
}

TEST_F(SendPath, SendNowWritesOnTheCallersThreadPastQueueAndRateLimit) {
    config.rpnRateLimitMs = 1000;
    host.letSleepsPass();
    becomeReady();
    host.holdSleeps();
    ASSERT_TRUE(queue("waits"));
    ASSERT_EQ(host.waitForSleep(), 1000);
    std::thread::id writer;
    sim.setHook([&](SimCall) { writer = std::this_thread::get_id(); });
    ASSERT_TRUE(sendNow("a"));
    EXPECT_EQ(writer, std::this_thread::get_id());
    EXPECT_EQ(sinceHandshake(), pairs({"a"}));
    sim.setHook(nullptr);
}

TEST_F(SendPath, SendNowEntersNoTable) {
    becomeReady();
    gateWrites();
    gate.close();
    std::thread sender([this] {
        std::string reason;
        EXPECT_TRUE(client.sendRpnNow("a", reason));
    });
    ASSERT_TRUE(gate.waitForSomebody());
    EXPECT_TRUE(idle());
    gate.open();
    sender.join();
    EXPECT_EQ(sinceHandshake(), pairs({"a"}));
}

TEST_F(SendPath, SendNowThatFailsLeavesTheErrorEmpty) {
    becomeReady();
    sim.script(SimCall::SetClientData, {simConnectFail});
    EXPECT_FALSE(sendNow("a"));
    EXPECT_EQ(error, "");
    sim.script(SimCall::SetClientData, {0, simConnectFail});
    EXPECT_FALSE(sendNow("a"));
    EXPECT_EQ(error, "");
    EXPECT_EQ(log.linesWith("WARN"),
              (Lines{"[WARN] MobiFlight send failed: SimConnect_SetClientData failed (0x80004005)",
                     "[WARN] MobiFlight dummy send failed: SimConnect_SetClientData failed (0x80004005)"}));
}

TEST_F(SendPath, SendNowCountsForTheRateLimit) {
    config.rpnRateLimitMs = 100;
    host.letSleepsPass();
    becomeReady();
    host.holdSleeps();
    host.setNow(5'000'000'000);
    ASSERT_TRUE(sendNow("a"));
    host.setNow(5'040'000'000);
    ASSERT_TRUE(queue("b"));
    EXPECT_EQ(host.waitForSleep(), 60);
}

TEST_F(SendPath, SlowWriteDoesntHoldUpTheQueue) {
    becomeReady();
    holdWorkerAtGate();
    EXPECT_TRUE(queue("a"));
    client.cancelRpn("a");
    EXPECT_TRUE(client.isReady());
    EXPECT_TRUE(queue("b", RpnKind::Encoder, 2));
    gate.open();
    EXPECT_EQ(written(6), pairs({"first", "b", "b"}));
}

TEST_F(SendPath, SendNowComesBehindTheWholeOfARunningBurst) {
    constexpr std::uint32_t detents = 100;
    becomeReady();
    Logger::instance().setDebugEnabled(false);
    gateWrites();
    gate.close();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, detents));
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
    const Lines all = sinceHandshake();
    EXPECT_EQ(std::count(all.begin(), all.end(), set("a")), std::ptrdiff_t{detents});
    EXPECT_EQ(std::find(all.begin(), all.end(), set("now")) - all.begin(), 2 * std::ptrdiff_t{detents});
}

TEST_F(SendPath, BurstLetsNobodySendBeforeItHasLookedForMoreDetents) {
    becomeReady();
    gateWrites();
    gate.close();
    ASSERT_TRUE(queue("a", RpnKind::Encoder, 2));
    ASSERT_TRUE(gate.waitForSomebody());
    {
        // Keeps the worker from its look.
        const auto queueLock = Access::lockQueue(client);
        gate.open();
        EXPECT_TRUE(waitUntil([this] { return sinceHandshake() == pairs({"a", "a"}); }));
        EXPECT_FALSE(waitUntil([this] { return Access::isSenderFree(client); }, std::chrono::milliseconds(20)));
    }
    EXPECT_EQ(written(4), pairs({"a", "a"}));
}
