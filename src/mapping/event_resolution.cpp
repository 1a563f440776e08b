#include "config/names.h"
#include "logging/logger.h"
#include "mapping/mapping_engine.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

using HidProtocol::HidEventAction;

/// References and pointers reach into the caller's arguments, the configuration and the event map, all of which outlive
/// the event.
struct MappingEngine::Resolution {
    const HidProtocol::HidEvent& event;
    const std::string& deviceName;
    int index;
    /// The board's entry in the configuration, or null.
    const DeviceEntry* deviceRecord;
    /// The role that commands are looked up for; may be empty.
    std::string role;
    // Names out of the event map; may be empty.
    const std::string& typeName;
    const std::string& controlName;
    std::string normalizedName;
    /// The command file lists the control.
    bool known;
    HidEventAction actionType;
    bool fast = false;
    bool rpnQueued = false;
    bool simEventSent = false;
    std::uint32_t mfAmount = 0;

    bool startsPause() const;
    bool isManagedMapButton() const;
    std::string debugLine(bool withConfiguredRole) const;
};

namespace {

/// The speed class from which a control's fast command is taken. What turn belongs to a class is the firmware's choice.
constexpr std::uint8_t fastSpeed = 4;

constexpr std::array managedNames = {"MAP_LEFT", "MAP_RIGHT", "MAP_UP", "MAP_DOWN"};

const std::string& nameOf(const std::map<std::int32_t, std::string>& names, std::int32_t number) {
    static const std::string none;
    const auto found = names.find(number);
    return found == names.end() ? none : found->second;
}

/// What the board itself says outranks what the configuration says of the board.
std::string roleOf(const HidProtocol::HidEvent& event, const DeviceEntry* deviceRecord) {
    if (event.mode == 0) {
        return "PFD";
    }
    if (event.mode == 1) {
        return "MFD";
    }
    return deviceRecord != nullptr ? deviceRecord->role : std::string();
}

/// The action's key in the command file, or null.
const char* actionKey(HidEventAction action) {
    switch (action) {
    case HidEventAction::ButtonPress:
        return "PRESS";
    case HidEventAction::ButtonRelease:
        return "RELEASE";
    case HidEventAction::Hold:
        return "HOLD";
    case HidEventAction::EncCw:
        return "CW";
    case HidEventAction::EncCcw:
        return "CCW";
    case HidEventAction::None:
        break;
    }
    return nullptr;
}

bool isEncoder(HidEventAction action) {
    return action == HidEventAction::EncCw || action == HidEventAction::EncCcw;
}

RpnKind rpnKind(HidEventAction action) {
    if (action == HidEventAction::Hold) {
        return RpnKind::Hold;
    }
    return isEncoder(action) ? RpnKind::Encoder : RpnKind::Normal;
}

std::uint32_t encoderAmount(const HidProtocol::HidEvent& event) {
    const int magnitude = std::max(std::abs(static_cast<int>(event.value)), 1);
    return static_cast<std::uint32_t>(std::max<int>(magnitude, event.speed));
}

} // namespace

/// After a notice or a long press of the swap key the board's lights are the firmware's own for a moment.
bool MappingEngine::Resolution::startsPause() const {
    if (event.type == HidProtocol::eventTypeBoardNotice) {
        return true;
    }
    return known && actionType == HidEventAction::Hold && normalizedName == "NAV_SWAP";
}

bool MappingEngine::Resolution::isManagedMapButton() const {
    return known && actionType != HidEventAction::None && !isEncoder(actionType) &&
           std::find(managedNames.begin(), managedNames.end(), normalizedName) != managedNames.end();
}

std::string MappingEngine::Resolution::debugLine(bool withConfiguredRole) const {
    std::string line =
        "HID event from " + deviceName + " index=" + std::to_string(index) + " type=" + std::to_string(event.type);
    if (actionType != HidEventAction::None) {
        line.append(" action=").append(HidProtocol::actionName(actionType));
    }
    if (!role.empty()) {
        line += " role=" + role;
    }
    if (withConfiguredRole && deviceRecord != nullptr && !deviceRecord->role.empty() && deviceRecord->role != role) {
        line += " configuredRole=" + deviceRecord->role;
    }
    if (!typeName.empty()) {
        line += "(" + typeName + ")";
    }
    line += " controlId=" + std::to_string(event.controlId);
    if (!controlName.empty()) {
        line += "(" + controlName + ")";
    }
    line += " value=" + std::to_string(event.value) + " speed=" + std::to_string(event.speed) +
            " mode=" + std::to_string(event.mode);
    if (mfAmount != 0) {
        line += " mfAmount=" + std::to_string(mfAmount);
    }
    line.append(fast ? " fast=1" : "").append(simEventSent ? " simEvent=sent" : "");
    return line.append(rpnQueued ? " rpn=queued" : "");
}

