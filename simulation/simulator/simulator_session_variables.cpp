// The part of SimulatorSession that serves simulation variables.

#include "simconnect/simconnect_api.h"
#include "simulation/simulator/data_requests.h"
#include "simulation/simulator/simulator_exceptions.h"
#include "simulation/simulator/simulator_session.h"
#include "text/ascii.h"
#include "wire/requests.h"

#include <algorithm>
#include <bit>
#include <iterator>
#include <utility>

namespace {

// With any number: a battery that the aircraft doesn't have is off.
constexpr std::string_view batteryName = "electrical master battery:";

constexpr std::uint32_t typeInt32 = 1;
constexpr std::uint32_t typeInt64 = 2;
constexpr std::uint32_t typeFloat32 = 3;
constexpr std::uint32_t typeFloat64 = 4;

// Kinds of objects: the user's, all, aircraft; then helicopters, boats, ground vehicles.
constexpr std::uint32_t typeAircraft = 2;
constexpr std::uint32_t lastObjectType = 5;

constexpr std::uint32_t simobjectDataByTypeMessage = 9;

bool isBooleanUnit(std::string_view unit) {
    const std::string lower = lowerCased(unit);
    return lower == "bool" || lower == "boolean" || lower == "number" || lower.empty();
}

void appendWide(SimConnectWire::Bytes& out, std::uint64_t value) {
    SimConnectWire::appendNumber(out, static_cast<std::uint32_t>(value));
    SimConnectWire::appendNumber(out, static_cast<std::uint32_t>(value >> 32U));
}

std::vector<std::uint8_t> datumBytes(std::uint32_t type, bool value) {
    SimConnectWire::Bytes bytes;
    switch (type) {
    case typeInt64:
        appendWide(bytes, value ? 1 : 0);
        break;
    case typeFloat32:
        SimConnectWire::appendNumber(bytes, std::bit_cast<std::uint32_t>(value ? 1.0F : 0.0F));
        break;
    case typeFloat64:
        appendWide(bytes, std::bit_cast<std::uint64_t>(value ? 1.0 : 0.0));
        break;
    default:
        SimConnectWire::appendNumber(bytes, value ? 1 : 0);
        break;
    }
    return bytes;
}

// In each of the types, zero is all zero bytes.
bool isTrue(std::span<const std::uint8_t> bytes) {
    return std::ranges::any_of(bytes, [](std::uint8_t byte) { return byte != 0; });
}

} // namespace

void SimulatorSession::addToDataDefinition(const Request& request) {
    const std::string name = request.name(20);
    const std::uint32_t type = request.number(532);
    if (!lowerCased(name).starts_with(batteryName)) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 2);
    } else if (!isBooleanUnit(request.name(276))) {
        refuse(request, SimulatorExceptions::nameUnrecognized, 3);
    } else if (type < typeInt32 || type > typeFloat64) {
        refuse(request, SimulatorExceptions::invalidDataType, 4);
    } else {
        const bool hasId = request.bytes.size() >= 544;
        definitions[request.number(16)].push_back({name, type, hasId ? request.number(540) : simConnectUnused});
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
        sendVariables(requestId, kept);
        if (wanted.period == periodOnce) {
            requests.erase(requestId);
        }
    }
}

void SimulatorSession::variablesChanged() {
    for (auto& [requestId, request] : requests) {
        sendVariables(requestId, request);
    }
}

void SimulatorSession::sendVariables(std::uint32_t requestId, VariableRequest& request) {
    const auto definition = definitions.find(request.definition);
    if (definition == definitions.end()) {
        return;
    }
    DataValues values = variableValues(definition->second);
    sendData(simConnectRecvSimobjectData, requestId, request.object, request.definition, request.flags,
             payloadOf(values, request.lastSent, request.flags));
    request.lastSent = std::move(values);
}

DataValues SimulatorSession::variableValues(const Definition& definition) const {
    DataValues values;
    for (const Datum& datum : definition) {
        values.push_back({datum.id, datumBytes(datum.type, world.variables.aircraft(datum.name) != 0)});
    }
    return values;
}

// The only object here is the user's aircraft.
void SimulatorSession::requestDataByType(const Request& request) {
    const std::uint32_t definitionId = request.number(20);
    const std::uint32_t type = request.number(28);
    const auto definition = definitions.find(definitionId);
    if (definition == definitions.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    } else if (type > lastObjectType) {
        refuse(request, SimulatorExceptions::invalidEnum, 4);
    } else if (type > typeAircraft) {
        refuse(request, SimulatorExceptions::error, 4);
    } else {
        sendData(simobjectDataByTypeMessage, request.number(16), userObject, definitionId, 0,
                 payloadOf(variableValues(definition->second), {}, 0));
    }
}

void SimulatorSession::setData(const Request& request) {
    const auto definition = definitions.find(request.number(16));
    if (definition == definitions.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    } else if (!isUserObject(request.number(20))) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
    } else if (request.number(28) > 1) {
        refuse(request, SimulatorExceptions::invalidArray, 4);
    } else {
        std::vector<DatumShape> shapes;
        std::ranges::transform(definition->second, std::back_inserter(shapes), [](const Datum& datum) {
            return DatumShape{datum.id, datumBytes(datum.type, false).size()};
        });
        for (const SetValue& value : setValues(request, shapes).value_or(std::vector<SetValue>())) {
            world.setAircraftVariable(definition->second[value.datum].name, isTrue(value.bytes) ? 1 : 0);
        }
    }
}
