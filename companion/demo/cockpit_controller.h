#pragma once

#include "companion/demo/cockpit_action.h"
#include "companion/demo/cockpit_configuration.h"
#include "companion/page/event_feed.h"
#include "config/json.h"
#include "simulation/boards/held_buttons.h"
#include "simulation/rig/rig_observer.h"
#include "simulation/simulator/simulator_controls.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

/// The cockpit as a person operates it: carries out the page's actions and reports what happens. Any thread may call
/// any operation except `start` and `stop`.
class CockpitController {
public:
    /// The configuration must outlive this.
    CockpitController(const CockpitConfiguration& configuration, RigSides sides);
    ~CockpitController();
    CockpitController(const CockpitController&) = delete;
    CockpitController& operator=(const CockpitController&) = delete;

    /// Plugs the boards in and starts simulator and bridge. False with the reason in `error`.
    bool start(std::string& error);
    /// Ends the feed and asks the bridge to end. Nothing else may be called afterwards.
    void stop();

    /// What doesn't change: the configuration's name, the boards and their controls, and what the page offers of the
    /// simulator's controls.
    std::string panel() const;
    EventFeed& feed() { return events; }

    /// Carries out one action of the tab, an object whose member "do" names it. False with the reason in `error`.
    bool act(const JsonValue& json, const std::string& tab, std::string& error);
    /// From now on, the tab may press buttons.
    void openTab(const std::string& tab) { buttons.addHolder(tab); }
    /// Releases those that it holds down.
    void closeTab(const std::string& tab) { buttons.removeHolder(tab); }

private:
    const CockpitConfiguration& configuration;
    const RigSides sides;
    EventFeed events;

    // Guards the rig, which one thread at a time drives, and what follows it.
    std::mutex mutex;
    BridgeRig rig;
    RigObserver observer;
    /// The last argument of each control whose state the page shows, by the control's word. The light is in whole
    /// percents: as numbers their last byte is zero, so that the bridge doesn't take them for text.
    std::map<std::string, std::string, std::less<>> settings{
        {"battery", "on"}, {"light", "80"}, {"refuse", "off"}, {"silent", "off"}, {"error", "off"}};
    /// An action was carried out that ends the bridge.
    bool bridgeEnding = false;
    std::optional<std::string> bridgeExitCode;

    HeldButtons buttons;
    std::atomic<bool> watching{false};
    std::thread watcher;

    void watch();
    bool actOnBoard(const CockpitAction& action, const std::string& tab, std::string& error);
    bool actOnSimulator(const std::string& command, std::string& error);
    void plug(const CockpitAction& action);
    void publishSent(const std::string& board, std::uint16_t control, std::string_view report, int detents, int speed);

    // These need the mutex held.
    void notify();
    void publishItem(const Observation& item);
    std::string state() const;
    JsonValue boardStates() const;
    JsonValue simulatorState() const;
    bool boardsKnowASimulator() const;
    JsonValue bridgeState() const;
    void control(const SimulatorRequest& request);
    void actOnBridge(CockpitActionKind kind);
    void startBridge();
    void refreshResponseArea();
};
