#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "simulation/rig/rig_settings.h"

#include <map>
#include <string>
#include <vector>

/// The configuration that the bridge gets in the cockpit, as it reads it and as files.
struct CockpitConfiguration {
    /// What it is called where a person reads it.
    std::string title;
    AppConfig settings;
    ButtonConfig buttons;
    /// Empty when there is none, or none that can be read; the bridge goes on then, too.
    HidEventMap eventMap;
    /// By name, verbatim but for the debug lines, which are on.
    std::map<std::string, std::string> files;
};

/// Reads a config.json with the files that it names; the built-in sample set for an empty path. False with the message
/// in `error`.
bool loadCockpitConfiguration(const std::string& path, CockpitConfiguration& configuration, std::string& error);

/// A board of the vendor and product that the configuration asks for, known by its name: its identity when the name is
/// sixteen hexadecimal digits, else its serial number.
VirtualBoardModel configuredBoard(const CockpitConfiguration& configuration, const std::string& deviceName);

/// Two panels, "PFD" and "MFD", with the identities that the configuration gives these roles, if it does.
std::vector<RigBoard> configuredPanels(const CockpitConfiguration& configuration);

/// A rig with these boards and this configuration.
RigSettings cockpitRig(const CockpitConfiguration& configuration, std::vector<RigBoard> boards,
                       const Pace& pace = Pace::real(), RigSides sides = {});
