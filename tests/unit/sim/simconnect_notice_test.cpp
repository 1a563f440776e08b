#include "tests/unit/sim/sim_client_fixture.h"

class SimClientNotice : public SimClientFixture {
protected:
    /// A client whose library has something to say.
    SimConnectLibrary libraryThatSays(const std::string& text) {
        SimConnectLibrary library = sim.library();
        library.notice = [this, text] {
            callsAtQuestion.push_back(sim.count(SimCall::Open));
            return text;
        };
        return library;
    }

    std::vector<std::size_t> callsAtQuestion;
};

TEST_F(SimClientNotice, IsLoggedBeforeTheFirstOpenAndOnlyOnce) {
    SimConnectClient told(libraryThatSays("no library"), host.record());
    sim.script(SimCall::Open, {simConnectFail});
    EXPECT_FALSE(SimConnectClientAccess::openSession(told, error));
    EXPECT_TRUE(SimConnectClientAccess::openSession(told, error));
    SimConnectClientAccess::disconnect(told);
    EXPECT_TRUE(SimConnectClientAccess::openSession(told, error));
    EXPECT_EQ(callsAtQuestion, (std::vector<std::size_t>{0}));
    EXPECT_EQ(log.lines().at(0), "[WARN] no library");
    EXPECT_EQ(log.linesWith("no library").size(), 1U);
}

TEST_F(SimClientNotice, IsNoLineWhenThereIsNothingToSay) {
    SimConnectClient silent(libraryThatSays(""), host.record());
    EXPECT_TRUE(SimConnectClientAccess::openSession(silent, error));
    EXPECT_EQ(callsAtQuestion.size(), 1U);
    EXPECT_EQ(log.linesWith("WARN"), Lines());
}

TEST_F(SimClientNotice, IsNotAskedForWithoutASimulator) {
    SimConnectClient waiting(libraryThatSays("no library"), host.record());
    ASSERT_TRUE(waiting.start(
        "bridge", nullptr, [] { return true; }, error));
    EXPECT_EQ(host.waitForSleep(), 5000);
    EXPECT_EQ(callsAtQuestion.size(), 0U);
    host.letSleepsPass();
    waiting.stop();
}
