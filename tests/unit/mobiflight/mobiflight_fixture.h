#pragma once

#include "logging/logger.h"
#include "mobiflight/mobiflight_client.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"

#include <gtest/gtest.h>

/// While it is closed, a thread that passes it waits.
class Gate {
public:
    void close() { closed = true; }
    void open() { closed = false; }
    void pass() {
        ++waiting;
        waitUntil([this] { return !closed; });
        --waiting;
    }
    bool waitForSomebody() {
        return waitUntil([this] { return waiting > 0; });
    }

private:
    std::atomic<bool> closed{false};
    std::atomic<int> waiting{0};
};

/// A client on a simulator in memory. Both workers run: the session's goes on only when the test opens or ends a
/// session, and the client's is held in its sleeps.
class MobiFlightFixture : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    MobiFlightFixture() {
        config.clientName = "bridge";
        host.holdSleeps();
        host.setNow(1'000'000'000);
        simHost.holdSleeps();
        simHost.setProcesses({"FlightSimulator.exe"});
    }
    ~MobiFlightFixture() override { stop(); }

    bool start() { return client.start(&simConnect, config, error); }

    void stop() {
        gate.open();
        host.letSleepsPass();
        simHost.letSleepsPass();
        client.stop();
        simConnect.stop();
    }

    /// The session's worker opens one and notifies the client.
    void openSession() {
        const bool isFirst = simHost.threadsStarted() == 0;
        if (isFirst) {
            simConnect.start(
                "bridge", [this](bool connected) { client.onSimConnectState(connected); }, nullptr, error);
        }
        ASSERT_EQ(isFirst ? simHost.waitForSleep() : simHost.nextSleep(), 15);
    }

    void endSession() {
        sim.script(SimCall::CallDispatch, {simConnectFail});
        ASSERT_EQ(simHost.nextSleep(), 15);
    }

    void changeSession() {
        endSession();
        openSession();
    }

    /// A block from the module, through the session.
    void deliver(std::uint32_t requestId, const std::string& text) {
        sim.deliverText(requestId, text, 256);
        ASSERT_EQ(simHost.nextSleep(), 15);
    }

    void respond(const std::string& text, std::uint32_t requestId = 0x1200) {
        std::vector<std::uint8_t> block(text.begin(), text.end());
        block.resize(256);
        client.onClientData(requestId, block.data(), 256);
    }

    void confirm() { respond("MF.Clients.Add.bridge.Finished"); }

    /// The module sends a value of the variable.
    void respondVariable(const std::vector<std::uint8_t>& block = {'7'}) {
        client.onClientData(0x1201, block.data(), static_cast<std::uint32_t>(block.size()));
    }

    /// Starts and opens a session whose registration is sent and not yet answered.
    void registering() {
        ASSERT_TRUE(start());
        openSession();
        ASSERT_TRUE(waitForCommands({registration}));
    }

    /// Confirms the registration that was sent, and forgets the commands up to the end of the handshake.
    void registerClient() {
        const std::size_t before = sim.commands().size();
        confirm();
        ASSERT_TRUE(client.isReady());
        ASSERT_TRUE(waitUntil([&] { return sim.commands().size() >= before + 2 && sim.commands().back() == addText; }));
        // Waits until the worker is done with that.
        ASSERT_TRUE(sendNow("ready"));
        skipped = sim.commands().size();
    }

    void becomeReady() {
        registering();
        registerClient();
    }

    /// Becomes ready with a rate limit of 100 ms, for which later commands wait.
    void becomeReadyWithRateLimit() {
        config.rpnRateLimitMs = 100;
        host.letSleepsPass();
        becomeReady();
        host.holdSleeps();
    }

    /// Runs this once, on the caller's thread, in the next such call.
    void onNext(SimCall awaited, std::function<void()> action) {
        sim.setHook([this, awaited, action = std::move(action)](SimCall call) {
            if (call == awaited) {
                sim.setHook(nullptr);
                action();
            }
        });
    }

    /// Has this command in flight: its write waits at the gate.
    void holdAtGate(const std::string& rpn, RpnKind kind = RpnKind::Normal, std::uint32_t amount = 1) {
        gate.close();
        onNext(SimCall::SetClientData, [this] { gate.pass(); });
        ASSERT_TRUE(queue(rpn, kind, amount));
        ASSERT_TRUE(gate.waitForSomebody());
    }

    /// Stops the client, whose worker is held at the gate, and opens the gate once the stop has begun.
    void stopAtGate() {
        std::thread stopper([this] { client.stop(); });
        std::string reason;
        EXPECT_TRUE(waitUntil([&] { return !client.queueRpn("probe", RpnKind::Normal, 0, reason); }));
        gate.open();
        stopper.join();
    }

    bool queue(const std::string& rpn, RpnKind kind = RpnKind::Normal, std::uint32_t amount = 1) {
        return client.queueRpn(rpn, kind, amount, error);
    }

    bool sendNow(const std::string& rpn) { return client.sendRpnNow(rpn, error); }

    bool waitForCommands(const Lines& expected) {
        return waitUntil([&] { return sim.commands() == expected; });
    }

    Lines sinceHandshake() {
        const Lines all = sim.commands();
        return {all.begin() + static_cast<std::ptrdiff_t>(std::min(skipped, all.size())), all.end()};
    }

    /// What a ready client writes of everything queued so far. Once a test.
    Lines written() {
        EXPECT_TRUE(queue("end"));
        EXPECT_TRUE(waitUntil([&] { return sentCount("end") > 0; }));
        Lines all = sinceHandshake();
        all.erase(std::find(all.begin(), all.end(), set("end")), all.end());
        return all;
    }

    std::ptrdiff_t sentCount(const std::string& rpn) {
        const Lines all = sim.commands();
        return std::count(all.begin(), all.end(), set(rpn));
    }

    static std::string set(const std::string& rpn) { return "MF.SimVars.Set.1 " + rpn; }

    /// These commands, each followed by its dummy.
    static Lines pairs(const Lines& rpns) {
        Lines result;
        for (const std::string& rpn : rpns) {
            result.push_back(set(rpn));
            result.emplace_back(dummy);
        }
        return result;
    }

    static constexpr RpnKind allKinds[] = {RpnKind::Normal, RpnKind::Hold, RpnKind::Encoder};
    static constexpr const char* dummy = "MF.DummyCmd";
    static constexpr const char* registration = "MF.Clients.Add.bridge";
    static constexpr const char* clearText = "MF.SimVars.Clear";
    static constexpr const char* addText = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";

    LogCapture log;
    FakeHost host;
    FakeHost simHost;
    FakeSimConnect sim;
    Gate gate;
    MobiFlightConfig config;
    std::string error;
    std::size_t skipped = 0;
    SimConnectClient simConnect{sim.library(), simHost.record()};
    MobiFlightClient client{sim.library(), host.record()};
};
