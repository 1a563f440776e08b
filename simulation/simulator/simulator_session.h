#pragma once

#include "simulation/simulator/client_data_areas.h"
#include "simulation/simulator/data_values.h"
#include "simulation/simulator/simulator_link.h"
#include "simulation/simulator/simulator_records.h"
#include "simulation/simulator/variable_values.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// A named event that a client has fired.
struct FiredEvent {
    std::string_view name;
    /// The message that carries it to its subscribers, and the data in it.
    std::uint32_t messageId = 0;
    std::span<const std::uint32_t> data;
};

/// How the simulator treats clients that introduce themselves.
struct OpenConduct {
    /// The connection is closed without an answer.
    bool hangsUp = false;
    /// Clients of other versions of the protocol get VERSION_MISMATCH and the connection's end.
    std::uint32_t oldestProtocol = VirtualSimulator::oldestProtocol;
    std::uint32_t newestProtocol = VirtualSimulator::newestProtocol;
};

/// What all sessions share.
struct SimulatorWorld {
    SimulatorRecords& records;
    ClientDataAreas areas;
    VariableValues variables;
    OpenConduct opening = {};
    /// Changes a variable of the aircraft and notifies all sessions and the module.
    std::function<void(std::string_view name, double value)> setAircraftVariable = {};
    /// Passes an event to all sessions.
    std::function<void(const FiredEvent& event)> fire = {};
};

/// One client of the virtual simulator with its ids, definitions and requests, which end with it. Not synchronised.
class SimulatorSession {
public:
    using Clock = SimulatorLink::Clock;

    SimulatorSession(ByteStream connection, std::uint32_t ownNumber, SimulatorWorld& world, Clock::time_point begin);

    SimulatorLink& link() { return connection; }
    const SimulatorLink& link() const { return connection; }
    /// Its requests aren't handled before this time.
    Clock::time_point serviceBegin() const { return begin; }

    /// Reads and handles what has come.
    void serve();
    void variablesChanged();
    void areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before);
    void eventFired(const FiredEvent& event);
    void sendQuit();
    /// Half of a message.
    void sendCut();
    /// Records the end of the connection, once.
    void noteEnd();

private:
    /// A request's bytes, with its whole fixed part.
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
        std::uint32_t id = 0;
    };
    using Definition = std::vector<Datum>;
    struct VariableRequest {
        std::uint32_t definition = 0;
        std::uint32_t object = 0;
        std::uint32_t period = 0;
        std::uint32_t flags = 0;
        DataValues lastSent;
    };
    struct AreaPiece {
        std::uint32_t offset = 0;
        std::uint32_t size = 0;
        std::uint32_t id = 0;
    };
    using AreaDefinition = std::vector<AreaPiece>;
    struct AreaRequest {
        std::string area;
        std::uint32_t definition = 0;
        std::uint32_t period = 0;
        std::uint32_t flags = 0;
        DataValues lastSent;
    };
    struct NotificationGroup {
        /// Only a group with a priority hears of its events.
        bool hasPriority = false;
        std::set<std::uint32_t> events;
    };

    /// Clients may name the user's aircraft by this number, or as simConnectObjectIdUser.
    static constexpr std::uint32_t userObject = 1;
    static bool isUserObject(std::uint32_t object);

    static const Handler* handlerOf(std::uint32_t type);
    void handle(const Request& request);
    void open(const Request& request);
    void mapClientEvent(const Request& request);
    void transmitClientEvent(const Request& request);
    void transmitClientEventEx1(const Request& request);
    void addToGroup(const Request& request);
    void removeFromGroup(const Request& request);
    void setGroupPriority(const Request& request);
    void clearGroup(const Request& request);
    void requestGroup(const Request& request);
    void subscribeToSystemEvent(const Request& request);
    void unsubscribeFromSystemEvent(const Request& request);
    void setSystemEventState(const Request& request);
    void requestSystemState(const Request& request);
    void addToDataDefinition(const Request& request);
    void clearDataDefinition(const Request& request);
    void requestData(const Request& request);
    void requestDataByType(const Request& request);
    void setData(const Request& request);
    void mapAreaName(const Request& request);
    void createArea(const Request& request);
    void addToAreaDefinition(const Request& request);
    void clearAreaDefinition(const Request& request);
    void requestArea(const Request& request);
    void setArea(const Request& request);

    void sendMessage(std::uint32_t id, std::span<const std::uint8_t> body);
    void sendEvent(std::uint32_t messageId, std::uint32_t group, std::uint32_t event,
                   std::span<const std::uint32_t> data);
    void sendData(std::uint32_t messageId, std::uint32_t requestId, std::uint32_t objectId, std::uint32_t definitionId,
                  std::uint32_t flags, const DataPayload& payload);
    void sendVariables(std::uint32_t requestId, VariableRequest& request);
    void beginAreaRequest(std::uint32_t requestId, AreaRequest wanted);
    void writeArea(std::string_view name, const AreaDefinition& definition, const std::vector<SetValue>& values);
    void sendArea(std::uint32_t requestId, AreaRequest& request, DataValues values, const DataValues& before);
    void fireEvent(const Request& request, std::uint32_t messageId, std::span<const std::uint32_t> data);
    /// Refuses a request of an unknown group.
    NotificationGroup* groupOf(const Request& request);
    /// The values in the block of a request that sets data, all of whose kinds have the same layout; none when it was
    /// refused.
    std::optional<std::vector<SetValue>> setValues(const Request& request, std::span<const DatumShape> definition);
    void refuse(const Request& request, std::uint32_t exception, std::uint32_t index);
    SimulatorRecord record(SimulatorRecordKind kind, std::string text = {}, std::uint32_t value = 0) const;
    DataValues variableValues(const Definition& definition) const;
    static DataValues areaValues(const AreaDefinition& definition, std::span<const std::uint8_t> block);
    static bool fits(const AreaDefinition& definition, std::size_t areaSize);

    SimulatorLink connection;
    const std::uint32_t ownNumber;
    SimulatorWorld& world;
    const Clock::time_point begin;
    bool ended = false;
    bool isOpen = false;
    std::uint32_t protocol = 0;
    std::map<std::uint32_t, std::string> events;
    std::map<std::uint32_t, NotificationGroup> groups;
    std::set<std::uint32_t> systemEvents;
    std::map<std::uint32_t, Definition> definitions;
    std::map<std::uint32_t, VariableRequest> requests;
    std::map<std::uint32_t, std::string> areaNames;
    std::map<std::uint32_t, AreaDefinition> areaDefinitions;
    std::map<std::uint32_t, AreaRequest> areaRequests;
};
