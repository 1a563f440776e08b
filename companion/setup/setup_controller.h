#pragma once

#include "companion/live/live_boards.h"
#include "companion/page/event_feed.h"
#include "companion/setup/bridge_control.h"
#include "companion/setup/check_up.h"
#include "companion/setup/edited_configuration.h"
#include "companion/setup/setup_state.h"
#include "companion/setup/virtual_boards.h"
#include "companion/trial/module_link.h"
#include "config/json.h"
#include "platform/worker.h"
#include "simulation/rig/log_follower.h"
#include "simulation/simulator/virtual_simulator.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

struct SetupOptions {
    std::string configPath;
    /// Virtual boards that are there from the beginning.
    int virtualBoards = 0;
};

/// Everything behind the setup page: carries out its actions, and publishes the state and what the boards and the
/// bridge do. Any thread may call any operation except `start` and `stop`.
class SetupController {
public:
    SetupController(const Platform& platform, const SetupOptions& options);
    ~SetupController();
    SetupController(const SetupController&) = delete;
    SetupController& operator=(const SetupController&) = delete;

    /// False with the reason in `error`.
    bool start(std::string& error);
    /// Nothing else may be called afterwards.
    void stop();

    EventFeed& feed() { return events; }

    bool hasUnsavedChanges();
    /// A bridge that was started here runs. It ends with this object, which may take half a minute.
    bool hasBridge();

    /// What saving would write, as JSON.
    std::string difference();
    /// Every HID device of this machine, as JSON, to find the boards' ids.
    std::string devices();

    /// What `vantrel doctor` says now, as JSON.
    std::string checkUp() { return checks.look(); }

    /// Carries out one action, an object whose member "do" names it, for an open tab. False with the reason in `error`.
    bool act(const JsonValue& json, const std::string& tab, std::string& error);
    /// From now on, the tab may press the virtual boards' controls.
    void openTab(const std::string& tab) { virtualBoards.addHolder(tab); }
    /// Releases those that it holds down.
    void closeTab(const std::string& tab) { virtualBoards.removeHolder(tab); }

private:
    const Platform platform;
    const SetupOptions options;
    EventFeed events;
    CheckUp checks;

    // Held across a whole action or a whole look at the machine, which may be slow. Guards what follows. Taken before
    // the other mutex.
    std::mutex actionMutex;
    BridgeControl bridge;
    /// Of a bridge that somebody else has started.
    LogFollower bridgeLog;
    VirtualSimulator virtualSimulator;
    /// Leads to the simulator that commands are tried with.
    std::unique_ptr<ModuleLink> link;
    /// Decides what the boards' events mean.
    std::shared_ptr<const BridgeConfiguration> followed;

    // Guards what follows. The boards' observers take it, so nothing slow happens under it, and no board is started or
    // stopped. The configuration and the simulator's kind are only written with both mutexes held, so that one of them
    // is enough to read them.
    std::mutex mutex;
    SetupState state;
    /// As it was last published.
    SetupState shown;

    VirtualBoards virtualBoards;
    LiveBoards realLive;
    LiveBoards virtualLive;

    /// Looks at what changes by itself: the bridge, its log, the files, the registration.
    Worker watcher;
    /// Wakes it at the end; belongs to `mutex`.
    std::condition_variable ending;

    // Boards and the watcher (setup_controller.cpp).
    bool startBoards(LiveBoards& boards, bool areVirtual, std::string& error);
    void restartRealBoards();
    void onArrival(const LiveBoard& board, bool isVirtual);
    void onDeparture(const LiveBoard& board, bool isVirtual);
    void onReport(const LiveReport& report, bool isVirtual);
    /// On the virtual simulator's thread.
    void onReceived(const SimulatorRecord& record);
    void watch();
    /// Any thread.
    void publishLine(const std::string& level, const std::string& text);
    // These need `mutex` held.
    void publishState();
    /// Of the boards whose role in the configuration has changed.
    void showRoles(const AppConfig& config);
    // Needs one of the mutexes held.
    const EditedConfiguration& configuration() const { return *state.configuration; }
    // These need `actionMutex` held, and take the other.
    std::shared_ptr<const BridgeConfiguration> configurationFor(bool areVirtual) const;
    void look();
    void followLog();
    /// Passes a changed configuration on to the boards.
    void followConfiguration();
    void reach(bool SetupProgress::*step);

    // What is done on a virtual board waits for no action, and no action waits for a repair, which looks at the whole
    // machine first. These need no mutex.
    bool operate(const JsonValue& json, const std::string& tab, std::string& error);
    bool repair(const JsonValue& json, std::string& error);
    // The actions (setup_controller_actions.cpp, setup_controller_bridge_actions.cpp). These need `actionMutex` held.
    using Action = bool (SetupController::*)(const JsonValue& json, std::string& error);
    static Action actionOf(const std::string& word);
    bool addBoard(const JsonValue& json, std::string& error);
    bool removeBoard(const JsonValue& json, std::string& error);
    bool setIds(const JsonValue& json, std::string& error);
    bool setRole(const JsonValue& json, std::string& error);
    bool nameControl(const JsonValue& json, std::string& error);
    bool assign(const JsonValue& json, std::string& error);
    bool clear(const JsonValue& json, std::string& error);
    bool setProfileValue(const JsonValue& json, std::string& error);
    bool previewLight(const JsonValue& json, std::string& error);
    bool takeSample(const JsonValue& json, std::string& error);
    bool undo(const JsonValue& json, std::string& error);
    bool save(const JsonValue& json, std::string& error);
    bool reload(const JsonValue& json, std::string& error);
    bool chooseSimulator(const JsonValue& json, std::string& error);
    bool tryCommand(const JsonValue& json, std::string& error);
    bool registerProgram(const JsonValue& json, std::string& error);
    bool unregisterProgram(const JsonValue& json, std::string& error);
    bool startBridge(const JsonValue& json, std::string& error);
    bool endBridge(const JsonValue& json, std::string& error);

    using Change = std::function<bool(EditedConfiguration& configuration, std::string& error)>;
    /// Carries it out on a copy, which takes the configuration's place.
    bool changeConfiguration(const Change& change, std::string& error);
    /// The same for its draft.
    bool edit(const EditedConfiguration::Edit& edit, std::string& error);
    bool startLink(std::string& error);
    Platform linkPlatform() const;
};
