#include "tests/unit/mobiflight/mobiflight_fixture.h"

/// Many callers at once, above all for the thread sanitizer.
class MobiFlightThreads : public MobiFlightFixture {
protected:
    MobiFlightThreads() {
        host.letSleepsPass();
        Logger::instance().setDebugEnabled(false);
    }

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

    void spawnQueueing(const std::string& rpn, RpnKind kind) {
        spawn(100, [this, rpn, kind](int) {
            std::string reason;
            EXPECT_TRUE(client.queueRpn(rpn, kind, 2, reason));
        });
    }

    void spawnSenders() {
        spawnQueueing("normal", RpnKind::Normal);
        spawnQueueing("hold", RpnKind::Hold);
        spawnQueueing("knob", RpnKind::Encoder);
        spawn(100, [this](int) {
            std::string reason;
            client.sendRpnNow("now", reason);
        });
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

TEST_F(MobiFlightThreads, CommandsAndTheirDummiesNeverInterleaveAndNoneIsLost) {
    becomeReady();
    spawnSenders();
    spawnSenders();
    spawn(100, [this](int) { client.cancelRpn("cancelled"); });
    joinAll();
    EXPECT_TRUE(waitUntil([this] { return sentCount("knob") >= 400; }));
    written();
    stop();
    EXPECT_EQ(brokenPairs(sim.commands()), 0);
    EXPECT_EQ(sentCount("normal"), 200);
    EXPECT_EQ(sentCount("knob"), 400);
    EXPECT_EQ(sentCount("now"), 200);
}

TEST_F(MobiFlightThreads, SessionsMayChangeUnderAllCallers) {
    becomeReady();
    spawnSenders();
    spawn(100, [this](int time) { client.setLVarHandler([time](const std::string&) { EXPECT_GE(time, 0); }); });
    spawn(50, [this](int) {
        client.onSimConnectState(false);
        client.onSimConnectState(true);
        confirm();
        respondVariable();
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
