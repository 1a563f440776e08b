// What the extensions change in the client. Their defaults are what all other tests run with.

#include "tests/unit/mobiflight/mobiflight_fixture.h"

#include <bit>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <utility>

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::int64_t begin = 1'000'000'000;

std::string hex(std::uint32_t number) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%X", number);
    return text;
}

/// The calls of one attachment, whose areas and definitions are numbered from these on.
std::vector<std::string> attachCalls(const std::string& client, std::uint32_t area, std::uint32_t definition) {
    const auto map = [&](const char* suffix, std::uint32_t id) {
        return "MapClientDataNameToID(h1, \"" + client + suffix + "\", " + hex(id) + ")";
    };
    const auto define = [](std::uint32_t id, const char* size) {
        return "AddToClientDataDefinition(h1, " + hex(id) + ", 0, " + size + ", 0, 0xFFFFFFFF)";
    };
    const auto request = [](std::uint32_t areaId, const char* requestId, std::uint32_t definitionId) {
        return "RequestClientData(h1, " + hex(areaId) + ", " + requestId + ", " + hex(definitionId) +
               ", 3, 1, 0, 0, 0)";
    };
    return {map(".Command", area),
            map(".Response", area + 1),
            map(".LVars", area + 2),
            define(definition, "256"),
            define(definition + 1, "256"),
            define(definition + 2, "0x1000"),
            request(area + 1, "0x1200", definition + 1),
            request(area + 2, "0x1201", definition + 2)};
}

} // namespace

class MobiFlightExtensions : public MobiFlightFixture {
protected:
    ~MobiFlightExtensions() override { stop(); }

    void startWith(const ExtensionsConfig& extensions) {
        client.setExtensions(extensions);
        ASSERT_TRUE(start());
    }

    /// Calls of client data, without the writes of commands.
    Lines takeAttachCalls() {
        Lines calls = sim.takeCalls();
        std::erase_if(calls, [](const std::string& call) {
            return call.find("Client") == std::string::npos || call.starts_with("SetClientData");
        });
        return calls;
    }

    /// The writes of commands since the last look: the area's number and the text.
    Lines takeWrites() {
        Lines writes;
        for (const std::string& call : sim.takeCalls()) {
            if (call.starts_with("SetClientData"))
                writes.push_back(call.substr(18, 6) + call.substr(call.rfind(", ") + 1));
        }
        return writes;
    }

    /// Keeps the worker going, so that it looks at the time after each of its naps.
    void keepWorkerAwake() {
        ASSERT_TRUE(queue("waiting"));
        ASSERT_EQ(host.waitForSleep(), 50);
    }

    void passTo(std::int64_t now) {
        host.setNow(now);
        ASSERT_EQ(host.nextSleep(), 50);
    }

    static constexpr const char* ping = "MF.Ping";
    static constexpr const char* silence =
        "[WARN] MobiFlight module has not answered for 10 seconds; it may not be installed";
};

class RenewRegistration : public MobiFlightExtensions {
protected:
    ~RenewRegistration() override { stop(); }

    /// Does this on the worker, once, when it next asks the simulator for an area.
    void onNextRequest(std::function<void()> action) {
        auto once = std::make_shared<std::function<void()>>(std::move(action));
        sim.setHook([once](SimCall call) {
            if (call == SimCall::RequestClientData && *once)
                std::exchange(*once, nullptr)();
        });
    }

    void openMuteSession() {
        startWith({.renewRegistration = true});
        openSession();
        ASSERT_TRUE(waitForCommands({ping, registration}));
        keepWorkerAwake();
    }
};

TEST_F(RenewRegistration, PingComesAheadOfTheRegistration) {
    openMuteSession();
    EXPECT_EQ(sim.commands(), (Lines{ping, registration}));
}

TEST_F(RenewRegistration, WholeAttachmentIsRepeatedEveryTwoSecondsWithNumbersOfItsOwn) {
    openMuteSession();
    EXPECT_EQ(takeAttachCalls(), attachCalls("MobiFlight", 0x1000, 0x1100));
    passTo(begin + 2 * second - 1);
    EXPECT_EQ(takeAttachCalls(), Lines());
    passTo(begin + 2 * second);
    EXPECT_EQ(takeAttachCalls(), attachCalls("MobiFlight", 0x1003, 0x1103));
    EXPECT_EQ(sim.commands(), (Lines{ping, registration, ping, registration}));
    passTo(begin + 4 * second);
    EXPECT_EQ(takeAttachCalls(), attachCalls("MobiFlight", 0x1006, 0x1106));
}

TEST_F(RenewRegistration, CommandsGoToTheAreaOfTheLatestAttachment) {
    openMuteSession();
    sim.takeCalls();
    passTo(begin + 2 * second);
    EXPECT_EQ(takeWrites(), (Lines{"0x1003 \"MF.Ping\")", "0x1003 \"MF.Clients.Add.bridge\")"}));
}

TEST_F(RenewRegistration, ConfirmationEndsIt) {
    openMuteSession();
    confirm();
    host.setNow(begin + 60 * second);
    host.letSleepsPass();
    ASSERT_TRUE(waitUntil([this] { return idle(); }));
    EXPECT_EQ(written(0), (Lines{ping, registration, set("waiting"), dummy, clearText, addText}));
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
}

