// What a pilot feels of the way back and of a held map button: the whole bridge on a virtual board and a virtual
// simulator, at its real pace.

#include "simulation/rig/bridge_rig.h"
#include "tests/bench/percentile.h"

#include <cmath>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint16_t mapButton = 30;
constexpr const char* panel = "PFD";
constexpr const char* subscription = "MF.SimVars.Add.(L:LIGHTING_POTENTIOMETER_5)";

/// The bridge in a session, for as long as this object lives.
class PacedBridge {
public:
    explicit PacedBridge(int debounceMs)
        : rig(settings(debounceMs)), simulator(rig.simulator()), board(rig.board(panel)) {
        std::string error;
        if (!rig.setUp(error)) {
            throw std::runtime_error(error);
        }
        rig.plug(panel);
        rig.startSimulator();
        rig.startBridge();
        if (!simulator.waitForText(SimulatorRecordKind::Command, subscription)) {
            throw std::runtime_error("no session");
        }
    }

    /// Milliseconds from a battery switch to the light report at the board.
    double switchBattery(bool on) {
        std::mutex mutex;
        std::condition_variable sent;
        bool reported = false;
        board.setOutputCallback([&](const BoardOutput& output) {
            const std::lock_guard lock(mutex);
            reported = reported || output.bytes[0] == HidProtocol::ledCtlReportId;
            sent.notify_one();
        });
        const auto start = Clock::now();
        simulator.setBattery(on);
        std::unique_lock lock(mutex);
        if (!sent.wait_for(lock, std::chrono::seconds(30), [&] { return reported; })) {
            throw std::runtime_error("no light report");
        }
        const auto end = Clock::now();
        lock.unlock();
        board.setOutputCallback(nullptr);
        return std::chrono::duration<double, std::milli>(end - start).count();
    }

    /// How far each repeat of a held map button lies from its period, in milliseconds.
    std::vector<double> holdDeviations(std::chrono::seconds duration, double periodMs) {
        simulator.clearRecords();
        board.press(mapButton);
        board.hold(mapButton);
        std::this_thread::sleep_for(duration);
        board.release(mapButton);
        std::vector<double> deviations;
        Clock::time_point last{};
        for (const SimulatorRecord& record : simulator.records()) {
            // The press itself comes a period ahead of the first repeat.
            if (record.kind != SimulatorRecordKind::Executed || record.text != "1 (>K:PAN)") {
                continue;
            }
            if (last != Clock::time_point{}) {
                deviations.push_back(
                    std::abs(std::chrono::duration<double, std::milli>(record.time - last).count() - periodMs));
            }
            last = record.time;
        }
        return deviations;
    }

private:
    static RigSettings settings(int debounceMs) {
        RigSettings settings;
        settings.boards = {{panel, {}}};
        settings.files["config.json"] =
            R"({"hid":{"vid":"1234","pid":"ABCD"},"mappings":{"buttonConfigPath":"buttons.json"},)"
            R"("outputs":{"debounceMs":)" +
            std::to_string(debounceMs) + "}}";
        settings.files["hid_event_map.json"] = R"({"event_types":{"BUTTON":1},"control_ids":{"MAP_LEFT":30}})";
        settings.files["buttons.json"] =
            R"json({"buttons":[{"name":"MAP_LEFT","commands":{"PRESS":{"":"(>K:PRESS)"},"HOLD":{"":"(>K:PAN)"}}}]})json";
        return settings;
    }

    BridgeRig rig;
    VirtualSimulator& simulator;
    VirtualBoard& board;
};

void measureStateChange(int debounceMs) {
    constexpr int switches = 40;
    PacedBridge bridge(debounceMs);
    std::vector<double> delays;
    for (int i = 0; i < switches; ++i) {
        // Longer than the debounce, so that each change stands alone; odd, so that it walks through the poll's period.
        std::this_thread::sleep_for(std::chrono::milliseconds(debounceMs + 20 + i % 15));
        delays.push_back(bridge.switchBattery(i % 2 != 0));
    }
    std::printf("state change to light report, debounce %2d ms: p50 %5.1f ms   max %5.1f ms\n", debounceMs,
                percentile(delays, 0.5), percentile(delays, 1));
}

bool measureHold() {
    PacedBridge bridge(50);
    const std::vector<double> deviations = bridge.holdDeviations(std::chrono::seconds(5), 10);
    const double p99 = percentile(deviations, 0.99);
    std::printf("held map button, period 10 ms, %zu repeats: off by p50 %.3f ms   p99 %.3f ms   max %.3f ms\n",
                deviations.size(), percentile(deviations, 0.5), p99, percentile(deviations, 1));
    std::printf("%s: a held map button keeps its period within 1 ms at the 99th percentile\n",
                p99 <= 1 ? "reached" : "MISSED ");
    return deviations.size() >= 300;
}

} // namespace

int main() {
    try {
        // The simulator's messages are polled every 15 ms; the rest of the delay is the debounce.
        measureStateChange(0);
        measureStateChange(50);
        return measureHold() ? 0 : 1;
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "pace-bench: %s\n", failure.what());
        return 1;
    }
}
