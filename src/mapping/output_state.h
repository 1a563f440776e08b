#pragma once

#include "config/app_config.h"
#include "config/output_profiles.h"
#include "hid/hid_protocol.h"

#include <optional>
#include <string>

/// The state of the simulator that the lights depend on.
struct LightState {
    bool simConnected = false;
    bool batteryKnown = false;
    bool batteryOn = false;
    bool backlightKnown = false;
    double backlightValue = 0.0;
};

/// What one board shows, by the profile that the configuration gives it; none without any profile. Pure.
std::optional<LedCommand> boardLedCommand(const AppConfig& config, const std::string& deviceName, int index,
                                          const LightState& state);

/// What a board's light shows for a state of the simulator: the disconnection effect, the battery effect, or the
/// backlight. An unknown battery is taken as on, so that a board doesn't show a lack of power before the first value
/// has come. Pure.
LedCommand computeLedCommand(const OutputProfile& profile, bool simConnected, bool batteryKnown, bool batteryOn,
                             bool backlightKnown, double backlightValue);

/// The command of one effect; effect 0 for "OFF" and for any text that isn't the name of an effect. Pure.
LedCommand effectCommand(const LedEffect& ledEffect);

/// Reads the cockpit light's value out of a text: a number alone, or after the variable's name and "=". False, with
/// `value` unchanged, when there is none. Pure.
bool parseBacklightPayload(const std::string& text, double& value);