TEST_F(RenewRegistration, AnswerThatComesMeanwhileIsEnough) {
    openMuteSession();
    onNextRequest([this] { confirm(); });
    host.setNow(begin + 2 * second);
    host.letSleepsPass();
    EXPECT_TRUE(waitForCommands({ping, registration, set("waiting"), dummy, clearText, addText}));
}

TEST_F(RenewRegistration, SessionThatEndsMeanwhileTakesItAlong) {
    openMuteSession();
    onNextRequest([this] {
        client.onSimConnectState(false);
        client.onSimConnectState(true);
    });
    host.setNow(begin + 2 * second);
    host.letSleepsPass();
    // What was begun in the old session doesn't register in the new one, which does so by itself.
    ASSERT_TRUE(waitForCommands({ping, registration, ping, registration}));
    confirm();
    EXPECT_TRUE(waitForCommands({ping, registration, ping, registration, clearText, addText}));
}

TEST_F(RenewRegistration, RefusalEndsIt) {
    openMuteSession();
    respond("MF.Clients.Add.bridge.Error");
    passTo(begin + 60 * second);
    EXPECT_EQ(sim.commands(), (Lines{ping, registration}));
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
}

TEST_F(RenewRegistration, OneWarningComesAfterTenSilentSeconds) {
    openMuteSession();
    passTo(begin + 10 * second - 1);
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
    passTo(begin + 10 * second);
    passTo(begin + 30 * second);
    EXPECT_EQ(log.linesWith("has not answered"), (Lines{silence}));
}

TEST_F(RenewRegistration, ModuleThatAnswersThePingIsNotReportedMissing) {
    openMuteSession();
    respond("MF.Pong");
    passTo(begin + 10 * second);
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
    EXPECT_EQ(sim.commands(), (Lines{ping, registration, ping, registration}));
}

TEST_F(RenewRegistration, FailedAttachmentIsRepeatedToo) {
    sim.script(SimCall::RequestClientData, {simConnectFail});
    startWith({.renewRegistration = true});
    openSession();
    EXPECT_EQ(sim.commands(), Lines());
    // Nothing is queued that could wake the worker but the renewal itself.
    host.setNow(begin + 2 * second);
    EXPECT_TRUE(waitForCommands({ping, registration}));
    EXPECT_EQ(log.linesWith("channel initialization failed").size(), 1U);
}

TEST_F(RenewRegistration, IdleWorkerWakesForIt) {
    startWith({.renewRegistration = true});
    openSession();
    // The worker's wait is a real one, whatever the clock says: it lasts for what is left by then.
    host.setNow(begin + 2 * second - 1'000'000);
    ASSERT_TRUE(waitForCommands({ping, registration}));
    host.setNow(begin + 2 * second);
    EXPECT_TRUE(waitForCommands({ping, registration, ping, registration}));
}

TEST_F(RenewRegistration, LostSessionEndsIt) {
    openMuteSession();
    endSession();
    host.setNow(begin + 60 * second);
    host.endSleep();
    ASSERT_TRUE(queue("later"));
    ASSERT_EQ(host.waitForSleep(), 100);
    EXPECT_EQ(sim.commands(), (Lines{ping, registration}));
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
}

TEST_F(MobiFlightExtensions, WithoutRenewalAnUnansweredRegistrationIsNeverRepeated) {
    startWith({});
    openSession();
    ASSERT_TRUE(waitForCommands({registration}));
    keepWorkerAwake();
    sim.takeCalls();
    passTo(begin + 3600 * second);
    EXPECT_EQ(sim.takeCalls(), Lines());
    EXPECT_EQ(log.linesWith("has not answered"), Lines());
}

TEST_F(MobiFlightExtensions, OwnChannelsCarryAllButTheRegistration) {
    startWith({.ownChannels = true});
    openSession();
    ASSERT_TRUE(waitForCommands({registration, dummy}));
    EXPECT_EQ(takeWrites(), (Lines{"0x1000 \"MF.Clients.Add.bridge\")", "0x1000 \"MF.DummyCmd\")"}));
    confirm();
    ASSERT_TRUE(queue("1 (>K:AP_MASTER)"));
    ASSERT_TRUE(waitForCommands({registration, dummy, clearText, addText, "MF.SimVars.Set.1 1 (>K:AP_MASTER)", dummy}));
    const Lines calls = sim.calls();
    const Lines own = attachCalls("bridge", 0x1003, 0x1103);
    ASSERT_GE(calls.size(), own.size());
    EXPECT_EQ(Lines(calls.begin(), calls.begin() + static_cast<std::ptrdiff_t>(own.size())), own);
    EXPECT_EQ(takeWrites(), (Lines{"0x1003 \"MF.SimVars.Clear\")", "0x1003 \"" + std::string(addText) + "\")",
                                   "0x1003 \"MF.SimVars.Set.1 1 (>K:AP_MASTER)\")", "0x1003 \"MF.DummyCmd\")"}));
}

