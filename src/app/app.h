#pragma once

#include "app/cdc_debug_reader.h"
#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/hid_manager.h"
#include "mapping/mapping_engine.h"
#include "mobiflight/mobiflight_client.h"
#include "platform/platform.h"
#include "sim/shared_sim_state.h"
#include "sim/simconnect_client.h"

#include <atomic>
#include <mutex>
#include <string>
#include <thread>

/// Owns every long-lived subsystem and is the only place where they are wired. Driven by the main thread: construct,
/// `init`, and if that returns true, `run`; each of them once, since there is no restart.
class App {
public:
    explicit App(Platform platform = systemPlatform());
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    /// Brings the system up. On false no thread of the system is left running; `error` may be empty when the cause is
    /// in the log already. Throws what the file system throws when it can't say whether a file exists.
    bool init(const std::string& configPath, bool consoleMode, std::string& error);

    /// Blocks until a stop is requested, then stops everything.
    void run();

    /// Any thread, and the control handler: only sets a flag.
    void requestStop();

    /// Between construction and `init`: replaces `hid.trace` of the configuration.
    void setHidTraceOverride(bool value);

private:
    Platform platform;

    std::atomic<bool> stopRequested{false};
    bool consoleMode = false;
    AppConfig config;
    HidManager hid;
    ButtonConfig buttons;
    MobiFlightClient mobiflight;
    SimConnectClient simConnect;
    SharedSimState simState;
    HidEventMap eventMap;
    MappingEngine mapping;
    CdcDebugReader cdcReader;
    std::thread notifyThread;
    // Guards the setting of `notifyActive`, which says that the notification thread listens. The starter reads it and
    // the thread clears it without the mutex: the handover at the start and the join at the end order these accesses.
    std::mutex notifyMutex;
    bool notifyActive = false;
    bool hidTraceOverrideSet = false;
    bool hidTraceOverrideValue = false;

    bool loadConfiguration(const std::string& configPath, std::string& error);
    bool startSubsystems(std::string& error);
    bool startBoards(std::string& error);
    bool startSimulatorClients();
    void stopSubsystems();
    void onConnectionChange(bool connected);
    void onBattery(bool on);
    void consoleLoop();

    // Device notification thread (app_device_notifications.cpp).
    struct NotifyStartState;
    bool startDeviceNotifications(std::string& error);
    void notifyLoop(NotifyStartState& state);
    void stopDeviceNotifications();
};
