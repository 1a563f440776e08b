#include "simulation/simulator/simulator_session.h"

#include "simconnect/simconnect_api.h"
#include "simulation/simulator/simulator_exceptions.h"
#include "wire/requests.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

using SimConnectWire::appendNumber;

// Data come in one message each: entry 1 out of 1.
constexpr std::uint32_t onlyEntry = 1;

// A simulator of the generation whose protocol is 5.
constexpr std::string_view simulatorName = "KittyHawk";
constexpr std::array<std::uint32_t, 10> simulatorVersions{11, 0, 282174, 999, 11, 0, 62651, 3, 0, 0};

// A name in a field of its own, which begins a message's body.
SimConnectWire::Bytes nameField(std::string_view name) {
    SimConnectWire::Bytes field(SimConnectWire::nameFieldSize);
    std::copy(name.begin(), name.end(), field.begin());
    return field;
}

} // namespace

std::uint32_t SimulatorSession::Request::number(std::size_t offset) const {
    return SimConnectWire::numberAt(bytes, offset);
}

std::string SimulatorSession::Request::name(std::size_t offset) const {
    const auto field = bytes.subspan(offset, SimConnectWire::nameFieldSize);
    return {field.begin(), std::find(field.begin(), field.end(), std::uint8_t{0})};
}

SimulatorSession::SimulatorSession(ByteStream connection, std::uint32_t ownNumber, SimulatorWorld& world,
                                   Clock::time_point begin)
    : connection(std::move(connection)), ownNumber(ownNumber), world(world), begin(begin) {
    world.records.add(record(SimulatorRecordKind::Connected));
}

SimulatorRecord SimulatorSession::record(SimulatorRecordKind kind, std::string text, std::uint32_t value) const {
    SimulatorRecord entry;
    entry.kind = kind;
    entry.session = ownNumber;
    entry.text = std::move(text);
    entry.value = value;
    return entry;
}

void SimulatorSession::noteEnd() {
    if (!std::exchange(ended, true)) {
        world.records.add(record(SimulatorRecordKind::Closed));
    }
}

void SimulatorSession::serve() {
    connection.read();
    while (const auto message = connection.reader().next()) {
        handle({*message});
    }
    if (connection.reader().broken()) {
        connection.reset();
    }
}

bool SimulatorSession::isUserObject(std::uint32_t object) {
    return object == simConnectObjectIdUser || object == userObject;
}

const SimulatorSession::Handler* SimulatorSession::handlerOf(std::uint32_t type) {
    using namespace SimConnectWire;
    using Self = SimulatorSession;
    // Smallest sizes leave out what the oldest clients don't send: epsilon and datum id of an area's definition, and
    // what follows the flags of a request.
    static constexpr std::array<Handler, 24> handlers{{
        {openRequest, 272, &Self::open},
        {mapClientEventToSimEventRequest, 276, &Self::mapClientEvent},
        {transmitClientEventRequest, 36, &Self::transmitClientEvent},
        {transmitClientEventEx1Request, 52, &Self::transmitClientEventEx1},
        {addClientEventToNotificationGroupRequest, 24, &Self::addToGroup},
        {removeClientEventRequest, 24, &Self::removeFromGroup},
        {setNotificationGroupPriorityRequest, 24, &Self::setGroupPriority},
        {clearNotificationGroupRequest, 20, &Self::clearGroup},
        {requestNotificationGroupRequest, 20, &Self::requestGroup},
        {subscribeToSystemEventRequest, 276, &Self::subscribeToSystemEvent},
        {unsubscribeFromSystemEventRequest, 20, &Self::unsubscribeFromSystemEvent},
        {setSystemEventStateRequest, 24, &Self::setSystemEventState},
        {requestSystemStateRequest, 276, &Self::requestSystemState},
        {addToDataDefinitionRequest, 536, &Self::addToDataDefinition},
        {clearDataDefinitionRequest, 20, &Self::clearDataDefinition},
        {requestDataOnSimObjectRequest, 36, &Self::requestData},
        {requestDataOnSimObjectTypeRequest, 32, &Self::requestDataByType},
        {setDataOnSimObjectRequest, 36, &Self::setData},
        {mapClientDataNameToIdRequest, 276, &Self::mapAreaName},
        {createClientDataRequest, 28, &Self::createArea},
        {addToClientDataDefinitionRequest, 28, &Self::addToAreaDefinition},
        {clearClientDataDefinitionRequest, 20, &Self::clearAreaDefinition},
        {requestClientDataRequest, 36, &Self::requestArea},
        {setClientDataRequest, 36, &Self::setArea},
    }};
    const auto* const found = std::find_if(handlers.begin(), handlers.end(), [&](const Handler& handler) {
        return (requestTypeMark | handler.type) == type;
    });
    return found == handlers.end() ? nullptr : found;
}

