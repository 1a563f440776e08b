#include "tests/unit/mobiflight/mobiflight_fixture.h"

namespace {

const std::vector<std::string> attachCalls = {
    R"(MapClientDataNameToID(h1, "MobiFlight.Command", 0x1000))",
    R"(MapClientDataNameToID(h1, "MobiFlight.Response", 0x1001))",
    R"(MapClientDataNameToID(h1, "MobiFlight.LVars", 0x1002))",
    "AddToClientDataDefinition(h1, 0x1100, 0, 256, 0, 0xFFFFFFFF)",
    "AddToClientDataDefinition(h1, 0x1101, 0, 256, 0, 0xFFFFFFFF)",
    "AddToClientDataDefinition(h1, 0x1102, 0, 0x1000, 0, 0xFFFFFFFF)",
    "RequestClientData(h1, 0x1001, 0x1200, 0x1101, 3, 1, 0, 0, 0)",
    "RequestClientData(h1, 0x1002, 0x1201, 0x1102, 3, 1, 0, 0, 0)",
};

} // namespace

class MobiFlightProtocol : public MobiFlightFixture {
protected:
    /// Starts and opens a session whose registration has been sent.
    void sendRegistration() {
        ASSERT_TRUE(start());
        openSession();
        ASSERT_TRUE(waitForCommands({registration}));
    }

    Lines attached() {
        Lines calls = sim.calls();
        std::erase_if(calls, [](const std::string& call) { return call.find("Client") == std::string::npos; });
        return calls;
    }
};

TEST_F(MobiFlightProtocol, SessionAttachesThenRegisters) {
    sendRegistration();
    Lines expected = attachCalls;
    expected.emplace_back(R"(SetClientData(h1, 0x1000, 0x1100, 0, 0, 256, "MF.Clients.Add.bridge"))");
    EXPECT_EQ(attached(), expected);
    EXPECT_EQ(log.lines(), (Lines{"[INFO] SimConnect connected", "[DEBUG] MobiFlight command: MF.Clients.Add.bridge"}));
    EXPECT_FALSE(client.isReady());
}

TEST_F(MobiFlightProtocol, ChannelsBearTheConfiguredNames) {
    config.commandChannel = "A";
    config.responseChannel = "B";
    config.lvarsChannel = "C";
    sendRegistration();
    const Lines calls = attached();
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + 3),
              (Lines{R"(MapClientDataNameToID(h1, "A", 0x1000))", R"(MapClientDataNameToID(h1, "B", 0x1001))",
                     R"(MapClientDataNameToID(h1, "C", 0x1002))"}));
}

TEST_F(MobiFlightProtocol, EachFailedStepEndsTheAttachment) {
    const struct {
        SimCall call;
        const char* name;
        std::size_t steps;
    } kinds[] = {{SimCall::MapClientDataNameToId, "SimConnect_MapClientDataNameToID", 3},
                 {SimCall::AddToClientDataDefinition, "SimConnect_AddToClientDataDefinition", 3},
                 {SimCall::RequestClientData, "SimConnect_RequestClientData", 2}};
    ASSERT_TRUE(start());
    openSession();
    ASSERT_TRUE(waitForCommands({registration}));
    std::size_t made = 0;
    for (const auto& kind : kinds) {
        for (std::size_t step = 0; step < kind.steps; ++step) {
            std::vector<SimConnectResult> results(step, 0);
            results.push_back(simConnectFail);
            sim.script(kind.call, results);
            sim.takeCalls();
            log.clear();
            client.onSimConnectState(true);
            ++made;
            EXPECT_EQ(sim.calls(), Lines(attachCalls.begin(), attachCalls.begin() + static_cast<std::ptrdiff_t>(made)));
            EXPECT_EQ(log.lines(), (Lines{"[WARN] MobiFlight channel initialization failed: " + std::string(kind.name) +
                                          " failed (0x80004005)"}));
        }
    }
    EXPECT_EQ(made, attachCalls.size());
    EXPECT_TRUE(idle());
    EXPECT_EQ(sim.commands().size(), 1U);
}

TEST_F(MobiFlightProtocol, SessionThatIsGoneAgainFailsTheAttachment) {
    ASSERT_TRUE(start());
    client.onSimConnectState(true);
    EXPECT_EQ(log.lines(), (Lines{"[WARN] MobiFlight channel initialization failed: SimConnect is not connected"}));
}

TEST_F(MobiFlightProtocol, ConfirmationClearsAndSubscribesWithoutDummies) {
    sendRegistration();
    confirm();
    EXPECT_TRUE(client.isReady());
    EXPECT_TRUE(waitForCommands({registration, clearText, addText}));
    EXPECT_TRUE(log.has("[INFO] MobiFlight client registered"));
}

TEST_F(MobiFlightProtocol, SecondConfirmationDoesNothing) {
    sendRegistration();
    confirm();
    confirm();
    EXPECT_TRUE(waitUntil([this] { return sim.commands().size() >= 3 && idle(); }));
    EXPECT_EQ(sim.commands(), (Lines{registration, clearText, addText}));
    EXPECT_EQ(log.linesWith("registered").size(), 1U);
}

