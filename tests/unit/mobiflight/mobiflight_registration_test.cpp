#include "tests/unit/mobiflight/mobiflight_fixture.h"

// How the client registers with the module, with and without the extensions.

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t begin = 1'000'000'000;

} // namespace

class MobiFlightRegistration : public MobiFlightFixture {
protected:
    void startWith(const ExtensionsConfig& extensions) {
        client.setExtensions(extensions);
        ASSERT_TRUE(start());
        openSession();
    }

    /// The areas that were mapped since the last call, by name and number.
    Lines takeMappedAreas() { return takeCalls("MapClientDataNameToID"); }

    /// The writes since the last call: the area's number and the text.
    Lines takeWrites() {
        Lines writes = takeCalls("SetClientData");
        for (std::string& call : writes) {
            call = call.substr(0, 6) + call.substr(call.rfind(", ") + 1);
        }
        return writes;
    }

    /// The arguments of these calls, behind the session. Forgets all calls.
    Lines takeCalls(const std::string& name) {
        Lines calls = sim.takeCalls();
        std::erase_if(calls, [&](const std::string& call) { return !call.starts_with(name); });
        for (std::string& call : calls) {
            call = call.substr(name.size() + 5, call.size() - name.size() - 6);
        }
        return calls;
    }

    /// Has a command wait, so that the worker looks at the time after each of its sleeps.
    void keepWorkerAwake() {
        ASSERT_TRUE(queue("waiting"));
        ASSERT_EQ(host.waitForSleep(), 50);
    }

    void passTo(std::int64_t now) {
        host.setNow(now);
        ASSERT_EQ(host.nextSleep(), 50);
    }

    static constexpr const char* ping = "MF.Ping";
    static constexpr const char* attachFailure = "[WARN] MobiFlight channel initialization failed: "
                                                 "SimConnect_MapClientDataNameToID failed (0x80004005)";
};

TEST_F(MobiFlightRegistration, UsesTheConfiguredChannels) {
    config.commandChannel = "A";
    config.responseChannel = "B";
    config.lvarsChannel = "C";
    registering();
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(takeMappedAreas(), (Lines{R"("A", 0x1000)", R"("B", 0x1001)", R"("C", 0x1002)"}));
}

TEST_F(MobiFlightRegistration, IsNotMadeAfterAFailedAttachment) {
    ASSERT_TRUE(start());
    sim.script(SimCall::MapClientDataNameToId, {simConnectFail});
    openSession();
    EXPECT_EQ(log.linesWith("WARN"), (Lines{attachFailure}));
    confirm();
    EXPECT_TRUE(waitForCommands({clearText, addText}));
}

TEST_F(MobiFlightRegistration, ConfirmationClearsAndSubscribesOnceWithoutDummies) {
    registering();
    takeMappedAreas();
    registerClient();
    confirm();
    EXPECT_EQ(takeMappedAreas(), Lines()) << "no channels of its own";
    EXPECT_EQ(written(), Lines());
    EXPECT_EQ(log.linesWith("registered"), (Lines{"[INFO] MobiFlight client registered"}));
}

TEST_F(MobiFlightRegistration, AnswersAreReadByTheirText) {
    const std::string finished = "MF.Clients.Add.bridge.Finished";
    const std::string refused = "MF.Clients.Add.bridge.Error";
    const struct {
        std::string text;
        bool ready;
        bool warned;
    } rows[] = {
        {"", false, false},
        {"MF.Pong", false, false},
        {"MF.Clients.Add.other.Finished", false, false},
        {"MF.Clients.Add.bridge2.Finished", false, false},
        {"MF.Clients.Add.my-bridge.Finished", false, false},
        {"MF.Clients.Add.Bridge.Finished", false, false},
        {"MF.Clients.Add.bridge", false, false},
        {"MF.Clients.Add.bridge.finished", false, false},
        {"MF.Clients.Add.other.Error", false, false},
        {std::string("x\0", 2) + finished, false, false},
        {refused + ": full", false, true},
        {finished, true, false},
        {"xx " + finished + " yy", true, false},
        {refused + " " + finished, true, false},
    };
    registering();
    for (const auto& row : rows) {
        log.clear();
        client.onSimConnectState(true);
        respond(row.text);
        EXPECT_EQ(client.isReady(), row.ready) << row.text;
        const Lines warnings = row.warned ? Lines{"[WARN] MobiFlight registration error: " + row.text} : Lines();
        EXPECT_EQ(log.linesWith("WARN"), warnings) << row.text;
    }
    respond(refused);
    EXPECT_TRUE(client.isReady()) << "a refusal leaves a ready client ready";
    // The module confirms in its response area only.
    client.onSimConnectState(true);
    for (const std::uint32_t request : {0U, 0x1000U, 0x11FFU, 0x1201U, 0x1202U}) {
        respond(finished, request);
    }
    EXPECT_FALSE(client.isReady());
}

