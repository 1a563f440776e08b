#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"

#include <string>

/// The bridge's three files, as it reads them.
struct BridgeConfiguration {
    AppConfig settings;
    ButtonConfig buttons;
    HidEventMap eventMap;
    /// Why the controls have no names; empty if the event map was read, or if there is none.
    std::string eventMapProblem;
};

/// Reads config.json at `path` and the files that it names. False with the bridge's own message in `error` where the
/// bridge wouldn't start. It starts without an event map.
bool loadBridgeConfiguration(const std::string& path, BridgeConfiguration& configuration, std::string& error);
