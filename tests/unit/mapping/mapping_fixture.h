#pragma once

#include "mapping/mapping_engine.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "tests/support/fake_host.h"
#include "tests/support/fake_simconnect.h"
#include "tests/support/log_capture.h"
#include "tests/support/wait_until.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

/// Holds up whoever comes to it until it is opened.
class Gate {
public:
    void pass() {
        std::unique_lock lock(mutex);
        ++arrivals;
        changed.notify_all();
        changed.wait(lock, [this] { return isOpen; });
    }
    bool waitForArrival() {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(30), [this] { return arrivals > 0; });
    }
    void open() {
        const std::lock_guard lock(mutex);
        isOpen = true;
        changed.notify_all();
    }

private:
    std::mutex mutex;
    std::condition_variable changed;
    int arrivals = 0;
    bool isOpen = false;
};

/// An engine between real clients on a simulator in memory and a real HID manager on a virtual bus.
class MappingTest : public testing::Test {
protected:
    enum Worker : std::size_t { EventWorker, HoldWorker, OutputWorker };

    MappingTest() {
        hidHost.holdSleeps();
        config.hid.vid = "1234";
        config.hid.pid = "ABCD";
        config.outputs.debounceMs = 0;
        ensureDefaultProfile(config.outputs);
        eventMap.eventTypes = {{1, "BUTTON"}, {2, "ENCODER"}};
    }

    ~MappingTest() override {
        engine.stop();
        mobiflightHost.letSleepsPass();
        mobiflight.stop();
        simConnect.stop();
        hidHost.letSleepsPass();
        hid.stop();
    }

    // Set-up.

    /// Names a control and gives it commands, in the command file's form: `"PRESS":{"":"X"}`.
    void addControl(std::int32_t controlId, const std::string& name, const std::string& commands) {
        eventMap.controlIds[controlId] = name;
        elements += (elements.empty() ? "" : ",") + (R"({"name":")" + name + R"(","commands":{)" + commands + "}}");
        std::string error;
        EXPECT_TRUE(buttons.parse(R"({"buttons":[)" + elements + "]}", error)) << error;
    }

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
        if (config.mobiflight.enabled) {
            ASSERT_TRUE(waitUntil([this] { return sim.commands().size() == 1; }));
            baseline = 1;
        }
    }

    /// Opens a session and has the module confirm the registration.
    void connectModule() {
        connectSimulator();
        sim.deliverText(0x1200, "MF.Clients.Add.VantrelBridgeHID.Finished", 256);
        ASSERT_TRUE(waitUntil([this] { return mobiflight.isReady() && sim.commands().size() == 3; }));
        baseline = 3;
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

    static HidProtocol::HidEvent button(std::uint16_t controlId, int value, std::uint8_t mode = 0) {
        return {.type = 1, .controlId = controlId, .value = static_cast<std::int8_t>(value), .mode = mode};
    }
    static HidProtocol::HidEvent encoder(std::uint16_t controlId, int value, std::uint8_t speed = 0,
                                         std::uint8_t mode = 0) {
        return {
            .type = 2, .controlId = controlId, .value = static_cast<std::int8_t>(value), .speed = speed, .mode = mode};
    }

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

    /// All texts that the command area got since the set-up, none of those queued left out.
    std::vector<std::string> commandTexts() {
        flushCommands();
        std::vector<std::string> texts = sim.commands();
        texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(std::min(baseline, texts.size())));
        for (auto mark = findMark(texts); mark != texts.end(); mark = findMark(texts)) {
            texts.erase(mark, mark + 2);
        }
        return texts;
    }

    /// The same without waiting for the queue: what was written so far.
    std::size_t writtenCount() { return sim.commands().size() - baseline; }

    /// What the area gets for these commands.
    static std::vector<std::string> sent(const std::vector<std::string>& commands) {
        std::vector<std::string> texts;
        for (const std::string& command : commands) {
            texts.push_back("MF.SimVars.Set.1 " + command);
            texts.emplace_back("MF.DummyCmd");
        }
        return texts;
    }

    /// The names of the simulator events that went out, each as it was mapped.
    std::vector<std::string> simEvents() {
        std::vector<std::string> calls = sim.calls();
        std::erase_if(calls, [](const std::string& call) {
            return call.find("MapClientEvent") == std::string::npos && call.find("TransmitClient") == std::string::npos;
        });
        return calls;
    }

    // The engine's clock and workers.

    std::size_t clockReads(Worker worker) const { return reads[worker]; }

    /// Waits until the worker has read the clock so many times from now on.
    bool waitForClockReads(Worker worker, std::size_t count) {
        const std::size_t end = reads[worker] + count;
        return waitUntil([&] { return reads[worker] >= end; });
    }

    LogCapture log;
    FakeHost engineHost;
    FakeHost mobiflightHost;
    FakeHost simHost;
    FakeHost hidHost;
    FakeSimConnect sim;
    VirtualHidBus bus;
    AppConfig config;
    ButtonConfig buttons;
    HidEventMap eventMap;
    SharedSimState simState;
    std::atomic<int> workersEnded{0};
    HidManager hid{bus.transport(), hidHost.record()};
    SimConnectClient simConnect{sim.library(), simHost.record()};
    MobiFlightClient mobiflight{sim.library(), mobiflightHost.record()};
    MappingEngine engine{engineRecord()};
    std::size_t submitted = 0;

private:
    /// The engine's host, which tells whose thread reads the clock and which threads have ended.
    Host engineRecord() {
        static thread_local std::size_t self = 3;
        Host host = engineHost.record();
        host.now = [this, now = host.now] {
            ++reads[self];
            return now();
        };
        host.startThread = [this, start = host.startThread](std::function<void()> body) {
            const std::size_t number = threadsStarted % 3;
            std::thread worker = start([this, number, body = std::move(body)] {
                self = number;
                body();
                ++workersEnded;
            });
            ++threadsStarted;
            return worker;
        };
        return host;
    }

    static std::vector<std::string>::iterator findMark(std::vector<std::string>& texts) {
        return std::find(texts.begin(), texts.end(), "MF.SimVars.Set.1 MARK");
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
                return std::count(texts.begin(), texts.end(), "MF.SimVars.Set.1 MARK") == marks &&
                       texts.back() == "MF.DummyCmd";
            }));
        }
    }

    std::string elements;
    std::size_t baseline = 0;
    std::ptrdiff_t marks = 0;
    std::size_t threadsStarted = 0;
    std::array<std::atomic<std::size_t>, 4> reads{};
};
