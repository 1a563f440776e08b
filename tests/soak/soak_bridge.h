#pragma once

#include "app/app.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "simulation/simulator/virtual_simulator.h"

#include <atomic>
#include <memory>
#include <string>
#include <thread>

/// The files that a soak's bridge reads, in a folder that goes with it. Control N (0 to 1999) sends "N (>K:SOAK)".
class SoakConfiguration {
public:
    SoakConfiguration();
    ~SoakConfiguration();
    SoakConfiguration(const SoakConfiguration&) = delete;
    SoakConfiguration& operator=(const SoakConfiguration&) = delete;

    const std::string& folder() const { return path; }
    std::string configPath() const { return path + "/config.json"; }

    static constexpr std::uint32_t controls = 2000;

private:
    std::string path;
};

/// One life of the bridge on a virtual bus and a virtual simulator: `App` on a main thread of its own, with its waits
/// shortened.
class SoakBridge {
public:
    SoakBridge(const SoakConfiguration& configuration, const VirtualHidBus& bus, const VirtualSimulator& simulator);
    /// Ends the life, if it hasn't ended.
    ~SoakBridge();
    SoakBridge(const SoakBridge&) = delete;
    SoakBridge& operator=(const SoakBridge&) = delete;

    /// Whether the simulator's process is on the list.
    void setSimulatorRunning(bool running) { simulatorRunning = running; }

    /// Waits until the life has ended by itself; false when it doesn't.
    bool waitForEnd();

private:
    Platform makePlatform(const SoakConfiguration& configuration, const VirtualHidBus& bus, std::uint16_t port);

    std::atomic<bool> simulatorRunning{true};
    std::atomic<bool> ended{false};
    std::unique_ptr<App> app;
    std::thread mainThread;
};