TEST_F(MobiFlightRegistration, IsMadeAnewInEachSession) {
    becomeReady();
    endSession();
    EXPECT_FALSE(client.isReady());
    EXPECT_TRUE(log.has("[INFO] MobiFlight client waiting for SimConnect"));
    openSession();
    EXPECT_TRUE(waitUntil([this] { return sinceHandshake() == Lines{registration}; }));
    EXPECT_FALSE(client.isReady());
    registerClient();
    // Even when nobody reported the end of the old one.
    client.onSimConnectState(true);
    EXPECT_FALSE(client.isReady());
    EXPECT_TRUE(waitUntil([this] { return sinceHandshake() == Lines{registration}; }));
}

TEST_F(MobiFlightRegistration, SubscribesTheConfiguredVariableAndReadsNumbersWhereTheSettingSaysSo) {
    startWith({.lvarNumbers = true, .lightVariable = "(A:LIGHT POTENTIOMETER:3, percent over 100)"});
    confirm();
    EXPECT_TRUE(
        waitForCommands({registration, clearText, "MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)"}));
    respondVariable({'3', '3', '3', '?'});
    EXPECT_TRUE(log.has("[DEBUG] MobiFlight LVars: 0.700000"));
}

TEST_F(MobiFlightRegistration, WithoutRenewalIsNeverRepeated) {
    registering();
    keepWorkerAwake();
    sim.takeCalls();
    passTo(begin + 3600 * second);
    EXPECT_EQ(sim.takeCalls(), Lines());
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
}

class RenewRegistration : public MobiFlightRegistration {
protected:
    void openMuteSession() {
        startWith({.renewRegistration = true});
        // A ping comes ahead of the registration.
        ASSERT_TRUE(waitForCommands({ping, registration}));
        keepWorkerAwake();
    }

    /// The registration has been sent once, and nobody warns that it has no answer.
    void expectNoRenewal() {
        EXPECT_EQ(sim.commands(), (Lines{ping, registration}));
        EXPECT_EQ(silenceWarnings(), Lines());
    }

    Lines silenceWarnings() { return log.linesWith("has not answered"); }
};

TEST_F(RenewRegistration, RepeatsTheWholeAttachmentEveryTwoSecondsWithNewNumbers) {
    openMuteSession();
    sim.takeCalls();
    passTo(begin + 2 * second - 1);
    EXPECT_EQ(sim.takeCalls(), Lines());
    passTo(begin + 2 * second);
    EXPECT_EQ(takeWrites(), (Lines{R"(0x1003 "MF.Ping")", R"(0x1003 "MF.Clients.Add.bridge")"}));
    passTo(begin + 4 * second);
    EXPECT_EQ(takeMappedAreas(), (Lines{R"("MobiFlight.Command", 0x1006)", R"("MobiFlight.Response", 0x1007)",
                                        R"("MobiFlight.LVars", 0x1008)"}));
}

TEST_F(RenewRegistration, EndsWithTheConfirmation) {
    openMuteSession();
    confirm();
    host.setNow(begin + 60 * second);
    host.letSleepsPass();
    EXPECT_EQ(written(), (Lines{ping, registration, set("waiting"), dummy, clearText, addText}));
    EXPECT_EQ(silenceWarnings(), Lines());
}

TEST_F(RenewRegistration, IsSatisfiedByAnAnswerThatComesMeanwhile) {
    openMuteSession();
    onNext(SimCall::RequestClientData, [this] { confirm(); });
    host.setNow(begin + 2 * second);
    host.letSleepsPass();
    EXPECT_TRUE(waitForCommands({ping, registration, set("waiting"), dummy, clearText, addText}));
}

TEST_F(RenewRegistration, EndsWithASessionThatEndsMeanwhile) {
    openMuteSession();
    onNext(SimCall::RequestClientData, [this] {
        client.onSimConnectState(false);
        client.onSimConnectState(true);
    });
    host.setNow(begin + 2 * second);
    host.letSleepsPass();
    // What began in the old session doesn't register in the new one, which does so by itself.
    ASSERT_TRUE(waitForCommands({ping, registration, ping, registration}));
    confirm();
    EXPECT_TRUE(waitForCommands({ping, registration, ping, registration, clearText, addText}));
}

TEST_F(RenewRegistration, EndsWithARefusal) {
    openMuteSession();
    respond("MF.Clients.Add.bridge.Error");
    passTo(begin + 60 * second);
    expectNoRenewal();
}

