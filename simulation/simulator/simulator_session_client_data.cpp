// The part of SimulatorSession that serves client data areas.

#include "simconnect/simconnect_api.h"
#include "simulation/simulator/data_requests.h"
#include "simulation/simulator/simulator_exceptions.h"
#include "simulation/simulator/simulator_session.h"
#include "text/ascii.h"
#include "wire/requests.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <optional>
#include <utility>

namespace {

constexpr std::uint32_t readOnlyArea = 1;

constexpr std::uint32_t behindThePrevious = 0xFFFFFFFFU;
constexpr std::size_t mostPieces = 1000;

// A definition's entry gives a size, or minus the number of a type: INT8, INT16, INT32, INT64, FLOAT32, FLOAT64.
std::optional<std::uint32_t> pieceSize(std::uint32_t sizeOrType) {
    constexpr std::array<std::uint32_t, 6> typeSizes{1, 2, 4, 8, 4, 8};
    const std::uint32_t typeNumber = 0U - sizeOrType;
    if (typeNumber >= 1 && typeNumber <= typeSizes.size()) {
        return typeSizes[typeNumber - 1];
    }
    if (sizeOrType == 0 || sizeOrType > ClientDataAreas::largestArea) {
        return std::nullopt;
    }
    return sizeOrType;
}

} // namespace

void SimulatorSession::mapAreaName(const Request& request) {
    if (!areaNames.try_emplace(request.number(272), request.name(16)).second) {
        refuse(request, SimulatorExceptions::duplicateId, 2);
    }
}

void SimulatorSession::createArea(const Request& request) {
    const auto name = areaNames.find(request.number(16));
    if (name == areaNames.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
        return;
    }
    const bool readOnly = (request.number(24) & readOnlyArea) != 0;
    switch (world.areas.create(name->second, request.number(20), readOnly ? ownNumber : 0)) {
    case AreaCreation::Created:
        break;
    case AreaCreation::Exists:
        refuse(request, SimulatorExceptions::alreadyCreated, 1);
        break;
    case AreaCreation::BadSize:
        refuse(request, SimulatorExceptions::invalidDataSize, 2);
        break;
    case AreaCreation::NoRoom:
        refuse(request, SimulatorExceptions::outOfBounds, 2);
        break;
    }
}

void SimulatorSession::addToAreaDefinition(const Request& request) {
    const std::optional<std::uint32_t> size = pieceSize(request.number(24));
    if (!size) {
        refuse(request, SimulatorExceptions::invalidDataSize, 3);
        return;
    }
    AreaDefinition& definition = areaDefinitions[request.number(16)];
    std::uint32_t offset = request.number(20);
    if (offset == behindThePrevious) {
        offset = definition.empty() ? 0 : definition.back().offset + definition.back().size;
    }
    if (offset > ClientDataAreas::largestArea - *size || definition.size() == mostPieces) {
        refuse(request, SimulatorExceptions::outOfBounds, 2);
        return;
    }
    const bool hasId = request.bytes.size() >= 36;
    definition.push_back({offset, *size, hasId ? request.number(32) : simConnectUnused});
}

void SimulatorSession::clearAreaDefinition(const Request& request) {
    if (areaDefinitions.erase(request.number(16)) == 0) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    }
}

void SimulatorSession::requestArea(const Request& request) {
    const std::uint32_t requestId = request.number(20);
    const auto name = areaNames.find(request.number(16));
    const std::uint32_t definitionId = request.number(24);
    const std::uint32_t period = request.number(28);
    if (name == areaNames.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
    } else if (!areaDefinitions.contains(definitionId)) {
        refuse(request, SimulatorExceptions::unrecognizedId, 3);
    } else if (period > lastPeriod) {
        refuse(request, SimulatorExceptions::invalidEnum, 4);
    } else if (areaRequests.size() == mostRequests && !areaRequests.contains(requestId)) {
        refuse(request, SimulatorExceptions::tooManyRequests, 2);
    } else if (period == periodNever) {
        areaRequests.erase(requestId);
    } else {
        beginAreaRequest(requestId, {name->second, definitionId, period, request.number(32), {}});
    }
}

