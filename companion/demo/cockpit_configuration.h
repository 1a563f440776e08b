#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "simulation/rig/rig_settings.h"

#include <map>
#include <string>
#include <vector>

/// The bridge's configuration in the cockpit, both parsed and as files.
struct CockpitConfiguration {
    /// Its name for people.
    std::string title;
    AppConfig settings;
    ButtonConfig buttons;
    /// Empty when there is none or it can't be read; the bridge runs without it too.
    HidEventMap eventMap;
    /// By name, verbatim except that debug lines are on.
    std::map<std::string, std::string> files;
};

/// Reads a config.json with the files that it names; the built-in sample set for an empty path. False with the message
/// in `error`.
bool loadCockpitConfiguration(const std::string& path, CockpitConfiguration& configuration, std::string& error);

/// A board with the vendor and product of the configuration, identified by its name: its identity when the name is
/// sixteen hexadecimal digits, else its serial number.
VirtualBoardModel configuredBoard(const CockpitConfiguration& configuration, const std::string& deviceName);

/// Two panels, "PFD" and "MFD", with the identities that the configuration gives these roles, if it does.
std::vector<RigBoard> configuredPanels(const CockpitConfiguration& configuration);

/// A rig with these boards and this configuration.
RigSettings cockpitRig(const CockpitConfiguration& configuration, std::vector<RigBoard> boards,
                       const Pace& pace = Pace::real(), RigSides sides = {});
