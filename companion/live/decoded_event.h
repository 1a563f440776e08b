#pragma once

#include "companion/live/bridge_configuration.h"
#include "hid/hid_protocol.h"

#include <cstdint>
#include <string>
#include <vector>

/// What the bridge does with an event, or why it sends nothing.
enum class BridgeAnswer {
    /// Sends `command` to the module `times` times.
    SendsCommand,
    /// Repeats `command` until the release: a map button is held.
    RepeatsCommand,
    /// Fires the simulator's event `command`.
    FiresEvent,
    // From here on it sends nothing.
    /// The release of a map button.
    EndsRepeat,
    /// The board uses its lights itself.
    BoardNotice,
    UnknownType,
    /// Neither a press nor a release nor a hold, or a knob that didn't turn.
    UnknownValue,
    /// Only the press of this control has an event, `command`.
    OnlyPressFires,
    /// The event map has no name for the control's number.
    NumberWithoutName,
    /// The command file doesn't list the control.
    NotListed,
    MobiFlightDisabled,
    /// The control has no command for this action, in no role.
    ActionWithoutCommand,
    /// It has one, but only for `otherRoles`.
    RoleWithoutCommand,
};

/// An event of a board with everything that the configuration says about it. Holds copies, so it may outlive the
/// configuration.
struct DecodedEvent {
    HidProtocol::HidEvent event;
    HidProtocol::HidEventAction action = HidProtocol::HidEventAction::None;
    /// From the event map; empty if it has no name for the number.
    std::string controlName;
    /// The role that commands are looked up for; empty if the board has none.
    std::string role;
    BridgeAnswer answer = BridgeAnswer::UnknownType;
    std::string command;
    std::uint32_t times = 1;
    /// `command` is the one for fast turns.
    bool fast = false;
    /// Roles that have a command for the action where `role` has none.
    std::vector<std::string> otherRoles;
};

/// Asks the bridge's own `decideEvent`. `index` is the board's number in order of connection. Pure.
DecodedEvent decodeEvent(const BridgeConfiguration& configuration, const HidProtocol::HidEvent& event,
                         const std::string& board, int index);

/// Whether the bridge sends anything for it.
bool sendsAnything(BridgeAnswer answer);
