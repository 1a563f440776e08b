#include "tests/unit/mobiflight/mobiflight_fixture.h"

#include <limits>

class MobiFlightLVars : public MobiFlightFixture {
protected:
    using Bytes = std::vector<std::uint8_t>;

    MobiFlightLVars() {
        client.setLVarHandler([this](const std::string& text) { received.push_back(text); });
        EXPECT_TRUE(start());
    }
    ~MobiFlightLVars() override { stop(); }

    /// What the handler gets of a payload.
    Lines receive(const Bytes& payload) {
        received.clear();
        client.onClientData(0x1201, payload.data(), static_cast<std::uint32_t>(payload.size()));
        return received;
    }

    Lines received;
};

TEST_F(MobiFlightLVars, TextGoesToTheHandlerAndTheDebugLog) {
    EXPECT_EQ(receive({'0', '.', '5', 0, 'x'}), (Lines{"0.5"}));
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] MobiFlight LVars: 0.5"}));
}

TEST_F(MobiFlightLVars, SingleBehindAZeroByteIsANumber) {
    EXPECT_EQ(receive({0x00, 0x00, 0x40, 0x3F}), (Lines{"0.750000"}));
    EXPECT_EQ(receive({0x00, 0x00, 0x40, 0x3F, 0xFF, 0xFF}), (Lines{"0.750000"}));
    EXPECT_EQ(receive({0x00, 0x00, 0x00, 0xBF}), (Lines{"-0.500000"}));
    EXPECT_EQ(receive({0x00, 0x00, 0x00, 0x00}), (Lines{"0.000000"}));
    EXPECT_EQ(receive({0x00, 0x00, 0x00, 0x80}), (Lines{"-0.000000"}));
    EXPECT_EQ(receive({0x00, 0x01, 0x00, 0x00}), (Lines{"0.000000"}));
}

TEST_F(MobiFlightLVars, LargestSingleIsWrittenOut) {
    EXPECT_EQ(receive({0x00, 0xFF, 0x7F, 0x7F}), (Lines{"340277174624079928635746076935438991360.000000"}));
    EXPECT_EQ(receive({0x00, 0xFF, 0x7F, 0xFF}), (Lines{"-340277174624079928635746076935438991360.000000"}));
}

TEST_F(MobiFlightLVars, InfinityAndNanAreDroppedWithoutATrace) {
    EXPECT_EQ(receive({0x00, 0x00, 0x80, 0x7F}), Lines());
    EXPECT_EQ(receive({0x00, 0x00, 0x80, 0xFF}), Lines());
    EXPECT_EQ(receive({0x00, 0x00, 0xC0, 0x7F}), Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightLVars, FewerThanFourBytesAreNoNumber) {
    EXPECT_EQ(receive({0, 0, 0}), Lines());
    EXPECT_EQ(receive({0}), Lines());
    EXPECT_EQ(receive({}), Lines());
    client.onClientData(0x1201, nullptr, 4);
    client.onClientData(0x1201, nullptr, 0);
    EXPECT_EQ(received, Lines());
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightLVars, SingleWhoseFirstByteIsSetIsTakenAsText) {
    EXPECT_EQ(receive({0xCD, 0xCC, 0xCC, 0x3D}), (Lines{"\xCD\xCC\xCC="}));
    EXPECT_EQ(receive({0x01, 0x00, 0x40, 0x3F}), (Lines{"\x01"}));
}

TEST_F(MobiFlightLVars, PayloadWithoutAZeroIsTakenWhole) {
    EXPECT_EQ(receive(Bytes(4096, 'a')), (Lines{std::string(4096, 'a')}));
}

TEST_F(MobiFlightLVars, WithoutAHandlerTheDebugLineIsWrittenAllTheSame) {
    client.setLVarHandler(nullptr);
    EXPECT_EQ(receive({'1', 0}), Lines());
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] MobiFlight LVars: 1"}));
}

TEST_F(MobiFlightLVars, NothingIsLoggedWhileDebugLinesAreOff) {
    Logger::instance().setDebugEnabled(false);
    EXPECT_EQ(receive({'1', 0}), (Lines{"1"}));
    EXPECT_EQ(log.lines(), Lines());
}

TEST_F(MobiFlightLVars, HandlerRunsBeforeTheDebugLine) {
    client.setLVarHandler([](const std::string&) { logInfo("handled"); });
    receive({'1', 0});
    EXPECT_EQ(log.lines(), (Lines{"[INFO] handled", "[DEBUG] MobiFlight LVars: 1"}));
}

TEST_F(MobiFlightLVars, HandlerMayReplaceItself) {
    client.setLVarHandler([this](const std::string&) {
        client.setLVarHandler([this](const std::string& text) { received.push_back("second " + text); });
    });
    EXPECT_EQ(receive({'1', 0}), Lines());
    EXPECT_EQ(receive({'2', 0}), (Lines{"second 2"}));
}

TEST_F(MobiFlightLVars, VariablesAreHandedOnBeforeTheRegistrationToo) {
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(receive({'1', 0}), (Lines{"1"}));
}

TEST_F(MobiFlightLVars, VariablesArriveThroughTheSimConnectClient) {
    auto message = FakeSimConnect::dataMessage(simConnectRecvClientData, 0x1201, {'9', 0});
    SimConnectClientAccess::dispatch(reinterpret_cast<SimConnectRecv*>(message.data()),
                                     static_cast<std::uint32_t>(message.size()), &simConnect);
    EXPECT_EQ(received, (Lines{"9"}));
}
