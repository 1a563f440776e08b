#pragma once

#include "config/app_config.h"
#include "config/button_config.h"
#include "config/hid_event_map.h"
#include "hid/hid_protocol.h"
#include "mobiflight/mobiflight_client.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

/// What an event is and what the bridge does about it, as far as the configuration decides that. The router handles
/// whether the simulator and the module can be reached. Views and pointers refer to the configuration, the event map
/// and constants, and are valid as long as those.
struct EventDecision {
    // What it is.

    /// The board's entry in the configuration, or null.
    const DeviceEntry* device = nullptr;
    /// The role that commands are looked up for; may be empty.
    std::string role;
    // Names from the event map, as it writes them; may be empty.
    std::string_view typeName;
    std::string_view controlName;
    HidProtocol::HidEventAction action = HidProtocol::HidEventAction::None;
    /// The control has a name, and the command file lists it.
    bool isListed = false;

    // What to do about it.

    /// The firmware controls the board's lights for a moment.
    bool pausesLights = false;
    /// A map button with MobiFlight enabled: its press bypasses the queue, and the bridge repeats its hold.
    bool isMapButton = false;
    /// Commands to take out of MobiFlight's queue, in this order.
    std::vector<std::string> cancelled;
    /// The RPN command; empty for none. A map button's press sends it at once, and its hold repeats it; any other event
    /// queues it as `kind`, `amount` times.
    std::string command;
    RpnKind kind = RpnKind::Normal;
    std::uint32_t amount = 1;
    /// `command` is the one for fast turns.
    bool fast = false;
    /// The simulator's event for the press of a control that the command file doesn't list; empty for none. An event
    /// has this or a command, never both.
    std::string_view simEvent;
};

/// The action's key in the command file; empty for no action.
std::string_view actionKey(HidProtocol::HidEventAction action);

/// Decides what an event means. Pure.
EventDecision decideEvent(const AppConfig& config, const ButtonConfig& buttons, const HidEventMap& eventMap,
                          const HidProtocol::HidEvent& event, const std::string& deviceName, int index);
