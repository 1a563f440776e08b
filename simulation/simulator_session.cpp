#include "simulation/simulator_session.h"

#include "simconnect/simconnect_api.h"
#include "simconnect/wire.h"
#include "simulation/simulator_exceptions.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

using SimConnectWire::appendNumber;

constexpr std::uint32_t oldestProtocol = 2;
constexpr std::uint32_t newestProtocol = 6;
// Data come in one message each: entry 1 out of 1.
constexpr std::uint32_t onlyEntry = 1;

// A simulator of the generation whose protocol is 5.
constexpr std::string_view simulatorName = "KittyHawk";
constexpr std::array<std::uint32_t, 10> simulatorVersions{11, 0, 282174, 999, 11, 0, 62651, 3, 0, 0};

// A name in its field, as the begin of a message's body.
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

SimulatorSession::SimulatorSession(ByteStream accepted, std::uint32_t sessionNumber, SimulatorWorld& sharedWorld,
                                   Clock::time_point serviceBegins)
    : connection(std::move(accepted)), ownNumber(sessionNumber), world(sharedWorld), begin(serviceBegins) {
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

const SimulatorSession::Handler* SimulatorSession::handlerOf(std::uint32_t type) {
    using namespace SimConnectWire;
    using Self = SimulatorSession;
    // Smallest sizes leave out what the oldest clients don't send: epsilon and datum id of an area's definition, and
    // what stands behind the flags of a request.
    static constexpr std::array<Handler, 12> handlers{{
        {openRequest, 272, &Self::open},
        {mapClientEventToSimEventRequest, 276, &Self::mapClientEvent},
        {transmitClientEventRequest, 36, &Self::transmitClientEvent},
        {addToDataDefinitionRequest, 536, &Self::addToDataDefinition},
        {clearDataDefinitionRequest, 20, &Self::clearDataDefinition},
        {requestDataOnSimObjectRequest, 36, &Self::requestData},
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

// Types that aren't known are let pass: clients use more of the interface than is simulated here.
void SimulatorSession::handle(const Request& request) {
    const Handler* const handler = handlerOf(request.number(8));
    if (handler == nullptr) {
        return;
    }
    if (!isOpen) {
        // Answers are in the client's version, refusals too.
        protocol = request.number(4);
    }
    if (request.bytes.size() < handler->smallest) {
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
    if (protocol < oldestProtocol || protocol > newestProtocol) {
        refuse(request, SimulatorExceptions::versionMismatch, 4);
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
                                std::uint32_t definitionId, std::uint32_t flags, std::size_t datumCount,
                                std::span<const std::uint8_t> payload) {
    SimConnectWire::Bytes body;
    for (const std::uint32_t word :
         {requestId, objectId, definitionId, flags, onlyEntry, onlyEntry, static_cast<std::uint32_t>(datumCount)}) {
        appendNumber(body, word);
    }
    body.insert(body.end(), payload.begin(), payload.end());
    sendMessage(messageId, body);
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
