// The part of SimulatorSession that serves client events, the groups in which clients listen for them, and the
// simulator's own events and states.

#include "simconnect/simconnect_api.h"
#include "simulation/simulator/simulator_event_names.h"
#include "simulation/simulator/simulator_exceptions.h"
#include "simulation/simulator/simulator_session.h"
#include "text/ascii.h"
#include "wire/requests.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

constexpr std::uint32_t eventEx1Message = 27;
constexpr std::uint32_t systemStateMessage = 15;
constexpr std::uint32_t unknownGroup = 0xFFFFFFFFU;
constexpr std::size_t stateTextSize = 260;

constexpr std::size_t mostEventNames = 1000;
constexpr std::size_t mostGroups = 20;

/// An event of the simulator's own.
struct SystemEvent {
    std::string_view name;
    /// A subscriber gets the current state at once.
    std::optional<std::uint32_t> state;
};

// None of these happens after the subscription: the flight runs, and no control pauses it or loads another.
constexpr std::array<SystemEvent, 19> knownSystemEvents{{
    {"AircraftLoaded", std::nullopt},
    {"Crashed", std::nullopt},
    {"CrashReset", std::nullopt},
    {"FlightLoaded", std::nullopt},
    {"FlightPlanActivated", std::nullopt},
    {"FlightPlanDeactivated", std::nullopt},
    {"FlightSaved", std::nullopt},
    {"ObjectAdded", std::nullopt},
    {"ObjectRemoved", std::nullopt},
    {"Pause", 0},
    {"Paused", std::nullopt},
    {"PositionChanged", std::nullopt},
    {"Sim", 1},
    {"SimStart", std::nullopt},
    {"SimStop", std::nullopt},
    {"Sound", std::nullopt},
    {"Unpaused", std::nullopt},
    {"View", std::nullopt},
    {"WeatherModeChanged", std::nullopt},
}};

// The virtual simulator has no clock ticks to deliver.
constexpr std::array<std::string_view, 5> ticks{"1sec", "4sec", "6Hz", "Frame", "PauseFrame"};

/// An answer to a client that asks for a state.
struct SystemState {
    std::string_view name;
    std::uint32_t number;
    std::string_view text;
};

constexpr std::array<SystemState, 5> systemStates{{
    {"AircraftLoaded", 0, "Virtual\\aircraft.cfg"},
    {"DialogMode", 0, ""},
    {"FlightLoaded", 0, "Virtual.flt"},
    {"FlightPlan", 0, ""},
    {"Sim", 1, ""},
}};

// With a dot, a name is a client's own and any will do; with a number sign it is an event's number; without anything it
// is private to the client.
bool isEventName(std::string_view name) {
    return name.empty() || name.find('.') != std::string_view::npos || name.starts_with('#') || isSimulatorEvent(name);
}

} // namespace

void SimulatorSession::mapClientEvent(const Request& request) {
    const std::uint32_t event = request.number(16);
    const std::string name = request.name(20);
    if (events.contains(event) || systemEvents.contains(event)) {
        refuse(request, SimulatorExceptions::eventIdDuplicate, 1);
    } else if (!isEventName(name)) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 2);
    } else if (events.size() == mostEventNames) {
        refuse(request, SimulatorExceptions::tooManyEventNames, 0);
    } else {
        events[event] = name;
    }
}

void SimulatorSession::transmitClientEvent(const Request& request) {
    const std::array<std::uint32_t, 1> data{request.number(24)};
    fireEvent(request, simConnectRecvEvent, data);
}

void SimulatorSession::transmitClientEventEx1(const Request& request) {
    std::array<std::uint32_t, 5> data{};
    for (std::size_t i = 0; i < data.size(); ++i) {
        data[i] = request.number(32 + 4 * i);
    }
    fireEvent(request, eventEx1Message, data);
}

void SimulatorSession::fireEvent(const Request& request, std::uint32_t messageId, std::span<const std::uint32_t> data) {
    const auto event = events.find(request.number(20));
    if (!isUserObject(request.number(16))) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    } else if (event == events.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    } else {
        world.records.add(record(SimulatorRecordKind::ClientEvent, event->second, data.front()));
        world.fire({event->second, messageId, data});
    }
}