void SimulatorSession::beginAreaRequest(std::uint32_t requestId, AreaRequest wanted) {
    const ClientDataArea* const area = world.areas.find(wanted.area);
    world.records.add(
        record(SimulatorRecordKind::Subscribed, area == nullptr ? wanted.area : area->name, wanted.period));
    if (area == nullptr) {
        // Accepted but without effect: a client that asked before the area was created must ask again.
        areaRequests.erase(requestId);
        return;
    }
    AreaRequest& kept = areaRequests[requestId] = std::move(wanted);
    if (kept.period == simConnectClientDataPeriodOnSet) {
        // The bytes that the area already contains don't count as written.
        return;
    }
    sendArea(requestId, kept, areaValues(areaDefinitions[kept.definition], area->bytes), {});
    if (kept.period == periodOnce) {
        areaRequests.erase(requestId);
    }
}

void SimulatorSession::areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before) {
    for (auto& [requestId, request] : areaRequests) {
        const auto definition = areaDefinitions.find(request.definition);
        if (definition == areaDefinitions.end() || lowerCased(request.area) != lowerCased(area.name)) {
            continue;
        }
        const bool onSet = request.period == simConnectClientDataPeriodOnSet;
        sendArea(requestId, request, areaValues(definition->second, area.bytes),
                 onSet ? areaValues(definition->second, before) : request.lastSent);
    }
}

void SimulatorSession::sendArea(std::uint32_t requestId, AreaRequest& request, DataValues values,
                                const DataValues& before) {
    sendData(simConnectRecvClientData, requestId, 0, request.definition, request.flags,
             payloadOf(values, before, request.flags));
    request.lastSent = std::move(values);
}

void SimulatorSession::setArea(const Request& request) {
    const auto name = areaNames.find(request.number(16));
    const auto definition = areaDefinitions.find(request.number(20));
    if (name == areaNames.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 1);
        return;
    }
    if (definition == areaDefinitions.end()) {
        refuse(request, SimulatorExceptions::unrecognizedId, 2);
        return;
    }
    const ClientDataArea* const area = world.areas.find(name->second);
    if (area == nullptr || !fits(definition->second, area->bytes.size())) {
        refuse(request, SimulatorExceptions::outOfBounds, 1);
    } else if (area->onlyWriter != 0 && area->onlyWriter != ownNumber) {
        refuse(request, SimulatorExceptions::illegalOperation, 1);
    } else {
        std::vector<DatumShape> shapes;
        std::ranges::transform(definition->second, std::back_inserter(shapes), [](const AreaPiece& piece) {
            return DatumShape{piece.id, piece.size};
        });
        if (const auto values = setValues(request, shapes)) {
            writeArea(name->second, definition->second, *values);
        }
    }
}

void SimulatorSession::writeArea(std::string_view name, const AreaDefinition& definition,
                                 const std::vector<SetValue>& values) {
    const auto change = [&](std::span<std::uint8_t> block) {
        for (const SetValue& value : values) {
            std::ranges::copy(value.bytes, block.begin() + definition[value.datum].offset);
        }
    };
    world.areas.write(name, change, ownNumber);
}

DataValues SimulatorSession::areaValues(const AreaDefinition& definition, std::span<const std::uint8_t> block) {
    DataValues values;
    for (const AreaPiece& piece : definition) {
        values.push_back({piece.id, bytesOf(block, piece.offset, piece.size)});
    }
    return values;
}

bool SimulatorSession::fits(const AreaDefinition& definition, std::size_t areaSize) {
    return std::all_of(definition.begin(), definition.end(),
                       [&](const AreaPiece& piece) { return piece.offset + piece.size <= areaSize; });
}
