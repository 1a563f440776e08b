#pragma once

#include "simulation/client_data_areas.h"
#include "simulation/simulator_records.h"

#include <cstdint>
#include <deque>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The MobiFlight module inside the simulator: reads text commands from its clients' command areas, answers in their
/// response areas, and keeps the values of their variables in their value areas. Not synchronised.
class MobiFlightModule {
public:
    MobiFlightModule(ClientDataAreas& allAreas, SimulatorRecords& allRecords) : areas(allAreas), records(allRecords) {}

    /// Starts as with the simulator: makes the areas of the client "MobiFlight", and tells the names of all variables.
    void start();
    /// Forgets all clients, with the simulator's end. Local variables stay.
    void forgetClients() { clients.clear(); }

    /// Looks at an area that `session` has just written, and that held `before`.
    void areaWritten(const ClientDataArea& area, std::span<const std::uint8_t> before, std::uint32_t session);

    void setLVar(std::string_view name, double value);
    void setSilent(bool on);
    void setFailing(bool on) { failing = on; }

    /// Writes into the areas of the client "MobiFlight", if they exist.
    void respond(std::string_view text);
    void setLVarsText(std::string_view text);

private:
    struct Client {
        std::string name;
        /// The code of each added variable; the value of variable i lies at byte 4 * i.
        std::vector<std::string> variables;
    };
    struct LVar {
        std::string name;
        double value = 0;
    };

    Client* clientOfCommandArea(std::string_view areaName);
    void createClient(std::string_view name);
    void record(const std::string& command, SimulatorRecordKind changedKind, std::uint32_t session);
    void handle(Client& sender, std::string_view command);
    void addClient(const Client& sender, std::string_view name);
    void addVariable(Client& client, std::string_view code);
    void clearVariables(Client& client);
    void listLVars(const Client& client);
    void respondTo(const Client& client, std::string_view text);
    void writeValue(const Client& client, std::size_t index, double value);
    void writeValues(const Client& client);
    double evaluate(std::string_view code) const;

    ClientDataAreas& areas;
    SimulatorRecords& records;
    /// A deque: a command's sender stays where it is when the command adds a client.
    std::deque<Client> clients;
    /// By lower-case name.
    std::map<std::string, LVar> lvars;
    bool silent = false;
    bool failing = false;
};