TEST_F(MobiFlightProtocol, ConfirmationOfAnotherClientIsNotOurs) {
    sendRegistration();
    for (const char* text :
         {"MF.Clients.Add.other.Finished", "MF.Clients.Add.bridge2.Finished", "MF.Clients.Add.my-bridge.Finished",
          "MF.Clients.Add.Bridge.Finished", "MF.Clients.Add.bridge", "MF.Clients.Add.bridge.finished", ".Finished"})
        respond(text);
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(log.linesWith("registered"), Lines());
}

TEST_F(MobiFlightProtocol, ConfirmationAmidOtherWordsCounts) {
    sendRegistration();
    respond("xx MF.Clients.Add.bridge.Finished yy");
    EXPECT_TRUE(client.isReady());
}

TEST_F(MobiFlightProtocol, ConfirmationBehindAZeroDoesNotCount) {
    sendRegistration();
    respond(std::string("x\0MF.Clients.Add.bridge.Finished", 32));
    respond(std::string("\0MF.Clients.Add.bridge.Finished", 31));
    EXPECT_FALSE(client.isReady());
}

TEST_F(MobiFlightProtocol, BlockWithoutAZeroIsTakenWhole) {
    sendRegistration();
    const std::string text = "MF.Clients.Add.bridge.Finished";
    const std::vector<std::uint8_t> block(text.begin(), text.end());
    client.onClientData(0x1200, block.data(), static_cast<std::uint32_t>(block.size()) - 1);
    EXPECT_FALSE(client.isReady());
    client.onClientData(0x1200, block.data(), static_cast<std::uint32_t>(block.size()));
    EXPECT_TRUE(client.isReady());
}

TEST_F(MobiFlightProtocol, RefusedRegistrationIsLogged) {
    sendRegistration();
    respond("MF.Clients.Add.bridge.Error: full");
    EXPECT_TRUE(log.has("[WARN] MobiFlight registration error: MF.Clients.Add.bridge.Error: full"));
    EXPECT_FALSE(client.isReady());
}

TEST_F(MobiFlightProtocol, RefusalLeavesAReadyClientReady) {
    becomeReady();
    respond("MF.Clients.Add.bridge.Error");
    EXPECT_TRUE(client.isReady());
    EXPECT_TRUE(log.has("[WARN] MobiFlight registration error: MF.Clients.Add.bridge.Error"));
}

TEST_F(MobiFlightProtocol, TextWithConfirmationAndRefusalConfirms) {
    sendRegistration();
    respond("MF.Clients.Add.bridge.Error MF.Clients.Add.bridge.Finished");
    EXPECT_TRUE(client.isReady());
    EXPECT_EQ(log.linesWith("registration error"), Lines());
}

TEST_F(MobiFlightProtocol, OtherResponsesAreIgnored) {
    sendRegistration();
    const Lines before = log.lines();
    respond("MF.Pong");
    respond("");
    respond("MF.Clients.Add.other.Error");
    client.onClientData(0x1200, nullptr, 256);
    const std::uint8_t byte = 'x';
    client.onClientData(0x1200, &byte, 0);
    EXPECT_EQ(log.lines(), before);
}

TEST_F(MobiFlightProtocol, OtherRequestsAreIgnored) {
    sendRegistration();
    const Lines before = log.lines();
    const std::string text = "MF.Clients.Add.bridge.Finished";
    const std::vector<std::uint8_t> block(text.begin(), text.end());
    for (const std::uint32_t id : {0U, 1U, 0x1000U, 0x11FFU, 0x1202U, 0xFFFFFFFFU})
        client.onClientData(id, block.data(), static_cast<std::uint32_t>(block.size()));
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(log.lines(), before);
}

TEST_F(MobiFlightProtocol, EndOfTheSessionIsLoggedAndEndsReadiness) {
    becomeReady();
    endSession();
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(log.lines().back(), "[INFO] MobiFlight client waiting for SimConnect");
    EXPECT_EQ(log.linesWith("waiting for SimConnect").size(), 1U);
}

TEST_F(MobiFlightProtocol, NextSessionGoesThroughTheWholeHandshakeAgain) {
    becomeReady();
    endSession();
    openSession();
    ASSERT_TRUE(waitUntil([this] { return sim.commands().back() == registration; }));
    EXPECT_FALSE(client.isReady());
    confirm();
    ASSERT_TRUE(waitUntil([this] { return sim.commands().size() == 6; }));
    EXPECT_EQ(sim.commands(), (Lines{registration, clearText, addText, registration, clearText, addText}));
}

TEST_F(MobiFlightProtocol, NewSessionWithoutAnEndOfTheOldOneRegistersAgain) {
    becomeReady();
    client.onSimConnectState(true);
    EXPECT_FALSE(client.isReady());
    EXPECT_TRUE(waitUntil([this] { return sim.commands().size() == 4; }));
    EXPECT_EQ(sim.commands().back(), registration);
}
