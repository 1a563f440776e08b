#include "tests/unit/sim/sim_client_fixture.h"

#include <stdexcept>

/// Callbacks that throw: the session ends, the worker goes on.
class SimClientCallbackFailure : public SimClientFixture {
protected:
    ~SimClientCallbackFailure() override { stop(); }

    /// Like `connect`, up to the first sleep of any length, with the announcements that `failing` counts throwing.
    std::int64_t startFailing(int failing) {
        failuresLeft = failing;
        host.setProcesses({"FlightSimulator.exe"});
        EXPECT_TRUE(client.start(
            "bridge", [this](bool connected) { announce(connected); }, nullptr, error));
        return host.waitForSleep();
    }

    void failNextAnnouncements(int count) { failuresLeft = count; }

    void failBattery() {
        client.setBatteryCallback([](bool) { throw std::runtime_error("battery broke"); });
        sim.deliverBattery(1);
    }

    std::atomic<int> failuresLeft{0};

    static constexpr const char* connectedLine = "[INFO] SimConnect connected";
    static constexpr const char* endedLine = "[WARN] SimConnect disconnected: worker exception";
    static constexpr const char* announcementLine = "[ERROR] SimConnect worker exception: announcement broke";
    static constexpr const char* batteryLine = "[ERROR] SimConnect worker exception: battery broke";

private:
    void announce(bool connected) {
        noteConnection(connected);
        if (failuresLeft > 0) {
            --failuresLeft;
            throw std::runtime_error("announcement broke");
        }
    }
};

TEST_F(SimClientCallbackFailure, AnnouncementOfASessionThatThrowsEndsItAndANewOneOpens) {
    EXPECT_EQ(startFailing(1), 5000);
    EXPECT_FALSE(client.isConnected());
    EXPECT_FALSE(sim.isOpen());
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
    EXPECT_EQ(log.lines(), (Lines{announcementLine, endedLine, connectedLine}));
}

TEST_F(SimClientCallbackFailure, AnnouncementThatThrowsAgainOverItsOwnFailureIsSurvived) {
    EXPECT_EQ(startFailing(2), 5000);
    EXPECT_FALSE(client.isConnected());
    EXPECT_FALSE(sim.isOpen());
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
    EXPECT_EQ(log.lines(), (Lines{announcementLine, endedLine, announcementLine, connectedLine}));
}

TEST_F(SimClientCallbackFailure, AnnouncementOfALossThatThrowsIsMadeOnce) {
    ASSERT_EQ(startFailing(0), 15);
    failNextAnnouncements(1);
    sim.script(SimCall::CallDispatch, {simConnectFail});
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(connections(), (std::vector{true, false}));
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(log.lines(), (Lines{connectedLine, "[WARN] SimConnect disconnected: dispatch error 0x80004005",
                                  announcementLine, connectedLine}));
}

TEST_F(SimClientCallbackFailure, AnnouncementsThatAlwaysThrowBackOffFurtherEachTime) {
    EXPECT_EQ(startFailing(6), 5000);
    EXPECT_EQ(host.nextSleep(), 10000);
    EXPECT_EQ(host.nextSleep(), 20000);
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(sim.count(SimCall::Close), 3U);
}

TEST_F(SimClientCallbackFailure, BatteryCallbackThatThrowsEndsTheSessionAndANewOneOpens) {
    ASSERT_EQ(startFailing(0), 15);
    failBattery();
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_EQ(connections(), (std::vector{true, false}));
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(log.lines(), (Lines{connectedLine, batteryLine, endedLine, connectedLine}));
}

TEST_F(SimClientCallbackFailure, AnnouncementThatThrowsOverTheBatterysFailureIsSurvived) {
    ASSERT_EQ(startFailing(0), 15);
    failNextAnnouncements(1);
    failBattery();
    EXPECT_EQ(host.nextSleep(), 5000);
    EXPECT_FALSE(sim.isOpen());
    EXPECT_EQ(host.nextSleep(), 15);
    EXPECT_TRUE(client.isConnected());
    EXPECT_EQ(connections(), (std::vector{true, false, true}));
    EXPECT_EQ(log.lines(), (Lines{connectedLine, batteryLine, endedLine, announcementLine, connectedLine}));
}
