#include "tests/unit/mobiflight/mobiflight_fixture.h"

/// Many callers at once: of use above all under the thread sanitizer.
class MobiFlightThreads : public MobiFlightFixture {
protected:
    MobiFlightThreads() {
        host.letSleepsPass();
        Logger::instance().setDebugEnabled(false);
    }
    ~MobiFlightThreads() override { stop(); }

    void spawn(int times, const std::function<void(int time)>& action) {
        threads.emplace_back([times, action] {
            for (int time = 0; time < times; ++time) {
                action(time);
            }
        });
    }

    void joinAll() {
        for (std::thread& thread : threads) {
            thread.join();
        }
        threads.clear();
    }

    void spawnSenders() {
        for (const RpnKind kind : {RpnKind::Normal, RpnKind::Hold, RpnKind::Encoder}) {
            spawn(100, [this, kind](int time) {
                std::string reason;
                EXPECT_TRUE(client.queueRpn("queued" + std::to_string(time % 3), kind, 2, reason));
            });
        }
        for (const char* rpn : {"now1", "now2"}) {
            spawn(100, [this, rpn](int) {
                std::string reason;
                client.sendRpnNow(rpn, reason);
            });
        }
    }

    /// The places where a command isn't followed by its dummy or a dummy follows no command.
    static int brokenPairs(const Lines& commands) {
        int broken = 0;
        bool dummyDue = false;
        for (const std::string& text : commands) {
            if ((text == dummy) != dummyDue) {
                ++broken;
            }
            dummyDue = text.starts_with(set(""));
        }
        return broken + (dummyDue ? 1 : 0);
    }

    std::vector<std::thread> threads;
};

TEST_F(MobiFlightThreads, CommandsAndTheirDummiesNeverInterleave) {
    becomeReady();
    spawnSenders();
    spawn(100, [this](int) { client.cancelRpn("queued1"); });
    joinAll();
    written();
    stop();
    EXPECT_EQ(brokenPairs(sim.commands()), 0);
    EXPECT_EQ(sentCount("now1"), 100);
    EXPECT_EQ(sentCount("now2"), 100);
}

TEST_F(MobiFlightThreads, NoNormalCommandOrDetentIsLost) {
    becomeReady();
    for (int thread = 0; thread < 3; ++thread) {
        spawn(50, [this](int) {
            std::string reason;
            EXPECT_TRUE(client.queueRpn("normal", RpnKind::Normal, 1, reason));
            EXPECT_TRUE(client.queueRpn("knob", RpnKind::Encoder, 3, reason));
        });
    }
    joinAll();
    EXPECT_TRUE(waitUntil([this] { return sentCount("knob") >= 450; }));
    written();
    EXPECT_EQ(sentCount("normal"), 150);
    EXPECT_EQ(sentCount("knob"), 450);
}

TEST_F(MobiFlightThreads, SessionsMayChangeUnderAllCallers) {
    becomeReady();
    spawnSenders();
    spawn(100, [this](int time) { client.setLVarHandler([time](const std::string&) { EXPECT_GE(time, 0); }); });
    spawn(50, [this](int) {
        client.onSimConnectState(false);
        client.onSimConnectState(true);
        confirm();
        const std::uint8_t text[] = {'1', 0};
        client.onClientData(0x1201, text, 2);
    });
    joinAll();
    stop();
    EXPECT_EQ(brokenPairs(sim.commands()), 0);
}

TEST_F(MobiFlightThreads, StopMayComeWhileEverybodyIsBusy) {
    for (int round = 0; round < 5; ++round) {
        ASSERT_TRUE(start());
        if (round == 0) {
            openSession();
        } else {
            client.onSimConnectState(true);
        }
        confirm();
        spawn(50, [this](int) {
            std::string reason;
            client.queueRpn("a", RpnKind::Encoder, 5, reason);
            client.sendRpnNow("b", reason);
            client.cancelRpn("a");
        });
        client.stop();
        joinAll();
    }
    EXPECT_EQ(brokenPairs(sim.commands()), 0);
}