TEST_F(MobiFlightExtensions, OwnChannelsLeaveTheSharedValuesAlone) {
    startWith({.ownChannels = true});
    openSession();
    Lines expected = attachCalls("MobiFlight", 0x1000, 0x1100);
    std::erase_if(expected, [](const std::string& call) {
        return call.find("0x1002") != std::string::npos || call.find("0x1102") != std::string::npos;
    });
    ASSERT_TRUE(waitForCommands({registration, dummy}));
    EXPECT_EQ(takeAttachCalls(), expected);
}

TEST_F(MobiFlightExtensions, FailedAttachmentToOwnChannelsLeavesTheClientUnregistered) {
    startWith({.ownChannels = true});
    openSession();
    ASSERT_TRUE(waitForCommands({registration, dummy}));
    sim.script(SimCall::MapClientDataNameToId, {simConnectFail});
    confirm();
    EXPECT_FALSE(client.isReady());
    EXPECT_EQ(log.linesWith("failed"), (Lines{"[WARN] MobiFlight channel initialization failed: "
                                              "SimConnect_MapClientDataNameToID failed (0x80004005)"}));
    EXPECT_EQ(sim.commands(), (Lines{registration, dummy}));
}

TEST_F(RenewRegistration, FailedAttachmentToOwnChannelsEndsIt) {
    startWith({.renewRegistration = true, .ownChannels = true});
    openSession();
    ASSERT_TRUE(waitForCommands({ping, registration, dummy}));
    keepWorkerAwake();
    sim.script(SimCall::MapClientDataNameToId, {simConnectFail});
    confirm();
    passTo(begin + 60 * second);
    EXPECT_EQ(sim.commands(), (Lines{ping, registration, dummy}));
    EXPECT_EQ(log.linesWith("channel initialization failed").size(), 1U);
}

TEST_F(MobiFlightExtensions, EachSessionRegistersOnTheSharedChannelsAgain) {
    startWith({.ownChannels = true});
    openSession();
    ASSERT_TRUE(waitForCommands({registration, dummy}));
    confirm();
    ASSERT_TRUE(waitForCommands({registration, dummy, clearText, addText}));
    endSession();
    sim.takeCalls();
    openSession();
    ASSERT_TRUE(waitForCommands({registration, dummy, clearText, addText, registration, dummy}));
    EXPECT_EQ(takeWrites(), (Lines{"0x1000 \"MF.Clients.Add.bridge\")", "0x1000 \"MF.DummyCmd\")"}));
}

TEST_F(MobiFlightExtensions, LightVariableIsTheOneSubscribed) {
    startWith({.lightVariable = "(A:LIGHT POTENTIOMETER:3, percent over 100)"});
    openSession();
    confirm();
    EXPECT_TRUE(
        waitForCommands({registration, clearText, "MF.SimVars.Add.(A:LIGHT POTENTIOMETER:3, percent over 100)"}));
}

class LVarNumbers : public MobiFlightExtensions {
protected:
    LVarNumbers() {
        client.setLVarHandler([this](const std::string& text) { received.push_back(text); });
        startWith({.lvarNumbers = true});
    }
    ~LVarNumbers() override { stop(); }

    Lines receive(const std::vector<std::uint8_t>& payload) {
        received.clear();
        client.onClientData(0x1201, payload.data(), static_cast<std::uint32_t>(payload.size()));
        return received;
    }

    Lines receive(float value) {
        const auto bits = std::bit_cast<std::uint32_t>(value);
        return receive({static_cast<std::uint8_t>(bits), static_cast<std::uint8_t>(bits >> 8),
                        static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 24)});
    }

    double valueRead(float sent) {
        const Lines texts = receive(sent);
        EXPECT_EQ(texts.size(), 1U) << sent;
        return texts.empty() ? -1 : std::stod(texts.front());
    }

    Lines received;
};

TEST_F(LVarNumbers, EveryStepOfAFractionIsRead) {
    for (int step = 0; step <= 100; ++step) {
        EXPECT_NEAR(valueRead(static_cast<float>(step) / 100.0F), step / 100.0, 1e-6);
    }
}

TEST_F(LVarNumbers, EveryWholePercentageIsRead) {
    for (int percent = 0; percent <= 100; ++percent) {
        EXPECT_EQ(valueRead(static_cast<float>(percent)), percent);
    }
}

TEST_F(LVarNumbers, BytesThatLookLikeATextAreANumber) {
    EXPECT_EQ(receive({'3', '3', '3', '?', 'x'}), (Lines{"0.700000"}));
}

TEST_F(LVarNumbers, InfinitiesAndShortPayloadsAreDropped) {
    EXPECT_EQ(receive(std::numeric_limits<float>::infinity()), Lines());
    EXPECT_EQ(receive(-std::numeric_limits<float>::infinity()), Lines());
    EXPECT_EQ(receive(std::numeric_limits<float>::quiet_NaN()), Lines());
    EXPECT_EQ(receive({'0', '.', '5'}), Lines());
    EXPECT_EQ(receive(std::vector<std::uint8_t>()), Lines());
}
