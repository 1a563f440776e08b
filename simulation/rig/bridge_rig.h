#pragma once

#include "simulation/boards/virtual_board.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "simulation/rig/bridge_run.h"
#include "simulation/rig/log_follower.h"
#include "simulation/rig/rig_settings.h"
#include "simulation/rig/virtual_device_notifications.h"
#include "simulation/simulator/virtual_simulator.h"

#include <atomic>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A whole bridge in this process, between virtual boards and a virtual simulator, with a folder of its own for its
/// files. One at a time in a process, since there is one log. Driven by one thread. RigObserver reports what comes out.
class BridgeRig {
public:
    explicit BridgeRig(RigSettings settings);
    /// Ends bridge and simulator and removes the folder.
    ~BridgeRig();
    BridgeRig(const BridgeRig&) = delete;
    BridgeRig& operator=(const BridgeRig&) = delete;

    /// False with the reason when the simulator or the folder can't be had; nothing else may then be called.
    bool setUp(std::string& error);
    const std::vector<RigBoard>& boards() const { return settings.boards; }

    // The bridge.
    /// Returns when the bridge has started, or has failed to. May follow an earlier run, whose end it waits for.
    void startBridge();
    /// Asks the bridge to end, and waits for its end.
    void endBridge();
    BridgeRun& bridge() { return *bridgeRun; }
    const BridgeRun& bridge() const { return *bridgeRun; }
    /// Called on a thread of the bridge's when a run has ended. To be set before the first start.
    void setExitCallback(BridgeRun::ExitCallback callback) { exitCallback = std::move(callback); }
    /// The log's lines that were completed since the last call.
    std::vector<LogLine> newLogLines();
    /// Where configuration and log are.
    const std::filesystem::path& filesFolder() const { return folder; }

    // Boards, by their names.
    void plug(const std::string& name);
    /// Plugs each board that isn't plugged, in their order.
    void plugAll();
    void unplug(const std::string& name);
    /// Pulls a plugged board and puts it back at once under its old path, which leaves its open handles dead.
    void replug(const std::string& name);
    bool plugged(const std::string& name) const;
    VirtualBoard& board(const std::string& name) const;
    /// Whether the bridge waits for this board's next report, and so has taken all before it.
    bool awaited(const std::string& name) const;
    /// From now on, no operation waits until the bridge reads this board.
    void setFaults(const std::string& name, const HidLinkFaults& faults);
    /// The plugged boards that the bridge reads and writes.
    std::vector<std::string> usableBoards() const;
    const VirtualHidBus& bus() const { return hidBus; }

    // The simulator. At first its process isn't listed; its battery is on.
    void startSimulator();
    /// Its process is no longer listed; nothing else changes.
    void hideProcess();
    void quitSimulator();
    void crashSimulator();
    void refuseSessions(bool refuse);
    bool simulatorRunning() const;
    VirtualSimulator& simulator() { return virtualSimulator; }
    const VirtualSimulator& simulator() const { return virtualSimulator; }

private:
    /// A place at the bus.
    struct Slot {
        const RigBoard* made = nullptr;
        std::shared_ptr<VirtualBoard> board;
        bool faulty = false;
    };

    const RigSettings settings;
    std::filesystem::path folder;
    VirtualHidBus hidBus;
    std::map<std::string, Slot> slots;
    VirtualSimulator virtualSimulator;
    std::shared_ptr<std::atomic<bool>> processListed = std::make_shared<std::atomic<bool>>(false);
    bool refusing = false;
    std::optional<LogFollower> log;
    BridgeRun::ExitCallback exitCallback;
    std::optional<VirtualDeviceNotifications> notifications;
    // Last, so that the bridge ends before what it uses.
    std::unique_ptr<BridgeRun> bridgeRun;

    bool makeFolder(std::string& error);
    void writeFiles() const;
    bool startServer(std::string& error);
    void makeBridgeRun();
    Platform platform() const;
    Host host() const;
    void notify();
    void waitUntilRead(const Slot& slot) const;
    void updateListening();
};
