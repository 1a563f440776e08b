#pragma once

#include "mobiflight/mobiflight_client.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"
#include "tests/support/sim_client_access.h"

#include <gtest/gtest.h>

/// Looks into the client's queue and tables.
struct MobiFlightClientAccess {
    static std::vector<std::string> queued(MobiFlightClient& client) {
        const std::lock_guard lock(client.queueMutex);
        std::vector<std::string> texts;
        for (const MobiFlightCommand& command : client.commandQueue)
            texts.push_back(command.text);
        return texts;
    }

    static std::optional<EncoderPending> detents(MobiFlightClient& client, const std::string& text) {
        const std::lock_guard lock(client.queueMutex);
        const auto found = client.encoderPending.find(text);
        return found == client.encoderPending.end() ? std::nullopt : std::optional(found->second);
    }

    /// Whether the three tables are empty.
    static bool tablesEmpty(MobiFlightClient& client) {
        const std::lock_guard lock(client.queueMutex);
        return client.pendingHolds.empty() && client.inFlightHolds.empty() && client.encoderPending.empty();
    }

    static bool isInFlightHold(MobiFlightClient& client, const std::string& text) {
        const std::lock_guard lock(client.queueMutex);
        return client.inFlightHolds.count(text) > 0;
    }

    /// Waits until nobody is sending: what has been written down is then done with.
    static void waitForSender(MobiFlightClient& client) { const std::lock_guard lock(client.sendMutex); }

    /// Whether nobody is sending at this very moment.
    static bool isSenderFree(MobiFlightClient& client) {
        const std::unique_lock lock(client.sendMutex, std::try_to_lock);
        return lock.owns_lock();
    }

    static std::unique_lock<std::mutex> lockQueue(MobiFlightClient& client) {
        return std::unique_lock(client.queueMutex);
    }

    static bool write(MobiFlightClient& client, const std::string& text, std::string& error) {
        const std::lock_guard lock(client.sendMutex);
        return client.writeCommandArea(0, text, error);
    }
};

/// Holds whoever comes to it while it is closed.
class Gate {
public:
    void close() {
        const std::lock_guard lock(mutex);
        closed = true;
    }
    void open() {
        const std::lock_guard lock(mutex);
        closed = false;
        changed.notify_all();
    }
    void pass() {
        std::unique_lock lock(mutex);
        ++waiting;
        changed.notify_all();
        changed.wait(lock, [this] { return !closed; });
        --waiting;
    }
    bool waitForSomebody() {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30), [this] { return waiting > 0; });
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    bool closed = false;
    int waiting = 0;
};

/// A client on a simulator in memory. The session is opened and ended by the test, without the SimConnect worker; the
/// client's own worker runs, and its sleeps are held.
class MobiFlightFixture : public testing::Test {
protected:
    using Lines = std::vector<std::string>;
    using Access = MobiFlightClientAccess;

    MobiFlightFixture() {
        config.clientName = "bridge";
        host.holdSleeps();
        host.setNow(1'000'000'000);
    }
    ~MobiFlightFixture() override { stop(); }

    bool start() { return client.start(&simConnect, config, error); }

    void stop() {
        gate.open();
        host.letSleepsPass();
        client.stop();
    }

    void openSession() {
        ASSERT_TRUE(SimConnectClientAccess::openSession(simConnect, error));
        client.onSimConnectState(true);
    }

    void endSession() {
        SimConnectClientAccess::disconnect(simConnect);
        client.onSimConnectState(false);
    }

    void respond(const std::string& text) {
        std::vector<std::uint8_t> block(text.begin(), text.end());
        block.resize(256);
        client.onClientData(0x1200, block.data(), 256);
    }

    void confirm() { respond("MF.Clients.Add.bridge.Finished"); }

    /// Starts, opens a session and lives through the handshake; the commands of it are forgotten.
    void becomeReady() {
        ASSERT_TRUE(start());
        openSession();
        registerClient();
    }

    /// Waits until these are all the commands written, and the worker is done with the last.
    bool waitForCommands(const Lines& expected) {
        const bool seen = waitUntil([&] { return sim.commands() == expected; });
        Access::waitForSender(client);
        return seen;
    }

    void registerClient() {
        const std::size_t before = sim.commands().size();
        confirm();
        ASSERT_TRUE(client.isReady());
        ASSERT_TRUE(waitUntil([&] { return sim.commands().size() >= before + 2 && sim.commands().back() == addText; }));
        Access::waitForSender(client);
        skipped = sim.commands().size();
    }

    /// Has every write to the command area wait at the gate.
    void gateWrites() {
        sim.setHook([this](SimCall call) {
            if (call == SimCall::SetClientData)
                gate.pass();
        });
    }

    /// Sends a command that the worker then holds in its hand at the gate.
    void holdWorkerAtGate() {
        gateWrites();
        gate.close();
        ASSERT_TRUE(queue("first"));
        ASSERT_TRUE(gate.waitForSomebody());
    }

    bool queue(const std::string& rpn, RpnKind kind = RpnKind::Normal, std::uint32_t amount = 1) {
        return client.queueRpn(rpn, kind, amount, error);
    }

    /// What was written since the handshake, once there are `count` of them and the worker has nothing left to do.
    Lines written(std::size_t count) {
        waitUntil([&] { return sim.commands().size() >= skipped + count && idle(); });
        Access::waitForSender(client);
        return sinceHandshake();
    }

    Lines sinceHandshake() {
        const Lines all = sim.commands();
        return {all.begin() + static_cast<std::ptrdiff_t>(std::min(skipped, all.size())), all.end()};
    }

    bool idle() { return Access::queued(client).empty() && Access::tablesEmpty(client); }

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

    static constexpr const char* dummy = "MF.DummyCmd";
    static constexpr const char* registration = "MF.Clients.Add.bridge";
    static constexpr const char* clearText = "MF.SimVars.Clear";
    static constexpr const char* addText = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";

    LogCapture log;
    FakeHost host;
    FakeSimConnect sim;
    Gate gate;
    MobiFlightConfig config;
    std::string error;
    std::size_t skipped = 0;
    SimConnectClient simConnect{sim.library(), host.record()};
    MobiFlightClient client{sim.library(), host.record()};
};
