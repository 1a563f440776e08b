// The half of SimulatorSession that serves simulation variables and client events.

#include "simconnect/simconnect_api.h"
#include "simconnect/wire.h"
#include "simulation/simulator_exceptions.h"
#include "simulation/simulator_session.h"

#include <algorithm>
#include <bit>

namespace {

// With any number: a battery that the aircraft hasn't got is off.
constexpr std::string_view batteryName = "electrical master battery:";
constexpr std::uint32_t userObject = 1;

constexpr std::uint32_t typeInt32 = 1;
constexpr std::uint32_t typeInt64 = 2;
constexpr std::uint32_t typeFloat32 = 3;
constexpr std::uint32_t typeFloat64 = 4;

constexpr std::uint32_t periodNever = 0;
constexpr std::uint32_t periodOnce = 1;
constexpr std::uint32_t lastPeriod = 4;

constexpr std::size_t mostEventNames = 1000;
constexpr std::size_t mostRequests = 1000;

bool isUserObject(std::uint32_t object) {
    return object == simConnectObjectIdUser || object == userObject;
}

bool isBooleanUnit(std::string_view unit) {
    const std::string lower = lowerCaseName(unit);
    return lower == "bool" || lower == "boolean" || lower == "number" || lower.empty();
}

// A simulator's own events are words of letters, digits and underscores; with a dot, a name is a client's own and any
// will do; with a number sign it is an event's number; without anything it is private to the client.
bool isEventName(std::string_view name) {
    if (name.find('.') != std::string_view::npos || name.starts_with('#')) {
        return true;
    }
    return std::all_of(name.begin(), name.end(), [](char letter) {
        return letter == '_' || (letter >= '0' && letter <= '9') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= 'a' && letter <= 'z');
    });
}

void appendWide(SimConnectWire::Bytes& out, std::uint64_t value) {
    SimConnectWire::appendNumber(out, static_cast<std::uint32_t>(value));
    SimConnectWire::appendNumber(out, static_cast<std::uint32_t>(value >> 32U));
}

void appendDatum(SimConnectWire::Bytes& out, std::uint32_t type, bool value) {
    switch (type) {
    case typeInt64:
        appendWide(out, value ? 1 : 0);
        break;
    case typeFloat32:
        SimConnectWire::appendNumber(out, std::bit_cast<std::uint32_t>(value ? 1.0F : 0.0F));
        break;
    case typeFloat64:
        appendWide(out, std::bit_cast<std::uint64_t>(value ? 1.0 : 0.0));
        break;
    default:
        SimConnectWire::appendNumber(out, value ? 1 : 0);
        break;
    }
}

} // namespace

void SimulatorSession::mapClientEvent(const Request& request) {
    const std::uint32_t event = request.number(16);
    const std::string name = request.name(20);
    if (events.contains(event)) {
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
    const auto event = events.find(request.number(20));
    if (!isUserObject(request.number(16))) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    } else if (event == events.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    } else {
        world.records.add(record(SimulatorRecordKind::ClientEvent, event->second, request.number(24)));
    }
}

void SimulatorSession::addToDataDefinition(const Request& request) {
    const std::string name = request.name(20);
    const std::uint32_t type = request.number(532);
    if (!lowerCaseName(name).starts_with(batteryName)) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 2);
    } else if (!isBooleanUnit(request.name(276))) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 3);
    } else if (type < typeInt32 || type > typeFloat64) {
        refuse(request, SimulatorExceptions::invalidDataType, 4);
    } else {
        definitions[request.number(16)].push_back({name, type});
    }
}

void SimulatorSession::clearDataDefinition(const Request& request) {
    if (definitions.erase(request.number(16)) == 0) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    }
}

void SimulatorSession::requestData(const Request& request) {
    const std::uint32_t requestId = request.number(16);
    const VariableRequest wanted{request.number(20), request.number(24), request.number(28), request.number(32), {}};
    const auto definition = definitions.find(wanted.definition);
    if (definition == definitions.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    } else if (!isUserObject(wanted.object)) {
        refuse(request, SimulatorExceptions::unrecognizedId, 3);
    } else if (wanted.period > lastPeriod) {
        refuse(request, SimulatorExceptions::invalidEnum, 4);
    } else if (requests.size() == mostRequests && !requests.contains(requestId)) {
        refuse(request, SimulatorExceptions::tooManyRequests, 1);
    } else if (wanted.period == periodNever) {
        requests.erase(requestId);
    } else {
        world.records.add(record(SimulatorRecordKind::Subscribed, definition->second.front().name, wanted.period));
        VariableRequest& kept = requests[requestId] = wanted;
        sendVariables(requestId, kept, true);
        if (wanted.period == periodOnce) {
            requests.erase(requestId);
        }
    }
}

void SimulatorSession::variablesChanged() {
    for (auto& [requestId, request] : requests) {
        sendVariables(requestId, request, (request.flags & simConnectRequestFlagChanged) == 0);
    }
}

void SimulatorSession::sendVariables(std::uint32_t requestId, VariableRequest& request, bool evenIfSame) {
    const auto definition = definitions.find(request.definition);
    if (definition == definitions.end()) {
        return;
    }
    std::vector<std::uint8_t> payload = variableBytes(definition->second);
    if (evenIfSame || payload != request.lastSent) {
        sendData(simConnectRecvSimobjectData, requestId, request.object, request.definition, request.flags,
                 definition->second.size(), payload);
        request.lastSent = std::move(payload);
    }
}

std::vector<std::uint8_t> SimulatorSession::variableBytes(const std::vector<Datum>& data) const {
    SimConnectWire::Bytes bytes;
    for (const Datum& datum : data) {
        appendDatum(bytes, datum.type, world.variables.aircraft(datum.name) != 0);
    }
    return bytes;
}
