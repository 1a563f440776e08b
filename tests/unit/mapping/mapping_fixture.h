#pragma once

#include "mapping/mapping_engine.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/gate.h"
#include "tests/support/log_capture.h"
#include "tests/support/wait_until.h"
#include "tests/unit/mapping/mapping_settings.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// An engine between real clients on a simulator in memory and a real HID manager on a virtual bus.
class MappingTest : public testing::Test, protected MappingSettings {
protected:
    enum WorkerNumber : std::size_t { EventWorker, HoldWorker, OutputWorker };

    MappingTest() { hidHost.holdSleeps(); }

    ~MappingTest() override {
        gate.open();
        engine.stop();
        mobiflightHost.letSleepsPass();
        mobiflight.stop();
        simConnect.stop();
        hidHost.letSleepsPass();
        hid.stop();
    }

    // Set-up.

    bool startEngine() {
        std::string error;
        const bool started =
            engine.start(&config, &hid, &simConnect, &mobiflight, &buttons, &eventMap, &simState, error);
        EXPECT_EQ(error, "");
        return started;
    }

    /// Opens a session; the module hasn't answered yet.
    void connectSimulator() {
        std::string error;
        ASSERT_TRUE(mobiflight.start(&simConnect, config.mobiflight, error)) << error;
        simHost.setProcesses({"FlightSimulator.exe"});
        const auto onConnection = [this](bool connected) { mobiflight.onSimConnectState(connected); };
        ASSERT_TRUE(simConnect.start("", onConnection, nullptr, error)) << error;
        ASSERT_TRUE(waitUntil([this] { return simConnect.isConnected(); }));
        ASSERT_TRUE(waitUntil([this] { return sim.commands().size() == 1; }));
        baseline = 1;
    }

    /// Opens a session, has the module confirm the registration, and starts the engine.
    void connectModuleAndStartEngine() {
        connectSimulator();
        sim.deliverText(0x1200, "MF.Clients.Add.VantrelBridgeHID.Finished", 256);
        ASSERT_TRUE(waitUntil([this] { return mobiflight.isReady() && sim.commands().size() == 3; }));
        baseline = 3;
        ASSERT_TRUE(startEngine());
    }

    /// Waits until the log has the lines of the set-up's commands, each of which comes after its command is written,
    /// and forgets them. Needs a log of debug lines.
    void clearLogOfSetUp() {
        EXPECT_TRUE(waitUntil([this] { return log.linesWith("MobiFlight command: ").size() == baseline; }));
        log.clear();
    }

    /// Has the client take the event's command and sleep for the rate limit with it, so that what is queued behind it
    /// stays queued until its host's sleeps pass. The limit is set before the module is connected.
    void limitRate() {
        config.mobiflight.rpnRateLimitMs = 100;
        mobiflightHost.setNow(1);
    }
    void putInFlight(const HidProtocol::HidEvent& event) {
        mobiflightHost.holdSleeps();
        handle(event);
        ASSERT_EQ(mobiflightHost.waitForSleep(), 100);
    }

    /// Has the simulator's calls of one kind wait at the gate.
    void holdUp(SimCall held) {
        sim.setHook([this, held](SimCall call) {
            if (call == held) {
                gate.pass();
            }
        });
    }

    void startHid() {
        std::string error;
        const auto onEvent = [this](const HidProtocol::HidEvent& event, const std::string& name, int index) {
            engine.submitEvent(event, name, index);
        };
        ASSERT_TRUE(hid.start({config.hid.vid, config.hid.pid}, onEvent, error)) << error;
        // From here on boards come and go with the test's own scans alone.
        ASSERT_NE(hidHost.waitForSleep(), -1);
    }

    /// A board whose name ends in `number`, plugged so that boards sort by it.
    std::shared_ptr<VirtualBoard> plugBoard(std::uint8_t number) {
        VirtualBoardModel model;
        model.boardId = HidProtocol::BoardId{0, 0, 0, 0, 0, 0, 0, number};
        auto board = std::make_shared<VirtualBoard>(model);
        bus.plug(board, "port" + std::to_string(number));
        return board;
    }