MappingEngine::Resolution MappingEngine::resolve(const HidProtocol::HidEvent& event, const std::string& deviceName,
                                                 int index) const {
    const DeviceEntry* deviceRecord = findDeviceEntry(*config, deviceName, index);
    const std::string& controlName = nameOf(eventMap->controlIds, event.controlId);
    std::string normalizedName = normalizeName(controlName);
    const bool known = !controlName.empty() && buttons->contains(normalizedName);
    return {
        .event = event,
        .deviceName = deviceName,
        .index = index,
        .deviceRecord = deviceRecord,
        .role = roleOf(event, deviceRecord),
        .typeName = nameOf(eventMap->eventTypes, event.type),
        .controlName = controlName,
        .normalizedName = std::move(normalizedName),
        .known = known,
        .actionType = HidProtocol::classify(event),
    };
}

void MappingEngine::handleEvent(const HidProtocol::HidEvent& event, const std::string& deviceName, int index) {
    if (config == nullptr || buttons == nullptr || eventMap == nullptr || simConnect == nullptr ||
        mobiflight == nullptr) {
        return;
    }
    Resolution resolution = resolve(event, deviceName, index);
    if (resolution.startsPause()) {
        pauseOutput(deviceName, index);
    }
    if (config->mobiflight.enabled && resolution.isManagedMapButton()) {
        handleManagedMapEvent(resolution.actionType, event, deviceName, index, resolution.controlName, resolution.role);
        logEvent(resolution, false);
        return;
    }
    if (resolution.known && resolution.actionType == HidEventAction::ButtonRelease) {
        cancelControlCommands(resolution.controlName, resolution.role);
    }
    routeToMobiFlight(resolution);
    routeToSimConnect(resolution);
    logEvent(resolution, true);
}

std::string MappingEngine::chooseCommand(Resolution& resolution) const {
    if (isEncoder(resolution.actionType) && resolution.event.speed >= fastSpeed) {
        const char* fastKey = resolution.actionType == HidEventAction::EncCw ? "CW_FAST" : "CCW_FAST";
        std::string command = buttons->lookup(resolution.normalizedName, fastKey, resolution.role);
        if (!command.empty()) {
            resolution.fast = true;
            return command;
        }
    }
    return buttons->lookup(resolution.normalizedName, actionKey(resolution.actionType), resolution.role);
}

void MappingEngine::logEvent(const Resolution& resolution, bool withConfiguredRole) {
    // The line costs far more than the question.
    if (Logger::instance().debugEnabledNow()) {
        Logger::instance().debug(resolution.debugLine(withConfiguredRole));
    }
}

void MappingEngine::routeToMobiFlight(Resolution& resolution) {
    if (!config->mobiflight.enabled || resolution.actionType == HidEventAction::None ||
        resolution.controlName.empty()) {
        return;
    }
    const std::string command = chooseCommand(resolution);
    if (command.empty()) {
        return;
    }
    if (!mobiflight->isReady()) {
        if (Logger::instance().debugEnabledNow()) {
            Logger::instance().debug("MobiFlight not ready; using SimConnect fallback for " + resolution.controlName);
        }
        return;
    }
    if (isEncoder(resolution.actionType)) {
        resolution.mfAmount = resolution.fast ? 1 : encoderAmount(resolution.event);
    }
    std::string error;
    resolution.rpnQueued =
        mobiflight->queueRpn(command, rpnKind(resolution.actionType), std::max(resolution.mfAmount, 1U), error);
    if (!resolution.rpnQueued) {
        logWarn("MobiFlight RPN send failed for " + resolution.controlName + ": " + error);
    }
}

void MappingEngine::routeToSimConnect(Resolution& resolution) {
    if (resolution.rpnQueued || resolution.known || resolution.actionType != HidEventAction::ButtonPress) {
        return;
    }
    const auto row = apEventTable().find(resolution.event.controlId);
    if (row == apEventTable().end() || !simConnect->isConnected()) {
        return;
    }
    std::string error;
    resolution.simEventSent = simConnect->transmitEvent(row->second, 0, error);
    if (!resolution.simEventSent) {
        logWarn("SimConnect send failed for " + row->second + ": " + error);
    }
}
