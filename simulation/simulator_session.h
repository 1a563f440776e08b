#pragma once

#include "simulation/client_data_areas.h"
#include "simulation/simulator_link.h"
#include "simulation/simulator_records.h"
#include "simulation/variable_values.h"

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// What all sessions share.
struct SimulatorWorld {
    SimulatorRecords& records;
    ClientDataAreas areas;
    VariableValues variables;
};

/// One client of the virtual simulator: its ids, definitions and requests, which go with it. Not synchronised.
class SimulatorSession {
public:
    using Clock = SimulatorLink::Clock;

    SimulatorSession(ByteStream accepted, std::uint32_t sessionNumber, SimulatorWorld& sharedWorld,
                     Clock::time_point serviceBegins);

    SimulatorLink& link() { return connection; }
    const SimulatorLink& link() const { return connection; }
    /// Its requests aren't handled before.
    Clock::time_point serviceBegin() const { return begin; }

    /// Reads and handles what has come.
    void serve();
    void variablesChanged();
    void areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before);
    void sendQuit();
    /// Half of a message.
    void sendCut();
    /// Records the end of the connection, once.
    void noteEnd();

private:
    /// A request's bytes, all of its fixed part there.
    struct Request {
        std::span<const std::uint8_t> bytes;

        std::uint32_t number(std::size_t offset) const;
        std::string name(std::size_t offset) const;
        std::uint32_t sendId() const { return number(12); }
    };
    struct Handler {
        std::uint32_t type;
        std::size_t smallest;
        void (SimulatorSession::*handle)(const Request& request);
    };
    struct Datum {
        std::string name;
        std::uint32_t type = 0;
    };
    struct VariableRequest {
        std::uint32_t definition = 0;
        std::uint32_t object = 0;
        std::uint32_t period = 0;
        std::uint32_t flags = 0;
        std::vector<std::uint8_t> lastSent;
    };
    struct AreaPiece {
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
    };
    using AreaDefinition = std::vector<AreaPiece>;
    struct AreaRequest {
        std::string area;
        std::uint32_t definition = 0;
        std::uint32_t period = 0;
        std::uint32_t flags = 0;
        std::vector<std::uint8_t> lastSent;
    };

    static const Handler* handlerOf(std::uint32_t type);
    void handle(const Request& request);
    void open(const Request& request);
    void mapClientEvent(const Request& request);
    void transmitClientEvent(const Request& request);
    void addToDataDefinition(const Request& request);
    void clearDataDefinition(const Request& request);
    void requestData(const Request& request);
    void mapAreaName(const Request& request);
    void createArea(const Request& request);
    void addToAreaDefinition(const Request& request);
    void clearAreaDefinition(const Request& request);
    void requestArea(const Request& request);
    void setArea(const Request& request);

    void sendMessage(std::uint32_t id, std::span<const std::uint8_t> body);
    void sendData(std::uint32_t messageId, std::uint32_t requestId, std::uint32_t objectId, std::uint32_t definitionId,
                  std::uint32_t flags, std::size_t datumCount, std::span<const std::uint8_t> payload);
    void sendVariables(std::uint32_t requestId, VariableRequest& request, bool evenIfSame);
    void beginAreaRequest(std::uint32_t requestId, AreaRequest wanted);
    void writeArea(std::string_view name, const AreaDefinition& definition, std::span<const std::uint8_t> data);
    void sendArea(std::uint32_t requestId, AreaRequest& request, std::span<const std::uint8_t> bytes);
    void refuse(const Request& request, std::uint32_t exception, std::uint32_t index);
    SimulatorRecord record(SimulatorRecordKind kind, std::string text = {}, std::uint32_t value = 0) const;
    std::vector<std::uint8_t> variableBytes(const std::vector<Datum>& data) const;
    static std::vector<std::uint8_t> areaBytes(const AreaDefinition& definition, std::span<const std::uint8_t> block);
    static bool fits(const AreaDefinition& definition, std::size_t areaSize);
    static std::size_t sizeOf(const AreaDefinition& definition);

    SimulatorLink connection;
    const std::uint32_t ownNumber;
    SimulatorWorld& world;
    const Clock::time_point begin;
    bool ended = false;
    bool isOpen = false;
    std::uint32_t protocol = 0;
    std::map<std::uint32_t, std::string> events;
    std::map<std::uint32_t, std::vector<Datum>> definitions;
    std::map<std::uint32_t, VariableRequest> requests;
    std::map<std::uint32_t, std::string> areaNames;
    std::map<std::uint32_t, AreaDefinition> areaDefinitions;
    std::map<std::uint32_t, AreaRequest> areaRequests;
};
