#include "mobiflight/channels.h"

#include "tests/unit/mobiflight/mobiflight_fixture.h"

namespace {

const std::vector<std::string> attachCalls = {
    R"(MapClientDataNameToID(h1, "A", 0x1003))",
    R"(MapClientDataNameToID(h1, "B", 0x1004))",
    R"(MapClientDataNameToID(h1, "C", 0x1005))",
    "AddToClientDataDefinition(h1, 0x1103, 0, 256, 0, 0xFFFFFFFF)",
    "AddToClientDataDefinition(h1, 0x1104, 0, 256, 0, 0xFFFFFFFF)",
    "AddToClientDataDefinition(h1, 0x1105, 0, 0x1000, 0, 0xFFFFFFFF)",
    "RequestClientData(h1, 0x1004, 0x1200, 0x1104, 3, 1, 0, 0, 0)",
    "RequestClientData(h1, 0x1005, 0x1201, 0x1105, 3, 1, 0, 0, 0)",
};

} // namespace

/// The channels of an open session, used without a `MobiFlightClient`.
class Channels : public MobiFlightFixture {
protected:
    Channels() {
        openSession();
        sim.takeCalls();
        log.clear();
    }

    bool attach(std::optional<std::string> lvars = "C") {
        return attachToChannels(&simConnect, {"A", "B", std::move(lvars)}, 1, error);
    }
    bool write(const std::string& text) { return writeCommandArea(sim.library(), &simConnect, 1, text, error); }
};

TEST_F(Channels, AreMappedDefinedAndRequestedWithTheAttachmentsNumbers) {
    EXPECT_TRUE(attach());
    EXPECT_EQ(sim.calls(), attachCalls);
}

TEST_F(Channels, LeaveOutTheVariablesWhenTheyHaveNoName) {
    EXPECT_TRUE(attach(std::nullopt));
    const Lines expected{attachCalls[0], attachCalls[1], attachCalls[3], attachCalls[4], attachCalls[6]};
    EXPECT_EQ(sim.calls(), expected);
}

TEST_F(Channels, AttachmentEndsAtItsFirstFailure) {
    const std::pair<SimCall, std::size_t> steps[] = {
        {SimCall::MapClientDataNameToId, 3}, {SimCall::AddToClientDataDefinition, 3}, {SimCall::RequestClientData, 2}};
    std::ptrdiff_t made = 0;
    for (const auto& [call, times] : steps) {
        for (std::size_t successes = 0; successes < times; ++successes) {
            std::vector<SimConnectResult> results(successes, simConnectOk);
            results.push_back(simConnectFail);
            sim.script(call, results);
            EXPECT_FALSE(attach());
            EXPECT_EQ(sim.takeCalls(), Lines(attachCalls.begin(), attachCalls.begin() + ++made));
        }
    }
    EXPECT_EQ(error, "SimConnect_RequestClientData failed (0x80004005)");
    EXPECT_FALSE(attachToChannels(nullptr, {"A", "B", "C"}, 1, error));
    EXPECT_EQ(error, "SimConnect client unavailable");
}

TEST_F(Channels, CommandIsWrittenAsABlockPaddedWithZeros) {
    EXPECT_TRUE(write("MF.Ping"));
    EXPECT_EQ(sim.calls(), (Lines{R"(SetClientData(h1, 0x1003, 0x1103, 0, 0, 256, "MF.Ping"))"}));
    EXPECT_EQ(log.lines(), (Lines{"[DEBUG] MobiFlight command: MF.Ping"}));
    Logger::instance().setDebugEnabled(false);
    EXPECT_TRUE(write("MF.Ping"));
    EXPECT_EQ(log.lines().size(), 1U);
}

TEST_F(Channels, CommandOf256BytesLosesItsLastByteWithAWarning) {
    const std::string whole(255, 'x');
    EXPECT_TRUE(write(whole));
    EXPECT_EQ(log.linesWith("WARN"), Lines());
    EXPECT_TRUE(write(whole + "y"));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{"[WARN] MobiFlight command truncated to 256 bytes"}));
    EXPECT_EQ(log.lines().back(), "[DEBUG] MobiFlight command: " + whole + "y");
    EXPECT_TRUE(write(std::string(100000, 'x')));
    EXPECT_EQ(sim.commands(), Lines(3, whole));
}

TEST_F(Channels, CommandThatCantBeWrittenIsReported) {
    EXPECT_FALSE(writeCommandArea(sim.library(), nullptr, 0, "a", error));
    EXPECT_EQ(error, "SimConnect client unavailable");
    EXPECT_FALSE(write(""));
    EXPECT_EQ(error, "Empty command");
    sim.script(SimCall::SetClientData, {-1});
    EXPECT_FALSE(write("a"));
    EXPECT_EQ(error, "SimConnect_SetClientData failed (0xFFFFFFFF)");
    endSession();
    EXPECT_FALSE(write("a"));
    EXPECT_EQ(error, "SimConnect is not connected");
    EXPECT_EQ(sim.commands(), (Lines{"a"}));
}