TEST_F(RenewRegistration, EndsWithTheSession) {
    openMuteSession();
    endSession();
    host.setNow(begin + 60 * second);
    host.endSleep();
    ASSERT_TRUE(queue("later"));
    ASSERT_EQ(host.waitForSleep(), 100);
    expectNoRenewal();
}

TEST_F(RenewRegistration, WarnsOfAModuleThatIsSilentForTenSeconds) {
    openMuteSession();
    passTo(begin + 10 * second);
    passTo(begin + 30 * second);
    EXPECT_EQ(silenceWarnings(),
              (Lines{"[WARN] MobiFlight module has not answered for 10 seconds; it may not be installed"}));
}

TEST_F(RenewRegistration, DoesNotWarnOfAModuleThatAnswersThePing) {
    openMuteSession();
    respond("MF.Pong");
    passTo(begin + 10 * second);
    EXPECT_EQ(silenceWarnings(), Lines());
    EXPECT_EQ(sim.commands(), (Lines{ping, registration, ping, registration}));
}

TEST_F(RenewRegistration, RepeatsAFailedAttachmentToo) {
    sim.script(SimCall::RequestClientData, {simConnectFail, simConnectFail});
    startWith({.renewRegistration = true});
    keepWorkerAwake();
    // The second attempt fails too, silently.
    passTo(begin + 2 * second);
    EXPECT_EQ(sim.count(SimCall::RequestClientData), 2U);
    EXPECT_EQ(sim.commands(), Lines());
    passTo(begin + 4 * second);
    EXPECT_EQ(sim.commands(), (Lines{ping, registration}));
    EXPECT_EQ(log.linesWith("channel initialization failed").size(), 1U);
}

TEST_F(RenewRegistration, WakesAnIdleWorker) {
    startWith({.renewRegistration = true});
    // The worker waits in real time, for what the clock says is left until the renewal is due.
    host.setNow(begin + 2 * second - 1'000'000);
    ASSERT_TRUE(waitForCommands({ping, registration}));
    host.setNow(begin + 2 * second);
    EXPECT_TRUE(waitForCommands({ping, registration, ping, registration}));
}

TEST_F(RenewRegistration, EndsWithAFailedAttachmentToOwnChannels) {
    startWith({.renewRegistration = true, .ownChannels = true});
    ASSERT_TRUE(waitForCommands({ping, registration, dummy}));
    keepWorkerAwake();
    sim.script(SimCall::MapClientDataNameToId, {simConnectFail});
    confirm();
    passTo(begin + 60 * second);
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(sim.commands(), (Lines{ping, registration, dummy}));
    EXPECT_EQ(log.linesWith("WARN"), (Lines{attachFailure}));
}

TEST_F(MobiFlightRegistration, OwnChannelsCarryAllButTheRegistration) {
    startWith({.ownChannels = true});
    ASSERT_TRUE(waitForCommands({registration, dummy}));
    // The shared values are left alone.
    EXPECT_EQ(takeMappedAreas(), (Lines{R"("MobiFlight.Command", 0x1000)", R"("MobiFlight.Response", 0x1001)"}));
    registerClient();
    EXPECT_EQ(sim.calls().front(), R"(MapClientDataNameToID(h1, "bridge.Command", 0x1003))");
    EXPECT_EQ(takeWrites(), (Lines{R"(0x1003 "MF.SimVars.Clear")", "0x1003 \"" + std::string(addText) + "\"",
                                   R"(0x1003 "MF.SimVars.Set.1 ready")", R"(0x1003 "MF.DummyCmd")"}));
    // Each session registers on the shared ones again.
    const std::size_t before = sim.count(SimCall::SetClientData);
    changeSession();
    ASSERT_TRUE(waitUntil([&] { return sim.count(SimCall::SetClientData) == before + 2; }));
    EXPECT_EQ(takeWrites(), (Lines{R"(0x1000 "MF.Clients.Add.bridge")", R"(0x1000 "MF.DummyCmd")"}));
}

TEST_F(MobiFlightRegistration, ClientWithoutALightVariableSendsOnlyWhatItIsAskedTo) {
    startWith({.lightVariable = ""});
    ASSERT_TRUE(waitForCommands({registration}));
    EXPECT_FALSE(client.sendTextNow("MF.SimVars.Clear", error));
    EXPECT_EQ(error, "MobiFlight not ready");
    confirm();
    ASSERT_TRUE(client.sendTextNow("MF.SimVars.Add.1", error)) << error;
    ASSERT_TRUE(queue("a"));
    EXPECT_TRUE(waitForCommands({registration, "MF.SimVars.Add.1", dummy, "MF.SimVars.Set.1 a", dummy}));
}