// An event without a name is private: no client can subscribe to it by name.
void SimulatorSession::eventFired(const FiredEvent& event) {
    for (const auto& [groupId, group] : groups) {
        for (const std::uint32_t id : group.events) {
            if (group.hasPriority && !event.name.empty() && equalsIgnoringCase(events[id], event.name)) {
                sendEvent(event.messageId, groupId, id, event.data);
            }
        }
    }
}

void SimulatorSession::sendEvent(std::uint32_t messageId, std::uint32_t group, std::uint32_t event,
                                 std::span<const std::uint32_t> data) {
    SimConnectWire::Bytes body;
    SimConnectWire::appendNumber(body, group);
    SimConnectWire::appendNumber(body, event);
    for (const std::uint32_t word : data) {
        SimConnectWire::appendNumber(body, word);
    }
    sendMessage(messageId, body);
}

void SimulatorSession::addToGroup(const Request& request) {
    const std::uint32_t group = request.number(16);
    const std::uint32_t event = request.number(20);
    if (!events.contains(event)) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    } else if (groups.size() == mostGroups && !groups.contains(group)) {
        refuse(request, SimulatorExceptions::tooManyGroups, 1);
    } else {
        groups[group].events.insert(event);
    }
}

SimulatorSession::NotificationGroup* SimulatorSession::groupOf(const Request& request) {
    const auto found = groups.find(request.number(16));
    if (found == groups.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
        return nullptr;
    }
    return &found->second;
}

void SimulatorSession::removeFromGroup(const Request& request) {
    NotificationGroup* const group = groupOf(request);
    if (group != nullptr && group->events.erase(request.number(20)) == 0) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    }
}

void SimulatorSession::setGroupPriority(const Request& request) {
    if (NotificationGroup* const group = groupOf(request)) {
        group->hasPriority = true;
    }
}

void SimulatorSession::clearGroup(const Request& request) {
    if (groupOf(request) != nullptr) {
        groups.erase(request.number(16));
    }
}

// Requests the group's events while the simulator shows a dialog, which the virtual one never does.
void SimulatorSession::requestGroup(const Request& request) {
    groupOf(request);
}

void SimulatorSession::subscribeToSystemEvent(const Request& request) {
    const std::uint32_t event = request.number(16);
    const std::string name = request.name(20);
    const auto matches = [&](std::string_view known) { return equalsIgnoringCase(known, name); };
    const auto* const found = std::ranges::find_if(knownSystemEvents, matches, &SystemEvent::name);
    if (events.contains(event) || systemEvents.contains(event)) {
        refuse(request, SimulatorExceptions::eventIdDuplicate, 1);
    } else if (std::ranges::any_of(ticks, matches)) {
        refuse(request, SimulatorExceptions::error, 2);
    } else if (found == knownSystemEvents.end()) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 2);
    } else {
        systemEvents.insert(event);
        if (found->state) {
            const std::array<std::uint32_t, 1> data{*found->state};
            sendEvent(simConnectRecvEvent, unknownGroup, event, data);
        }
    }
}

void SimulatorSession::unsubscribeFromSystemEvent(const Request& request) {
    if (systemEvents.erase(request.number(16)) == 0) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    }
}

// Neither on nor off is kept, since none of these events happens.
void SimulatorSession::setSystemEventState(const Request& request) {
    if (!systemEvents.contains(request.number(16))) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    } else if (request.number(20) > 1) {
        refuse(request, SimulatorExceptions::invalidEnum, 2);
    }
}

void SimulatorSession::requestSystemState(const Request& request) {
    const std::string name = request.name(20);
    const auto* const state = std::ranges::find_if(
        systemStates, [&](std::string_view known) { return equalsIgnoringCase(known, name); }, &SystemState::name);
    if (state == systemStates.end()) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 2);
        return;
    }
    constexpr std::uint32_t noFraction = 0;
    SimConnectWire::Bytes body;
    for (const std::uint32_t word : {request.number(16), state->number, noFraction}) {
        SimConnectWire::appendNumber(body, word);
    }
    body.insert(body.end(), state->text.begin(), state->text.end());
    body.resize(body.size() + stateTextSize - state->text.size());
    sendMessage(systemStateMessage, body);
}