// Some clients use parts of the interface that aren't simulated: they get an exception, so that they don't wait
// forever.
void SimulatorSession::handle(const Request& request) {
    if (!connection.live()) {
        // An earlier request was refused or ended the connection.
        return;
    }
    const Handler* const handler = handlerOf(request.number(8));
    if (!isOpen) {
        // Answers and refusals are in the client's version.
        protocol = request.number(4);
    }
    if (handler == nullptr || request.bytes.size() < handler->smallest) {
        refuse(request, SimulatorExceptions::error, 0);
    } else if (!isOpen && handler->type != SimConnectWire::openRequest) {
        refuse(request, SimulatorExceptions::unopened, 0);
    } else {
        (this->*handler->handle)(request);
    }
}

void SimulatorSession::open(const Request& request) {
    if (isOpen) {
        refuse(request, SimulatorExceptions::error, 0);
        return;
    }
    if (world.opening.hangsUp) {
        connection.finish();
        return;
    }
    if (protocol < world.opening.oldestProtocol || protocol > world.opening.newestProtocol) {
        refuse(request, SimulatorExceptions::versionMismatch, 4);
        connection.finish();
        return;
    }
    isOpen = true;
    world.records.add(record(SimulatorRecordKind::Opened, request.name(16), protocol));
    SimConnectWire::Bytes body = nameField(simulatorName);
    for (const std::uint32_t version : simulatorVersions) {
        appendNumber(body, version);
    }
    sendMessage(simConnectRecvOpen, body);
}

void SimulatorSession::sendMessage(std::uint32_t id, std::span<const std::uint8_t> body) {
    SimConnectWire::Bytes message;
    appendNumber(message, static_cast<std::uint32_t>(sizeof(SimConnectRecv) + body.size()));
    appendNumber(message, protocol);
    appendNumber(message, id);
    message.insert(message.end(), body.begin(), body.end());
    connection.send(message);
}

void SimulatorSession::sendData(std::uint32_t messageId, std::uint32_t requestId, std::uint32_t objectId,
                                std::uint32_t definitionId, std::uint32_t flags, const DataPayload& payload) {
    if (payload.count == 0) {
        return;
    }
    SimConnectWire::Bytes body;
    for (const std::uint32_t word :
         {requestId, objectId, definitionId, flags, onlyEntry, onlyEntry, static_cast<std::uint32_t>(payload.count)}) {
        appendNumber(body, word);
    }
    body.insert(body.end(), payload.bytes.begin(), payload.bytes.end());
    sendMessage(messageId, body);
}

std::optional<std::vector<SetValue>> SimulatorSession::setValues(const Request& request,
                                                                 std::span<const DatumShape> definition) {
    const auto block = request.bytes.subspan(36);
    const std::size_t size = request.number(32);
    if (size > block.size()) {
        refuse(request, SimulatorExceptions::sizeMismatch, 5);
        return std::nullopt;
    }
    SetValues set = valuesOf(block.first(size), definition, (request.number(24) & setFlagTagged) != 0);
    if (set.fault == BlockFault::WrongSize) {
        refuse(request, SimulatorExceptions::sizeMismatch, 5);
    } else if (set.fault == BlockFault::UnknownDatum) {
        refuse(request, SimulatorExceptions::datumId, 6);
    }
    return set.fault ? std::nullopt : std::optional(std::move(set.values));
}

void SimulatorSession::sendQuit() {
    sendMessage(simConnectRecvQuit, {});
}

void SimulatorSession::sendCut() {
    SimConnectWire::Bytes message;
    appendNumber(message, sizeof(SimConnectRecvData));
    appendNumber(message, protocol);
    appendNumber(message, simConnectRecvClientData);
    message.resize(sizeof(SimConnectRecvData) / 2);
    connection.send(message);
}

void SimulatorSession::refuse(const Request& request, std::uint32_t exception, std::uint32_t index) {
    SimConnectWire::Bytes body;
    appendNumber(body, exception);
    appendNumber(body, request.sendId());
    appendNumber(body, index);
    sendMessage(simConnectRecvException, body);
    SimulatorRecord entry = record(SimulatorRecordKind::Exception, {}, exception);
    entry.sendId = request.sendId();
    entry.index = index;
    world.records.add(std::move(entry));
}
