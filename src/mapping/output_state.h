#pragma once

#include "config/output_profiles.h"
#include "hid/hid_protocol.h"

#include <string>
#include <string_view>

/// The simulator's local variable that the cockpit light follows.
constexpr std::string_view backlightVariable = "LIGHTING_POTENTIOMETER_5";

/// What a board's light shows for a state of the simulator: the disconnection effect, the battery effect, or the
/// backlight. An unknown battery counts as on. Pure.
LedCommand computeLedCommand(const OutputProfile& profile, bool simConnected, bool batteryKnown, bool batteryOn,
                             bool backlightKnown, double backlightValue);

/// The command of one effect; effect 0 for "OFF" and for any text that is no effect's name. Pure.
LedCommand effectCommand(const LedEffect& ledEffect);

/// Reads the cockpit light's value out of a text: a number alone, or behind the variable's name and "=". False, with
/// `value` unchanged, when there is none. Pure.
bool parseBacklightPayload(const std::string& text, double& value);