    // Events.

    void submit(const HidProtocol::HidEvent& event, const std::string& deviceName = "B", int index = 0) {
        engine.submitEvent(event, deviceName, index);
        ++submitted;
    }

    /// Submits an event and waits until it is handled.
    void handle(const HidProtocol::HidEvent& event, const std::string& deviceName = "B", int index = 0) {
        submit(event, deviceName, index);
        EXPECT_TRUE(drain());
    }

    /// Waits until all events that were submitted are handled, each of which ends with a line of its own.
    bool drain() {
        return waitUntil([this] { return eventLines().size() == submitted; });
    }

    std::vector<std::string> eventLines() const { return log.linesWith("HID event from "); }
    std::string lastEventLine() const {
        const auto lines = eventLines();
        return lines.empty() ? "" : lines.back();
    }
    std::vector<std::string> warnings() const { return log.linesWith("[WARN]"); }

    // What the simulator got.

    /// The RPN commands that the command area got since the set-up, once the queue is empty.
    std::vector<std::string> rpnSent() {
        flushCommands();
        std::vector<std::string> commands;
        for (const std::string& text : sim.commands()) {
            if (text.starts_with(rpnPrefix) && text != rpnPrefix + "MARK") {
                commands.push_back(text.substr(rpnPrefix.size()));
            }
        }
        return commands;
    }

    /// How many texts, each command's dummy among them, the area got since the set-up without waiting for the queue.
    std::size_t writtenCount() { return sim.commands().size() - baseline; }

    // The engine's clock and workers.

    std::size_t clockReads(WorkerNumber worker) const { return reads[worker]; }

    /// Waits until the worker has read the clock so many times from now on.
    bool waitForClockReads(WorkerNumber worker, std::size_t count) {
        const std::size_t end = reads[worker] + count;
        return waitUntil([&] { return reads[worker] >= end; });
    }

    LogCapture log;
    Gate gate;
    FakeHost engineHost;
    FakeHost mobiflightHost;
    FakeHost simHost;
    FakeHost hidHost;
    FakeSimConnect sim;
    VirtualHidBus bus;
    SharedSimState simState;
    HidManager hid{bus.transport(), hidHost.record()};
    SimConnectClient simConnect{sim.library(), simHost.record()};
    MobiFlightClient mobiflight{sim.library(), mobiflightHost.record()};
    MappingEngine engine{engineRecord()};
    std::size_t submitted = 0;

private:
    /// The engine's host, which counts each worker's reads of the clock.
    Host engineRecord() {
        static thread_local std::size_t self = 3;
        Host host = engineHost.record();
        host.now = [this, now = host.now] {
            ++reads[self];
            return now();
        };
        host.startThread = [this, start = host.startThread](const std::function<void()>& body) {
            std::thread worker = start([number = threadsStarted % 3, body] {
                self = number;
                body();
            });
            ++threadsStarted;
            return worker;
        };
        return host;
    }

    /// Sends a mark behind all that is queued, twice: detents that come in while theirs are being sent go to the back
    /// of the queue, behind the first.
    void flushCommands() {
        for (int turn = 0; turn < 2 && mobiflight.isReady(); ++turn) {
            ++marks;
            std::string error;
            EXPECT_TRUE(mobiflight.queueRpn("MARK", RpnKind::Normal, 1, error)) << error;
            EXPECT_TRUE(waitUntil([this] {
                const auto texts = sim.commands();
                return std::count(texts.begin(), texts.end(), rpnPrefix + "MARK") == marks &&
                       texts.back() == "MF.DummyCmd";
            }));
        }
    }

    const std::string rpnPrefix = "MF.SimVars.Set.1 ";
    std::size_t baseline = 0;
    std::ptrdiff_t marks = 0;
    std::size_t threadsStarted = 0;
    std::array<std::atomic<std::size_t>, 4> reads{};
};
