#pragma once

#include "simulation/boards/virtual_board.h"
#include "simulation/boards/virtual_hid_bus.h"
#include "simulation/rig/bridge_run.h"
#include "simulation/rig/log_follower.h"
#include "simulation/scenarios/scenario_file.h"
#include "simulation/simulator/virtual_simulator.h"
#include "wire/simconnect_open.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

/// Something that came out of the bridge: of the stream "sim", "log", "exit" or a board's name.
struct CockpitItem {
    std::chrono::steady_clock::time_point time;
    std::string stream;
    std::string text;
};

/// How long the bridge's long waits (for a board, for the simulator's process, after a refused session, between two
/// scans) may last, the pause between two polls of a session, and how long an open waits for the first answer.
struct CockpitPace {
    std::chrono::milliseconds longestWait;
    std::chrono::milliseconds dispatchPoll;
    SimConnectOpenLimits openLimits;

    /// For someone who looks on: the bridge's own pace, but for waits of many seconds.
    static constexpr CockpitPace real() { return {std::chrono::milliseconds(1000), std::chrono::milliseconds(15), {}}; }
    /// For tests: a busy machine mustn't make an answer come too late.
    static constexpr CockpitPace fast() {
        return {std::chrono::milliseconds(10), std::chrono::milliseconds(2), {std::chrono::seconds(30)}};
    }
};

/// Which side of the bridge is this machine's own instead of a virtual one.
struct CockpitSides {
    bool realBoards = false;
    bool realSimulator = false;
};

/// A whole bridge in this process, on virtual boards and a virtual simulator, with a folder of its own for its files.
/// One at a time in a process, since there is one log. Driven by one thread.
class VirtualCockpit {
public:
    VirtualCockpit(const Scenario& scenario, CockpitPace pace, CockpitSides sides = {});
    ~VirtualCockpit();
    VirtualCockpit(const VirtualCockpit&) = delete;
    VirtualCockpit& operator=(const VirtualCockpit&) = delete;

    /// False with the reason when the simulator or the folder can't be had; nothing else may then be called.
    bool setUp(std::string& error);

    // The bridge.
    /// May follow an earlier run's end.
    void startBridge();
    BridgeRun& bridge() { return *bridgeRun; }
    const BridgeRun& bridge() const { return *bridgeRun; }
    /// Where the scenario's configuration and the log are.
    const std::filesystem::path& filesFolder() const { return folder; }

    // Boards, by their names.
    void plug(const std::string& name);
    void unplug(const std::string& name);
    /// Pulls a plugged board and puts it back at once under its old path, which leaves its open handles dead.
    void replug(const std::string& name);
    bool plugged(const std::string& name) const;
    VirtualBoard& board(const std::string& name) const;
    /// Whether the bridge waits for this board's next report, so that all before it are taken.
    bool awaited(const std::string& name) const;
    void setFaults(const std::string& name, const HidLinkFaults& faults);
    /// The plugged boards that the bridge reads and writes.
    std::vector<std::string> usableBoards() const;

    // The simulator.
    void startSimulator();
    /// Its process is no longer listed; nothing else changes.
    void hideProcess();
    void quitSimulator();
    void crashSimulator();
    void refuseSessions(bool refuse);
    bool simulatorRunning() const;
    VirtualSimulator& simulator() { return *virtualSimulator; }
    const VirtualSimulator& simulator() const { return *virtualSimulator; }

    /// What came since the last call, and the log's new lines, whose text begins with the level.
    std::vector<CockpitItem> takeItems();

private:
    /// What is reported from any thread.
    struct Inbox {
        std::mutex mutex;
        std::vector<CockpitItem> items;

        void add(const std::string& stream, const std::string& text);
    };
    /// News of plugging for the bridge.
    struct HotPlugNotifications {
        std::mutex mutex;
        std::condition_variable changed;
        bool ended = false;
        // How often something was plugged or pulled, and how much of it the bridge has looked into.
        std::uint64_t told = 0;
        std::uint64_t handled = 0;
    };
    struct Seat {
        const ScenarioBoard* made = nullptr;
        std::shared_ptr<VirtualBoard> board;
        bool faulty = false;
    };

    const Scenario& scenario;
    const CockpitPace pace;
    const CockpitSides sides;
    std::filesystem::path folder;
    VirtualHidBus bus;
    std::map<std::string, Seat> seats;
    std::shared_ptr<Inbox> inbox = std::make_shared<Inbox>();
    std::shared_ptr<HotPlugNotifications> news = std::make_shared<HotPlugNotifications>();
    std::unique_ptr<VirtualSimulator> virtualSimulator;
    std::shared_ptr<std::atomic<bool>> processListed = std::make_shared<std::atomic<bool>>(false);
    bool refusing = false;
    std::unique_ptr<LogFollower> log;
    // Last, so that the bridge ends before what it stands on.
    std::unique_ptr<BridgeRun> bridgeRun;

    void makeSeats();
    bool makeFolder(std::string& error);
    bool startVirtualSimulator(std::string& error);
    void makeBridgeRun();
    Platform platform();
    Host host() const;
    SimConnectLibrary simConnectLibrary() const;
    DeviceNotificationSource deviceNotifications() const;
    void notify();
    void waitUntilRead(const Seat& seat) const;
    void updateListening();
};
