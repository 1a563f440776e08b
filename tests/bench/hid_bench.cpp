// What happens on a board's reader thread, and the light command that equals the last one.

#include "hid/hid_manager.h"
#include "hid/hid_protocol.h"
#include "simulation/boards/virtual_hid_bus.h"

#include <benchmark/benchmark.h>

#include <mutex>

namespace {

void decodeReport(benchmark::State& state) {
    HidProtocol::Report report{0x01, 0, 2, 0, 21, 0, 1, 3};
    HidProtocol::HidEvent event;
    std::string error;
    for (auto _ : state) {
        ++report[1];
        benchmark::DoNotOptimize(HidProtocol::decodeInputReport(report.data(), report.size(), event, error));
        benchmark::DoNotOptimize(event);
    }
}
BENCHMARK(decodeReport);

/// The floor of the next one: the lock that it takes.
void lockAlone(benchmark::State& state) {
    std::mutex mutex;
    for (auto _ : state) {
        const std::lock_guard lock(mutex);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(lockAlone);

void sendEqualLedCommand(benchmark::State& state) {
    VirtualHidBus bus;
    const auto board = std::make_shared<VirtualBoard>();
    bus.plug(board);
    HidManager manager(bus.transport(), systemPlatform().host);
    std::string error;
    if (!manager.start({"1234", "ABCD", 2, 1}, {}, error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const std::string deviceName = manager.listDevices().at(0).deviceName;
    const LedCommand command{1, 80, 0, 0, 0};
    manager.sendLedControl(deviceName, 0, command);
    for (auto _ : state) {
        benchmark::DoNotOptimize(manager.sendLedControl(deviceName, 0, command));
    }
    if (board->outputs().size() != 1) {
        state.SkipWithError("an equal command was written");
    }
    manager.stop();
}
BENCHMARK(sendEqualLedCommand);

} // namespace
